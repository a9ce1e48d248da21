// Any bytes as a template: the first byte chooses the value and whether it holds an error, the rest is the text.
// It must render through both formatters and as a name, and what comes out is bounded by what went in.
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "core/errors.h"
#include "datawriter/NameRendering.h"
#include "datawriter/TextFormatter.h"

namespace {

using namespace Nivex::DataProcessing::Core;
using namespace Plugin::NivexStageletPackageBase;

/// The longest output of one token: a matrix of numbers, each as wide or as precise as can be.
constexpr std::size_t longestPerToken = 8192;

const TextTokenTable tokens;
const WriterIndices indices{.sessionIndex = 1, .recordIndex = ~std::uint64_t{0}, .mediaWriterIndex = 3};

void require(bool holds)
{
    if (!holds) std::abort();
}

template <typename T>
void render(const char* text, const T& value, bool withError)
{
    const T broken(std::make_shared<InvalidValueError>("broken", Nivex::DataProcessing::Utils::DateTime::now()));
    std::ostringstream stream;
    TimeSnapshot time;
    formatValueText(tokens, text, time, stream, indices, withError ? broken : value);
    require(stream.good() && stream.str().size() <= std::char_traits<char>::length(text) * longestPerToken);
}

void renderKind(unsigned kind, const char* text, bool withError)
{
    const PointF point(1e300, -2.5);
    switch (kind % 12) {
        case 0:
            return render(text, Image(), withError);
        case 1:
            return render(text, EllipseF(point, 1, 2, 3), withError);
        case 2:
            return render(text, CircleF(point, 1e-300), withError);
        case 3:
            return render(text, LineF(point, point), withError);
        case 4:
            return render(text, RectangleF(point, 1, 2, 3), withError);
        case 5:
            return render(text, point, withError);
        case 6:
            return render(text, Region(BoundingBox{-1, 2, 3, 4}), withError);
        case 7:
            return render(text, TransformationData(2, 2, {1e308, -1e308, 0.1, 3}), withError);
        case 8:
            return render(text, Integer(-5), withError);
        case 9:
            return render(text, Float(-1e308), withError);
        case 10:
            return render(text, Boolean(true), withError);
        default:
            return render(text, String("text"), withError);
    }
}

void renderAsName(const char* text)
{
    TimeSnapshot time;
    require(renderName(tokens, text, time, indices).find('/') == std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    renderKind(data[0] / 2, text.c_str(), data[0] % 2 != 0);
    renderAsName(text.c_str());
    return 0;
}
