#include "parameteradapter/parameternode.h"

#include "core/errors.h"

namespace Plugin::NivexStageletPackageBase {

namespace Core = Nivex::DataProcessing::Core;
namespace Utils = Nivex::DataProcessing::Utils;
using Core::ISettings;
using GenICam::gcstring;

void Detail::readSetting(const ISettings& settings, const char* key, std::int64_t& value)
{
    value = settings.getSigned(key);
}

void Detail::readSetting(const ISettings& settings, const char* key, double& value)
{
    value = settings.getDouble(key);
}

void Detail::readSetting(const ISettings& settings, const char* key, bool& value)
{
    value = settings.getBool(key);
}

void Detail::writeSetting(ISettings& settings, const char* key, std::int64_t value)
{
    settings.setSigned(key, value);
}

void Detail::writeSetting(ISettings& settings, const char* key, double value)
{
    settings.setDouble(key, value);
}

void Detail::writeSetting(ISettings& settings, const char* key, bool value)
{
    settings.setBool(key, value);
}

ParameterNode::ParameterNode(const std::shared_ptr<Core::IResourcePool>& pool, const gcstring& displayName,
                             const char* logChannel)
    : SimpleNode(pool),
      displayName_(displayName),
      channel_(Utils::getCatId(logChannel)),
      nodeMap_(std::make_unique<StageletNodeMapBase>())
{
    setLock(nodeMap_->getLock());
}

ParameterNode::~ParameterNode() = default;

void ParameterNode::cleanup()
{
    SimpleNode::cleanup();
    nodeMap_.reset();
}

// Parameters

void ParameterNode::addParameter(const PortTexts& texts, std::int64_t& variable, const IntegerRange& range,
                                 const char* representation, const char* unit)
{
    using Relayed = Variable<std::int64_t>;
    using Port =
        AnythingToNodeMapAdapter::IntegerParameterPortRelay<std::int64_t, Relayed, &Relayed::get, &Relayed::set>;
    auto relayed =
        std::make_unique<Relayed>(*this, texts.name, variable, [range](const char* name, std::int64_t value) {
            const bool isInside = value >= range.min && value <= range.max;
            const auto steps = static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(range.min);
            if (isInside && steps % static_cast<std::uint64_t>(range.inc) == 0) return;
            GENICAM_THROW(InvalidArgumentException,
                          "%s is %lld but must lie between %lld and %lld, in steps of %lld.", name,
                          static_cast<long long>(value), static_cast<long long>(range.min),
                          static_cast<long long>(range.max), static_cast<long long>(range.inc));
        });
    const auto port = std::make_shared<Port>(*relayed, texts, range, representation, unit);
    add(port, std::move(relayed));
}

void ParameterNode::addParameter(const PortTexts& texts, double& variable, const FloatRange& range,
                                 const char* representation, const char* unit)
{
    using Relayed = Variable<double>;
    using Port = AnythingToNodeMapAdapter::FloatParameterPortRelay<Relayed, &Relayed::get, &Relayed::set>;
    auto relayed = std::make_unique<Relayed>(*this, texts.name, variable, [range](const char* name, double value) {
        if (value >= range.min && value <= range.max) return;  // which no NaN is
        GENICAM_THROW(InvalidArgumentException, "%s is %g but must lie between %g and %g.", name, value, range.min,
                      range.max);
    });
    const auto port = std::make_shared<Port>(*relayed, texts, range, representation, unit);
    add(port, std::move(relayed));
}

void ParameterNode::addParameter(const PortTexts& texts, bool& variable)
{
    using Relayed = Variable<bool>;
    using Port = AnythingToNodeMapAdapter::BooleanParameterPortRelay<Relayed, &Relayed::get, &Relayed::set>;
    auto relayed = std::make_unique<Relayed>(*this, texts.name, variable, [](const char*, bool) {});
    const auto port = std::make_shared<Port>(*relayed, texts);
    add(port, std::move(relayed));
}

void ParameterNode::buildNodeMap()
{
    nodeMap_->build();
}

std::vector<Core::NodeMapInfo> ParameterNode::getNodeMapInfos()
{
    return {{displayName_, StageletNodeMapBase::identifier}};
}

GenApi::CNodeMapRef ParameterNode::getNodeMap(const gcstring& identifier)
{
    return nodeMap_ ? nodeMap_->getNodeMap(identifier) : GenApi::CNodeMapRef();
}

// Settings

void ParameterNode::loadSettings(const std::shared_ptr<ISettings>& settings)
{
    requireUsable(settings);
    std::vector<std::function<void()>> changes;
    for (const Parameter& parameter : parameters_)
        changes.push_back(parameter.variable->prepare(*settings));
    {
        const Detail::NodeGuard guard(*getLock());
        for (const auto& change : changes)
            change();
        for (const Parameter& parameter : parameters_)
            parameter.notifyObserver();
    }
    notifySettingsChanged();
}

void ParameterNode::saveSettings(const std::shared_ptr<ISettings>& settings)
{
    requireUsable(settings);
    const Detail::NodeGuard guard(*getLock());
    for (const Parameter& parameter : parameters_)
        parameter.variable->save(*settings);
}

void ParameterNode::requireUsable(const std::shared_ptr<ISettings>& settings) const
{
    if (!settings) GENICAM_THROW(InvalidArgumentException, "There is no settings store.");
    if (getState() == Core::NodeState::Stopped) return;
    GENICAM_THROW(RuntimeException, "Settings are loaded and saved only while the node is stopped.");
}

// Outputs

void ParameterNode::outputErrors(const gcstring& text, Core::LossCause cause, const Core::IValue* input)
{
    Utils::createLogEntry(Utils::SeverityFailure, channel_, "%s %p: An execution was given up. Message: %s",
                          displayName_.c_str(), static_cast<const void*>(this), text.c_str());
    Core::ErrorList causes;
    if (input && input->hasError()) causes.push_back(input->getError());
    const auto error = std::make_shared<Core::InvalidValueError>(text, causes, Utils::DateTime::now());
    for (const auto& give : errorOutputs_)
        give(error);
    reportLoss(cause);
}

}  // namespace Plugin::NivexStageletPackageBase
