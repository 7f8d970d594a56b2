#include "RVGit/diff/RVGitApplyCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using Arguments = std::vector<std::string>;

class RVGitApplyCommandTest : public RVGitRepositoryTestCase {
protected:
    RVGitApplyCommandTest() { commitFile("repository", "file", "one\n", "Message"); }

    [[nodiscard]] std::shared_ptr<RVGitApplyCommand> commandFor(
        std::string text, const std::optional<RVOptions>& options = std::nullopt) const {
        return RVGitApplyCommand::gitApplyCommandWithRepository(repository(),
                                                                RVData(std::move(text)), options);
    }
    /// The error that git's answer, which no present git gives, is mapped to.
    RVError errorOfAnswer(std::string standardError, int exitCode) {
        useFakeGit().setAnswer({.standardError = std::move(standardError), .exitCode = exitCode});
        return errorOf(*commandFor("patch"));
    }

    const std::string patch = "--- a/file\n+++ b/file\n@@ -1 +1 @@\n-one\n+two\n";
};

TEST_F(RVGitApplyCommandTest, ArgumentsOfEachSetting) {
    struct Case {
        const char* option;
        void (RVGitApplyCommand::*set)(bool);
        bool (RVGitApplyCommand::*get)() const;
        Arguments flags;
    };
    using Command = RVGitApplyCommand;
    const Case cases[] = {
        {"RVGitApplyOptionNoVerify", &Command::setNoVerify, &Command::noVerify, {"--no-verify"}},
        {"cached", &Command::setAppliesPatchToIndex, &Command::appliesPatchToIndex, {"--cached"}},
        {"index",
         &Command::setAppliesPatchToWorkingTreeAndIndex,
         &Command::appliesPatchToWorkingTreeAndIndex,
         {"--index"}},
        {"reverse",
         &Command::setAppliesPatchInReverse,
         &Command::appliesPatchInReverse,
         {"--reverse"}},
        {"ignores-whitespace",
         &Command::setIgnoresWhitespace,
         &Command::ignoresWhitespace,
         {"--ignore-whitespace", "--whitespace=nowarn"}},
        {"unidiffZero", &Command::setUnidiffZero, &Command::unidiffZero, {"--unidiff-zero"}},
        {"recount", &Command::setRecount, &Command::recount, {"--recount"}},
        {"inaccurate-eof",
         &Command::setInaccurateEOF,
         &Command::inaccurateEOF,
         {"--inaccurate-eof"}},
        {nullptr, &Command::setChecksApplicability, &Command::checksApplicability, {"--check"}},
    };
    const auto recorder = useRecordingGit();
    Arguments allFlags = {"apply"};
    RVOptions allOptions;
    for (const Case& setting : cases) {
        Arguments expected = {"apply"};
        expected.insert(expected.end(), setting.flags.begin(), setting.flags.end());
        expected.push_back("-");
        const auto bySetter = commandFor(patch);
        ((*bySetter).*setting.set)(true);
        (void)bySetter->run();
        EXPECT_EQ(lastArguments(recorder), expected);
        allFlags.insert(allFlags.end(), setting.flags.begin(), setting.flags.end());
        if (!setting.option)
            continue;
        const auto byOption = commandFor(patch, RVOptions{{setting.option, true}});
        EXPECT_TRUE(((*byOption).*setting.get)());
        (void)byOption->run();
        EXPECT_EQ(lastArguments(recorder), expected);
        EXPECT_FALSE(((*commandFor(patch, RVOptions{{setting.option, false}})).*setting.get)());
        allOptions.insert_or_assign(setting.option, true);
    }
    const auto command = commandFor(patch, allOptions);
    command->setChecksApplicability(true);
    (void)command->run();
    allFlags.push_back("-");
    EXPECT_EQ(lastArguments(recorder), allFlags);
}

