#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "utility/niveximage.h"

namespace Nivex::Video {

/// Does a step for one picture after the other, in order, on a thread of its own. One picture can wait while
/// another is being worked on; push blocks while one does. Used by one thread.
class PictureThread
{
public:
    /// @param step must not throw.
    explicit PictureThread(std::function<void(const CNivexImage&)> step);
    /// Waits until all pictures are done.
    ~PictureThread();
    PictureThread(const PictureThread&) = delete;
    PictureThread& operator=(const PictureThread&) = delete;

    /// A picture that is done and that nobody else shares, so that its memory can be used again; else an empty
    /// one.
    CNivexImage takeSpare();
    /// The picture's memory must not be written any more.
    void push(CNivexImage picture);

private:
    void run();

    const std::function<void(const CNivexImage&)> step_;
    std::mutex mutex_;  ///< Guards what follows, up to the thread.
    std::condition_variable changed_;
    std::optional<CNivexImage> waiting_;
    std::vector<CNivexImage> spares_;
    bool isEnding_ = false;
    std::thread thread_;
};

}  // namespace Nivex::Video
