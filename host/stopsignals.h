#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

namespace Host {

/// Takes SIGINT, SIGTERM and SIGHUP over: the first one calls what was given with `onStop`, and a SIGINT after it
/// ends the process at once with ExitCode::ForcedEnd. Other signals after it do nothing, since programs that end
/// others (timeout is one) send the same signal twice. Make it before any other thread, since the signals are
/// blocked in the thread that makes it and those it starts afterwards. One at a time.
class StopSignals
{
public:
    /// Raises std::system_error if the platform refuses.
    StopSignals();
    /// Ends the watch; the signals then do as before.
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Called once, on a thread of this object, when the first signal comes; or here and now if it has come
    /// already. An empty function takes the former one out and waits for its end.
    void onStop(std::function<void()> action);
    bool hasCome() const { return hasCome_; }

private:
    void watch();
    void handleSignal(int number);
    void callAction();  // with mutex_ held

    int signals_ = -1;
    int wake_ = -1;
    std::atomic<bool> hasCome_{false};
    std::mutex mutex_;  // guards action_, and is held while it runs
    std::function<void()> action_;
    std::thread thread_;
};

}  // namespace Host
