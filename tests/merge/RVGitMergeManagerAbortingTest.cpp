#include "RVGit/merge/RVGitMergeManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "tests/merge/RVGitMergeManagerTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

using testing::HasSubstr;
using testing::Not;

/// After an abort all is as it was.
class RVGitMergeManagerAbortingTest : public RVGitMergeManagerTestCase {
protected:
    /// Starts it in a new place of each kind, and has it aborted: all is as it was.
    void expectAbortRestores(const std::string& branch, const std::function<void()>& start,
                             bool (RVGitMergeManager::*abort)(RVErrorPlace)) {
        for (const RVGitMergePlace place : allMergePlaces) {
            makePlace(place);
            SCOPED_TRACE(path());
            checkOut(branch);
            write("untracked", "kept\n");
            const RVRepositorySnapshot before(path());
            start();
            EXPECT_TRUE(manager().isMerging());
            expectSuccess([&](RVErrorPlace error) { return (manager().*abort)(error); });
            EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
            EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
        }
    }
};

TEST_F(RVGitMergeManagerAbortingTest, AbortedMerge) {
    expectAbortRestores(
        "main", [this] { stopMerge(); }, &RVGitMergeManager::abortMerge);
}

TEST_F(RVGitMergeManagerAbortingTest, AbortedMergeThatIsNotCommitted) {
    expectAbortRestores(
        "main",
        [this] {
            EXPECT_TRUE(manager().mergeWithRevision(
                "clean", RVOptions{{RVGitMergeOptionCommitChanges, false}}));
        },
        &RVGitMergeManager::abortCurrentOperation);
}

TEST_F(RVGitMergeManagerAbortingTest, AbortedSquash) {
    for (const char* revision : {"clean", "topic"})
        expectAbortRestores(
            "main",
            [&] {
                (void)manager().mergeWithRevision(revision,
                                                  RVOptions{{RVGitMergeOptionSquashCommits, true}});
            },
            &RVGitMergeManager::abortMerge);
}

TEST_F(RVGitMergeManagerAbortingTest, AbortedRebase) {
    expectAbortRestores(
        "topic", [this] { stopRebase(); }, &RVGitMergeManager::abortRebase);
    expectAbortRestores(
        "topic", [this] { stopRebaseByApplying(); }, &RVGitMergeManager::abortRebase);
}

// Git then says why, restores the files, forgets the rebase, and ends with 0.
TEST_F(RVGitMergeManagerAbortingTest, AnAbortOfARebaseThatLeavesHeadDetachedIsAFailure) {
    RVGIT_TEST_NEEDS_GIT("2.45", "it keeps refs in files alone");
    const std::string tables = scratchPath("tables");
    git({"init", "-q", "--ref-format=reftable", "-b", "main", tables});
    commitFile(tables, "file", "base\n", "Base");
    git({"checkout", "-q", "-b", "topic"}, tables);
    commitFile(tables, "file", "theirs\n", "Theirs");
    git({"checkout", "-q", "main"}, tables);
    commitFile(tables, "file", "ours\n", "Ours");
    git({"checkout", "-q", "topic"}, tables);
    EXPECT_NE(runGit({"rebase", "main"}, tables).exitCode, 0);
    const std::string lock = writeFile("tables/.git/reftable/tables.list.lock", "");
    const auto manager =
        RVGitMergeManager::mergeManagerWithRepository(RVGitRepository::repositoryWithPath(tables));
    std::optional<RVError> error;
    EXPECT_FALSE(manager->abortCurrentOperation(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
    EXPECT_THAT(error->userInfoString(RVGitCommandErrorOutputErrorKey),
                testing::Optional(HasSubstr("cannot lock references")));
    std::filesystem::remove(lock);
    EXPECT_NE(runGit({"symbolic-ref", "-q", "HEAD"}, tables).exitCode, 0);
}

TEST_F(RVGitMergeManagerAbortingTest, WhatGitSaysOfAnAbortCountsByWhereHeadIs) {
    stopRebase();
    RVFakeGit fake = fakeGit();
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
    fake.setAnswer("rebase", {.standardError = "error: update_ref failed for ref 'refs/heads/topic'"
                                               ": cannot lock references\n"});
    fake.passOtherCallsOn();
    EXPECT_THAT([&](RVErrorPlace error) { return manager().abortRebase(error); },
                failsWith(RVGitRVGitGenericError));
    // A lock of the branch alone, to which HEAD has gone back.
    gitHere({"symbolic-ref", "HEAD", "refs/heads/topic"});
    EXPECT_TRUE(manager().abortRebase());
}

TEST_F(RVGitMergeManagerAbortingTest, AbortedRebaseAtEachKindOfStop) {
    for (const char* list :
         {"pick %One\nedit %Two\npick %Three", "pick %One\nbreak\npick %Two",
          "pick %One\nexec false\npick %Two", "pick %Ours\nfixup %Two\npick %Three",
          "pick %Ours\nsquash %Two\npick %Three", "pick %Ours\nreword %Two",
          "pick %Ours\npick %Same"}) {
        SCOPED_TRACE(list);
        expectAbortRestores(
            "topic",
            [&] {
                setSequence(list);
                stopGit({"rebase", "-i", "Base"});
            },
            &RVGitMergeManager::abortCurrentOperation);
    }
}

TEST_F(RVGitMergeManagerAbortingTest, AbortedCherryPick) {
    expectAbortRestores(
        "main", [this] { stopCherryPick({"Two"}); }, &RVGitMergeManager::abortCherryPick);
    expectAbortRestores(
        "main", [this] { stopCherryPick({"Base..topic"}); },
        &RVGitMergeManager::abortCurrentOperation);
    // A step without changes.
    expectAbortRestores(
        "main",
        [this] {
            EXPECT_THAT(
                [&](RVErrorPlace error) {
                    return manager().cherryPickRevisions({"Clean", "Same", "After"}, std::nullopt,
                                                         error);
                },
                failsWith(RVGitRVGitGenericError));
        },
        &RVGitMergeManager::abortCherryPick);
}

TEST_F(RVGitMergeManagerAbortingTest, AbortedRevert) {
    expectAbortRestores(
        "later", [this] { stopRevert({"Early"}); }, &RVGitMergeManager::abortRevert);
    expectAbortRestores(
        "later",
        [this] {
            stopRevert({"Late", "Early"});
        },
        &RVGitMergeManager::abortCurrentOperation);
}

TEST_F(RVGitMergeManagerAbortingTest, ASquashIsAbortedWithoutAMerge) {
    EXPECT_TRUE(
        manager().mergeWithRevision("clean", RVOptions{{RVGitMergeOptionSquashCommits, true}}));
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeSquash);
    const auto recorder = record();
    EXPECT_TRUE(manager().abortMerge());
    for (const Words& line : recorder.argumentLists())
        EXPECT_THAT(line, Not(testing::Contains("merge")));
}

}  // namespace
