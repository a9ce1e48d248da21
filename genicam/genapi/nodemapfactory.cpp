#include "genapi/nodemapfactory.h"

#include <optional>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap.h"

namespace GenApi {

class CNodeMapFactory::Impl
{
public:
    Impl(const void* data, std::size_t size, bool suppressStrings)
        : document_(std::in_place, data, size),
          text_(static_cast<const char*>(data), size),
          suppressStrings_(suppressStrings)
    {}

    NodeMapPtr Create(const gcstring& deviceName, CLock* lock, bool releaseDescription)
    {
        if (!document_)
            GENICAM_THROW(LogicalErrorException,
                          "The register description was released when the first map was made.");
        auto map = std::make_shared<CNodeMap>(deviceName, lock, text_);
        NodeBuilder(*document_, *map, suppressStrings_).Build();
        if (releaseDescription) {
            document_.reset();
            text_.clear();
        }
        return map;
    }

private:
    std::optional<Document> document_;
    gcstring text_;
    bool suppressStrings_;
};

CNodeMapFactory::CNodeMapFactory(EContentType contentType, const void* data, std::size_t size,
                                 ECacheUsage /*cacheUsage*/, bool suppressStrings)
{
    if (contentType != ContentType_Xml)
        GENICAM_THROW(InvalidArgumentException,
                      "Register descriptions of content type %d are not supported, only XML (%d).",
                      static_cast<int>(contentType), static_cast<int>(ContentType_Xml));
    if (!data) GENICAM_THROW(InvalidArgumentException, "The register description is a null pointer.");
    impl_ = std::make_unique<Impl>(data, size, suppressStrings);
}

CNodeMapFactory::~CNodeMapFactory() = default;
CNodeMapFactory::CNodeMapFactory(CNodeMapFactory&&) noexcept = default;
CNodeMapFactory& CNodeMapFactory::operator=(CNodeMapFactory&&) noexcept = default;

NodeMapPtr CNodeMapFactory::CreateNodeMap(const gcstring& deviceName, bool releaseDescription)
{
    return impl_->Create(deviceName, nullptr, releaseDescription);
}

NodeMapPtr CNodeMapFactory::CreateNodeMap(const gcstring& deviceName, CLock& lock, bool releaseDescription)
{
    return impl_->Create(deviceName, &lock, releaseDescription);
}

NodeMapPtr CNodeMapFactory::CreateEmptyNodeMap()
{
    return std::make_shared<CNodeMap>("Device", nullptr);
}

}  // namespace GenApi
