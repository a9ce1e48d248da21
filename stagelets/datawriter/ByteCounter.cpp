#include "datawriter/ByteCounter.h"

namespace Plugin::NivexStageletPackageBase {

ByteCounter::int_type ByteCounter::overflow(int_type character)
{
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    const int_type result = target_.sputc(traits_type::to_char_type(character));
    if (!traits_type::eq_int_type(result, traits_type::eof())) ++count_;
    return result;
}

std::streamsize ByteCounter::xsputn(const char* text, std::streamsize size)
{
    const std::streamsize taken = target_.sputn(text, size);
    count_ += static_cast<std::uint64_t>(taken);
    return taken;
}

}  // namespace Plugin::NivexStageletPackageBase
