#pragma once

#include <exception>

#include "gcbase/exception.h"

#include "utils/log.h"

namespace Plugin::NivexStageletPackageBase {

/// The node's log channel.
Nivex::DataProcessing::Utils::CatId dataWriterChannel();

/// One place where exceptions are caught, as the log tells it.
struct CatchSite
{
    const char* activity;               ///< As in "creating session folder".
    const char* object = "DataWriter";  ///< What the object is that it is caught in.
    Nivex::DataProcessing::Utils::CatId (*channel)() = dataWriterChannel;
};

namespace CatchSites {
inline constexpr CatchSite sessionFolder{"creating session folder"};
inline constexpr CatchSite beginSessionImage{"starting image media writer session"};
inline constexpr CatchSite beginSessionText{"starting text media writer session"};
inline constexpr CatchSite beginSessionVideo{"starting video media writer session"};
inline constexpr CatchSite recordFolder{"creating record folder"};
inline constexpr CatchSite beginRecord{"starting media writer record"};
inline constexpr CatchSite writeData{"writing media writer data"};
inline constexpr CatchSite endRecord{"ending media writer record"};
inline constexpr CatchSite endSession{"ending media writer session"};
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
