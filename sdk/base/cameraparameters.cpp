#include "base/cameraparameters.h"

#include <array>
#include <atomic>
#include <cstring>
#include <string>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

namespace Nivex {

namespace {

constexpr std::size_t registerSize = sizeof(std::int64_t);

struct Row
{
    const char* name;
    const char* displayName;
    const char* toolTip;
    const char* description;
    bool isBoolean = false;
    bool isReadOnly = false;
    std::int64_t initial = 0;
    std::int64_t max = 65535;

    constexpr std::int64_t Min() const { return isBoolean || isReadOnly ? 0 : 1; }
};

enum RowIndex
{
    MaxNumBufferRow,
    OutputQueueSizeRow,
    GrabCameraEventsRow,
    ChunkNodeMapsEnableRow,
    AcquisitionStartStopExecutionEnableRow,
    NumQueuedBuffersRow,
    NumReadyBuffersRow,
    NumEmptyBuffersRow,
    RowCount
};

/// In the order of RowIndex, which is that of the registers.
constexpr std::array<Row, RowCount> rows = {{
    {.name = "MaxNumBuffer",
     .displayName = "Maximum Number of Buffers",
     .toolTip = "Number of image buffers that are made when grabbing starts.",
     .description =
         "Number of image buffers that are made when grabbing starts. Each holds one image of the camera. More "
         "buffers bridge longer delays of the receiver before images are lost, and take more memory. A change "
         "takes effect at the next start of grabbing.",
     .initial = 10},
    {.name = "OutputQueueSize",
     .displayName = "Output Queue Size",
     .toolTip = "Number of images kept for the receiver by the grab strategy \"Latest Images\".",
     .description =
         "Number of images kept for the receiver by the grab strategy \"Latest Images\". If that many wait and a "
         "further one arrives, the oldest one is skipped. At most as many as there are buffers are kept. The "
         "other grab strategies don't use this parameter. A change takes effect at the next start of grabbing.",
     .initial = 1},
    {.name = "GrabCameraEvents",
     .displayName = "Grab Camera Events",
     .toolTip = "Determines if events of the camera are passed on.",
     .description =
         "Determines if events of the camera, e.g., the end of an exposure, are passed on to the camera's "
         "parameters and to those who wait for them. The camera itself must be told which events to send.",
     .isBoolean = true,
     .initial = 1,
     .max = 1},
    {.name = "ChunkNodeMapsEnable",
     .displayName = "Chunk Node Maps Enable",
     .toolTip = "Determines if the data chunks of images can be read as parameters.",
     .description =
         "Determines if the data chunks that a camera adds to its images, e.g., the exposure time, can be read as "
         "parameters of each image. Takes some memory per buffer. A change takes effect at the next start of "
         "grabbing.",
     .isBoolean = true,
     .initial = 1,
     .max = 1},
    {.name = "AcquisitionStartStopExecutionEnable",
     .displayName = "Acquisition Start Stop Execution Enable",
     .toolTip = "Determines if the camera is started and stopped together with grabbing.",
     .description = "Determines if the commands Acquisition Start and Acquisition Stop of the camera are executed "
                    "when grabbing starts and stops. Turn this off to start and stop the camera at moments of "
                    "your own choice.",
     .isBoolean = true,
     .initial = 1,
     .max = 1},
    {.name = "NumQueuedBuffers",
     .displayName = "Number of Queued Buffers",
     .toolTip = "Number of buffers that wait to be filled by the camera.",
     .description = "Number of buffers that wait to be filled by the camera. If it is 0, images get lost.",
     .isReadOnly = true},
    {.name = "NumReadyBuffers",
     .displayName = "Number of Ready Buffers",
     .toolTip = "Number of images that have arrived and wait for the receiver.",
     .description =
         "Number of images that have arrived and wait for the receiver. If it keeps growing, the receiver "
         "is slower than the camera.",
     .isReadOnly = true},
    {.name = "NumEmptyBuffers",
     .displayName = "Number of Empty Buffers",
     .toolTip = "Number of buffers that are not in use.",
     .description = "Number of buffers that are not in use. While the camera grabs, all buffers are in use.",
     .isReadOnly = true},
}};

std::string escaped(const char* text)
{
    std::string result;
    for (; *text; ++text) {
        if (*text == '"')
            result += "&quot;";
        else
            result += *text;
    }
    return result;
}

std::string element(const std::string& name, const std::string& content)
{
    return "<" + name + ">" + content + "</" + name + ">";
}

std::string nodesOf(const Row& row, std::size_t index)
{
    const std::string name = row.name;
    const std::string texts = element("ToolTip", escaped(row.toolTip)) +
                              element("Description", escaped(row.description)) +
                              element("DisplayName", row.displayName) + element("Visibility", "Expert");
    const std::string streamable = row.isReadOnly ? "" : element("Streamable", "Yes");
    const std::string value = element("pValue", name + "Reg");
    const std::string feature = row.isBoolean ? "<Boolean Name=\"" + name + "\">" + texts + streamable + value +
                                                    "<OnValue>1</OnValue><OffValue>0</OffValue></Boolean>"
                                              : "<Integer Name=\"" + name + "\">" + texts + streamable + value +
                                                    element("Min", std::to_string(row.Min())) +
                                                    element("Max", std::to_string(row.max)) + "</Integer>";
    return feature + "<IntReg Name=\"" + name + "Reg\">" +
           element("Address", std::to_string(index * registerSize)) +
           element("Length", std::to_string(registerSize)) + element("AccessMode", row.isReadOnly ? "RO" : "RW") +
           "<pPort>Device</pPort>" + element("Cachable", row.isReadOnly ? "NoCache" : "WriteThrough") +
           "<Sign>Signed</Sign><Endianess>LittleEndian</Endianess></IntReg>\n";
}

std::string description()
{
    std::string features;
    std::string nodes;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        features += element("pFeature", rows[i].name);
        nodes += nodesOf(rows[i], i);
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<RegisterDescription ModelName=\"InstantCamera\" VendorName=\"Nivex\" StandardNameSpace=\"None\" "
           "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
           "MinorVersion=\"0\" SubMinorVersion=\"0\" ProductGuid=\"5f0b6c7e-6f2e-4a55-9d0f-3a2f4f3f8d11\" "
           "VersionGuid=\"9b1b7d52-2f0c-4f86-8a55-6a0d1f8f2c07\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n"
           "<Category Name=\"Root\">" +
           features + "</Category>\n" + nodes + "<Port Name=\"Device\"/>\n</RegisterDescription>\n";
}

}  // namespace

/// The registers of the description, 8 bytes each in the order of the rows.
class CameraParameters::Port : public GenApi::CPortImpl
{
public:
    explicit Port(std::shared_ptr<const GrabQueue> queue) : queue_(std::move(queue))
    {
        for (std::size_t i = 0; i < rows.size(); ++i)
            values_[i] = rows[i].initial;
    }

