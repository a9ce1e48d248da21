#include "utility/files/tiffhandle.h"

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>

#include "utility/files/bytesource.h"
#include "utility/files/outputfile.h"
#include "utility/files/picture.h"
#include "utility/imagepersistence.h"

namespace Nivex::Files {

/// What the library calls; none of it may throw, since the library is written in C.
struct TiffHandle::Callbacks
{
    static TiffHandle& self(thandle_t handle) { return *static_cast<TiffHandle*>(handle); }

    static tmsize_t read(thandle_t handle, void* destination, tmsize_t size)
    {
        TiffHandle& tiff = self(handle);
        const auto count = static_cast<std::size_t>(size);
        if (tiff.file_) return static_cast<tmsize_t>(tiff.file_->read(destination, count));
        const std::size_t got = tiff.source_->read(tiff.position_, destination, count);
        tiff.position_ += got;
        return static_cast<tmsize_t>(got);
    }

    static tmsize_t write(thandle_t handle, void* bytes, tmsize_t size)
    {
        OutputFile* const file = self(handle).file_;
        return file && file->write(bytes, static_cast<std::size_t>(size)) ? size : -1;
    }

    static toff_t seek(thandle_t handle, toff_t offset, int origin)
    {
        TiffHandle& tiff = self(handle);
        std::uint64_t target = offset;
        if (origin == SEEK_CUR) target += tiff.file_ ? tiff.file_->position() : tiff.position_;
        if (origin == SEEK_END) target += size(handle);
        if (tiff.file_) return tiff.file_->seek(target) ? target : static_cast<toff_t>(-1);
        return tiff.position_ = target;
    }

    static toff_t size(thandle_t handle)
    {
        const TiffHandle& tiff = self(handle);
        return tiff.file_ ? tiff.file_->size() : tiff.source_->size();
    }

    static int close(thandle_t) { return 0; }

    __attribute__((format(printf, 4, 0))) static int keepError(TIFF*, void* user, const char*, const char* format,
                                                               std::va_list arguments)
    {
        auto& text = self(user).error_;
        // Later errors only follow from the first.
        if (text[0] == '\0') std::vsnprintf(text.data(), text.size(), format, arguments);
        return 1;
    }

    static int keepWarning(TIFF*, void* user, const char*, const char*, std::va_list)
    {
        self(user).hasWarning_ = true;
        return 1;
    }
};

TiffHandle::TiffHandle(ByteSource& source) : source_(&source)
{
    open("rm");
}

TiffHandle::TiffHandle(OutputFile& file, bool isLarge) : file_(&file)
{
    open(isLarge ? "w8m" : "wm");
}

void TiffHandle::open(const char* mode)
{
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                   &TIFFOpenOptionsFree);
    if (!options) throw std::bad_alloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(CImagePersistence::maxLoadBytes));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Callbacks::keepError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Callbacks::keepWarning, this);
    tiff_ = TIFFClientOpenExt("image", mode, this, Callbacks::read, Callbacks::write, Callbacks::seek,
                              Callbacks::close, Callbacks::size, nullptr, nullptr, options.get());
    check(tiff_ != nullptr);
}

TiffHandle::~TiffHandle()
{
    if (tiff_) TIFFClose(tiff_);
}

void TiffHandle::check(bool succeeded) const
{
    if (succeeded) return;
    if (file_) file_->check();
    fail("%s", error_[0] ? error_.data() : "the TIFF library gives no cause");
}

}  // namespace Nivex::Files
