#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "utility/video/libraryfailure.h"

namespace Nivex::Video {

/// Pictures in so many seconds.
struct PictureRate
{
    int pictures;
    int seconds;
};

/// An MP4 file that is written in fragments, each of which can be played once it has been flushed. All refusals
/// are RuntimeExceptions that name path and cause.
class FragmentedFile
{
public:
    /// Makes the file, empty of pictures, in place of one that has the name; leaves none behind if that fails. One
    /// that is being written, by this process or another, is left alone and refused.
    FragmentedFile(std::string path, const AVCodecContext& encoder);
    /// Closes the file as it stands.
    ~FragmentedFile();
    FragmentedFile(const FragmentedFile&) = delete;
    FragmentedFile& operator=(const FragmentedFile&) = delete;

    /// Adds a packet whose times count in pictures, and whose times are changed by that.
    void write(AVPacket& packet);
    /// Ends the fragment and hands it to the system.
    void flush();
    /// Ends the file and closes it. After a failure it is closed, too, and has its whole fragments only; without
    /// any it is removed.
    void finish();
    /// False if someone has removed, moved or replaced the file since it was made.
    bool isInPlace() const;

    PictureRate rate() const { return rate_; }
    std::uint64_t packetCount() const { return packetCount_; }

private:
    /// A file descriptor of its own that holds the lock by which other writers know that the file is in use.
    class Claim
    {
    public:
        explicit Claim(const std::string& path);
        ~Claim();
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;
        int descriptor() const { return descriptor_; }

    private:
        int descriptor_;
    };

    void begin(const AVCodecContext& encoder);
    void checkFile(int code, const char* operation);
    void dropTornFragment() const;

    std::string path_;
    Claim claim_;
    std::unique_ptr<AVFormatContext, Release> format_;
    std::uint64_t packetCount_ = 0;
    std::int64_t wholeBytes_ = 0;  ///< Up to the end of the last fragment that was written whole.
    bool hasWholeFragment_ = false;
    PictureRate rate_;
};

}  // namespace Nivex::Video
