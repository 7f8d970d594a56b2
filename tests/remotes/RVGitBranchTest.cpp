#include "RVGit/remotes/RVGitBranch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/history/RVGitCommit.h"
#include "tests/remotes/RVGitBranchTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

class RVGitBranchTest : public RVGitBranchTestCase {
protected:
    [[nodiscard]] bool isInitial() const {
        return RVGitBranch::isInitialCommitOnHeadBranchForRepository(repository());
    }
};

// The initial commit.

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

TEST_F(RVGitBranchTest, ABranchBesideAFileThatIsNamedAsTheHeadIsNot) {
    makeCommit();
    writeFile(repositoryPath() + "/HEAD", "no ref\n");
    EXPECT_FALSE(isInitial());
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

// Names.

TEST_F(RVGitBranchTest, UglyNamesAreListedFoundRenamedAndDeleted) {
    makeCommit();
    const Strings ugly = {"a.b/c.d",
                          "it's",
                          "\"quoted\"",
                          "h\xC3\xA9",
                          "he\xCC\x81",
                          "main2",
                          "(parens)x",
                          "x(parens)",
                          "a\xC2\xA0z",
                          "\xE3\x80\x80wide",
                          "@",
                          "#1",
                          "$HOME",
                          "a&b;c|d",
                          "%s%n",
                          "0123456789012345678901234567890123456789",
                          std::string(200, 'n'),
                          "refs",
                          "heads/main",
                          "tag",
                          "file1.txt"};
    gitInRepository({"tag", "tag"});
    for (const std::string& name : ugly) {
        if (name == "@")
            continue;  // Git takes it for HEAD.
        std::optional<RVError> error;
        const auto branch =
            RVGitBranch::createBranchWithRefName(name, std::nullopt, repository(), &error);
        if (name == "\xE3\x80\x80wide" || name == "(parens)x") {
            // The listing does not tell these names: its blanks are Unicode's, and a name in
            // parentheses is that of a detached HEAD.
            EXPECT_EQ(branch, nullptr) << name;
            EXPECT_FALSE(error.has_value());
            EXPECT_TRUE(RVGitBranch::deleteBranchWithRefName(name, repository(), true)) << name;
            continue;
        }
        ASSERT_TRUE(branch) << name << (error ? error->localizedFailureReason().value_or("") : "");
        EXPECT_EQ(branch->refName(), name);
        EXPECT_EQ(branchNamed("refs/heads/" + name)->refName(), name);
        EXPECT_TRUE(RVGitBranch::renameBranchWithRefName(name, "renamed", repository(), false));
        EXPECT_TRUE(RVGitBranch::renameBranchWithRefName("renamed", name, repository(), false));
        EXPECT_TRUE(RVGitBranch::deleteBranchWithRefName(name, repository(), false)) << name;
    }
    EXPECT_THAT(names(), ElementsAre("*refs/heads/main"));
}

TEST_F(RVGitBranchTest, OfBothUnicodeFormsEachIsFoundByItsOwnBytes) {
    makeCommit();
    const std::string composed = "h\xC3\xA9";
    const std::string decomposed = "he\xCC\x81";
    gitInRepository({"branch", composed});
    EXPECT_EQ(branchNamed(decomposed)->refName(), composed);
    gitInRepository({"branch", decomposed});
    EXPECT_EQ(branchNamed(decomposed)->refName(), decomposed);
    EXPECT_EQ(branchNamed(composed)->refName(), composed);
}

TEST_F(RVGitBranchTest, AnUnknownNameIsNoError) {
    makeCommit();
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_EQ(RVGitBranch::branchForRefName("missing", repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitBranchTest, ALookUpListsOnce) {
    RVGIT_TEST_NEEDS_REF_FILES("git is asked for a HEAD that is in tables");
    makeCommit();
    auto recorder = useRecordingGit();
    recorder.clear();
    (void)branchNamed("main");
    EXPECT_EQ(recorder.invocations().size(), 3U);
}

TEST_F(RVGitBranchTest, ValidNamesAreThoseOfRefs) {
    EXPECT_TRUE(RVGitBranch::isValidBranchName("a/b"));
    EXPECT_FALSE(RVGitBranch::isValidBranchName("a..b"));
    EXPECT_FALSE(RVGitBranch::isValidBranchName(std::nullopt));
}

TEST_F(RVGitBranchTest, TheCurrentBranchIsTheHead) {
    makeCommit();
    gitInRepository({"branch", "a"});
    const auto head = RVGitBranch::currentHeadBranchForRepository(repository());
    ASSERT_TRUE(head);
    EXPECT_EQ(head->refName(), "main");
    gitInRepository({"checkout", "-q", "--detach"});
    EXPECT_TRUE(RVGitBranch::currentHeadBranchForRepository(repository())->isDetachedHead());
}

// Writing.

TEST_F(RVGitBranchTest, CreatesAtARevision) {
    const std::string first = makeCommit();
    makeCommit();
    const auto branch = RVGitBranch::createBranchWithRefName("topic", "HEAD~1", repository());
    ASSERT_TRUE(branch);
    EXPECT_EQ(branch->commitHash(), first);
    EXPECT_FALSE(branch->isTracking());
}

TEST_F(RVGitBranchTest, CreatesATrackingBranch) {
    makeOrigin();
    const auto branch =
        RVGitBranch::createTrackingBranchWithRefName("topic", "origin/main", repository());
    ASSERT_TRUE(branch);
    EXPECT_EQ(branch->trackedRemoteName(), "origin");
    EXPECT_EQ(branch->trackedRefNames(), Strings{"refs/heads/main"});
}

TEST_F(RVGitBranchTest, CreatingWithAFailureGivesNothing) {
    makeCommit();
    std::optional<RVError> error;
    EXPECT_EQ(RVGitBranch::createBranchWithRefName("main", std::nullopt, repository(), &error),
              nullptr);
    EXPECT_EQ(error.value().code(), RVGitCreateBranchRefAlreadyExistsError);
    EXPECT_EQ(RVGitBranch::createTrackingBranchWithRefName("main", "main", repository(), &error),
              nullptr);
}

TEST_F(RVGitBranchTest, AddsAndRemovesTracking) {
    makeOrigin();
    gitInRepository({"branch", "--no-track", "topic"});
    EXPECT_TRUE(RVGitBranch::addTrackingForBranchWithRefName("topic", "origin/main", repository()));
    config("branch.topic.rebase", "true");
    EXPECT_TRUE(branchNamed("topic")->isTracking());
    EXPECT_TRUE(RVGitBranch::removeTrackingForBranchWithRefName("refs/heads/topic", repository()));
    EXPECT_FALSE(branchNamed("topic")->isTracking());
    EXPECT_FALSE(branchNamed("topic")->usesRebaseForMerge());
    EXPECT_TRUE(RVGitBranch::removeTrackingForBranchWithRefName("topic", repository()));
    EXPECT_TRUE(branchNamed("main")->isTracking());
}

TEST_F(RVGitBranchTest, ALongerSectionIsTakenForTheBranchsOwn) {
    makeCommit();
    config("branch.main2.remote", "origin");
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitBranch::removeTrackingForBranchWithRefName("main", repository(), error);
        },
        failsWith(RVGitConfigSectionNotFoundError));
    EXPECT_EQ(gitInRepository({"config", "branch.main2.remote"}), "origin");
}

TEST_F(RVGitBranchTest, SetsAndUnsetsMergeOptionsAndRebase) {
    makeCommit();
    EXPECT_TRUE(RVGitBranch::setRebaseOption(true, "refs/heads/main", repository()));
    EXPECT_TRUE(RVGitBranch::setMergeOptions("no-ff", "main", repository()));
    EXPECT_TRUE(branchNamed("main")->usesRebaseForMerge());
    EXPECT_EQ(branchNamed("main")->mergeOptions(), "no-ff");
    EXPECT_TRUE(RVGitBranch::unsetRebaseOptionForBranchWithRefName("main", repository()));
    EXPECT_TRUE(RVGitBranch::unsetMergeOptionsForBranchWithRefName("main", repository()));
    EXPECT_FALSE(branchNamed("main")->usesRebaseForMerge());
    EXPECT_EQ(branchNamed("main")->mergeOptions(), std::nullopt);
    std::optional<RVError> error;
    EXPECT_FALSE(RVGitBranch::unsetRebaseOptionForBranchWithRefName("main", repository(), &error));
    EXPECT_FALSE(error.has_value());
    EXPECT_TRUE(RVGitBranch::setRebaseOption(false, "main", repository()));
    EXPECT_EQ(gitInRepository({"config", "branch.main.rebase"}), "false");
}

TEST_F(RVGitBranchTest, DeletesSeveralAndKeepsWhatGitRefuses) {
    makeCommit();
    gitInRepository({"branch", "one"});
    gitInRepository({"branch", "two"});
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitBranch::deleteBranchesWithRefNames({"one", "missing", "two"}, repository(),
                                                           false, error);
        },
        failsWith(RVGitDeleteBranchNoSuchBranchError));
    EXPECT_THAT(names(), ElementsAre("*refs/heads/main"));
}