TEST_F(RVGitApplyCommandTest, ArgumentsOfFilesAndPatch) {
    const auto recorder = useRecordingGit();
    const auto nothing = RVGitApplyCommand::gitApplyCommandWithRepository(repository());
    (void)nothing->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("apply"));
    EXPECT_EQ(recorder.lastInvocation().standardInput, std::nullopt);

    const auto files = RVGitApplyCommand::gitApplyCommandWithRepository(
        repository(), Arguments{"one.patch", "-R"}, RVOptions{{RVGitApplyOptionCached, true}});
    (void)files->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("apply", "--cached", "--", "one.patch", "-R"));
    EXPECT_EQ(recorder.lastInvocation().standardInput, std::nullopt);

    const auto noFiles =
        RVGitApplyCommand::gitApplyCommandWithRepository(repository(), Arguments(), std::nullopt);
    (void)noFiles->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("apply", "--"));

    (void)commandFor(patch)->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("apply", "-"));
    EXPECT_EQ(recorder.lastInvocation().standardInput, patch);

    const auto both = commandFor(patch);
    both->setFilePaths(Arguments{"one.patch"});
    (void)both->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("apply", "--", "one.patch", "-"));
}

TEST_F(RVGitApplyCommandTest, AppliesAPatchToTheWorkingTree) {
    ASSERT_TRUE(commandFor(patch)->run());
    EXPECT_EQ(readFile("repository/file"), "two\n");
    ASSERT_TRUE(commandFor(patch, RVOptions{{RVGitApplyOptionReverse, true}})->run());
    EXPECT_EQ(readFile("repository/file"), "one\n");
}

TEST_F(RVGitApplyCommandTest, AppliesAPatchToTheIndex) {
    ASSERT_TRUE(commandFor(patch, RVOptions{{RVGitApplyOptionCached, true}})->run());
    EXPECT_EQ(readFile("repository/file"), "one\n");
    EXPECT_EQ(gitInRepository({"show", ":file"}), "two");
}

TEST_F(RVGitApplyCommandTest, ChecksOnly) {
    const auto command = commandFor(patch);
    command->setChecksApplicability(true);
    ASSERT_TRUE(command->run());
    EXPECT_EQ(readFile("repository/file"), "one\n");
}

TEST_F(RVGitApplyCommandTest, AppliesPatchFiles) {
    const std::string path = writeFile("a b.patch", patch);
    ASSERT_TRUE(RVGitApplyCommand::gitApplyCommandWithRepository(repository(), Arguments{path},
                                                                 std::nullopt)
                    ->run());
    EXPECT_EQ(readFile("repository/file"), "two\n");
}

