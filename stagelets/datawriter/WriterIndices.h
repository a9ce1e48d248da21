#pragma once

#include <cstdint>

namespace Plugin::NivexStageletPackageBase {

/// The numbers that templates can show. Pins and media writers count from 1 and are 0 while none is current;
/// sessions, records and updates count from 1; array elements count from 0.
struct WriterIndices
{
    std::uint64_t sessionIndex = 0;
    std::uint64_t pinIndex = 0;
    std::uint64_t recordIndex = 0;
    std::uint64_t updateIndex = 0;
    std::uint64_t arrayIndex = 0;
    std::uint64_t arraySize = 0;
    std::uint64_t mediaWriterIndex = 0;
    std::uint64_t inArray = 0;  ///< 1 while an element of an array is written.
};

}  // namespace Plugin::NivexStageletPackageBase
