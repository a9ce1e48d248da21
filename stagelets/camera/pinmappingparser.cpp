#include "camera/pinmappingparser.h"

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>
#include <tuple>

#include "gcbase/exception.h"

#include "camera/characters.h"

namespace Plugin::NivexStageletPackageBase {

using GenICam::gcstring;
using namespace Characters;

namespace {

struct PropertyRow
{
    PinProperty property;
    const char* text;
    bool forChunkData;
    bool forEvent;
    std::size_t limit;
    bool isIdentifier;
};

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

constexpr PropertyRow propertyRows[] = {
    {PinProperty::Invalid, "Invalid", false, false, 0, false},
    {PinProperty::SelectorName, "SelectorName", true, false, 1, true},
    {PinProperty::SelectorValue, "SelectorValue", true, false, 1, false},
    {PinProperty::Type, "Type", true, true, 1, false},
    {PinProperty::EventName, "EventName", false, true, 1, true},
    {PinProperty::ValueName, "ValueName", true, true, unlimited, true},
};
constexpr const char* valueTypeTexts[] = {"Invalid", "Boolean", "Float", "Integer", "String"};
constexpr const char* mappingTypeTexts[] = {"Invalid", "ChunkData", "Event"};

const PropertyRow& rowOf(PinProperty property)
{
    return propertyRows[static_cast<std::size_t>(property)];
}

bool isNameCharacter(char c)
{
    return isAlnum(c) || c == '_';
}

bool isPayloadCharacter(char c)
{
    return isAlnum(c) || c == '"';
}

[[noreturn]] void fail(const char* text)
{
    GENICAM_THROW(RuntimeException, "%s", text);
}

/// Serves pin names and the names that properties hold; all are called pin names in the messages.
void validateIdentifier(const gcstring& name)
{
    const std::string_view text = name.view();
    if (text.empty()) fail("An empty pin name is not allowed.");
    if (text.front() == '_') fail("A pin name must not start with an underscore.");
    if (isDigit(text.front())) fail("A pin name must not start with a digit.");
    if (!std::all_of(text.begin(), text.end(), isNameCharacter)) {
        GENICAM_THROW(RuntimeException, "A pin name '%s' contains invalid characters.", name.c_str());
    }
}

PinValueType valueTypeOf(const gcstring& text)
{
    for (std::size_t i = 1; i < std::size(valueTypeTexts); ++i) {
        if (text == valueTypeTexts[i]) return static_cast<PinValueType>(i);
    }
    GENICAM_THROW(RuntimeException, "Pin type '%s' is not valid", text.c_str());
}

bool isCombinable(const PropertyRow& row, PinMappingType type)
{
    return (row.forChunkData && type == PinMappingType::ChunkData) ||
           (row.forEvent && type == PinMappingType::Event);
}

/// Adds the properties of declared pins. It remembers what it added, since looking a value up in a long list would
/// make long configurations take quadratic time.
class PropertyCollector
{
public:
    void add(PinMapping& pin, PinProperty property, const gcstring& payload)
    {
        const PropertyRow& row = rowOf(property);
        if (!isCombinable(row, pin.mappingType)) {
            GENICAM_THROW(RuntimeException, "Pin property '%s' cannot be combined with pin mapping type '%s'.",
                          row.text, toText(pin.mappingType));
        }
        GenICam::gcstring_vector& values = pin.properties[property];
        if (values.size() >= row.limit) {
            GENICAM_THROW(RuntimeException, "Pin property '%s' found too many times.", row.text);
        }
        if (row.isIdentifier) validateIdentifier(payload);
        if (!added_.emplace(pin.name, property, payload).second) {
            throw std::runtime_error("Value '" + payload.str() + "' cannot be applied multiple times.");
        }
        values.push_back(payload);
    }

private:
    std::set<std::tuple<gcstring, PinProperty, gcstring>> added_;
};

}  // namespace

const char* toText(PinMappingType type) noexcept
{
    return mappingTypeTexts[static_cast<std::size_t>(type)];
}

const char* toText(PinValueType type) noexcept
{
    return valueTypeTexts[static_cast<std::size_t>(type)];
}

const char* toText(PinProperty property) noexcept
{
    return rowOf(property).text;
}

void PinMappingParser::parse(PinMappingType mappingType, const GenICam::gcstring_vector& lines,
                             PinMappings& result)
{
    result.clear();
    forEachStatement(lines, [&](const Statement& statement) {
        if (statement.property == PinProperty::Type) declarePin(statement, mappingType, result);
    });
    PropertyCollector collector;
    forEachStatement(lines, [&](const Statement& statement) {
        const auto pin = result.find(pinName_);
        if (statement.property == PinProperty::Type || pin == result.end()) return;
        collector.add(pin->second, statement.property, statement.payload);
    });
}

template <typename Apply>
void PinMappingParser::forEachStatement(const GenICam::gcstring_vector& lines, const Apply& apply)
{
    pinName_.clear();
    line_ = 0;
    for (const gcstring& line : lines) {
        column_ = 0;
        cursor_ = 0;
        text_ = line.view();
        try {
            for (skipSpace(); !atEnd(); skipSpace()) {
                apply(readStatement());
            }
        } catch (...) {
            column_ = cursor_ + 1;
            throw;
        }
        ++line_;
    }
}

void PinMappingParser::declarePin(const Statement& statement, PinMappingType mappingType,
                                  PinMappings& result) const
{
    const PinValueType valueType = valueTypeOf(statement.payload);
    if (result.count(pinName_) != 0) {
        GENICAM_THROW(RuntimeException, "Pin type of '%s' has been declared twice.", pinName_.c_str());
    }
    result[pinName_] = {.properties = {{PinProperty::Type, {statement.payload}}},
                        .mappingType = mappingType,
                        .valueType = valueType,
                        .name = pinName_};
}

PinMappingParser::Statement PinMappingParser::readStatement()
{
    if (atEnd()) fail("Unexpected end of line.");
    readPinName();
    const PinProperty property = readProperty();
    return {property, readPayload()};
}

/// Leaves the cursor behind the dot.
void PinMappingParser::readPinName()
{
    if (text_[cursor_] == '.') {
        if (pinName_.empty()) fail("Pin name cannot be determined.");
    } else {
        const gcstring name(takeRun(isNameCharacter));
        if (name.empty()) fail("Expected valid name not found.");
        validateIdentifier(name);
        pinName_ = name;
        skipSpace();
        if (atEnd()) fail("Unexpected end of line. Expected dot.");
        if (text_[cursor_] != '.') fail("Unexpected content. Expected dot.");
    }
    ++cursor_;
}

/// Leaves the cursor behind the equals sign.
PinProperty PinMappingParser::readProperty()
{
    skipSpace();
    const gcstring name(takeRun(isLetter));
    if (name.empty()) fail("Expected valid property pin name not found.");
    const auto* row = std::find_if(std::begin(propertyRows) + 1, std::end(propertyRows),
                                   [&name](const PropertyRow& candidate) { return name == candidate.text; });
    if (row == std::end(propertyRows)) {
        GENICAM_THROW(RuntimeException, "Unknown pin property name '%s' found.", name.c_str());
    }
    skipSpace();
    if (atEnd()) fail("Unexpected end of line. Expected =.");
    if (text_[cursor_] != '=') fail("Unexpected content. Expected =.");
    ++cursor_;
    return row->property;
}

gcstring PinMappingParser::readPayload()
{
    gcstring payload(takeRun(isPayloadCharacter));
    if (payload.empty()) fail("Expected valid pin property payload not found.");
    return payload;
}

template <typename IsMember>
std::string_view PinMappingParser::takeRun(const IsMember& isMember)
{
    const std::size_t start = cursor_;
    cursor_ = endOfRun(text_, start, isMember);
    return text_.substr(start, cursor_ - start);
}

void PinMappingParser::skipSpace()
{
    takeRun(isSpace);
}

}  // namespace Plugin::NivexStageletPackageBase
