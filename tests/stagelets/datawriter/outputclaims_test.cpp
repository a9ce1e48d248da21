// Media writers whose files would have the same names.
#include <gtest/gtest.h>

#include "core/integer.h"
#include "datawritertest.h"

namespace DataWriterTest {
namespace {

using Core::LossCause;
using Nivex::EPixelType;

TEST(OutputClaims, KeepWritersFromEachOthersFiles)
{
    const struct
    {
        const char *type, *scope, *mode;
        std::set<std::string> files;
        int lost;
    } cases[] = {
        {"PNG", "Record", "Create", {"same.png"}, 1}, {"PNG", "Record", "Append", {"same.png"}, 1},
        {"TXT", "Session", "Create", {"same"}, 1},    {"TXT", "Record", "CreateThenAppend", {"same"}, 1},
        {"TXT", "Session", "Append", {"same"}, 0},    {"MP4", "Record", "Create", {"same.mp4"}, 1},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(std::string(row.type) + " " + row.mode);
        const TemporaryFolder folder;
        CountingHost host;
        DataWriter first(nullptr);
        DataWriter second(nullptr);
        for (DataWriter* node : {&first, &second}) {
            node->attachHost(&host);
            Parameters parameters(*node);
            for (const auto& [name, value] : {std::pair{"OutputFolderName", folder.path().c_str()},
                                              {"SessionFolderName", ""},
                                              {"MediaType", row.type},
                                              {"FileScope", row.scope},
                                              {"FileMode", row.mode},
                                              {"FileName", "same"}})
                parameters.set(name, value);
        }
        const auto update =
            std::string(row.type) == "TXT" ? onPin1(Core::Integer(1)) : onPin1(image(EPixelType::Mono8));
        // With the end of their sessions others may have the files, so each round is like the first.
        for (int round = 1; round <= 2; ++round) {
            for (DataWriter* node : {&first, &second})
                node->start({});
            for (DataWriter* node : {&first, &second})
                runUpdate(*node, update);
            for (DataWriter* node : {&second, &first})
                node->stop();
            EXPECT_EQ(host.lost[LossCause::FileNotWritten], round * row.lost);
            EXPECT_EQ(folder.entries(), row.files);
        }
    }
}

}  // namespace
}  // namespace DataWriterTest
