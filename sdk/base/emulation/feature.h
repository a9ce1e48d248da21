#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Nivex::Emulation {

/// Which of a camera's node maps shows a feature.
enum class EMap : std::uint8_t
{
    Camera,
    Transport,
    Stream
};

enum class EKind : std::uint8_t
{
    Integer,
    Float,
    Boolean,
    Enumeration,
    FormatChoice,  ///< An enumeration of the formats that pictures can be encoded in.
    Command,
    Text,
    Node  ///< No register: the whole node stands in `xml`.
};

enum class ELevel : std::uint8_t
{
    Beginner,
    Expert,
    Invisible
};

/// One entry of an enumeration. As a selector's entry, its value is also the index of the registers it selects.
struct Choice
{
    const char* name;
    std::int64_t value;
    const char* toolTip = "";
};

/// A feature of the emulated camera and the register behind it: one row says all about both.
struct Feature
{
    static constexpr double noLimit = 9e15;  ///< Well within 64 bits, and exact.

    const char* name;
    EKind kind = EKind::Integer;
    const char* toolTip = "";
    double initial = 0;
    double min = 0;
    double max = noLimit;
    std::span<const Choice> choices = {};
    const char* text = "";  ///< Initial content of a Text.
    const char* unit = "";
    const char* selector = nullptr;  ///< One register for each entry of that enumeration.
    const char* maxNode = nullptr;   ///< Tells the maximum in place of `max`, which the register keeps.
    const char* xml = "";            ///< Of a Node.
    bool readOnly = false;
    bool isVolatile =
        false;            ///< The camera changes it by itself: never cached. Read-only ones and commands are so.
    bool locked = false;  ///< Not writable while a stream is up.
    bool raw = false;     ///< The feature's node stands in another row, which uses this one's register.
    ELevel level = ELevel::Beginner;
};

/// A group of features that are shown together.
struct Category
{
    const char* name;
    EMap map;
    const char* toolTip;
    bool isStandard;  ///< Names and meanings are those of the standard feature naming convention.
    std::span<const Feature> features;
};

}  // namespace Nivex::Emulation
