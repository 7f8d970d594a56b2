#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/diff/RVGitApplyCommand.h"
#include "RVGit/diff/RVGitDiff.h"
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
    ASSERT_TRUE(patch);
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

// Without context.

TEST_F(RVGitWorkingTreeManagerPatchTest, WithoutContextGoesWhereItSays) {
    write("braces", "a {\n}\nb {\n}\nc {\n}\n");
    git({"add", "braces"}, repositoryPath());
    write("braces", "a {\nb {\n}\nc {\n}\n");
    git({"config", "diff.context", "0"}, repositoryPath());
    const auto diffs = RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths(
        {"braces"}, repository(), std::nullopt);
    ASSERT_TRUE(diffs && diffs->size() == 1);
    const RVGitDiff& diff = *diffs->front();
    for (const auto& patch :
         {diff.patchForChunkAtIndex(0), std::optional(diff.indexPatchForChunkAtIndex(0, {0})),
          diff.locatedIndexPatchForLinesWithIndexes({{0, {0}}})}) {
        EXPECT_TRUE(manager().applyPatch(patch, RVOptions{{RVGitApplyOptionCached, true}}));
        EXPECT_EQ(staged("braces"), "a {\nb {\n}\nc {\n}\n");
        write("all", "a {\n}\nb {\n}\nc {\n}\n");
        git({"update-index", "--cacheinfo",
             "100644," + gitInRepository({"hash-object", "-w", "all"}) + ",braces"},
            repositoryPath());
    }
}

TEST_F(RVGitWorkingTreeManagerPatchTest, PassesTheOptionOfAPatchWithoutContextByItself) {
    const RVRecordingGit recorder = useRecordingGit();
    const auto argumentsFor = [&](const RVData& patch, const std::optional<RVOptions>& options) {
        (void)manager().applyPatch(patch, options);
        return lastArguments(recorder);
    };
    const RVData header = "--- a/c\n+++ b/c\n";
    const RVData without = header + "@@ -5 +4,0 @@\n-}\n";
    const RVOptions none = {};
    EXPECT_THAT(argumentsFor(without, std::nullopt), ElementsAre("apply", "--unidiff-zero", "-"));
    EXPECT_THAT(argumentsFor(without, RVOptions{{RVGitApplyOptionCached, true}}),
                ElementsAre("apply", "--cached", "--unidiff-zero", "-"));
    // The caller has the last word.
    EXPECT_THAT(argumentsFor(without, RVOptions{{RVGitApplyOptionUnidiffZero, false}}),
                ElementsAre("apply", "-"));
    EXPECT_THAT(argumentsFor(without, RVOptions{{RVGitApplyOptionUnidiffZero, true}}),
                ElementsAre("apply", "--unidiff-zero", "-"));
    EXPECT_THAT(argumentsFor(header + "@@ -5,2 +4,1 @@\n-}\n a\n", none),
                ElementsAre("apply", "-"));
    EXPECT_THAT(argumentsFor(header + "@@ -5,2 +4,1 @@\n a\n-}\n", none),
                ElementsAre("apply", "-"));
}

