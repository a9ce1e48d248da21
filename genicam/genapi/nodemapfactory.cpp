#include "genapi/nodemapfactory.h"

#include "gcbase/exception.h"

namespace GenApi {

class CNodeMapFactory::Impl
{};

CNodeMapFactory::CNodeMapFactory(EContentType, const void*, std::size_t, ECacheUsage, bool)
{
    GENICAM_THROW(RuntimeException, "Node maps are being built; this commit has their interface only.");
}

CNodeMapFactory::~CNodeMapFactory() = default;
CNodeMapFactory::CNodeMapFactory(CNodeMapFactory&&) noexcept = default;
CNodeMapFactory& CNodeMapFactory::operator=(CNodeMapFactory&&) noexcept = default;

NodeMapPtr CNodeMapFactory::CreateNodeMap(const gcstring&, bool)
{
    return nullptr;
}

NodeMapPtr CNodeMapFactory::CreateNodeMap(const gcstring&, CLock&, bool)
{
    return nullptr;
}

NodeMapPtr CNodeMapFactory::CreateEmptyNodeMap()
{
    return nullptr;
}

}  // namespace GenApi
