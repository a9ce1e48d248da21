#include "blobs.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Inspection {

namespace {

/// The moments of a figure of unit squares about its own centre. Added this way they stay exact to rounding,
/// however far from the origin the figure lies.
struct Moments
{
    double area = 0.0;
    double x = 0.0, y = 0.0;              // the centre
    double xx = 0.0, yy = 0.0, xy = 0.0;  // the sums of the squares of distances from it

    void add(const Moments& other)
    {
        const double whole = area + other.area;
        const double dx = other.x - x;
        const double dy = other.y - y;
        const double weight = area * other.area / whole;
        xx += other.xx + dx * dx * weight;
        yy += other.yy + dy * dy * weight;
        xy += other.xy + dx * dy * weight;
        x += dx * other.area / whole;
        y += dy * other.area / whole;
        area = whole;
    }
};

/// Pixels of one row that follow each other, from `begin` up to, not including, `end`.
struct Run
{
    std::size_t row, begin, end;
    std::uint64_t brightness;

    Moments moments() const
    {
        const double length = static_cast<double>(end - begin);
        return {.area = length,
                .x = static_cast<double>(begin) + length / 2,
                .y = static_cast<double>(row) + 0.5,
                .xx = length * length * length / 12,
                .yy = length / 12};
    }
};

/// Groups that grow together. A group is known by its first member.
class Groups
{
public:
    explicit Groups(std::size_t count) : parents_(count) { std::iota(parents_.begin(), parents_.end(), 0U); }

    std::size_t find(std::size_t member)
    {
        while (parents_[member] != member)
            member = parents_[member] = parents_[parents_[member]];
        return member;
    }
    void join(std::size_t a, std::size_t b)
    {
        const auto [first, second] = std::minmax({find(a), find(b)});
        parents_[second] = first;
    }

private:
    std::vector<std::size_t> parents_;
};

std::vector<Run> findRuns(const GreyPicture& picture, const BlobSettings& settings)
{
    const bool bright = settings.polarity == Polarity::Bright;
    const auto isInside = [&](std::uint8_t pixel) { return (pixel >= settings.threshold) == bright; };
    std::vector<Run> runs;
    for (std::size_t row = 0; row < picture.height; ++row) {
        const std::uint8_t* const first = picture.pixels + row * picture.width;
        const std::uint8_t* const last = first + picture.width;
        for (const std::uint8_t* end = first; end != last;) {
            const std::uint8_t* const begin = std::find_if(end, last, isInside);
            if (begin == last) break;
            end = std::find_if_not(begin, last, isInside);
            runs.push_back({row, static_cast<std::size_t>(begin - first), static_cast<std::size_t>(end - first),
                            std::accumulate(begin, end, std::uint64_t{0})});
        }
    }
    return runs;
}

/// Joins the runs that touch runs of the row above, at corners too.
Groups connect(const std::vector<Run>& runs)
{
    Groups groups(runs.size());
    std::size_t above = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const Run& run = runs[i];
        while (runs[above].row + 1 < run.row || (runs[above].row + 1 == run.row && runs[above].end < run.begin))
            ++above;
        for (std::size_t j = above; runs[j].row + 1 == run.row && runs[j].begin <= run.end; ++j)
            groups.join(i, j);
    }
    return groups;
}

struct Collected
{
    Moments moments;
    std::uint64_t brightness = 0;
    std::size_t left = ~std::size_t{0}, right = 0, top = 0, bottom = 0;

    void add(const Run& run)
    {
        if (moments.area == 0.0) top = run.row;
        moments.add(run.moments());
        brightness += run.brightness;
        left = std::min(left, run.begin);
        right = std::max(right, run.end);
        bottom = run.row + 1;
    }
};

/// The ellipse of the same second moments: a full one of radius r has a variance of r^2 / 4 along that axis.
Blob describe(const Collected& collected)
{
    const Moments& m = collected.moments;
    const double mean = (m.xx + m.yy) / (2 * m.area);
    const double half = (m.xx - m.yy) / (2 * m.area);
    const double covariance = m.xy / m.area;
    const double spread = std::hypot(half, covariance);
    return {.area = static_cast<std::uint64_t>(m.area),
            .centerX = m.x,
            .centerY = m.y,
            .majorRadius = 2 * std::sqrt(mean + spread),
            .minorRadius = 2 * std::sqrt(std::max(mean - spread, 0.0)),
            .rotation = std::atan2(covariance, half) / 2,
            .brightness = static_cast<double>(collected.brightness) / m.area,
            .left = collected.left,
            .top = collected.top,
            .width = collected.right - collected.left,
            .height = collected.bottom - collected.top};
}

}  // namespace

std::vector<Blob> findBlobs(const GreyPicture& picture, const BlobSettings& settings)
{
    const std::vector<Run> runs = findRuns(picture, settings);
    Groups groups = connect(runs);
    std::vector<std::size_t> places(runs.size());  // of groups, at their first members
    std::vector<Collected> collected;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const std::size_t first = groups.find(i);
        if (first == i) {
            places[i] = collected.size();
            collected.emplace_back();
        }
        collected[places[first]].add(runs[i]);
    }
    std::vector<Blob> blobs;
    for (const Collected& candidate : collected) {
        if (candidate.moments.area >= static_cast<double>(settings.minArea)) blobs.push_back(describe(candidate));
    }
    return blobs;
}

}  // namespace Inspection
