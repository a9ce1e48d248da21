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
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::Image& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::EllipseF& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::CircleF& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::LineF& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::RectangleF& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::PointF& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::Region& value);
bool printValueToken(std::ostream& stream, TextToken token,
                     const Nivex::DataProcessing::Core::TransformationData& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::Integer& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::Float& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::Boolean& value);
bool printValueToken(std::ostream& stream, TextToken token, const Nivex::DataProcessing::Core::String& value);

}  // namespace Plugin::NivexStageletPackageBase
