#include <optional>

#include "RVGit/worktree/RVGitStash.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

class RVGitStashThreadsTest : public RVGitRepositoryTestCase {
protected:
    RVGitStashThreadsTest() {
        makeCommit();
        change("first\n");
        gitInRepository({"stash"});
        change("second\n");
    }
    /// Whether saving, cancelled in the call, gives a stash.
    [[nodiscard]] bool savesCancelledIn(const RVHangingGit::Call& call) {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), call);
        std::optional<RVError> error = RVError("before", 1);
        const auto stash =
            RVGitStash::saveStashFromWorkingTreeInRepository(repository(), std::nullopt, 0, &error);
        EXPECT_EQ(error, std::nullopt);
        return stash != nullptr;
    }
};

TEST_F(RVGitStashThreadsTest, AnOlderStashIsNotTakenForOneWhoseSavingIsCancelled) {
    const RVRepositorySnapshot before(repositoryPath());
    EXPECT_FALSE(savesCancelledIn({"*' stash push '* | *' stash save '*"}));
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
    // Nor for one that has been saved, but cannot be told from it.
    EXPECT_FALSE(savesCancelledIn({"*' stash push '* | *' stash save '*", 0, "\"$GIT\" \"$@\""}));
    EXPECT_EQ(RVGitStash::allStashesForRepository(repository())->size(), 2U);
}

TEST_F(RVGitStashThreadsTest, AStashThatWasNotLookedUpIsNeitherAppliedNorDeleted) {
    const RVRepositorySnapshot before(repositoryPath());
    for (const bool isDeletion : {false, true}) {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(),
                                        {"*' stash list '*"});
        std::optional<RVError> error = RVError("before", 1);
        EXPECT_FALSE(isDeletion ? RVGitStash::deleteStashAtIndex(0, repository(), &error)
                                : RVGitStash::applyStashAtIndex(0, repository(), true, &error));
        EXPECT_EQ(error, std::nullopt);
    }
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

}  // namespace
