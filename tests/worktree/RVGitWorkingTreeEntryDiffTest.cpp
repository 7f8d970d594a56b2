#include <filesystem>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "RVGit/worktree/RVGitWorkingTreeOptions.h"
#include "tests/worktree/RVGitWorkingTreeTestCase.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class RVGitWorkingTreeEntryDiffTest : public RVGitWorkingTreeTestCase {
protected:
    using Comparing = std::shared_ptr<RVGitDiff> (Entry::*)(const std::optional<RVOptions>&,
                                                            RVErrorPlace) const;

    static constexpr Comparing comparesWorkingTree = &Entry::compareWorkingTreeWithIndexWithOptions;
    static constexpr Comparing comparesIndex = &Entry::compareIndexWithBaseWithOptions;
    static constexpr Comparing comparesSides = &Entry::compareUnmergedVersionsWithOptions;

    /// The letter and the path of the entry's diff, "none" for null; fails the test on an error.
    [[nodiscard]] std::string comparison(const std::string& filePath, Comparing comparing) const {
        std::optional<RVError> error;
        const auto entry = newEntry(RVGitFileStatusModified, RVGitFileStatusModified, filePath);
        const auto diff = ((*entry).*comparing)(std::nullopt, &error);
        EXPECT_FALSE(error.has_value());
        if (!diff)
            return "none";
        return diff->isFileStatusDeleted() ? "D " + diff->oldFilePath().value_or("")
                                           : "M " + diff->filePath().value_or("");
    }
};

TEST_F(RVGitWorkingTreeEntryDiffTest, ComparesTheWorkingTreeWithTheIndexAndTheIndexWithHEAD) {
    commitFile("repository", "file.txt", "base\n", "Message");
    commitFile("repository", "other", "base\n", "Message");
    stageFile("file.txt", "staged\n");
    writeFile("repository/file.txt", "current\n");
    writeFile("repository/other", "current\n");
    const auto changed = entryAt("file.txt");
    ASSERT_TRUE(changed);
    const auto current = changed->compareWorkingTreeWithIndexWithOptions(std::nullopt);
    ASSERT_TRUE(current);
    EXPECT_EQ(current->filePath(), "file.txt");
    EXPECT_THAT(current->rawDiff().value(), HasSubstr("-staged\n+current"));
    const auto staged = changed->compareIndexWithBaseWithOptions(std::nullopt);
    ASSERT_TRUE(staged);
    EXPECT_THAT(staged->rawDiff().value(), HasSubstr("-base\n+staged"));
}

TEST_F(RVGitWorkingTreeEntryDiffTest, NothingToCompareIsNoDiff) {
    makeCommit();
    const auto unchanged = newEntry(RVGitFileStatusUnchanged, RVGitFileStatusUnchanged);
    for (const Comparing comparing : {comparesWorkingTree, comparesIndex, comparesSides}) {
        // What an earlier call has left does not stay.
        std::optional<RVError> error = RVError("domain", 1);
        EXPECT_EQ(((*unchanged).*comparing)(std::nullopt, &error), nullptr);
        EXPECT_EQ(error, std::nullopt);
    }
}

TEST_F(RVGitWorkingTreeEntryDiffTest, ComparesTheSidesOfAConflict) {
    makeConflicts();
    const auto diff = entryAt("both")->compareUnmergedVersionsWithOptions(std::nullopt);
    ASSERT_TRUE(diff);
    EXPECT_THAT(diff->rawDiff().value(), HasSubstr("-ours\n+theirs"));
}

TEST_F(RVGitWorkingTreeEntryDiffTest, WithoutAConflictThereIsNothingToCompareAndThePlaceIsCleared) {
    const auto recorder = useRecordingGit();
    auto error = filledPlace();
    EXPECT_EQ(newEntry(RVGitFileStatusModified, RVGitFileStatusModified)
                  ->compareUnmergedVersionsWithOptions(std::nullopt, &error),
              nullptr);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitWorkingTreeEntryDiffTest, TheOnlySideOfAConflictIsComparedAsItLiesInTheWorkingTree) {
    makeConflicts();
    writeFile("repository/ours-deleted", "current\n");
    const auto theirs = entryAt("ours-deleted")->compareUnmergedVersionsWithOptions(std::nullopt);
    ASSERT_TRUE(theirs);
    EXPECT_THAT(theirs->rawDiff().value(), HasSubstr("--- /dev/null\n"));
    EXPECT_THAT(theirs->rawDiff().value(), testing::EndsWith("\n+current\n"));
    const auto ours = entryAt("theirs-deleted")->compareUnmergedVersionsWithOptions(std::nullopt);
    ASSERT_TRUE(ours);
    EXPECT_THAT(ours->rawDiff().value(), HasSubstr("+++ /dev/null\n"));
}

