#include "utility/video/picturethread.h"

#include <utility>

namespace Nivex::Video {

PictureThread::PictureThread(std::function<void(const CNivexImage&)> step)
    : step_(std::move(step)), thread_([this] { run(); })
{}

PictureThread::~PictureThread()
{
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

CNivexImage PictureThread::takeSpare()
{
    const std::lock_guard lock(mutex_);
    if (spares_.empty()) return {};
    CNivexImage picture = std::move(spares_.back());
    spares_.pop_back();
    return picture;
}

void PictureThread::push(CNivexImage picture)
{
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !waiting_; });
    waiting_ = std::move(picture);
    changed_.notify_all();
}

void PictureThread::run()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return waiting_ || isEnding_; });
        if (!waiting_) return;
        CNivexImage picture = std::move(*waiting_);
        waiting_.reset();
        changed_.notify_all();
        lock.unlock();
        step_(picture);
        lock.lock();
        if (picture.IsUnique()) spares_.push_back(std::move(picture));
    }
}

}  // namespace Nivex::Video
