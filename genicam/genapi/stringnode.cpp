#include "genapi/stringnode.h"

#include <algorithm>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/registerof_impl.h"

namespace GenApi {

void CStringBase::SetValue(const gcstring& value, bool verify)
{
    FromString(value, verify);
}

gcstring CStringBase::GetValue(bool verify, bool ignoreCache)
{
    return ToString(verify, ignoreCache);
}

int64_t CStringBase::GetMaxLength()
{
    return Map().Operate([&] { return MaxLength(); });
}

gcstring CStringBase::ReadText(bool /*verify*/, bool ignoreCache)
{
    return ReadString(ignoreCache);
}

void CStringBase::WriteText(const gcstring& text, bool /*verify*/)
{
    const int64_t longest = MaxLength();
    if (static_cast<int64_t>(text.size()) > longest)
        GENICAM_THROW(OutOfRangeException, "Node \"%s\": the text has %zu bytes; %lld are allowed.",
                      Name().c_str(), text.size(), static_cast<long long>(longest));
    const std::size_t zero = text.find('\0');
    if (zero != gcstring::npos)
        GENICAM_THROW(InvalidArgumentException, "Node \"%s\": byte %zu of the text is zero, which would end it.",
                      Name().c_str(), zero);
    WriteString(text);
}

gcstring CStringNode::ReadString(bool ignoreCache)
{
    return source_ ? source_->ReadString(ignoreCache) : *own_;
}

void CStringNode::WriteString(const gcstring& value)
{
    if (source_) {
        source_->WriteString(value);
    } else {
        own_ = value;
    }
    Stored(!source_);
}

int64_t CStringNode::MaxLength()
{
    return source_ ? source_->MaxLength() : RegisterAccess::maxLength;
}

bool CStringNode::TakeElement(ElementReader& element)
{
    if (element.Is("pValue"))
        source_ = &element.String(Link::Value);
    else if (element.Is("Value"))
        own_ = gcstring(element.Text());
    else
        return CStringBase::TakeElement(element);
    return true;
}

void CStringNode::Finish(ElementReader& own)
{
    CStringBase::Finish(own);
    if (!source_ && !own_) own.Refuse("it has neither <Value> nor <pValue>");
}

gcstring CStringRegNode::ReadString(bool ignoreCache)
{
    std::string text(static_cast<std::size_t>(Register().Length()), '\0');
    Register().Read({reinterpret_cast<uint8_t*>(text.data()), text.size()}, ignoreCache);
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

void CStringRegNode::WriteString(const gcstring& value)
{
    std::vector<uint8_t> bytes(static_cast<std::size_t>(Register().Length()));
    std::copy(value.view().begin(), value.view().end(), bytes.begin());
    Register().Write(bytes);
}

void CStringRegNode::Finish(ElementReader& own)
{
    FinishRegister(own, 0, RegisterAccess::maxLength);
}

}  // namespace GenApi
