#pragma once

#include "genapi/icategory.h"
#include "genapi/nodebase.h"

namespace GenApi {

/// Category: features and further categories by name.
class CCategoryNode final : public CValueNode, public ICategory
{
public:
    using CValueNode::CValueNode;

    void GetFeatures(FeatureList_t& features) const override;

    bool TakeElement(ElementReader& element) override;

protected:
    gcstring ReadText(bool verify, bool ignoreCache) override;
    void WriteText(const gcstring& text, bool verify) override;

private:
    FeatureList_t features_;
};

}  // namespace GenApi
