#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace GenApi {

/// The bytes behind a port that reads from memory in place of a device: a chunk of a buffer, or an event's data.
/// Address 0 is the first byte; negative addresses count from the end. Two pseudo addresses give numbers of
/// 8 bytes in the host's byte order: `startAddress` where the bytes lie, `lengthAddress` how many they are.
class PortMemory
{
public:
    static constexpr int64_t startAddress = INT64_MAX;
    static constexpr int64_t lengthAddress = INT64_MAX - 15;

    /// Refers to `bytes`, which must stay until Detach.
    void Attach(std::span<const uint8_t> bytes);
    /// Keeps a copy.
    void Copy(std::span<const uint8_t> bytes);
    void Detach();

    bool IsAttached() const { return attached_; }
    /// True if the attached bytes are a copy.
    bool IsCopy() const { return attached_ && copied_; }
    bool Covers(int64_t address, int64_t length) const;
    /// The bytes must be covered.
    void Read(std::span<uint8_t> bytes, int64_t address) const;
    std::size_t Size() const { return bytes_.size(); }

private:
    bool attached_ = false;
    bool copied_ = false;
    std::span<const uint8_t> bytes_;
    std::vector<uint8_t> copy_;
};

}  // namespace GenApi
