#pragma once

// The whole of the node map interface.
#include "genapi/chunkadapter.h"
#include "genapi/eventadapter.h"
#include "genapi/iboolean.h"
#include "genapi/icategory.h"
#include "genapi/icommand.h"
#include "genapi/ienumeration.h"
#include "genapi/ifloat.h"
#include "genapi/iinteger.h"
#include "genapi/inodemap.h"
#include "genapi/iregister.h"
#include "genapi/iselector.h"
#include "genapi/istring.h"
#include "genapi/nodemapfactory.h"
#include "genapi/nodemapref.h"
#include "genapi/portimpl.h"
