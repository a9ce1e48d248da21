#include "datawriter/ValuePrinters.h"

#include <algorithm>
#include <array>
#include <functional>
#include <type_traits>

#include "utility/pixeltype.h"

namespace Plugin::NivexStageletPackageBase {

namespace {

using namespace Nivex::DataProcessing::Core;

template <typename T>
using Print = void (*)(std::ostream& stream, const T& value);

/// One property of a value class.
template <typename T>
struct Field
{
    TextToken token;
    Print<T> print;
    const char* label = nullptr;             ///< Under {Default}; null for a field that stands for its token only.
    const char* absentText = nullptr;        ///< Under {Default}, in place of label and value.
    bool (T::*isPresent)() const = nullptr;  ///< Null for a field that every value has.
};

/// Prints what the getters, one called on the result of the other, give.
template <auto getter, auto... more>
constexpr auto get = [](std::ostream& stream, const auto& value) {
    const auto part = std::invoke(getter, value);
    if constexpr (sizeof...(more) > 0) {
        get<more...>(stream, part);
    } else if constexpr (std::is_same_v<std::remove_cv_t<decltype(part)>, Float>) {
        stream << part.get();
    } else {
        stream << part;
    }
};

template <auto getRotation>
constexpr auto degrees = [](std::ostream& stream, const auto& value) {
    constexpr double degreesPerRadian = 57.29577951308232;
    stream << std::invoke(getRotation, value).get() * degreesPerRadian;
};

void printPixelFormat(std::ostream& stream, const Image& image)
{
    const Nivex::EPixelType type = image.getPixelType();
    if (Nivex::HasPixelLayout(type) || type == Nivex::EPixelType::Undefined) {
        stream << Nivex::GetPixelTypeName(type);
    } else {
        stream << static_cast<std::uint32_t>(type);
    }
}

/// What a class prints: the table of its fields, or one function if it has the default token only.
template <typename T>
constexpr auto layoutOf = nullptr;

template <>
constexpr auto layoutOf<Image> = std::to_array<Field<Image>>({
    {TextToken::Width, get<&Image::getWidth>, "Width="},
    {TextToken::Height, get<&Image::getHeight>, "Height="},
    {TextToken::PixelFormat, printPixelFormat, "PixelFormat="},
    {TextToken::LinePadding, get<&Image::getLinePadding>, "LinePadding="},
});

template <>
constexpr auto layoutOf<EllipseF> = std::to_array<Field<EllipseF>>({
    {TextToken::Radius1, get<&EllipseF::getRadius1>, "Radius1="},
    {TextToken::Radius2, get<&EllipseF::getRadius2>, "Radius2="},
    {TextToken::Rotation, get<&EllipseF::getRotation>, "Rotation="},
    {TextToken::RotationDeg, degrees<&EllipseF::getRotation>},
    {TextToken::Center_X, get<&EllipseF::getCenter, &PointF::getX>, "Center.X="},
    {TextToken::Center_Y, get<&EllipseF::getCenter, &PointF::getY>, "Center.Y="},
});

template <>
constexpr auto layoutOf<CircleF> = std::to_array<Field<CircleF>>({
    {TextToken::Radius, get<&CircleF::getRadius>, "Radius="},
    {TextToken::Center_X, get<&CircleF::getCenter, &PointF::getX>, "Center.X="},
    {TextToken::Center_Y, get<&CircleF::getCenter, &PointF::getY>, "Center.Y="},
});

template <>
constexpr auto layoutOf<LineF> = std::to_array<Field<LineF>>({
    {TextToken::PointA_X, get<&LineF::getPointA, &PointF::getX>, "A.X="},
    {TextToken::PointA_Y, get<&LineF::getPointA, &PointF::getY>, "A.Y="},
    {TextToken::PointB_X, get<&LineF::getPointB, &PointF::getX>, "B.X="},
    {TextToken::PointB_Y, get<&LineF::getPointB, &PointF::getY>, "B.Y="},
});

template <>
constexpr auto layoutOf<RectangleF> = std::to_array<Field<RectangleF>>({
    {TextToken::Width, get<&RectangleF::getWidth>, "Width="},
    {TextToken::Height, get<&RectangleF::getHeight>, "Height="},
    {TextToken::Center_X, get<&RectangleF::getCenter, &PointF::getX>, "Center.X="},
    {TextToken::Center_Y, get<&RectangleF::getCenter, &PointF::getY>, "Center.Y="},
    {TextToken::Rotation, get<&RectangleF::getRotation>, "Rotation="},
    {TextToken::RotationDeg, degrees<&RectangleF::getRotation>},
});

template <>
constexpr auto layoutOf<PointF> = std::to_array<Field<PointF>>({
    {TextToken::X, get<&PointF::getX>, "X="},
    {TextToken::Y, get<&PointF::getY>, "Y="},
});

template <>
constexpr auto layoutOf<Region> = std::to_array<Field<Region>>({
    {TextToken::ReferenceSize_Width, get<&Region::getReferenceWidth>,
     "ReferenceSize.Width=", "ReferenceSize.Width:na", &Region::hasReferenceSize},  // sic: a colon
    {TextToken::ReferenceSize_Height, get<&Region::getReferenceHeight>,
     "ReferenceSize.Height=", "ReferenceSize.Height:na", &Region::hasReferenceSize},
    {TextToken::BoundingBox_TopLeftX, get<&Region::getBoundingBoxLeft>, "BoundingBox.Left=", "BoundingBox.Left:na",
     &Region::hasBoundingBox},
    {TextToken::BoundingBox_TopLeftY, get<&Region::getBoundingBoxTop>, "BoundingBox.Top=", "BoundingBox.Top:na",
     &Region::hasBoundingBox},
    {TextToken::BoundingBox_Width, get<&Region::getBoundingBoxWidth>, "BoundingBox.Width=", "BoundingBox.Width:na",
     &Region::hasBoundingBox},
    {TextToken::BoundingBox_Height, get<&Region::getBoundingBoxHeight>,
     "BoundingBox.Height=", "BoundingBox.Height:na", &Region::hasBoundingBox},
});

template <typename T>
bool isAbsent(const Field<T>& field, const T& value)
{
    return field.isPresent && !(value.*field.isPresent)();
}

template <typename T>
void printLabelled(std::ostream& stream, const Field<T>& field, const T& value)
{
    if (isAbsent(field, value)) {
        stream << field.absentText;
    } else {
        stream << field.label;
        field.print(stream, value);
    }
}

template <typename T>
void printDefault(std::ostream& stream, const auto& fields, const T& value)
{
    bool isFirst = true;
    for (const Field<T>& field : fields) {
        if (!field.label) continue;
        if (!isFirst) stream << ';';
        isFirst = false;
        printLabelled(stream, field, value);
    }
}

template <typename T, std::size_t count>
bool printToken(std::ostream& stream, TextToken token, const T& value, const std::array<Field<T>, count>& fields)
{
    if (token == TextToken::Default) {
        printDefault(stream, fields, value);
        return true;
    }
    const auto field =
        std::find_if(fields.begin(), fields.end(), [token](const Field<T>& row) { return row.token == token; });
    if (field == fields.end()) return false;
    if (isAbsent(*field, value)) {
        stream << "na";
    } else {
        field->print(stream, value);
    }
    return true;
}

template <typename T>
bool printToken(std::ostream& stream, TextToken token, const T& value, Print<T> print)
{
    if (token != TextToken::Default) return false;
    print(stream, value);
    return true;
}

void printMatrix(std::ostream& stream, const TransformationData& matrix)
{
    for (std::size_t y = 0; y < matrix.getSizeY(); ++y) {
        if (y > 0) stream << '\n';
        for (std::size_t x = 0; x < matrix.getSizeX(); ++x) {
            if (x > 0) stream << ';';
            stream << matrix.get(x, y);
        }
    }
}

void printInteger(std::ostream& stream, const Integer& integer)
{
    if (integer.isSigned()) {
        stream << integer.getSigned();
    } else {
        stream << integer.getUnsigned();
    }
}

template <>
constexpr Print<TransformationData> layoutOf<TransformationData> = printMatrix;
template <>
constexpr Print<Integer> layoutOf<Integer> = printInteger;
template <>
constexpr Print<Float> layoutOf<Float> = get<&Float::get>;
template <>
constexpr Print<Boolean> layoutOf<Boolean> = get<&Boolean::get>;
template <>
constexpr Print<String> layoutOf<String> = get<&String::get>;

}  // namespace

template <typename T>
bool printValueToken(std::ostream& stream, TextToken token, const T& value)
{
    return printToken(stream, token, value, layoutOf<T>);
}

template bool printValueToken(std::ostream&, TextToken, const Image&);
template bool printValueToken(std::ostream&, TextToken, const EllipseF&);
template bool printValueToken(std::ostream&, TextToken, const CircleF&);
template bool printValueToken(std::ostream&, TextToken, const LineF&);
template bool printValueToken(std::ostream&, TextToken, const RectangleF&);
template bool printValueToken(std::ostream&, TextToken, const PointF&);
template bool printValueToken(std::ostream&, TextToken, const Region&);
template bool printValueToken(std::ostream&, TextToken, const TransformationData&);
template bool printValueToken(std::ostream&, TextToken, const Integer&);
template bool printValueToken(std::ostream&, TextToken, const Float&);
template bool printValueToken(std::ostream&, TextToken, const Boolean&);
template bool printValueToken(std::ostream&, TextToken, const String&);

}  // namespace Plugin::NivexStageletPackageBase
