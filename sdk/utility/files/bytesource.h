#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Nivex::Files {

/// The bytes of an image file, read at any place, so that a reader takes what it needs straight into the
/// picture. Used by one thread. Reading never throws, since it happens inside callbacks of C libraries.
class ByteSource
{
public:
    ByteSource() = default;
    virtual ~ByteSource();
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    std::uint64_t size() const noexcept { return size_; }

    /// Reads up to `count` bytes; fewer only where the source ends or fails. Returns how many.
    virtual std::size_t read(std::uint64_t offset, void* destination, std::size_t count) noexcept = 0;

    /// Raises FormatError if there are not that many bytes.
    void readExactly(std::uint64_t offset, void* destination, std::size_t count);

protected:
    std::uint64_t size_ = 0;
};

/// Bytes in memory, which must outlive the object.
class MemorySource final : public ByteSource
{
public:
    explicit MemorySource(std::span<const std::byte> bytes) noexcept;
    std::size_t read(std::uint64_t offset, void* destination, std::size_t count) noexcept override;

private:
    std::span<const std::byte> bytes_;
};

/// A regular file. Nothing else is opened to the end: a directory, a pipe or a device is refused at once.
class FileSource final : public ByteSource
{
public:
    /// Larger files are refused; no picture within the limits of loading needs so much.
    static constexpr std::uint64_t maxFileBytes = std::uint64_t{2} << 30;

    /// Raises FormatError with the system's text.
    explicit FileSource(const std::string& path);
    ~FileSource() override;
    std::size_t read(std::uint64_t offset, void* destination, std::size_t count) noexcept override;

private:
    int descriptor_;
};

}  // namespace Nivex::Files
