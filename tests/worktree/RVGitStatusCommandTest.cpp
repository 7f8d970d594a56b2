#include "RVGit/worktree/RVGitStatusCommand.h"

#include <map>
#include <random>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/worktree/RVGitWorkingTreeHelper.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::SizeIs;

std::string plainText(const std::vector<RVGitStatusOutputParserResultItem>& items) {
    std::string text;
    for (const auto& item : items)
        text += std::to_string(item.leftFileStatus) + "," + std::to_string(item.rightFileStatus) +
                "|" + item.filePath + "|" + item.originalFilePath.value_or("-") + "\n";
    return text;
}

/// The items, and "failed" behind them where a line could not be read.
std::string parsed(std::string_view output) {
    RVGitStatusOutputParser parser(output);
    const bool succeeded = parser.parse();
    return plainText(parser.changedFiles()) + (succeeded ? "" : "failed");
}

std::vector<std::string> charactersOfText(const std::string& text) {
    std::vector<std::string> characters;
    for (const char byte : text) {
        if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80)
            characters.emplace_back();
        characters.back() += byte;
    }
    return characters;
}

std::string unquotedPath(const std::string& text) {
    std::string path = unquotedCString(text);
    while (path.ends_with('/'))
        path.pop_back();
    while (path.starts_with('/'))
        path.erase(0, 1);
    return path;
}

/// The same, one step after the other.
std::string parsedStepByStep(std::string_view output) {
    std::vector<RVGitStatusOutputParserResultItem> items;
    std::map<std::string, std::size_t> deleted;
    for (const std::string& line :
         componentsSeparatedByString(stringUsingBestEncoding(output), "\n")) {
        if (line.empty())
            continue;
        const auto characters = charactersOfText(line);
        if (characters.size() < 4)
            return plainText(items) + "failed";
        const std::string text =
            stringByJoiningComponents({characters.begin() + 3, characters.end()}, "");
        RVGitStatusOutputParserResultItem item;
        item.leftFileStatus = RVGitFileStatusFromString(characters[0]);
        item.rightFileStatus = RVGitFileStatusFromString(characters[1]);
        item.filePath = unquotedPath(text);
        if (characters[0] == "R" || characters[0] == "C") {
            const auto paths = componentsSeparatedByString(text, " -> ");
            if (paths.size() != 2)
                return plainText(items) + "failed";
            item.originalFilePath = unquotedPath(paths[0]);
            item.filePath = unquotedPath(paths[1]);
        }
        const bool isOnDiskOnly = item.rightFileStatus == RVGitFileStatusUntracked ||
                                  item.rightFileStatus == RVGitFileStatusIgnored;
        if (isOnDiskOnly && deleted.contains(item.filePath)) {
            items[deleted[item.filePath]].rightFileStatus = item.rightFileStatus;
            continue;
        }
        if (item.leftFileStatus == RVGitFileStatusDeleted)
            deleted[item.filePath] = items.size();
        items.push_back(item);
    }
    return plainText(items);
}

TEST(RVGitStatusOutputParserTest, ReadsThePairsOfLetters) {
    EXPECT_EQ(parsed("M  staged\n"
                     " M changed\n"
                     "AM both\n"
                     " D gone\n"
                     "T  link\n"
                     "UU conflict\n"
                     "?? new\n"
                     "!! ignored\n"
                     "X? unknown\n"),
              "6,3|staged|-\n"
              "3,6|changed|-\n"
              "4,6|both|-\n"
              "3,9|gone|-\n"
              "8,3|link|-\n"
              "10,10|conflict|-\n"
              "1,1|new|-\n"
              "2,2|ignored|-\n"
              "3,1|unknown|-\n");
}

TEST(RVGitStatusOutputParserTest, ARenameHasTheNewPathAndTheOld) {
    EXPECT_EQ(parsed("R  old.txt -> dir/new.txt\n"), "7,3|dir/new.txt|old.txt\n");
    EXPECT_EQ(parsed("RM \"an old one\" -> \"caf\\303\\251\"\n"), "7,6|caf\u00E9|an old one\n");
    EXPECT_EQ(parsed("C  a -> b\n"), "5,3|b|a\n");
    EXPECT_EQ(parsed("R  /a/ -> b/\n"), "7,3|b|a\n");
}

