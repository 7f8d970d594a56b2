#include "RVGit/merge/RVGitMergeSequenceContentParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <random>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitTestCase.h"

namespace {

using Parser = RVGitMergeSequenceContentParser;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Each instruction in a line, and whether all lines were read.
std::string textOf(const RVGitSequenceInstruction::List& instructions, bool parsed) {
    std::string text;
    for (const auto& instruction : instructions)
        text += instruction->stringValue() + "\n";
    return text + (parsed ? "" : "failed");
}

std::string parsed(std::optional<std::string> contents) {
    Parser parser(std::move(contents));
    const bool succeeded = parser.parse();
    return textOf(parser.sequenceInstructions(), succeeded);
}

/// A slow and obvious twin.
std::string parsedSlowly(const std::string& contents) {
    std::string text;
    for (const std::string& line :
         componentsSeparatedByString(stringByTrimmingWhitespaceAndNewline(contents), "\n")) {
        const std::string trimmed = stringByTrimmingWhitespaceAndNewline(line);
        if (trimmed.empty() || trimmed.starts_with("#"))
            continue;
        std::vector<std::string> words(1);
        for (std::size_t start = 0; start < trimmed.size();) {
            std::size_t end = start + 1;
            while (end < trimmed.size() &&
                   (static_cast<unsigned char>(trimmed[end]) & 0xC0) == 0x80)
                ++end;
            const std::string character = trimmed.substr(start, end - start);
            const bool isWhitespace =
                trimmedWhitespaceAndNewline(character).empty() && trimmedNewlines(character) != "";
            if (!isWhitespace)
                words.back() += character;
            else if (!words.back().empty())
                words.emplace_back();
            start = end;
        }
        if (words.size() < 2)
            return text + "failed";
        text += words[0] + " " + words[1] + "\n";
    }
    return text;
}

TEST(RVGitMergeSequenceContentParserTest, ReadsWhatGitWrites) {
    Parser parser(
        "pick 1111111111111111111111111111111111111111 First subject\n"
        "reword 2222222 Second\n"
        "\n"
        "# Rebase 1..3 onto 1 (2 commands)\n"
        "#\n"
        "exec make test\n"
        "fixup -C 3333333 # Third\n"
        "label onto\n");
    ASSERT_TRUE(parser.parse());
    EXPECT_EQ(textOf(parser.sequenceInstructions(), true),
              "pick 1111111111111111111111111111111111111111\nreword 2222222\nexec make\n"
              "fixup -C\nlabel onto\n");
    EXPECT_THAT(parser.allRevisions(), ElementsAre("1111111111111111111111111111111111111111",
                                                   "2222222", "make", "-C", "onto"));
    EXPECT_EQ(parser.nextRevision(), "1111111111111111111111111111111111111111");
    EXPECT_EQ(parser.lastRevision(), "onto");
    EXPECT_EQ(parser.revisionsCount(), 5u);
}

TEST(RVGitMergeSequenceContentParserTest, NothingIsReadFromNothing) {
    for (const std::optional<std::string>& contents :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional<std::string>(" \n\t\n"), std::optional<std::string>("# only\n")}) {
        Parser parser(contents);
        EXPECT_TRUE(parser.parse());
        EXPECT_THAT(parser.allRevisions(), IsEmpty());
        EXPECT_EQ(parser.nextRevision(), std::nullopt);
        EXPECT_EQ(parser.lastRevision(), std::nullopt);
        EXPECT_EQ(parser.revisionsCount(), 0u);
    }
}

TEST(RVGitMergeSequenceContentParserTest, ALineOfOneWordFailsWith11AndKeepsWhatWasRead) {
    Parser parser("pick 1 a\nbreak\npick 2 b\n");
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), RVGitErrorDomain);
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_FALSE(error->userInfo().contains(RVGitOutputParserLineErrorKey));
    EXPECT_THAT(parser.allRevisions(), ElementsAre("1"));
    EXPECT_FALSE(Parser("noop\n").parse());
}

TEST(RVGitMergeSequenceContentParserTest, ASecondRunAppendsAgain) {
    Parser parser("pick 1 a\npick 2 b");
    ASSERT_TRUE(parser.parse());
    ASSERT_TRUE(parser.parse());
    EXPECT_THAT(parser.allRevisions(), ElementsAre("1", "2", "1", "2"));
}

