#pragma once

#include <cstdint>
#include <memory>

#include "gcbase/gcstring.h"

#include "parameteradapter/iparameterports.h"

namespace AnythingToNodeMapAdapter {

/// The keys of links between parameters; see CAnythingToNodeMapAdapterBase::addLink.
namespace LinkKey {
inline constexpr const char* isAvailable = "IsAvailable";  ///< Available only while the target's value is not 0.
inline constexpr const char* isLocked = "IsLocked";        ///< Not writable while the target's value is not 0.
inline constexpr const char* selected = "Selected";        ///< From a selector to a parameter that it selects.
inline constexpr const char* invalidator = "Invalidator";  ///< The target's change changes this value.
inline constexpr const char* feature = "Feature";          ///< From a category to its members.
}  // namespace LinkKey

/// Collects the parameter ports of a node and writes the GenApi register description of them.
///
/// The caller holds the node's lock for every operation but register access. A port belongs to one adapter at a
/// time, since it has one observer; the adapter shares its ownership.
class CAnythingToNodeMapAdapterBase
{
public:
    virtual ~CAnythingToNodeMapAdapterBase();
    CAnythingToNodeMapAdapterBase(const CAnythingToNodeMapAdapterBase&) = delete;
    CAnythingToNodeMapAdapterBase& operator=(const CAnythingToNodeMapAdapterBase&) = delete;

    /// The description just as buildNodeMap would generate it, byte for byte. Changes nothing. An empty
    /// `portName` gives every parameter a port and an address space of its own. `prefix` goes in front of the
    /// names of registers and own ports. Raises BadAllocException without memory.
    virtual void getDescriptionText(GenICam::gcstring& text, const GenICam::gcstring& portName,
                                    const GenICam::gcstring& prefix) const;

    /// Adds a parameter under its name, in place of one of that name (whose registers vanish at the next build).
    /// Null is ignored. `mergePriority` marks the node for the merge with another description.
    void addParameter(const std::shared_ptr<IIntegerParameterPort>& port, std::int32_t mergePriority = 0);
    void addParameter(const std::shared_ptr<IFloatParameterPort>& port, std::int32_t mergePriority = 0);
    void addParameter(const std::shared_ptr<IBooleanParameterPort>& port, std::int32_t mergePriority = 0);
    void addParameter(const std::shared_ptr<IStringParameterPort>& port, std::int32_t mergePriority = 0);
    void addParameter(const std::shared_ptr<IEnumParameterPort>& port, std::int32_t mergePriority = 0);
    void addParameter(const std::shared_ptr<ICategoryParameterPort>& port, std::int32_t mergePriority = 0);
    void addParameter(const std::shared_ptr<ICommandParameterPort>& port, std::int32_t mergePriority = 0);

    /// Adds an entry to an enumeration added before, under the name "EnumEntry_<enumeration>_<entry>". Ignored
    /// for null, an unknown name, or one that is no enumeration. An entry added twice is listed twice.
    void addEnumEntry(const GenICam::gcstring& enumName, const std::shared_ptr<IEnumEntryParameterPort>& entry,
                      std::int32_t mergePriority = 0);

    /// Appends `toName` to the links of `fromName` under that key. Ignored for an unknown `fromName`; `toName`
    /// is not checked.
    void addLink(const GenICam::gcstring& linkKey, const GenICam::gcstring& fromName,
                 const GenICam::gcstring& toName);

protected:
    class CAnythingToNodeMapAdapterBaseImpl;

    explicit CAnythingToNodeMapAdapterBase(std::unique_ptr<CAnythingToNodeMapAdapterBaseImpl> impl);
    CAnythingToNodeMapAdapterBaseImpl& impl() const { return *impl_; }

private:
    std::unique_ptr<CAnythingToNodeMapAdapterBaseImpl> impl_;
};

}  // namespace AnythingToNodeMapAdapter
