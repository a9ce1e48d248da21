#pragma once

#include <memory>

#include "genapi/inodemap.h"

#include "base/grabqueue.h"

namespace Nivex {

/// The camera object's own parameters: their values, and the node map that shows them. Any thread may call
/// anything.
class CameraParameters
{
public:
    explicit CameraParameters(std::shared_ptr<const GrabQueue> queue);
    /// The map may be kept, and finds its features not available.
    ~CameraParameters();
    CameraParameters(const CameraParameters&) = delete;
    CameraParameters& operator=(const CameraParameters&) = delete;

    const GenApi::NodeMapPtr& NodeMap() const { return nodeMap_; }

    std::size_t MaxNumBuffer() const;
    std::size_t OutputQueueSize() const;
    bool GrabCameraEvents() const;
    bool ChunkNodeMapsEnable() const;
    bool AcquisitionStartStopExecutionEnable() const;

private:
    class Port;

    const std::unique_ptr<Port> port_;
    GenApi::NodeMapPtr nodeMap_;
};

}  // namespace Nivex
