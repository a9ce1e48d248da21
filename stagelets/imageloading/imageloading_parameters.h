#pragma once

#include <array>

#include "imageloading/sortby.h"
#include "parameteradapter/stageletnodemapbase.h"

// The texts and limits of the parameters, in the order in which users see them.

namespace Plugin::NivexStageletPackageBase::LoadingParameters {

/// With one text for tool tip and description.
constexpr PortTexts parameter(const char* name, const char* displayName, const char* text)
{
    return {name, displayName, text, text, "Beginner"};
}

constexpr EnumEntryRow<SortBy> order(SortBy value, const char* name, const char* displayName, const char* text)
{
    return {value, name, displayName, text, text};
}

inline constexpr PortTexts sourcePath = parameter("SourcePath", "Source Path", "Path to image or folder.");
inline constexpr std::uint64_t sourcePathMaxLength = 1024;

inline constexpr PortTexts sortBy = parameter("SortBy", "Sort By", "Sets the order in which to load images.");
inline constexpr std::array sortByEntries = {
    order(SortBy::Ascending, "Ascending", "A-Z", "Images are loaded in ascending alphabetical order (A to Z)."),
    order(SortBy::Descending, "Descending", "Z-A", "Images are loaded in descending alphabetical order (Z to A)."),
    order(SortBy::Random, "Random", "Random", "Images are loaded in random order."),
};

inline constexpr PortTexts numberOfImages =
    parameter("NumberOfImages", "Number Of Images", "Number of images to be loaded.");
inline constexpr IntegerRange numberOfImagesRange{.min = 1, .max = 999999999};

inline constexpr PortTexts framesPerSecond =
    parameter("FramesPerSecond", "Frames Per Second",
              "Number of images to be output per second while the recipe is running.");
inline constexpr IntegerRange framesPerSecondRange{.min = 1, .max = 500};

inline constexpr PortTexts numberOfRuns =
    parameter("NumberOfRuns", "Number Of Runs", "Number of times the image output is repeated.");
inline constexpr IntegerRange numberOfRunsRange{.min = 1, .max = 999999999};

inline constexpr PortTexts runContinuously = parameter(
    "RunContinuously", "Run Continuously", "Enables continuous image output while the recipe is running.");

inline constexpr PortTexts storeAbsolutePath{
    .name = "StoreAbsolutePath",
    .displayName = "Store Absolute Path",
    .toolTip = "Enables storing the absolute path to the image source folder in the recipe.",
    .description =
        "Enables storing the absolute path to the image source folder in the recipe. If the option is disabled "
        "and the recipe has been saved already, the relative path will be used. If the recipe hasn't been saved "
        "yet, storing the relative path isn't possible und the absolute path will be used instead.",  // sic
    .visibility = "Beginner",
};

}  // namespace Plugin::NivexStageletPackageBase::LoadingParameters
