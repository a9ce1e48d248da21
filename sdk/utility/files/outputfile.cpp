#include "utility/files/outputfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "utility/files/picture.h"

namespace Nivex::Files {

namespace {

/// A name in the same folder that no other call and no other process uses.
std::string temporaryName(const std::string& path)
{
    static std::atomic<std::uint64_t> calls{0};
    // Leaves room for the rest within the 255 bytes of a file name.
    constexpr std::size_t keptOfName = 200;
    const std::size_t nameStart = path.rfind('/') + 1;
    return path.substr(0, nameStart) + "." + path.substr(nameStart, keptOfName) + ".tmp-" +
           std::to_string(::getpid()) + "-" + std::to_string(calls.fetch_add(1));
}

void refuseSpecialFile(const std::string& path)
{
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0) return;
    if (S_ISDIR(status.st_mode)) fail("it is a directory");
    if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) fail("it is no regular file");
}

}  // namespace

OutputFile::OutputFile(std::string path)
    : path_(std::move(path)), buffer_(std::make_unique_for_overwrite<std::byte[]>(bufferBytes))
{
    refuseSpecialFile(path_);
    // A process of another machine or container may have left or be using the same name.
    constexpr int attempts = 100;
    for (int attempt = 0; descriptor_ < 0 && attempt < attempts; ++attempt) {
        temporaryPath_ = temporaryName(path_);
        descriptor_ = ::open(temporaryPath_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ < 0 && errno != EEXIST) break;
    }
    if (descriptor_ < 0) fail("%s", systemText(errno).c_str());
}

OutputFile::~OutputFile()
{
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!temporaryPath_.empty()) ::unlink(temporaryPath_.c_str());
}

bool OutputFile::write(const void* bytes, std::size_t count) noexcept
{
    const auto* data = static_cast<const std::byte*>(bytes);
    if (pending_ + count > bufferBytes && !flush()) return false;
    if (count > bufferBytes) return writeThrough(data, count);
    std::memcpy(buffer_.get() + pending_, data, count);
    pending_ += count;
    return !failed();
}

bool OutputFile::seek(std::uint64_t position) noexcept
{
    if (!flush()) return false;
    position_ = position;
    return true;
}

std::size_t OutputFile::read(void* destination, std::size_t count) noexcept
{
    if (!flush()) return 0;
    const ssize_t got = ::pread(descriptor_, destination, count, static_cast<off_t>(position_));
    if (got < 0) return 0;
    position_ += static_cast<std::uint64_t>(got);
    return static_cast<std::size_t>(got);
}

std::uint64_t OutputFile::size() const noexcept
{
    return std::max(size_, position());
}

void OutputFile::check() const
{
    if (failed()) fail("%s", systemText(error_).c_str());
}

void OutputFile::commit()
{
    flush();
    // Some file systems report a full disk or a spent quota no earlier than here.
    if (::close(std::exchange(descriptor_, -1)) != 0 && !failed()) error_ = errno;
    check();
    if (std::rename(temporaryPath_.c_str(), path_.c_str()) != 0) fail("%s", systemText(errno).c_str());
    temporaryPath_.clear();
}

bool OutputFile::flush() noexcept
{
    return writeThrough(buffer_.get(), std::exchange(pending_, 0));
}

bool OutputFile::writeThrough(const std::byte* bytes, std::size_t count) noexcept
{
    while (!failed() && count > 0) {
        const ssize_t step = ::pwrite(descriptor_, bytes, count, static_cast<off_t>(position_));
        if (step <= 0) {
            if (step == 0) error_ = EIO;
            if (step < 0 && errno != EINTR) error_ = errno;
            continue;
        }
        bytes += step;
        count -= static_cast<std::size_t>(step);
        position_ += static_cast<std::uint64_t>(step);
    }
    size_ = std::max(size_, position_);
    return !failed();
}

}  // namespace Nivex::Files
