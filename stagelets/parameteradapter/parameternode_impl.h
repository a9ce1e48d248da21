#pragma once

#include <string>

#include "gcbase/exception.h"

#include "core/isettings.h"
#include "parameteradapter/parameternode.h"
#include "threading/uniquelock.h"

namespace Plugin::NivexStageletPackageBase {

namespace Detail {

using NodeGuard =
    Nivex::DataProcessing::Threading::UniqueLock<Nivex::DataProcessing::Threading::IRecursiveLockable>;

void readSetting(const Nivex::DataProcessing::Core::ISettings& settings, const char* key, std::int64_t& value);
void readSetting(const Nivex::DataProcessing::Core::ISettings& settings, const char* key, double& value);
void readSetting(const Nivex::DataProcessing::Core::ISettings& settings, const char* key, bool& value);
void writeSetting(Nivex::DataProcessing::Core::ISettings& settings, const char* key, std::int64_t value);
void writeSetting(Nivex::DataProcessing::Core::ISettings& settings, const char* key, double value);
void writeSetting(Nivex::DataProcessing::Core::ISettings& settings, const char* key, bool value);

template <typename E>
void requireEntry(const char* name, std::int64_t value, std::span<const EnumEntryRow<E>> rows)
{
    std::string allowed;
    for (const EnumEntryRow<E>& row : rows) {
        if (static_cast<std::int64_t>(row.value) == value) return;
        allowed += (allowed.empty() ? "" : ", ") + std::to_string(static_cast<std::int64_t>(row.value)) + " (" +
                   row.name + ")";
    }
    GENICAM_THROW(InvalidArgumentException, "%s is %lld but must be one of %s.", name,
                  static_cast<long long>(value), allowed.c_str());
}

}  // namespace Detail

/// A parameter as the settings see it.
class ParameterNode::IVariable
{
public:
    virtual ~IVariable() = default;
    /// Checks the stored value, if there is one, and gives what takes it over under the node's lock.
    virtual std::function<void()> prepare(const Nivex::DataProcessing::Core::ISettings& settings) = 0;
    virtual void save(Nivex::DataProcessing::Core::ISettings& settings) const = 0;
};

/// It is also what the port relays to.
template <typename T>
class ParameterNode::Variable final : public IVariable
{
public:
    using Stored = std::conditional_t<std::is_enum_v<T>, std::int64_t, T>;
    using Require = std::function<void(const char* name, Stored value)>;

    Variable(ParameterNode& node, const char* name, T& variable, Require require)
        : node_(node), name_(name), variable_(variable), require_(std::move(require))
    {}

    T get() const
    {
        const Detail::NodeGuard guard(*node_.getLock());
        return variable_;
    }
    void set(T value)
    {
        require_(name_.c_str(), static_cast<Stored>(value));
        {
            const Detail::NodeGuard guard(*node_.getLock());
            variable_ = value;
        }
        node_.notifySettingsChanged();  // never under the lock
    }

    std::function<void()> prepare(const Nivex::DataProcessing::Core::ISettings& settings) override
    {
        if (!settings.hasKey(name_)) return [] {};
        Stored value{};
        Detail::readSetting(settings, name_.c_str(), value);
        require_(name_.c_str(), value);
        return [this, value] { variable_ = static_cast<T>(value); };
    }
    void save(Nivex::DataProcessing::Core::ISettings& settings) const override
    {
        Detail::writeSetting(settings, name_.c_str(), static_cast<Stored>(get()));
    }

private:
    ParameterNode& node_;
    const GenICam::gcstring name_;
    T& variable_;
    const Require require_;
};

template <typename Port, typename T>
void ParameterNode::add(const std::shared_ptr<Port>& port, std::unique_ptr<Variable<T>> variable)
{
    nodeMap_->addFeature(port);
    parameters_.push_back({std::move(variable), [port] { port->notifyObserver(); }});
}

template <typename E>
void ParameterNode::addParameter(const PortTexts& texts, E& variable,
                                 std::type_identity_t<std::span<const EnumEntryRow<E>>> rows)
{
    using Port =
        AnythingToNodeMapAdapter::EnumParameterPortRelay<E, Variable<E>, &Variable<E>::get, &Variable<E>::set>;
    auto relayed = std::make_unique<Variable<E>>(
        *this, texts.name, variable,
        [rows](const char* name, std::int64_t value) { Detail::requireEntry<E>(name, value, rows); });
    const auto port = std::make_shared<Port>(*relayed, texts);
    add(port, std::move(relayed));
    nodeMap_->addEntries<E>(texts.name, rows);
}

template <typename T>
T ParameterNode::copyOf(const T& variables) const
{
    const Detail::NodeGuard guard(*getLock());
    return variables;
}

template <typename T>
void ParameterNode::addOutput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                              Nivex::DataProcessing::Utils::ResettableProperty<T>& property)
{
    using Value = typename Nivex::DataProcessing::Utils::ResettableProperty<T>::Element;
    createOutput(name, displayName, property);
    errorOutputs_.push_back([&property](const ErrorPtr& error) {
        property.setCOWPtr(Nivex::DataProcessing::Utils::COWPtr<Value>::make(error));
    });
}

}  // namespace Plugin::NivexStageletPackageBase
