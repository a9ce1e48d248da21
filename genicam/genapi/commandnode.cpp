#include "genapi/commandnode.h"

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap_impl.h"
#include "genapi/textconversion.h"

namespace GenApi {

void CCommandNode::Execute(bool verify)
{
    Map().Operate([&] {
        if (verify) RequireWritable();
        Start();
    });
}

bool CCommandNode::IsDone(bool verify)
{
    return Map().Operate([&] {
        if (verify && !IsAvailable(Mode()))
            GENICAM_THROW(AccessException, "Node \"%s\" is not available (access mode %s).", Name().c_str(),
                          ToText(Mode()));
        return Done();
    });
}

bool CCommandNode::TakeElement(ElementReader& element)
{
    if (element.Is("pValue"))
        value_.Refer(element.Number(Link::Value));
    else if (element.Is("Value"))
        value_.Set(element.Integer());
    else if (element.Is("pCommandValue"))
        command_.Refer(element.Number(Link::Parameter));
    else if (element.Is("CommandValue"))
        command_.Set(element.Integer());
    else
        return CValueNode::TakeElement(element);
    return true;
}

void CCommandNode::Finish(ElementReader& own)
{
    CValueNode::Finish(own);
    if (!value_.IsGiven()) own.Refuse("it has neither <Value> nor <pValue>");
    if (!command_.IsGiven()) own.Refuse("it has neither <CommandValue> nor <pCommandValue>");
}

gcstring CCommandNode::ReadText(bool /*verify*/, bool ignoreCache)
{
    return std::to_string(value_.Read(ignoreCache));
}

void CCommandNode::WriteText(const gcstring& text, bool /*verify*/)
{
    const auto value = ParseInteger(text.view());
    if (!value || *value != command_.ReadChecked()) RefuseText(text, "the command's number");
    Start();
}

void CCommandNode::Start()
{
    const int64_t command = command_.ReadChecked();
    active_ = true;
    Store(value_, command);
}

bool CCommandNode::Done()
{
    const NumberRef& device = value_.Reference();
    const bool done = !device || !device.IsReadable() || device->ReadInteger(true) != command_.ReadChecked();
    if (done && std::exchange(active_, false)) Map().Invalidate(*this, true);
    return done;
}

}  // namespace GenApi
