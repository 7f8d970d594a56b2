#include "RVGit/merge/RVGitMergeManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "tests/merge/RVGitMergeManagerTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVFailureCode.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace fs = std::filesystem;

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::StartsWith;

class RVGitMergeManagerContinuingTest : public RVGitMergeManagerTestCase {};

// To the end.

TEST_F(RVGitMergeManagerContinuingTest, AMergeGoesOnByACommit) {
    for (const RVGitMergePlace place : allMergePlaces) {
        makePlace(place);
        stopMerge();
        EXPECT_EQ(manager().mergedRevision(), hash("topic"));
        EXPECT_NE(unmerged(), "");
        resolve("both\n");
        EXPECT_EQ(unmerged(), "");
        expectSuccess(
            [&](RVErrorPlace error) { return manager().continueCurrentOperation(error); });
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
        // As git would have it after its editor: without the comments.
        if (place == RVGitMergePlace::DetachedHead) {
            EXPECT_EQ(message(), "Merge branch 'topic' into HEAD");
        } else {
            EXPECT_THAT(message(), isTitleOfMerge("topic"));
        }
        EXPECT_EQ(hash("HEAD^2"), hash("topic"));
        EXPECT_EQ(gitHere({"show", "HEAD:file"}), "both");
    }
}

TEST_F(RVGitMergeManagerContinuingTest, AMergeGoesOnWithAMessage) {
    stopMerge();
    resolve("both\n");
    expectSuccess([&](RVErrorPlace error) {
        return manager().continueCurrentOperationWithCommitMessage("My \"merge\"\n\n# kept\n",
                                                                   error);
    });
    EXPECT_EQ(message(), "My \"merge\"\n\n# kept");
    EXPECT_EQ(hash("HEAD^2"), hash("topic"));
}

TEST_F(RVGitMergeManagerContinuingTest, ASquashGoesOnByACommit) {
    (void)manager().mergeWithRevision("topic", RVOptions{{RVGitMergeOptionSquashCommits, true}});
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeSquash);
    resolve("both\n");
    expectSuccess([&](RVErrorPlace error) { return manager().continueCurrentOperation(error); });
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
    EXPECT_THAT(message(), StartsWith("Squashed commit of the following:"));
    EXPECT_EQ(gitHere({"rev-list", "--count", "Ours..HEAD"}), "1");
}

TEST_F(RVGitMergeManagerContinuingTest, GoingOnWithConflictsIsAFailureThatChangesNothing) {
    stopMerge();
    const RVRepositorySnapshot before(path());
    EXPECT_GT(codeOf([&](RVErrorPlace e) { return manager().continueCurrentOperation(e); }), 0);
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    EXPECT_TRUE(manager().abortMerge());
    stopCherryPick({"Two"});
    const RVRepositorySnapshot picking(path());
    EXPECT_GT(codeOf([&](RVErrorPlace e) { return manager().continueCherryPick(e); }), 0);
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(picking), "");
    EXPECT_TRUE(manager().abortCherryPick());
    stopRebase();
    const RVRepositorySnapshot rebasing(path());
    EXPECT_THAT([&](RVErrorPlace e) { return manager().continueRebase(e); },
                failsWith(RVGitRebaseUnmergedChangesError));
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(rebasing), "");
}

TEST_F(RVGitMergeManagerContinuingTest, ARebaseFromStartToEnd) {
    for (const RVGitMergePlace place : allMergePlaces) {
        for (const bool usesApply : {false, true}) {
            makePlace(place);
            SCOPED_TRACE(path());
            checkOut("topic");
            if (usesApply)
                stopRebaseByApplying();
            else
                stopRebase();
            EXPECT_EQ(manager().usesRebaseApplyBackend(), usesApply);
            EXPECT_EQ(manager().nextSequenceStep(), 2u);
            EXPECT_EQ(manager().nextSequenceRevision(), hash("Two"));
            resolve("two and ours\n");
            // The next stop is at Four.
            EXPECT_THAT([&](RVErrorPlace e) { return manager().continueRebase(e); },
                        failsWith(RVGitRebaseConflictsError));
            EXPECT_EQ(manager().nextSequenceStep(), 4u);
            EXPECT_EQ(manager().lastSequenceStep(), 4u);
            EXPECT_EQ(manager().originalRefName(), refName("topic"));
            resolve("four and ours\n");
            // Several lines, a line with the comment's character, quotes.
            const std::string text = "It's \"four\" $HOME `now` \\\n\n# stays?\nend";
            expectSuccess(
                [&](RVErrorPlace e) { return manager().continueRebaseWithCommitMessage(text, e); });
            EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
            EXPECT_THAT(subjects(5),
                        ElementsAre("It's \"four\" $HOME `now` \\", "Three", "Two", "One", "Ours"));
            // What comes out of an editor is stripped of comments; the apply backend opens none.
            EXPECT_EQ(message(), usesApply ? text : "It's \"four\" $HOME `now` \\\n\nend");
            EXPECT_EQ(gitHere({"log", "-1", "--format=%an"}), "An Author");
            EXPECT_EQ(read("file"), "four and ours\n");
        }
    }
}

