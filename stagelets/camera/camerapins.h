#pragma once

#include <vector>

#include "gcbase/gcstring.h"

#include "camera/cameraenums.h"
#include "camera/eventpins.h"
#include "camera/pinmappingparser.h"
#include "camera/selectablelist.h"
#include "utils/typeinfo.h"

namespace Plugin::NivexStageletPackageBase {

inline constexpr const char* imagePin = "Image";
inline constexpr const char* imageCorruptPin = "ImageCorrupt";

/// One output pin that a camera node has to have.
struct CameraOutput
{
    GenICam::gcstring name;
    GenICam::gcstring description;
    Nivex::DataProcessing::Utils::TypeInfo type;
    PinMappingType origin = PinMappingType::Invalid;  ///< Of a configured pin.
    PinValueType valueType = PinValueType::Invalid;   ///< The same.
};

/// The configuration lines of the event and chunk pins, and the outputs that follow from them. Not synchronised.
///
/// A name belongs to one pin: the node's own pins come first, both whether the fix is on or off, then chunk pins,
/// then event pins in the order of their lines. A later pin of a taken name is logged and left out.
class CameraPins
{
public:
    using Lines = SelectableList<GenICam::gcstring>;

    const Lines& getEventLines() const { return eventLines_; }
    const Lines& getChunkLines() const { return chunkLines_; }
    /// Errors in lines are logged and cost pins; but for a ValueName that stands twice std::runtime_error is
    /// raised and nothing changed. Blank lines, such as those just added, are no errors.
    void setEventLines(Lines lines);
    void setChunkLines(Lines lines);

    /// What to read from the chunks of a grab result.
    const PinMappings& getChunkPins() const { return chunkPins_; }
    /// The lines of the event pins that there are.
    GenICam::gcstring_vector getUsedEventLines() const;
    /// All outputs in their order.
    std::vector<CameraOutput> getOutputs(FixCorruptImages fix) const;

private:
    struct EventPin
    {
        GenICam::gcstring line;
        EventPinDescription description;
    };
    using EventPins = std::vector<EventPin>;

    /// Makes pins of what was read, but for names that are taken.
    void resolve();

    Lines eventLines_;
    Lines chunkLines_;
    PinMappings readChunkPins_;  ///< All that the lines describe.
    EventPins readEventPins_;
    PinMappings chunkPins_;  ///< Without those left out.
    EventPins eventPins_;
};

}  // namespace Plugin::NivexStageletPackageBase
