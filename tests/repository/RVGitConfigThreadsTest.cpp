#include "RVGit/repository/RVGitConfig.h"

#include <optional>
#include <string>

#include "RVGit/command/RVGitBinary.h"
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

}  // namespace