TEST_F(RVGitApplyCommandTest, GitHasNoOptionNoVerify) {
    EXPECT_THAT(commandFor(patch, RVOptions{{RVGitApplyOptionNoVerify, true}}),
                failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitApplyCommandTest, AMissingFileFailsWith1402) {
    const std::string path =
        writeFile("missing.patch", "--- a/missing\n+++ b/missing\n@@ -1 +1 @@\n-one\n+two\n");
    const auto command = RVGitApplyCommand::gitApplyCommandWithRepository(
        repository(), Arguments{path}, std::nullopt);
    const auto error = errorOf(*command);
    EXPECT_EQ(error.code(), RVGitApplyPatchWithNoTargetError);
    ASSERT_TRUE(error.userInfo().contains(RVGitFilePathsErrorKey));
    EXPECT_THAT(*error.userInfo().at(RVGitFilePathsErrorKey).stringList(), ElementsAre(path));
}

TEST_F(RVGitApplyCommandTest, WithoutFilesTheErrorNamesNone) {
    const auto error = errorOf(*commandFor("--- a/missing\n+++ b/missing\n@@ -1 +1 @@\n-a\n+b\n"));
    EXPECT_EQ(error.code(), RVGitApplyPatchWithNoTargetError);
    EXPECT_FALSE(error.userInfo().contains(RVGitFilePathsErrorKey));
}

TEST_F(RVGitApplyCommandTest, ACorruptPatchFailsWith1400WhereGitSaysFatal) {
    const auto error = errorOfAnswer("fatal: corrupt patch at line 12\n", 128);
    EXPECT_EQ(error.code(), RVGitApplyPatchCorruptError);
    EXPECT_EQ(error.userInfoString(RVGitPatchLineNumberErrorKey), "12");
    EXPECT_EQ(errorOfAnswer("fatal: corrupt patch at line 12\n", 1).code(), RVGitRVGitGenericError);
}

TEST_F(RVGitApplyCommandTest, TheLineNumberStaysBesideTheFiles) {
    useFakeGit().setAnswer({.standardError = "fatal: corrupt patch at line 12\n", .exitCode = 128});
    const auto error = errorOf(*RVGitApplyCommand::gitApplyCommandWithRepository(
        repository(), std::vector<std::string>{"a.patch", "b.patch"}, std::nullopt));
    EXPECT_EQ(error.userInfoString(RVGitPatchLineNumberErrorKey), "12");
    EXPECT_TRUE(error.userInfo().contains(RVGitFilePathsErrorKey));
}

TEST_F(RVGitApplyCommandTest, GarbageFailsWith1400WhereGitSaysFatal) {
    const auto error = errorOfAnswer("fatal: patch with only garbage at line 3\n", 128);
    EXPECT_EQ(error.code(), RVGitApplyPatchCorruptError);
    EXPECT_EQ(error.userInfoString(RVGitPatchLineNumberErrorKey), "3");
}

TEST_F(RVGitApplyCommandTest, PresentGitsSayErrorOfACorruptPatch) {
    const auto error = errorOf(*commandFor("--- a/file\n+++ b/file\n@@ -1 +1 @@\n-one\n"));
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_THAT(error.userInfoString(RVGitCommandErrorOutputErrorKey).value_or(""),
                testing::AnyOf(testing::HasSubstr("error: corrupt patch at line 5"),
                               testing::HasSubstr("error: corrupt patch at <stdin>:5")));
}

TEST_F(RVGitApplyCommandTest, NoChangesFailWith1401WhereGitSaysSo) {
    EXPECT_EQ(errorOfAnswer("error: No changes\n", 1).code(), RVGitApplyPatchWithNoChangesError);
    EXPECT_EQ(errorOfAnswer("error: No changes\n", 128).code(), RVGitRVGitGenericError);
}

TEST_F(RVGitApplyCommandTest, AHugePatchIsFed) {
    std::string lines;
    while (lines.size() < 100'000'000)
        lines += "+a line of some length, so that not all of the time goes into counting lines " +
                 std::to_string(lines.size()) + "\n";
    const auto count = std::to_string(std::count(lines.begin(), lines.end(), '\n'));
    const auto command = commandFor(
        "diff --git a/huge b/huge\nnew file mode 100644\n--- /dev/null\n+++ b/huge\n"
        "@@ -0,0 +1," +
        count + " @@\n" + lines);
    command->setChecksApplicability(true);
    EXPECT_TRUE(command->run());
}

TEST_F(RVGitApplyCommandTest, AGitThatReadsNothingOfAHugePatchSpeaksThroughItsExit) {
    auto fake = useFakeGit();
    EXPECT_TRUE(commandFor(std::string(100'000'000, 'x'))->run());
    fake.setAnswer({.standardError = "fatal: corrupt patch at line 1\n", .exitCode = 128});
    EXPECT_THAT(commandFor(std::string(100'000'000, 'x')), failsWith(RVGitApplyPatchCorruptError));
}

TEST_F(RVGitApplyCommandTest, NeedsARepository) {
    EXPECT_THROW(RVGitApplyCommand(nullptr, std::nullopt), RVInvalidParameterException);
}

}  // namespace