TEST_F(RVGitMergeManagerContinuingTest, SkippedSteps) {
    RVGIT_TEST_NEEDS_GIT("2.23", "it cannot skip a step of a cherry-pick or a revert");
    for (const RVGitMergePlace place : allMergePlaces) {
        makePlace(place);
        SCOPED_TRACE(path());
        stopRebase();
        // Without Two, Four conflicts as well.
        EXPECT_THAT([&](RVErrorPlace e) { return manager().skipCurrentOperation(e); },
                    failsWith(RVGitRebaseConflictsError));
        EXPECT_EQ(manager().nextSequenceStep(), 4u);
        expectSuccess([&](RVErrorPlace e) { return manager().skipRebase(e); });
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
        EXPECT_THAT(subjects(3), ElementsAre("Three", "One", "Ours"));

        checkOut("main");
        stopCherryPick({"Two", "Clean"});
        expectSuccess([&](RVErrorPlace e) { return manager().skipCurrentOperation(e); });
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
        EXPECT_THAT(subjects(2), ElementsAre("Clean", "Ours"));

        checkOut("later");
        stopRevert({"Early", "Late"});
        expectSuccess([&](RVErrorPlace e) { return manager().skipRevert(e); });
        EXPECT_THAT(subjects(2), ElementsAre("Revert \"Late\"", "Late"));
    }
}

TEST_F(RVGitMergeManagerContinuingTest, ACherryPickAndARevertFromStartToEnd) {
    for (const bool givesMessage : {false, true}) {
        for (const RVGitMergePlace place : allMergePlaces) {
            makePlace(place);
            SCOPED_TRACE(path());
            const auto text = givesMessage ? std::optional("Mine\n\nSecond\n"s) : std::nullopt;
            stopCherryPick({"One", "Two", "Clean"});
            EXPECT_EQ(manager().lastSequenceStep(), 2u);
            resolve("two and ours\n");
            expectSuccess([&](RVErrorPlace e) {
                return manager().continueCherryPickWithCommitMessage(text, e);
            });
            EXPECT_THAT(subjects(4),
                        ElementsAre("Clean", givesMessage ? "Mine" : "Two", "One", "Ours"));
            EXPECT_EQ(gitHere({"log", "-1", "--format=%B", "HEAD^"}),
                      givesMessage ? "Mine\n\nSecond" : "Two");
            EXPECT_EQ(gitHere({"log", "-1", "--format=%an", "HEAD^"}), "An Author");

            checkOut("later");
            stopRevert({"Late", "Early"});
            resolve("not early\n");
            expectSuccess(
                [&](RVErrorPlace e) { return manager().continueRevertWithCommitMessage(text, e); });
            EXPECT_THAT(subjects(2),
                        ElementsAre(givesMessage ? "Mine" : "Revert \"Early\"", "Revert \"Late\""));
            EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);

            // Of one commit, and by the mode.
            checkOut("main");
            stopCherryPick({"Three", "Four"});
            resolve("four\n");
            expectSuccess([&](RVErrorPlace e) {
                return manager().continueCurrentOperationWithCommitMessage(text, e);
            });
            EXPECT_EQ(subjects(1).front(), givesMessage ? "Mine" : "Four");
        }
    }
}

TEST_F(RVGitMergeManagerContinuingTest, QuittingForgetsTheRestAndKeepsTheFiles) {
    stopCherryPick({"Base..topic"});
    const RVRepositorySnapshot before(path());
    expectSuccess([&](RVErrorPlace e) { return manager().quitCherryPick(e); });
    EXPECT_EQ(manager().nextSequenceRevision(), std::nullopt);
    RVRepositorySnapshot after(path());
    after.stateFiles = before.stateFiles;
    EXPECT_EQ(after.differencesFrom(before), "");
    EXPECT_FALSE(fs::exists(gitFile("sequencer")));

    makePlace(RVGitMergePlace::LinkedWorktree);
    checkOut("later");
    stopRevert({"Late", "Early", "Middle"});
    expectSuccess([&](RVErrorPlace e) { return manager().quitRevert(e); });
    EXPECT_FALSE(fs::exists(gitFile("sequencer")));
    EXPECT_EQ(subjects(1).front(), "Revert \"Late\"");
}

