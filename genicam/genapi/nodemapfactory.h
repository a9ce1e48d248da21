#pragma once

#include <cstddef>
#include <memory>

#include "genapi/inodemap.h"

namespace GenApi {

/// Makes node maps from one register description (GenApi schema 1.0 and 1.1).
///
/// Limits on descriptions, beyond which they are refused: 16 MiB of text, 64 levels of XML elements, chains of 256
/// nodes that depend on each other, registers of 16 MiB, formulas of 64 KiB that take 16384 steps, a million
/// elements that entries take from their StructReg. Registers longer than 4 KiB are never cached. Nodes of the
/// kinds ConfRom, TextDesc, IntKey, AdvFeatureLock and SmartFeature stand in the map as not implemented (NI). All
/// refusals are RuntimeExceptions that name the node, the line and the cause.
class GENICAM_API CNodeMapFactory
{
public:
    /// Reads the XML, behind which zeros may stand; `data` is not needed afterwards. `suppressStrings` leaves out
    /// tool tips, descriptions, display names and document addresses. InvalidArgumentException for a null `data`
    /// or another content type than XML.
    CNodeMapFactory(EContentType contentType, const void* data, std::size_t size,
                    ECacheUsage cacheUsage = CacheUsage_Automatic, bool suppressStrings = false);
    ~CNodeMapFactory();
    CNodeMapFactory(CNodeMapFactory&&) noexcept;
    CNodeMapFactory& operator=(CNodeMapFactory&&) noexcept;

    /// A map with a lock of its own. `releaseDescription` frees the text that was read: this factory then makes no
    /// further map (LogicalErrorException).
    NodeMapPtr CreateNodeMap(const gcstring& deviceName = "Device", bool releaseDescription = true);
    /// A map that works under `lock`, which must outlive it.
    NodeMapPtr CreateNodeMap(const gcstring& deviceName, CLock& lock, bool releaseDescription = true);

    /// A map without nodes, named "Device".
    static NodeMapPtr CreateEmptyNodeMap();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace GenApi
