#include "RVGit/diff/RVGitDiffParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>

#include "RVGit/base/RVDataBuffer.h"
#include "tests/diff/RVGitDiffTwin.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> blocksOf(std::string_view output) {
    std::vector<std::string> blocks;
    for (const auto block : RVGitDiffParser::diffDataComponentsFromMultipleDiffOutput(output))
        blocks.emplace_back(block);
    return blocks;
}

std::vector<RVGitDiffMap> diffsOf(std::string_view output) {
    RVGitDiffParser parser(output);
    EXPECT_TRUE(parser.parse());
    return parser.takeResult();
}

std::vector<std::string> pathsOf(std::string_view output) {
    std::vector<std::string> paths;
    for (const RVGitDiffMap& diff : diffsOf(output))
        paths.push_back(diff.gitDiffFilePath().value_or("(none)"));
    return paths;
}

// What the plain way makes of an output with several files.
std::vector<std::string> describedDiffsOfTwin(std::string_view output) {
    std::vector<std::string> descriptions;
    for (const std::string& block : blocksOfTwin(output)) {
        const std::string description = describedDiffOfTwin(block);
        if (block != "\n" && !description.ends_with("failed") &&
            description.find("RVGitDiffRawKey=") != std::string::npos)
            descriptions.push_back(description);
    }
    return descriptions;
}

void expectLikeTwin(std::string_view output) {
    std::vector<std::string> descriptions;
    for (const RVGitDiffMap& diff : diffsOf(output))
        descriptions.push_back(describedDiff(diff));
    EXPECT_EQ(descriptions, describedDiffsOfTwin(output)) << output;
}

TEST(RVGitDiffParserTest, NoOutputHasNoBlocksAndNoResult) {
    EXPECT_THAT(blocksOf(""), IsEmpty());
    EXPECT_THAT(diffsOf(""), IsEmpty());
    RVGitDiffParser absent(std::shared_ptr<const RVDataBuffer>{});
    EXPECT_TRUE(absent.parse());
    EXPECT_THAT(absent.result(), IsEmpty());
}

TEST(RVGitDiffParserTest, BlocksBeginAtDiffLinesBehindALineBreak) {
    EXPECT_THAT(blocksOf("diff --git a/x b/x\nx\ndiff --cc y\ny\ndiff --combined z\nz"),
                ElementsAre("diff --git a/x b/x\nx\n", "diff --cc y\ny\n", "diff --combined z\nz"));
    EXPECT_THAT(blocksOf("\ndiff --git a/x b/x\n"), ElementsAre("\n", "diff --git a/x b/x\n"));
    // A context line has a column in front; other diff lines begin nothing.
    EXPECT_THAT(blocksOf("x\n diff --git a/x b/x\ndiff --ccx\ndiff -u a b\n"),
                ElementsAre("x\n diff --git a/x b/x\ndiff --ccx\ndiff -u a b\n"));
}

TEST(RVGitDiffParserTest, LoneCarriageReturnCountsAsALineBreak) {
    EXPECT_THAT(blocksOf("+a\rdiff --git a/x b/x\n"), ElementsAre("+a\r", "diff --git a/x b/x\n"));
    EXPECT_THAT(blocksOf("+a\r\ndiff --git a/x b/x\n"),
                ElementsAre("+a\r\n", "diff --git a/x b/x\n"));
}

TEST(RVGitDiffParserTest, WhatIsToldOfASubmoduleStandsApart) {
    const std::string output =
        "diff --git a/a b/a\n+++ b/a\n@@ -0,0 +1 @@\n+a\n"
        "Submodule inner 12ab..34cd:\n  > message\n"
        "diff --git a/inner/f b/inner/f\n+++ b/inner/f\n@@ -0,0 +1 @@\n+f\rSubmodule x\n";
    EXPECT_THAT(blocksOf(output), testing::SizeIs(3));
    EXPECT_THAT(pathsOf(output), ElementsAre("a", "inner/f"));
}

TEST(RVGitDiffParserTest, TenBytesMustFollow) {
    EXPECT_THAT(blocksOf("x\ndiff --git"), ElementsAre("x\n", "diff --git"));
    EXPECT_THAT(blocksOf("x\ndiff --gi"), ElementsAre("x\ndiff --gi"));
}

TEST(RVGitDiffParserTest, BlocksOfRandomBytesAreThoseOfTheByteByByteWalk) {
    std::mt19937 random(11);
    const std::vector<std::string> pieces = {
        "\n",      "\r",         "d", "diff --git",         "diff --cc ",        "diff --com",
        "diff --", "Submodule ", "x", std::string(61, '+'), std::string(3, '\0')};
    for (int round = 0; round < 3000; ++round) {
        std::string output;
        for (auto count = random() % 30; count > 0; --count)
            output += pieces[random() % pieces.size()];
        EXPECT_EQ(blocksOf(output), blocksOfTwin(output));
    }
}

