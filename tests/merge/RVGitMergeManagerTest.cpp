#include "RVGit/merge/RVGitMergeManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/merge/RVGitCherryPickCommand.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/merge/RVGitRevertCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/merge/RVGitMergeTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVFailureCode.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace fs = std::filesystem;

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

/// Operations from their start to their end, against the real git.
class RVGitMergeManagerTest : public RVGitMergeTestCase {
protected:
    /// The error of one that must not.
    static void expectSuccess(const std::function<bool(RVErrorPlace)>& operation) {
        std::optional<RVError> error;
        EXPECT_TRUE(operation(&error));
        EXPECT_FALSE(error.has_value())
            << (error ? error->userInfoString("RVGitCommandErrorOutputErrorKey").value_or("") : "");
    }
    /// The command line of the last git, behind the two directories and "--no-pager".
    static Words lineOf(const RVRecordingGit& recorder) {
        Words line = recorder.lastInvocation().arguments;
        line.erase(line.begin(), line.begin() + 3);
        return line;
    }
    [[nodiscard]] RVRecordingGit record() const {
        RVRecordingGit recorder = recordingGit();
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(recorder.path()));
        recorder.clear();
        return recorder;
    }
    [[nodiscard]] std::string gitFile(const std::string& name) const {
        return *repository()->gitDirectoryPath() + "/" + name;
    }

    void stopMerge(const std::string& revision = "topic") {
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().mergeWithRevision(revision, std::nullopt, error);
            },
            failsWith(RVGitMergeConflictsError));
    }
    /// A rebase of "topic" by the merge backend that stops at Two.
    void stopRebase() {
        checkOut("topic");
        // Older gits take the merge backend for a list of steps alone.
        const std::optional<RVOptions> options =
            rebasesByMerging() ? std::nullopt
                               : std::optional(RVOptions{{RVGitRebaseOptionInteractive, true},
                                                         {RVGitRebaseOptionAutosquash, true}});
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().rebaseWithRevision("main", options, error);
            },
            failsWith(RVGitRebaseConflictsError));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRebase);
    }
    void stopCherryPick(const Words& revisions) {
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().cherryPickRevisions(revisions, std::nullopt, error);
            },
            failsWith(RVGitRebaseConflictsError));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeCherryPick);
    }
    void stopRevert(const Words& revisions) {
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return manager().revertRevisions(revisions, std::nullopt, error);
            },
            failsWith(RVGitRebaseConflictsError));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRevert);
    }
    void resolve(const std::string& contents, const std::string& file = "file") {
        write(file, contents);
        expectSuccess(
            [&](RVErrorPlace error) { return manager().resolveUnmergedFileByAdding(file, error); });
    }
    [[nodiscard]] std::string unmerged() const { return gitHere({"ls-files", "--unmerged"}); }

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

// What runs.

