#include "genapi/enumerationnode.h"

#include <algorithm>
#include <cmath>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap_impl.h"

namespace GenApi {

gcstring CEnumEntryNode::GetDisplayName() const
{
    return HasDisplayName() ? CValueNode::GetDisplayName() : symbolic_;
}

bool CEnumEntryNode::TakeElement(ElementReader& element)
{
    if (element.Is("Value")) {
        value_ = element.Integer();
        hasValue_ = true;
    } else if (element.Is("NumericValue")) {
        numeric_ = element.Float();
    } else if (element.Is("IsSelfClearing")) {
        selfClearing_ = element.YesNo();
    } else {
        return CValueNode::TakeElement(element);
    }
    return true;
}

void CEnumEntryNode::Finish(ElementReader& own)
{
    CValueNode::Finish(own);
    if (!hasValue_) own.Refuse("it has no <Value>");
    enumeration_.IndexEntry(*this);
}

gcstring CEnumEntryNode::ReadText(bool /*verify*/, bool /*ignoreCache*/)
{
    return symbolic_;
}

void CEnumEntryNode::WriteText(const gcstring& /*text*/, bool /*verify*/)
{
    GENICAM_THROW(AccessException, "Node \"%s\": an entry of an enumeration cannot be written.", Name().c_str());
}

void CEnumerationNode::GetSymbolics(StringList_t& symbolics)
{
    Map().Operate([&] {
        for (const CEnumEntryNode* entry : entries_)
            if (IsAvailable(entry->Mode())) symbolics.push_back(entry->Symbolic());
    });
}

void CEnumerationNode::GetEntries(NodeList_t& entries)
{
    entries.insert(entries.end(), entries_.begin(), entries_.end());
}

void CEnumerationNode::SetIntValue(int64_t value, bool verify)
{
    Map().Operate([&] {
        if (verify) RequireWritable();
        CEnumEntryNode* entry = EntryOf(value);
        if (entry) return Choose(*entry, verify);
        if (verify)
            GENICAM_THROW(OutOfRangeException, "Node \"%s\": no entry has the value %lld.", Name().c_str(),
                          static_cast<long long>(value));
        WriteInteger(value);
    });
}

int64_t CEnumerationNode::GetIntValue(bool verify, bool ignoreCache)
{
    return Map().Operate([&] {
        RequireReadable();
        return verify ? CurrentEntry(ignoreCache).Value() : ReadInteger(ignoreCache);
    });
}

IEnumEntry* CEnumerationNode::GetEntryByName(const gcstring& symbolic)
{
    return EntryNamed(symbolic.view());
}

IEnumEntry* CEnumerationNode::GetEntry(int64_t value)
{
    return EntryOf(value);
}

IEnumEntry* CEnumerationNode::GetCurrentEntry(bool /*verify*/, bool ignoreCache)
{
    return Map().Operate([&]() -> IEnumEntry* {
        RequireReadable();
        return &CurrentEntry(ignoreCache);
    });
}

int64_t CEnumerationNode::ReadInteger(bool ignoreCache)
{
    const int64_t value = value_.Read(ignoreCache || selfClearing_);
    if (selfClearing_) {
        const CEnumEntryNode* entry = EntryOf(value);
        selfClearing_ = entry && entry->SelfClearing();
    }
    return value;
}

double CEnumerationNode::ReadFloat(bool ignoreCache)
{
    return CurrentEntry(ignoreCache).Number();
}

void CEnumerationNode::WriteInteger(int64_t value)
{
    const CEnumEntryNode* entry = EntryOf(value);
    selfClearing_ = entry && entry->SelfClearing();
    Store(value_, value);
}

void CEnumerationNode::WriteFloat(double value)
{
    const CEnumEntryNode* nearest = nullptr;
    for (const CEnumEntryNode* entry : entries_) {
        if (!IsAvailable(entry->Mode())) continue;
        if (!nearest || std::abs(entry->Number() - value) < std::abs(nearest->Number() - value)) nearest = entry;
    }
    if (!nearest) GENICAM_THROW(AccessException, "Node \"%s\": no entry can be chosen.", Name().c_str());
    WriteInteger(nearest->Value());
}

void CEnumerationNode::AddEntry(CEnumEntryNode& entry)
{
    entries_.push_back(&entry);
    entriesByName_.emplace(entry.Symbolic().view(), &entry);
}

void CEnumerationNode::IndexEntry(CEnumEntryNode& entry)
{
    entriesByValue_.emplace(entry.Value(), &entry);
    integral_ = integral_ && !entry.HasNumber();
    minInteger_ = std::min(minInteger_, entry.Value());
    maxInteger_ = std::max(maxInteger_, entry.Value());
    minFloat_ = std::min(minFloat_, entry.Number());
    maxFloat_ = std::max(maxFloat_, entry.Number());
}

CEnumEntryNode& CEnumerationNode::CurrentEntry(bool ignoreCache)
{
    const int64_t value = ReadInteger(ignoreCache);
    if (CEnumEntryNode* entry = EntryOf(value)) return *entry;
    GENICAM_THROW(RuntimeException, "Node \"%s\": its value %lld belongs to no entry.", Name().c_str(),
                  static_cast<long long>(value));
}

bool CEnumerationNode::TakeElement(ElementReader& element)
{
    if (element.Is("pValue"))
        value_.Refer(element.Number(Link::Value));
    else if (element.Is("Value"))
        value_.Set(element.Integer());
    else
        return CValueNode::TakeElement(element);
    return true;
}

void CEnumerationNode::Finish(ElementReader& own)
{
    CValueNode::Finish(own);
    if (!value_.IsGiven()) own.Refuse("it has neither <Value> nor <pValue>");
}

bool CEnumerationNode::WantsPolling()
{
    return selfClearing_;
}

gcstring CEnumerationNode::ReadText(bool /*verify*/, bool ignoreCache)
{
    return CurrentEntry(ignoreCache).Symbolic();
}

void CEnumerationNode::WriteText(const gcstring& text, bool verify)
{
    CEnumEntryNode* entry = EntryNamed(text.view());
    if (!entry) RefuseText(text, "one of its entries");
    Choose(*entry, verify);
}

CEnumEntryNode* CEnumerationNode::EntryOf(int64_t value) const
{
    const auto found = entriesByValue_.find(value);
    return found == entriesByValue_.end() ? nullptr : found->second;
}

CEnumEntryNode* CEnumerationNode::EntryNamed(std::string_view symbolic) const
{
    const auto found = entriesByName_.find(symbolic);
    return found == entriesByName_.end() ? nullptr : found->second;
}

void CEnumerationNode::Choose(CEnumEntryNode& entry, bool verify)
{
    const EAccessMode mode = entry.Mode();
    if (verify && !IsAvailable(mode))
        GENICAM_THROW(AccessException, "Node \"%s\": entry \"%s\" cannot be chosen now (access mode %s).",
                      Name().c_str(), entry.Symbolic().c_str(), ToText(mode));
    WriteInteger(entry.Value());
}

}  // namespace GenApi
