#include "datawriter/UnavailableMediaWriter.h"

#include <cinttypes>

#include "gcbase/exception.h"

namespace Plugin::NivexStageletPackageBase {

void UnavailableMediaWriter::beginSession(const MediaWriterContext& context)
{
    GENICAM_THROW(RuntimeException,
                  "Media writer %" PRIu64
                  " is set to write %s, which this version can't; data for it are lost. Choose another MediaType.",
                  context.indices->mediaWriterIndex, files_);
}

}  // namespace Plugin::NivexStageletPackageBase
