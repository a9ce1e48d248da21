#include "genapi/swissknifenode.h"

#include "gcbase/exception.h"

namespace GenApi {

bool SwissKnifeFormula::TakeElement(ElementReader& element)
{
    if (!element.Is("Formula")) return variables_.TakeElement(element);
    text_.emplace(element);
    return true;
}

void SwissKnifeFormula::Finish(ElementReader& own)
{
    if (!text_) own.Refuse("it has no <Formula>");
    formula_ = variables_.Compile(*text_);
    text_.reset();
    variables_.EndCompilation();
}

void SwissKnifeFormula::RefuseWrite() const
{
    GENICAM_THROW(AccessException, "Node \"%s\": the result of a formula cannot be written.",
                  owner_.Name().c_str());
}

bool CSwissKnifeNode::TakeElement(ElementReader& element)
{
    return formula_.TakeElement(element) || CFloatBase::TakeElement(element);
}

void CSwissKnifeNode::Finish(ElementReader& own)
{
    CFloatBase::Finish(own);
    formula_.Finish(own);
}

bool CIntSwissKnifeNode::TakeElement(ElementReader& element)
{
    return formula_.TakeElement(element) || CIntegerBase::TakeElement(element);
}

void CIntSwissKnifeNode::Finish(ElementReader& own)
{
    CIntegerBase::Finish(own);
    formula_.Finish(own);
}

}  // namespace GenApi
