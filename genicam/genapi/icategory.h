#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

/// A group of features and of further categories, starting at the one named "Root". Its text is its name, which
/// cannot be set.
class GENICAM_API ICategory : public virtual IValue
{
public:
    /// In the order of the description, also those not implemented.
    virtual void GetFeatures(FeatureList_t& features) const = 0;

    ~ICategory() override;
};

}  // namespace GenApi