// Objects.

TEST_F(RVGitBranchTest, ObserversAreToldOfWhatDependsOnAField) {
    makeCommit();
    const auto branch = branchNamed("main");
    ASSERT_TRUE(branch);
    Strings told;
    std::vector<std::shared_ptr<RVObservable::Observation>> observations;
    for (const char* field : {"fullRefName", "refName", "commitHash", "commit", "isDetachedHead",
                              "isOrphaned", "isTracking"})
        observations.push_back(
            branch->observe(field, [&](std::string_view name) { told.emplace_back(name); }));
    branch->setRef(nullptr);
    EXPECT_THAT(told, UnorderedElementsAre("fullRefName", "refName", "commitHash", "commit",
                                           "isDetachedHead", "isOrphaned"));
    told.clear();
    branch->setHead(false);
    EXPECT_THAT(told, ElementsAre("isOrphaned"));
    told.clear();
    branch->setTrackedRemoteName("origin");
    branch->setTrackedRefNames(Strings{});
    EXPECT_THAT(told, ElementsAre("isTracking", "isTracking"));
    EXPECT_TRUE(branch->isTracking());
}

TEST_F(RVGitBranchTest, AnObjectNeedsARepository) {
    try {
        const RVGitBranch branch(nullptr, nullptr);
        FAIL();
    } catch (const RVInvalidParameterException& exception) {
        EXPECT_STREQ(exception.what(), "Invalid parameter not satisfying: repository != nil");
    }
}

}  // namespace
