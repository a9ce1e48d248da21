#pragma once

// All classes of pin values.
#include "core/array.h"
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
