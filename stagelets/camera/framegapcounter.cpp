#include "camera/framegapcounter.h"

#include <utility>

namespace Plugin::NivexStageletPackageBase {

namespace {

constexpr std::uint64_t maxShortNumber = 0xFFFF;
/// How far from both ends of the short numbers a step over the end may reach.
constexpr std::uint64_t wrapRange = 0x1000;
constexpr std::uint64_t maxStep = std::uint64_t{1} << 31;

}  // namespace

std::uint64_t FrameGapCounter::count(std::uint64_t number)
{
    if (number == 0) {
        ++unnumbered_;
        return 0;
    }
    const std::uint64_t missing = started_ ? stepTo(number) - 1 : 0;
    const std::uint64_t present = std::exchange(unnumbered_, 0);
    last_ = number;
    started_ = true;
    return missing > present ? missing - present : 0;
}

/// From the last number; 1 if that can't be said.
std::uint64_t FrameGapCounter::stepTo(std::uint64_t number) const
{
    if (number > last_) return number - last_ <= maxStep ? number - last_ : 1;
    const bool wraps = last_ <= maxShortNumber && last_ > maxShortNumber - wrapRange && number <= wrapRange;
    return wraps ? number + maxShortNumber - last_ : 1;
}

}  // namespace Plugin::NivexStageletPackageBase
