#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "core/descriptors.h"
#include "core/ioutputsink.h"

namespace Nivex::DataProcessing::Core {

/// What NodeBase::Handle is.
using PinHandle = std::shared_ptr<void>;

/// The inputs of a node. Any thread may call any operation. Those with a name raise InvalidArgumentException for a
/// pin that is not there, unless they say otherwise.
class InputPins
{
public:
    /// Raises InvalidArgumentException for an empty or taken name.
    void add(InputDescriptor descriptor);
    /// False if there is none of that name.
    bool remove(const GenICam::gcstring& name);
    std::vector<InputDescriptor> getDescriptors() const;

    /// Gives an input of variable type a type. Raises InvalidArgumentException if it has one.
    PinHandle bind(const GenICam::gcstring& name, const Utils::TypeInfo& type);
    /// Takes the type away again. The input's name; empty if the handle is not one of a bound input.
    GenICam::gcstring unbind(const PinHandle& handle);
    bool isBound(const PinHandle& handle) const;
    /// False also for a name that no input has.
    bool canBind(const GenICam::gcstring& name) const;

    /// False if it was so before.
    bool setAutoReset(const GenICam::gcstring& name, bool enabled);
    bool isAutoReset(const GenICam::gcstring& name) const;

private:
    struct Pin
    {
        InputDescriptor descriptor;
        PinHandle binding{};  ///< Of the type that an input of variable type has for now.
        bool autoReset = true;

        void setType(const Utils::TypeInfo& type);
    };

    mutable std::mutex mutex_;  // guards pins_
    std::vector<Pin> pins_;
};

/// The outputs of a node with their sinks. Any thread may call any operation.
class OutputPins
{
public:
    struct Attachment
    {
        std::shared_ptr<IOutputSink> sink;
        PinHandle handle;
    };
    struct Pin
    {
        OutputDescriptor descriptor;
        std::vector<Attachment> attachments{};
    };
    using Table = std::vector<Pin>;

    /// Raises InvalidArgumentException for an empty or taken name.
    void add(OutputDescriptor descriptor);
    /// False if there is none of that name.
    bool remove(const GenICam::gcstring& name);
    std::vector<OutputDescriptor> getDescriptors() const;

    /// Raises InvalidArgumentException for an unknown output, or one with all its connections in use.
    PinHandle attach(const GenICam::gcstring& name, const std::shared_ptr<IOutputSink>& sink);
    void detach(const PinHandle& handle);
    bool isAttached(const PinHandle& handle) const;

    /// All outputs as they are at this moment; costs the copy of a pointer.
    std::shared_ptr<const Table> getTable() const;

private:
    template <typename Change>
    void change(const Change& apply);

    mutable std::mutex mutex_;                                        // guards table_
    std::shared_ptr<const Table> table_ = std::make_shared<Table>();  ///< Replaced as a whole at each change.
};

}  // namespace Nivex::DataProcessing::Core
