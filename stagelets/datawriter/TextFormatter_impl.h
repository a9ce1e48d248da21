#pragma once

#include "datawriter/TextFormatter.h"
#include "datawriter/ValuePrinters.h"

namespace Plugin::NivexStageletPackageBase {

template <typename T>
void formatValueText(const TextTokenTable& tokens, const char* templateText, TimeSnapshot& time,
                     std::ostream& stream, const WriterIndices& indices, const T& value)
{
    Detail::formatValueText(tokens, templateText, time, stream, indices, value, &value,
                            [](std::ostream& out, TextToken token, const void* object) {
                                return printValueToken(out, token, *static_cast<const T*>(object));
                            });
}

}  // namespace Plugin::NivexStageletPackageBase
