#include "RVGit/repository/RVGitConfig.h"

#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/support/RVCanceller.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using namespace std::string_literals;

class RVGitConfigThreadsTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitConfigThreadsTest, ValuesThatACancelledCommandHasPrintedAreNone) {
    const auto config = RVGitConfig::repositoryConfigForRepository(repository());
    const RVHangingGit git = hangingGit("config", "branch.main.remote\norigin\0branch.main.mer"s);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git.path()));
    const RVCanceller canceller(git.begunPath());
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_EQ(config->wholeValuesForConfigKeyByRegularExpression("^branch.*", &error),
              std::nullopt);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitConfigThreadsTest, ValuesThatWereNotUnsetAreNotAddedTo) {
    gitInRepository({"config", "a.b", "old"});
    std::optional<RVError> error = RVError("before", 1);
    {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(),
                                        {"*' --unset-all '*"});
        EXPECT_FALSE(repository()->config()->setValues({"new", "newer"}, "a.b", &error));
    }
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(gitInRepository({"config", "--get-all", "a.b"}), "old");
}

TEST_F(RVGitConfigThreadsTest, BehindAValueThatWasNotAddedNoneIs) {
    const std::vector<std::string> values = {"one", "two", "three"};
    std::optional<RVError> error = RVError("before", 1);
    {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' --add '*", 1});
        EXPECT_FALSE(repository()->config()->addValues(values, "a.b", &error));
    }
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(gitInRepository({"config", "--get-all", "a.b"}), "one");
    // Whether it was written before it was cancelled is not known.
    {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(),
                                        {"*' --add '*", 2, "\"$GIT\" \"$@\""});
        EXPECT_FALSE(repository()->config()->setValues(values, "a.b", &error));
    }
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(gitInRepository({"config", "--get-all", "a.b"}), "one\ntwo\nthree");
}

}  // namespace
