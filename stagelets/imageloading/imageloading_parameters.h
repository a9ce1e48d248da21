#pragma once

#include <array>

#include "imageloading/sortby.h"
#include "parameteradapter/stageletnodemapbase.h"

// The texts and limits of the parameters, in the order in which users see them.

namespace Plugin::NivexStageletPackageBase::LoadingParameters {

inline constexpr PortTexts sourcePath{
    .name = "SourcePath",
    .displayName = "Source Path",
    .toolTip = "Path to image or folder.",
    .description = "Path to image or folder.",
    .visibility = "Beginner",
};
inline constexpr std::uint64_t sourcePathMaxLength = 1024;

inline constexpr PortTexts sortBy{
    .name = "SortBy",
    .displayName = "Sort By",
    .toolTip = "Sets the order in which to load images.",
    .description = "Sets the order in which to load images.",
    .visibility = "Beginner",
};

inline constexpr std::array<EnumEntryRow<SortBy>, 3> sortByEntries = {{
    {SortBy::Ascending, "Ascending", "A-Z", "Images are loaded in ascending alphabetical order (A to Z).",
     "Images are loaded in ascending alphabetical order (A to Z)."},
    {SortBy::Descending, "Descending", "Z-A", "Images are loaded in descending alphabetical order (Z to A).",
     "Images are loaded in descending alphabetical order (Z to A)."},
    {SortBy::Random, "Random", "Random", "Images are loaded in random order.",
     "Images are loaded in random order."},
}};

inline constexpr PortTexts numberOfImages{
    .name = "NumberOfImages",
    .displayName = "Number Of Images",
    .toolTip = "Number of images to be loaded.",
    .description = "Number of images to be loaded.",
    .visibility = "Beginner",
};
inline constexpr IntegerRange numberOfImagesRange{.min = 1, .max = 999999999};

inline constexpr PortTexts framesPerSecond{
    .name = "FramesPerSecond",
    .displayName = "Frames Per Second",
    .toolTip = "Number of images to be output per second while the recipe is running.",
    .description = "Number of images to be output per second while the recipe is running.",
    .visibility = "Beginner",
};
inline constexpr IntegerRange framesPerSecondRange{.min = 1, .max = 500};

inline constexpr PortTexts numberOfRuns{
    .name = "NumberOfRuns",
    .displayName = "Number Of Runs",
    .toolTip = "Number of times the image output is repeated.",
    .description = "Number of times the image output is repeated.",
    .visibility = "Beginner",
};
inline constexpr IntegerRange numberOfRunsRange{.min = 1, .max = 999999999};

inline constexpr PortTexts runContinuously{
    .name = "RunContinuously",
    .displayName = "Run Continuously",
    .toolTip = "Enables continuous image output while the recipe is running.",
    .description = "Enables continuous image output while the recipe is running.",
    .visibility = "Beginner",
};

inline constexpr PortTexts storeAbsolutePath{
    .name = "StoreAbsolutePath",
    .displayName = "Store Absolute Path",
    .toolTip = "Enables storing the absolute path to the image source folder in the recipe.",
    .description =
        "Enables storing the absolute path to the image source folder in the recipe. If the option is disabled "
        "and "
        "the recipe has been saved already, the relative path will be used. If the recipe hasn't been saved yet, "
        "storing the relative path isn't possible und the absolute path will be used instead.",  // sic
    .visibility = "Beginner",
};

}  // namespace Plugin::NivexStageletPackageBase::LoadingParameters
