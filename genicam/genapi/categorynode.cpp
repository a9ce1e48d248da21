#include "genapi/categorynode.h"

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"

namespace GenApi {

void CCategoryNode::GetFeatures(FeatureList_t& features) const
{
    features.insert(features.end(), features_.begin(), features_.end());
}

bool CCategoryNode::TakeElement(ElementReader& element)
{
    if (!element.Is("pFeature")) return CValueNode::TakeElement(element);
    features_.push_back(element.Node(Link::Feature).AsValue());
    return true;
}

gcstring CCategoryNode::ReadText(bool /*verify*/, bool /*ignoreCache*/)
{
    return Name();
}

void CCategoryNode::WriteText(const gcstring& /*text*/, bool /*verify*/)
{
    GENICAM_THROW(AccessException, "Node \"%s\": a category cannot be written.", Name().c_str());
}

}  // namespace GenApi
