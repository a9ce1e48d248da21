#pragma once

#include "genapi/integerbase.h"
#include "genapi/stringnode.h"

// Nodes of the kinds that only cameras with IIDC registers have (ConfRom and its keys, AdvFeatureLock,
// SmartFeature). Nothing is known of a description in use that needs them; they stand in the map as not
// implemented, so that the rest of such a description can be used.
namespace GenApi {

class CAbsentNode final : public CNodeBase
{
public:
    using CNodeBase::CNodeBase;

protected:
    EAccessMode BaseMode() const override { return NI; }
};

class CAbsentIntegerNode final : public CIntegerBase
{
public:
    using CIntegerBase::CIntegerBase;

    int64_t ReadInteger(bool ignoreCache) override;
    void WriteInteger(int64_t value) override;
    int64_t MinInteger() override { return 0; }
    int64_t MaxInteger() override { return 0; }
    int64_t IncInteger() override { return 1; }
    gcstring Unit() const override { return Look().Unit({}); }
    ERepresentation Representation() const override { return Look().Representation({}); }

protected:
    EAccessMode BaseMode() const override { return NI; }
};

class CAbsentStringNode final : public CStringBase
{
public:
    using CStringBase::CStringBase;

    gcstring ReadString(bool ignoreCache) override;
    void WriteString(const gcstring& value) override;
    int64_t MaxLength() override { return 0; }

protected:
    EAccessMode BaseMode() const override { return NI; }
};

}  // namespace GenApi
