#include "runtime/jsondocument.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>
#include <unordered_set>

#include "gcbase/exception.h"

namespace Nivex::DataProcessing::Runtime {

namespace {

using Json = nlohmann::ordered_json;

/// Follows the reader through the text, token by token. The reader tells what it read, but not where.
class TokenCursor
{
public:
    explicit TokenCursor(std::string_view text) : text_(text)
    {
        if (text_.starts_with("\xEF\xBB\xBF")) text_.remove_prefix(3);
    }

    /// Goes to the start of the next token.
    TextPosition seekToken()
    {
        while (offset_ < text_.size() && isBetweenTokens(text_[offset_]))
            step();
        return position_;
    }
    void skipBracket() { step(); }
    void skipString()
    {
        step();
        while (offset_ < text_.size() && text_[offset_] != '"') {
            if (text_[offset_] == '\\') step();
            step();
        }
        step();
    }
    void skipScalar()
    {
        while (offset_ < text_.size() && !isBetweenTokens(text_[offset_]) && text_[offset_] != ']' &&
               text_[offset_] != '}')
            step();
    }
    /// Goes forward to a byte of the text.
    TextPosition seek(std::size_t offset)
    {
        while (offset_ < text_.size() && offset_ < offset)
            step();
        return position_;
    }

    std::size_t getOffset() const { return offset_; }
    std::string_view getText() const { return text_; }

private:
    static bool isBetweenTokens(char c) { return c != '\0' && std::strchr(" \t\r\n,:", c) != nullptr; }
    void step()
    {
        if (offset_ >= text_.size()) return;
        const auto byte = static_cast<unsigned char>(text_[offset_++]);
        if (byte == '\n') {
            position_ = {position_.line + 1, 1};
        } else if ((byte & 0xC0U) != 0x80U) {
            ++position_.column;
        }
    }

    std::string_view text_;
    std::size_t offset_ = 0;
    TextPosition position_{1, 1};
};

/// The reader's own words without its prefix and without the bytes of the text that it repeats.
std::string cleanMessage(std::string message)
{
    const auto column = message.find(", column ");
    const auto start = message.find(": ", column == std::string::npos ? 0 : column);
    if (start != std::string::npos) message.erase(0, start + 2);
    const auto lastRead = message.find("; last read: '");
    if (lastRead != std::string::npos) {
        const auto end = message.rfind("'; expected ");
        message.erase(lastRead,
                      end == std::string::npos || end < lastRead ? std::string::npos : end + 1 - lastRead);
    }
    return message;
}

/// The mistake that is most likely behind what the reader says of the byte at `at`; null if none is.
const char* guessMistake(std::string_view text, std::size_t at, const std::string& message)
{
    constexpr std::string_view blanks = " \t\r\n";
    constexpr std::string_view openings = "\"{[";
    const char found = text[at];
    const auto last = at == 0 ? std::string_view::npos : text.find_last_not_of(blanks, at - 1);
    const char before = last == std::string_view::npos ? '\0' : text[last];
    if (found == '/') return "JSON has no comments.";
    if (found == '\'') return "JSON has texts in double quotes only.";
    if (before == ',' && (found == ']' || found == '}')) return "The comma before it is one too many.";
    const bool isNext = last + 1 < at || openings.find(found) != std::string_view::npos;
    const bool isInList = message.find("parsing array - unexpected") != std::string::npos ||
                          message.find("parsing object - unexpected") != std::string::npos;
    if (isInList && isNext && found != ']' && found != '}' && found != ':') return "A comma is missing before it.";
    return nullptr;
}

class TreeBuilder : public nlohmann::json_sax<Json>
{
public:
    explicit TreeBuilder(std::string_view text) : cursor_(text) {}

    JsonDocument take() { return std::move(document_); }

    bool null() override { return addScalar(std::monostate()); }
    bool boolean(bool value) override { return addScalar(value); }
    bool number_integer(number_integer_t value) override
    {
        return value < 0 ? addScalar(value) : addScalar(static_cast<std::uint64_t>(value));
    }
    bool number_unsigned(number_unsigned_t value) override { return addScalar(value); }
    bool number_float(number_float_t value, const string_t&) override { return addScalar(value); }
    bool binary(binary_t&) override { return false; }

