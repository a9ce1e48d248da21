#pragma once

#include "gcbase/gcstring.h"

#include "core/value.h"

namespace Nivex::DataProcessing::Core {

struct StringData
{
    static constexpr const char* className = "String";
    GenICam::gcstring value;
};

/// A text. Initially empty. get() raises RuntimeException if it holds an error.
class GENICAM_API String : public DataValue<StringData>
{
public:
    String() = default;
    explicit String(GenICam::gcstring value) : DataValue(StringData{std::move(value)}) {}
    explicit String(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    /// Valid until the value is changed.
    const GenICam::gcstring& get() const { return data().value; }
};

}  // namespace Nivex::DataProcessing::Core
