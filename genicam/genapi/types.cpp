#include "genapi/types.h"

#include <array>

#include "genapi/inode.h"

namespace GenApi {

namespace {

constexpr unsigned implemented = 1, available = 2, readable = 4, writable = 8;
constexpr std::array<unsigned, 5> flagsOfMode = {0, implemented, implemented | available | writable,
                                                 implemented | available | readable,
                                                 implemented | available | readable | writable};

}  // namespace

EAccessMode Combine(EAccessMode first, EAccessMode second) noexcept
{
    const unsigned flags = flagsOfMode[first] & flagsOfMode[second];
    if (!(flags & implemented)) return NI;
    if (!(flags & (readable | writable))) return NA;
    if (!(flags & readable)) return WO;
    return flags & writable ? RW : RO;
}

bool IsReadable(const IBase* node)
{
    return node && IsReadable(node->GetAccessMode());
}

bool IsWritable(const IBase* node)
{
    return node && IsWritable(node->GetAccessMode());
}

bool IsAvailable(const IBase* node)
{
    return node && IsAvailable(node->GetAccessMode());
}

bool IsImplemented(const IBase* node)
{
    return node && IsImplemented(node->GetAccessMode());
}

const char* ToText(EAccessMode mode) noexcept
{
    static constexpr std::array<const char*, 5> names = {"NI", "NA", "WO", "RO", "RW"};
    return names[mode];
}

const char* ToText(EVisibility visibility) noexcept
{
    static constexpr std::array<const char*, 4> names = {"Beginner", "Expert", "Guru", "Invisible"};
    return names[visibility];
}

const char* ToText(ERepresentation representation) noexcept
{
    static constexpr std::array<const char*, 7> names = {"Linear",    "Logarithmic", "Boolean",   "PureNumber",
                                                         "HexNumber", "IPV4Address", "MACAddress"};
    return names[representation];
}

}  // namespace GenApi
