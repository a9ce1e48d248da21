#include "base/emulation/registerbank.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "gcbase/exception.h"

#include "base/emulation/pixelencoder.h"

namespace Nivex::Emulation {
namespace {

static_assert(std::endian::native == std::endian::little, "registers are little-endian, and so is their memory");

constexpr std::uint32_t firstAddress = placedFeatures.front().address;
constexpr std::uint32_t endAddress =
    placedFeatures.back().address + placedFeatures.back().count * placedFeatures.back().ElementSize();

template <typename Number>
Number numberAt(const void* bytes)
{
    Number number{};
    std::memcpy(&number, bytes, sizeof(number));
    return number;
}

[[noreturn]] void refuse(const Feature& feature, const std::string& value, const std::string& allowed)
{
    GENICAM_THROW(RuntimeException, "The camera refuses %s for %s; allowed is %s.", value.c_str(), feature.name,
                  allowed.c_str());
}

void checkRange(const Feature& feature, double value)
{
    if (value >= feature.min && value <= feature.max) return;
    refuse(feature, GenICam::formatText("%.15g", value),
           GenICam::formatText("%.15g to %.15g", feature.min, feature.max));
}

void checkValue(const Feature& feature, const void* bytes)
{
    const auto integer = numberAt<std::int64_t>(bytes);
    const std::string integerText = std::to_string(integer);
    switch (feature.kind) {
        case EKind::Integer:
            return checkRange(feature, static_cast<double>(integer));
        case EKind::Float:
            return checkRange(feature, numberAt<double>(bytes));
        case EKind::Boolean:
        case EKind::Command:
            if (integer != 0 && integer != 1) refuse(feature, integerText, "0 or 1");
            return;
        case EKind::Enumeration:
            if (std::ranges::find(feature.choices, integer, &Choice::value) == feature.choices.end())
                refuse(feature, integerText, "the value of an entry");
            return;
        case EKind::FormatChoice:
            if (std::ranges::none_of(PixelEncoder::Formats(), [&](const auto* f) { return f->value == integer; }))
                refuse(feature, integerText, "the value of an entry");
            return;
        case EKind::Text:
        case EKind::Node:
            return;
    }
}

/// The row that holds the address, if any.
const Placed* rowAt(std::int64_t address)
{
    const auto* const behind = std::ranges::upper_bound(
        placedFeatures, address, {}, [](const Placed& p) { return static_cast<std::int64_t>(p.address); });
    if (behind == placedFeatures.begin()) return nullptr;
    const Placed& row = *(behind - 1);
    return address < row.address + row.count * row.ElementSize() ? &row : nullptr;
}

bool keepsContent(const Placed& place)
{
    return place.feature->readOnly || place.feature->name == std::string_view("DeviceUserID") ||
           place.category->map != EMap::Camera;
}

}  // namespace

std::size_t RegisterBank::Offset(Register reg, std::size_t element) const
{
    return reg.Place().address - firstAddress + element * reg.Place().ElementSize();
}

void RegisterBank::LoadDefaults()
{
    const bool isFirst = memory_.empty();
    memory_.resize(endAddress - firstAddress);
    for (std::size_t i = 0; i < placedFeatures.size(); ++i)
        if (isFirst || !keepsContent(placedFeatures[i])) SetInitial({i});
    // The pictures themselves, and every chunk, are on until somebody asks for less.
    SetInteger("ComponentEnable"_reg, 1);
    for (std::size_t i = 0; i < std::size(chunks); ++i)
        SetInteger("ChunkEnable"_reg, 1, i);
    for (std::size_t i = 0; i < std::size(components); ++i)
        SetInteger("ComponentIDValue"_reg, static_cast<std::int64_t>(components[i].type), i);
    ++revision_;
}

void RegisterBank::SetInitial(Register reg)
{
    const Feature& feature = *reg.Place().feature;
    if (feature.kind == EKind::Text) return SetText(reg, feature.text);
    for (std::size_t i = 0; i < reg.Place().count; ++i) {
        if (feature.kind == EKind::Float)
            SetFloat(reg, feature.initial, i);
        else
            SetInteger(reg, static_cast<std::int64_t>(feature.initial), i);
    }
}

std::int64_t RegisterBank::Integer(Register reg, std::size_t element) const
{
    return numberAt<std::int64_t>(memory_.data() + Offset(reg, element));
}

double RegisterBank::Float(Register reg, std::size_t element) const
{
    return numberAt<double>(memory_.data() + Offset(reg, element));
}

std::string RegisterBank::Text(Register reg) const
{
    const auto* const text = reinterpret_cast<const char*>(memory_.data() + Offset(reg, 0));
    return {text, strnlen(text, textSize)};
}

void RegisterBank::SetInteger(Register reg, std::int64_t value, std::size_t element)
{
    std::memcpy(memory_.data() + Offset(reg, element), &value, sizeof(value));
}

void RegisterBank::SetFloat(Register reg, double value, std::size_t element)
{
    std::memcpy(memory_.data() + Offset(reg, element), &value, sizeof(value));
}

void RegisterBank::SetText(Register reg, std::string_view value)
{
    std::byte* const text = memory_.data() + Offset(reg, 0);
    std::memset(text, 0, textSize);
    std::memcpy(text, value.data(), std::min(value.size(), textSize - 1));
}

void RegisterBank::Read(void* buffer, std::int64_t address, std::int64_t length) const
{
    if (address < firstAddress || length < 0 || address > endAddress || length > endAddress - address)
        GENICAM_THROW(RuntimeException, "The camera has no registers at 0x%llX, %lld bytes.",
                      static_cast<unsigned long long>(address), static_cast<long long>(length));
    std::memcpy(buffer, memory_.data() + (address - firstAddress), static_cast<std::size_t>(length));
}

void RegisterBank::CheckUnlocked(std::int64_t address) const
{
    const Placed* const row = rowAt(address);
    if (row && row->feature->locked)
        GENICAM_THROW(RuntimeException, "The camera refuses to change %s while a stream is up.",
                      row->feature->name);
}

Register RegisterBank::Write(const void* buffer, std::int64_t address, std::int64_t length)
{
    const Placed* const row = rowAt(address);
    if (!row || (address - row->address) % row->ElementSize() != 0 || length != row->ElementSize())
        GENICAM_THROW(RuntimeException, "The camera has no register at 0x%llX that takes %lld bytes.",
                      static_cast<unsigned long long>(address), static_cast<long long>(length));
    if (row->feature->readOnly)
        GENICAM_THROW(RuntimeException, "The camera's register of %s is read-only.", row->feature->name);
    checkValue(*row->feature, buffer);
    std::memcpy(memory_.data() + (address - firstAddress), buffer, static_cast<std::size_t>(length));
    ++revision_;
    return {static_cast<std::size_t>(row - placedFeatures.data())};
}

}  // namespace Nivex::Emulation
