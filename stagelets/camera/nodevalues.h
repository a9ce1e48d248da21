#pragma once

#include "genapi/inode.h"

#include "base/parameters.h"

#include "core/boolean.h"
#include "core/float.h"
#include "core/integer.h"
#include "core/string.h"

namespace Plugin::NivexStageletPackageBase {

/// Calls `read.operator()<Value, Parameter>()` with the class of pin values and the class of parameters that fit
/// the node. False, without a call, for nodes that no pin can show.
template <typename Read>
bool readByInterface(const GenApi::INode& node, const Read& read)
{
    namespace Core = Nivex::DataProcessing::Core;
    switch (node.GetPrincipalInterfaceType()) {
        case GenApi::intfIInteger:
            read.template operator()<Core::Integer, Nivex::CIntegerParameter>();
            return true;
        case GenApi::intfIBoolean:
            read.template operator()<Core::Boolean, Nivex::CBooleanParameter>();
            return true;
        case GenApi::intfIFloat:
            read.template operator()<Core::Float, Nivex::CFloatParameter>();
            return true;
        case GenApi::intfIString:
            read.template operator()<Core::String, Nivex::CStringParameter>();
            return true;
        default:
            return false;
    }
}

}  // namespace Plugin::NivexStageletPackageBase
