// Any bytes as the lines of pins: the first bit chooses what kind of pins. They are read, or refused at a place in
// them, and no pin comes out that they do not name.
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "gcbase/exception.h"

#include "camera/pinmappingparser.h"

using namespace Plugin::NivexStageletPackageBase;

namespace {

void require(bool holds)
{
    if (!holds) std::abort();
}

GenICam::gcstring_vector linesOf(std::string_view text)
{
    GenICam::gcstring_vector lines;
    for (;;) {
        const std::size_t end = text.find('\n');
        lines.push_back(GenICam::gcstring(std::string(text.substr(0, end))));
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const GenICam::gcstring_vector lines = linesOf(text);
    PinMappingParser parser;
    PinMappings pins;
    const auto isInside = [&] {
        return parser.getLine() < lines.size() && parser.getColumn() >= 1 &&
               parser.getColumn() <= lines[parser.getLine()].size() + 1;
    };
    try {
        parser.parse(data[0] % 2 == 0 ? PinMappingType::ChunkData : PinMappingType::Event, lines, pins);
    } catch (const GenICam::RuntimeException&) {
        require(isInside());
    } catch (const std::runtime_error&) {
        require(isInside());
    }
    for (const auto& [name, pin] : pins)
        require(!name.empty() && text.find(name.view()) != std::string_view::npos);
    return 0;
}
