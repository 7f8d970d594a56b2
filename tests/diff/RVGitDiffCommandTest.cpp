#include "RVGit/diff/RVGitDiffCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/diff/RVGitDiffStatsOutputParser.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class RVGitDiffCommandTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitDiffCommand> command(
        const std::optional<RVOptions>& options = std::nullopt) const {
        return RVGitDiffCommand::gitDiffCommandWithRepository(repository(), options);
    }
    void changeFile() {
        commitFile(repositoryPath(), "f", "a\n", "First");
        writeFile(repositoryPath() + "/f", "b\n");
    }
};

TEST_F(RVGitDiffCommandTest, ArgumentsFollowTheOptions) {
    struct Case {
        std::optional<RVOptions> options;
        std::vector<std::string> arguments;
    };
    const std::vector<Case> cases = {
        {std::nullopt, {}},
        {RVOptions{}, {}},
        {RVOptions{{RVGitDiffOptionStaged, true}}, {"--staged"}},
        {RVOptions{{RVGitDiffOptionStaged, false}}, {}},
        {RVOptions{{RVGitDiffOptionBinary, true}}, {"--binary"}},
        {RVOptions{{RVGitDiffOptionNoRenames, true}}, {"--no-renames"}},
        {RVOptions{{RVGitDiffOptionIgnoreWhitespaceChanges, true}}, {"--ignore-all-space"}},
        {RVOptions{{RVGitDiffOptionSubmodule, "log"}}, {"--submodule=log"}},
        {RVOptions{{RVGitDiffOptionSubmodule, "short"},
                   {RVGitDiffOptionIgnoreWhitespaceChanges, true},
                   {RVGitDiffOptionNoRenames, true},
                   {RVGitDiffOptionBinary, true},
                   {RVGitDiffOptionStaged, true}},
         {"--staged", "--binary", "--no-renames", "--ignore-all-space", "--submodule=short"}},
        // These are for those who run the command.
        {RVOptions{{RVGitDiffOptionContextLines, 5},
                   {RVGitDiffOptionMergeCommitsFirstParent, true},
                   {RVGitDiffOptionMergeCommitsMergedFilePaths, true},
                   {RVGitDiffOptionNoFilePrefixes, true},
                   {RVGitDiffOptionNULByteDelimiter, true}},
         {}},
    };
    const RVRecordingGit recorder = useRecordingGit();
    for (const auto& [options, arguments] : cases) {
        EXPECT_TRUE(command(options)->run());
        std::vector<std::string> expected = {
            "diff", "--no-color", "--word-diff=none", "--no-ext-diff", "--full-index", "-C", "-M"};
        expected.insert(expected.end(), arguments.begin(), arguments.end());
        EXPECT_THAT(lastArguments(recorder), ElementsAreArray(expected));
    }
}

TEST_F(RVGitDiffCommandTest, TextsOfTheOptionsAreTheirNames) {
    EXPECT_STREQ(RVGitDiffOptionStaged, "RVGitDiffOptionStaged");
    EXPECT_STREQ(RVGitDiffOptionBinary, "RVGitDiffOptionBinary");
    EXPECT_STREQ(RVGitDiffOptionNoRenames, "RVGitDiffOptionNoRenames");
    EXPECT_STREQ(RVGitDiffOptionIgnoreWhitespaceChanges, "RVGitDiffOptionIgnoreWhitespaceChanges");
    EXPECT_STREQ(RVGitDiffOptionSubmodule, "RVGitDiffOptionSubmodule");
    EXPECT_STREQ(RVGitDiffOptionContextLines, "RVGitDiffOptionContextLines");
    EXPECT_STREQ(RVGitDiffOptionMergeCommitsFirstParent, "RVGitDiffOptionMergeCommitsFirstParent");
    EXPECT_STREQ(RVGitDiffOptionMergeCommitsMergedFilePaths,
                 "RVGitDiffOptionMergeCommitsMergedFilePaths");
    EXPECT_STREQ(RVGitDiffOptionNoFilePrefixes, "RVGitDiffOptionNoFilePrefixes");
    EXPECT_STREQ(RVGitDiffOptionNULByteDelimiter, "RVGitDiffOptionNULByteDelimiter");
}

