#include "blobs.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Inspection {

namespace {

struct Pixel
{
    int x, y;
};

std::size_t placeOf(const GreyPicture& picture, Pixel pixel)
{
    return static_cast<std::size_t>(pixel.y) * static_cast<std::size_t>(picture.width) +
           static_cast<std::size_t>(pixel.x);
}

/// A pixel and all that hang together with it, which don't wait any longer then.
std::vector<Pixel> takeFigure(const GreyPicture& picture, std::vector<char>& isWaiting, Pixel first)
{
    std::vector<Pixel> figure;
    const auto take = [&](Pixel pixel) {
        const bool isInside = pixel.x >= 0 && pixel.x < picture.width && pixel.y >= 0 && pixel.y < picture.height;
        if (isInside && std::exchange(isWaiting[placeOf(picture, pixel)], 0)) figure.push_back(pixel);
    };
    take(first);
    for (std::size_t i = 0; i < figure.size(); ++i) {  // grows on the way
        const Pixel center = figure[i];
        for (int neighbour = 0; neighbour < 9; ++neighbour)
            take({center.x - 1 + neighbour % 3, center.y - 1 + neighbour / 3});
    }
    return figure;
}

/// A pixel is a square, which has a variance of 1/12 itself; a full ellipse of radius r has one of r^2 / 4.
/// Y goes down, so the rotation has the other sign, but 0 is never -0, which texts would show.
Blob measure(const GreyPicture& picture, const std::vector<Pixel>& figure)
{
    const auto meanOf = [&figure](const auto& quantity) {
        double sum = 0.0;
        for (const Pixel pixel : figure)
            sum += quantity(pixel);
        return sum / static_cast<double>(figure.size());
    };
    const double x = meanOf([](Pixel p) { return p.x + 0.5; });
    const double y = meanOf([](Pixel p) { return p.y + 0.5; });
    const double xx = meanOf([x](Pixel p) { return (p.x + 0.5 - x) * (p.x + 0.5 - x); }) + 1.0 / 12;
    const double yy = meanOf([y](Pixel p) { return (p.y + 0.5 - y) * (p.y + 0.5 - y); }) + 1.0 / 12;
    const double xy = meanOf([x, y](Pixel p) { return (p.x + 0.5 - x) * (p.y + 0.5 - y); });
    const double spread = std::hypot((xx - yy) / 2, xy);
    const auto [left, right] = std::ranges::minmax(figure, {}, &Pixel::x);
    const auto [top, bottom] = std::ranges::minmax(figure, {}, &Pixel::y);
    return {.area = static_cast<int>(figure.size()),
            .left = left.x,
            .top = top.y,
            .width = right.x + 1 - left.x,
            .height = bottom.y + 1 - top.y,
            .centerX = x,
            .centerY = y,
            .majorRadius = 2 * std::sqrt((xx + yy) / 2 + spread),
            .minorRadius = 2 * std::sqrt((xx + yy) / 2 - spread),
            .rotation = std::atan2(0.0 - xy, (xx - yy) / 2) / 2,
            .brightness = meanOf([&picture](Pixel p) { return picture.pixels[placeOf(picture, p)]; })};
}

}  // namespace

std::vector<Blob> findBlobs(const GreyPicture& picture, const BlobSettings& settings)
{
    const bool isBright = settings.polarity == Polarity::Bright;
    std::vector<char> isWaiting(placeOf(picture, {0, picture.height}));
    std::transform(picture.pixels, picture.pixels + isWaiting.size(), isWaiting.begin(),
                   [&](std::uint8_t pixel) { return (pixel >= settings.threshold) == isBright; });
    std::vector<Blob> blobs;
    for (Pixel first{0, 0}; first.y < picture.height; ++first.y) {
        for (first.x = 0; first.x < picture.width; ++first.x) {
            if (!isWaiting[placeOf(picture, first)]) continue;
            const std::vector<Pixel> figure = takeFigure(picture, isWaiting, first);
            if (std::ssize(figure) >= settings.minArea) blobs.push_back(measure(picture, figure));
        }
    }
    return blobs;
}

}  // namespace Inspection
