#include "datawriter/OutputClaims.h"

#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>

#include "gcbase/exception.h"

namespace Plugin::NivexStageletPackageBase {

namespace {

constexpr std::size_t most = 4096;

struct Claims
{
    std::mutex mutex;  // guards the members below
    std::unordered_map<std::string, const OutputClaims*> owners;
    std::deque<std::string> order;  // first claimed first
};

Claims& allClaims()
{
    static Claims claims;
    return claims;
}

}  // namespace

bool OutputClaims::claim(const std::filesystem::path& file)
{
    Claims& all = allClaims();
    const std::lock_guard guard(all.mutex);
    const auto [entry, isNew] = all.owners.emplace(file.string(), this);
    if (!isNew) return entry->second == this;
    all.order.push_back(entry->first);
    if (all.order.size() > most) {
        all.owners.erase(all.order.front());
        all.order.pop_front();
    }
    return true;
}

void OutputClaims::require(const std::filesystem::path& file)
{
    if (!claim(file)) GENICAM_THROW(RuntimeException, "\"%s\": %s", file.c_str(), refusal);
}

void OutputClaims::release()
{
    Claims& all = allClaims();
    const std::lock_guard guard(all.mutex);
    std::erase_if(all.order, [&](const std::string& file) {
        const auto entry = all.owners.find(file);
        if (entry->second != this) return false;
        all.owners.erase(entry);
        return true;
    });
}

}  // namespace Plugin::NivexStageletPackageBase