TEST(RVGitDiffParserTest, ABlockOfOneLineBreakIsSkipped) {
    EXPECT_THAT(pathsOf("\ndiff --git a/x b/x\n"), ElementsAre("x"));
    EXPECT_THAT(diffsOf("\n"), IsEmpty());
}

TEST(RVGitDiffParserTest, AFileThatCannotBeReadIsLeftOut) {
    const std::string output =
        "diff --git a/x b/x\ndiff --git a/bad b/bad\nindex nothing\ndiff --git a/y b/y\n";
    EXPECT_THAT(pathsOf(output), ElementsAre("x", "y"));
    std::optional<RVError> error;
    RVGitDiffParser parser(output);
    EXPECT_TRUE(parser.parse(&error));
    EXPECT_FALSE(error);
    EXPECT_EQ(RVGitDiffParser::diffFromGitDiffOutputData("diff --git a/bad b/bad\nindex nothing\n"),
              std::nullopt);
}

TEST(RVGitDiffParserTest, OutputThatOpensWithSomethingElseYieldsNothing) {
    EXPECT_THAT(diffsOf("index 1..2\n--- a/x\n+++ b/x\n"), IsEmpty());
    EXPECT_THAT(diffsOf("hello\n"), IsEmpty());
    EXPECT_EQ(RVGitDiffParser::diffFromGitDiffOutputData(""), std::nullopt);
    EXPECT_EQ(RVGitDiffParser::diffFromGitDiffOutputData("diff --git a/x b/x\n")->gitDiffFilePath(),
              "x");
}

TEST(RVGitDiffParserTest, ResultsShareTheOutputAndKeepItAlive) {
    auto buffer = std::make_shared<RVDataBuffer>();
    buffer->append("diff --git a/x b/x\ndiff --git a/y b/y\n");
    std::vector<RVGitDiffMap> diffs;
    {
        RVGitDiffParser parser(buffer);
        EXPECT_TRUE(parser.parse());
        EXPECT_EQ(parser.outputData().data(), buffer->view().data());
        diffs = parser.takeResult();
    }
    ASSERT_EQ(diffs.size(), 2u);
    EXPECT_EQ(diffs[1].contents()->text.data(), buffer->view().data() + 19);
    buffer.reset();
    EXPECT_EQ(diffs[1].gitDiffRaw(), "diff --git a/y b/y\n");
}

TEST(RVGitDiffParserTest, OutputThatArrivesInPiecesIsReadAsTheWhole) {
    const std::string output =
        "\ndiff --git a/x b/x\nindex 1..2 100644\n--- a/x\n+++ b/x\n@@ -1 +1,2 @@\n-a\n+b\r\n+c\n"
        "diff --git a/y b/y\n+++ b/y\n@@ -1 +1 @@\n+\xE9\ndiff --git a/bad b/bad\nindex bad\n"
        "diff --cc z\nindex 1,2..3\n--- a/z\n+++ b/z\n@@@ -1 -1 +1 @@@\n++z\n++\rdiff --gi";
    std::vector<std::string> expected;
    for (const RVGitDiffMap& diff : diffsOf(output))
        expected.push_back(describedDiff(diff));
    ASSERT_EQ(expected.size(), 3u);
    std::mt19937 random(7);
    for (std::size_t round = 0; round < 300; ++round) {
        auto buffer = std::make_shared<RVDataBuffer>();
        RVGitDiffParser parser(buffer);
        // Each byte by itself first.
        const std::size_t longest = 1 + round % 60;
        for (std::size_t start = 0; start < output.size();) {
            const std::size_t size = 1 + random() % longest;
            // The bytes stand elsewhere each time.
            auto grown = RVDataBuffer();
            grown.append(buffer->view());
            grown.append(std::string_view(output).substr(start, size));
            *buffer = std::move(grown);
            parser.parseAhead();
            start += size;
        }
        EXPECT_TRUE(parser.parse());
        std::vector<std::string> descriptions;
        for (const RVGitDiffMap& diff : parser.result())
            descriptions.push_back(describedDiff(diff));
        ASSERT_EQ(descriptions, expected) << round;
    }
}

TEST(RVGitDiffParserTest, OneFileInAnotherEncodingLeavesTheOthersAlone) {
    const auto diffs = RVGitDiffParser::parserWithOutputData(
        "diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\n+\xE9\n"
        "diff --git a/y b/y\n+++ b/y\n@@ -1 +1 @@\n+\xC3\xA9\n");
    EXPECT_TRUE(diffs->parse());
    ASSERT_EQ(diffs->result().size(), 2u);
    for (const RVGitDiffMap& diff : diffs->result())
        EXPECT_EQ((*diff.gitDiffChunks())[0].gitDiffChunkRaw(), "@@ -1 +1 @@\n+\xC3\xA9\n");
}

