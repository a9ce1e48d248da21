#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Nivex::Files {

/// A file in the making. It stands under a temporary name beside its final one until `commit`, which puts it
/// in place of whatever stood there; without that, nothing stays behind. Data are handed to the system but not
/// forced to the disk. A link at the final name is replaced, not followed. Used by one thread.
///
/// Writing never throws, since it happens inside callbacks of C libraries: the first failure is kept, all
/// further writing is dropped, and `commit` raises it.
class OutputFile
{
public:
    /// Makes the temporary file. Raises FormatError with the system's text, or if something that is no regular
    /// file already has the final name.
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Writes at the present position and moves on. False once anything has failed.
    bool write(const void* bytes, std::size_t count) noexcept;
    bool failed() const noexcept { return error_ != 0; }

    // For libraries that go back to fill in what they learn later.
    bool seek(std::uint64_t position) noexcept;
    std::uint64_t position() const noexcept { return position_ + pending_; }
    std::size_t read(void* destination, std::size_t count) noexcept;
    std::uint64_t size() const noexcept;  ///< Up to the last byte written so far.

    /// Raises FormatError with the text of the first failure, if there is one.
    void check() const;
    /// Closes the file and gives it its name. Raises FormatError.
    void commit();

private:
    bool flush() noexcept;
    bool writeThrough(const std::byte* bytes, std::size_t count) noexcept;

    static constexpr std::size_t bufferBytes = std::size_t{256} << 10;

    std::string path_;
    std::string temporaryPath_;
    int descriptor_ = -1;
    int error_ = 0;
    std::uint64_t position_ = 0;           ///< In the file, of the first byte of the buffer.
    std::uint64_t size_ = 0;               ///< Of what has left the buffer.
    std::size_t pending_ = 0;              ///< Bytes in the buffer.
    std::unique_ptr<std::byte[]> buffer_;  ///< Gathers small writes.
};

}  // namespace Nivex::Files