TEST(RVGitStatusOutputParserTest, OnlyTheLeftLetterTellsOfARename) {
    EXPECT_EQ(parsed(" R old -> new\n"), "3,7|old -> new|-\n");
    EXPECT_EQ(parsed("DR old -> new\n"), "9,7|old -> new|-\n");
    EXPECT_EQ(parsed(" C old -> new\n"), "3,5|old -> new|-\n");
}

TEST(RVGitStatusOutputParserTest, ARenameOfNamesThatHoldTheArrowFails) {
    EXPECT_EQ(parsed("R  \"a -> b\" -> c\n"), "failed");
    EXPECT_EQ(parsed("R  a -> \"b -> c\"\n"), "failed");
    EXPECT_EQ(parsed("C  a\n"), "failed");
    EXPECT_EQ(parsed("A  \"a -> b\"\n"), "4,3|a -> b|-\n");
    EXPECT_EQ(parsed("R  a -> -> b\n"), "7,3|-> b|a\n");
}

TEST(RVGitStatusOutputParserTest, QuotedPathsAreUnquoted) {
    EXPECT_EQ(parsed("?? \"tab\\there\"\n"), "1,1|tab\there|-\n");
    EXPECT_EQ(parsed("?? \"new\\nline\"\n"), "1,1|new\nline|-\n");
    EXPECT_EQ(parsed("?? \"q\\\"uote\\\\\"\n"), "1,1|q\"uote\\|-\n");
    EXPECT_EQ(parsed("?? \"caf\\303\\251/\"\n"), "1,1|caf\u00E9|-\n");
    EXPECT_EQ(parsed("?? \" blanks \"\n"), "1,1| blanks |-\n");
    EXPECT_EQ(parsed("?? back\\101slash\n"), "1,1|back\\101slash|-\n");
}

TEST(RVGitStatusOutputParserTest, SlashesAtBothEndsAreTrimmed) {
    EXPECT_EQ(parsed("?? dir/\n?? dir/sub//\n?? /a\n?? /\n"),
              "1,1|dir|-\n1,1|dir/sub|-\n1,1|a|-\n1,1||-\n");
}

TEST(RVGitStatusOutputParserTest, APathDeletedInTheIndexAndUntrackedIsOneItem) {
    EXPECT_EQ(parsed("D  file\n M other\n?? file\n"), "9,1|file|-\n3,6|other|-\n");
    EXPECT_EQ(parsed("D  file\n!! file\n"), "9,2|file|-\n");
    EXPECT_EQ(parsed("D  dir\n?? dir/\n"), "9,1|dir|-\n");
    EXPECT_EQ(parsed("D  file\n?? file\n!! file\n"), "9,2|file|-\n");
}

TEST(RVGitStatusOutputParserTest, OtherPairsOfLinesStayApart) {
    EXPECT_EQ(parsed("?? file\nD  file\n"), "1,1|file|-\n9,3|file|-\n");
    EXPECT_EQ(parsed(" D file\n?? file\n"), "3,9|file|-\n1,1|file|-\n");
    EXPECT_EQ(parsed("D  file\n M file\n"), "9,3|file|-\n3,6|file|-\n");
    EXPECT_EQ(parsed("D  caf\u00E9\n?? cafe\u0301\n"), "9,3|caf\u00E9|-\n1,1|cafe\u0301|-\n");
}

TEST(RVGitStatusOutputParserTest, TheLastDeletedLineOfAPathIsTheOneThatIsMeant) {
    EXPECT_EQ(parsed("D  file\nDD file\n?? file\n"), "9,3|file|-\n9,1|file|-\n");
}

TEST(RVGitStatusOutputParserTest, LinesOfFewerThanFourCharactersFail) {
    for (const char* line : {"M", "M ", "M  ", "\u00E9 a", "\U0001F389\U0001F389\U0001F389"})
        EXPECT_EQ(parsed(line), "failed") << line;
    EXPECT_EQ(parsed("?? \u00E9\n"), "1,1|\u00E9|-\n");
    EXPECT_EQ(parsed("\u00E9M\u20ACa\n"), "3,6|a|-\n");
}

TEST(RVGitStatusOutputParserTest, WhatCannotBeReadFailsAndKeepsWhatWasRead) {
    RVGitStatusOutputParser parser(" M a\nM\n M b\n");
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey), "RVGitStatusOutputParser");
    EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), "M");
    EXPECT_THAT(parser.changedFiles(), SizeIs(1));
}