TEST_F(RVGitDiffCommandTest, FieldsCanBeSet) {
    const RVRecordingGit recorder = useRecordingGit();
    auto diff = command();
    EXPECT_FALSE(diff->comparesToIndex() || diff->generatesBinaryDiffs() ||
                 diff->skipsRenameDetection() || diff->ignoresWhitespaceChanges() ||
                 diff->generatesRawFormat() || diff->generatesDiffs() ||
                 diff->generatesDiffStats());
    EXPECT_EQ(diff->submodule(), std::nullopt);
    diff->setComparesToIndex(true);
    diff->setGeneratesBinaryDiffs(true);
    diff->setSkipsRenameDetection(true);
    diff->setIgnoresWhitespaceChanges(true);
    diff->setSubmodule("diff");
    diff->setGeneratesRawFormat(true);
    diff->setGeneratesDiffs(true);
    diff->setGeneratesDiffStats(true);
    EXPECT_TRUE(diff->generatesRawFormat() && diff->generatesDiffs() && diff->generatesDiffStats());
    EXPECT_TRUE(diff->run());
    EXPECT_THAT(lastArguments(recorder),
                ElementsAreArray({"diff", "--no-color", "--word-diff=none", "--no-ext-diff",
                                  "--full-index", "-C", "-M", "--staged", "--binary",
                                  "--no-renames", "--ignore-all-space", "--submodule=diff"}));
}

TEST_F(RVGitDiffCommandTest, DiffsAreLoaded) {
    changeFile();
    auto diff = command();
    ASSERT_TRUE(diff->run());
    ASSERT_THAT(diff->loadedDiffs(), SizeIs(1));
    EXPECT_EQ(diff->loadedDiffs()[0].gitDiffFilePath(), "f");
    EXPECT_THAT(diff->loadedDiffStats(), IsEmpty());
    // The diffs live on without their command.
    const auto diffs = diff->takeLoadedDiffs();
    diff.reset();
    EXPECT_EQ((*diffs[0].gitDiffChunks())[0].gitDiffChunkRaw(), "@@ -1 +1 @@\n-a\n+b\n");
}

TEST_F(RVGitDiffCommandTest, StatisticsAreLoadedInsteadWithNumstat) {
    changeFile();
    auto diff = command();
    diff->addGitCommandOptions({"-z", "--no-abbrev", "--raw", "--numstat"});
    ASSERT_TRUE(diff->run());
    EXPECT_THAT(diff->loadedDiffs(), IsEmpty());
    ASSERT_THAT(diff->loadedDiffStats(), SizeIs(1));
    EXPECT_EQ(diff->loadedDiffStats()[0].linesAdded, 1u);
}

TEST_F(RVGitDiffCommandTest, ExitCodeOfOneWithoutAMessageIsASuccess) {
    changeFile();
    auto diff = command();
    diff->addGitCommandOption("--exit-code");
    std::optional<RVError> error;
    EXPECT_TRUE(diff->run(&error));
    EXPECT_FALSE(error);
    EXPECT_THAT(diff->loadedDiffs(), SizeIs(1));

    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardError = "error: something\n", .exitCode = 1});
    EXPECT_FALSE(command()->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitRVGitGenericError);
}

TEST_F(RVGitDiffCommandTest, AGitThatWasKilledIsNoSuccess) {
    RVFakeGit fake = useFakeGit();
    for (const int exitCode : {2, 128, 137}) {
        fake.setAnswer({.standardOutput = "diff --git a/f b/f\n", .exitCode = exitCode});
        std::optional<RVError> error;
        EXPECT_FALSE(command()->run(&error)) << exitCode;
        EXPECT_TRUE(error) << exitCode;
    }
    fake.setAnswer({.standardOutput = "diff --git a/f b/f\n", .exitCode = 1});
    EXPECT_TRUE(command()->run());
}

}  // namespace
