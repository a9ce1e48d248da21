// Settings as text: whatever the text, loading ends with all lines applied or with a message of bounded length,
// and what is saved afterwards can be loaded.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "gcbase/exception.h"
#include "genapi/nodemapfactory.h"

#include "base/featurepersistence.h"

using GenICam::gcstring;
using Nivex::CFeaturePersistence;

namespace {

constexpr const char* description = R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription xmlns="http://www.genicam.org/GenApi/Version_1_1" SchemaMajorVersion="1" SchemaMinorVersion="1">
<Integer Name="Width"><Streamable>Yes</Streamable><Value>100</Value><Min>1</Min><Max>100</Max></Integer>
<Integer Name="Offset"><Streamable>Yes</Streamable><Value>0</Value><Min>0</Min><Max>99</Max></Integer>
<Float Name="Exposure"><Streamable>Yes</Streamable><Value>12.5</Value><Min>0</Min><Max>1000</Max></Float>
<Boolean Name="Flip"><Streamable>Yes</Streamable><Value>true</Value></Boolean>
<String Name="Label"><Streamable>Yes</Streamable><Value>two words</Value></String>
<Enumeration Name="Channel"><EnumEntry Name="Red"><Value>0</Value></EnumEntry>
  <EnumEntry Name="Blue"><Value>1</Value></EnumEntry><Value>0</Value><pSelected>Gain</pSelected></Enumeration>
<Integer Name="Gain"><Streamable>Yes</Streamable><pIndex>Channel</pIndex><ValueIndexed Index="0">1</ValueIndexed>
  <ValueIndexed Index="1">2</ValueIndexed><ValueDefault>3</ValueDefault></Integer>
</RegisterDescription>)";

constexpr std::size_t longestMessage = 8000;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const GenApi::NodeMapPtr map =
        GenApi::CNodeMapFactory(GenApi::ContentType_Xml, description, std::strlen(description)).CreateNodeMap();
    try {
        CFeaturePersistence::LoadFromString(gcstring(reinterpret_cast<const char*>(data), size), *map);
    } catch (const GenICam::RuntimeException& refusal) {
        if (std::strlen(refusal.GetDescription()) > longestMessage) std::abort();
    }
    gcstring saved;
    try {
        CFeaturePersistence::SaveToString(saved, *map);
    } catch (const GenICam::RuntimeException&) {
        return 0;  // a text with several lines, say
    }
    CFeaturePersistence::LoadFromString(saved, *map);
    return 0;
}
