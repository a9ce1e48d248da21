#pragma once

#include "nodelog/nodelog.h"

namespace Plugin::NivexStageletPackageBase {

inline Nivex::DataProcessing::Utils::CatId dataWriterChannel()
{
    static const Nivex::DataProcessing::Utils::CatId id =
        Nivex::DataProcessing::Utils::getCatId("nivex.dataprocessing.stagelet.DataWriter");
    return id;
}

/// For the node, with its address.
inline constexpr NodeLog dataWriterLog{"DataWriter", dataWriterChannel};

}  // namespace Plugin::NivexStageletPackageBase
