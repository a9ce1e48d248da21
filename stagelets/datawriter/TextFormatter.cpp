#include "datawriter/TextFormatter.h"

#include <array>
#include <cstring>
#include <ios>
#include <optional>
#include <string_view>

namespace Plugin::NivexStageletPackageBase {

namespace {

using Nivex::DataProcessing::Core::IError;
using Nivex::DataProcessing::Core::IValue;

bool isIn(TextToken token, TextToken first, TextToken last)
{
    return token >= first && token <= last;
}

void writeVerbatim(std::ostream& stream, std::string_view text)
{
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
}

constexpr std::array escapedCharacters = {'\n', '\t', '\\', '{', '}'};

std::uint64_t indexOf(TextToken token, const WriterIndices& indices)
{
    static constexpr std::array fields = {&WriterIndices::arrayIndex,      &WriterIndices::arraySize,
                                          &WriterIndices::recordIndex,     &WriterIndices::updateIndex,
                                          &WriterIndices::sessionIndex,    &WriterIndices::pinIndex,
                                          &WriterIndices::mediaWriterIndex};
    return indices.*fields[static_cast<std::size_t>(token) - static_cast<std::size_t>(TextToken::ArrayIndex)];
}

std::int32_t timeOf(TextToken token, TimeSnapshot& time)
{
    static constexpr std::array fields = {&TimeSnapshot::year,       &TimeSnapshot::month,  &TimeSnapshot::day,
                                          &TimeSnapshot::hour,       &TimeSnapshot::minute, &TimeSnapshot::second,
                                          &TimeSnapshot::millisecond};
    time.require();
    return time.*fields[static_cast<std::size_t>(token) - static_cast<std::size_t>(TextToken::Year)];
}

/// What a token without argument does to the flags of a stream.
struct FlagChange
{
    std::ios_base::fmtflags cleared;
    std::ios_base::fmtflags set;
};

/// From TextToken::Fixed on.
const std::array flagChanges = {
    FlagChange{std::ios_base::floatfield, std::ios_base::fixed},
    FlagChange{std::ios_base::floatfield, std::ios_base::scientific},
    FlagChange{std::ios_base::basefield, std::ios_base::hex},
    FlagChange{std::ios_base::basefield, std::ios_base::dec},
    FlagChange{std::ios_base::basefield, std::ios_base::oct},
    FlagChange{std::ios_base::adjustfield, std::ios_base::left},
    FlagChange{std::ios_base::adjustfield, std::ios_base::right},
    FlagChange{std::ios_base::adjustfield, std::ios_base::internal},
    FlagChange{{}, std::ios_base::showpos},
    FlagChange{{}, std::ios_base::showpoint},
    FlagChange{{}, std::ios_base::uppercase},
    FlagChange{std::ios_base::uppercase, {}},
    FlagChange{{}, std::ios_base::boolalpha},
    FlagChange{std::ios_base::boolalpha, {}},
};

void changeFlags(TextToken token, std::ios_base& stream)
{
    const FlagChange& change =
        flagChanges[static_cast<std::size_t>(token) - static_cast<std::size_t>(TextToken::Fixed)];
    stream.unsetf(change.cleared);
    stream.setf(change.set);
}

struct NumberArgument
{
    int value;
    const char* end;  ///< Behind the closing brace.
};

/// A number from 0 to 255 in braces at the very start of the text.
std::optional<NumberArgument> readNumberArgument(const char* text)
{
    constexpr int limit = 255;
    if (*text != '{') return std::nullopt;
    const char* position = text + 1;
    int value = 0;
    for (; *position >= '0' && *position <= '9'; ++position) {
        value = value * 10 + (*position - '0');
        if (value > limit) return std::nullopt;
    }
    if (position == text + 1 || *position != '}') return std::nullopt;
    return NumberArgument{value, position + 1};
}

/// Carries out a token that takes an argument, and gives the place behind it: behind the argument if there is a
/// right one, else behind the token, which then does nothing.
const char* applyArgument(TextToken token, const char* behindToken, std::ostream& stream)
{
    if (token == TextToken::Fill) {
        const bool isRight = behindToken[0] == '{' && behindToken[1] != '\0' && behindToken[2] == '}';
        if (!isRight) return behindToken;
        stream.fill(behindToken[1]);
        return behindToken + 3;
    }
    const auto argument = readNumberArgument(behindToken);
    if (!argument) return behindToken;
    if (token == TextToken::Precision) {
        stream.precision(argument->value);
    } else {
        stream.width(argument->value);
    }
    return argument->end;
}

/// What data and error tokens give, which is where the two formatters differ.
class ITokenSource
{
public:
    virtual void writeData(std::ostream& stream, const TextTokenTable::Match& match) const = 0;
    virtual void writeError(std::ostream& stream, TextToken token) const = 0;

protected:
    ~ITokenSource() = default;
};

class NoValue final : public ITokenSource
{
public:
    void writeData(std::ostream& stream, const TextTokenTable::Match& match) const override
    {
        writeVerbatim(stream, match.text());
    }
    void writeError(std::ostream& stream, TextToken token) const override
    {
        if (token == TextToken::HasError || token == TextToken::HasErrorRecursive) stream << false;
    }
};

class OneValue final : public ITokenSource
{
public:
    OneValue(const IValue& value, const void* object, Detail::ValueTokenPrinter printer)
        : value_(value), object_(object), printer_(printer), hasError_(value.hasError(false))
    {}

