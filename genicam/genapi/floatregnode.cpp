#include "genapi/floatregnode.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/registerof_impl.h"

namespace GenApi {

namespace {

constexpr EEndianess hostEndianess = std::endian::native == std::endian::little ? LittleEndian : BigEndian;

}  // namespace

double CFloatRegNode::ReadFloat(bool ignoreCache)
{
    const std::span<uint8_t> bytes = Buffer();
    Register().Read(bytes, ignoreCache);
    if (endianess_ != hostEndianess) std::reverse(bytes.begin(), bytes.end());
    if (bytes.size() == sizeof(double)) {
        double value = 0;
        std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }
    float value = 0;
    std::memcpy(&value, bytes.data(), sizeof value);
    return static_cast<double>(value);
}

void CFloatRegNode::WriteFloat(double value)
{
    const std::span<uint8_t> bytes = Buffer();
    if (std::isfinite(value) && (value < MinFloat() || value > MaxFloat()))
        GENICAM_THROW(OutOfRangeException, "Node \"%s\": %g does not fit into %zu bytes.", Name().c_str(), value,
                      bytes.size());
    if (bytes.size() == sizeof(double)) {
        std::memcpy(bytes.data(), &value, sizeof value);
    } else {
        const auto narrow = static_cast<float>(value);
        std::memcpy(bytes.data(), &narrow, sizeof narrow);
    }
    if (endianess_ != hostEndianess) std::reverse(bytes.begin(), bytes.end());
    Register().Write(bytes);
}

double CFloatRegNode::MaxFloat()
{
    return Register().Length() == sizeof(double) ? std::numeric_limits<double>::max()
                                                 : static_cast<double>(std::numeric_limits<float>::max());
}

bool CFloatRegNode::TakeElement(ElementReader& element)
{
    return element.TakeEndianess(endianess_) || CRegisterOf::TakeElement(element);
}

void CFloatRegNode::Finish(ElementReader& own)
{
    FinishRegister(own, sizeof(float), sizeof(double));
    if (Register().HasFixedLength() && Register().Length() != sizeof(float) &&
        Register().Length() != sizeof(double))
        own.Refuse("its length must be 4 or 8 bytes");
}

std::span<uint8_t> CFloatRegNode::Buffer()
{
    const int64_t length = Register().Length();
    if (length != sizeof(float) && length != sizeof(double))
        GENICAM_THROW(RuntimeException, "Node \"%s\": its length is %lld; a float has 4 or 8 bytes.",
                      Name().c_str(), static_cast<long long>(length));
    return {buffer_.data(), static_cast<std::size_t>(length)};
}

}  // namespace GenApi
