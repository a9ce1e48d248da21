#pragma once

#include <cstdint>
#include <streambuf>

namespace Plugin::NivexStageletPackageBase {

/// Passes characters on to another stream buffer, which outlives it, and counts those that it took. It has no
/// buffer of its own.
class ByteCounter : public std::streambuf
{
public:
    explicit ByteCounter(std::streambuf& target) : target_(target) {}

    std::uint64_t getCount() const { return count_; }

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int sync() override { return target_.pubsync(); }

private:
    std::streambuf& target_;
    std::uint64_t count_ = 0;
};

}  // namespace Plugin::NivexStageletPackageBase