    void writeData(std::ostream& stream, const TextTokenTable::Match& match) const override
    {
        if (!hasError_) {
            if (!printer_(stream, match.token(), object_)) writeVerbatim(stream, match.text());
        } else if (match.token() == TextToken::Default) {
            writeMessage(stream);
        } else {
            stream << "na";
        }
    }

    void writeError(std::ostream& stream, TextToken token) const override
    {
        if (token == TextToken::ErrorMessage) {
            if (hasError_) writeMessage(stream);
        } else if (token == TextToken::ErrorMessageRecursive) {
            if (value_.hasError(true)) writeRecursiveMessage(stream);
        } else {
            stream << (token == TextToken::HasError ? hasError_ : value_.hasError(true));
        }
    }

private:
    void writeMessage(std::ostream& stream) const
    {
        if (const std::shared_ptr<IError> error = value_.getError(false)) stream << error->getDescription();
    }

    // Sic: each nested error repeats the message of the top one. Evaluations of written files count on it.
    void writeRecursiveMessage(std::ostream& stream) const
    {
        const std::shared_ptr<IError> error = value_.getError(true);
        if (!error) return;
        stream << error->getDescription();
        for (const std::shared_ptr<IError>& nested : error->getParentErrors()) {
            if (nested) stream << "; " << error->getDescription();
        }
    }

    const IValue& value_;
    const void* object_;
    Detail::ValueTokenPrinter printer_;
    const bool hasError_;
};

class Scan
{
public:
    Scan(const TextTokenTable& tokens, TimeSnapshot& time, std::ostream& stream, const WriterIndices& indices,
         const ITokenSource& source)
        : tokens_(tokens), time_(time), stream_(stream), indices_(indices), source_(source)
    {}

    void run(const char* text)
    {
        while (*text) {
            const TextTokenTable::Match match = tokens_.find(text);
            if (!match) return writeVerbatim(stream_, text);
            writeVerbatim(stream_, {text, static_cast<std::size_t>(match.begin - text)});
            text = execute(match);
        }
    }

private:
    /// Gives the place where reading goes on.
    const char* execute(const TextTokenTable::Match& match)
    {
        using enum TextToken;
        const TextToken token = match.token();
        if (isIn(token, NewLine, ClosingBrace)) {
            stream_.put(escapedCharacters[static_cast<std::size_t>(token)]);
        } else if (isIn(token, Default, LinePadding)) {
            source_.writeData(stream_, match);
        } else if (isIn(token, ArrayIndex, MediaWriterIndex)) {
            stream_ << indexOf(token, indices_);
        } else if (isIn(token, ErrorMessage, HasErrorRecursive)) {
            source_.writeError(stream_, token);
        } else if (isIn(token, Year, Millisecond)) {
            stream_ << timeOf(token, time_);
        } else if (isIn(token, Precision, Fill)) {
            return applyArgument(token, match.end, stream_);
        } else {
            changeFlags(token, stream_);
        }
        return match.end;
    }

    const TextTokenTable& tokens_;
    TimeSnapshot& time_;
    std::ostream& stream_;
    const WriterIndices& indices_;
    const ITokenSource& source_;
};

}  // namespace

void formatStructuralText(const TextTokenTable& tokens, const char* templateText, TimeSnapshot& time,
                          std::ostream& stream, const WriterIndices& indices)
{
    if (templateText) Scan(tokens, time, stream, indices, NoValue()).run(templateText);
}

void Detail::formatValueText(const TextTokenTable& tokens, const char* templateText, TimeSnapshot& time,
                             std::ostream& stream, const WriterIndices& indices, const IValue& value,
                             const void* object, ValueTokenPrinter printer)
{
    if (templateText) Scan(tokens, time, stream, indices, OneValue(value, object, printer)).run(templateText);
}

}  // namespace Plugin::NivexStageletPackageBase
