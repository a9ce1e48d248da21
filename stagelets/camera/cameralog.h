#pragma once

#include "gcbase/exception.h"

#include "utils/log.h"

// The log of the camera node and its parts.

namespace Plugin::NivexStageletPackageBase {

inline Nivex::DataProcessing::Utils::CatId cameraChannel()
{
    static const Nivex::DataProcessing::Utils::CatId id =
        Nivex::DataProcessing::Utils::getCatId("nivex.dataprocessing.stagelet.Camera");
    return id;
}

}  // namespace Plugin::NivexStageletPackageBase

/// Logs a refusal of an operation of the camera node NODE (its address) and raises it with the same text.
#define CAMERA_REFUSE(TYPE, NODE, FUNCTION, TEXT)                                                             \
    do {                                                                                                      \
        const char* const refusalText = (TEXT);                                                               \
        Nivex::DataProcessing::Utils::createLogEntry(                                                         \
            Nivex::DataProcessing::Utils::SeverityRefused, Plugin::NivexStageletPackageBase::cameraChannel(), \
            "Camera %p: %s failed. Message: \"%s\" (%s:%i)", static_cast<const void*>(NODE), (FUNCTION),      \
            refusalText, ::GenICam::sourceUnitName(__FILE__).c_str(), __LINE__);                              \
        GENICAM_THROW(TYPE, "%s", refusalText);                                                               \
    } while (false)
