#include <chrono>
#include <optional>
#include <string>
#include <thread>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

class RVGitConfigThreadsTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] RVGitConfig& config() { return *repository()->config(); }
};

TEST_F(RVGitConfigThreadsTest, ValuesThatWereNotReadWholeAreNone) {
    const std::string started = scratchPath("started");
    const std::string slowGit =
        writeFile("slow-git",
                  "#!/bin/sh\ncase \"$*\" in *--version*) echo git version 2.39.5; exit;; esac\n"
                  "printf 'branch.main.remote\\norigin\\0branch.main.mer'\n: >'" +
                      started + "'\nexec sleep 60\n",
                  0755);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(slowGit));
    std::thread canceller([&] {
        while (!fileExists(started))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        RVGitCommandQueue::sharedQueue().cancelAllCommands();
    });
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_EQ(config().wholeValuesForConfigKeyByRegularExpression("^branch.*", &error),
              std::nullopt);
    EXPECT_EQ(error, std::nullopt);
    canceller.join();

    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.exitCode = 1});
    error = RVError("before", 1);
    EXPECT_EQ(config().wholeValuesForConfigKeyByRegularExpression("^branch.*", &error),
              RVOptions());
    EXPECT_EQ(error, std::nullopt);
    fake.setAnswer({.standardError = "fatal: bad config line 1\n", .exitCode = 128});
    EXPECT_EQ(config().wholeValuesForConfigKeyByRegularExpression("^branch.*", &error),
              std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitConfigInvalidFileError);
}

}  // namespace
