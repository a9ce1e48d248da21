#pragma once

#include <vector>

#include "gcbase/gcstring.h"

#include "imageloading/sortby.h"

namespace Plugin::NivexStageletPackageBase {

/// The full paths of the image files at `sourcePath`, in no order: those directly in a directory, or a single
/// file. A file counts by its extension, in any case, and in a directory only if it is a regular file or a link to
/// one. Empty if there is nothing at the path. Raises std::filesystem::filesystem_error if a directory can't be
/// read.
std::vector<GenICam::gcstring> scanImageSource(const GenICam::gcstring& sourcePath);

/// Brings paths into order. Ascending and Descending compare whole paths by the global locale's collation; Random
/// gives another order each time.
void orderImages(std::vector<GenICam::gcstring>& paths, SortBy sortBy);

}  // namespace Plugin::NivexStageletPackageBase
