#pragma once

#include <ostream>

#include "core/ivalue.h"
#include "datawriter/TextTokenTable.h"
#include "datawriter/TimeSnapshot.h"
#include "datawriter/WriterIndices.h"

/// The template engine. A template is plain text with tokens in it, which is scanned anew at each use. Whatever is
/// no complete token is text; no template is refused. Both formatters write straight into the stream, with its own
/// formatting state, which the stream tokens change for as long as the stream lives: field width for the next
/// insertion, the rest until changed. Literal text is written as it is, past the field width.
///
/// Exceptions come from the value's getters and the stream only.

namespace Plugin::NivexStageletPackageBase {

/// For folder names, file names and the text sections around data: there is no value, so data tokens are text,
/// error messages empty, and the error flags false. A null template writes nothing.
void formatStructuralText(const TextTokenTable& tokens, const char* templateText, TimeSnapshot& time,
                          std::ostream& stream, const WriterIndices& indices);

/// For the text sections of one value. Data tokens of a value with an error give "na", those that its type does
/// not have are text. A null template writes nothing.
/// @tparam T is one of the twelve value classes that have a printer (ValuePrinters.h).
template <typename T>
void formatValueText(const TextTokenTable& tokens, const char* templateText, TimeSnapshot& time,
                     std::ostream& stream, const WriterIndices& indices, const T& value);

namespace Detail {

/// Prints the tokens that need a value; true if it knows the token.
using ValueTokenPrinter = bool (*)(std::ostream& stream, TextToken token, const void* value);

void formatValueText(const TextTokenTable& tokens, const char* templateText, TimeSnapshot& time,
                     std::ostream& stream, const WriterIndices& indices,
                     const Nivex::DataProcessing::Core::IValue& value, const void* object,
                     ValueTokenPrinter printer);

}  // namespace Detail

}  // namespace Plugin::NivexStageletPackageBase

#include "datawriter/TextFormatter_impl.h"
