#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

/// Every value node has it: which features change with this one, and which ones this one changes with.
class GENICAM_API ISelector : public virtual IBase
{
public:
    virtual bool IsSelector() const = 0;
    virtual void GetSelectedFeatures(FeatureList_t& features) const = 0;
    virtual void GetSelectingFeatures(FeatureList_t& features) const = 0;

    ~ISelector() override;
};

}  // namespace GenApi
