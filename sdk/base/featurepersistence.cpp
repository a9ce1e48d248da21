#include "base/featurepersistence.h"

#include "genapi/lock.h"

#include "base/featurereader.h"
#include "base/featurewriter.h"

namespace Nivex {

using GenICam::gcstring;

namespace {

constexpr const char* formatLine = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";

}  // namespace

void CFeaturePersistence::SaveToString(gcstring& text, GenApi::INodeMap& nodeMap)
{
    const GenApi::AutoLock lock(nodeMap.GetLock());
    text = formatLine + FeatureWriter(nodeMap).Write();
}

void CFeaturePersistence::LoadFromString(const gcstring& text, GenApi::INodeMap& nodeMap, bool verify)
{
    const GenApi::AutoLock lock(nodeMap.GetLock());
    FeatureReader(nodeMap, verify).Read(text.view());
}

}  // namespace Nivex