TEST_F(RVGitWorkingTreeEntryDiffTest, AConflictWithoutSidesHasNothingToCompare) {
    makeConflicts();
    std::optional<RVError> error;
    EXPECT_EQ(entryAt("renamed")->compareUnmergedVersionsWithOptions(std::nullopt, &error),
              nullptr);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitWorkingTreeEntryDiffTest, OfFilesThatThePathMatchesAsAPatternItsOwnIsCompared) {
    for (const char* file : {"a!", "a?"})
        commitFile("repository", file, "base\n", "Message");
    for (const char* file : {"a!", "a?"})
        writeFile(std::string("repository/") + file, "changed\n");
    EXPECT_EQ(comparison("a?", comparesWorkingTree), "M a?");
    EXPECT_EQ(comparison("a!", comparesWorkingTree), "M a!");
    gitInRepository({"add", "."});
    EXPECT_EQ(comparison("a?", comparesIndex), "M a?");
    EXPECT_EQ(comparison("a!", comparesIndex), "M a!");
}

TEST_F(RVGitWorkingTreeEntryDiffTest, AnotherFileThatThePathMatchesAsAPatternIsNotCompared) {
    for (const char* file : {"a!", "a?"})
        commitFile("repository", file, "base\n", "Message");
    writeFile("repository/a!", "changed\n");
    EXPECT_EQ(comparison("a?", comparesWorkingTree), "none");
    stageFile("a?", "staged\n");
    EXPECT_EQ(comparison("a?", comparesWorkingTree), "none") << "staged whole";
    EXPECT_EQ(comparison("a!", comparesWorkingTree), "M a!");

    gitInRepository({"reset", "-q", "--hard"});
    stageFile("a!", "staged\n");
    EXPECT_EQ(comparison("a?", comparesIndex), "none");
    writeFile("repository/a?", "changed\n");
    EXPECT_EQ(comparison("a?", comparesIndex), "none") << "changed, but not staged";
    EXPECT_EQ(comparison("a!", comparesIndex), "M a!");
}

TEST_F(RVGitWorkingTreeEntryDiffTest, ADeletedFileIsComparedByItsOldPath) {
    for (const char* file : {"a!", "a?", "plain"})
        commitFile("repository", file, "base\n", "Message");
    for (const char* file : {"a?", "plain"})
        std::filesystem::remove(scratchPath(std::string("repository/") + file));
    writeFile("repository/a!", "changed\n");
    for (const char* file : {"a?", "plain"})
        EXPECT_EQ(comparison(file, comparesWorkingTree), std::string("D ") + file);
    gitInRepository({"add", "-A"});
    for (const char* file : {"a?", "plain"})
        EXPECT_EQ(comparison(file, comparesIndex), std::string("D ") + file);
}

TEST_F(RVGitWorkingTreeEntryDiffTest, OptionsArePassedToGitButNotForTheSidesOfAConflict) {
    makeConflicts();
    const auto conflict =
        entryAt("both", RVOptions{{RVGitWorkingTreeOptionIncludeUnchangedFiles, true}});
    ASSERT_TRUE(conflict);
    const auto recorder = useRecordingGit();
    const auto argumentsFor = [&](Comparing comparing) {
        const RVOptions options = {{RVGitDiffOptionIgnoreWhitespaceChanges, true}};
        (void)((*conflict).*comparing)(options, nullptr);
        return lastArguments(recorder);
    };
    const std::vector<std::string> common = {"diff",
                                             "-z",
                                             "-p",
                                             "--src-prefix=a/",
                                             "--dst-prefix=b/",
                                             "--full-index",
                                             "--no-color",
                                             "--word-diff=none",
                                             "--no-ext-diff",
                                             "--full-index",
                                             "-C",
                                             "-M"};
    const auto withCommon = [&](const std::vector<std::string>& others) {
        auto arguments = common;
        arguments.insert(arguments.end(), others.begin(), others.end());
        return arguments;
    };
    EXPECT_EQ(argumentsFor(comparesWorkingTree), withCommon({"--ignore-all-space", "--", "both"}));
    EXPECT_EQ(argumentsFor(comparesIndex),
              withCommon({"--staged", "--ignore-all-space", "--", "both"}));
    EXPECT_EQ(argumentsFor(comparesSides), withCommon({":2:both", ":3:both"}));
}

TEST_F(RVGitWorkingTreeEntryDiffTest, AFailureIsLeftInThePlace) {
    makeConflicts();
    const auto conflict = entryAt("both");
    ASSERT_TRUE(conflict);
    auto fake = useFakeGit();
    fake.passOtherCallsOn();
    fake.setAnswer("diff", {.standardError = "fatal: broken\n", .exitCode = 128});
    for (const Comparing comparing : {comparesWorkingTree, comparesIndex, comparesSides}) {
        EXPECT_THAT(
            [&](RVErrorPlace error) { return ((*conflict).*comparing)(std::nullopt, error); },
            failsWith(RVGitRVGitGenericError));
    }
}

}  // namespace
