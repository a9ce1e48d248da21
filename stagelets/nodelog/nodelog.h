#pragma once

#include <exception>
#include <string>

#include "gcbase/exception.h"

#include "utils/log.h"

namespace Plugin::NivexStageletPackageBase {

/// How one kind of object words what goes wrong in the log: its kind, its address, and what it was doing.
/// The members are literals; entries may be written from any thread.
struct NodeLog
{
    const char* kind;  ///< As in "Camera".
    Nivex::DataProcessing::Utils::CatId (*channel)();
    /// What refusals name as their source; null for the file that they stand in.
    const char* sourceUnit = nullptr;

    /// Logs that an operation of the object is refused, and raises it with the same text. NODE_REFUSE calls it.
    template <typename Exception>
    [[noreturn]] void refuse(const void* object, const char* operation, const std::string& text, const char* file,
                             int line) const
    {
        const std::string unit = GenICam::sourceUnitName(file);
        Nivex::DataProcessing::Utils::createLogEntry(
            Nivex::DataProcessing::Utils::SeverityRefused, channel(), "%s %p: %s failed. Message: \"%s\" (%s:%i)",
            kind, object, operation, text.c_str(), sourceUnit ? sourceUnit : unit.c_str(), line);
        throw Exception(text, unit.c_str(), line);
    }

    /// Runs the operation and logs what it throws, as caught "while `activity`"; false if it threw.
    template <typename Operation>
    bool guarded(const void* object, const char* activity, const Operation& operation) const
    {
        try {
            operation();
            return true;
        } catch (const GenICam::GenericException& exception) {
            logCaught(object, activity, exception.GetDescription());
        } catch (const std::exception& exception) {
            logCaught(object, activity, exception.what());
        } catch (...) {
            logCaughtUnknown(object, activity);
        }
        return false;
    }

    void logCaught(const void* object, const char* activity, const char* message) const
    {
        Nivex::DataProcessing::Utils::createLogEntry(Nivex::DataProcessing::Utils::SeverityFailure, channel(),
                                                     "%s %p: Exception caught while %s. Message: %s", kind, object,
                                                     activity, message);
    }

    void logCaughtUnknown(const void* object, const char* activity) const
    {
        Nivex::DataProcessing::Utils::createLogEntry(Nivex::DataProcessing::Utils::SeverityFailure, channel(),
                                                     "%s %p: Unknown exception caught while %s.", kind, object,
                                                     activity);
    }
};

}  // namespace Plugin::NivexStageletPackageBase

/// Refuses an operation of an object with an exception of GenICam's family: logged, and raised with the same text.
#define NODE_REFUSE(TYPE, LOG, OBJECT, OPERATION, TEXT) \
    (LOG).refuse<::GenICam::TYPE>(OBJECT, OPERATION, TEXT, __FILE__, __LINE__)