TEST(RVGitStatusOutputParserTest, LinesMayBeGiven) {
    RVGitStatusOutputParser parser(std::vector<std::string>{" M a", "", "?? b"});
    ASSERT_TRUE(parser.parse());
    EXPECT_THAT(parser.changedFiles(), SizeIs(2));
}

TEST(RVGitStatusOutputParserTest, NoOutputIsNoChange) {
    EXPECT_EQ(parsed(""), "");
    EXPECT_EQ(parsed("\n\n"), "");
}

TEST(RVGitStatusOutputParserTest, ACarriageReturnIsPartOfThePath) {
    EXPECT_EQ(parsed("?? a\r\n?? b"), "1,1|a\r|-\n1,1|b|-\n");
}

TEST(RVGitStatusOutputParserTest, OneNameThatIsNoUTF8SpoilsNoOtherName) {
    EXPECT_EQ(parsed("?? caf\xE9\n?? caf\u00E9\n"), "1,1|caf\u00E9|-\n1,1|caf\u00E9|-\n");
    EXPECT_EQ(parsed("?? \"caf\\351\"\n?? \"caf\\303\\251\"\n"),
              "1,1|caf\u00E9|-\n1,1|caf\u00E9|-\n");
}

TEST(RVGitStatusOutputParserTest, DamagedOutputIsReadAsStepByStep) {
    const std::string output =
        "D  \"caf\\303\\251 x\"\nR  old -> \"a b\"\nUD dir/\n?? \"caf\\303\\251 x\"\n!! \u00E9\n";
    for (const std::string& damaged : damagedOutputs(output))
        ASSERT_EQ(parsed(damaged), parsedStepByStep(damaged)) << testing::PrintToString(damaged);
}

TEST(RVGitStatusOutputParserTest, RandomLinesAreReadAsStepByStep) {
    const std::vector<std::string> letters = {"?", "!", " ", "A", "C",      "M",          "R",
                                              "T", "D", "U", "X", "\u00E9", "\U0001F389", ""};
    const std::vector<std::string> blanks = {" ", " ", " ", "\t", "\u2003", ""};
    const std::vector<std::string> paths = {"a",
                                            "a/",
                                            "a b",
                                            "\"a b\"",
                                            "\"\\303\\251\"",
                                            "\u00E9",
                                            "\"\u00E9\\t\"",
                                            "old -> a",
                                            "-> a",
                                            "a -> b -> c",
                                            "\"",
                                            "/",
                                            " -> ",
                                            "caf\xE9",
                                            ""};
    std::mt19937 random(20200102);
    const auto any = [&](const std::vector<std::string>& texts) {
        return texts[random() % texts.size()];
    };
    std::size_t numberRead = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string output;
        for (auto count = random() % 6; count > 0; --count)
            output += any(letters) + any(letters) + any(blanks) + any(paths) + "\n";
        const std::string result = parsed(output);
        ASSERT_EQ(result, parsedStepByStep(output)) << testing::PrintToString(output);
        numberRead += !result.ends_with("failed");
    }
    EXPECT_GT(numberRead, 1000u);
}

class RVGitStatusCommandTest : public RVGitRepositoryTestCase {};

class RVGitStatusCommandLineTest : public RVGitRepositoryTestCase {
protected:
    std::vector<std::string> argumentsWith(
        const std::function<void(RVGitStatusCommand&)>& fill,
        std::optional<std::vector<std::string>> filePaths = std::nullopt) {
        const auto command =
            RVGitStatusCommand::gitStatusCommandWithRepository(repository(), std::move(filePaths));
        fill(*command);
        (void)command->run();
        return lastArguments(recorder_);
    }
    static void nothing(RVGitStatusCommand&) {}

private:
    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitStatusCommandLineTest, WithoutFieldsThereIsTheFormatAlone) {
    EXPECT_THAT(argumentsWith(nothing), ElementsAre("status", "--porcelain"));
}

TEST_F(RVGitStatusCommandLineTest, AsksForIgnoredFiles) {
    EXPECT_THAT(argumentsWith([](auto& command) { command.setShowsIgnoredFiles(true); }),
                ElementsAre("status", "--porcelain", "--ignored"));
}

