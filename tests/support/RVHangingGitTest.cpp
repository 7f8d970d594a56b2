#include "tests/support/RVHangingGit.h"

#include <gtest/gtest-spi.h>
#include <signal.h>

#include <chrono>
#include <optional>
#include <thread>

#include "tests/support/RVGitTestCase.h"

namespace {

class RVHangingGitTest : public RVGitTestCase {};

TEST_F(RVHangingGitTest, OneCallHangsAndAllOthersAreTheRealGits) {
    const std::string output("half\0a", 6);
    const RVHangingGit git = hangingGit("config user.name", output);
    EXPECT_EQ(runProgram({git.path(), "--version", "config", "user.name"}).standardOutput,
              this->git({"--version"}));
    EXPECT_EQ(runProgram({git.path(), "config", "--get", "user.name"}).standardOutput,
              std::string(userName) + "\n");
    EXPECT_FALSE(fileExists(git.begunPath()));
    EXPECT_EQ(runProgram({"/bin/sh", "-c",
                          "\"$0\" -c a.b=c config user.name & pid=$!; " + git.waitingCommand() +
                              "; kill $pid; wait $pid; echo $?",
                          git.path()})
                  .standardOutput,
              output + "143\n");
    EXPECT_TRUE(git.waitUntilBegun());
    EXPECT_TRUE(git.ends());
    EXPECT_EQ(runProgram({git.path(), "config", "user.name"}).standardOutput,
              std::string(userName) + "\n");
}

TEST_F(RVHangingGitTest, WithoutWordsTheFirstCallHangs) {
    const RVHangingGit git = hangingGit("");
    EXPECT_EQ(runProgram({git.path(), "--version"}).exitCode, 0);
    EXPECT_EQ(
        runProgram({"/bin/sh", "-c",
                    "\"$0\" & pid=$!; " + git.waitingCommand() + "; kill $pid; wait $pid; echo $?",
                    git.path()})
            .standardOutput,
        "143\n");
}

TEST_F(RVHangingGitTest, ALaterCallHangsBehindWhatItWasAskedFor) {
    const RVHangingGit git(scratchPath("hanging-git"), gitPath(),
                           {"*' config user.name '*", 1, "\"$GIT\" \"$@\""});
    const std::string name = std::string(userName) + "\n";
    EXPECT_EQ(runProgram({git.path(), "config", "user.name"}).standardOutput, name);
    EXPECT_FALSE(fileExists(git.begunPath()));
    EXPECT_EQ(runProgram({"/bin/sh", "-c",
                          "\"$0\" config user.name & pid=$!; " + git.waitingCommand() +
                              "; kill $pid; wait $pid; echo $?",
                          git.path()})
                  .standardOutput,
              name + "143\n");
    EXPECT_EQ(runProgram({git.path(), "config", "user.name"}).standardOutput, name);
    EXPECT_EQ(git.numberOfCalls(), 3);
}

TEST_F(RVHangingGitTest, ATestInWhichNothingHangsFails) {
    std::optional<RVHangingGit> git;
    git.emplace(scratchPath("hanging-git"), gitPath(), RVHangingGit::Call::withWords("log"));
    EXPECT_EQ(runProgram({git->path(), "show", "logs"}).exitCode, 128);
    EXPECT_NONFATAL_FAILURE(git.reset(), "git has not been called with *' log '*");
}

TEST_F(RVHangingGitTest, ATestThatLeavesItHangingFails) {
    std::optional<RVHangingGit> git;
    git.emplace(scratchPath("hanging-git"), gitPath(), RVHangingGit::Call::withWords("log"));
    const auto result = runProgram(
        {"/bin/sh", "-c", "\"$0\" log >/dev/null 2>&1 & " + git->waitingCommand() + "; echo $!",
         git->path()});
    EXPECT_NONFATAL_FAILURE(git.reset(), "still hangs");
    const pid_t hanging = std::stoi(result.standardOutput);
    for (int count = 0; count < 3000 && kill(hanging, 0) == 0; ++count)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_NE(kill(hanging, 0), 0);
}

}  // namespace
