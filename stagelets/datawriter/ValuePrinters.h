#pragma once

#include <ostream>

#include "core/boolean.h"
#include "core/circlef.h"
#include "core/ellipsef.h"
#include "core/float.h"
#include "core/image.h"
#include "core/integer.h"
#include "core/linef.h"
#include "core/pointf.h"
#include "core/rectanglef.h"
#include "core/region.h"
#include "core/string.h"
#include "core/transformationdata.h"
#include "datawriter/TextTokenTable.h"

namespace Plugin::NivexStageletPackageBase {

/// Prints what a data token stands for in a value without error, numbers with the stream's formatting. False, and
/// nothing is printed, if the token is none of that type's. TextToken::Default, which all types have, prints every
/// property, separated by ";".
/// @tparam T is one of the twelve classes included above.
template <typename T>
bool printValueToken(std::ostream& stream, TextToken token, const T& value);

}  // namespace Plugin::NivexStageletPackageBase
