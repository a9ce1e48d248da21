#include "utility/files/bytesource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "utility/files/picture.h"

namespace Nivex::Files {

ByteSource::~ByteSource() = default;

void ByteSource::readExactly(std::uint64_t offset, void* destination, std::size_t count)
{
    const std::size_t got = read(offset, destination, count);
    if (got != count) {
        fail("it ends early: %zu bytes are expected at byte %llu, but there are %zu", count,
             static_cast<unsigned long long>(offset), got);
    }
}

MemorySource::MemorySource(std::span<const std::byte> bytes) noexcept : bytes_(bytes)
{
    size_ = bytes.size();
}

std::size_t MemorySource::read(std::uint64_t offset, void* destination, std::size_t count) noexcept
{
    if (offset >= bytes_.size()) return 0;
    const auto start = static_cast<std::size_t>(offset);
    const std::size_t got = std::min(count, bytes_.size() - start);
    std::memcpy(destination, bytes_.data() + start, got);
    return got;
}

FileSource::FileSource(const std::string& path)
    // Without O_NONBLOCK a pipe that nobody writes to would hold us for ever.
    : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY))
{
    if (descriptor_ < 0) fail("%s", systemText(errno).c_str());
    try {
        struct stat status = {};
        if (::fstat(descriptor_, &status) != 0) fail("%s", systemText(errno).c_str());
        if (S_ISDIR(status.st_mode)) fail("it is a directory");
        if (!S_ISREG(status.st_mode)) fail("it is no regular file");
        size_ = static_cast<std::uint64_t>(status.st_size);
        if (size_ > maxFileBytes) {
            fail("it has %llu bytes; at most %llu are read", static_cast<unsigned long long>(size_),
                 static_cast<unsigned long long>(maxFileBytes));
        }
    } catch (...) {
        ::close(descriptor_);
        throw;
    }
}

FileSource::~FileSource()
{
    ::close(descriptor_);
}

std::size_t FileSource::read(std::uint64_t offset, void* destination, std::size_t count) noexcept
{
    auto* bytes = static_cast<std::byte*>(destination);
    std::size_t got = 0;
    while (got < count) {
        const ssize_t step = ::pread(descriptor_, bytes + got, count - got, static_cast<off_t>(offset + got));
        if (step < 0 && errno == EINTR) continue;
        if (step <= 0) break;
        got += static_cast<std::size_t>(step);
    }
    return got;
}

}  // namespace Nivex::Files
