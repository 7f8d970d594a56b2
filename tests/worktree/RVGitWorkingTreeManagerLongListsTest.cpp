#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/worktree/RVGitWorkingTreeManagerTestCase.h"

namespace {

class RVGitWorkingTreeManagerLongListsTest : public RVGitWorkingTreeManagerTestCase {
protected:
    /// Distinct paths of 200 bytes, sorted.
    [[nodiscard]] static Paths longPaths(int count) {
        Paths paths;
        for (int index = 0; index < count; ++index) {
            const std::string number = std::to_string(1'000'000 + index);
            std::string path = "d" + number.substr(1, 3) + "/" + number + " ";
            path.resize(200, 'x');
            paths.push_back(std::move(path));
        }
        return paths;
    }
    void writeAll(const Paths& paths, const std::string& prefix) const {
        for (const std::string& path : paths)
            write(path, prefix + path);
    }
    void expectContents(const Paths& paths, const std::string& prefix) const {
        std::size_t mismatches = 0;
        for (const std::string& path : paths)
            mismatches += read(path) != prefix + path;
        EXPECT_EQ(mismatches, 0U);
    }
    void expectIndex(const Paths& paths) const {
        // Not by a matcher, which would print every path of a list that differs.
        EXPECT_TRUE(records({"ls-files", "-z"}) == paths);
    }
    /// Longer than a path may be in the file system, but not on the command line.
    [[nodiscard]] static Paths hugePaths() {
        Paths paths;
        for (int index = 100; index < 160; ++index)
            paths.push_back(std::to_string(index) + std::string(100'000, 'x'));
        return paths;
    }
    /// The operation must pass huge paths in order, in several commands that all begin with the
    /// words.
    template <typename Operation>
    void expectBatches(const Operation& operation, const Paths& words) const {
        const Paths paths = hugePaths();
        const auto recorder = useDeafRecordingGit();
        EXPECT_TRUE(operation(paths));
        const auto lines = commandLines(recorder);
        EXPECT_GT(lines.size(), 1U);
        Paths arrived;
        for (const Paths& line : lines) {
            ASSERT_GT(line.size(), words.size());
            const auto behindWords = line.begin() + static_cast<std::ptrdiff_t>(words.size());
            EXPECT_EQ(Paths(line.begin(), behindWords), words);
            arrived.insert(arrived.end(), behindWords, line.end());
        }
        EXPECT_TRUE(arrived == paths);
    }
    void takeThroughRealGit(const Paths& paths) {
        writeAll(paths, "one ");
        EXPECT_TRUE(manager().stageFiles(paths));
        expectIndex(paths);
        EXPECT_TRUE(manager().unstageFiles(paths));
        expectIndex({});
        EXPECT_TRUE(manager().stageFiles(paths));
        git({"commit", "-q", "-m", "Message"}, repositoryPath());

        writeAll(paths, "two ");
        git({"add", "."}, repositoryPath());
        EXPECT_TRUE(manager().unstageFiles(paths));
        EXPECT_EQ(git({"diff", "--cached", "--name-only"}, repositoryPath()), "");
        EXPECT_EQ(records({"diff-files", "--name-only", "-z"}).size(), paths.size());
        expectContents(paths, "two ");

        EXPECT_TRUE(manager().revertFiles(paths));
        EXPECT_EQ(git({"status", "--porcelain"}, repositoryPath()), "");
        expectContents(paths, "one ");

        EXPECT_TRUE(manager().removeFiles(paths));
        expectIndex({});
        for (const std::string& path : paths)
            EXPECT_FALSE(exists(path));
    }
};

TEST_F(RVGitWorkingTreeManagerLongListsTest, AHundredThousandPathsArriveInOrder) {
    using Manager = RVGitWorkingTreeManager;
    using Operation = bool (Manager::*)(const Paths&, RVErrorPlace);
    const Paths paths = longPaths(100'000);
    const auto recorder = useDeafRecordingGit();
    for (const Operation operation : {Operation(&Manager::stageFiles), &Manager::unstageFiles,
                                      Operation(&Manager::revertFiles), &Manager::removeFiles}) {
        recorder.clear();
        EXPECT_TRUE((manager().*operation)(paths, nullptr));
        Paths arrived;
        const auto lines = commandLines(recorder);
        EXPECT_EQ(lines.size(), 25U);
        for (const Paths& line : lines) {
            const auto word = std::find(line.begin(), line.end(), "--");
            ASSERT_NE(word, line.end());
            arrived.insert(arrived.end(), word + 1, line.end());
        }
        EXPECT_TRUE(arrived == paths);
    }
}

TEST_F(RVGitWorkingTreeManagerLongListsTest, ThreeBatchesPassThroughRealGit) {
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(250);
    takeThroughRealGit(longPaths(600));
}

TEST_F(RVGitWorkingTreeManagerLongListsTest, AHundredThousandPathsPassThroughRealGit) {
    if (!std::getenv("RVGIT_TEST_LONG_LISTS"))
        GTEST_SKIP() << "takes about half an hour, nearly all of it in git, which compares every "
                        "path with every file; set RVGIT_TEST_LONG_LISTS to run it";
    takeThroughRealGit(longPaths(100'000));
}

TEST_F(RVGitWorkingTreeManagerLongListsTest, PathsThatExceedABatchInBytesAreCutEarlier) {
    expectBatches([&](const Paths& paths) { return manager().unstageFiles(paths); },
                  {"reset", "-q", "HEAD", "--"});
}

TEST_F(RVGitWorkingTreeManagerLongListsTest, ACutInBytesLeavesOptionsAndRevisionInForce) {
    expectBatches([&](const Paths& paths) { return manager().revertFiles(paths, "v1"); },
                  {"checkout", "v1", "--"});
    expectBatches(
        [&](const Paths& paths) { return manager().stageFiles(paths, RVGitStageOptionForce); },
        {"add", "--all", "-f", "--"});
}

TEST_F(RVGitWorkingTreeManagerLongListsTest, ACutInBytesDoesNotShiftTheSlices) {
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(40);
    const Paths paths = hugePaths();
    const auto recorder = useDeafRecordingGit();
    EXPECT_TRUE(manager().revertFiles(paths, "v1"));
    std::size_t countOfFirstSlice = 0, count = 0;
    for (const Paths& line : commandLines(recorder)) {
        count += line.size() - 3;
        if (line[1] == "v1")
            countOfFirstSlice += line.size() - 3;
    }
    EXPECT_EQ(countOfFirstSlice, 40U);
    EXPECT_EQ(count, paths.size());
}

}  // namespace