TEST_F(RVGitMergeManagerTest, TheLinesOfTheOperations) {
    const auto recorder = record();
    const auto expectLine = [&](bool (RVGitMergeManager::*operation)(RVErrorPlace),
                                const Words& expected) {
        (void)(manager().*operation)(nullptr);
        Words line = {"-c", "core.trustctime=false"};
        line.insert(line.end(), expected.begin(), expected.end());
        EXPECT_EQ(lineOf(recorder), line);
    };
    const auto skipping = [](const std::string& word) {
        return isTestedGitAtLeast("2.23") ? Words{word, "--skip"} : Words{word};
    };
    using Manager = RVGitMergeManager;
    expectLine(&Manager::abortDefaultMerge, {"merge", "--abort"});
    expectLine(&Manager::abortMerge, {"merge", "--abort"});
    expectLine(&Manager::continueRebase, {"-c", "core.editor=:", "rebase", "--continue"});
    expectLine(&Manager::skipRebase, {"rebase", "--skip"});
    expectLine(&Manager::abortRebase, {"rebase", "--abort"});
    expectLine(&Manager::continueCherryPick, {"cherry-pick", "--continue"});
    expectLine(&Manager::skipCherryPick, skipping("cherry-pick"));
    expectLine(&Manager::abortCherryPick, {"cherry-pick", "--abort"});
    expectLine(&Manager::quitCherryPick, {"cherry-pick", "--quit"});
    expectLine(&Manager::continueRevert, {"revert", "--continue"});
    expectLine(&Manager::skipRevert, skipping("revert"));
    expectLine(&Manager::abortRevert, {"revert", "--abort"});
    expectLine(&Manager::quitRevert, {"revert", "--quit"});
    (void)manager().abortSquashMerge();
    EXPECT_THAT(lineOf(recorder), ElementsAre("reset", "--merge", "-q"));
    (void)manager().restoreUnmergedVersionForFiles({"a", "-b"});
    EXPECT_THAT(lineOf(recorder), ElementsAre("checkout", "--merge", "--", "a", "-b"));
    (void)manager().restoreUnmergedVersionForFiles({"a"}, scratchPath("elsewhere"));
    EXPECT_THAT(lineOf(recorder), ElementsAre("--work-tree=" + scratchPath("elsewhere"), "checkout",
                                              "--merge", "--", "a"));
    (void)manager().restoreOurVersionForUnmergedFile("-a");
    EXPECT_THAT(lineOf(recorder), ElementsAre("checkout", "--ours", "--", "-a"));
    (void)manager().restoreTheirVersionForUnmergedFile("-a");
    EXPECT_THAT(lineOf(recorder), ElementsAre("checkout", "--theirs", "--", "-a"));
    (void)manager().rebaseWithRevision("topic", "Base", "main",
                                       RVOptions{{RVGitRebaseOptionOnto, true}});
    EXPECT_THAT(lineOf(recorder), ElementsAre("-c", "core.trustctime=false", "rebase", "--onto",
                                              "main", "Base", "topic"));
}

TEST_F(RVGitMergeManagerTest, ASquashIsAbortedWithoutAMerge) {
    EXPECT_TRUE(
        manager().mergeWithRevision("clean", RVOptions{{RVGitMergeOptionSquashCommits, true}}));
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeSquash);
    const auto recorder = record();
    EXPECT_TRUE(manager().abortMerge());
    for (const Words& line : recorder.argumentLists())
        EXPECT_THAT(line, Not(testing::Contains("merge")));
}

// After an abort all is as it was.

TEST_F(RVGitMergeManagerTest, AbortedMerge) {
    expectAbortRestores(
        "main", [this] { stopMerge(); }, &RVGitMergeManager::abortMerge);
}

TEST_F(RVGitMergeManagerTest, AbortedMergeThatIsNotCommitted) {
    expectAbortRestores(
        "main",
        [this] {
            EXPECT_TRUE(manager().mergeWithRevision(
                "clean", RVOptions{{RVGitMergeOptionCommitChanges, false}}));
        },
        &RVGitMergeManager::abortCurrentOperation);
}

TEST_F(RVGitMergeManagerTest, AbortedSquash) {
    for (const char* revision : {"clean", "topic"})
        expectAbortRestores(
            "main",
            [&] {
                (void)manager().mergeWithRevision(revision,
                                                  RVOptions{{RVGitMergeOptionSquashCommits, true}});
            },
            &RVGitMergeManager::abortMerge);
}

TEST_F(RVGitMergeManagerTest, AbortedRebase) {
    expectAbortRestores(
        "topic", [this] { stopRebase(); }, &RVGitMergeManager::abortRebase);
    expectAbortRestores(
        "topic", [this] { stopRebaseByApplying(); }, &RVGitMergeManager::abortRebase);
}

// Git then says why, restores the files, forgets the rebase, and ends with 0.
TEST_F(RVGitMergeManagerTest, AnAbortOfARebaseThatLeavesHeadDetachedIsAFailure) {
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
    fs::remove(lock);
    EXPECT_NE(runGit({"symbolic-ref", "-q", "HEAD"}, tables).exitCode, 0);
}

