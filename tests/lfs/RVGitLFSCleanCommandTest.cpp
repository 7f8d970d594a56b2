#include "RVGit/lfs/RVGitLFSCleanCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/lfs/RVGitLFSTestCase.h"
#include "tests/support/RVDamagedOutput.h"

namespace {

using testing::ElementsAre;
using testing::Pair;

constexpr char text[] = "version https://git-lfs.github.com/spec/v1\noid sha256:2d71\nsize 1\n";

TEST(RVGitLFSCleanOutputParserTest, ReadsAPointer) {
    RVGitLFSCleanOutputParser parser(text);
    ASSERT_TRUE(parser.parse());
    const auto item = parser.pointer();
    EXPECT_EQ(item.version(), "https://git-lfs.github.com/spec/v1");
    EXPECT_EQ(item.objectID(), "sha256:2d71");
    EXPECT_EQ(item.size(), "1");
    EXPECT_EQ(item.allEntries(), parser.resultCache());
}

TEST(RVGitLFSCleanOutputParserTest, OtherLinesAreSkippedAndOtherKeysKept) {
    RVGitLFSCleanOutputParser parser("Version 1\n\nx\na-b.c  d e \nx \n");
    ASSERT_TRUE(parser.parse());
    EXPECT_THAT(parser.resultCache(), ElementsAre(Pair("a-b.c", "d e ")));
}

TEST(RVGitLFSCleanOutputParserTest, NoPointerInTheOutputIsRaised) {
    for (const char* output : {"", "x", "version a\noid b\n"}) {
        RVGitLFSCleanOutputParser parser(output);
        ASSERT_TRUE(parser.parse());
        EXPECT_THROW((void)parser.pointer(), RVInvalidParameterException);
    }
    try {
        const RVGitLFSCleanOutputParserResultItem item({{"version", "a"}, {"oid", "b"}});
        ADD_FAILURE();
    } catch (const RVInvalidParameterException& exception) {
        EXPECT_STREQ(exception.what(), "An LFS pointer must contain a 'size' key.");
    }
}

TEST(RVGitLFSCleanOutputParserTest, DamagedOutputNeverFails) {
    for (const std::string& damaged : damagedOutputs(text)) {
        RVGitLFSCleanOutputParser parser(damaged);
        ASSERT_TRUE(parser.parse());
        if (RVGitLFSPointer::validatePointerDictionary(parser.resultCache())) {
            ASSERT_EQ(parser.pointer().allEntries(), parser.resultCache());
        } else {
            ASSERT_THROW((void)parser.pointer(), RVInvalidParameterException);
        }
    }
}

class RVGitLFSCleanCommandTest : public RVGitLFSTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitLFSCleanCommand> commandFor(const std::string& path) const {
        auto command = RVGitLFSCleanCommand::gitLFSCleanCommandWithRepository(repository());
        command->setFilePath(path);
        return command;
    }
};

TEST_F(RVGitLFSCleanCommandTest, FeedsTheFileAndTakesNoArguments) {
    const auto recorder = useRecordingGit();
    const auto command = commandFor(writeFile("a b", "one"));
    EXPECT_THAT(argumentsOf(recorder, *command), ElementsAre("lfs", "clean"));
    EXPECT_EQ(recorder.lastInvocation().standardInput, "one");
}

TEST_F(RVGitLFSCleanCommandTest, MakesThePointerAndKeepsTheContents) {
    const auto command = commandFor(writeFile("repository/a b.bin", "one"));
    ASSERT_TRUE(command->run());
    const auto expected = pointerFor("one");
    ASSERT_TRUE(command->pointer());
    EXPECT_EQ(command->pointer()->allEntries(), expected->allEntries());
    EXPECT_EQ(command->pointerContents(), expected->stringRepresentation());
    EXPECT_TRUE(holdsObject("repository/.git", "one"));
}

TEST_F(RVGitLFSCleanCommandTest, APointerComesBackAsItIs) {
    const std::string pointer = pointerFor("missing")->stringRepresentation();
    const auto command = commandFor(writeFile("repository/a.bin", pointer));
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->pointerContents(), pointer);
}

TEST_F(RVGitLFSCleanCommandTest, AnEmptyFileHasNoPointerAndThatIsRaised) {
    const auto command = commandFor(writeFile("empty", ""));
    EXPECT_THROW((void)command->run(), RVInvalidParameterException);
    EXPECT_FALSE(command->pointer());
}

TEST_F(RVGitLFSCleanCommandTest, AFileThatCannotBeReadFailsWith100) {
    writeFile("target", "one");
    std::filesystem::create_symlink(scratchPath("target"), scratchPath("link"));
    ASSERT_EQ(runProgram({"mkfifo", scratchPath("pipe")}).exitCode, 0);
    for (const char* name : {"missing", "link", "pipe", "repository"}) {
        const auto command = commandFor(scratchPath(name));
        EXPECT_THAT(command, failsWith(RVGitNoGitRepoError)) << name;
        EXPECT_FALSE(command->pointer());
        EXPECT_FALSE(command->pointerContents());
    }
    EXPECT_FALSE(fileExists("repository/.git/lfs/objects"));
}

TEST_F(RVGitLFSCleanCommandTest, AFailureLeavesNoPointer) {
    useFakeGit().setAnswer({.standardOutput = text, .exitCode = 2});
    const auto command = commandFor(writeFile("a", "one"));
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_FALSE(command->pointer());
}

}  // namespace
