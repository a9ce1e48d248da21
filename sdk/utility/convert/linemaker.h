#pragma once

#include <memory>

#include "utility/convert/colour.h"
#include "utility/convert/conversion.h"

namespace Nivex::Pixels {

/// Makes lines of the destination's kind from rows of the source, with buffers of its own. For one thread; the
/// conversion must outlive it.
template <typename T>
class LineMaker
{
public:
    explicit LineMaker(const Conversion& conversion);

    /// The line of a source row, counted in memory order. It stays as it is until the next call with this `slot`,
    /// 0 or 1. Rows in ascending or descending order are quickest, since the raw lines of neighbours are kept.
    Channels<const T> make(std::size_t row, std::size_t slot);

private:
    static constexpr std::size_t rawLineCount = 4;  // A power of two above the three of a window.
    static constexpr std::size_t noRow = static_cast<std::size_t>(-1);

    struct RawLine
    {
        std::size_t row = noRow;
        T* samples = nullptr;
    };

    struct Slot
    {
        Channels<T> decoded;
        Channels<T> converted;
    };

    T* newLine();
    Channels<T> decode(std::size_t row, const Channels<T>& line) const;
    const T* rawLine(std::size_t row);
    RawWindow<T> rawWindow(std::size_t row);

    const Conversion& conversion_;
    DecodeStage<T> decode_;
    ColourStage<T> colour_;
    EBayerOrder bayerOrder_ = EBayerOrder::GR;
    std::size_t pitch_;
    std::unique_ptr<T[]> memory_;
    std::size_t lineCount_ = 0;
    std::array<T*, rawLineCount> rawMemory_{};
    std::array<RawLine, rawLineCount> raw_{};
    std::array<Slot, 2> slots_{};
};

}  // namespace Nivex::Pixels
