#include "datawriter/CatchSites.h"

namespace Plugin::NivexStageletPackageBase {

namespace Utils = Nivex::DataProcessing::Utils;

Utils::CatId dataWriterChannel()
{
    static const Utils::CatId id = Utils::getCatId("nivex.dataprocessing.stagelet.DataWriter");
    return id;
}

namespace CatchSites {

const CatchSite sessionFolder{"DataWriter %p: Exception caught while creating session folder. Message: %s",
                              "DataWriter %p: Unknown exception caught while creating session folder."};
const CatchSite beginSessionImage{
    "DataWriter %p: Exception caught while starting image media writer session. Message: %s",
    "DataWriter %p: Unknown exception caught while starting image media writer session."};
const CatchSite beginSessionText{
    "DataWriter %p: Exception caught while starting text media writer session. Message: %s",
    "DataWriter %p: Unknown exception caught while starting text media writer session."};
const CatchSite beginSessionVideo{
    "DataWriter %p: Exception caught while starting video media writer session. Message: %s",
    "DataWriter %p: Unknown exception caught while starting video media writer session."};
const CatchSite recordFolder{"DataWriter %p: Exception caught while creating record folder. Message: %s",
                             "DataWriter %p: Unknown exception caught while creating record folder."};
const CatchSite beginRecord{"DataWriter %p: Exception caught while starting media writer record. Message: %s",
                            "DataWriter %p: Unknown exception caught while starting media writer record."};
const CatchSite writeData{"DataWriter %p: Exception caught while writing media writer data. Message: %s",
                          "DataWriter %p: Unknown exception caught while writing media writer data."};
const CatchSite endRecord{"DataWriter %p: Exception caught while ending media writer record. Message: %s",
                          "DataWriter %p: Unknown exception caught while ending media writer record."};
const CatchSite endSession{"DataWriter %p: Exception caught while ending media writer session. Message: %s",
                           "DataWriter %p: Unknown exception caught while ending media writer session."};

}  // namespace CatchSites

// The formats are those of such tables as the one above.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

void logCaught(const CatchSite& site, const void* object, const char* message) noexcept
{
    Utils::createLogEntry(Utils::SeverityFailure, site.channel(), site.known, object, message);
}

void logCaughtUnknown(const CatchSite& site, const void* object) noexcept
{
    Utils::createLogEntry(Utils::SeverityFailure, site.channel(), site.unknown, object);
}

#pragma GCC diagnostic pop

}  // namespace Plugin::NivexStageletPackageBase
