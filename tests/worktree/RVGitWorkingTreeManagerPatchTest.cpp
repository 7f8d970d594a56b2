#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "tests/worktree/RVGitWorkingTreeManagerTestCase.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string latinText = "caf\xe9\r\nna\xefve\n";
const std::string binaryBytes("\x00\x01\x02\xff\n\x00", 6);

class RVGitWorkingTreeManagerPatchTest : public RVGitWorkingTreeManagerTestCase {
protected:
    RVGitWorkingTreeManagerPatchTest() {
        for (const std::string& path : paths)
            write(path, "one\n");
        commitAll();
        write("a", latinText);
        write("b", binaryBytes);
        write("c", "two\n");
    }

    /// What git prints with the options of a patch.
    [[nodiscard]] std::string gitDiff(const Paths& options, const Paths& filePaths) const {
        Paths arguments = {"diff", "--no-color", "--full-index", "-C", "-M"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.emplace_back("--");
        arguments.insert(arguments.end(), filePaths.begin(), filePaths.end());
        return git(arguments, repositoryPath());
    }

    const Paths paths = {"a", "b", "c", "unchanged"};
    const RVOptions binary = {{RVGitDiffOptionBinary, true}};
};

TEST_F(RVGitWorkingTreeManagerPatchTest, HoldsTheBytesThatGitPrints) {
    const auto patch =
        manager().patchByComparingWorkingTreeWithIndexForFilePaths(paths, std::nullopt);
    EXPECT_EQ(patch, gitDiff({}, paths));
    EXPECT_THAT(*patch, HasSubstr("\n+caf\xe9\r\n+na\xefve\n"));
    EXPECT_THAT(*patch, HasSubstr("Binary files a/b and b/b differ\n"));
    EXPECT_EQ(manager().patchByComparingIndexWithBaseForFilePaths(paths, std::nullopt), "");
    git({"add", "."}, repositoryPath());
    EXPECT_EQ(manager().patchByComparingIndexWithBaseForFilePaths(paths, binary),
              gitDiff({"--cached", "--binary"}, paths));
    EXPECT_EQ(manager().patchByComparingWorkingTreeWithIndexForFilePaths(paths, binary), "");
}

TEST_F(RVGitWorkingTreeManagerPatchTest, WithoutPathsAllFilesAreCompared) {
    const std::string all = gitDiff({}, {});
    EXPECT_EQ(
        manager().patchByComparingWorkingTreeWithIndexForFilePaths(std::nullopt, std::nullopt),
        all);
    EXPECT_EQ(manager().patchByComparingWorkingTreeWithIndexForFilePaths(Paths(), std::nullopt),
              all);
}

TEST_F(RVGitWorkingTreeManagerPatchTest, BatchesFollowEachOther) {
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(2);
    const Paths order = {"c", "unchanged", "b", "a", "c"};
    EXPECT_EQ(manager().patchByComparingWorkingTreeWithIndexForFilePaths(order, binary),
              gitDiff({"--binary"}, {"c", "unchanged"}) + gitDiff({"--binary"}, {"b", "a"}) +
                  gitDiff({"--binary"}, {"c"}));
    git({"add", "."}, repositoryPath());
    EXPECT_EQ(manager().patchByComparingIndexWithBaseForFilePaths(order, binary),
              gitDiff({"--cached", "--binary"}, {"c", "unchanged"}) +
                  gitDiff({"--cached", "--binary"}, {"b", "a"}) +
                  gitDiff({"--cached", "--binary"}, {"c"}));
}

TEST_F(RVGitWorkingTreeManagerPatchTest, ALaterBatchThatFailsMakesAllOfItAbsent) {
    RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(2);
    RVFakeGit fake = useFakeGit();
    fake.setAnswer("b", {.standardError = "fatal: no\n", .exitCode = 128});
    fake.passOtherCallsOn();
    std::optional<RVError> error;
    EXPECT_EQ(manager().patchByComparingWorkingTreeWithIndexForFilePaths(
                  Paths{"a", "c", "b", "unchanged"}, std::nullopt, &error),
              std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfoString(RVGitCommandErrorOutputErrorKey), "fatal: no\n");
    error.reset();
    EXPECT_EQ(manager().patchByComparingIndexWithBaseForFilePaths(Paths{"b"}, std::nullopt, &error),
              std::nullopt);
    EXPECT_TRUE(error);
}

TEST_F(RVGitWorkingTreeManagerPatchTest, ConfigurationDoesNotChangeItsForm) {
    const auto plain =
        manager().patchByComparingWorkingTreeWithIndexForFilePaths(paths, std::nullopt);
    for (const auto& [key, value] : {std::pair<const char*, const char*>{"diff.noprefix", "true"},
                                     {"diff.mnemonicPrefix", "true"},
                                     {"color.ui", "always"},
                                     {"diff.external", "/bin/false"},
                                     {"diff.wordRegex", "."},
                                     {"core.pager", "/bin/false"}})
        git({"config", key, value}, repositoryPath());
    EXPECT_EQ(manager().patchByComparingWorkingTreeWithIndexForFilePaths(paths, std::nullopt),
              plain);
}

TEST_F(RVGitWorkingTreeManagerPatchTest, IsAppliedElsewhere) {
    const auto patch = manager().patchByComparingWorkingTreeWithIndexForFilePaths(paths, binary);
    ASSERT_TRUE(patch);
    EXPECT_TRUE(manager().applyPatch(*patch, RVOptions{{RVGitApplyOptionReverse, true}}));
    EXPECT_THAT(status(), IsEmpty());
    EXPECT_TRUE(manager().applyPatch(*patch, RVOptions{{RVGitApplyOptionCached, true}}));
    EXPECT_THAT(status(), ElementsAre("MM a", "MM b", "MM c"));
    EXPECT_EQ(staged("a"), latinText);
    EXPECT_EQ(staged("b"), binaryBytes);
    EXPECT_EQ(read("b"), "one\n");
    EXPECT_TRUE(manager().applyPatch(*patch, std::nullopt));
    EXPECT_EQ(read("a"), latinText);
    EXPECT_EQ(read("b"), binaryBytes);
}

TEST_F(RVGitWorkingTreeManagerPatchTest, IsAppliedFromAFile) {
    const auto patch = manager().patchByComparingWorkingTreeWithIndexForFilePaths(paths, binary);
    git({"checkout", "-q", "."}, repositoryPath());
    const auto url = RVURL::fileURLWithPath(writeFile("a b %41.patch", patch.value_or("")));
    EXPECT_TRUE(manager().applyPatchFromFileAtURL(url, std::nullopt));
    EXPECT_EQ(read("a"), latinText);
    EXPECT_EQ(read("b"), binaryBytes);
}

TEST_F(RVGitWorkingTreeManagerPatchTest, ThatDoesNotFitChangesNothing) {
    auto patch = manager().patchByComparingWorkingTreeWithIndexForFilePaths(paths, binary);
    git({"checkout", "-q", "."}, repositoryPath());
    write("c", "other\n");
    EXPECT_FALSE(manager().applyPatch(patch, std::nullopt));
    EXPECT_THAT(status(), ElementsAre(" M c"));
    EXPECT_EQ(read("c"), "other\n");

    const auto error = errorOf([&](RVErrorPlace place) {
        return manager().applyPatch("--- a/missing\n+++ b/missing\n@@ -1 +1 @@\n-a\n+b\n",
                                    std::nullopt, place);
    });
    EXPECT_EQ(error.code(), RVGitApplyPatchWithNoTargetError);
    EXPECT_FALSE(manager().applyPatch(std::nullopt, std::nullopt));
    EXPECT_FALSE(manager().applyPatchFromFileAtURL(
        RVURL::fileURLWithPath(scratchPath("missing.patch")), std::nullopt));
}

}  // namespace
