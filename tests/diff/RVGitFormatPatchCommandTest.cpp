#include "RVGit/diff/RVGitFormatPatchCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Arguments = std::vector<std::string>;

class RVGitFormatPatchCommandTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitFormatPatchCommand> commandFor(
        const std::string& revision) const {
        return RVGitFormatPatchCommand::gitFormatPatchCommandWithRepository(repository(), revision);
    }
};

TEST_F(RVGitFormatPatchCommandTest, ArgumentsOfEachField) {
    makeCommit();
    const auto recorder = useRecordingGit();
    const auto argumentsAfter = [&](auto fill) {
        const auto command = commandFor("HEAD");
        command->setDestinationURL(RVURL::fileURLWithPath(scratchPath("out put")));
        fill(*command);
        EXPECT_TRUE(command->run());
        return lastArguments(recorder);
    };
    const std::string directory = scratchPath("out put");
    EXPECT_THAT(argumentsAfter([](auto&) {}), ElementsAre("format-patch", "-o", directory, "HEAD"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setStartingNumber(7); }),
                ElementsAre("format-patch", "--start-number", "7", "-o", directory, "HEAD"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setNumbersPatches(true); }),
                ElementsAre("format-patch", "--numbered", "-o", directory, "HEAD"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setNoPrefix(true); }),
                ElementsAre("format-patch", "-o", directory, "--no-prefix", "HEAD"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setLimit(3); }),
                ElementsAre("format-patch", "-o", directory, "-3", "HEAD"));
    EXPECT_THAT(argumentsAfter([](auto& command) { command.setDestinationURL(std::nullopt); }),
                ElementsAre("format-patch", "HEAD"));
    EXPECT_THAT(argumentsAfter([](auto& command) {
                    command.setLimit(3);
                    command.setNoPrefix(true);
                    command.setNumbersPatches(true);
                    command.setStartingNumber(7);
                }),
                ElementsAre("format-patch", "--start-number", "7", "--numbered", "-o", directory,
                            "--no-prefix", "-3", "HEAD"));
}

TEST_F(RVGitFormatPatchCommandTest, TellsTheFilesThatItWrote) {
    makeCommit("First");
    makeCommit("Second thing");
    makeCommit("Third");
    const auto command = commandFor("HEAD~2");
    command->setDestinationURL(RVURL::fileURLWithPath(scratchPath("patches")));
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->createdPatchFilePaths(),
                ElementsAre(scratchPath("patches/0001-Second-thing.patch"),
                            scratchPath("patches/0002-Third.patch")));
    EXPECT_THAT(readFile(command->createdPatchFilePaths()[0]),
                testing::HasSubstr("Subject: [PATCH 1/2] Second thing"));
}

TEST_F(RVGitFormatPatchCommandTest, NoCommitsAreNoFiles) {
    makeCommit();
    const auto command = commandFor("HEAD");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->createdPatchFilePaths(), IsEmpty());
}

TEST_F(RVGitFormatPatchCommandTest, AnUnknownRevisionFails) {
    const auto command = commandFor("missing");
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(command->createdPatchFilePaths(), IsEmpty());
}

TEST_F(RVGitFormatPatchCommandTest, NeedsARepository) {
    EXPECT_THROW(RVGitFormatPatchCommand(nullptr, "HEAD"), RVInvalidParameterException);
}

}  // namespace
