#pragma once

#include <filesystem>

namespace Plugin::NivexStageletPackageBase {

/// The files that one media writer makes in a session, known to all writers of the process: without that, two with
/// the same names in one folder would replace each other's files, and count all of them as written. Any thread.
class OutputClaims
{
public:
    OutputClaims() = default;
    ~OutputClaims() { release(); }
    OutputClaims(const OutputClaims&) = delete;
    OutputClaims& operator=(const OutputClaims&) = delete;

    /// False if another writer has claimed the path. The writers' last few thousand claims are remembered, since
    /// writers that get in each other's way do so at nearly the same time.
    bool claim(const std::filesystem::path& file);
    /// Raises RuntimeException that says what to do if another writer has claimed the path.
    void require(const std::filesystem::path& file);
    /// The session is over: others may have the files.
    void release();

    /// What `require` raises.
    static constexpr const char* refusal =
        "Another media writer of this run writes the same file. Give each a FileName or a folder of its own.";
};

}  // namespace Plugin::NivexStageletPackageBase
