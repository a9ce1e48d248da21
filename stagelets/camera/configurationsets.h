#pragma once

#include <functional>
#include <map>

#include "gcbase/gcstring.h"

#include "camera/cameraenums.h"

namespace Plugin::NivexStageletPackageBase {

/// The identifier of the node map that a stream type stands for ("@CameraDevice").
const char* nodeMapIdentifier(StreamType type) noexcept;

/// The configuration sets of a camera: for each node map, by its identifier, a staged text that the user works on
/// and an active text that the recipe keeps and the camera gets when it is allocated. Texts are feature streams.
/// An operation that fails leaves all texts as they were.
///
/// Not synchronised: the node calls everything under its lock. The camera itself is reached by the functions that
/// the node hands in.
class ConfigurationSets
{
public:
    using Texts = std::map<GenICam::gcstring, GenICam::gcstring>;
    /// Reads the settings of the node map of that identifier.
    using Save = std::function<GenICam::gcstring(const GenICam::gcstring& identifier)>;
    /// Applies a text to the node map of that identifier.
    using Load = std::function<void(const GenICam::gcstring& identifier, const GenICam::gcstring& text)>;

    /// @param node is the address that log entries name.
    explicit ConfigurationSets(const void* node) : node_(node) {}

    // Empty without a text.
    const GenICam::gcstring& getStaged(const GenICam::gcstring& identifier) const;
    const GenICam::gcstring& getActive(const GenICam::gcstring& identifier) const;

    /// Stages what the user wrote, normalised. Raises RuntimeException for a text that is no feature stream; the
    /// log has the line.
    void setStaged(const GenICam::gcstring& identifier, const GenICam::gcstring& text);

    /// Stages the camera's settings. What `save` throws is logged and raised as RuntimeException.
    void fetch(const GenICam::gcstring& identifier, const Save& save);

    /// Makes the staged text the active one, after the camera has taken it; an empty text is not sent.
    /// @param load is empty while no camera is allocated.
    /// Raises RuntimeException for a text that is no feature stream, or if `load` throws; the log has the cause.
    void commit(const GenICam::gcstring& identifier, const Load& load);

    void clear(const GenICam::gcstring& identifier);

    /// Sends all active texts to the camera in the order of their identifiers. Raises RuntimeException at the
    /// first one that fails; the log has the cause.
    void apply(const Load& load) const;

    /// @name For the recipe
    /// The active texts that are not empty.
    Texts getActiveTexts() const;
    /// Replaces all active texts. Those without the header were written by hand and are normalised. One that is no
    /// feature stream is taken as it is: the camera refuses it line by line when it is allocated.
    void setActiveTexts(Texts texts);

private:
    GenICam::gcstring modifyCfgSetStagedContent(const GenICam::gcstring& text, const char* operation) const;
    void transfer(const GenICam::gcstring& identifier, const GenICam::gcstring& text, const Load& load) const;

    const void* node_;
    Texts staged_;
    Texts active_;
};

}  // namespace Plugin::NivexStageletPackageBase
