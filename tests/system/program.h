#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

namespace SystemTest {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// How a program ended and what it wrote.
struct Ended
{
    int code = 0;           ///< The exit code, or minus the signal that ended it.
    bool timedOut = false;  ///< It did not end in time and was killed.
    long peakKiB = 0;       ///< The most memory that was resident.
    std::string out;
    std::string err;
};

inline std::string readFile(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A program that runs as a process of its own, killed with this object if it still runs. Its output goes to files
/// in `logs`, which exists.
class Program
{
public:
    Program(std::vector<std::string> command, const fs::path& logs) : out_(logs / "stdout"), err_(logs / "stderr")
    {
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
        posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, out_.c_str(), flags, 0600);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, err_.c_str(), flags, 0600);
        // Whoever started this process may have had it ignore them.
        sigset_t defaults;
        sigemptyset(&defaults);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ})
            sigaddset(&defaults, number);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

        std::vector<char*> arguments;
        for (std::string& argument : command)
            arguments.push_back(argument.data());
        arguments.push_back(nullptr);
        const int failure = posix_spawnp(&pid_, arguments[0], &files, &attributes, arguments.data(), environ);
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&files);
        if (failure != 0) throw std::system_error(failure, std::generic_category(), command[0]);
    }
    ~Program()
    {
        if (pid_ <= 0) return;
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void send(int signal) const { kill(pid_, signal); }
    std::string readErr() const { return readFile(err_); }
    /// True once it has ended.
    bool hasEnded() const { return hasEndedWithin(0ms); }

    /// Waits for its end, which must come once, and kills it if it takes longer than `limit`.
    Ended wait(std::chrono::milliseconds limit = 120s)
    {
        Ended ended;
        ended.timedOut = !hasEndedWithin(limit);
        if (ended.timedOut) kill(pid_, SIGKILL);
        int status = 0;
        rusage usage{};
        while (wait4(pid_, &status, 0, &usage) < 0 && errno == EINTR) {
        }
        pid_ = 0;
        ended.code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
        ended.peakKiB = usage.ru_maxrss;
        ended.out = readFile(out_);
        ended.err = readFile(err_);
        return ended;
    }

private:
    bool hasEndedWithin(std::chrono::milliseconds limit) const
    {
        const int handle = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
        if (handle < 0) throw std::system_error(errno, std::generic_category(), "pidfd_open");
        pollfd end{handle, POLLIN, 0};
        const int count = poll(&end, 1, static_cast<int>(limit.count()));
        close(handle);
        return count > 0;
    }

    fs::path out_;
    fs::path err_;
    pid_t pid_ = 0;
};

}  // namespace SystemTest
