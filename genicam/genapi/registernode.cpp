#include "genapi/registernode.h"

#include "genapi/nodebuilder.h"
#include "genapi/registerof_impl.h"
#include "genapi/textconversion.h"

namespace GenApi {

void CRegisterNode::Finish(ElementReader& own)
{
    FinishRegister(own, 0, RegisterAccess::maxLength);
}

gcstring CRegisterNode::ReadText(bool /*verify*/, bool ignoreCache)
{
    std::vector<uint8_t> bytes(static_cast<std::size_t>(Register().Length()));
    Register().Read(bytes, ignoreCache);
    return FormatBytes(bytes);
}

void CRegisterNode::WriteText(const gcstring& text, bool /*verify*/)
{
    const auto bytes = ParseBytes(text.view());
    const int64_t length = Register().Length();
    if (!bytes || static_cast<int64_t>(bytes->size()) != length)
        RefuseText(text,
                   GenICam::formatText("0x and two digits for each of %lld bytes", static_cast<long long>(length))
                       .c_str());
    Register().Write(*bytes);
}

}  // namespace GenApi
