#pragma once

#include "genapi/nodebase.h"

namespace GenApi {

/// Node: facts and an access mode, but no value.
class CPlainNode final : public CNodeBase
{
public:
    using CNodeBase::CNodeBase;
};

}  // namespace GenApi
