#include "genapi/absentnodes.h"

#include "gcbase/exception.h"

namespace GenApi {

namespace {

[[noreturn]] void refuse(const CNodeBase& node)
{
    GENICAM_THROW(AccessException, "Node \"%s\": nodes of the kind %s are not implemented.", node.Name().c_str(),
                  node.Kind());
}

}  // namespace

int64_t CAbsentIntegerNode::ReadInteger(bool /*ignoreCache*/)
{
    refuse(*this);
}

void CAbsentIntegerNode::WriteInteger(int64_t /*value*/)
{
    refuse(*this);
}

gcstring CAbsentStringNode::ReadString(bool /*ignoreCache*/)
{
    refuse(*this);
}

void CAbsentStringNode::WriteString(const gcstring& /*value*/)
{
    refuse(*this);
}

}  // namespace GenApi
