#include "datawriter/ValueText.h"

#include <array>

#include "core/array.h"
#include "datawriter/TextFormatter.h"
#include "datawriter/ValuePrinters.h"

namespace Plugin::NivexStageletPackageBase {

namespace {

using namespace Nivex::DataProcessing::Core;
using Nivex::DataProcessing::Utils::TypeInfo;
using Nivex::DataProcessing::Utils::Variant;
using enum TextFormatSelector;

struct Target
{
    std::ostream& stream;
    const InputPinSettings& pin;
    const MediaWriterContext& context;

    const char* section(TextFormatSelector selector) const { return getTextFormat(pin, selector).c_str(); }
};

void writeMessage(std::ostream& stream, const IValue& value)
{
    if (const std::shared_ptr<IError> error = value.getError(false)) {
        stream << error->getDescription();
    } else {
        stream << "Internal error.";
    }
}

template <typename T>
void writeItem(const Target& target, const T& item, const WriterIndices& indices)
{
    const auto writeSection = [&](TextFormatSelector selector) {
        formatValueText(*target.context.tokens, target.section(selector), *target.context.time, target.stream,
                        indices, item);
    };
    writeSection(TextFormat_DataBegin);
    if (!getTextFormat(target.pin, TextFormat_Data).empty()) {
        writeSection(TextFormat_Data);
    } else if (item.hasError(false)) {
        writeMessage(target.stream, item);
    } else {
        printValueToken(target.stream, TextToken::Default, item);
    }
    writeSection(TextFormat_DataEnd);
}

template <typename T>
void writeArray(const Target& target, const Array<T>& items)
{
    WriterIndices indices = *target.context.indices;
    indices.arraySize = items.getSize();
    indices.inArray = 1;
    const auto writeSection = [&](TextFormatSelector selector) {
        formatStructuralText(*target.context.tokens, target.section(selector), *target.context.time, target.stream,
                             indices);
    };
    writeSection(TextFormat_ArrayBegin);
    if (items.hasError(false)) {
        writeMessage(target.stream, items);
    } else {
        for (std::size_t i = 0; i < items.getSize(); ++i) {
            indices.arrayIndex = i;
            writeItem(target, items.at(i), indices);
        }
    }
    writeSection(TextFormat_ArrayEnd);
}

struct TypeRow
{
    TypeInfo (*type)();
    void (*write)(const Target& target, const Variant& value);
};

template <typename T>
constexpr TypeRow arrayRow{
    [] { return TypeInfo::get<Array<T>>(); },
    [](const Target& target, const Variant& value) { writeArray(target, value.getValue<Array<T>>()); }};
template <typename T>
constexpr TypeRow itemRow{[] { return TypeInfo::get<T>(); },
                          [](const Target& target, const Variant& value) {
                              writeItem(target, value.getValue<T>(), *target.context.indices);
                          }};

using TypePair = std::array<TypeRow, 2>;

template <typename... T>
constexpr std::array<TypePair, sizeof...(T)> pairsOf()
{
    return {TypePair{arrayRow<T>, itemRow<T>}...};
}

/// The first that a value can be read as counts.
constexpr auto typePairs = pairsOf<Image, String, Boolean, Float, Integer, Region, TransformationData, PointF,
                                   RectangleF, LineF, CircleF, EllipseF>();

}  // namespace

bool writeValueText(std::ostream& stream, const Variant& value, const TypeInfo& type, const InputPinSettings& pin,
                    const MediaWriterContext& context)
{
    for (const TypePair& pair : typePairs) {
        for (const TypeRow& row : pair) {
            if (!type.canConvert(row.type())) continue;
            row.write({stream, pin, context}, value);
            return true;
        }
    }
    return false;
}

}  // namespace Plugin::NivexStageletPackageBase
