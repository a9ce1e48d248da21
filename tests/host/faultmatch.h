#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "faults.h"

namespace Host {

struct ExpectedFault
{
    std::size_t line;
    std::size_t column;
    std::string object;
    std::string part;  ///< Of the message.
};

/// Exactly these faults, in the order of the file.
inline void expectFaults(const FaultList& list, const std::vector<ExpectedFault>& expected)
{
    const auto faults = list.getFaults();
    EXPECT_EQ(faults.size(), expected.size()) << testing::PrintToString(list.toLines("file"));
    for (std::size_t i = 0; i < std::min(faults.size(), expected.size()); ++i) {
        SCOPED_TRACE(faults[i].message);
        EXPECT_EQ(faults[i].position, (TextPosition{expected[i].line, expected[i].column}))
            << "at " << faults[i].position.line << ":" << faults[i].position.column;
        EXPECT_EQ(faults[i].object, expected[i].object);
        EXPECT_THAT(faults[i].message, testing::HasSubstr(expected[i].part));
    }
}

}  // namespace Host
