#pragma once

#include "utility/files/bytesource.h"
#include "utility/files/outputfile.h"
#include "utility/files/picture.h"

namespace Nivex::Files {

// Readers tell from the file which of the loadable pixel types it gives, check the limits before they allocate,
// and fill the image or raise FormatError; the image is undefined then.

/// 1, 2, 4 and 8 bits with palette (Mono8 if the palette is grey, else BGR8Packed), 16 and 32 bits with or without
/// bit masks (BGRA8Packed with an alpha mask, else BGR8Packed), 24 bits (BGR8Packed). Run-length coding is
/// refused.
void readBmp(ByteSource& source, IReusableImage& image);
/// Grey gives Mono8, colour RGB8Packed. Refused are CMYK and arithmetic coding, and data that are damaged or end
/// early, since the library would only warn and make up the rest. The EXIF orientation is not applied.
void readJpeg(ByteSource& source, IReusableImage& image);
/// Grey gives Mono8 or Mono16, colour and palette RGB8Packed or RGB16Packed, 8-bit colour or a palette with alpha
/// or a transparent colour RGBA8Packed. Alpha of grey and of 16-bit colour is dropped.
void readPng(ByteSource& source, IReusableImage& image);
/// The first picture of the file, turned as its orientation says. 1 to 8-bit grey gives Mono8, 16-bit grey Mono16,
/// RGB and linear raw colour RGB8Packed, RGBA8Packed or RGB16Packed (further samples are dropped), palettes and
/// other colour spaces RGB8Packed. Refused are samples that are no unsigned integers of 1, 2, 4, 8 or 16 bits, and
/// those behind a colour filter pattern.
void readTiff(ByteSource& source, IReusableImage& image);

// Writers take only pictures of the pixel types that the table of formats gives for them. They raise FormatError;
// failures of the file itself may instead wait for its commit.

/// Mono8 with a grey palette, BGR8Packed with 24 bits, BGRA8Packed with 32 bits and an alpha mask; bottom-up, as
/// every reader knows it.
void writeBmp(const PictureView& picture, int quality, OutputFile& file);
/// Baseline, colour at half resolution both ways (4:2:0). Quality 0 stands for 90.
void writeJpeg(const PictureView& picture, int quality, OutputFile& file);
/// Made for recording: fast compression (level 1) of the differences between neighbours in a row.
void writePng(const PictureView& picture, int quality, OutputFile& file);
/// Uncompressed, in strips of about 1 MiB; the large-file form where the small one ends at 4 GiB.
void writeTiff(const PictureView& picture, int quality, OutputFile& file);
/// DNG 1.4, uncompressed: Bayer as the sensor's samples in cells of 8 or 16 bits with their true white level,
/// colour as linear raw samples. The camera's colours are taken to be linear sRGB. Refused where the file would
/// pass 4 GiB.
void writeDng(const PictureView& picture, int quality, OutputFile& file);
/// The picture's bytes as they stand in memory, padding included.
void writeRaw(const PictureView& picture, int quality, OutputFile& file);

}  // namespace Nivex::Files
