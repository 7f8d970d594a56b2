#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "tests/support/RVGitTestCase.h"

namespace {

using testing::ElementsAre;

/// How lists of paths are cut for command lines.
class RVGitCommandFilePathsTest : public RVGitTestCase {
protected:
    void TearDown() override { RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(4000); }

    /// Prints how many arguments it was given.
    std::shared_ptr<RVGitBinary> countingGit() const {
        return RVGitBinary::gitBinaryWithPath(writeFile(
            "counting/git",
            "#!/bin/sh\ncase \"$*\" in *--version*) echo git version 2.39.5; exit 0;; esac\n"
            "printf %s $#\n",
            0755));
    }

    void expectEveryBatchOfLongPathsToLaunch() {
        std::vector<std::string> paths;
        for (int number = 0; number < 4000; ++number)
            paths.push_back(std::to_string(number) + std::string(4000, 'x'));
        auto remaining = paths;
        std::vector<std::string> seen;
        bool exceeds = true;
        int batches = 0;
        while (exceeds) {
            const auto batch = RVGitCommand::filePathsForGitCommand(remaining, &exceeds);
            const auto command = RVGitCommand::gitCommandWithGitBinary(countingGit());
            command->addGitCommandArguments(batch);
            RVErrorPlace none = nullptr;
            ASSERT_TRUE(command->run(none));
            EXPECT_EQ(command->standardOutputString(), std::to_string(batch.size() + 1));
            seen.insert(seen.end(), batch.begin(), batch.end());
            if (exceeds)
                remaining = RVGitCommand::remainingFilePathsFromFilePaths(remaining);
            ++batches;
        }
        EXPECT_GT(batches, 1);
        EXPECT_EQ(seen, paths);
    }
};

TEST_F(RVGitCommandFilePathsTest, FilePathsAreCutAt4000) {
    bool exceeds = true;
    const std::vector<std::string> exactly(4000, "path");
    EXPECT_EQ(RVGitCommand::filePathsForGitCommand(exactly, &exceeds), exactly);
    EXPECT_FALSE(exceeds);
    std::vector<std::string> more = exactly;
    more.push_back("last");
    EXPECT_EQ(RVGitCommand::filePathsForGitCommand(more, &exceeds), exactly);
    EXPECT_TRUE(exceeds);
    EXPECT_THAT(RVGitCommand::remainingFilePathsFromFilePaths(more), ElementsAre("last"));
    EXPECT_TRUE(RVGitCommand::filePathsForGitCommand({}, &exceeds).empty());
    EXPECT_FALSE(exceeds);
}

TEST_F(RVGitCommandFilePathsTest, FilePathsAreCutAtTheMaximumThatIsSet) {
    ASSERT_EQ(RVGitCommand::maximumNumberOfAllowedFilePathArguments(), 4000u);
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(2);
    bool exceeds = false;
    EXPECT_THAT(RVGitCommand::filePathsForGitCommand({"a", "b", "c"}, &exceeds),
                ElementsAre("a", "b"));
    EXPECT_TRUE(exceeds);
    EXPECT_THAT(RVGitCommand::remainingFilePathsFromFilePaths({"a", "b", "c"}), ElementsAre("c"));
}

TEST_F(RVGitCommandFilePathsTest, OnePathAlwaysGoesSoThatAListComesToItsEnd) {
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(0);
    EXPECT_THAT(RVGitCommand::filePathsForGitCommand({"a", "b"}, nullptr), ElementsAre("a"));
    EXPECT_THAT(RVGitCommand::remainingFilePathsFromFilePaths({"a", "b"}), ElementsAre("b"));
}

TEST_F(RVGitCommandFilePathsTest, LongPathsAreCutEarlierSoThatEveryBatchLaunches) {
    expectEveryBatchOfLongPathsToLaunch();
}

TEST_F(RVGitCommandFilePathsTest, LongPathsAreCutWhereTheStackIsUnlimitedToo) {
    rlimit before;
    getrlimit(RLIMIT_STACK, &before);
    const rlimit unlimited{before.rlim_max, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_STACK, &unlimited), 0);
    expectEveryBatchOfLongPathsToLaunch();
    setrlimit(RLIMIT_STACK, &before);
}

TEST_F(RVGitCommandFilePathsTest, OnePathAlwaysGoesHoweverLong) {
    bool exceeds = true;
    const std::vector<std::string> huge = {std::string(100'000'000, 'x'), "next"};
    EXPECT_EQ(RVGitCommand::filePathsForGitCommand(huge, &exceeds).size(), 1u);
    EXPECT_TRUE(exceeds);
}

}  // namespace