TEST(RVGitApplyCommandPatchTest, TellsWhetherAChunkHasNoContext) {
    const auto hasNone = &RVGitApplyCommand::patchHasChunkWithoutContext;
    const std::string header = "diff --git a/f b/f\nindex 1..2 100644\n--- a/f\n+++ b/f\n";
    const std::string withContext = "@@ -1,2 +1,3 @@ f\n+x\n a\n b\n";
    EXPECT_FALSE(hasNone(""));
    EXPECT_FALSE(hasNone(header));
    EXPECT_FALSE(hasNone(header + withContext));
    for (const char* chunk :
         {"@@ -5 +4,0 @@\n-}\n", "@@ -5,0 +6 @@\n+}\n", "@@ -5 +5 @@\n-a\n+b\n",
          "@@ -5 +5 @@\n-a\n\\ No newline at end of file\n+b\n\\ No newline at end of file\n",
          "@@ -5,3 +5,3 @@\n-a\n b\n-c\n+d\n+e\n", "@@ -5 +4,0 @@\n--- a/f"}) {
        EXPECT_TRUE(hasNone(header + chunk)) << chunk;
        EXPECT_TRUE(hasNone(header + withContext + chunk)) << chunk;
        EXPECT_TRUE(hasNone(header + chunk + withContext)) << chunk;
        EXPECT_TRUE(hasNone("From 1\n\nMessage\n@@ text\n---\n f | 1 +\n" + header + chunk +
                            "-- \n2.39.5\n"))
            << chunk;
    }
    // An empty line is context, too.
    EXPECT_FALSE(hasNone(header + "@@ -1,2 +1,3 @@\n\n+a\n b\n"));
    EXPECT_FALSE(hasNone(header + "@@ -1,2 +1,3 @@\n b\n+a\n\n"));
    // A file that is new or goes has none around it.
    const std::string newFile = "--- /dev/null\n+++ b/n\t2024-01-01\n@@ -0,0 +1 @@\n+a\n";
    const std::string deletedFile = "--- a/d\n+++ /dev/null\n@@ -1 +0,0 @@\n-a\n";
    EXPECT_FALSE(hasNone(newFile));
    EXPECT_FALSE(hasNone(deletedFile));
    EXPECT_FALSE(hasNone(newFile + deletedFile + newFile + header + withContext));
    EXPECT_TRUE(hasNone(newFile + deletedFile + header + "@@ -5 +4,0 @@\n-}\n"));
    EXPECT_TRUE(hasNone(deletedFile + newFile + header + "@@ -5 +4,0 @@\n-}\n" + newFile));
    // Chunks that are cut off, or none.
    EXPECT_TRUE(hasNone(header + "@@ -5,9 +4,9 @@\n-}\n"));
    EXPECT_FALSE(hasNone(header + "@@ -5,9 +4,9 @@\n-}\n "));
    EXPECT_FALSE(hasNone(header + "@@ -5,-9 +4,99999999999999999999 @@\n"));
    EXPECT_FALSE(hasNone(header + "@@ none @@\n-a\n"));
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

// New files with names that git has to quote.

class RVGitNewFilePatchTest : public RVGitWorkingTreeManagerTestCase {};

TEST_F(RVGitNewFilePatchTest, ChangesNoOtherFileWhateverItsName) {
    const std::string contents = "one\ntwo\nthree\n";
    const std::pair<std::string, std::string> names[] = {
        {"a\tb", "a"},
        {"a\t", "a"},
        {"x b/x", "x"},
        {"x b/y b/x b/y", "y"},
        {"y\" \"b/y", "y"},
        {"a\a1", "a1"},
        {"v\v1", "v1"},
        {"f\f12", "f12"},
        {"caf\xE9", "caf\xC3\xA9"},
        {"caf\xE9\t", "caf\xC3\xA9"},
        {"nin\xCC\x83o", "ni\xC3\xB1o"},
        {"ni\xC3\xB1o", "nin\xCC\x83o"},
        {"ni\xC3\xB1o\t", "ni\xC3\xB1o"},
        {"two\nlines", "two"},
        {"quo\"te", "quo"},
        {"\"quoted\"", "quoted"},
        {"back\\slash", "back/slash"},
        {"back\\303", "back\xC3"},
        {"with blank", "with"},
        {"behind ", "behind"},
        {" ahead", "ahead"},
        {"\x83\x5C", "\xC6\x92\\"},
        {"plain", "other"},
    };
    for (const bool quotesPaths : {true, false}) {
        gitInRepository({"config", "core.quotePath", quotesPaths ? "true" : "false"});
        for (const auto& [name, other] : names) {
            SCOPED_TRACE("the name: " + name);
            gitInRepository({"rm", "-rqf", "--ignore-unmatch", "."});
            write("unchanged", "x\n");
            write(other, contents);
            commitAll();
            write(name, contents);
            gitInRepository({"add", "."});
            const auto diffs = RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths(
                {}, repository(), RVOptions{{RVGitDiffOptionNoRenames, true}});
            ASSERT_TRUE(diffs && diffs->size() == 1);
            const RVGitDiff& diff = *diffs->front();
            ASSERT_TRUE(diff.isFileStatusAdded());
            // What the library takes for its path may be a file as well.
            if (diff.filePath() != name && diff.filePath() != other) {
                write(*diff.filePath(), contents);
                gitInRepository({"add", "."});
            }
            const RVOptions options = {{RVGitApplyOptionCached, true},
                                       {RVGitApplyOptionReverse, true}};
            EXPECT_TRUE(manager().applyPatch(diff.worktreePatchForChunkAtIndex(0, {0}), options));
            EXPECT_EQ(staged("./" + name), "two\nthree\n");
            EXPECT_EQ(staged("./" + other), contents);
            if (diff.filePath() != name) {
                EXPECT_EQ(staged("./" + *diff.filePath()), contents);
            }
            gitInRepository({"add", "."});
            EXPECT_TRUE(manager().applyPatch(
                diff.locatedWorktreePatchForLinesWithIndexes({{0, {1}}}), options));
            EXPECT_EQ(staged("./" + name), "one\nthree\n");
            EXPECT_EQ(staged("./" + other), contents);
            gitInRepository({"add", "."});
            EXPECT_TRUE(manager().applyPatch(
                diff.locatedWorktreePatchForLinesWithIndexes({{0, {0, 1, 2}}}), options));
            EXPECT_THAT(status(), testing::Contains("?? " + name));
            EXPECT_EQ(staged("./" + other), contents);
        }
    }
}

TEST_F(RVGitNewFilePatchTest, OfAPlainPathHasAPlainHeader) {
    for (const std::string name : {"plain", "with blank", "dir/-dash", "#'*"}) {
        write(name, "one\ntwo\n");
        gitInRepository({"add", "."});
        const auto diffs = RVGitDiff::allDiffsByComparingIndexWithBaseForFilePaths(
            {":(literal)" + name}, repository(), std::nullopt);
        ASSERT_TRUE(diffs && diffs->size() == 1);
        const RVData patch = diffs->front()->worktreePatchForChunkAtIndex(0, {0});
        EXPECT_EQ(patch, "diff --git a/" + name + " b/" + name + "\nindex " + std::string(40, '0') +
                             ".." + *diffs->front()->objectHash() + "\n--- a/" + name + "\n+++ b/" +
                             name + "\n@@ -1,1 +1,2 @@\n+one\n two\n");
    }
}

}  // namespace
