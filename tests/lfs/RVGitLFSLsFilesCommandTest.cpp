#include "RVGit/lfs/RVGitLFSLsFilesCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/lfs/RVGitLFSTestCase.h"
#include "tests/support/RVDamagedOutput.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> parsed(std::string_view output) {
    RVGitLFSLsFilesOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    return parser.files();
}

/// The definition of a line, and nothing else.
std::vector<std::string> slowlyParsed(std::string_view line) {
    const RVRegularExpression expression(R"(^[0-9a-f]+\s+\*{1}\s+(.+))",
                                         RVRegularExpression::DotMatchesLineSeparators);
    const auto components = expression.firstMatch(line);
    if (components.empty())
        return {};
    return {std::string(*components[1])};
}

TEST(RVGitLFSLsFilesOutputParserTest, ReadsMarkedFiles) {
    EXPECT_THAT(parsed("a1fce43638 * a b.psd\n2d711642b7 - missing\n2d711642b7 * dir/\u00e9 \n"),
                ElementsAre("a b.psd", "dir/\u00e9 "));
}

TEST(RVGitLFSLsFilesOutputParserTest, OtherLinesAreSkipped) {
    EXPECT_THAT(parsed("\nA1 * a\n * a\na1 ** b\na1 *\na1 * \nfatal: no\na1 * c\n"),
                ElementsAre("c"));
}

TEST(RVGitLFSLsFilesOutputParserTest, ReadsLinesAsTheirDefinitionDoes) {
    std::mt19937 random(1);
    const std::vector<std::string> pieces = {"a1",  "0",   " ",      "  ",     "*",  "-",
                                             "\t",  "\r",  "\u2003", "b",      "x",  "\xE9",
                                             " * ", " - ", "\x7f",   "\u00e9", "**", "\x01"};
    for (int round = 0; round < 20000; ++round) {
        std::string line = round % 2 ? "a1" : "";
        for (auto count = random() % 6; count > 0; --count)
            line += pieces[random() % pieces.size()];
        RVGitLFSLsFilesOutputParser parser(line);
        ASSERT_TRUE(parser.parse());
        // Output that is not UTF-8 is decoded first.
        if (line.find('\xE9') == std::string::npos && !line.empty()) {
            ASSERT_EQ(parser.files(), slowlyParsed(line)) << line;
        }
    }
}

TEST(RVGitLFSLsFilesOutputParserTest, DamagedOutputNeverFails) {
    for (const std::string& damaged : damagedOutputs("a1fce43638 * a b.psd\n2d711 - c\n"))
        for (const std::string& file : parsed(damaged))
            ASSERT_FALSE(file.empty());
}

class RVGitLFSLsFilesCommandTest : public RVGitLFSTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitLFSLsFilesCommand> commandFor(
        std::optional<std::string> revision) const {
        auto command = RVGitLFSLsFilesCommand::gitLFSLsFilesCommandWithRepository(repository());
        command->setRevision(std::move(revision));
        return command;
    }
};

TEST_F(RVGitLFSLsFilesCommandTest, Arguments) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder, *commandFor(std::nullopt)), ElementsAre("lfs", "ls-files"));
    EXPECT_THAT(argumentsOf(recorder, *commandFor("main")), ElementsAre("lfs", "ls-files", "main"));
}

TEST_F(RVGitLFSLsFilesCommandTest, ListsTheFilesOfARevision) {
    commitFile("repository", "a b.bin", "one", "Message");
    commitFile("repository", "dir/\u00e9.bin", "two", "Message");
    commitFile("repository", "plain.txt", "three", "Message");
    const auto now = commandFor(std::nullopt);
    ASSERT_TRUE(now->run());
    ASSERT_TRUE(now->files());
    EXPECT_THAT(*now->files(), testing::UnorderedElementsAre("a b.bin", "dir/\u00e9.bin"));
    const auto before = commandFor("HEAD~2");
    ASSERT_TRUE(before->run());
    EXPECT_THAT(*before->files(), ElementsAre("a b.bin"));
}

TEST_F(RVGitLFSLsFilesCommandTest, AFileThatStandsAsAPointerIsLeftOut) {
    commitFile("repository", "a.bin", "one", "Message");
    const std::string pointer = git({"show", "HEAD:a.bin"}, repositoryPath());
    writeFile("repository/a.bin", pointer);
    const auto command = commandFor(std::nullopt);
    ASSERT_TRUE(command->run());
    EXPECT_THAT(*command->files(), IsEmpty());
}

TEST_F(RVGitLFSLsFilesCommandTest, ABadRevisionFailsAndGivesNoList) {
    const auto command = commandFor("missing");
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_FALSE(command->files());
    const auto recorder = useRecordingGit();
    EXPECT_THAT(commandFor("--all"), failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

}  // namespace
