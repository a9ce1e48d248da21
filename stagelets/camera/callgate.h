#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace Plugin::NivexStageletPackageBase {

/// Lets calls from foreign threads through while it is open, and lets its owner wait until those that came through
/// have ended. Any thread may call any operation. Initially closed.
class CallGate
{
public:
    /// The way of one call through the gate: true if it was let through, and then it counts until its end.
    class Pass
    {
    public:
        explicit Pass(CallGate& gate) : gate_(gate.enter() ? &gate : nullptr) {}
        ~Pass()
        {
            if (gate_) gate_->leave();
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        explicit operator bool() const { return gate_ != nullptr; }

    private:
        CallGate* gate_;
    };

    void open();
    /// Lets nobody through from now on. Does not wait.
    void close();
    /// Waits for the end of all calls inside. Not to be called by one of them, nor with a lock that they need.
    void wait();

private:
    bool enter();
    void leave();

    std::mutex mutex_;  // guards all members
    std::condition_variable empty_;
    std::size_t inside_ = 0;
    bool open_ = false;
};

inline void CallGate::open()
{
    const std::lock_guard guard(mutex_);
    open_ = true;
}

inline void CallGate::close()
{
    const std::lock_guard guard(mutex_);
    open_ = false;
}

inline void CallGate::wait()
{
    std::unique_lock lock(mutex_);
    empty_.wait(lock, [this] { return inside_ == 0; });
}

inline bool CallGate::enter()
{
    const std::lock_guard guard(mutex_);
    if (open_) ++inside_;
    return open_;
}

inline void CallGate::leave()
{
    const std::lock_guard guard(mutex_);
    if (--inside_ == 0) empty_.notify_all();
}

}  // namespace Plugin::NivexStageletPackageBase
