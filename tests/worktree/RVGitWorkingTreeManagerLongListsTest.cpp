#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
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
        EXPECT_EQ(records({"diff", "--name-only", "-z"}).size(), paths.size());
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
    // Git itself needs minutes for so many.
    const RVRecordingGit recorder(scratchPath("deaf-git"), "/bin/true");
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(recorder.path()));
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

// Takes half an hour, nearly all of it in git, which compares every path with every file.
TEST_F(RVGitWorkingTreeManagerLongListsTest, DISABLED_AHundredThousandPathsPassThroughRealGit) {
    takeThroughRealGit(longPaths(100'000));
}

TEST_F(RVGitWorkingTreeManagerLongListsTest, PathsThatExceedABatchInBytesAreCutEarlier) {
    // Longer than a path may be in the file system, but not on the command line.
    const Paths paths(60, std::string(100'000, 'x'));
    const RVRecordingGit recorder(scratchPath("deaf-git"), "/bin/true");
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(recorder.path()));
    recorder.clear();
    EXPECT_TRUE(manager().unstageFiles(paths));
    std::size_t count = 0;
    const auto lines = commandLines(recorder);
    EXPECT_GT(lines.size(), 1U);
    for (const Paths& line : lines)
        count += line.size() - 4;
    EXPECT_EQ(count, paths.size());
}

}  // namespace
