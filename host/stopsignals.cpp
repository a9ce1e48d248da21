#include "stopsignals.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "hosterror.h"

namespace Host {

namespace {

/// Without SIGHUP if whoever started the process has it ignored, as nohup does.
sigset_t stopSet()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    struct sigaction hangUp = {};
    sigaction(SIGHUP, nullptr, &hangUp);
    if (hangUp.sa_handler != SIG_IGN) sigaddset(&set, SIGHUP);
    return set;
}

[[noreturn]] void raiseSystemError(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

StopSignals::StopSignals()
{
    const sigset_t set = stopSet();
    signals_ = signalfd(-1, &set, SFD_CLOEXEC);
    if (signals_ < 0) raiseSystemError("signalfd");
    wake_ = eventfd(0, EFD_CLOEXEC);
    if (wake_ < 0) {
        close(signals_);
        raiseSystemError("eventfd");
    }
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    thread_ = std::thread([this] { watch(); });
}

StopSignals::~StopSignals()
{
    const std::uint64_t one = 1;
    if (write(wake_, &one, sizeof one) == static_cast<ssize_t>(sizeof one)) thread_.join();
    if (thread_.joinable()) std::terminate();
    close(wake_);
    close(signals_);
    const sigset_t set = stopSet();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void StopSignals::watch()
{
    pollfd sources[2] = {{signals_, POLLIN, 0}, {wake_, POLLIN, 0}};
    for (;;) {
        if (poll(sources, 2, -1) < 0) {
            if (errno == EINTR) continue;
            return;
        }
        signalfd_siginfo info{};
        if ((sources[0].revents & POLLIN) != 0 && read(signals_, &info, sizeof info) > 0) {
            handleSignal(static_cast<int>(info.ssi_signo));
        }
        if (sources[1].revents != 0) return;
    }
}

void StopSignals::handleSignal(int number)
{
    if (hasCome_.exchange(true)) {
        // Before the lock, which an action that hangs would hold.
        if (number == SIGINT) _exit(static_cast<int>(ExitCode::ForcedEnd));
        return;
    }
    const std::lock_guard guard(mutex_);
    callAction();
}

void StopSignals::onStop(std::function<void()> action)
{
    const std::lock_guard guard(mutex_);
    action_ = std::move(action);
    if (hasCome_) callAction();
}

void StopSignals::callAction()
{
    const auto action = std::exchange(action_, {});
    if (action) action();
}

}  // namespace Host
