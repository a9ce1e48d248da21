#include "genapi/types.h"

#include <array>

#include "genapi/inode.h"

namespace GenApi {

namespace {

// Implemented, readable and writable are three flags that must hold on both sides; this is what is left of them.
constexpr EAccessMode combined[5][5] = {
    {NI, NI, NI, NI, NI}, {NI, NA, NA, NA, NA}, {NI, NA, WO, NA, WO}, {NI, NA, NA, RO, RO}, {NI, NA, WO, RO, RW}};

}  // namespace

EAccessMode Combine(EAccessMode first, EAccessMode second) noexcept
{
    return combined[first][second];
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
