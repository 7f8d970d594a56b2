#include "tests/support/RVTestRights.h"

#include <gtest/gtest-spi.h>

#include <vector>

#include "tests/support/RVGitTestCase.h"

namespace {

class RVTestRightsTest : public RVGitTestCase {
protected:
    /// What becomes of a test that has the rights or not.
    static std::vector<testing::TestPartResult> resultsWith(bool areGiven) {
        testing::TestPartResultArray results;
        {
            const testing::ScopedFakeTestPartResultReporter reporter(
                testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
            [areGiven] { RVGIT_TEST_NEEDS_RIGHTS(areGiven, "nothing can be done"); }();
        }
        std::vector<testing::TestPartResult> copies;
        for (int index = 0; index < results.size(); ++index)
            copies.push_back(results.GetTestPartResult(index));
        return copies;
    }
};

TEST_F(RVTestRightsTest, WithThemTheTestGoesOn) {
    for (const char* value : {"1", "0"}) {
        setEnvironmentVariable("RVGIT_TEST_EXPECT_RIGHTS", value);
        EXPECT_EQ(resultsWith(true).size(), 0U);
    }
}

TEST_F(RVTestRightsTest, WithoutThemItIsSkipped) {
    for (const std::optional<std::string>& value :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional<std::string>("0")}) {
        setEnvironmentVariable("RVGIT_TEST_EXPECT_RIGHTS", value);
        const auto results = resultsWith(false);
        ASSERT_EQ(results.size(), 1U);
        EXPECT_TRUE(results[0].skipped());
    }
}

TEST_F(RVTestRightsTest, WithoutThemItFailsWhereTheyAreExpected) {
    setEnvironmentVariable("RVGIT_TEST_EXPECT_RIGHTS", "1");
    const auto results = resultsWith(false);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_TRUE(results[0].fatally_failed());
    EXPECT_NE(std::string(results[0].message()).find("nothing can be done"), std::string::npos);
}

}  // namespace
