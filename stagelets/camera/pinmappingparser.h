#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "gcbase/gcstring.h"

namespace Plugin::NivexStageletPackageBase {

/// What a pin configuration describes pins for.
enum class PinMappingType : std::uint32_t
{
    Invalid = 0,
    ChunkData = 1,
    Event = 2
};

/// The type of the values of a pin.
enum class PinValueType : std::uint32_t
{
    Invalid = 0,
    Boolean = 1,
    Float = 2,
    Integer = 3,
    String = 4
};

/// What a pin configuration can say about a pin.
enum class PinProperty : std::uint32_t
{
    Invalid = 0,
    SelectorName = 1,
    SelectorValue = 2,
    Type = 3,
    EventName = 4,
    ValueName = 5
};

/// The names as configurations and messages have them ("ChunkData", "Boolean", "SelectorName").
const char* toText(PinMappingType type) noexcept;
const char* toText(PinValueType type) noexcept;
const char* toText(PinProperty property) noexcept;

/// One pin as its configuration describes it.
struct PinMapping
{
    /// All that was said, in the order of appearance. `Type` is there always, with one value.
    std::map<PinProperty, GenICam::gcstring_vector> properties;
    PinMappingType mappingType = PinMappingType::Invalid;
    PinValueType valueType = PinValueType::Invalid;
    GenICam::gcstring name;
};

/// Pins by name.
using PinMappings = std::map<GenICam::gcstring, PinMapping>;

/// Reads pin configurations: lines of statements such as `MyPinName.Type=Integer.EventName=X.ValueName=Y`.
///
/// A statement is `pin.property=value`; blanks may stand around the dot and before the equals sign, but not
/// behind it. Without a pin, a statement is about the pin of the statement before it, also over lines. A value
/// consists of letters, digits and double quotes; whatever follows it begins the next statement. Names of pins,
/// selectors, events and values consist of letters, digits and underscores, a letter first.
///
/// | Property | For | How often |
/// |---|---|---|
/// | Type (Boolean, Float, Integer, String) | all pins | once |
/// | ValueName | all pins | without limit, no value twice |
/// | SelectorName, SelectorValue | chunk data | once |
/// | EventName | events | once |
///
/// A pin exists by its Type; statements about pins without one are dropped. Whether a pin has all that it needs is
/// not checked here. All lines are read for types first, so the first error of syntax or type comes before all
/// others. The reading takes n log n time. A parser may be used again; one is for one thread at a time.
class PinMappingParser
{
public:
    /// Replaces the content of `result`. Raises, for the first error, GenICam::RuntimeException; but for a
    /// ValueName that stands twice a plain std::runtime_error. The position of the error can be asked afterwards,
    /// and `result` holds what was read before it; the property that the error is about may stand there without
    /// a value.
    void parse(PinMappingType mappingType, const GenICam::gcstring_vector& lines, PinMappings& result);

    /// The column of the last error, from 1.
    std::uint64_t getColumn() const { return column_; }
    /// The line of the last error, from 0.
    std::uint64_t getLine() const { return line_; }

private:
    struct Statement
    {
        PinProperty property;
        GenICam::gcstring payload;
    };

    /// Hands each statement of all lines to `apply`.
    template <typename Apply>
    void forEachStatement(const GenICam::gcstring_vector& lines, const Apply& apply);
    Statement readStatement();
    void readPinName();
    PinProperty readProperty();
    GenICam::gcstring readPayload();
    void declarePin(const Statement& statement, PinMappingType mappingType, PinMappings& result) const;

    template <typename IsMember>
    std::string_view takeRun(const IsMember& isMember);
    void skipSpace();
    bool atEnd() const { return cursor_ == text_.size(); }

    GenICam::gcstring pinName_;  ///< The pin that the present statement is about.
    std::string_view text_;      ///< The present line.
    std::size_t cursor_ = 0;     ///< The next character of it.
    std::uint64_t column_ = 0;
    std::uint64_t line_ = 0;
};

}  // namespace Plugin::NivexStageletPackageBase
