#pragma once

#include "nodelog/nodelog.h"

namespace Plugin::NivexStageletPackageBase {

inline Nivex::DataProcessing::Utils::CatId cameraChannel()
{
    static const Nivex::DataProcessing::Utils::CatId id =
        Nivex::DataProcessing::Utils::getCatId("nivex.dataprocessing.stagelet.Camera");
    return id;
}

/// For the camera node and its parts, with the address of the node.
inline constexpr NodeLog cameraLog{"Camera", cameraChannel};

}  // namespace Plugin::NivexStageletPackageBase