TEST(RVGitMergeSequenceContentParserTest, AnEmptySourceEmptiesTheList) {
    Parser parser(std::nullopt);
    ASSERT_TRUE(parser.parseLine("pick 1 a"));
    EXPECT_EQ(parser.revisionsCount(), 1u);
    ASSERT_TRUE(parser.parse());
    EXPECT_EQ(parser.revisionsCount(), 0u);
}

TEST(RVGitMergeSequenceContentParserTest, LinesAreTrimmed) {
    EXPECT_EQ(parsed("  pick 1 a\r\n\tpick\t2\tb\r\n\r\n  # c\r\n"), "pick 1\npick 2\n");
    EXPECT_EQ(parsed("pick   1\u00a0\u2003a"), "pick 1\n");
}

TEST(RVGitMergeSequenceContentParserTest, DamagedListsAreReadAsTheTwinReadsThem) {
    for (const std::string& damaged :
         damagedOutputs("pick 1234567 Subject\n# é\nfixup 89abcde\nexec a  b\n\nrevert 1 x"))
        if (isValidUTF8(damaged) && !damaged.empty()) {
            EXPECT_EQ(parsed(damaged), parsedSlowly(damaged)) << testing::PrintToString(damaged);
        }
}

TEST(RVGitMergeSequenceContentParserTest, RandomListsAreReadAsTheTwinReadsThem) {
    const char* const pieces[] = {"pick",   "a",      "1234567", " ",  " ",  "  ",
                                  "\t",     "\n",     "\n",      "#",  "\r", "é",
                                  "\u00a0", "\u2003", "\u2028",  "\v", "\f"};
    std::mt19937 random(20200102);
    for (int round = 0; round < 5000; ++round) {
        std::string contents = "x";
        for (auto count = random() % 12; count > 0; --count)
            contents += pieces[random() % std::size(pieces)];
        ASSERT_EQ(parsed(contents), parsedSlowly(contents)) << testing::PrintToString(contents);
    }
}

TEST(RVGitMergeSequenceContentParserTest, ALongListIsReadWhole) {
    std::string contents;
    while (contents.size() < 1024 * 1024)
        contents += "pick 1111111111111111111111111111111111111111 Subject of a commit\n";
    Parser parser(contents);
    ASSERT_TRUE(parser.parse());
    EXPECT_EQ(parser.revisionsCount(),
              static_cast<std::size_t>(std::ranges::count(contents, '\n')));
}

class RVGitMergeSequenceContentFileTest : public RVGitTestCase {
protected:
    [[nodiscard]] static std::optional<std::string> contentsOf(const std::string& path) {
        return Parser::initWithContentsOfFile(path)->contents();
    }
};

TEST_F(RVGitMergeSequenceContentFileTest, AFileIsReadAsUTF8) {
    EXPECT_EQ(contentsOf(writeFile("todo", "pick 1 é\n")), "pick 1 é\n");
    EXPECT_EQ(contentsOf(writeFile("latin", "pick 1 \xE9\n")), std::nullopt);
}

TEST_F(RVGitMergeSequenceContentFileTest, WhatIsNoFileHasNoContents) {
    EXPECT_EQ(contentsOf(scratchPath("missing")), std::nullopt);
    EXPECT_EQ(contentsOf(makeDirectory("directory")), std::nullopt);
    const std::string pipe = scratchPath("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(contentsOf(pipe), std::nullopt);
    EXPECT_EQ(contentsOf("/dev/zero"), std::nullopt);
    std::filesystem::create_symlink(writeFile("todo", "pick 1 a\n"), scratchPath("link"));
    EXPECT_EQ(contentsOf(scratchPath("link")), std::nullopt);
}

TEST_F(RVGitMergeSequenceContentFileTest, NeedsAnAbsolutePath) {
    EXPECT_THROW((void)Parser::initWithContentsOfFile("todo"), RVInvalidParameterException);
    EXPECT_THROW((void)Parser::initWithContentsOfFile(""), RVInvalidParameterException);
}

}  // namespace
