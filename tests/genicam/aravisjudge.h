#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "genapi/genapi.h"

// An independent runtime reads the same description over the same bytes, and is asked what ours is asked.
namespace GenApiTest {

/// What a reader says about a node: "value", "min", "max", "inc", "access", "unit" and so on, each as text;
/// "raised" where it gives an error instead.
using Facts = std::map<std::string, std::string>;

/// What our runtime says. Values, limits and bytes only of nodes that it calls readable.
Facts FactsOf(GenApi::INode& node);

/// A difference that is known and wanted: what Aravis says of the node, where we say something else. Each of the
/// three may be "*".
struct Exemption
{
    std::string node;
    std::string aspect;
    std::string theirs;
    std::string reason;
};

/// Aravis as a reader of a register description.
///
///     AravisJudge judge(text, device);
///     for (const std::string& line : judge.Compare(*map, exemptions)) ADD_FAILURE() << line;
class AravisJudge
{
public:
    /// All ports of the description but those of chunks and events read from and write to `device`, which must
    /// outlive the judge. std::runtime_error for a description that Aravis cannot read.
    AravisJudge(const std::string& description, GenApi::IPort& device);
    ~AravisJudge();

    /// What Aravis says of the aspects in `asked`; "absent" for all if it does not know the node.
    Facts Answers(GenApi::INode& node, const Facts& asked) const;
    /// One line for each difference over all nodes of the map that no exemption names, and one for each exemption
    /// that no difference needs.
    std::vector<std::string> Compare(const GenApi::INodeMap& map, const std::vector<Exemption>& exemptions) const;
    /// Writes a node by text; false if Aravis raises an error.
    bool Write(const std::string& name, const std::string& text) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// The camera that Aravis emulates, with the description and the registers that its makers gave it.
class AravisFakeCamera : public GenApi::CPortImpl
{
public:
    AravisFakeCamera();
    ~AravisFakeCamera() override;

    std::string Description() const;
    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void* buffer, int64_t address, int64_t length) override;
    void Write(const void* buffer, int64_t address, int64_t length) override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace GenApiTest
