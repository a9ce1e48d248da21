#pragma once

#include <functional>
#include <memory>

#include "datawriter/IMediaWriter.h"

namespace Plugin::NivexStageletPackageBase {

/// Makes the writer for a media type, or none for a type that has no writer. The ledger outlives the writer.
using MediaWriterFactory = std::function<std::shared_ptr<IMediaWriter>(MediaType type, IWriterLedger& ledger)>;

/// The factory of every ordinary DataWriter.
std::shared_ptr<IMediaWriter> createMediaWriter(MediaType type, IWriterLedger& ledger);

}  // namespace Plugin::NivexStageletPackageBase
