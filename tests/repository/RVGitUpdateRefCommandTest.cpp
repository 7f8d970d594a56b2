#include "RVGit/repository/RVGitUpdateRefCommand.h"

#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::Optional;

class RVGitUpdateRefCommandTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitUpdateRefCommand> makeCommand() const {
        return RVGitUpdateRefCommand::gitUpdateRefCommandWithRepository(repository(), std::nullopt);
    }
};

TEST_F(RVGitUpdateRefCommandTest, ArgumentsOfEachField) {
    auto recorder = useRecordingGit();
    auto argumentsAfter = [&](auto fill) {
        auto command = makeCommand();
        fill(*command);
        command->run();
        return lastArguments(recorder);
    };
    EXPECT_THAT(argumentsAfter([](auto&) {}), ElementsAre("update-ref"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setDeletesRef(true); }),
                ElementsAre("update-ref", "-d"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setFullRefName("refs/heads/x"); }),
                ElementsAre("update-ref", "refs/heads/x"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setRevision("main"); }),
                ElementsAre("update-ref", "main"));
    EXPECT_THAT(argumentsAfter([](auto& command) {
                    command.setFullRefName("");
                    command.setRevision("");
                }),
                ElementsAre("update-ref"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setInstructions({"start"}); }),
                ElementsAre("update-ref", "--stdin"));
    EXPECT_THAT(argumentsAfter([](auto& command) {
                    command.setRevision("main");
                    command.setFullRefName("refs/heads/x");
                    command.setInstructions({"start"});
                    command.setDeletesRef(true);
                }),
                ElementsAre("update-ref", "-d", "--stdin", "refs/heads/x", "main"));
}

TEST_F(RVGitUpdateRefCommandTest, OptionsAreNotRead) {
    auto recorder = useRecordingGit();
    auto command = RVGitUpdateRefCommand::gitUpdateRefCommandWithRepository(
        repository(), RVOptions{{"head", true}, {"deletesRef", true}});
    command->run();
    EXPECT_THAT(lastArguments(recorder), ElementsAre("update-ref"));
}

TEST_F(RVGitUpdateRefCommandTest, InstructionsGoToStandardInputALineEach) {
    auto recorder = useRecordingGit();
    std::string hash = makeCommit();
    auto command = makeCommand();
    command->setInstructions({"create refs/heads/añb " + hash, "create refs/heads/b " + hash});
    ASSERT_TRUE(command->run());
    EXPECT_THAT(recorder.lastInvocation().standardInput,
                Optional("create refs/heads/añb " + hash + "\ncreate refs/heads/b " + hash + "\n"));
    EXPECT_EQ(gitInRepository({"rev-parse", "refs/heads/añb", "refs/heads/b"}), hash + "\n" + hash);
}

TEST_F(RVGitUpdateRefCommandTest, ThousandsOfInstructionsArriveWhole) {
    std::string hash = makeCommit();
    std::vector<std::string> instructions;
    for (int index = 0; index < 3000; ++index)
        instructions.push_back("create refs/many/" + std::to_string(index) + " " + hash);
    auto command = makeCommand();
    command->setInstructions(instructions);
    ASSERT_TRUE(command->run());
    EXPECT_EQ(
        runGit({"for-each-ref", "--format=x", "refs/many"}, repositoryPath()).standardOutput.size(),
        3000u * 2);
}

TEST_F(RVGitUpdateRefCommandTest, ARefIsSetAndDeleted) {
    std::string hash = makeCommit();
    auto command = makeCommand();
    command->setFullRefName("refs/heads/topic");
    command->setRevision("main");
    ASSERT_TRUE(command->run());
    EXPECT_EQ(gitInRepository({"rev-parse", "refs/heads/topic"}), hash);

    command = makeCommand();
    command->setDeletesRef(true);
    command->setFullRefName("refs/heads/topic");
    ASSERT_TRUE(command->run());
    EXPECT_EQ(gitInRepository({"for-each-ref", "refs/heads/topic"}), "");
}

TEST_F(RVGitUpdateRefCommandTest, ExitCode1CountsAsSuccess) {
    makeCommit();
    auto command = makeCommand();
    command->setDeletesRef(true);
    command->setFullRefName("refs/heads/main");
    command->setRevision("0123456789012345678901234567890123456789");
    std::optional<RVError> error;
    EXPECT_TRUE(command->run(&error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(command->exitCode(), 1);
    EXPECT_NE(gitInRepository({"for-each-ref", "refs/heads/main"}), "");
}

TEST_F(RVGitUpdateRefCommandTest, OtherExitCodesFail) {
    auto command = makeCommand();
    command->setFullRefName("refs/heads/topic");
    command->setRevision("nonsense");
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(command->exitCode(), 128);
}

TEST_F(RVGitUpdateRefCommandTest, TheOneErrorRow) {
    const auto& table = RVGitUpdateRefCommand::gitErrorDefinitions();
    ASSERT_EQ(table.size(), 1u);
    EXPECT_EQ(table[0].errorCode, RVGitNoRefsError);
    EXPECT_THAT(table[0].commandNames, ElementsAre("update-ref"));
    EXPECT_THAT(table[0].exitCodes, ElementsAre(1));
}

TEST_F(RVGitUpdateRefCommandTest, NeedsARepository) {
    EXPECT_THROW(RVGitUpdateRefCommand(nullptr, std::nullopt), RVInvalidParameterException);
}
