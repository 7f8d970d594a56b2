#include "RVGit/history/RVGitRevListCommand.h"

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;

class RVGitRevListCommandTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitRevListCommand> makeCommand(
        const std::optional<RVOptions>& options = std::nullopt) const {
        return RVGitRevListCommand::gitRevListCommandWithRepository(repository(), options);
    }
    [[nodiscard]] std::shared_ptr<RVGitRevListCommand> makeCountingCommand(
        const std::string& revision) const {
        auto command = makeCommand(RVOptions{{RVGitRevListOptionCount, true}});
        command->setRevisions({revision});
        return command;
    }
};

TEST_F(RVGitRevListCommandTest, OptionKeysAreTheirNames) {
    EXPECT_STREQ(RVGitRevListOptionCount, "RVGitRevListOptionCount");
    EXPECT_STREQ(RVGitRevListOptionMaxCount, "RVGitRevListOptionMaxCount");
    EXPECT_STREQ(RVGitRevListOptionFirstParent, "RVGitRevListOptionFirstParent");
}

TEST_F(RVGitRevListCommandTest, ArgumentsOfEachOption) {
    makeCommit();
    auto recorder = useRecordingGit();
    auto argumentsWith = [&](const std::optional<RVOptions>& options) {
        auto command = makeCommand(options);
        command->setRevisions({"main"});
        EXPECT_TRUE(command->run());
        return lastArguments(recorder);
    };
    EXPECT_THAT(argumentsWith(std::nullopt), ElementsAre("rev-list", "main"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitRevListOptionCount, true}}),
                ElementsAre("rev-list", "--count", "main"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitRevListOptionMaxCount, 7}}),
                ElementsAre("rev-list", "-7", "main"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitRevListOptionMaxCount, 0}}),
                ElementsAre("rev-list", "main"));
    // Read as a number of 32 bits.
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitRevListOptionMaxCount, (1LL << 32) + 2}}),
                ElementsAre("rev-list", "-2", "main"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitRevListOptionFirstParent, true}}),
                ElementsAre("rev-list", "--first-parent", "main"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitRevListOptionFirstParent, true},
                                        {RVGitRevListOptionMaxCount, 7},
                                        {RVGitRevListOptionCount, true}}),
                ElementsAre("rev-list", "--count", "-7", "--first-parent", "main"));
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitRevListOptionFirstParent, false},
                                        {RVGitRevListOptionCount, false}}),
                ElementsAre("rev-list", "main"));
}

TEST_F(RVGitRevListCommandTest, RevisionsAreTheArguments) {
    makeCommit();
    auto recorder = useRecordingGit();
    auto command = makeCommand();
    command->setRevisions({"main", "^HEAD"});
    EXPECT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("rev-list", "main", "^HEAD"));
    makeCommand()->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("rev-list"));
}

TEST_F(RVGitRevListCommandTest, CountsCommits) {
    for (int count = 0; count < 12; ++count)
        makeCommit();
    auto command = makeCountingCommand("main");
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->commitCount(), 12u);

    command = makeCountingCommand("main");
    command->setMaxCount(5);
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->commitCount(), 5u);
}

TEST_F(RVGitRevListCommandTest, CountsFirstParentsOnly) {
    makeCommit();
    gitInRepository({"checkout", "-q", "-b", "topic"});
    makeCommit();
    makeCommit();
    gitInRepository({"checkout", "-q", "main"});
    gitInRepository({"merge", "-q", "--no-ff", "-m", "Merge", "topic"});
    auto command = makeCountingCommand("main");
    command->setFirstParentOnly(true);
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->commitCount(), 2u);
}

TEST_F(RVGitRevListCommandTest, WithoutCountingNothingIsRead) {
    makeCommit();
    auto command = makeCommand();
    command->setRevisions({"main"});
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->commitCount(), 0u);
    EXPECT_FALSE(command->standardOutputData().empty());
}

TEST_F(RVGitRevListCommandTest, EmptyOutputCountsAs0) {
    auto fake = useFakeGit();
    auto command = makeCountingCommand("main");
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->commitCount(), 0u);
}

TEST_F(RVGitRevListCommandTest, CountingHeadOfAnEmptyRepositoryFailsWithACountOf0) {
    auto command = makeCountingCommand("HEAD");
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(command->commitCount(), 0u);
}

TEST_F(RVGitRevListCommandTest, AnEmptyHistoryIsASuccessWithACountOf0) {
    for (const char* message :
         {"fatal: bad default revision 'HEAD'\n",
          "fatal: your current branch 'main' does not have any commits yet\n"}) {
        auto fake = useFakeGit();
        fake.setAnswer({.standardError = message, .exitCode = 128});
        auto command = makeCountingCommand("HEAD");
        std::optional<RVError> error;
        EXPECT_TRUE(command->run(&error)) << message;
        EXPECT_EQ(error, std::nullopt);
        EXPECT_EQ(command->commitCount(), 0u);
    }
}

TEST_F(RVGitRevListCommandTest, AnUnknownRevisionIsTheGenericError) {
    auto command = makeCommand();
    command->setRevisions({"nonsense"});
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(command->exitCode(), 128);
}

TEST_F(RVGitRevListCommandTest, ErrorRowsNameTheLogCommand) {
    const auto& table = RVGitRevListCommand::gitErrorDefinitions();
    ASSERT_EQ(table.size(), 2u);
    for (const auto& row : table) {
        EXPECT_EQ(row.errorCode, RVGitLogNoSuchRevisionError);
        EXPECT_THAT(row.commandNames, ElementsAre("log"));
        EXPECT_THAT(row.exitCodes, ElementsAre(128));
        EXPECT_THAT(row.standardErrorMatchedComponentNames, ElementsAre(RVGitRevisionErrorKey));
    }
    EXPECT_THAT(table[0].standardErrorPatterns,
                ElementsAre("fatal: ambiguous argument '(.+)': unknown revision or path not in the "
                            "working tree"));
    EXPECT_THAT(table[1].standardErrorPatterns, ElementsAre("fatal: bad revision '(.+)'"));
}

TEST_F(RVGitRevListCommandTest, ErrorRowsMatchTheLogCommand) {
    makeCommit();
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"nonsense"}, {"nonsense", "--"}}) {
        auto command = RVGitCommand::gitCommandWithRepository(repository());
        command->setGitCommand("log");
        command->addGitCommandArguments(arguments);
        std::optional<RVError> error;
        EXPECT_FALSE(command->run(&error));
        ASSERT_NE(error, std::nullopt);
        EXPECT_EQ(error->code(), RVGitLogNoSuchRevisionError);
        EXPECT_EQ(error->userInfoString(RVGitRevisionErrorKey), "nonsense");
    }
}

TEST_F(RVGitRevListCommandTest, NeedsARepository) {
    EXPECT_THROW(RVGitRevListCommand(nullptr, std::nullopt), RVInvalidParameterException);
}
