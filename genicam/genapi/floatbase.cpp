#include "genapi/floatbase.h"

#include <cmath>
#include <limits>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap_impl.h"
#include "genapi/textconversion.h"

namespace GenApi {

namespace {

constexpr Word<EDisplayNotation> notations[] = {
    {"Automatic", fnAutomatic}, {"Fixed", fnFixed}, {"Scientific", fnScientific}};

}  // namespace

void CFloatBase::SetValue(double value, bool verify)
{
    Map().Operate([&] {
        if (verify) RequireWritable();
        Write(value, verify);
    });
}

double CFloatBase::GetValue(bool verify, bool ignoreCache)
{
    return Map().Operate([&] {
        RequireReadable();
        return Read(verify, ignoreCache);
    });
}

double CFloatBase::GetMin()
{
    return Map().Operate([&] { return MinFloat(); });
}

double CFloatBase::GetMax()
{
    return Map().Operate([&] { return MaxFloat(); });
}

bool CFloatBase::HasInc()
{
    return Map().Operate([&] { return IncFloat().has_value(); });
}

double CFloatBase::GetInc()
{
    const auto inc = Map().Operate([&] { return IncFloat(); });
    if (!inc) GENICAM_THROW(LogicalErrorException, "Node \"%s\" has no increment.", Name().c_str());
    return *inc;
}

int64_t CFloatBase::ReadTruncated(bool ignoreCache)
{
    return RoundToInteger(std::trunc(ReadFloat(ignoreCache)));
}

int64_t CFloatBase::MinInteger()
{
    return ClampToInteger(MinFloat(), std::numeric_limits<int64_t>::min());
}

int64_t CFloatBase::MaxInteger()
{
    return ClampToInteger(MaxFloat(), std::numeric_limits<int64_t>::max());
}

int64_t CFloatBase::IncInteger()
{
    return ClampToInteger(IncFloat().value_or(1), 1);
}

bool CFloatBase::TakeElement(ElementReader& element)
{
    if (element.Is("DisplayNotation"))
        notation_ = element.AnyWordOf(notations, fnAutomatic);
    else if (element.Is("DisplayPrecision"))
        precision_ = element.Integer();
    else
        return look_.TakeElement(element) || CValueNode::TakeElement(element);
    return true;
}

gcstring CFloatBase::ReadText(bool verify, bool ignoreCache)
{
    return FormatFloat(Read(verify, ignoreCache));
}

void CFloatBase::WriteText(const gcstring& text, bool verify)
{
    const auto value = ParseFloat(text.view());
    if (!value) RefuseText(text, "a number");
    Write(*value, verify);
}

double CFloatBase::Read(bool verify, bool ignoreCache)
{
    const double value = ReadFloat(ignoreCache);
    if (verify) CheckLimits(value);
    return value;
}

void CFloatBase::Write(double value, bool verify)
{
    if (verify) CheckLimits(value);
    WriteFloat(value);
}

void CFloatBase::CheckLimits(double value)
{
    const double min = MinFloat();
    const double max = MaxFloat();
    // Written so that it also refuses what is no number.
    if (!(value >= min && value <= max))
        GENICAM_THROW(OutOfRangeException, "Node \"%s\": %s is not within %s to %s.", Name().c_str(),
                      FormatFloat(value).c_str(), FormatFloat(min).c_str(), FormatFloat(max).c_str());
    CheckFurther(value);
}

}  // namespace GenApi
