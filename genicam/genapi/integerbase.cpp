#include "genapi/integerbase.h"

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap_impl.h"
#include "genapi/textconversion.h"

namespace GenApi {

void CIntegerBase::SetValue(int64_t value, bool verify)
{
    Map().Operate([&] {
        if (verify) RequireWritable();
        Write(value, verify);
    });
}

int64_t CIntegerBase::GetValue(bool verify, bool ignoreCache)
{
    return Map().Operate([&] {
        RequireReadable();
        return Read(verify, ignoreCache);
    });
}

int64_t CIntegerBase::GetMin()
{
    return Map().Operate([&] { return MinInteger(); });
}

int64_t CIntegerBase::GetMax()
{
    return Map().Operate([&] { return MaxInteger(); });
}

int64_t CIntegerBase::GetInc()
{
    return Map().Operate([&] { return IncInteger(); });
}

bool CIntegerBase::TakeElement(ElementReader& element)
{
    return look_.TakeElement(element) || CValueNode::TakeElement(element);
}

gcstring CIntegerBase::ReadText(bool verify, bool ignoreCache)
{
    return FormatInteger(Read(verify, ignoreCache), Representation());
}

void CIntegerBase::WriteText(const gcstring& text, bool verify)
{
    const auto value = ParseInteger(text.view(), Representation());
    if (!value) RefuseText(text, "an integer");
    Write(*value, verify);
}

int64_t CIntegerBase::Read(bool verify, bool ignoreCache)
{
    const int64_t value = ReadInteger(ignoreCache);
    if (verify) CheckLimits(value);
    return value;
}

void CIntegerBase::Write(int64_t value, bool verify)
{
    if (verify) CheckLimits(value);
    WriteInteger(value);
}

void CIntegerBase::CheckLimits(int64_t value)
{
    const int64_t min = MinInteger();
    const int64_t max = MaxInteger();
    if (value < min || value > max)
        GENICAM_THROW(OutOfRangeException, "Node \"%s\": %lld is not within %lld to %lld.", Name().c_str(),
                      static_cast<long long>(value), static_cast<long long>(min), static_cast<long long>(max));
    const int64_t inc = IncInteger();
    // The distance may exceed a signed number.
    const uint64_t distance = static_cast<uint64_t>(value) - static_cast<uint64_t>(min);
    if (inc > 1 && distance % static_cast<uint64_t>(inc) != 0)
        GENICAM_THROW(OutOfRangeException, "Node \"%s\": %lld is not reached from %lld in steps of %lld.",
                      Name().c_str(), static_cast<long long>(value), static_cast<long long>(min),
                      static_cast<long long>(inc));
    CheckFurther(value);
}

}  // namespace GenApi
