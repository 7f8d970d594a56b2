#include "RVGit/history/RVGitMergeBaseCommand.h"

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;

namespace {

const std::string hashA(40, 'a');
const std::string hashB(40, 'b');

}  // namespace

TEST(RVGitMergeBaseOutputParserTest, TheResultIsTheFirstHash) {
    std::string output = hashA + "\n" + hashB + "\n";
    RVGitMergeBaseOutputParser parser(output);
    ASSERT_TRUE(parser.parse());
    ASSERT_NE(parser.result(), nullptr);
    EXPECT_EQ(parser.result()->commitHash, hashA);
    EXPECT_EQ(parser.indexedResultCache().size(), 2u);
}

TEST(RVGitMergeBaseOutputParserTest, NoOutputGivesNoResult) {
    RVGitMergeBaseOutputParser parser("");
    EXPECT_TRUE(parser.parse());
    EXPECT_EQ(parser.result(), nullptr);
}

TEST(RVGitMergeBaseOutputParserTest, ALineThatIsNoHashFailsWithCode11) {
    for (const std::string& line : {hashA + "a", hashA.substr(1), std::string(40, 'A'), " " + hashA,
                                    std::string("nonsense")}) {
        std::string output = line + "\n";
        RVGitMergeBaseOutputParser parser(output);
        std::optional<RVError> error;
        EXPECT_FALSE(parser.parse(&error)) << line;
        ASSERT_NE(error, std::nullopt);
        EXPECT_EQ(error->code(), RVGitOutputParserError);
        EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey),
                  "RVGitMergeBaseOutputParser");
        EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), line);
    }
}

TEST(RVGitMergeBaseOutputParserTest, ResultsOfDamagedOutputAreHashes) {
    for (const auto& damaged : damagedOutputs(hashA + "\n")) {
        RVGitMergeBaseOutputParser parser(damaged);
        bool parsed = parser.parse();
        ASSERT_EQ(parser.result() != nullptr, parsed && !damaged.empty() && damaged != "\n");
        if (parser.result()) {
            ASSERT_EQ(parser.result()->commitHash.size(), 40u);
            ASSERT_EQ(parser.result()->commitHash.find_first_not_of("0123456789abcdef"),
                      std::string::npos);
        }
    }
}

class RVGitMergeBaseCommandTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitMergeBaseCommand> makeCommand(
        const std::vector<std::string>& revisions, bool checksAncestor = false) const {
        auto command = RVGitMergeBaseCommand::gitMergeBaseCommandWithRepository(repository());
        command->setRevisions(revisions);
        command->setChecksAncestor(checksAncestor);
        return command;
    }
    /// Two branches, "main" and "topic", of one commit each behind the one whose hash it returns.
    std::string makeFork() {
        std::string hash = makeCommit();
        gitInRepository({"checkout", "-q", "-b", "topic"});
        makeCommit("On topic");
        gitInRepository({"checkout", "-q", "main"});
        makeCommit("On main");
        return hash;
    }
};

TEST_F(RVGitMergeBaseCommandTest, ArgumentsOfEachField) {
    makeFork();
    auto recorder = useRecordingGit();
    makeCommand({"main", "topic"})->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("merge-base", "main", "topic"));
    makeCommand({"main", "topic"}, true)->run();
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("merge-base", "--is-ancestor", "main", "topic"));
    makeCommand({"main", "topic", "HEAD"})->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("merge-base", "main", "topic", "HEAD"));
    makeCommand({})->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("merge-base"));
}

TEST_F(RVGitMergeBaseCommandTest, FindsTheCommonAncestor) {
    std::string hash = makeFork();
    auto command = makeCommand({"main", "topic"});
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->mergeBaseCommitHash(), hash);
    EXPECT_FALSE(command->isAncestor());
}

TEST_F(RVGitMergeBaseCommandTest, NoCommonAncestorIsExitCode1) {
    makeCommit();
    gitInRepository({"checkout", "-q", "--orphan", "another"});
    makeCommit();
    auto command = makeCommand({"main", "another"});
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(command->exitCode(), 1);
    EXPECT_EQ(command->mergeBaseCommitHash(), std::nullopt);
}

TEST_F(RVGitMergeBaseCommandTest, AnAncestorIsExitCode0) {
    std::string hash = makeFork();
    auto command = makeCommand({hash, "topic"}, true);
    EXPECT_TRUE(command->run());
    EXPECT_TRUE(command->isAncestor());
    EXPECT_EQ(command->mergeBaseCommitHash(), std::nullopt);
}

TEST_F(RVGitMergeBaseCommandTest, NoAncestorIsExitCode1) {
    makeFork();
    auto command = makeCommand({"main", "topic"}, true);
    std::optional<RVError> error;
    EXPECT_FALSE(command->run(&error));
    EXPECT_EQ(command->exitCode(), 1);
    EXPECT_FALSE(command->isAncestor());
}

TEST_F(RVGitMergeBaseCommandTest, AnUnknownRevisionIsNoAncestor) {
    makeCommit();
    auto command = makeCommand({"main", "nonsense"}, true);
    std::optional<RVError> error;
    EXPECT_FALSE(command->run(&error));
    ASSERT_NE(error, std::nullopt);
    EXPECT_EQ(command->exitCode(), 128);
    EXPECT_FALSE(command->isAncestor());
}

TEST_F(RVGitMergeBaseCommandTest, OutputForFewerThanTwoRevisionsIsNotRead) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = hashA + "\n"});
    for (const auto& revisions : {std::vector<std::string>(), {"main"}}) {
        auto command = makeCommand(revisions);
        std::optional<RVError> error;
        command->run(&error);
        EXPECT_EQ(error, std::nullopt);
        EXPECT_EQ(command->mergeBaseCommitHash(), std::nullopt);
    }
    auto command = makeCommand({"main", "topic"});
    EXPECT_TRUE(command->run());
    EXPECT_EQ(command->mergeBaseCommitHash(), hashA);
}

TEST_F(RVGitMergeBaseCommandTest, OfOutputThatCannotBeReadWhollyNothingIsKept) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = hashA + "\nwarning\n"});
    auto command = makeCommand({"main", "topic"});
    EXPECT_THAT(command, failsWith(RVGitOutputParserError));
    EXPECT_EQ(command->mergeBaseCommitHash(), std::nullopt);
}

TEST_F(RVGitMergeBaseCommandTest, OneRevisionIsAUsageErrorToGit) {
    makeCommit();
    auto command = makeCommand({"main"});
    EXPECT_THAT(command, failsWith(RVGitCommandUsageError));
}

TEST_F(RVGitMergeBaseCommandTest, OutputOfAnotherFormFailsWithCode11) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = "nonsense\n"});
    EXPECT_THAT(makeCommand({"main", "topic"}), failsWith(RVGitOutputParserError));
}

TEST_F(RVGitMergeBaseCommandTest, NeedsARepository) {
    EXPECT_THROW(RVGitMergeBaseCommand(nullptr), RVInvalidParameterException);
}