TEST(RVGitDiffParserTest, DamagedOutputsAreReadAsThePlainWayReadsThem) {
    for (const std::string& output : damagedOutputs(
             "\ndiff --git a/x b/x\nindex 1..2 100644\n--- a/x\n+++ b/x\n@@ -1 +1,2 @@\n"
             "-a\n+b\n+c\ndiff --cc y\nindex 1,2..3\n--- a/y\n+++ b/y\n@@@ -1 -1 +1 @@@\n++z\n"))
        expectLikeTwin(output);
}

// With the output of the real git.
class RVGitDiffParserGitTest : public RVGitRepositoryTestCase {
protected:
    std::string diff(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"diff", "--full-index", "-M", "-C"});
        return git(arguments, repositoryPath());
    }
    void write(const std::string& name, std::string_view contents) const {
        writeFile(repositoryPath() + "/" + name, contents);
    }
    void commitAll(const std::string& message) const {
        gitInRepository({"add", "-A"});
        gitInRepository({"commit", "-q", "--allow-empty", "-m", message});
    }
};

TEST_F(RVGitDiffParserGitTest, UglyFilesAreReadAsThePlainWayReadsThem) {
    const std::vector<std::string> names = {"a b",         "tab\there", "quote\"d",
                                            "back\\slash", "new\nline", "\xC3\xA9t\xC3\xA9",
                                            "a -> b",      "d/e b/f",   "caf\xE9"};
    for (const std::string& name : names)
        write(name, "one\ntwo\nthree\n");
    write("latin1", "caf\xE9\nth\xE9\n");
    write("shift-jis", "\x83\x65\x83\x58\x83\x67\n");
    write("crlf", "a\r\nb\r\n");
    write("mixed", "a\r\nb\nc\rd\n");
    write("cr", "+a\rb\n");
    write("none", "a\nb");
    write("both", "a\nb");
    write("empty", "");
    write("binary", std::string("\0\1\2", 3));
    write("to-rename", "1\n2\n3\n4\n5\n6\n7\n8\n");
    write("to-delete", "gone\n");
    write("to-link", "target");
    commitAll("First");

    for (const std::string& name : names)
        write(name, "one\nTWO\nthree\nfour\n");
    write("latin1", "caf\xE9s\nth\xE9\n");
    write("shift-jis", "\x83\x65\x83\x58\x83\x67\x83\x67\n");
    write("crlf", "a\r\nB\r\n");
    write("mixed", "a\nb\r\nc\rD\n");
    write("cr", "+a\rdiff --git c\n");
    write("none", "a\nb\n");
    write("both", "a\nB");
    write("new-empty", "");
    write("binary", std::string("\0\1\3", 3));
    write("copied", "1\n2\n3\n4\n5\n6\n7\n9\n");
    const std::filesystem::path directory = repositoryPath();
    for (const char* name : {"empty", "to-delete", "to-link"})
        std::filesystem::remove(directory / name);
    std::filesystem::create_symlink("elsewhere", directory / "to-link");
    std::filesystem::rename(directory / "to-rename", directory / "renamed");
    std::filesystem::permissions(directory / "crlf", std::filesystem::perms::all);
    commitAll("Second");

    for (const char* quotes : {"true", "false"}) {
        gitInRepository({"config", "core.quotePath", quotes});
        const std::string output = diff({"HEAD~", "HEAD"});
        expectLikeTwin(output);
        std::vector<std::string> paths = pathsOf(output);
        for (const char* name : {"a b", "tab\there", "quote\"d", "back\\slash", "new\nline",
                                 "\xC3\xA9t\xC3\xA9", "a -> b"})
            EXPECT_THAT(paths, testing::Contains(name)) << quotes;
    }
    std::map<std::string, RVGitFileStatus> statuses;
    for (const RVGitDiffMap& diff : diffsOf(diff({"HEAD~", "HEAD"})))
        statuses[diff.gitDiffFilePath().value_or("")] = diff.gitDiffFileStatus();
    EXPECT_EQ(statuses["copied"], RVGitFileStatusCopied);
    EXPECT_EQ(statuses["renamed"], RVGitFileStatusRenamed);
    EXPECT_EQ(statuses["caf\xC3\xA9"], RVGitFileStatusModified);
    // The path is taken to begin behind the last " b/".
    EXPECT_EQ(statuses["f b/d/e b/f"], RVGitFileStatusNone);
    EXPECT_EQ(statuses["f"], RVGitFileStatusModified);
    // The lone carriage return has cut the file "cr" in two; the second piece is no diff.
    EXPECT_THAT(blocksOf(diff({"HEAD~", "HEAD", "--", "cr"})), testing::SizeIs(2));
    EXPECT_THAT(diffsOf(diff({"HEAD~", "HEAD", "--", "cr"})), testing::SizeIs(1));
    EXPECT_EQ(diffsOf(diff({"HEAD~", "HEAD", "--", "to-link"})).size(), 2u);
}

