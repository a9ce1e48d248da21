#include "parameteradapter/nodemapports.h"

#include <bit>
#include <cstring>
#include <string>

#include "parameteradapter/anythingtonodemapadapterbase.h"

namespace AnythingToNodeMapAdapter::Detail {

namespace {

constexpr std::int64_t wordLength = 8;

std::uint64_t littleEndian(std::uint64_t word)
{
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

void storeWord(void* buffer, std::uint64_t word)
{
    word = littleEndian(word);
    std::memcpy(buffer, &word, wordLength);
}

std::uint64_t loadWord(const void* buffer)
{
    std::uint64_t word = 0;
    std::memcpy(&word, buffer, wordLength);
    return littleEndian(word);
}

void clear(void* buffer, std::int64_t length)
{
    if (length > 0) std::memset(buffer, 0, static_cast<std::size_t>(length));
}

}  // namespace

template <typename Parameter>
CParameterNodeMapPort<Parameter>::CParameterNodeMapPort(std::shared_ptr<Parameter> parameter,
                                                        std::int32_t mergePriority)
    : CBasicNodeMapPort(mergePriority), parameter_(std::move(parameter)), attached_(parameter_ != nullptr)
{
    if (attached_) parameter_->setObserver(this);
}

template <typename Parameter>
void CParameterNodeMapPort<Parameter>::detach()
{
    if (attached_) parameter_->setObserver(nullptr);
    attached_ = false;
}

template <typename Parameter>
void CParameterNodeMapPort<Parameter>::onParameterChanged(IBasicParameterPort& /*port*/)
{
    if (connector()) connector()->invalidate(*this);
}

template <typename Parameter>
void CWordNodeMapPort<Parameter>::read(void* buffer, std::int64_t offset, std::int64_t length)
{
    if (!this->parameter() || length != wordLength) {
        clear(buffer, length);
    } else if (const auto word = readWord(offset)) {
        storeWord(buffer, *word);
    }
}

template <typename Parameter>
void CWordNodeMapPort<Parameter>::write(const void* buffer, std::int64_t offset, std::int64_t length)
{
    if (this->parameter() && offset == 0 && length == wordLength) writeWord(loadWord(buffer));
}

template <typename Parameter>
std::optional<std::uint64_t> CWordNodeMapPort<Parameter>::readCompanion(std::int64_t offset,
                                                                        std::int64_t first) const
{
    if (offset == first) return this->parameter()->isAvailable();
    if (offset == first + wordLength) return !this->parameter()->isWritable();
    return {};
}

std::optional<std::uint64_t> CIntegerNodeMapPort::readWord(std::int64_t offset) const
{
    switch (offset) {
        case 0:
            return parameter()->getValue();
        case 8:
            return parameter()->getMax();
        case 16:
            return parameter()->getMin();
        case 24:
            return parameter()->getInc();
        default:
            return readCompanion(offset, 32);
    }
}

void CIntegerNodeMapPort::writeWord(std::uint64_t word)
{
    parameter()->setValue(static_cast<std::int64_t>(word), true);
}

std::optional<std::uint64_t> CFloatNodeMapPort::readWord(std::int64_t offset) const
{
    switch (offset) {
        case 0:
            return std::bit_cast<std::uint64_t>(parameter()->getValue());
        case 8:
            return std::bit_cast<std::uint64_t>(parameter()->getMax());
        case 16:
            return std::bit_cast<std::uint64_t>(parameter()->getMin());
        default:
            return readCompanion(offset, 24);
    }
}

void CFloatNodeMapPort::writeWord(std::uint64_t word)
{
    parameter()->setValue(std::bit_cast<double>(word), true);
}

std::optional<std::uint64_t> CBooleanNodeMapPort::readWord(std::int64_t offset) const
{
    if (offset == 0) return parameter()->getValue();
    return readCompanion(offset, 8);
}

void CBooleanNodeMapPort::writeWord(std::uint64_t word)
{
    parameter()->setValue(word != 0, true);
}

CStringNodeMapPort::CStringNodeMapPort(std::shared_ptr<IStringParameterPort> parameterPort,
                                       std::int32_t mergePriority)
    : CParameterNodeMapPort(std::move(parameterPort), mergePriority),
      maxLength_(parameter() ? parameter()->getLength() : 0)
{}

void CStringNodeMapPort::read(void* buffer, std::int64_t offset, std::int64_t length)
{
    const auto maxLength = static_cast<std::int64_t>(maxLength_);
    if (parameter() && offset == 0 && length >= 0 && length <= maxLength) {
        parameter()->getValue(static_cast<char*>(buffer), static_cast<std::size_t>(length));
    } else if (parameter() && offset == maxLength && length == wordLength) {
        storeWord(buffer, parameter()->isAvailable());
    } else if (parameter() && offset == maxLength + wordLength && length == wordLength) {
        storeWord(buffer, !parameter()->isWritable());
    } else {
        clear(buffer, length);
    }
}

void CStringNodeMapPort::write(const void* buffer, std::int64_t offset, std::int64_t length)
{
    if (!parameter() || offset != 0 || length < 0 || length > static_cast<std::int64_t>(maxLength_)) return;
    const char* text = static_cast<const char*>(buffer);
    const auto count = static_cast<std::size_t>(length);
    if (std::memchr(text, 0, count)) {
        parameter()->setValue(text, true);
    } else {
        parameter()->setValue(std::string(text, count).c_str(), true);
    }
}

std::optional<std::uint64_t> CEnumEntryNodeMapPort::readWord(std::int64_t offset) const
{
    if (offset == 0) return parameter()->isAvailable();
    return {};
}

void CEnumEntryNodeMapPort::writeWord(std::uint64_t /*word*/) {}

GenICam::gcstring CEnumEntryNodeMapPort::getPortName(const GenICam::gcstring& prefix) const
{
    return getEntryNodeName(prefix) + "Port";
}

GenICam::gcstring CEnumEntryNodeMapPort::getEntryNodeName(const GenICam::gcstring& prefix) const
{
    return "EnumEntry_" + enumName_ + "_" + prefix + getName();
}

std::optional<std::uint64_t> CEnumNodeMapPort::readWord(std::int64_t offset) const
{
    if (offset == 0) return parameter()->getIntValue();
    return readCompanion(offset, 8);
}

void CEnumNodeMapPort::writeWord(std::uint64_t word)
{
    parameter()->setIntValue(static_cast<std::int64_t>(word), true);
}

std::optional<std::uint64_t> CCommandNodeMapPort::readWord(std::int64_t offset) const
{
    if (offset == 0) return parameter()->isExecuting();
    return readCompanion(offset, 8);
}

void CCommandNodeMapPort::writeWord(std::uint64_t word)
{
    if (word != 0) parameter()->execute(true);
}

void CCategoryNodeMapPort::read(void* /*buffer*/, std::int64_t /*offset*/, std::int64_t /*length*/) {}

void CCategoryNodeMapPort::write(const void* /*buffer*/, std::int64_t /*offset*/, std::int64_t /*length*/) {}

template class CParameterNodeMapPort<IIntegerParameterPort>;
template class CParameterNodeMapPort<IFloatParameterPort>;
template class CParameterNodeMapPort<IBooleanParameterPort>;
template class CParameterNodeMapPort<IStringParameterPort>;
template class CParameterNodeMapPort<IEnumParameterPort>;
template class CParameterNodeMapPort<IEnumEntryParameterPort>;
template class CParameterNodeMapPort<ICommandParameterPort>;
template class CParameterNodeMapPort<ICategoryParameterPort>;
template class CWordNodeMapPort<IIntegerParameterPort>;
template class CWordNodeMapPort<IFloatParameterPort>;
template class CWordNodeMapPort<IBooleanParameterPort>;
template class CWordNodeMapPort<IEnumParameterPort>;
template class CWordNodeMapPort<IEnumEntryParameterPort>;
template class CWordNodeMapPort<ICommandParameterPort>;

}  // namespace AnythingToNodeMapAdapter::Detail
