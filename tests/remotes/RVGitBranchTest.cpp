#include "RVGit/remotes/RVGitBranch.h"

#include "RVGit/base/RVError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;

class RVGitBranchTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] bool isInitial() const {
        return RVGitBranch::isInitialCommitOnHeadBranchForRepository(repository());
    }
};

TEST_F(RVGitBranchTest, AnEmptyRepositoryIsBeforeItsInitialCommit) {
    EXPECT_TRUE(isInitial());
}

TEST_F(RVGitBranchTest, ABranchWithACommitIsNot) {
    auto recorder = useRecordingGit();
    makeCommit();
    EXPECT_FALSE(isInitial());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("rev-list", "-1", "HEAD"));
}

TEST_F(RVGitBranchTest, AnUnbornBranchBesideOthersIs) {
    makeCommit();
    gitInRepository({"checkout", "-q", "--orphan", "another"});
    EXPECT_TRUE(isInitial());
}

TEST_F(RVGitBranchTest, ADetachedHeadIsNot) {
    makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    EXPECT_FALSE(isInitial());
}

TEST_F(RVGitBranchTest, ARepositoryWithTagsButNoBranchIs) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    gitInRepository({"checkout", "-q", "--detach"});
    gitInRepository({"branch", "-D", "main"});
    EXPECT_TRUE(isInitial());
}

TEST_F(RVGitBranchTest, NeedsARepository) {
    EXPECT_THROW((void)RVGitBranch::isInitialCommitOnHeadBranchForRepository(nullptr),
                 RVInvalidParameterException);
}
