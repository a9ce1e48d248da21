#include "genapi/intregnode.h"

#include <algorithm>
#include <limits>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/portnode.h"
#include "genapi/registerof_impl.h"

namespace GenApi {

namespace {

constexpr Word<ESign> signs[] = {{"Signed", Signed}, {"Unsigned", Unsigned}};

uint64_t maskOf(unsigned width)
{
    return width >= 64 ? ~uint64_t{0} : (uint64_t{1} << width) - 1;
}

int64_t signExtended(uint64_t bits, unsigned width)
{
    const unsigned unused = 64 - width;
    return static_cast<int64_t>(bits << unused) >> unused;
}

// Byte i of the word, counted from the least significant one, stands here in the register.
std::size_t placeOf(std::size_t i, std::size_t length, EEndianess endianess)
{
    return endianess == LittleEndian ? i : length - 1 - i;
}

}  // namespace

int64_t CIntRegNode::ReadInteger(bool ignoreCache)
{
    const int64_t length = Register().Length();
    const Field field = ValueField(length);
    const uint64_t bits = ReadWord(length, ignoreCache) >> field.shift & maskOf(field.width);
    return sign_ == Signed ? signExtended(bits, field.width) : static_cast<int64_t>(bits);
}

uint64_t CIntRegNode::ReadWord(int64_t length, bool ignoreCache)
{
    std::array<uint8_t, 8> buffer{};
    const auto size = static_cast<std::size_t>(length);
    Register().Read({buffer.data(), size}, ignoreCache);
    uint64_t word = 0;
    for (std::size_t i = 0; i < size; ++i)
        word |= uint64_t{buffer[placeOf(i, size, endianess_)]} << 8 * i;
    return word;
}

void CIntRegNode::WriteInteger(int64_t value)
{
    const int64_t length = Register().Length();
    const Field field = ValueField(length);
    // All 64 bits hold any number; an enumeration behind an unsigned register may well write a negative one.
    if (field.width < 64 && (value < MinInteger() || value > MaxInteger()))
        GENICAM_THROW(OutOfRangeException, "Node \"%s\": %lld does not fit into its %u bits.", Name().c_str(),
                      static_cast<long long>(value), field.width);
    const int64_t address = Register().Address();
    const uint64_t mask = maskOf(field.width);
    const uint64_t word = (Surroundings(length, address) & ~(mask << field.shift)) |
                          (static_cast<uint64_t>(value) & mask) << field.shift;
    std::array<uint8_t, 8> buffer{};
    const auto size = static_cast<std::size_t>(length);
    for (std::size_t i = 0; i < size; ++i)
        buffer[placeOf(i, size, endianess_)] = static_cast<uint8_t>(word >> 8 * i);
    Register().Write({buffer.data(), size});
    Written(word, address);
}

int64_t CIntRegNode::MinInteger()
{
    if (sign_ == Unsigned) return 0;
    const Field field = ValueField(Register().Length());
    return signExtended(uint64_t{1} << (field.width - 1), field.width);
}

int64_t CIntRegNode::MaxInteger()
{
    const Field field = ValueField(Register().Length());
    const unsigned bits = sign_ == Signed ? field.width - 1 : field.width;
    return bits >= 63 ? std::numeric_limits<int64_t>::max() : static_cast<int64_t>(maskOf(bits));
}

bool CIntRegNode::TakeElement(ElementReader& element)
{
    if (!element.Is("Sign")) return element.TakeEndianess(endianess_) || CRegisterOf::TakeElement(element);
    sign_ = element.WordOf(signs, sign_);
    return true;
}

void CIntRegNode::Finish(ElementReader& own)
{
    FinishRegister(own, 1, 8);
}

bool CMaskedIntRegNode::TakeElement(ElementReader& element)
{
    if (element.Is("LSB"))
        lsb_ = element.Integer();
    else if (element.Is("MSB"))
        msb_ = element.Integer();
    else if (element.Is("Bit"))
        lsb_ = msb_ = element.Integer();
    else
        return CIntRegNode::TakeElement(element);
    return true;
}

void CMaskedIntRegNode::Finish(ElementReader& own)
{
    CIntRegNode::Finish(own);
    if (!lsb_ || !msb_) own.Refuse("it has neither <Bit> nor both <LSB> and <MSB>");
    if (!Register().HasFixedLength()) return;
    if (const auto fault = FieldFault(Register().Length())) own.Refuse(*fault);
}

std::optional<std::string> CMaskedIntRegNode::FieldFault(int64_t length) const
{
    const int64_t bits = 8 * length;
    for (const int64_t bit : {*lsb_, *msb_})
        if (bit < 0 || bit >= bits)
            return GenICam::formatText("bit %lld is none of its %lld bits", static_cast<long long>(bit),
                                       static_cast<long long>(bits));
    return std::nullopt;
}

CIntRegNode::Field CMaskedIntRegNode::ValueField(int64_t length) const
{
    if (const auto fault = FieldFault(length))
        GENICAM_THROW(RuntimeException, "Node \"%s\": %s.", Name().c_str(), fault->c_str());
    // In a big-endian register bit 0 is the most significant one.
    const int64_t top = 8 * length - 1;
    const int64_t lsb = Endianess() == BigEndian ? top - *lsb_ : *lsb_;
    const int64_t msb = Endianess() == BigEndian ? top - *msb_ : *msb_;
    const auto [low, high] = std::minmax(lsb, msb);
    return {static_cast<unsigned>(low), static_cast<unsigned>(high - low + 1)};
}

uint64_t CMaskedIntRegNode::Surroundings(int64_t length, int64_t address)
{
    return IsReadable(Register().DeclaredMode()) ? ReadWord(length, false)
                                                 : Register().Port().WrittenWord(address);
}

void CMaskedIntRegNode::Written(uint64_t word, int64_t address)
{
    if (!IsReadable(Register().DeclaredMode())) Register().Port().WrittenWord(address) = word;
}

}  // namespace GenApi
