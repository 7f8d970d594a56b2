#include "RVGit/merge/RVGitMergeManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "RVGit/merge/RVGitCherryPickCommand.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/merge/RVGitRevertCommand.h"
#include "tests/merge/RVGitMergeManagerTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVFailureCode.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

using testing::ElementsAre;

class RVGitMergeManagerTest : public RVGitMergeManagerTestCase {};

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

// Revisions.

TEST_F(RVGitMergeManagerTest, RevisionsOfASequenceAreAsShortAsGitWritesThem) {
    stopCherryPick({"Base..topic"});
    EXPECT_LT(manager().nextSequenceRevision().value_or(hash("Two")).size(), 40u);
    EXPECT_LT(manager().lastSequenceRevision().value_or(hash("Two")).size(), 40u);
    EXPECT_EQ(manager().mergedRevision(), hash("Two"));
}

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

}  // namespace
