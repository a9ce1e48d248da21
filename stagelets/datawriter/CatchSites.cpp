#include "datawriter/CatchSites.h"

namespace Plugin::NivexStageletPackageBase {

namespace Utils = Nivex::DataProcessing::Utils;

Utils::CatId dataWriterChannel()
{
    static const Utils::CatId id = Utils::getCatId("nivex.dataprocessing.stagelet.DataWriter");
    return id;
}

void logCaught(const CatchSite& site, const void* object, const char* message) noexcept
{
    Utils::createLogEntry(Utils::SeverityFailure, site.channel(), "%s %p: Exception caught while %s. Message: %s",
                          site.object, object, site.activity, message);
}

void logCaughtUnknown(const CatchSite& site, const void* object) noexcept
{
    Utils::createLogEntry(Utils::SeverityFailure, site.channel(), "%s %p: Unknown exception caught while %s.",
                          site.object, object, site.activity);
}

}  // namespace Plugin::NivexStageletPackageBase
