#include "imageloading/imagesource.h"

#include <algorithm>
#include <filesystem>
#include <locale>
#include <random>
#include <set>
#include <system_error>

#include "utility/imagepersistence.h"

#include "utils/helper.h"

namespace Plugin::NivexStageletPackageBase {

using GenICam::gcstring;
namespace fs = std::filesystem;

namespace {

bool hasImageExtension(const fs::path& path)
{
    static const std::set<gcstring> known = [] {
        const auto extensions = Nivex::CImagePersistence::GetLoadableExtensions();
        return std::set<gcstring>(extensions.begin(), extensions.end());
    }();
    const std::string extension = path.extension().string();
    if (extension.empty() || extension.front() != '.') return false;
    return known.count(Nivex::DataProcessing::Utils::Helper::toUpper(extension.substr(1))) != 0;
}

std::vector<gcstring> scanDirectory(const fs::path& directory)
{
    std::vector<gcstring> paths;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        std::error_code error;
        if (hasImageExtension(entry.path()) && entry.is_regular_file(error)) {
            paths.emplace_back(entry.path().string());
        }
    }
    return paths;
}

}  // namespace

std::vector<gcstring> scanImageSource(const gcstring& sourcePath)
{
    const fs::path path(sourcePath.str());
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status) || !fs::status_known(status)) return {};
    if (fs::is_directory(status)) return scanDirectory(path);
    if (!hasImageExtension(path)) return {};
    return {gcstring(path.string())};
}

void orderImages(std::vector<gcstring>& paths, SortBy sortBy)
{
    if (sortBy == SortBy::Random) {
        std::mt19937 generator(std::random_device("default")());
        std::shuffle(paths.begin(), paths.end(), generator);
        return;
    }
    const std::locale collation;
    std::sort(paths.begin(), paths.end(), [&](const gcstring& a, const gcstring& b) {
        return sortBy == SortBy::Ascending ? collation(a.str(), b.str()) : collation(b.str(), a.str());
    });
}

}  // namespace Plugin::NivexStageletPackageBase
