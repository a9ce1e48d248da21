#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "parameteradapter/basicnodemapport.h"
#include "parameteradapter/iparameterports.h"

namespace AnythingToNodeMapAdapter::Detail {

/// What all kinds share: the parameter, and passing on the changes that it reports.
/// @tparam Parameter is the kind's port interface.
template <typename Parameter>
class CParameterNodeMapPort : public CBasicNodeMapPort, public IParameterPortObserver
{
public:
    CParameterNodeMapPort(std::shared_ptr<Parameter> parameter, std::int32_t mergePriority);
    ~CParameterNodeMapPort() override { CParameterNodeMapPort::detach(); }

    const char* getName() const override { return parameter_ ? parameter_->getName() : ""; }
    void detach() override;
    void onParameterChanged(IBasicParameterPort& port) override;

protected:
    const std::shared_ptr<Parameter>& parameter() const { return parameter_; }

private:
    std::shared_ptr<Parameter> parameter_;
    bool attached_;
};

/// What the kinds share whose registers are all words of 8 bytes.
template <typename Parameter>
class CWordNodeMapPort : public CParameterNodeMapPort<Parameter>
{
public:
    using CParameterNodeMapPort<Parameter>::CParameterNodeMapPort;

    void read(void* buffer, std::int64_t offset, std::int64_t length) override;
    void write(const void* buffer, std::int64_t offset, std::int64_t length) override;

protected:
    /// The content of the register at that offset; nothing if there is none.
    virtual std::optional<std::uint64_t> readWord(std::int64_t offset) const = 0;
    /// A write to the value's register, at offset 0.
    virtual void writeWord(std::uint64_t word) = 0;

    /// The registers for availability, at `first`, and lock, behind it.
    std::optional<std::uint64_t> readCompanion(std::int64_t offset, std::int64_t first) const;
};

class CIntegerNodeMapPort : public CWordNodeMapPort<IIntegerParameterPort>
{
public:
    using CWordNodeMapPort::CWordNodeMapPort;
    void writeDescription(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                          const GenICam::gcstring& prefix, std::int64_t& address) const override;

protected:
    std::optional<std::uint64_t> readWord(std::int64_t offset) const override;
    void writeWord(std::uint64_t word) override;
};

class CFloatNodeMapPort : public CWordNodeMapPort<IFloatParameterPort>
{
public:
    using CWordNodeMapPort::CWordNodeMapPort;
    void writeDescription(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                          const GenICam::gcstring& prefix, std::int64_t& address) const override;

protected:
    std::optional<std::uint64_t> readWord(std::int64_t offset) const override;
    void writeWord(std::uint64_t word) override;
};

class CBooleanNodeMapPort : public CWordNodeMapPort<IBooleanParameterPort>
{
public:
    using CWordNodeMapPort::CWordNodeMapPort;
    void writeDescription(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                          const GenICam::gcstring& prefix, std::int64_t& address) const override;

protected:
    std::optional<std::uint64_t> readWord(std::int64_t offset) const override;
    void writeWord(std::uint64_t word) override;
};

class CStringNodeMapPort : public CParameterNodeMapPort<IStringParameterPort>
{
public:
    CStringNodeMapPort(std::shared_ptr<IStringParameterPort> parameter, std::int32_t mergePriority);

    void read(void* buffer, std::int64_t offset, std::int64_t length) override;
    void write(const void* buffer, std::int64_t offset, std::int64_t length) override;
    void writeDescription(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                          const GenICam::gcstring& prefix, std::int64_t& address) const override;

private:
    std::uint64_t maxLength_;
};

class CEnumEntryNodeMapPort : public CWordNodeMapPort<IEnumEntryParameterPort>
{
public:
    using CWordNodeMapPort::CWordNodeMapPort;
    /// Writes the register for availability, if the entry has one; the entry itself stands in its enumeration.
    void writeDescription(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                          const GenICam::gcstring& prefix, std::int64_t& address) const override;
    GenICam::gcstring getPortName(const GenICam::gcstring& prefix) const override;
    virtual void writeEnumEntry(std::ostream& stream, const GenICam::gcstring& prefix) const;
    /// The entry's own name in the map, unique over all enumerations.
    virtual GenICam::gcstring getEntryNodeName(const GenICam::gcstring& prefix) const;

    void setEnumName(const GenICam::gcstring& enumName) { enumName_ = enumName; }

protected:
    std::optional<std::uint64_t> readWord(std::int64_t offset) const override;
    void writeWord(std::uint64_t word) override;

private:
    GenICam::gcstring enumName_;
};

class CEnumNodeMapPort : public CWordNodeMapPort<IEnumParameterPort>
{
public:
    using CWordNodeMapPort::CWordNodeMapPort;
    void writeDescription(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                          const GenICam::gcstring& prefix, std::int64_t& address) const override;
    void addEntry(std::shared_ptr<CEnumEntryNodeMapPort> entry) { entries_.push_back(std::move(entry)); }

protected:
    std::optional<std::uint64_t> readWord(std::int64_t offset) const override;
    void writeWord(std::uint64_t word) override;

private:
    std::vector<std::shared_ptr<CEnumEntryNodeMapPort>> entries_;
};

class CCommandNodeMapPort : public CWordNodeMapPort<ICommandParameterPort>
{
public:
    using CWordNodeMapPort::CWordNodeMapPort;
    void writeDescription(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                          const GenICam::gcstring& prefix, std::int64_t& address) const override;

protected:
    std::optional<std::uint64_t> readWord(std::int64_t offset) const override;
    void writeWord(std::uint64_t word) override;
};

class CCategoryNodeMapPort : public CParameterNodeMapPort<ICategoryParameterPort>
{
public:
    using CParameterNodeMapPort::CParameterNodeMapPort;
    void read(void* buffer, std::int64_t offset, std::int64_t length) override;
    void write(const void* buffer, std::int64_t offset, std::int64_t length) override;
    void writeDescription(std::ostream& stream, bool perParameterPort, const GenICam::gcstring& portName,
                          const GenICam::gcstring& prefix, std::int64_t& address) const override;
};

}  // namespace AnythingToNodeMapAdapter::Detail
