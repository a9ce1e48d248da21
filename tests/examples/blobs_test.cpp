// The blobs of the example package, against shapes whose measures are known and against OpenCV.
#include "blobs.h"

#include <gmock/gmock.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace Inspection {

namespace {

constexpr double pi = std::numbers::pi;

struct Picture
{
    std::size_t width, height;
    std::vector<std::uint8_t> pixels = std::vector<std::uint8_t>(width * height);

    GreyPicture view() const { return {pixels.data(), static_cast<int>(width), static_cast<int>(height)}; }
};

/// A picture drawn in characters: '#' is 200, all else 50.
Picture draw(const std::vector<std::string>& rows)
{
    Picture picture{rows[0].size(), rows.size()};
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        picture.pixels[i] = rows[i / picture.width].at(i % picture.width) == '#' ? 200 : 50;
    return picture;
}

struct Ellipse
{
    double x, y, radius1, radius2, rotation;
};

/// Turned counterclockwise as seen. Pixels whose centres lie inside are 200, others 50. That moves centre and
/// radii by up to a tenth of a pixel.
Picture drawEllipse(const Ellipse& e)
{
    Picture picture{400, 300};
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const double dx = static_cast<double>(i % picture.width) + 0.5 - e.x;
        const double dy = static_cast<double>(i / picture.width) + 0.5 - e.y;
        const double along = (dx * std::cos(e.rotation) - dy * std::sin(e.rotation)) / e.radius1;
        const double across = (dy * std::cos(e.rotation) + dx * std::sin(e.rotation)) / e.radius2;
        picture.pixels[i] = along * along + across * across <= 1 ? 200 : 50;
    }
    return picture;
}

}  // namespace

