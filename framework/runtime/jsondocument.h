#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "gcbase/export.h"

namespace Nivex::DataProcessing::Runtime {

/// A place in a text, both from 1; the column counts characters (code points). Line 0 is no place.
struct TextPosition
{
    std::size_t line = 0;
    std::size_t column = 0;

    friend bool operator==(const TextPosition&, const TextPosition&) = default;
    friend auto operator<=>(const TextPosition&, const TextPosition&) = default;
};

/// Something wrong with a text, and where.
struct TextFault
{
    TextPosition position;
    std::string message;
};

class JsonValue;

struct JsonMember
{
    std::string name;
    TextPosition namePosition;
    std::shared_ptr<JsonValue> value;  ///< Never null.
};

/// The members in the order of the text. Small objects with known keys are looked up, so that is done in a row.
struct GENICAM_API JsonObject
{
    std::vector<JsonMember> members;

    /// Null if there is none of that name.
    std::shared_ptr<JsonValue> find(std::string_view name) const;
};

struct JsonArray
{
    std::vector<std::shared_ptr<JsonValue>> items;  ///< None is null.
};

/// A value of a JSON text that knows where it began. Not synchronised.
class GENICAM_API JsonValue
{
public:
    /// Integers from 0 on are std::uint64_t, negative ones std::int64_t; all other numbers, and integers that fit
    /// neither, are double.
    using Data = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, JsonArray,
                              JsonObject>;

    JsonValue() = default;
    explicit JsonValue(Data&& value, TextPosition at = {}) : data(std::move(value)), position(at) {}

    template <typename T>
    const T* as() const
    {
        return std::get_if<T>(&data);
    }
    template <typename T>
    T* as()
    {
        return std::get_if<T>(&data);
    }
    /// What kind of value it is, for a person: "an object", "a list", "a text", "an integer", ...
    std::string_view describeKind() const;
    /// The value as it would be read; objects and lists by their kind only. At most 80 bytes, in ASCII.
    std::string describe() const;

    Data data;
    TextPosition position;
};

inline constexpr std::size_t maxJsonDepth = 64;
inline constexpr std::size_t maxJsonSize = std::size_t{16} << 20;

struct JsonDocument
{
    std::shared_ptr<JsonValue> root;  ///< Null if the text is no JSON; the last of the faults says why.
    std::vector<TextFault> faults;
};

/// Reads strict JSON (RFC 8259, UTF-8, one byte order mark allowed in front). A name that an object has twice is a
/// fault, of which the first value is kept; the text is read on. What ends the reading: anything that is not JSON,
/// such as comments, text behind the value, or bytes that are no UTF-8; numbers beyond a double; nesting deeper
/// than maxJsonDepth; more than maxJsonSize bytes.
GENICAM_API JsonDocument parseJson(std::string_view text);

/// The whole file. Raises RuntimeException that names file and cause, also for files larger than maxJsonSize.
GENICAM_API std::string readTextFile(const std::string& path);

/// Indented text, members in their order, ending in a line feed. Raises RuntimeException if a text is no UTF-8.
GENICAM_API std::string formatJson(const JsonValue& value);

}  // namespace Nivex::DataProcessing::Runtime
