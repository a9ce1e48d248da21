#pragma once

#include "datawriter/IMediaWriter.h"

namespace Plugin::NivexStageletPackageBase {

/// Stands in for a kind of file that this version does not write: says so with a RuntimeException at the begin of
/// the session, and counts all data as lost.
class UnavailableMediaWriter : public IMediaWriter
{
public:
    /// @param files names the kind for the message; a literal.
    UnavailableMediaWriter(const char* files, IWriterLedger& ledger) : files_(files), ledger_(ledger) {}

    void beginSession(const MediaWriterContext& context) override;
    void beginRecord(const MediaWriterContext&) override {}
    void writeData(const Nivex::DataProcessing::Utils::Variant&, const Nivex::DataProcessing::Utils::TypeInfo&,
                   const MediaWriterContext&) override
    {
        ledger_.reportLoss(Nivex::DataProcessing::Core::LossCause::Unsupported);
    }
    void endRecord(const MediaWriterContext&) override {}
    void endSession(const MediaWriterContext&) override {}

private:
    const char* files_;
    IWriterLedger& ledger_;
};

}  // namespace Plugin::NivexStageletPackageBase
