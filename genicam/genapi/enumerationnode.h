#pragma once

#include <limits>
#include <unordered_map>

#include "genapi/ienumeration.h"
#include "genapi/nodebase.h"

namespace GenApi {

class CEnumerationNode;

/// EnumEntry: one choice of an enumeration.
class CEnumEntryNode final : public CValueNode, public IEnumEntry
{
public:
    CEnumEntryNode(NodeOrigin origin, gcstring symbolic, CEnumerationNode& enumeration)
        : CValueNode(std::move(origin)), symbolic_(std::move(symbolic)), enumeration_(enumeration)
    {}

    int64_t GetValue() override { return value_; }
    gcstring GetSymbolic() const override { return symbolic_; }
    double GetNumericValue() override { return Number(); }
    bool IsSelfClearing() override { return selfClearing_; }
    gcstring GetDisplayName() const override;

    const gcstring& Symbolic() const { return symbolic_; }
    int64_t Value() const { return value_; }
    bool HasNumber() const { return numeric_.has_value(); }
    double Number() const { return numeric_.value_or(static_cast<double>(value_)); }
    bool SelfClearing() const { return selfClearing_; }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    gcstring ReadText(bool verify, bool ignoreCache) override;
    void WriteText(const gcstring& text, bool verify) override;

private:
    const gcstring symbolic_;
    CEnumerationNode& enumeration_;
    bool hasValue_ = false;
    int64_t value_ = 0;
    std::optional<double> numeric_;
    bool selfClearing_ = false;
};

/// Enumeration: a choice whose number is its own or another node's. While the current entry is self-clearing,
/// reads go past the cache.
class CEnumerationNode final : public CValueNode, public IEnumeration, public INumber
{
public:
    using CValueNode::CValueNode;

    void GetSymbolics(StringList_t& symbolics) override;
    void GetEntries(NodeList_t& entries) override;
    void SetIntValue(int64_t value, bool verify) override;
    int64_t GetIntValue(bool verify, bool ignoreCache) override;
    IEnumEntry* GetEntryByName(const gcstring& symbolic) override;
    IEnumEntry* GetEntry(int64_t value) override;
    IEnumEntry* GetCurrentEntry(bool verify, bool ignoreCache) override;

    int64_t ReadInteger(bool ignoreCache) override;
    double ReadFloat(bool ignoreCache) override;
    bool ReadTruth() override { return ReadInteger(false) != 0; }
    void WriteInteger(int64_t value) override;
    void WriteFloat(double value) override;
    /// Not if entries have a number with a fraction beside their value.
    bool IsIntegral() const override { return integral_; }
    int64_t MinInteger() override { return minInteger_; }
    int64_t MaxInteger() override { return maxInteger_; }
    int64_t IncInteger() override { return 1; }
    double MinFloat() override { return minFloat_; }
    double MaxFloat() override { return maxFloat_; }
    std::optional<double> IncFloat() override { return std::nullopt; }
    gcstring Unit() const override { return {}; }
    ERepresentation Representation() const override { return PureNumber; }
    INumber* AsNumber() override { return this; }

    void AddEntry(CEnumEntryNode& entry);
    /// The entry now knows its value.
    void IndexEntry(CEnumEntryNode& entry);
    /// RuntimeException if the value belongs to no entry.
    CEnumEntryNode& CurrentEntry(bool ignoreCache);

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;
    bool WantsPolling() override;

protected:
    EAccessMode BaseMode() const override { return ModeOf(value_.Reference()); }
    gcstring ReadText(bool verify, bool ignoreCache) override;
    void WriteText(const gcstring& text, bool verify) override;

private:
    CEnumEntryNode* EntryOf(int64_t value) const;
    CEnumEntryNode* EntryNamed(std::string_view symbolic) const;
    void Choose(CEnumEntryNode& entry, bool verify);

    IntegerSource value_;
    std::vector<CEnumEntryNode*> entries_;
    std::unordered_map<int64_t, CEnumEntryNode*> entriesByValue_;  // the first of each value
    std::unordered_map<std::string_view, CEnumEntryNode*> entriesByName_;
    // Of all entries; formulas ask for them again and again.
    bool integral_ = true;
    int64_t minInteger_ = std::numeric_limits<int64_t>::max();
    int64_t maxInteger_ = std::numeric_limits<int64_t>::min();
    double minFloat_ = std::numeric_limits<double>::max();
    double maxFloat_ = std::numeric_limits<double>::lowest();
    bool selfClearing_ = false;  // the value last written or read belongs to a self-clearing entry
};

}  // namespace GenApi
