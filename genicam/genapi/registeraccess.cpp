#include "genapi/registeraccess.h"

#include <algorithm>
#include <cstring>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap.h"
#include "genapi/portnode.h"

namespace GenApi {

namespace {

constexpr Word<ECachingMode> cachingModes[] = {
    {"WriteThrough", WriteThrough}, {"WriteAround", WriteAround}, {"NoCache", NoCache}};

}  // namespace

bool RegisterAccess::TakeElement(ElementReader& element)
{
    if (element.Is("Address"))
        TakeConstantAddress(element);
    else if (element.Is("pAddress"))
        parts_.push_back({element.Number(Link::Parameter), {}, false});
    else if (element.Is("pIndex"))
        TakeIndex(element);
    else if (element.Is("Length"))
        length_.Set(element.Integer());
    else if (element.Is("pLength"))
        length_.Refer(element.Number(Link::Parameter));
    else if (element.Is("AccessMode"))
        declared_ = element.AccessMode(declared_);
    else if (element.Is("pPort"))
        port_ = &element.Port();
    else if (element.Is("Cachable"))
        caching_ = element.AnyWordOf(cachingModes, element.Text().empty() ? caching_ : NoCache);
    else if (element.Is("IntSwissKnife"))
        parts_.push_back({element.NumberOf(element.Attribute("Name"), Link::Parameter), {}, false});
    else
        return false;
    return true;
}

void RegisterAccess::TakeConstantAddress(const ElementReader& element)
{
    hasAddress_ = true;
    if (__builtin_add_overflow(address_, element.Integer(), &address_))
        element.Refuse("the sum of the addresses exceeds 64 bits");
}

void RegisterAccess::TakeIndex(ElementReader& element)
{
    AddressPart part = {element.Number(Link::Parameter), {}, true};
    const std::string_view offset = element.Attribute("Offset");
    const std::string_view offsetNode = element.Attribute("pOffset");
    if (!offset.empty()) part.step.Set(element.IntegerOf(offset));
    if (!offsetNode.empty()) part.step.Refer(element.NumberOf(offsetNode, Link::Parameter));
    parts_.push_back(part);
}

void RegisterAccess::Finish(ElementReader& own, int64_t shortest, int64_t longest)
{
    shortest_ = shortest;
    longest_ = longest;
    if (!hasAddress_ && parts_.empty()) own.Refuse("it has no address");
    if (!port_) own.Refuse("it has no <pPort>");
    if (!length_.IsGiven()) own.Refuse("it has neither <Length> nor <pLength>");
    if (!length_.Reference()) {
        const int64_t length = length_.Read();
        if (length < shortest || length > longest)
            own.Refuse(GenICam::formatText("its length is %lld; allowed are %lld to %lld bytes",
                                           static_cast<long long>(length), static_cast<long long>(shortest),
                                           static_cast<long long>(longest)));
    }
    port_->AddRegister(*this);
}

EAccessMode RegisterAccess::Mode() const
{
    const EAccessMode mode = Combine(declared_, port_->Mode());
    if (!IsAvailable(mode) || !port_->Memory().IsAttached()) return mode;
    return LiesInMemory() ? mode : NA;
}

bool RegisterAccess::LiesInMemory() const
{
    const auto isUnreadable = [](const NumberRef& node) { return node && !node.IsReadable(); };
    for (const AddressPart& part : parts_)
        if (isUnreadable(part.node) || isUnreadable(part.step.Reference())) return false;
    return !isUnreadable(length_.Reference()) && port_->Memory().Covers(Address(), Length());
}

int64_t RegisterAccess::Address() const
{
    int64_t address = address_;
    for (const AddressPart& part : parts_) {
        int64_t value = part.node.Readable().ReadInteger(false);
        if (part.isIndex) {
            const int64_t step = part.step.IsGiven() ? part.step.ReadChecked() : Length();
            if (__builtin_mul_overflow(value, step, &value)) RefuseAddress();
        }
        if (__builtin_add_overflow(address, value, &address)) RefuseAddress();
    }
    return address;
}

void RegisterAccess::RefuseAddress() const
{
    GENICAM_THROW(RuntimeException, "Node \"%s\": its address exceeds 64 bits.", owner_.Name().c_str());
}

int64_t RegisterAccess::Length() const
{
    const int64_t length = length_.ReadChecked();
    if (length < shortest_ || length > longest_)
        GENICAM_THROW(RuntimeException, "Node \"%s\": its length is %lld; allowed are %lld to %lld bytes.",
                      owner_.Name().c_str(), static_cast<long long>(length), static_cast<long long>(shortest_),
                      static_cast<long long>(longest_));
    return length;
}

void RegisterAccess::Read(std::span<uint8_t> bytes, bool ignoreCache)
{
    owner_.Map().CountStep(owner_);
    const int64_t address = Address();
    if (cached_ && !ignoreCache && cachedAddress_ == address && content_.size() == bytes.size()) {
        std::copy(content_.begin(), content_.end(), bytes.begin());
        return;
    }
    cached_ = false;
    port_->ReadBytes(bytes, address);
    if (caching_ != NoCache) Keep(address, bytes);
}

void RegisterAccess::Write(std::span<const uint8_t> bytes)
{
    const int64_t address = Address();
    cached_ = false;
    try {
        port_->WriteBytes(bytes, address);
    } catch (...) {
        owner_.Map().Invalidate(owner_, false);
        throw;
    }
    owner_.Map().Invalidate(owner_, false);
    if (caching_ == WriteThrough) Keep(address, bytes);
    owner_.CheckErrors();
}

bool RegisterAccess::HasCached(int64_t address, int64_t length) const
{
    if (!cached_) return false;
    // Distances as unsigned numbers, since the addresses may lie anywhere.
    const auto size = static_cast<int64_t>(content_.size());
    return address <= cachedAddress_ ? static_cast<uint64_t>(cachedAddress_) - static_cast<uint64_t>(address) <
                                           static_cast<uint64_t>(length)
                                     : static_cast<uint64_t>(address) - static_cast<uint64_t>(cachedAddress_) <
                                           static_cast<uint64_t>(size);
}

void RegisterAccess::Keep(int64_t address, std::span<const uint8_t> bytes)
{
    if (static_cast<int64_t>(bytes.size()) > maxCachedLength) return;
    content_.assign(bytes.begin(), bytes.end());
    cachedAddress_ = address;
    cached_ = true;
}

}  // namespace GenApi
