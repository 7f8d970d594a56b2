#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "tests/merge/RVGitRewritingTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

class RVGitMergeManagerRewritingStopsTest : public RVGitRewritingTestCase {};

TEST_F(RVGitMergeManagerRewritingStopsTest, AConflictIs2200AndIsResolvedOrAborted) {
    const std::vector<RVTestCommit> commits = {{"A\n", {{"f", "1\n"}}},
                                               {"B\n", {{"f", "2\n"}}},
                                               {"C\n", {{"f", "3\n"}}},
                                               {"D\n", {{"d", "d\n"}}}};
    const auto hashes = makeHistory(commits);
    const RVRepositorySnapshot before(repositoryPath());
    std::optional<RVError> error;
    ASSERT_FALSE(manager().deleteRevisions({hashes[1]}, &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRebaseConflictsError);
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRebase);
    EXPECT_EQ(manager().nextSequenceRevision(), hashes[2]);
    EXPECT_EQ(manager().nextSequenceStep(), 2u);
    EXPECT_EQ(manager().lastSequenceStep(), 3u);
    EXPECT_TRUE(manager().abortRebase());
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");

    EXPECT_FALSE(manager().deleteRevisions({hashes[1]}));
    writeFile("repository/f", "resolved\n");
    EXPECT_TRUE(manager().resolveUnmergedFileByAdding("f"));
    EXPECT_TRUE(manager().continueRebase());
    EXPECT_EQ(subjects(), "A C D");
    EXPECT_EQ(readFile("repository/f"), "resolved\n");
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
}

TEST_F(RVGitMergeManagerRewritingStopsTest, AGestureDuringARebaseLeavesItAlone) {
    const auto hashes = makeLetters(3);
    ASSERT_TRUE(manager().editRevision(hashes[1], true));
    const RVRepositorySnapshot before(repositoryPath());
    std::optional<RVError> error;
    EXPECT_FALSE(manager().deleteRevisions({hashes[1]}, &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRebaseCommand::rebaseInProgressErrorCode);
    EXPECT_FALSE(manager().editRevision(hashes[1], &error));
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeManagerRewritingStopsTest, AMergeInTheRangeStopsAndCanBeAborted) {
    const auto hashes = makeLetters(2);
    gitInRepository({"checkout", "-q", "-b", "side"});
    commitFile("repository", "s", "s\n", "S");
    gitInRepository({"checkout", "-q", "main"});
    commitFile("repository", "m", "m\n", "M");
    gitInRepository({"merge", "-q", "-m", "Merge", "side"});
    commitFile("repository", "z", "z\n", "Z");
    const RVRepositorySnapshot before(repositoryPath());
    const auto stops = [&](const auto& gesture) {
        std::optional<RVError> error;
        EXPECT_FALSE(gesture(&error));
        EXPECT_TRUE(error);
        if (manager().currentMergeMode() != RVGitMergeModeNone) {
            EXPECT_TRUE(manager().abortRebase());
        }
        EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
    };
    stops([&](RVErrorPlace e) { return manager().deleteRevisions({hashes[1]}, e); });
    stops([&](RVErrorPlace e) { return manager().setCommitMessage("New", hashes[1], e); });
    // Above the merge there is nothing to stop at.
    EXPECT_TRUE(manager().setCommitMessage("New", gitInRepository({"rev-parse", "HEAD"})));
    EXPECT_EQ(gitInRepository({"log", "-1", "--pretty=%s"}), "New");
}

TEST_F(RVGitMergeManagerRewritingStopsTest, ACommitToEditThatWasNotReachedIsNotTakenApart) {
    const auto hashes = makeHistory({{"A\n", {{"f", "1\n"}}}, {"B\n", {{"f", "2\n"}}}});
    const RVRepositorySnapshot before(repositoryPath());
    // A git that says that it has rebased, and has not.
    auto fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("rebase", {.exitCode = 0});
    EXPECT_FALSE(manager().editRevision(hashes[1]));
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeManagerRewritingStopsTest, AnEmptyMessageStopsAndCanBeAborted) {
    const auto hashes = makeLetters(3);
    const RVRepositorySnapshot before(repositoryPath());
    std::optional<RVError> error;
    EXPECT_FALSE(manager().setCommitMessage(" \n", hashes[1], &error));
    EXPECT_TRUE(error);
    EXPECT_NE(manager().currentMergeMode(), RVGitMergeModeNone);
    EXPECT_TRUE(manager().abortRebase());
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeManagerRewritingStopsTest, ASettingThatSpoilsGitsListFailsAndCanBeAborted) {
    RVGIT_TEST_NEEDS_GIT("2.20", "it does what the list says up to the line that is spoilt");
    const auto hashes = makeLetters(3);
    gitInRepository({"config", "rebase.instructionFormat", "%s%n pick x"});
    const RVRepositorySnapshot before(repositoryPath());
    EXPECT_THAT([&](RVErrorPlace error) { return manager().deleteRevisions({hashes[1]}, error); },
                failsWith(RVGitRVGitGenericError));
    if (manager().currentMergeMode() != RVGitMergeModeNone) {
        EXPECT_TRUE(manager().abortRebase());
    }
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeManagerRewritingStopsTest, WithoutAUsableKeyARewriteStopsAndCanBeAborted) {
    const auto hashes = makeLetters(3);
    gitInRepository({"config", "commit.gpgSign", "true"});
    gitInRepository({"config", "gpg.program", "false"});
    const RVRepositorySnapshot before(repositoryPath());
    std::optional<RVError> error;
    EXPECT_FALSE(manager().deleteRevisions({hashes[1]}, &error));
    ASSERT_TRUE(error);
    EXPECT_TRUE(manager().abortRebase());
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeManagerRewritingStopsTest, AHookThatRefusesLeavesEverything) {
    const auto hashes = makeLetters(3);
    writeFile("hooks/pre-rebase", "#!/bin/sh\necho no >&2\nexit 1\n", 0755);
    gitInRepository({"config", "core.hooksPath", scratchPath("hooks")});
    const RVRepositorySnapshot before(repositoryPath());
    EXPECT_THAT([&](RVErrorPlace error) { return manager().deleteRevisions({hashes[1]}, error); },
                failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

}  // namespace
