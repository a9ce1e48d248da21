#pragma once

#include <exception>

#include "gcbase/exception.h"

#include "utils/log.h"

namespace Plugin::NivexStageletPackageBase {

/// The node's log channel.
Nivex::DataProcessing::Utils::CatId dataWriterChannel();

/// What is logged for an exception that one place caught: "%p" is the object it was caught in, "%s" the message.
struct CatchSite
{
    const char* known;
    const char* unknown;
    Nivex::DataProcessing::Utils::CatId (*channel)() = dataWriterChannel;
};

namespace CatchSites {
extern const CatchSite sessionFolder;
extern const CatchSite beginSessionImage;
extern const CatchSite beginSessionText;
extern const CatchSite beginSessionVideo;
extern const CatchSite recordFolder;
extern const CatchSite beginRecord;
extern const CatchSite writeData;
extern const CatchSite endRecord;
extern const CatchSite endSession;
}  // namespace CatchSites

void logCaught(const CatchSite& site, const void* object, const char* message) noexcept;
void logCaughtUnknown(const CatchSite& site, const void* object) noexcept;

/// Runs the operation and logs what it throws; false if it threw.
template <typename Operation>
bool guarded(const CatchSite& site, const void* object, const Operation& operation)
{
    try {
        operation();
        return true;
    } catch (const GenICam::GenericException& exception) {
        logCaught(site, object, exception.GetDescription());
    } catch (const std::exception& exception) {
        logCaught(site, object, exception.what());
    } catch (...) {
        logCaughtUnknown(site, object);
    }
    return false;
}

}  // namespace Plugin::NivexStageletPackageBase
