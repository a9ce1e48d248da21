#pragma once

#include <cstdint>

namespace Plugin::NivexStageletPackageBase {

/// Tells from the frame numbers of results how many frames never arrived.
///
/// Numbers count up from 1. Those of 16 bits go from 65535 to 1, without 0; they are known by the step from the
/// top to the bottom of that range. Any other step back, or one forward by more than 2^31, is a camera that began
/// to count anew: nothing can be said about what was lost with it. Results come in order. For one thread at a
/// time.
class FrameGapCounter
{
public:
    /// To be called before each start of the acquisition.
    /// @param firstNumber is the number that the first frame must have, or 0 if it may have any.
    void restart(std::uint64_t firstNumber = 0) { *this = FrameGapCounter(firstNumber); }

    /// Takes the number of a result, good or failed, and gives the number of frames that are missing before it.
    /// @param number is 0 for a result without one: it takes the place of one missing frame.
    std::uint64_t count(std::uint64_t number);

    FrameGapCounter() = default;

private:
    explicit FrameGapCounter(std::uint64_t firstNumber) : last_(firstNumber - 1), started_(firstNumber != 0) {}

    std::uint64_t stepTo(std::uint64_t number) const;

    std::uint64_t last_ = 0;
    bool started_ = false;
    std::uint64_t unnumbered_ = 0;  ///< Results without a number since the last one with.
};

}  // namespace Plugin::NivexStageletPackageBase
