#pragma once

#include "core/array.h"
#include "core/image.h"
#include "datawriter/IMediaWriter.h"

namespace Plugin::NivexStageletPackageBase {

/// Calls `write(image, indices)` for the image that a value is, or for each one of the array that it is, with the
/// array's fields set in the indices. Any other value, and an array in error, is reported to the ledger instead;
/// so is an image that is absent or carries an error, and passed over. What `write` raises ends the walk; the
/// caller accounts for that image, and those behind it are reported as not written.
template <typename Write>
void forEachImage(const Nivex::DataProcessing::Utils::Variant& value, const MediaWriterContext& context,
                  IWriterLedger& ledger, const Write& write)
{
    namespace Core = Nivex::DataProcessing::Core;
    const auto writeUsable = [&](const Core::Image& image, const WriterIndices& indices) {
        if (image.hasError() || !image.getDataConst()) {
            ledger.reportLoss(Core::LossCause::InvalidInput);
        } else {
            write(image, indices);
        }
    };
    if (const auto* image = value.tryGet<Core::Image>()) return writeUsable(*image, *context.indices);
    const auto* images = value.tryGet<Core::Array<Core::Image>>();
    if (!images) return ledger.reportLoss(Core::LossCause::Unsupported);
    if (images->hasError()) return ledger.reportLoss(Core::LossCause::InvalidInput);
    WriterIndices indices = *context.indices;
    indices.arraySize = images->getSize();
    indices.inArray = 1;
    try {
        for (indices.arrayIndex = 0; indices.arrayIndex < indices.arraySize; ++indices.arrayIndex)
            writeUsable(images->at(indices.arrayIndex), indices);
    } catch (...) {
        while (++indices.arrayIndex < indices.arraySize)
            ledger.reportLoss(Core::LossCause::FileNotWritten);
        throw;
    }
}

}  // namespace Plugin::NivexStageletPackageBase
