#include "RVGit/command/RVGitRevisionArguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitCommand.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitFormatPatchCommand.h"
#include "RVGit/history/RVGitRevListCommand.h"
#include "RVGit/history/RVGitShortlogCommand.h"
#include "RVGit/merge/RVGitDiffToolCommand.h"
#include "RVGit/repository/RVGitRefLogCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitResetCommand.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using Words = std::vector<std::string>;

/// Revisions whose names are those of files, too.
class RVGitRevisionArgumentsTest : public RVGitRepositoryTestCase {
protected:
    void makeFile(const std::string& name) const { writeFile(repositoryPath() + "/" + name, "x"); }
    [[nodiscard]] Words separated(const Words& revisions) const {
        const auto command = RVGitCommand::gitCommandWithRepository(repository());
        command->addGitCommandArguments(revisions);
        separateRevisionsFromFiles(*command);
        return command->gitCommandArguments();
    }
};

TEST_F(RVGitRevisionArgumentsTest, OnlyTheNameOfAFileChangesTheLine) {
    for (const Words& revisions :
         {Words{}, Words{""}, Words{"HEAD"}, Words{"a", "b"}, Words{"^HEAD"}, Words{":/fix"}})
        EXPECT_EQ(separated(revisions), revisions);
    for (const char* name : {"HEAD", "a..b", "fix", "dir/topic"})
        makeFile(name);
    ASSERT_EQ(symlink("nowhere", (repositoryPath() + "/link").c_str()), 0);
    EXPECT_THAT(separated({"x", "HEAD"}), ElementsAre("x", "HEAD", "--"));
    EXPECT_THAT(separated({"HEAD", "HEAD"}), ElementsAre("HEAD", "HEAD", "--"));
    for (const char* revision : {"^HEAD", "a..b", ":/fix", "dir/topic", "dir", "link"})
        EXPECT_THAT(separated({revision}), ElementsAre(revision, "--"));
    for (const char* revision : {"HEAD^", "b", "x:HEAD", "head", ":/", "^"})
        EXPECT_THAT(separated({revision}), ElementsAre(revision));
}

TEST_F(RVGitRevisionArgumentsTest, WithoutAWorkingTreeGitLooksAtNoFile) {
    const auto bare = RVGitRepository::repositoryWithPath(initBareRepository());
    const auto command = RVGitCommand::gitCommandWithRepository(bare);
    command->addGitCommandArgument("HEAD");
    separateRevisionsFromFiles(*command);
    EXPECT_THAT(command->gitCommandArguments(), ElementsAre("HEAD"));
}

TEST_F(RVGitRevisionArgumentsTest, TheCommandsFindTheRevision) {
    makeCommit();
    makeCommit();
    makeFile("HEAD");
    makeFile("HEAD^");
    const auto recorder = useRecordingGit();

    const auto list = RVGitRevListCommand::gitRevListCommandWithRepository(
        repository(), RVOptions{{RVGitRevListOptionMaxCount, 1}});
    list->setRevisions({"HEAD"});
    EXPECT_TRUE(list->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("rev-list", "-1", "HEAD", "--"));

    const std::string parent = gitInRepository({"rev-parse", "HEAD^"});
    EXPECT_TRUE(RVGitResetCommand::gitResetCommandWithRepository(repository(), RVGitResetModeNone,
                                                                 "HEAD^", std::nullopt)
                    ->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("reset", "-q", "HEAD^", "--"));
    EXPECT_EQ(gitInRepository({"rev-parse", "HEAD"}), parent);
    // Paths bring a separator of their own.
    EXPECT_TRUE(RVGitResetCommand::gitResetCommandWithRepository(
                    repository(), RVGitResetModeNone, "HEAD", std::vector<std::string>{"HEAD"})
                    ->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("reset", "-q", "HEAD", "--", "HEAD"));

    const auto tool = RVGitDiffToolCommand::gitDiffToolCommandWithRepository(repository());
    tool->setDiffToolName("none");
    tool->setRevisions(Words{"HEAD"});
    (void)tool->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("difftool", "--no-prompt", "--no-symlinks",
                                                     "--tool=none", "HEAD", "--"));
}

TEST_F(RVGitRevisionArgumentsTest, HistoriesAndComparisonsFindTheRevision) {
    makeCommit("One");
    makeCommit("Two");
    makeFile("HEAD");
    makeFile("HEAD^");
    change();
    const auto recorder = useRecordingGit();
    std::optional<RVError> error;
    const auto differences = RVGitDiff::allDiffsByComparingRevisions(
        Words{"HEAD"}, Words(), repository(), std::nullopt, &error);
    EXPECT_FALSE(error);
    ASSERT_TRUE(differences);
    EXPECT_EQ(differences->size(), 1u);
    EXPECT_EQ(lastArguments(recorder).back(), "--");

    EXPECT_TRUE(
        RVGitShortlogCommand::gitShortlogCommandWithRepository(repository(), "HEAD")->run());
    EXPECT_EQ(lastArguments(recorder).back(), "--");

    EXPECT_TRUE(
        RVGitRefLogCommand::gitRefLogCommandWithRepository(repository(), "HEAD", std::nullopt)
            ->run());
    EXPECT_EQ(lastArguments(recorder).back(), "--");

    const auto patch = std::make_shared<RVGitFormatPatchCommand>(repository(), "HEAD^");
    EXPECT_TRUE(patch->run());
    EXPECT_EQ(lastArguments(recorder).back(), "--");
}

TEST_F(RVGitRevisionArgumentsTest, AFileIsNotTakenForARevision) {
    makeCommit();
    makeFile("topic");
    gitInRepository({"add", "topic"});
    EXPECT_FALSE(RVGitResetCommand::gitResetCommandWithRepository(repository(), RVGitResetModeNone,
                                                                  "topic", std::nullopt)
                     ->run());
    EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "A  topic");
}

}  // namespace
