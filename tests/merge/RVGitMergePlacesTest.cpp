// The gestures that rewrite history, and the previews, wherever a repository may be: in a working
// tree, with a detached HEAD, in a linked worktree, in that of a bare repository, in a submodule.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/merge/RVGitMergeTreeEntry.h"
#include "RVGit/merge/RVGitSequenceInstruction.h"
#include "tests/merge/RVGitMergeTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitMergePlacesTest : public RVGitMergeTestCase {
protected:
    /// With "Base", "One", "Two", "Three", "Four" from the root up to HEAD.
    static void inEachPlace(RVGitMergePlacesTest& test, const std::function<void()>& body) {
        for (const RVGitMergePlace place : allMergePlaces) {
            const testing::ScopedTrace trace(__FILE__, __LINE__, static_cast<int>(place));
            test.makePlace(place);
            test.checkOut("topic");
            body();
            EXPECT_EQ(test.manager().currentMergeMode(), RVGitMergeModeNone);
            EXPECT_THAT(RVRepositorySnapshot(test.path()).locks, IsEmpty());
            EXPECT_EQ(test.gitHere({"status", "--porcelain"}), "");
        }
    }
};

TEST_F(RVGitMergePlacesTest, CommitsAreMoved) {
    inEachPlace(*this, [&] {
        const auto branch = manager().originalRefName();
        EXPECT_TRUE(manager().moveRevisionsAboveRevision({hash("One")}, hash("Three")));
        EXPECT_THAT(subjects(5), ElementsAre("Four", "One", "Three", "Two", "Base"));
        EXPECT_TRUE(
            manager().moveRevisionsBelowRevision({hash("HEAD"), hash("HEAD~3")}, hash("HEAD~1")));
        EXPECT_THAT(subjects(5), ElementsAre("One", "Four", "Two", "Three", "Base"));
        EXPECT_EQ(manager().originalRefName(), branch);
    });
}

TEST_F(RVGitMergePlacesTest, CommitsAreDroppedAndCombined) {
    inEachPlace(*this, [&] {
        EXPECT_TRUE(manager().deleteRevisions({hash("Three")}));
        EXPECT_THAT(subjects(4), ElementsAre("Four", "Two", "One", "Base"));
        EXPECT_TRUE(manager().squashRevisions({hash("HEAD"), hash("HEAD~1")}));
        EXPECT_THAT(subjects(3), ElementsAre("Two", "One", "Base"));
        EXPECT_EQ(message(), "Two\n\nFour");
        EXPECT_TRUE(manager().fixupRevisions({hash("HEAD")}, hash("HEAD~1")));
        EXPECT_THAT(subjects(2), ElementsAre("One", "Base"));
        EXPECT_EQ(read("file"), "four\n");
        EXPECT_FALSE(fileExists(path() + "/three"));
    });
}

TEST_F(RVGitMergePlacesTest, AMessageIsReplacedDownToTheRoot) {
    inEachPlace(*this, [&] {
        EXPECT_TRUE(manager().setCommitMessage("Third", hash("Three")));
        EXPECT_TRUE(manager().setCommitMessage("Root", hash("HEAD~4")));
        EXPECT_THAT(subjects(5), ElementsAre("Four", "Third", "Two", "One", "Root"));
    });
}

TEST_F(RVGitMergePlacesTest, ACommitIsEdited) {
    inEachPlace(*this, [&] {
        const auto branch = refName("topic");
        EXPECT_TRUE(manager().editRevision(hash("Three"), true));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeEditing);
        EXPECT_TRUE(manager().isEditingRevision());
        EXPECT_EQ(manager().originalRefName(), branch);
        write("more", "more\n");
        gitHere({"add", "more"});
        gitHere({"commit", "-q", "--amend", "-m", "Third"});
        EXPECT_TRUE(manager().continueRebase());
        EXPECT_THAT(subjects(3), ElementsAre("Four", "Third", "Two"));
        EXPECT_EQ(gitHere({"show", "HEAD~1:more"}), "more");

        // Taken apart: what it changed lies in the working tree.
        EXPECT_TRUE(manager().editRevision(hash("HEAD~1")));
        EXPECT_EQ(read("three"), "three\n");
        EXPECT_THAT(subjects(1), ElementsAre("Two"));
        gitHere({"add", "-A"});
        gitHere({"commit", "-q", "-m", "Again"});
        EXPECT_TRUE(manager().continueRebase());
        EXPECT_THAT(subjects(3), ElementsAre("Four", "Again", "Two"));
    });
}

TEST_F(RVGitMergePlacesTest, AGestureThatConflictsIsGivenUp) {
    inEachPlace(*this, [&] {
        const RVRepositorySnapshot before(path());
        EXPECT_THAT([&](RVErrorPlace e) { return manager().deleteRevisions({hash("Two")}, e); },
                    failsWith(RVGitRebaseConflictsError));
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRebase);
        EXPECT_EQ(manager().originalRefName(), refName("topic"));
        EXPECT_TRUE(manager().abortCurrentOperation());
        EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    });
}

TEST_F(RVGitMergePlacesTest, PartOfABranchGoesElsewhere) {
    inEachPlace(*this, [&] {
        EXPECT_TRUE(manager().rebaseOntoWithRevision(hash("Two"), {hash("Three")}, hash("Clean"),
                                                     std::nullopt));
        EXPECT_THAT(subjects(3), ElementsAre("Three", "Clean", "Base"));
    });
}

TEST_F(RVGitMergePlacesTest, AMergeIsForetold) {
    inEachPlace(*this, [&] {
        const RVRepositorySnapshot before(path());
        EXPECT_TRUE(manager().canMergeRevision("clean", "main"));
        RVGitMergeManager::MergeTreeEntries conflicts;
        EXPECT_THAT(
            [&](RVErrorPlace e) {
                return manager().canMergeRevision("topic", "main", &conflicts, e);
            },
            failsWith(RVGitMergeWillFailDueToConflictsError));
        ASSERT_EQ(conflicts.size(), 1u);
        EXPECT_TRUE(conflicts.front()->hasConflict());
        EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    });
}

TEST_F(RVGitMergePlacesTest, TheFilesOfAConflictAreForetold) {
    RVGIT_TEST_NEEDS_GIT("2.38", "it makes no merge without a working tree");
    inEachPlace(*this, [&] {
        const RVRepositorySnapshot before(path());
        EXPECT_EQ(manager().conflictingFilePathsForMergingRevision("clean", "main"),
                  std::vector<std::string>());
        EXPECT_EQ(manager().conflictingFilePathsForMergingRevision("topic", "main"),
                  std::vector<std::string>{"file"});
        EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    });
}

}  // namespace