TEST_F(RVGitDiffParserGitTest, SubmodulesAreOneLine) {
    const std::string inner = initRepository("inner");
    commitFile(inner, "f", "1\n", "Inner");
    gitInRepository(
        {"-c", "protocol.file.allow=always", "submodule", "--quiet", "add", inner, "inner"});
    commitAll("Add");
    const auto diffs = diffsOf(git({"show", "--format=", "HEAD"}, repositoryPath()));
    ASSERT_EQ(diffs.size(), 2u);
    EXPECT_EQ(diffs[1].gitDiffFileMode(), RVGitFileModeSubmodule);
    EXPECT_EQ((*diffs[1].gitDiffChunks())[0].gitDiffChunkLines().size(), 1u);
}

TEST_F(RVGitDiffParserGitTest, MergesOfTwoAndOfEightParents) {
    write("f", "base\n");
    commitAll("Base");
    for (const std::size_t count : {std::size_t{2}, std::size_t{8}}) {
        std::vector<std::string> command = {"commit-tree", "-m", "Merge"};
        for (std::size_t parent = 0; parent < count; ++parent) {
            write("f", "base\nparent " + std::to_string(parent) + "\nlast");
            gitInRepository({"add", "-A"});
            command.push_back("-p");
            command.push_back(gitInRepository(
                {"commit-tree", "-m", "Parent", "-p", "HEAD", gitInRepository({"write-tree"})}));
        }
        write("f", "base\nmerged\nlast");
        gitInRepository({"add", "-A"});
        command.push_back(gitInRepository({"write-tree"}));
        const std::string merge = gitInRepository(command);
        for (const char* kind : {"-c", "--cc"}) {
            const std::string output = git({"show", "--format=", kind, merge}, repositoryPath());
            expectLikeTwin(output);
            const auto diffs = diffsOf(output);
            ASSERT_EQ(diffs.size(), 1u);
            const auto chunk = (*diffs[0].gitDiffChunks())[0];
            EXPECT_EQ(chunk.gitDiffChunkFileRanges().size(), count + 1);
            EXPECT_EQ(diffs[0].gitDiffOriginalObjectHashes()->size(), count);
            bool isMerged = false;
            for (const auto& line : chunk.gitDiffChunkLines())
                isMerged = isMerged || (line.gitDiffChunkLineContents() == "merged" &&
                                        line.gitDiffChunkLineStatus() == std::string(count, '+') &&
                                        line.gitDiffChunkLineLineNumbers().back() == 2);
            EXPECT_TRUE(isMerged) << output;
        }
    }
}

TEST_F(RVGitDiffParserGitTest, LineNumbersPointAtTheLinesOfTheFiles) {
    std::mt19937 random(3);
    for (int round = 0; round < 15; ++round) {
        std::vector<std::vector<std::string>> versions(2);
        std::vector<std::string> texts(2);
        for (std::size_t line = 0; line < 40; ++line) {
            const std::string text = "line " + std::to_string(random() % 20);
            for (auto& version : versions) {
                if (random() % 6)
                    version.push_back(text);
                else if (random() % 2)
                    version.push_back(text + " changed" + std::to_string(random() % 100));
            }
        }
        for (std::size_t version = 0; version < 2; ++version) {
            for (const std::string& line : versions[version])
                texts[version] += line + "\n";
            if (random() % 2 && !texts[version].empty())
                texts[version].pop_back();
            write(version == 0 ? "old" : "new", texts[version]);
        }
        const std::string output =
            runGit({"diff", "--no-index", "old", "new"}, repositoryPath()).standardOutput;
        expectLikeTwin(output);
        for (const RVGitDiffMap& diff : diffsOf(output)) {
            const auto chunks = diff.gitDiffChunks().value();
            for (const auto& chunk : chunks) {
                for (const auto& line : chunk.gitDiffChunkLines()) {
                    const auto numbers = line.gitDiffChunkLineLineNumbers();
                    const auto type = line.gitDiffChunkLineType();
                    if (type == RVGitDiffLineContext || type == RVGitDiffLineDeleted) {
                        EXPECT_EQ(versions[0].at(numbers[0] - 1), line.gitDiffChunkLineContents());
                    }
                    if (type == RVGitDiffLineContext || type == RVGitDiffLineAdded) {
                        EXPECT_EQ(versions[1].at(numbers[1] - 1), line.gitDiffChunkLineContents());
                    }
                }
            }
        }
    }
}

}  // namespace
