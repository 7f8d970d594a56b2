#include "tests/support/RVPorcelainStatus.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace std::string_literals;

/// A record of the path "a".
std::string record(const std::string& letters) {
    const std::string hash(40, '1');
    return "1 " + letters + " N... 100644 100644 100644 " + hash + " " + hash + " a\0"s;
}

TEST(RVPorcelainStatusTest, ADeletedFileThatIsLeftOverIsOnePath) {
    for (const char letter : {'?', '!'}) {
        const auto statuses = porcelainStatusesByPath(record("D.") + letter + " a\0"s);
        ASSERT_EQ(statuses.size(), 1u);
        EXPECT_EQ(statuses.at("a").left, 'D');
        EXPECT_EQ(statuses.at("a").right, letter);
        EXPECT_EQ(statuses.at("a").hashes.size(), 2u);
    }
}

TEST(RVPorcelainStatusTest, AnyOtherPathThatComesTwiceIsAnError) {
    for (const std::string& output :
         {record(".M") + "? a\0"s, record(".D") + "? a\0"s, record("D.") + record(".M"),
          "? a\0? a\0"s, "? a\0"s + record("D.")})
        EXPECT_THROW((void)porcelainStatusesByPath(output), std::runtime_error) << output;
}

}  // namespace
