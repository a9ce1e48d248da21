#pragma once

#include <memory>
#include <vector>

#include "gcbase/gcstring.h"

#include "utility/image.h"
#include "utility/setting.h"

namespace Nivex {

/// Where a video writer's last failure came from.
enum class EVideoFailure : std::uint32_t
{
    None = 0,
    Encoder = 1,  ///< A picture or the encoder: the file is as good as before.
    File = 2,     ///< The file could not be made, not be written to its end, or was gone when it was closed.
    Index = 3     ///< The closed video holds all pictures, but stayed in the form that it has while it is written.
};

/// Writes MP4 files with H.264 pictures.
///
/// Life. Set the parameters, Open, Add each picture, Close; then again for the next file. The parameters count at
/// Open and are not looked at afterwards. The destructor closes what is open, but can tell no failure.
///
/// The file. While it is written the video stands under its final name as a row of fragments, each of at most half
/// a second of playing time (one picture for slower videos) and handed to the system whole; a fragment also ends
/// with the first picture that comes a second or more after the one before ended. If the process is killed, all
/// but the last fragment can be played. Close copies the pictures, without encoding them again, into an ordinary
/// file with one index, which takes the place of the first in one step; until then both take room on the disk. A
/// file that has the name is replaced at Open. A video without pictures is removed at Close.
///
/// The pictures. Every pixel type that CImageFormatConverter takes becomes YUV420Planar, full range, BT.601, and
/// the stream says so. 4:2:0 has no odd sizes: the last column or row is repeated, the video is one pixel larger.
/// Every picture is shown for exactly 1 / PlayBackFrameRate, and there is a key frame per second.
///
/// The encoder is libx264 where it is installed, else the first other one for H.264 that opens, unless SetEncoders
/// names others; no other codec takes its place, as its videos would not play everywhere. Messages of the codec
/// libraries are kept from stderr for the whole process; errors among them become part of failure texts.
///
/// Threads. One object is used by one thread at a time. Add converts the picture, so that its memory is free
/// again, and hands it to a thread of the video's own, which encodes and writes; Add waits while that thread is
/// busy with one picture and another is waiting. The encoder uses further threads. A killed process loses the two
/// pictures beside the last fragment. A failure on that thread is raised by the next Add, whose picture is not
/// taken, or by Close, which finishes the file all the same.
class GENICAM_API CVideoWriter
{
public:
    CVideoWriter();
    ~CVideoWriter();
    CVideoWriter(const CVideoWriter&) = delete;
    CVideoWriter& operator=(const CVideoWriter&) = delete;

    CIntegerSetting Width;             ///< Of the pictures, 1 to 16384; initially 640.
    CIntegerSetting Height;            ///< Of the pictures, 1 to 16384; initially 480.
    CFloatSetting PlayBackFrameRate;   ///< Pictures per second when played, 0.01 to 1000; initially 25.
    CFloatSetting RecordingFrameRate;  ///< Pictures per second that are added, 0.01 to 1000; initially 25. If it
                                       ///< is the lower one, fragments hold half a second of it.

    /// Names of encoders in libavcodec that are tried at Open, in this order; none names those told above.
    void SetEncoders(const std::vector<GenICam::gcstring>& names);

    /// Raises RuntimeException if a video is open, if there is no encoder (naming those looked for), or if the
    /// file can't be made (naming path and cause), and then leaves no file behind. A file that another video is
    /// being written to, by this process or another, is refused and left alone.
    void Open(const GenICam::gcstring& path);
    bool IsOpen() const;

    /// Raises InvalidArgumentException for another size than Open was told, an unsupported pixel type or too short
    /// a buffer; the video goes on without that picture. Raises RuntimeException if no video is open, or the
    /// encoder or the file failed; after a failure of the file further pictures fail too.
    void Add(const void* buffer, std::size_t bufferSize, EPixelType pixelType, std::uint32_t width,
             std::uint32_t height, std::size_t paddingX, EImageOrientation orientation);
    void Add(const IImage& image);

    /// Finishes the file; nothing happens if none is open. After a RuntimeException the video is closed too; its
    /// pictures up to the failure can be played. One that is gone from its name, removed or moved, is a failure of
    /// the file that costs all its pictures: whether they still exist anywhere can't be told.
    void Close();

    /// Of the last Open, Add or Close.
    EVideoFailure GetLastFailure() const;
    /// Pictures of the video opened last that were lost after Add had taken them: by a failure that a later call
    /// raises, among them those of a fragment that could not be written whole.
    std::uint64_t GetLateLossCount() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Nivex