    std::int64_t Value(RowIndex row) const { return values_[row]; }

    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }

    void Read(void* buffer, int64_t address, int64_t length) override
    {
        const std::int64_t value = Current(RowAt(address, length));
        std::memcpy(buffer, &value, registerSize);
    }

    /// The registers are nodes too, which know no limits.
    void Write(const void* buffer, int64_t address, int64_t length) override
    {
        std::int64_t value = 0;
        const RowIndex index = RowAt(address, length);
        std::memcpy(&value, buffer, registerSize);
        const Row& row = rows[index];
        if (value < row.Min() || value > row.max)
            GENICAM_THROW(OutOfRangeException, "%s: %lld is not within %lld to %lld.", row.name,
                          static_cast<long long>(value), static_cast<long long>(row.Min()),
                          static_cast<long long>(row.max));
        values_[index] = value;
    }

private:
    static RowIndex RowAt(int64_t address, int64_t length)
    {
        constexpr auto size = static_cast<int64_t>(registerSize);
        if (address < 0 || address % size != 0 || address / size >= RowCount || length != size)
            GENICAM_THROW(InvalidArgumentException, "The camera object has no register at %lld of %lld bytes.",
                          static_cast<long long>(address), static_cast<long long>(length));
        return static_cast<RowIndex>(address / size);
    }

    std::int64_t Current(RowIndex row) const
    {
        switch (row) {
            case NumQueuedBuffersRow:
                return static_cast<std::int64_t>(queue_->Count().atDevice);
            case NumReadyBuffersRow:
                return static_cast<std::int64_t>(queue_->Count().ready);
            case NumEmptyBuffersRow:
                return static_cast<std::int64_t>(queue_->Count().idle);
            default:
                return values_[row];
        }
    }

    const std::shared_ptr<const GrabQueue> queue_;
    std::array<std::atomic<std::int64_t>, RowCount> values_;
};

CameraParameters::CameraParameters(std::shared_ptr<const GrabQueue> queue)
    : port_(std::make_unique<Port>(std::move(queue)))
{
    static const std::string text = description();
    nodeMap_ =
        GenApi::CNodeMapFactory(GenApi::ContentType_Xml, text.data(), text.size()).CreateNodeMap("InstantCamera");
    nodeMap_->Connect(port_.get());
}

CameraParameters::~CameraParameters()
{
    try {
        nodeMap_->Connect(nullptr);
    } catch (...) {
        // A callback of some node failed; the port is disconnected all the same.
        return;
    }
}

std::size_t CameraParameters::MaxNumBuffer() const
{
    return static_cast<std::size_t>(port_->Value(MaxNumBufferRow));
}

std::size_t CameraParameters::OutputQueueSize() const
{
    return static_cast<std::size_t>(port_->Value(OutputQueueSizeRow));
}

bool CameraParameters::GrabCameraEvents() const
{
    return port_->Value(GrabCameraEventsRow) != 0;
}

bool CameraParameters::ChunkNodeMapsEnable() const
{
    return port_->Value(ChunkNodeMapsEnableRow) != 0;
}

bool CameraParameters::AcquisitionStartStopExecutionEnable() const
{
    return port_->Value(AcquisitionStartStopExecutionEnableRow) != 0;
}

}  // namespace Nivex
