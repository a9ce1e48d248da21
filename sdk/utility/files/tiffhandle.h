#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

struct tiff;  // The TIFF library's own handle.

namespace Nivex::Files {

/// Of linear colour samples, as DNG files hold them; the library has no name for it.
constexpr std::uint32_t photometricLinearRaw = 34892;

class ByteSource;
class OutputFile;

/// An open TIFF file of the library, reading from a source or writing to a file. What the library has to say
/// comes here, per handle, and is never printed.
class TiffHandle
{
public:
    /// Opens the first picture. Raises FormatError if there is none.
    explicit TiffHandle(ByteSource& source);
    /// Begins a file; the large form is for what may not fit into 4 GiB.
    TiffHandle(OutputFile& file, bool isLarge);
    ~TiffHandle();
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    tiff* get() const noexcept { return tiff_; }

    /// Raises FormatError with the library's first error text unless `succeeded`.
    void check(bool succeeded) const;

    bool hasWarning() const noexcept { return hasWarning_; }
    void clearWarning() noexcept { hasWarning_ = false; }

private:
    struct Callbacks;

    void open(const char* mode);

    ByteSource* source_ = nullptr;
    OutputFile* file_ = nullptr;
    std::uint64_t position_ = 0;  ///< In the source.
    std::array<char, 256> error_{};
    bool hasWarning_ = false;
    tiff* tiff_ = nullptr;
};

}  // namespace Nivex::Files
