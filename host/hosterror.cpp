#include "hosterror.h"

#include "gcbase/exception.h"

namespace Host {

std::string describeCurrentException()
{
    try {
        throw;
    } catch (const GenICam::GenericException& e) {
        return e.GetDescription();
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "unknown exception";
    }
}

}  // namespace Host
