#include "RVGit/worktree/RVGitMoveCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/worktree/RVGitFlagTestCase.h"

namespace {

using testing::ElementsAre;

class RVGitMoveCommandTest : public RVGitFlagTestCase {
protected:
    RVGitMoveCommandTest() {
        commitFile("repository", "file", "one\n", "Message");
        commitFile("repository", "dir/inner", "two\n", "Message");
    }

    [[nodiscard]] std::shared_ptr<RVGitMoveCommand> commandFor(
        std::optional<std::string> source, std::optional<std::string> destination) const {
        return RVGitMoveCommand::gitMoveCommandWithRepository(repository(), std::move(source),
                                                              std::move(destination));
    }
    /// The move fails with the code and names both paths; nothing has been moved.
    void expectFailure(const std::string& source, const std::string& destination, int code) const {
        const std::string before = gitInRepository({"status", "--porcelain=v2"});
        const auto error = errorOf(*commandFor(source, destination));
        EXPECT_EQ(error.code(), code);
        EXPECT_EQ(error.userInfoString(RVGitSourceFilePathErrorKey), source);
        EXPECT_EQ(error.userInfoString(RVGitDestinationFilePathErrorKey), destination);
        EXPECT_EQ(gitInRepository({"status", "--porcelain=v2"}), before);
    }
};

TEST_F(RVGitMoveCommandTest, ArgumentsOfEachField) {
    using Command = RVGitMoveCommand;
    expectOptions<Command>(useRecordingGit(), [&] { return commandFor("missing", "-b"); },
                           {{&Command::setForcesRename, &Command::forcesRename, "-f"},
                            {&Command::setIgnoresErrors, &Command::ignoresErrors, "-k"}},
                           {"mv"}, {"missing", "./-b"});
}

TEST_F(RVGitMoveCommandTest, AbsentPathsAreLeftOut) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder, *commandFor(std::nullopt, "b")), ElementsAre("mv", "b"));
    EXPECT_THAT(argumentsOf(recorder, *commandFor("a", std::nullopt)), ElementsAre("mv", "a"));
    EXPECT_THAT(argumentsOf(recorder, *std::make_shared<RVGitMoveCommand>(repository())),
                ElementsAre("mv"));
}

TEST_F(RVGitMoveCommandTest, AnEmptySourceDirectoryFailsWith2105) {
    makeDirectory("repository/it's empty");
    expectFailure("it's empty", "b", RVGitMoveFileSourceDirectoryEmptyError);
}

TEST_F(RVGitMoveCommandTest, ADirectoryMovedIntoItselfFailsWith2104) {
    expectFailure("dir", "dir/inside", RVGitMoveFileSelfTargetError);
}

TEST_F(RVGitMoveCommandTest, APathOutsideFailsWith2103) {
    const auto error = errorOf(*commandFor("file", "../file"));
    EXPECT_EQ(error.code(), RVGitMoveFileOutsideRepositoryError);
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "../file");
    EXPECT_THAT(commandFor("../file", "file"), failsWith(RVGitMoveFileOutsideRepositoryError));
    EXPECT_EQ(readFile("repository/file"), "one\n");
}

TEST_F(RVGitMoveCommandTest, AMissingSourceFailsWith2106) {
    expectFailure("missing, source=a", "b", RVGitMoveFileSourceNotFoundError);
}

TEST_F(RVGitMoveCommandTest, AnUntrackedSourceFailsWith2102) {
    writeFile("repository/untracked", "three\n");
    expectFailure("untracked", "b", RVGitMoveFileNotUnderVersionControlError);
    EXPECT_EQ(readFile("repository/untracked"), "three\n");
}

TEST_F(RVGitMoveCommandTest, AMissingDestinationDirectoryFailsWith2101AndNamesTheSource) {
    const auto error = errorOf(*commandFor("file", "missing/file"));
    EXPECT_EQ(error.code(), RVGitMoveFileDestinationDirectoryMissingError);
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "file");
    EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "");
}

TEST_F(RVGitMoveCommandTest, AnExistingDestinationFailsWith2100) {
    writeFile("repository/untracked", "three\n");
    expectFailure("file", "untracked", RVGitMoveFileAlreadyExistsError);
    expectFailure("file", "dir/inner", RVGitMoveFileAlreadyExistsError);
    EXPECT_EQ(readFile("repository/untracked"), "three\n");
    EXPECT_EQ(readFile("repository/dir/inner"), "two\n");
}

TEST_F(RVGitMoveCommandTest, ADestinationNamedAsAMissingDirectoryMatchesNoRow) {
    EXPECT_THAT(commandFor("file", "missing/"), failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitMoveCommandTest, OtherExitCodesMatchNoRow) {
    useFakeGit().setAnswer(
        {.standardError = "fatal: bad source, source=a, destination=b\n", .exitCode = 1});
    EXPECT_THAT(commandFor("a", "b"), failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitMoveCommandTest, TheRowsStandInTheirOrder) {
    std::vector<std::int64_t> codes;
    for (const RVGitErrorRow& row : RVGitMoveCommand::gitErrorDefinitions())
        codes.push_back(row.errorCode);
    EXPECT_THAT(codes, ElementsAre(2105, 2104, 2103, 2106, 2102, 2101, 2100, 2106));
}

TEST_F(RVGitMoveCommandTest, ErrorsAreIgnored) {
    const auto command = commandFor("missing", "b");
    command->setIgnoresErrors(true);
    EXPECT_TRUE(command->run());
}

TEST_F(RVGitMoveCommandTest, NeedsARepository) {
    EXPECT_THROW((void)RVGitMoveCommand::gitMoveCommandWithRepository(nullptr, "a", "b"),
                 RVInvalidParameterException);
}

}  // namespace
