#include "RVGit/repository/RVGitConfig.h"

#include <optional>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "tests/support/RVCanceller.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

class RVGitConfigThreadsTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitConfigThreadsTest, ValuesThatACancelledCommandHasPrintedAreNone) {
    const auto config = RVGitConfig::repositoryConfigForRepository(repository());
    const std::string started = scratchPath("started");
    const std::string slowGit =
        writeFile("slow-git",
                  "#!/bin/sh\ncase \"$*\" in *--version*) echo git version 2.39.5; exit;; esac\n"
                  "printf 'branch.main.remote\\norigin\\0branch.main.mer'\n: >'" +
                      started + "'\nexec sleep 60\n",
                  0755);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(slowGit));
    const RVCanceller canceller(started);
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_EQ(config->wholeValuesForConfigKeyByRegularExpression("^branch.*", &error),
              std::nullopt);
    EXPECT_EQ(error, std::nullopt);
}

}  // namespace