TEST(BlobsTest, SmallFiguresAreExact)
{
    struct Row
    {
        const char* what;
        std::vector<std::string> picture;
        BlobSettings settings;
        std::vector<Blob> expected;  // area, center, brightness and box count
    };
    const BlobSettings bright{Polarity::Bright, 128, 1};
    const BlobSettings dark{Polarity::Dark, 128, 1};
    const auto blob = [](int area, double x, double y, int left, int top, int width, int height,
                         double brightness = 200) {
        Blob result;
        result.area = area;
        result.centerX = x;
        result.centerY = y;
        result.brightness = brightness;
        result.left = left;
        result.top = top;
        result.width = width;
        result.height = height;
        return result;
    };
    const std::vector<Row> rows = {
        {"nothing", {"....", "...."}, bright, {}},
        {"everything", {"###", "###"}, bright, {blob(6, 1.5, 1, 0, 0, 3, 2)}},
        {"a single pixel", {"....", "..#.", "...."}, bright, {blob(1, 2.5, 1.5, 2, 1, 1, 1)}},
        {"corners touch to the right", {"#..", ".#.", "..#"}, bright, {blob(3, 1.5, 1.5, 0, 0, 3, 3)}},
        {"corners touch to the left", {"..#", ".#.", "#.."}, bright, {blob(3, 1.5, 1.5, 0, 0, 3, 3)}},
        {"a gap of a column", {"#.#", "#.#"}, bright, {blob(2, 0.5, 1, 0, 0, 1, 2), blob(2, 2.5, 1, 2, 0, 1, 2)}},
        {"a gap of a row", {"##", "..", "##"}, bright, {blob(2, 1, 0.5, 0, 0, 2, 1), blob(2, 1, 2.5, 0, 2, 2, 1)}},
        {"arms that join at the end",
         {"#.#.#", "#.#.#", "#####"},
         bright,
         {blob(11, 2.5, (3 * 0.5 + 3 * 1.5 + 5 * 2.5) / 11, 0, 0, 5, 3)}},
        {"arms that join late from the right", {"..#", "#.#", "##."}, bright, {blob(5, 1.5, 1.7, 0, 0, 3, 3)}},
        {"a ring and what it holds",
         {"#####", "#...#", "#.#.#", "#...#", "#####"},
         bright,
         {blob(16, 2.5, 2.5, 0, 0, 5, 5), blob(1, 2.5, 2.5, 2, 2, 1, 1)}},
        {"all four borders",
         {".#..", "#..#", "..#."},
         bright,
         {blob(2, 1, 1, 0, 0, 2, 2), blob(2, 3, 2, 2, 1, 2, 2)}},
        {"a row's end and the next row's start",
         {"..#", "#.."},
         bright,
         {blob(1, 2.5, 0.5, 2, 0, 1, 1), blob(1, 0.5, 1.5, 0, 1, 1, 1)}},
        {"dark", {"###", "#.#", "###"}, dark, {blob(1, 1.5, 1.5, 1, 1, 1, 1, 50)}},
        {"noise", {"##.#", "##..", "...#"}, {Polarity::Bright, 128, 4}, {blob(4, 1, 1, 0, 0, 2, 2)}},
        {"just noise", {"##.#", "##..", "...#"}, {Polarity::Bright, 128, 5}, {}},
        {"bright at the threshold", {"#."}, {Polarity::Bright, 200, 1}, {blob(1, 0.5, 0.5, 0, 0, 1, 1)}},
        {"bright above the grey values", {"#."}, {Polarity::Bright, 201, 1}, {}},
        {"dark at the threshold", {"#."}, {Polarity::Dark, 50, 1}, {}},
        {"dark below the threshold", {"#."}, {Polarity::Dark, 51, 1}, {blob(1, 1.5, 0.5, 1, 0, 1, 1, 50)}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const std::vector<Blob> blobs = findBlobs(draw(row.picture).view(), row.settings);
        ASSERT_EQ(blobs.size(), row.expected.size());
        for (std::size_t i = 0; i < blobs.size(); ++i) {
            const Blob& found = blobs[i];
            const Blob& wanted = row.expected[i];
            EXPECT_EQ(found.area, wanted.area);
            EXPECT_NEAR(found.centerX, wanted.centerX, 1e-9);
            EXPECT_NEAR(found.centerY, wanted.centerY, 1e-9);
            EXPECT_NEAR(found.brightness, wanted.brightness, 1e-9);
            EXPECT_EQ(std::make_tuple(found.left, found.top, found.width, found.height),
                      std::make_tuple(wanted.left, wanted.top, wanted.width, wanted.height));
        }
    }
}

TEST(BlobsTest, EllipsesAreMeasured)
{
    for (const Ellipse& drawn :
         {Ellipse{200, 150, 60, 60, 0}, Ellipse{200.3, 150.7, 90, 40, 0}, Ellipse{150.25, 140.5, 80, 30, pi / 6},
          Ellipse{220.8, 160.1, 80, 30, -pi / 3}, Ellipse{200, 150, 50, 20, pi / 2 - 0.01}})
    {
        SCOPED_TRACE(drawn.rotation);
        const std::vector<Blob> blobs = findBlobs(drawEllipse(drawn).view(), {});
        ASSERT_EQ(blobs.size(), 1U);
        EXPECT_NEAR(blobs[0].centerX, drawn.x, 0.1);
        EXPECT_NEAR(blobs[0].centerY, drawn.y, 0.1);
        EXPECT_NEAR(blobs[0].majorRadius, drawn.radius1, 0.1);
        EXPECT_NEAR(blobs[0].minorRadius, drawn.radius2, 0.1);
        if (drawn.radius1 > drawn.radius2) {
            EXPECT_NEAR(blobs[0].rotation, drawn.rotation, 0.005);
        }
    }
}

TEST(BlobsTest, AgreesWithOpenCv)
{
    cv::setNumThreads(0);  // The thread sanitizer cannot see into its threads.
    std::mt19937 random(1);
    for (const auto& [width, height, share] :
         {std::tuple{97, 61, 0.1}, {61, 97, 0.4}, {200, 150, 0.5}, {320, 240, 0.7}, {1, 50, 0.5}, {50, 1, 0.5}})
    {
        SCOPED_TRACE(share);
        Picture picture{static_cast<std::size_t>(width), static_cast<std::size_t>(height)};
        std::bernoulli_distribution inside(share);
        for (std::uint8_t& pixel : picture.pixels)
            pixel = inside(random) ? 255 : 0;

        const cv::Mat mask(height, width, CV_8U, picture.pixels.data());
        cv::Mat labels;
        cv::Mat stats;
        cv::Mat centroids;
        const int count = cv::connectedComponentsWithStats(mask, labels, stats, centroids, 8, CV_32S);

        const std::vector<Blob> blobs = findBlobs(picture.view(), {Polarity::Bright, 128, 1});
        ASSERT_EQ(blobs.size(), static_cast<std::size_t>(count) - 1);
        std::map<std::tuple<int, int, int, int, int>, std::vector<std::pair<double, double>>> judged;
        std::map<std::tuple<int, int, int, int, int>, std::vector<std::pair<double, double>>> found;
        for (int i = 1; i < count; ++i) {
            const int* s = stats.ptr<int>(i);
            judged[{s[4], s[0], s[1], s[2], s[3]}].emplace_back(centroids.at<double>(i, 0) + 0.5,
                                                                centroids.at<double>(i, 1) + 0.5);
        }
        for (const Blob& blob : blobs) {
            found[{blob.area, blob.left, blob.top, blob.width, blob.height}].emplace_back(blob.centerX,
                                                                                          blob.centerY);
        }
        ASSERT_EQ(found.size(), judged.size());
        for (auto& [figures, centers] : judged) {
            ASSERT_EQ(found.count(figures), 1U);
            auto& own = found[figures];
            ASSERT_EQ(own.size(), centers.size());
            std::sort(own.begin(), own.end());
            std::sort(centers.begin(), centers.end());
            for (std::size_t i = 0; i < centers.size(); ++i) {
                EXPECT_NEAR(own[i].first, centers[i].first, 1e-6);
                EXPECT_NEAR(own[i].second, centers[i].second, 1e-6);
            }
        }
    }
}

// Far from the origin, where sums of squares of coordinates would lose their last digits.
TEST(BlobsTest, MomentsAgreeWithOpenCv)
{
    Picture picture{5000, 4000};
    for (std::size_t y = 3900; y < 3990; ++y) {
        const std::size_t begin = 4600 + (y - 3900) * 2;
        std::fill_n(picture.pixels.begin() + static_cast<std::ptrdiff_t>(y * picture.width + begin), y - 3880,
                    255);
    }
    const cv::Mat mask(4000, 5000, CV_8U, picture.pixels.data());
    const cv::Moments moments = cv::moments(mask, true);
    const double xx = moments.mu20 / moments.m00 + 1.0 / 12;
    const double yy = moments.mu02 / moments.m00 + 1.0 / 12;
    const double xy = moments.mu11 / moments.m00;

    const std::vector<Blob> blobs = findBlobs(picture.view(), {});
    ASSERT_EQ(blobs.size(), 1U);
    const Blob& blob = blobs[0];
    EXPECT_NEAR(blob.rotation, -std::atan2(2 * xy, xx - yy) / 2, 1e-6);
    const auto square = [](double value) { return value * value; };
    EXPECT_NEAR(square(blob.majorRadius) + square(blob.minorRadius), 4 * (xx + yy), 1e-2);
    EXPECT_NEAR(square(blob.majorRadius * blob.minorRadius), 16 * (xx * yy - xy * xy), 1);
}

}  // namespace Inspection
