#include "RVGit/merge/RVGitMergeManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "tests/merge/RVGitMergeManagerTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

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
