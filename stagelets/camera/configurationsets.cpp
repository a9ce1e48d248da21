#include "camera/configurationsets.h"

#include <utility>

#include "camera/cameralog.h"
#include "camera/featurestream.h"

namespace Plugin::NivexStageletPackageBase {

namespace Utils = Nivex::DataProcessing::Utils;
using GenICam::gcstring;

namespace {

constexpr const char* identifiers[] = {"@CameraDevice", "@CameraInstance", "@DeviceTransportLayer",
                                       "@StreamGrabber0"};

constexpr const char* invalidText = "The provided configuration set could not be committed because it is invalid.";

const gcstring& textOf(const ConfigurationSets::Texts& texts, const gcstring& identifier)
{
    static const gcstring none;
    const auto found = texts.find(identifier);
    return found == texts.end() ? none : found->second;
}

}  // namespace

const char* nodeMapIdentifier(StreamType type) noexcept
{
    return identifiers[static_cast<std::size_t>(type)];
}

const gcstring& ConfigurationSets::getStaged(const gcstring& identifier) const
{
    return textOf(staged_, identifier);
}

const gcstring& ConfigurationSets::getActive(const gcstring& identifier) const
{
    return textOf(active_, identifier);
}

gcstring ConfigurationSets::modifyCfgSetStagedContent(const gcstring& text, const char* operation) const
{
    FeatureStream result = normaliseFeatureStream(text.view());
    if (result.invalidLine != 0) {
        Utils::createLogEntry(Utils::SeverityFailure, cameraChannel(),
                              "Camera %p: Line %zu of the configuration set is neither a comment nor a parameter "
                              "and its value.",
                              node_, result.invalidLine);
        NODE_REFUSE(RuntimeException, cameraLog, node_, operation, invalidText);
    }
    return std::move(result.text);
}

void ConfigurationSets::setStaged(const gcstring& identifier, const gcstring& text)
{
    staged_[identifier] = modifyCfgSetStagedContent(text, "setCfgSetStagedContent");
}

void ConfigurationSets::fetch(const gcstring& identifier, const Save& save)
{
    const auto logAndRaise = [this](const char* text) {
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(),
                              "Camera %p: Exception caught while fetching feature stream. Message: \"%s\"", node_,
                              text);
        GENICAM_THROW(RuntimeException, "%s", text);
    };
    gcstring text;
    try {
        text = save(identifier);
    } catch (const GenICam::GenericException& e) {
        logAndRaise(e.GetDescription());
    } catch (const std::exception& e) {
        logAndRaise(e.what());
    } catch (...) {
        NODE_REFUSE(RuntimeException, cameraLog, node_, "executeCfgSetFetch",
                    "Unknown exception caught while fetching feature stream.");
    }
    staged_[identifier] = std::move(text);
}

void ConfigurationSets::commit(const gcstring& identifier, const Load& load)
{
    const gcstring text = modifyCfgSetStagedContent(getStaged(identifier), "executeCfgSetCommit");
    if (load) transfer(identifier, text, load);
    staged_[identifier] = text;
    active_[identifier] = text;
}

void ConfigurationSets::clear(const gcstring& identifier)
{
    staged_.erase(identifier);
    active_.erase(identifier);
}

void ConfigurationSets::apply(const Load& load) const
{
    try {
        for (const auto& [identifier, text] : active_) {
            transfer(identifier, text, load);
        }
    } catch (const GenICam::RuntimeException&) {
        NODE_REFUSE(RuntimeException, cameraLog, node_, "allocateAdditionalResources",
                    "Failed to load feature streams from active configuration set.");
    }
}

void ConfigurationSets::transfer(const gcstring& identifier, const gcstring& text, const Load& load) const
{
    if (text.empty()) return;
    try {
        load(identifier, text);
    } catch (...) {
        Utils::createLogEntry(Utils::SeverityRefused, cameraChannel(),
                              "Camera %p: Exception caught while loading the feature stream of \"%s\". "
                              "Message: \"%s\"",
                              node_, identifier.c_str(), GenICam::describeCurrentException().c_str());
        NODE_REFUSE(RuntimeException, cameraLog, node_, "transferCfgSetActiveContentToCamera",
                    "Failed to load camera feature stream from active configuration set.");
    }
}

void ConfigurationSets::setActiveTexts(Texts texts)
{
    for (auto& [identifier, text] : texts) {
        // A value that begins with "=" must not lose it at each loading.
        if (text.view().find(featureStreamHeader) != std::string_view::npos) continue;
        FeatureStream normalised = normaliseFeatureStream(text.view());
        if (normalised.invalidLine == 0) text = std::move(normalised.text);
    }
    active_ = std::move(texts);
}

ConfigurationSets::Texts ConfigurationSets::getActiveTexts() const
{
    Texts texts;
    for (const auto& [identifier, text] : active_) {
        if (!text.empty()) texts.emplace(identifier, text);
    }
    return texts;
}

}  // namespace Plugin::NivexStageletPackageBase
