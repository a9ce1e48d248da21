#include "genapi/booleannode.h"

#include "genapi/nodebuilder.h"
#include "genapi/nodemap_impl.h"
#include "genapi/textconversion.h"

namespace GenApi {

void CBooleanNode::SetValue(bool value, bool verify)
{
    Map().Operate([&] {
        if (verify) RequireWritable();
        Write(value);
    });
}

bool CBooleanNode::GetValue(bool /*verify*/, bool ignoreCache)
{
    return Map().Operate([&] {
        RequireReadable();
        return Read(ignoreCache);
    });
}

bool CBooleanNode::TakeElement(ElementReader& element)
{
    if (element.Is("pValue"))
        value_.Refer(element.Number(Link::Value));
    else if (element.Is("Value"))
        initial_ = element.Boolean();
    else if (element.Is("OnValue"))
        on_ = element.Integer();
    else if (element.Is("OffValue"))
        off_ = element.Integer();
    else
        return CValueNode::TakeElement(element);
    return true;
}

void CBooleanNode::Finish(ElementReader& own)
{
    CValueNode::Finish(own);
    if (initial_) value_.Set(*initial_ ? on_ : off_);
    if (!value_.IsGiven()) own.Refuse("it has neither <Value> nor <pValue>");
    if (on_ == off_) own.Refuse("<OnValue> and <OffValue> are the same");
}

gcstring CBooleanNode::ReadText(bool /*verify*/, bool ignoreCache)
{
    return Read(ignoreCache) ? "1" : "0";
}

void CBooleanNode::WriteText(const gcstring& text, bool /*verify*/)
{
    const auto value = ParseBoolean(text.view());
    if (!value) RefuseText(text, "1, 0, true or false");
    Write(*value);
}

}  // namespace GenApi