TEST_F(RVGitStatusCommandLineTest, TheModeOfUntrackedFilesIsAWord) {
    const char* words[] = {"no", "normal", "all"};
    for (unsigned mode = 1; mode <= 3; ++mode)
        EXPECT_THAT(argumentsWith([&](auto& command) {
                        command.setUntrackedFilesMode(static_cast<RVGitUntrackedFilesMode>(mode));
                    }),
                    ElementsAre("status", "--porcelain",
                                std::string("--untracked-files=") + words[mode - 1]));
}

TEST_F(RVGitStatusCommandLineTest, TheModeOfSubmodulesIsAWord) {
    const char* words[] = {"none", "tracked", "dirty", "all"};
    for (unsigned mode = 1; mode <= 4; ++mode)
        EXPECT_THAT(
            argumentsWith([&](auto& command) {
                command.setIgnoreSubmodulesMode(static_cast<RVGitIgnoreSubmodulesMode>(mode));
            }),
            ElementsAre("status", "--porcelain",
                        std::string("--ignore-submodules=") + words[mode - 1]));
}

TEST_F(RVGitStatusCommandLineTest, AModeWithoutAWordIsNotPassed) {
    EXPECT_THAT(argumentsWith([](auto& command) {
                    command.setUntrackedFilesMode(static_cast<RVGitUntrackedFilesMode>(4));
                    command.setIgnoreSubmodulesMode(static_cast<RVGitIgnoreSubmodulesMode>(5));
                }),
                ElementsAre("status", "--porcelain"));
}

TEST_F(RVGitStatusCommandLineTest, PathsStandBehindADash) {
    EXPECT_THAT(argumentsWith(nothing, {{"b", "-a"}}),
                ElementsAre("status", "--porcelain", "--", "b", "-a"));
    EXPECT_THAT(argumentsWith(nothing, std::vector<std::string>()),
                ElementsAre("status", "--porcelain", "--"));
}

TEST_F(RVGitStatusCommandLineTest, OptionsStandInAFixedOrder) {
    EXPECT_THAT(argumentsWith([](auto& command) {
                    command.setIgnoreSubmodulesMode(RVGitIgnoreSubmodulesModeAll);
                    command.setUntrackedFilesMode(RVGitUntrackedFilesModeAll);
                    command.setShowsIgnoredFiles(true);
                    command.setFilePaths({{"a"}});
                }),
                ElementsAre("status", "--porcelain", "--ignored", "--untracked-files=all",
                            "--ignore-submodules=all", "--", "a"));
}

TEST_F(RVGitStatusCommandTest, KeepsItsFields) {
    RVGitStatusCommand command(repository(), {{"a"}});
    EXPECT_THAT(command.filePaths().value(), ElementsAre("a"));
    EXPECT_FALSE(command.showsIgnoredFiles());
    EXPECT_EQ(command.untrackedFilesMode(), 0u);
    EXPECT_EQ(command.ignoreSubmodulesMode(), 0u);
    EXPECT_EQ(RVGitStatusCommand(repository()).filePaths(), std::nullopt);
}

TEST_F(RVGitStatusCommandTest, ReadsWhatGitPrints) {
    makeCommit();
    writeFile("repository/file.txt", "changed");
    writeFile("repository/a b/new", "");
    const auto command =
        RVGitStatusCommand::gitStatusCommandWithRepository(repository(), std::nullopt);
    ASSERT_TRUE(command->run());
    EXPECT_EQ(plainText(command->changedFiles()), "3,6|file.txt|-\n1,1|a b|-\n");
    EXPECT_THAT(command->takeChangedFiles(), SizeIs(2));
}

TEST_F(RVGitStatusCommandTest, GitRefusesTheModeTracked) {
    makeCommit();
    const auto command =
        RVGitStatusCommand::gitStatusCommandWithRepository(repository(), std::nullopt);
    command->setIgnoreSubmodulesMode(RVGitIgnoreSubmodulesModeTracked);
    EXPECT_THAT(command, failsWith(1));
}

TEST_F(RVGitStatusCommandTest, ALineThatCannotBeReadFailsTheCommand) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = " M a\nM\n"});
    const auto command =
        RVGitStatusCommand::gitStatusCommandWithRepository(repository(), std::nullopt);
    EXPECT_THAT(command, failsWith(RVGitOutputParserError));
}

}  // namespace
