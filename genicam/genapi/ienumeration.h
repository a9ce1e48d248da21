#pragma once

#include "genapi/ivalue.h"

namespace GenApi {

/// One choice of an enumeration. In the map it is the node "EnumEntry_<enumeration>_<entry>".
/// Its access mode is NI or NA while it cannot be chosen, else RO. Its text is its symbolic name.
class GENICAM_API IEnumEntry : public virtual IValue
{
public:
    virtual int64_t GetValue() = 0;
    virtual gcstring GetSymbolic() const = 0;
    /// The entry as a number with a fraction; GetValue() if the description gives none.
    virtual double GetNumericValue() = 0;
    /// True if the device leaves this choice by itself.
    virtual bool IsSelfClearing() = 0;

    ~IEnumEntry() override;
};

/// A choice among entries. Its text is the current entry's symbolic name.
class GENICAM_API IEnumeration : public virtual IValue
{
public:
    /// The symbolic names of the entries that can be chosen now.
    virtual void GetSymbolics(StringList_t& symbolics) = 0;
    /// All entries, in the order of the description.
    virtual void GetEntries(NodeList_t& entries) = 0;
    /// With `verify` the value must be that of an entry that can be chosen now.
    virtual void SetIntValue(int64_t value, bool verify = true) = 0;
    virtual int64_t GetIntValue(bool verify = false, bool ignoreCache = false) = 0;
    /// Null if there is none of that name or value.
    virtual IEnumEntry* GetEntryByName(const gcstring& symbolic) = 0;
    virtual IEnumEntry* GetEntry(int64_t value) = 0;
    /// RuntimeException if the device's value belongs to no entry.
    virtual IEnumEntry* GetCurrentEntry(bool verify = false, bool ignoreCache = false) = 0;

    ~IEnumeration() override;
};

}  // namespace GenApi
