// Any bytes as a recipe: read, and what is wrong told. What is in order goes through the settings store and back.
#include <cstdint>
#include <cstdlib>

#include "gcbase/exception.h"

#include "recipe.h"
#include "runtime/jsonsettings.h"

using namespace Nivex::DataProcessing::Runtime;

namespace {

/// Reads every setting as every kind; refusals are fine.
void readSettings(const std::shared_ptr<JsonValue>& tree)
{
    JsonSettings settings(tree, "/");
    for (const auto& member : tree->as<JsonObject>()->members) {
        const Nivex::DataProcessing::Core::SettingsPath path(member.name.c_str());
        const auto tryRead = [&](auto read) {
            try {
                read();
            } catch (const GenICam::RuntimeException&) {
            }
        };
        tryRead([&] { settings.getSigned(path); });
        tryRead([&] { settings.getUnsigned(path); });
        tryRead([&] { settings.getDouble(path); });
        tryRead([&] { settings.getBool(path); });
        tryRead([&] { settings.getString(path); });
        tryRead([&] { settings.openChild(path); });
    }
    const std::string text = settings.toText();
    const JsonDocument again = parseJson(text);
    if (!again.root || formatJson(*again.root) != text) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Host::FaultList faults;
    const Host::Recipe recipe =
        Host::readRecipe(std::string_view(reinterpret_cast<const char*>(data), size), faults);
    if (faults.empty() == faults.toLines("recipe").empty()) {
        for (const auto& node : recipe.nodes) {
            if (node.settings) readSettings(node.settings);
        }
        return 0;
    }
    std::abort();
}
