#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstdint>

namespace Nivex::DataProcessing::Runtime {

/// The distribution of a node's step times, in constant memory: buckets of a sixteenth of each power of two, so
/// that a percentile is exact to about 6 %. One thread records at a time; any thread may read meanwhile.
class StepTimes
{
public:
    void record(std::uint64_t nanoseconds)
    {
        add(count_, 1);
        add(sum_, nanoseconds);
        if (nanoseconds > max_.load(std::memory_order_relaxed)) max_.store(nanoseconds, std::memory_order_relaxed);
        add(buckets_[bucketOf(nanoseconds)], 1);
    }

    void clear()
    {
        count_ = sum_ = max_ = 0;
        for (auto& bucket : buckets_)
            bucket = 0;
    }

    std::uint64_t getMean() const
    {
        const std::uint64_t count = count_;
        return count == 0 ? 0 : sum_ / count;
    }
    std::uint64_t getMax() const { return max_; }

    /// The upper bound of the bucket below which `share` (0 to 1) of the times lie.
    std::uint64_t getPercentile(double share) const
    {
        const auto wanted = static_cast<std::uint64_t>(share * static_cast<double>(count_.load()));
        std::uint64_t seen = 0;
        for (std::size_t i = 0; i < buckets_.size(); ++i) {
            seen += buckets_[i];
            if (seen > wanted) return std::min(upperBound(i), getMax());
        }
        return getMax();
    }

private:
    static constexpr unsigned subBits = 4;

    static std::size_t bucketOf(std::uint64_t value)
    {
        const unsigned width = static_cast<unsigned>(std::bit_width(value));
        if (width <= subBits) return static_cast<std::size_t>(value);
        const unsigned shift = width - subBits - 1;
        return (static_cast<std::size_t>(shift + 1) << subBits) + ((value >> shift) & ((1U << subBits) - 1));
    }

    static std::uint64_t upperBound(std::size_t bucket)
    {
        const std::size_t octave = bucket >> subBits;
        const std::uint64_t low = bucket & ((1U << subBits) - 1);
        if (octave == 0) return low;
        return ((low + (1U << subBits) + 1) << (octave - 1)) - 1;
    }

    static void add(std::atomic<std::uint64_t>& counter, std::uint64_t amount)
    {
        // One writer at a time: no need for a locked addition.
        counter.store(counter.load(std::memory_order_relaxed) + amount, std::memory_order_relaxed);
    }

    std::atomic<std::uint64_t> count_{0};
    std::atomic<std::uint64_t> sum_{0};
    std::atomic<std::uint64_t> max_{0};
    std::array<std::atomic<std::uint64_t>, (64 - subBits + 1) << subBits> buckets_{};
};

}  // namespace Nivex::DataProcessing::Runtime