    bool string(string_t& value) override
    {
        const TextPosition position = cursor_.seekToken();
        cursor_.skipString();
        add(std::make_shared<JsonValue>(std::move(value), position));
        return true;
    }
    bool start_object(std::size_t) override { return open(JsonObject()); }
    bool start_array(std::size_t) override { return open(JsonArray()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override
    {
        Frame& frame = frames_.back();
        frame.namePosition = cursor_.seekToken();
        cursor_.skipString();
        frame.isDuplicate = !frame.names.insert(name).second;
        if (frame.isDuplicate) {
            document_.faults.push_back(
                {frame.namePosition, "The key \"" + name + "\" stands here a second time."});
        }
        frame.name = std::move(name);
        return true;
    }

    bool parse_error(std::size_t bytesRead, const std::string&, const nlohmann::detail::exception& error) override
    {
        cursor_.seekToken();
        std::string message = cleanMessage(error.what());
        const std::size_t size = cursor_.getText().size();
        const std::size_t badByte = std::min(bytesRead == 0 ? 0 : bytesRead - 1, size);
        const bool isInsideText = badByte < size && message.find("invalid string") != std::string::npos;
        const TextPosition position = isInsideText ? cursor_.seek(badByte) : startOfToken(badByte);
        if (error.id == 406) message = "The number is too large.";
        const char* mistake = badByte < size && !isInsideText && error.id != 406
                                  ? guessMistake(cursor_.getText(), cursor_.getOffset(), message)
                                  : nullptr;
        return refuse(position, mistake ? mistake : message);
    }

private:
    struct Frame
    {
        std::shared_ptr<JsonValue> container;
        std::unordered_set<std::string> names;
        std::string name;
        TextPosition namePosition;
        bool isDuplicate = false;
    };

    /// A separator too many stands before what the cursor takes for the next token.
    TextPosition startOfToken(std::size_t badByte)
    {
        if (badByte >= cursor_.getOffset()) return cursor_.seekToken();
        TokenCursor again(cursor_.getText());
        const TextPosition position = again.seek(badByte);
        cursor_ = again;
        return position;
    }

    bool refuse(TextPosition position, std::string message)
    {
        document_.faults.push_back({position, std::move(message)});
        document_.root.reset();
        return false;
    }

    bool addScalar(JsonValue::Data&& data)
    {
        const TextPosition position = cursor_.seekToken();
        cursor_.skipScalar();
        add(std::make_shared<JsonValue>(std::move(data), position));
        return true;
    }

    bool open(JsonValue::Data&& data)
    {
        const TextPosition position = cursor_.seekToken();
        if (frames_.size() == maxJsonDepth) {
            return refuse(position, "The nesting is deeper than " + std::to_string(maxJsonDepth) +
                                        " levels, the most allowed.");
        }
        cursor_.skipBracket();
        const auto container = std::make_shared<JsonValue>(std::move(data), position);
        add(container);
        frames_.push_back({container, {}, {}, {}, false});
        return true;
    }

    bool close()
    {
        cursor_.seekToken();
        cursor_.skipBracket();
        frames_.pop_back();
        return true;
    }

    void add(const std::shared_ptr<JsonValue>& value)
    {
        if (frames_.empty()) {
            document_.root = value;
            return;
        }
        Frame& frame = frames_.back();
        if (auto* list = frame.container->as<JsonArray>()) {
            list->items.push_back(value);
        } else if (!frame.isDuplicate) {
            frame.container->as<JsonObject>()->members.push_back(
                {std::move(frame.name), frame.namePosition, value});
        }
    }

    TokenCursor cursor_;
    JsonDocument document_;
    std::vector<Frame> frames_;
};

Json toJson(const JsonValue& value);

struct ToJson
{
    Json operator()(std::monostate) const { return nullptr; }
    Json operator()(const JsonArray& list) const
    {
        Json result = Json::array();
        for (const auto& item : list.items)
            result.push_back(toJson(*item));
        return result;
    }
    Json operator()(const JsonObject& object) const
    {
        Json result = Json::object();
        // Not by operator[], which looks for the name among all others.
        auto& members = result.get_ref<Json::object_t&>();
        for (const auto& member : object.members)
            members.emplace_back(member.name, toJson(*member.value));
        return result;
    }
    template <typename T>
    Json operator()(const T& scalar) const
    {
        return scalar;
    }
};

Json toJson(const JsonValue& value)
{
    return std::visit(ToJson(), value.data);
}

constexpr std::string_view kindNames[] = {"null",     "a bool", "an integer", "an integer",
                                          "a number", "a text", "a list",     "an object"};
static_assert(std::size(kindNames) == std::variant_size_v<JsonValue::Data>);

}  // namespace

std::shared_ptr<JsonValue> JsonObject::find(std::string_view name) const
{
    for (const auto& member : members) {
        if (member.name == name) return member.value;
    }
    return nullptr;
}

std::string_view JsonValue::describeKind() const
{
    return kindNames[data.index()];
}

std::string JsonValue::describe() const
{
    constexpr std::size_t longest = 80;
    if (as<JsonArray>() || as<JsonObject>()) return std::string(describeKind());
    std::string text = toJson(*this).dump(-1, ' ', true, Json::error_handler_t::replace);
    return text.size() > longest ? text.substr(0, longest - 4) + "...\"" : text;
}

JsonDocument parseJson(std::string_view text)
{
    if (text.size() > maxJsonSize) {
        return {nullptr, {{{1, 1}, "The text has more than " + std::to_string(maxJsonSize) + " bytes."}}};
    }
    TreeBuilder builder(text);
    Json::sax_parse(text.begin(), text.end(), &builder);
    return builder.take();
}

std::string readTextFile(const std::string& path)
{
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    std::string text;
    std::vector<char> chunk(std::size_t{64} << 10);
    while (stream && text.size() <= maxJsonSize) {
        stream.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        text.append(chunk.data(), static_cast<std::size_t>(stream.gcount()));
    }
    if (!stream.is_open() || stream.bad()) {
        GENICAM_THROW(RuntimeException, "The file \"%s\" cannot be read: %s.", path.c_str(),
                      std::generic_category().message(errno).c_str());
    }
    if (text.size() > maxJsonSize) {
        GENICAM_THROW(RuntimeException, "The file \"%s\" has more than %zu bytes, the most allowed.", path.c_str(),
                      maxJsonSize);
    }
    return text;
}

std::string formatJson(const JsonValue& value)
{
    try {
        return toJson(value).dump(4) + "\n";
    } catch (const Json::type_error&) {
        GENICAM_THROW(RuntimeException, "A text to be written as JSON is no UTF-8.");
    }
}

}  // namespace Nivex::DataProcessing::Runtime
