#pragma once

#include <cstdint>
#include <vector>

#include "gcbase/export.h"
#include "gcbase/gcstring.h"

namespace GenApi {

using GenICam::gcstring;

class IBase;
class INode;
class IValue;

using NodeList_t = std::vector<INode*>;
using FeatureList_t = std::vector<IValue*>;
using StringList_t = std::vector<gcstring>;

/// What a client may do with a node at this moment.
enum EAccessMode
{
    NI = 0,  ///< not implemented by this device
    NA = 1,  ///< implemented, but not available in the present state
    WO = 2,
    RO = 3,
    RW = 4
};

/// The least experienced user a feature is meant for; Invisible ones are for programs only.
enum EVisibility
{
    Beginner = 0,
    Expert = 1,
    Guru = 2,
    Invisible = 3
};

/// A hint how a number is best shown.
enum ERepresentation
{
    Linear,
    Logarithmic,
    Boolean,
    PureNumber,
    HexNumber,
    IPV4Address,
    MACAddress
};

enum EDisplayNotation
{
    fnAutomatic,
    fnFixed,
    fnScientific
};

/// Ordered from the least to the most a cache may keep.
enum ECachingMode
{
    NoCache,      ///< every read goes to the device
    WriteAround,  ///< a read is kept, a write drops it
    WriteThrough  ///< a read is kept, a write replaces it
};

/// The interface that tells best what a node is; see INode::GetPrincipalInterfaceType.
enum EInterfaceType
{
    intfIValue,
    intfIBase,
    intfIInteger,
    intfIBoolean,
    intfICommand,
    intfIFloat,
    intfIString,
    intfIRegister,
    intfICategory,
    intfIEnumeration,
    intfIEnumEntry,
    intfIPort
};

enum ESign
{
    Signed,
    Unsigned
};
enum EEndianess
{
    BigEndian,
    LittleEndian
};
enum ENameSpace
{
    Custom,
    Standard
};
enum EYesNo
{
    No = 0,
    Yes = 1
};

/// How the bytes given to a CNodeMapFactory are packed.
enum EContentType
{
    ContentType_Xml = 0,
    ContentType_ZippedXml = 1
};

/// How a preprocessed form of the description may be kept on disk. This runtime keeps none: a description is
/// read in milliseconds, so all four mean the same.
enum ECacheUsage
{
    CacheUsage_Automatic = 0,
    CacheUsage_ForceWrite = 1,
    CacheUsage_ForceRead = 2,
    CacheUsage_Ignore = 3
};

/// Two modes that both must hold: a device's and a lock's, say. RO with WO leaves nothing, thus NA.
GENICAM_API EAccessMode Combine(EAccessMode first, EAccessMode second) noexcept;

constexpr bool IsReadable(EAccessMode mode) noexcept
{
    return mode == RO || mode == RW;
}
constexpr bool IsWritable(EAccessMode mode) noexcept
{
    return mode == WO || mode == RW;
}
constexpr bool IsAvailable(EAccessMode mode) noexcept
{
    return mode != NI && mode != NA;
}
constexpr bool IsImplemented(EAccessMode mode) noexcept
{
    return mode != NI;
}

/// The same questions to a node. A null pointer is neither implemented nor anything else.
GENICAM_API bool IsReadable(const IBase* node);
GENICAM_API bool IsWritable(const IBase* node);
GENICAM_API bool IsAvailable(const IBase* node);
GENICAM_API bool IsImplemented(const IBase* node);

/// The mode's name, "NI" to "RW".
GENICAM_API const char* ToText(EAccessMode mode) noexcept;
/// The level's name, "Beginner" to "Invisible".
GENICAM_API const char* ToText(EVisibility visibility) noexcept;
/// The representation's name, "Linear" to "MACAddress".
GENICAM_API const char* ToText(ERepresentation representation) noexcept;

}  // namespace GenApi