// Steps without changes.

TEST_F(RVGitMergeManagerContinuingTest, AnEmptyStepOfARebaseIsCommitted) {
    for (const RVGitMergePlace place : allMergePlaces) {
        makePlace(place);
        SCOPED_TRACE(path());
        setSequence("pick %One\npick %Same\npick %Three");
        checkOut("topic");
        stopGit({"rebase", "-i", "main"});
        expectSuccess([&](RVErrorPlace e) {
            return manager().continueEmptyRebaseWithCommitMessage("Empty \"$HOME\"\n\nbody", e);
        });
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
        EXPECT_THAT(subjects(4), ElementsAre("Three", "Empty \"$HOME\"", "One", "Ours"));
        EXPECT_EQ(gitHere({"log", "-1", "--format=%an%n%B", "HEAD^"}),
                  "An Author\nEmpty \"$HOME\"\n\nbody");
        EXPECT_EQ(hash("HEAD^^{tree}"), hash("HEAD^^^{tree}"));
    }
}

TEST_F(RVGitMergeManagerContinuingTest, AnEmptyStepOfASequenceIsCommitted) {
    for (const RVGitMergePlace place : allMergePlaces) {
        makePlace(place);
        SCOPED_TRACE(path());
        EXPECT_FALSE(manager().cherryPickRevisions({"Clean", "Same", "After"}, std::nullopt));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeCherryPick);
        expectSuccess([&](RVErrorPlace e) {
            return manager().continueEmptyCherryPickWithCommitMessage("Empty", e);
        });
        EXPECT_THAT(subjects(4), ElementsAre("After", "Empty", "Clean", "Ours"));
        EXPECT_EQ(gitHere({"log", "-1", "--format=%an", "HEAD^"}), "An Author");

        checkOut("later");
        gitHere({"revert", "--no-edit", "Late"});
        EXPECT_FALSE(manager().revertRevisions({"Late", "Middle"}, std::nullopt));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRevert);
        expectSuccess([&](RVErrorPlace e) {
            return manager().continueEmptyRevertWithCommitMessage("Empty revert", e);
        });
        EXPECT_THAT(subjects(3),
                    ElementsAre("Revert \"Middle\"", "Empty revert", "Revert \"Late\""));
    }
}

TEST_F(RVGitMergeManagerContinuingTest, ASingleEmptyPickIsCommittedAndThenFails) {
    EXPECT_FALSE(manager().cherryPickRevisions({"Same"}, std::nullopt));
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeCherryPick);
    EXPECT_THAT(
        [&](RVErrorPlace e) {
            return manager().continueEmptyCherryPickWithCommitMessage("Mine", e);
        },
        failsWith(RVGitRVGitGenericError));
    // With the message that git proposed, since no revision is known to edit.
    EXPECT_THAT(subjects(2), ElementsAre("Same", "Ours"));
    EXPECT_EQ(gitHere({"log", "-1", "--format=%an"}), "An Author");
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
}

TEST_F(RVGitMergeManagerContinuingTest, TheLinesOfAnEmptyStep) {
    setSequence("pick %One\npick %Same\npick %Three");
    checkOut("topic");
    stopGit({"rebase", "-i", "main"});
    const auto recorder = record();
    const std::string same = hash("Same");
    EXPECT_TRUE(manager().continueEmptyRebaseWithCommitMessage("Empty"));
    const auto lines = recorder.argumentLists();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(Words(lines[0].begin() + 3, lines[0].end()),
                ElementsAre("-c", "i18n.commitencoding=UTF-8", "-c", "commit.verbose=false",
                            "commit", "--allow-empty", "--no-verify", "-c", same));
    EXPECT_EQ(recorder.invocations()[0].standardInput, std::nullopt);
    EXPECT_THAT(recorder.invocations()[0].environment.at("GIT_EDITOR"), StartsWith("/"));
    EXPECT_THAT(Words(lines[1].begin() + 3, lines[1].end()),
                ElementsAre("-c", "core.trustctime=false", "rebase", "--skip"));
}

}  // namespace
