#include "utils/slotresult.h"

#include "utils/log.h"

namespace Nivex::DataProcessing::Utils {

namespace {

CatId category()
{
    static const CatId id = getCatId("nivex.dataprocessing.utils.SlotCombiner");
    return id;
}

void logMessage(const SlotCombiner* combiner, const char* message)
{
    createLogEntry(SeverityFailure, category(),
                   "SlotCombiner %p: Exception caught while invoking a slot. Message: %s",
                   static_cast<const void*>(combiner), message);
}

}  // namespace

void SlotCombiner::combine(const SlotResults<void>& results) const
{
    for (const auto& result : results) {
        try {
            if (result) result->getValue();
        } catch (const GenICam::GenericException& e) {
            logMessage(this, e.GetDescription());
        } catch (const std::exception& e) {
            logMessage(this, e.what());
        } catch (...) {
            createLogEntry(SeverityFailure, category(),
                           "SlotCombiner %p: Unknown exception caught while invoking a slot.",
                           static_cast<const void*>(this));
        }
    }
}

}  // namespace Nivex::DataProcessing::Utils
