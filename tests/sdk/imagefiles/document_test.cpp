// docs/image-files.md says what each format holds; this table is made from what the code answers and does.

#include <gtest/gtest.h>

#include <algorithm>

#include "gcbase/exception.h"

#include "utility/pixelformats.h"

#include "sdk/imagefiles/imagetesting.h"

using namespace Nivex;
using namespace ImageTesting;
using enum EImageFileFormat;
using enum EPixelType;

namespace {

struct Kind
{
    const char* name;
    EPixelType pixelType;
};

/// One of each kind that no format holds as it is.
constexpr Kind kinds[] = {
    {"8-bit grey", Mono4Packed},    {"deeper grey", Mono12p},  {"8-bit colour", YUV422Packed},
    {"deeper colour", BGR12Packed}, {"8-bit Bayer", BayerGR8}, {"deeper Bayer", BayerGR12p},
};

bool canSave(EImageFileFormat format, EPixelType pixelType)
{
    return CImagePersistence::CanSaveWithoutConversion(format, pixelType, 8, 8, 0, EImageOrientation::TopDown);
}

/// The names of all pixel types that are held as they are; one for all four Bayer orders.
std::string heldNames(EImageFileFormat format)
{
    std::vector<std::string> names;
    for (const PixelFormat& row : GetPixelFormats()) {
        if (!canSave(format, static_cast<EPixelType>(row.value))) continue;
        std::string name = row.name;
        if (IsBayer(static_cast<EPixelType>(row.value))) name.replace(5, 2, "xx");
        if (std::ranges::find(names, name) == names.end()) names.push_back(name);
    }
    if (names.size() > 20) return "every pixel type";
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

class ImageFilesDocument : public FolderTest
{
protected:
    /// What a picture of that pixel type has become in the file.
    std::string stored(EImageFileFormat format, EPixelType pixelType)
    {
        if (canSave(format, pixelType)) return "as it is";
        const std::string path = inFolder("p");
        try {
            CImagePersistence::Save(format, path.c_str(), makePicture(pixelType, 8, 8));
        } catch (const GenICam::RuntimeException&) {
            return "refused";
        }
        CNivexImage loaded;
        loaded.Load(path.c_str());
        return GetPixelTypeName(loaded.GetPixelType());
    }

    std::string table()
    {
        std::string text = "| MediaType | Ending | Holds as it is |";
        std::string line = "|---|---|---|";
        for (const Kind& kind : kinds) {
            text += std::string(" ") + kind.name + " |";
            line += "---|";
        }
        text += "\n" + line + "\n";
        constexpr const char* formats[][2] = {{"BMP", ".bmp"}, {"TIFF", ".tiff"}, {"JPEG", ".jpg"},
                                              {"PNG", ".png"}, {"RAW", ".raw"},   {"DNG", ".dng"}};
        for (std::uint32_t i = 0; i < std::size(formats); ++i) {
            const EImageFileFormat format{i};
            text += std::string("| ") + formats[i][0] + " | " + formats[i][1] + " | " + heldNames(format) + " |";
            for (const Kind& kind : kinds)
                text += " " + stored(format, kind.pixelType) + " |";
            text += "\n";
        }
        return text;
    }
};

}  // namespace

TEST_F(ImageFilesDocument, HasTheTableOfWhatFormatsHold)
{
    const auto bytes = readFile(STAGELET_SOURCE_DIR "/docs/image-files.md");
    const std::string document(bytes.begin(), bytes.end());
    const std::string expected = table();
    EXPECT_NE(document.find("\n\n" + expected + "\n"), std::string::npos)
        << "docs/image-files.md should hold this table:\n\n"
        << expected;
}
