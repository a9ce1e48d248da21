#include "genapi/genapi.h"

namespace GenApi {

// Out of line, so that each interface's type information stands in this library alone.
IBase::~IBase() = default;
INode::~INode() = default;
IValue::~IValue() = default;
IInteger::~IInteger() = default;
IFloat::~IFloat() = default;
IBoolean::~IBoolean() = default;
IString::~IString() = default;
IEnumEntry::~IEnumEntry() = default;
IEnumeration::~IEnumeration() = default;
ICommand::~ICommand() = default;
ICategory::~ICategory() = default;
IRegister::~IRegister() = default;
ISelector::~ISelector() = default;
IPort::~IPort() = default;
IPortWriteList::~IPortWriteList() = default;
IPortConstruct::~IPortConstruct() = default;
INodeMap::~INodeMap() = default;

}  // namespace GenApi
