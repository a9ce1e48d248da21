#pragma once

#include <limits>
#include <locale>

#include "core/array.h"
#include "core/boolean.h"
#include "core/circlef.h"
#include "core/ellipsef.h"
#include "core/float.h"
#include "core/integer.h"
#include "core/linef.h"
#include "core/pointf.h"
#include "core/rectanglef.h"
#include "core/region.h"
#include "core/string.h"
#include "core/transformationdata.h"
#include "datawriter/TextFormatter.h"
#include "datawritertest.h"

namespace DataWriterTest {

/// Holds an error without error object.
class Unexplained : public Core::Integer
{
public:
    bool hasError(bool) const override { return true; }
    std::shared_ptr<Core::IError> getError(bool) const override { return nullptr; }
};

/// Holds errors only below itself.
class ErrorBelow : public Core::Integer
{
public:
    bool hasError(bool recursive) const override { return recursive; }
    std::shared_ptr<Core::IError> getError(bool recursive) const override
    {
        return recursive ? error("below", {error("nested")}) : nullptr;
    }
};

inline const TextTokenTable tokens;
inline constexpr WriterIndices someIndices{.sessionIndex = 1,
                                           .pinIndex = 2,
                                           .recordIndex = 7,
                                           .updateIndex = 4,
                                           .arrayIndex = 5,
                                           .arraySize = 6,
                                           .mediaWriterIndex = 8};

inline TimeSnapshot someTime()
{
    return {true, 2024, 3, 9, 5, 6, 7, 89};
}

template <typename T>
std::string ofValue(const std::string& text, const T& value)
{
    std::ostringstream stream;
    TimeSnapshot time = someTime();
    formatValueText(tokens, text.c_str(), time, stream, someIndices, value);
    return stream.str();
}

/// A value of one type, and its text.
struct ValueCase
{
    std::string name;
    std::function<std::string(const std::string& text)> render;
    std::function<std::string(const std::string& text)> renderWithError;
    Utils::Variant value, withError;
    Utils::Variant array;  ///< The value, and one with the error "broken".
    Utils::Variant emptyArray, arrayWithError;
    std::string byDefault;
    std::map<std::string, std::string> known;  ///< Data tokens of that type, with what they give.
};

/// `known` is a list as in "{X}=1 {Y}=2".
template <typename T>
ValueCase valueCase(const char* name, T value, std::string byDefault, const std::string& known = "")
{
    const T bad(error("broken"));
    ValueCase row{name,
                  [value](const std::string& text) { return ofValue(text, value); },
                  [bad](const std::string& text) { return ofValue(text, bad); },
                  Utils::Variant(value),
                  Utils::Variant(bad),
                  Utils::Variant(Core::Array<T>(std::vector<T>{value, bad})),
                  Utils::Variant(Core::Array<T>()),
                  Utils::Variant(Core::Array<T>(error("no array"))),
                  std::move(byDefault),
                  {}};
    for (const std::string& pair : words(known))
        row.known[pair.substr(0, pair.find('='))] = pair.substr(pair.find('=') + 1);
    return row;
}

/// All twelve value classes.
inline std::vector<ValueCase> valueCases()
{
    using namespace Core;
    using Nivex::EPixelType;
    using Double = std::numeric_limits<double>;
    constexpr double pi = 3.141592653589793;
    const PointF center(1.5, -2);
    const auto foreignFormat = static_cast<EPixelType>(0x8108FFF0);
    const std::string size = "{ReferenceSize_Width}=640 {ReferenceSize_Height}=480 ";
    const std::string noSize = "{ReferenceSize_Width}=na {ReferenceSize_Height}=na ";
    const std::string box =
        "{BoundingBox_TopLeftX}=-1 {BoundingBox_TopLeftY}=2 {BoundingBox_Width}=3 "
        "{BoundingBox_Height}=4";
    const std::string noBox =
        "{BoundingBox_TopLeftX}=na {BoundingBox_TopLeftY}=na {BoundingBox_Width}=na "
        "{BoundingBox_Height}=na";
    const std::string noSizeDefault = "ReferenceSize.Width:na;ReferenceSize.Height:na;";
    const std::string noBoxDefault =
        "BoundingBox.Left:na;BoundingBox.Top:na;BoundingBox.Width:na;BoundingBox.Height:na";
    return {
        valueCase("Image", image(EPixelType::Mono8, 8, 4, 2), "Width=8;Height=4;PixelFormat=Mono8;LinePadding=2",
                  "{Width}=8 {Height}=4 {PixelFormat}=Mono8 {LinePadding}=2"),
        valueCase("packed Image", image(EPixelType::BayerBG12p, 8, 4),
                  "Width=8;Height=4;PixelFormat=BayerBG12p;LinePadding=0",
                  "{Width}=8 {Height}=4 {PixelFormat}=BayerBG12p {LinePadding}=0"),
        valueCase("Image of a foreign format", image(foreignFormat, 2, 1),
                  "Width=2;Height=1;PixelFormat=2164850672;LinePadding=0",
                  "{Width}=2 {Height}=1 {PixelFormat}=2164850672 {LinePadding}=0"),
        valueCase("empty Image", Image(), "Width=0;Height=0;PixelFormat=InvalidPixelFormat;LinePadding=0",
                  "{Width}=0 {Height}=0 {PixelFormat}=InvalidPixelFormat {LinePadding}=0"),
        valueCase("EllipseF", EllipseF(center, 3, 4, pi),
                  "Radius1=3;Radius2=4;Rotation=3.14159;Center.X=1.5;Center.Y=-2",
                  "{Radius1}=3 {Radius2}=4 {Rotation}=3.14159 {RotationDeg}=180 {Center_X}=1.5 {Center_Y}=-2"),
        valueCase("CircleF", CircleF(center, 3), "Radius=3;Center.X=1.5;Center.Y=-2",
                  "{Radius}=3 {Center_X}=1.5 {Center_Y}=-2"),
        valueCase("LineF", LineF(center, PointF(5, 6)), "A.X=1.5;A.Y=-2;B.X=5;B.Y=6",
                  "{PointA_X}=1.5 {PointA_Y}=-2 {PointB_X}=5 {PointB_Y}=6"),
        valueCase("RectangleF", RectangleF(center, 3, 4, pi),
                  "Width=3;Height=4;Center.X=1.5;Center.Y=-2;Rotation=3.14159",
                  "{Width}=3 {Height}=4 {Center_X}=1.5 {Center_Y}=-2 {Rotation}=3.14159 {RotationDeg}=180"),
        valueCase("PointF", center, "X=1.5;Y=-2", "{X}=1.5 {Y}=-2"),
        valueCase("endless PointF", PointF(Double::infinity(), Double::quiet_NaN()), "X=inf;Y=nan",
                  "{X}=inf {Y}=nan"),
        valueCase("Region", Region(), noSizeDefault + noBoxDefault, noSize + noBox),
        valueCase("Region with size", Region({}, ReferenceSize{640, 480}),
                  "ReferenceSize.Width=640;ReferenceSize.Height=480;" + noBoxDefault, size + noBox),
        valueCase("Region with box", Region(BoundingBox{-1, 2, 3, 4}),
                  noSizeDefault + "BoundingBox.Left=-1;BoundingBox.Top=2;BoundingBox.Width=3;BoundingBox.Height=4",
                  noSize + box),
        valueCase("TransformationData", TransformationData(3, 2, {1, 2, 3, 4, 5, 6.5}), "1;2;3\n4;5;6.5"),
        valueCase("TransformationData without rows", TransformationData(3, 0, {}), ""),
        valueCase("TransformationData without columns", TransformationData(0, 3, {}), "\n\n"),
        valueCase("signed Integer", Integer(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808"),
        valueCase("unsigned Integer", Integer(~std::uint64_t{0}), "18446744073709551615"),
        valueCase("Float", Float(0.1), "0.1"),
        valueCase("tiny Float", Float(-Double::denorm_min()), "-4.94066e-324"),
        valueCase("huge Float", Float(Double::max()), "1.79769e+308"),
        valueCase("Boolean", Boolean(true), "1"),
        valueCase("String", String("some {Width} text"), "some {Width} text"),
    };
}

/// Writes numbers with separators, as a host's global locale may.
struct Grouping : std::numpunct<char>
{
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

}  // namespace DataWriterTest