TEST_F(RVGitMergeManagerTest, WhatGitSaysOfAnAbortCountsByWhereHeadIs) {
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

TEST_F(RVGitMergeManagerTest, AbortedRebaseAtEachKindOfStop) {
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

TEST_F(RVGitMergeManagerTest, AbortedCherryPick) {
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

TEST_F(RVGitMergeManagerTest, AbortedRevert) {
    expectAbortRestores(
        "later", [this] { stopRevert({"Early"}); }, &RVGitMergeManager::abortRevert);
    expectAbortRestores(
        "later",
        [this] {
            stopRevert({"Late", "Early"});
        },
        &RVGitMergeManager::abortCurrentOperation);
}

// To the end.

TEST_F(RVGitMergeManagerTest, AMergeGoesOnByACommit) {
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

TEST_F(RVGitMergeManagerTest, AMergeGoesOnWithAMessage) {
    stopMerge();
    resolve("both\n");
    expectSuccess([&](RVErrorPlace error) {
        return manager().continueCurrentOperationWithCommitMessage("My \"merge\"\n\n# kept\n",
                                                                   error);
    });
    EXPECT_EQ(message(), "My \"merge\"\n\n# kept");
    EXPECT_EQ(hash("HEAD^2"), hash("topic"));
}

TEST_F(RVGitMergeManagerTest, ASquashGoesOnByACommit) {
    (void)manager().mergeWithRevision("topic", RVOptions{{RVGitMergeOptionSquashCommits, true}});
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeSquash);
    resolve("both\n");
    expectSuccess([&](RVErrorPlace error) { return manager().continueCurrentOperation(error); });
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
    EXPECT_THAT(message(), StartsWith("Squashed commit of the following:"));
    EXPECT_EQ(gitHere({"rev-list", "--count", "Ours..HEAD"}), "1");
}

TEST_F(RVGitMergeManagerTest, GoingOnWithConflictsIsAFailureThatChangesNothing) {
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
    // Not every git says it in the words that make it 2202.
    EXPECT_THAT(codeOf([&](RVErrorPlace e) { return manager().continueRebase(e); }),
                testing::AnyOf(RVGitRebaseUnmergedChangesError, RVGitRVGitGenericError));
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(rebasing), "");
}

TEST_F(RVGitMergeManagerTest, ARebaseFromStartToEnd) {
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

TEST_F(RVGitMergeManagerTest, SkippedSteps) {
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

TEST_F(RVGitMergeManagerTest, ACherryPickAndARevertFromStartToEnd) {
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

TEST_F(RVGitMergeManagerTest, QuittingForgetsTheRestAndKeepsTheFiles) {
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

TEST_F(RVGitMergeManagerTest, NothingToGoOnWithIsCode1) {
    const RVRepositorySnapshot before(path());
    EXPECT_THAT([&](RVErrorPlace e) { return manager().continueCurrentOperation(e); },
                failsWith(1));
    EXPECT_THAT([&](RVErrorPlace e) { return manager().skipCurrentOperation(e); }, failsWith(1));
    EXPECT_THAT([&](RVErrorPlace e) { return manager().abortCurrentOperation(e); }, failsWith(1));
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    stopMerge();
    EXPECT_THAT([&](RVErrorPlace e) { return manager().skipCurrentOperation(e); }, failsWith(1));
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeMerge);
}

// Options.

TEST_F(RVGitMergeManagerTest, OptionsOfAMergeTakeEffect) {
    const auto mergeWith = [&](const std::string& revision, const RVOptions& options) {
        return
            [=, this](RVErrorPlace e) { return manager().mergeWithRevision(revision, options, e); };
    };
    gitHere({"checkout", "-q", "-B", "behind", "Base"});
    expectSuccess(mergeWith("clean", {}));
    EXPECT_EQ(hash("HEAD"), hash("clean"));
    gitHere({"reset", "-q", "--hard", "Base"});
    expectSuccess(mergeWith("clean", {{RVGitMergeOptionFastForward, false}}));
    EXPECT_EQ(hash("HEAD^2"), hash("clean"));
    gitHere({"reset", "-q", "--hard", "Base"});
    // Nobody has signed it.
    EXPECT_GT(codeOf(mergeWith("clean", {{RVGitMergeOptionVerifySignatures, true}})), 0);
    EXPECT_EQ(hash("HEAD"), hash("Base"));
    expectSuccess(mergeWith("clean", {{RVGitMergeOptionSquashCommits, true}}));
    EXPECT_EQ(hash("HEAD"), hash("Base"));
    EXPECT_EQ(gitHere({"diff", "--cached", "--name-only"}), "clean");
}

TEST_F(RVGitMergeManagerTest, OptionsOfARebaseTakeEffect) {
    const auto rebaseWith = [&](const std::string& revision, const RVOptions& options) {
        return [=, this](RVErrorPlace e) {
            return manager().rebaseWithRevision(revision, options, e);
        };
    };
    gitHere({"checkout", "-q", "clean"});
    gitHere({"commit", "-q", "--allow-empty", "-m", "Empty"});
    write("more", "more\n");
    gitHere({"add", "more"});
    gitHere({"commit", "-q", "-m", "More"});
    write("clean", "cleaner\n");
    gitHere({"commit", "-q", "-a", "-m", "fixup! Clean"});
    const RVRepositorySnapshot before(path());
    expectSuccess(rebaseWith(
        "main", {{RVGitRebaseOptionAutosquash, true}, {RVGitRebaseOptionKeepsEmptyCommits, true}}));
    EXPECT_THAT(subjects(4), ElementsAre("More", "Empty", "Clean", "Ours"));
    EXPECT_EQ(gitHere({"show", "HEAD~2:clean"}), "cleaner");

    expectSuccess([&](RVErrorPlace e) {
        return manager().rebaseWithRevision("clean", "clean~1", "third",
                                            RVOptions{{RVGitRebaseOptionOnto, true}}, e);
    });
    EXPECT_THAT(subjects(3), ElementsAre("More", "Third", "Base"));

    // A merge within is made again.
    gitHere({"checkout", "-q", "-b", "merged", "One"});
    gitHere({"merge", "-q", "--no-edit", "Clean"});
    expectSuccess(rebaseWith("same", {{RVGitRebaseOptionPreservesMergeCommits, true}}));
    EXPECT_EQ(gitHere({"rev-list", "--merges", "--count", "same..HEAD"}), "1");
}

TEST_F(RVGitMergeManagerTest, OptionsOfPicksTakeEffect) {
    gitHere({"merge", "-q", "--no-ff", "--no-edit", "clean"});
    const std::string merge = hash("HEAD");
    gitHere({"checkout", "-q", "-B", "picks", "Ours"});
    EXPECT_GT(codeOf([&](RVErrorPlace e) {
                  return manager().cherryPickRevisions({merge}, std::nullopt, e);
              }),
              0);
    EXPECT_EQ(hash("HEAD"), hash("Ours"));
    expectSuccess([&](RVErrorPlace e) {
        return manager().cherryPickRevisions(
            {merge}, RVOptions{{RVGitCherryPickOptionMainlineParentNumber, 1}}, e);
    });
    EXPECT_EQ(read("clean"), "clean\n");
    gitHere({"checkout", "-q", "main"});
    expectSuccess([&](RVErrorPlace e) {
        return manager().revertRevisions({merge},
                                         RVOptions{{RVGitRevertOptionMainlineParentNumber, 1}}, e);
    });
    EXPECT_FALSE(fileExists(path() + "/clean"));
    gitHere({"checkout", "-q", "-B", "picks", "Base"});
    expectSuccess([&](RVErrorPlace e) {
        return manager().cherryPickRevisions(
            {"One", "Two"}, RVOptions{{RVGitCherryPickOptionFastForward, true}}, e);
    });
    EXPECT_EQ(hash("HEAD"), hash("Two"));
    expectSuccess([&](RVErrorPlace e) {
        return manager().cherryPickRevisions(
            {"Clean"}, RVOptions{{RVGitCherryPickOptionCommitChanges, false}}, e);
    });
    EXPECT_EQ(hash("HEAD"), hash("Two"));
    EXPECT_EQ(gitHere({"diff", "--cached", "--name-only"}), "clean");
}

TEST_F(RVGitMergeManagerTest, RevisionsOfASequenceAreAsShortAsGitWritesThem) {
    stopCherryPick({"Base..topic"});
    EXPECT_LT(manager().nextSequenceRevision().value_or(hash("Two")).size(), 40u);
    EXPECT_LT(manager().lastSequenceRevision().value_or(hash("Two")).size(), 40u);
    EXPECT_EQ(manager().mergedRevision(), hash("Two"));
}

// Steps without changes.

TEST_F(RVGitMergeManagerTest, AnEmptyStepOfARebaseIsCommitted) {
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

TEST_F(RVGitMergeManagerTest, AnEmptyStepOfASequenceIsCommitted) {
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

TEST_F(RVGitMergeManagerTest, ASingleEmptyPickIsCommittedAndThenFails) {
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

TEST_F(RVGitMergeManagerTest, TheLinesOfAnEmptyStep) {
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

// Conflicts, file by file.

TEST_F(RVGitMergeManagerTest, TheSixWaysToResolve) {
    for (const RVGitMergePlace place : allMergePlaces) {
        makePlace(place);
        SCOPED_TRACE(path());
        stopMerge();
        const std::string marked = read("file");
        EXPECT_THAT(marked, HasSubstr("<<<<<<<"));
        const std::string stages = unmerged();
        EXPECT_TRUE(manager().canResolveUnmergedFileByAdding("file"));
        EXPECT_TRUE(manager().canResolveUnmergedFileByRemoving("file"));
        EXPECT_TRUE(manager().canRestoreAncestorVersionForUnmergedFile("file"));
        EXPECT_TRUE(manager().canRestoreOurVersionForUnmergedFile("file"));
        EXPECT_TRUE(manager().canRestoreTheirVersionForUnmergedFile("file"));
        EXPECT_FALSE(manager().canRestoreAncestorVersionForUnmergedFile("other"));
        EXPECT_FALSE(manager().canResolveUnmergedFileByAdding("missing"));

        expectSuccess(
            [&](RVErrorPlace e) { return manager().restoreOurVersionForUnmergedFile("file", e); });
        EXPECT_EQ(read("file"), "ours\n");
        expectSuccess([&](RVErrorPlace e) {
            return manager().restoreTheirVersionForUnmergedFile("file", e);
        });
        EXPECT_EQ(read("file"), "four\n");
        expectSuccess([&](RVErrorPlace e) {
            return manager().restoreAncestorVersionForUnmergedFile("file", e);
        });
        EXPECT_EQ(read("file"), "base\n");
        EXPECT_EQ(unmerged(), stages);
        expectSuccess(
            [&](RVErrorPlace e) { return manager().restoreUnmergedVersionForFile("file", e); });
        EXPECT_THAT(read("file"), HasSubstr("<<<<<<<"));
        EXPECT_EQ(unmerged(), stages);
        const std::string elsewhere = makeDirectory(path() + " elsewhere");
        write("file", "untouched\n");
        expectSuccess([&](RVErrorPlace e) {
            return manager().restoreUnmergedVersionForFiles({"file"}, elsewhere, e);
        });
        EXPECT_THAT(readFile(elsewhere + "/file"), HasSubstr("<<<<<<<"));
        EXPECT_EQ(read("file"), "untouched\n");

        expectSuccess(
            [&](RVErrorPlace e) { return manager().resolveUnmergedFileByRemoving("file", e); });
        EXPECT_EQ(unmerged(), "");
        EXPECT_FALSE(fileExists(path() + "/file"));
        EXPECT_TRUE(manager().continueCurrentOperation());
    }
}

TEST_F(RVGitMergeManagerTest, AFileThatOneSideHasDeleted) {
    stopMerge("gone");
    EXPECT_TRUE(manager().canRestoreAncestorVersionForUnmergedFile("file"));
    EXPECT_TRUE(manager().canRestoreOurVersionForUnmergedFile("file"));
    EXPECT_FALSE(manager().canRestoreTheirVersionForUnmergedFile("file"));
    EXPECT_THAT(
        [&](RVErrorPlace e) { return manager().restoreTheirVersionForUnmergedFile("file", e); },
        failsWith(RVGitRVGitGenericError));
    fs::remove(path() + "/file");
    EXPECT_FALSE(manager().canResolveUnmergedFileByAdding("file"));
    // A link that leads nowhere can be staged.
    fs::create_symlink("nowhere", path() + "/file");
    EXPECT_TRUE(manager().canResolveUnmergedFileByAdding("file"));
    expectSuccess([&](RVErrorPlace e) { return manager().resolveUnmergedFileByAdding("file", e); });
    EXPECT_EQ(gitHere({"show", ":file"}), "nowhere");
}

TEST_F(RVGitMergeManagerTest, RestoringTheAncestorStopsAtTheFirstThatHasNone) {
    stopMerge();
    std::optional<RVError> error = RVError("left", 4711);
    EXPECT_FALSE(manager().restoreAncestorVersionForUnmergedFiles({"file", "other", "x"}, &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(read("file"), "base\n");
    EXPECT_EQ(read("other"), "other\n");
    EXPECT_TRUE(manager().restoreAncestorVersionForUnmergedFiles({}));
    // A file that cannot be written leaves the place alone.
    fs::remove(path() + "/file");
    fs::create_directory(path() + "/file");
    write("file/inside", "kept\n");
    error = RVError("left", 4711);
    EXPECT_FALSE(manager().restoreAncestorVersionForUnmergedFile("file", &error));
    EXPECT_EQ(error.value().code(), 4711);
    EXPECT_EQ(read("file/inside"), "kept\n");
}

TEST_F(RVGitMergeManagerTest, ListsAreCutIntoBatches) {
    const auto limit = RVGitCommand::maximumNumberOfAllowedFilePathArguments();
    gitHere({"checkout", "-q", "-b", "many", "main"});
    const Words names = {"a", "b", "c", "d", "e"};
    for (const std::string& name : names)
        write(name, "ours\n");
    gitHere({"add", "."});
    gitHere({"commit", "-q", "-m", "Ours of many"});
    gitHere({"checkout", "-q", "-b", "others", "main"});
    for (const std::string& name : names)
        write(name, "theirs\n");
    gitHere({"add", "."});
    gitHere({"commit", "-q", "-m", "Theirs of many"});
    gitHere({"checkout", "-q", "many"});
    stopMerge("others");
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(2);
    EXPECT_TRUE(manager().restoreTheirVersionForUnmergedFiles(names));
    for (const std::string& name : names)
        EXPECT_EQ(read(name), "theirs\n");
    EXPECT_NE(unmerged(), "");
    EXPECT_TRUE(manager().restoreOurVersionForUnmergedFiles(names));
    for (const std::string& name : names)
        EXPECT_EQ(read(name), "ours\n");
    const std::string elsewhere = makeDirectory("elsewhere");
    EXPECT_TRUE(manager().restoreUnmergedVersionForFiles(names, elsewhere));
    EXPECT_TRUE(manager().restoreUnmergedVersionForFiles(names));
    for (const std::string& name : names) {
        EXPECT_THAT(read(name), HasSubstr("<<<<<<<"));
        EXPECT_THAT(readFile(elsewhere + "/" + name), HasSubstr("<<<<<<<"));
    }
    // A batch that fails ends it.
    EXPECT_FALSE(manager().restoreUnmergedVersionForFiles({"a", "b", "missing", "c", "d"}));
    EXPECT_TRUE(manager().resolveUnmergedFilesByAdding(names));
    EXPECT_EQ(unmerged(), "");
    EXPECT_TRUE(manager().resolveUnmergedFilesByRemoving(names));
    for (const std::string& name : names)
        EXPECT_FALSE(fileExists(path() + "/" + name));
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(limit);
}

TEST_F(RVGitMergeManagerTest, NothingIsWrittenThroughALinkOutOfTheTree) {
    gitHere({"checkout", "-q", "main"});
    write("dir/file", "base\n");
    gitHere({"add", "."});
    gitHere({"commit", "-q", "-m", "Directory"});
    gitHere({"checkout", "-q", "-b", "their-dir"});
    write("dir/file", "theirs\n");
    gitHere({"commit", "-q", "-a", "-m", "Theirs in a directory"});
    gitHere({"checkout", "-q", "main"});
    write("dir/file", "ours\n");
    gitHere({"commit", "-q", "-a", "-m", "Ours in a directory"});
    stopMerge("their-dir");
    writeFile("outside/file", "precious\n");
    fs::remove_all(path() + "/dir");
    fs::create_directory_symlink(scratchPath("outside"), path() + "/dir");

    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return manager().restoreAncestorVersionForUnmergedFile("dir/file", error);
        },
        failsWith(ENOTDIR));
    EXPECT_EQ(readFile("outside/file"), "precious\n");
    EXPECT_FALSE(manager().canResolveUnmergedFileByAdding("dir/file"));
    // Git puts a directory in the link's place, or fails; it does not follow it either.
    (void)manager().restoreOurVersionForUnmergedFile("dir/file");
    (void)manager().restoreTheirVersionForUnmergedFile("dir/file");
    (void)manager().restoreUnmergedVersionForFile("dir/file");
    (void)manager().resolveUnmergedFileByAdding("dir/file");
    (void)manager().resolveUnmergedFileByRemoving("dir/file");
    EXPECT_EQ(readFile("outside/file"), "precious\n");

    // A link in the file's own place is replaced.
    makePlace(RVGitMergePlace::Repository);
    stopMerge();
    fs::remove(path() + "/file");
    fs::create_symlink(scratchPath("outside/file"), path() + "/file");
    EXPECT_TRUE(manager().restoreAncestorVersionForUnmergedFile("file"));
    EXPECT_EQ(readFile("outside/file"), "precious\n");
    EXPECT_EQ(read("file"), "base\n");
    EXPECT_FALSE(fs::is_symlink(path() + "/file"));
}

TEST_F(RVGitMergeManagerTest, PathsThatAreNoPlainNames) {
    // One file of each name, in conflict.
    const Words names = {"-dash", "--force", "a b",        "new\nline", "quo\"te", ":(top)x",
                         "*",     "[ab]",    "latin \xE9", "é",         "a..-b"};
    const auto commitAll = [&](const std::string& contents) {
        for (const std::string& name : names)
            write(name, contents);
        gitHere({"add", "-A"});
        gitHere({"commit", "-q", "-m", contents});
    };
    commitAll("base\n");
    gitHere({"checkout", "-q", "-b", "theirs"});
    commitAll("theirs\n");
    gitHere({"checkout", "-q", "main"});
    commitAll("ours\n");
    stopMerge("theirs");
    setEnvironmentVariable("GIT_LITERAL_PATHSPECS", "1");
    for (const std::string& name : names) {
        EXPECT_TRUE(manager().restoreTheirVersionForUnmergedFile(name)) << name;
        EXPECT_EQ(read(name), "theirs\n");
        EXPECT_TRUE(manager().restoreAncestorVersionForUnmergedFile(name)) << name;
        EXPECT_EQ(read(name), "base\n");
        EXPECT_TRUE(manager().restoreUnmergedVersionForFile(name)) << name;
        EXPECT_THAT(read(name), HasSubstr("<<<<<<<"));
    }
    EXPECT_TRUE(manager().resolveUnmergedFilesByAdding(names));
    EXPECT_EQ(unmerged(), "");
    const RVRepositorySnapshot before(path());
    for (const std::string& name : {"nul\0x"s, "../file"s, scratchPath("x"), ""s, "a/../file"s}) {
        EXPECT_FALSE(manager().restoreAncestorVersionForUnmergedFile(name));
        EXPECT_FALSE(manager().canResolveUnmergedFileByAdding(name));
        EXPECT_FALSE(manager().canRestoreAncestorVersionForUnmergedFile(name));
    }
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
}

// Ancestry.

TEST_F(RVGitMergeManagerTest, Ancestry) {
    const auto recorder = record();
    EXPECT_EQ(manager().mergeBaseForSourceRevision("main", "topic"), hash("Base"));
    EXPECT_THAT(lineOf(recorder), testing::Contains("merge-base"));
    EXPECT_TRUE(manager().revisionIsAncestor("Base", "topic"));
    std::optional<RVError> error;
    EXPECT_FALSE(manager().revisionIsAncestor("topic", "Base", &error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(manager().revisionIsAncestor("nowhere", "Base"));
    EXPECT_EQ(manager().mergeBaseForSourceRevision("nowhere", "topic", &error), std::nullopt);
    EXPECT_TRUE(error);
    gitHere({"checkout", "-q", "--orphan", "island"});
    gitHere({"commit", "-q", "-m", "Island"});
    EXPECT_EQ(manager().mergeBaseForSourceRevision("island", "topic"), std::nullopt);
}

// Messages that could do harm.

TEST_F(RVGitMergeManagerTest, AMessageThatWouldEndTheScriptIsRefused) {
    const std::string proof = scratchPath("proof");
    const std::string text =
        "x\n7b26278ebfd54ee8ec001b7c668de1137802ad9f63e4ebce3016f69c4f84884b\ntouch '" + proof +
        "'\n";
    stopRebase();
    resolve("two\n");
    const RVRepositorySnapshot before(path());
    for (const std::string& refused : {text, "nul\0byte"s}) {
        EXPECT_GT(codeOf([&](RVErrorPlace e) {
                      return manager().continueRebaseWithCommitMessage(refused, e);
                  }),
                  0);
        EXPECT_GT(codeOf([&](RVErrorPlace e) {
                      return manager().continueEmptyRebaseWithCommitMessage(refused, e);
                  }),
                  0);
    }
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    EXPECT_TRUE(manager().abortRebase());
    // Where no script is made, it is text as any other.
    checkOut("main");
    stopCherryPick({"Two"});
    resolve("two\n");
    EXPECT_TRUE(manager().continueCherryPickWithCommitMessage(text));
    EXPECT_THAT(message(), HasSubstr("touch"));
    EXPECT_FALSE(fileExists("proof"));
}

TEST_F(RVGitMergeManagerTest, AStrangersMessageIsTextAndNothingInItIsRun) {
    const std::string proof = scratchPath("proof");
    const std::string text = "$(touch '" + proof + "') `touch '" + proof + "'`\n\n'; touch '" +
                             proof + "'; \"\n%s %n \\\n";
    gitHere({"checkout", "-q", "-b", "strange", "Base"});
    write("file", "strange\n");
    git({"commit", "-q", "-a", "-F", "-"}, path(), text);
    gitHere({"checkout", "-q", "-b", "ours-again", "main"});
    gitHere({"checkout", "-q", "strange"});
    EXPECT_FALSE(manager().rebaseWithRevision("main", std::nullopt));
    resolve("strange and ours\n");
    const auto proposed = manager().mergeCommitMessage();
    ASSERT_TRUE(proposed);
    EXPECT_THAT(*proposed, StartsWith(text));
    expectSuccess(
        [&](RVErrorPlace e) { return manager().continueRebaseWithCommitMessage(*proposed, e); });
    EXPECT_EQ(message() + "\n", text);
    EXPECT_FALSE(fileExists("proof"));
}

TEST_F(RVGitMergeManagerTest, AMessageIsNotWrittenThroughALink) {
    stopCherryPick({"Two"});
    resolve("two\n");
    writeFile("outside", "precious\n");
    fs::remove(gitFile("MERGE_MSG"));
    fs::create_symlink(scratchPath("outside"), gitFile("MERGE_MSG"));
    EXPECT_TRUE(manager().continueCherryPickWithCommitMessage("Mine"));
    EXPECT_EQ(readFile("outside"), "precious\n");
    EXPECT_EQ(message(), "Mine");
}

TEST_F(RVGitMergeManagerTest, AMessageThatCannotBeWrittenDoesNotStopTheContinuation) {
    stopCherryPick({"Two"});
    resolve("two\n");
    fs::remove(gitFile("MERGE_MSG"));
    const auto recorder = record();
    (void)manager().continueCherryPickWithCommitMessage("Mine");
    EXPECT_FALSE(fs::exists(gitFile("MERGE_MSG")) && readFile(gitFile("MERGE_MSG")) == "Mine");
    EXPECT_THAT(lineOf(recorder),
                ElementsAre("-c", "core.trustctime=false", "cherry-pick", "--continue"));
}

TEST_F(RVGitMergeManagerTest, TheEditorOfAContinuationIsQuotedWhereItMustBe) {
    for (const char* name : {"plain", "a b", "it's", "do$HOME", "`x`"}) {
        makePlace(RVGitMergePlace::Repository);
        SCOPED_TRACE(name);
        stopRebase();
        resolve("two\n");
        const std::string directory = makeDirectory(name);
        setEnvironmentVariable("TMPDIR", directory);
        const auto recorder = record();
        (void)manager().continueRebaseWithCommitMessage("Mine");
        const std::string editor = recorder.lastInvocation().environment.at("GIT_EDITOR");
        if (name == "plain"s) {
            EXPECT_THAT(editor, StartsWith(directory + "/"));
        } else {
            EXPECT_THAT(editor, StartsWith("'"));
        }
        setEnvironmentVariable("TMPDIR", std::nullopt);
        EXPECT_EQ(gitHere({"log", "-1", "--format=%s", "HEAD~2"}), "Mine");
    }
}

TEST_F(RVGitMergeManagerTest, AFullTemporaryDirectoryIsAFailureThatChangesNothing) {
    stopRebase();
    resolve("two\n");
    const RVRepositorySnapshot before(path());
    setEnvironmentVariable("TMPDIR", scratchPath("missing"));
    EXPECT_THAT(
        [&](RVErrorPlace e) { return manager().continueRebaseWithCommitMessage("Mine", e); },
        failsWith(ENOENT));
    EXPECT_THAT(
        [&](RVErrorPlace e) { return manager().continueEmptyRebaseWithCommitMessage("Mine", e); },
        failsWith(ENOENT));
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
}

}  // namespace
