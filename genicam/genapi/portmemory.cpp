#include "genapi/portmemory.h"

#include <algorithm>
#include <cstring>

namespace GenApi {

namespace {

bool isPseudo(int64_t address)
{
    return address == PortMemory::startAddress || address == PortMemory::lengthAddress;
}

}  // namespace

void PortMemory::Attach(std::span<const uint8_t> bytes)
{
    bytes_ = bytes;
    attached_ = true;
    copied_ = false;
}

void PortMemory::Copy(std::span<const uint8_t> bytes)
{
    copy_.assign(bytes.begin(), bytes.end());
    bytes_ = copy_;
    attached_ = copied_ = true;
}

void PortMemory::Detach()
{
    bytes_ = {};
    attached_ = copied_ = false;
}

bool PortMemory::Covers(int64_t address, int64_t length) const
{
    if (isPseudo(address)) return length == sizeof(uint64_t);
    const auto size = static_cast<int64_t>(bytes_.size());
    // A negative address stays one that counts from the end, even where the length would reach beyond it.
    const int64_t start = address < 0 ? address + size : address;
    return start >= 0 && length >= 0 && start <= size && length <= size - start;
}

void PortMemory::Read(std::span<uint8_t> bytes, int64_t address) const
{
    if (isPseudo(address)) {
        const uint64_t number =
            address == startAddress ? reinterpret_cast<std::uintptr_t>(bytes_.data()) : bytes_.size();
        std::memcpy(bytes.data(), &number, sizeof number);
        return;
    }
    const std::size_t start = static_cast<std::size_t>(address) + (address < 0 ? bytes_.size() : 0);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(start), bytes.size(), bytes.begin());
}

}  // namespace GenApi
