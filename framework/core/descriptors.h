#pragma once

#include "gcbase/gcstring.h"

#include "utils/typeinfo.h"

namespace Nivex::DataProcessing::Core {

/// What is public about a pin.
class PinDescriptor
{
public:
    PinDescriptor(GenICam::gcstring name, GenICam::gcstring displayName, const Utils::TypeInfo& type,
                  bool allowsMultipleConnections, std::size_t maxConnections)
        : name_(std::move(name)),
          displayName_(std::move(displayName)),
          type_(type),
          allowsMultipleConnections_(allowsMultipleConnections),
          maxConnections_(maxConnections)
    {}

    const GenICam::gcstring& getName() const { return name_; }
    const GenICam::gcstring& getDisplayName() const { return displayName_; }
    /// Invalid for an input of variable type: it takes a value of any type.
    const Utils::TypeInfo& getType() const { return type_; }
    bool allowsMultipleConnections() const { return allowsMultipleConnections_; }
    std::size_t getMaxConnections() const { return allowsMultipleConnections_ ? maxConnections_ : 1; }

private:
    GenICam::gcstring name_;
    GenICam::gcstring displayName_;
    Utils::TypeInfo type_;
    bool allowsMultipleConnections_;
    std::size_t maxConnections_;
};

class InputDescriptor : public PinDescriptor
{
public:
    using PinDescriptor::PinDescriptor;
};

class OutputDescriptor : public PinDescriptor
{
public:
    using PinDescriptor::PinDescriptor;
};

}  // namespace Nivex::DataProcessing::Core
