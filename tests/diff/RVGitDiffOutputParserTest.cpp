#include "RVGit/diff/RVGitDiffOutputParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/diff/RVGitDiffTwin.h"
#include "tests/support/RVDamagedOutput.h"

using testing::ElementsAre;

namespace {

using Texts = std::vector<std::string>;
using Numbers = std::vector<std::uint32_t>;
using Ranges = std::vector<RVGitDiffRange>;

constexpr char modified[] =
    "diff --git a/notes.txt b/notes.txt\n"
    "index 0123456789abcdef0123456789abcdef01234567..89abcdef0123456789abcdef0123456789abcdef "
    "100644\n"
    "--- a/notes.txt\n"
    "+++ b/notes.txt\n"
    "@@ -1,3 +1,4 @@ section\n"
    " radium\n"
    "-polonium\n"
    "+Polonium\n"
    "+barium\n"
    " uranium\n"
    "@@ -10,2 +11 @@\n"
    " a\n"
    "-b\n"
    "\\ No newline at end of file\n";

constexpr char combined[] =
    "diff --cc notes.txt\n"
    "index 1111111,2222222..3333333\n"
    "--- a/notes.txt\n"
    "+++ b/notes.txt\n"
    "@@@ -1,3 -1,3 +1,4 @@@\n"
    "  both\n"
    "- ours\n"
    " -theirs\n"
    "++merged\n"
    "+ from theirs\n"
    " +from ours\n"
    "\\ No newline at end of file\n";

RVGitDiffMap diffOf(std::string_view text) {
    RVGitDiffOutputParser parser(text);
    std::optional<RVError> error;
    EXPECT_TRUE(parser.parse(&error)) << text;
    EXPECT_FALSE(error);
    return parser.diff();
}

std::string failingLineOf(std::string_view text) {
    RVGitDiffOutputParser parser(text);
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error)) << text;
    if (!error)
        return {};
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey), "RVGitDiffOutputParser");
    return error->userInfoString(RVGitOutputParserLineErrorKey).value_or("");
}

struct Line {
    Numbers numbers;
    RVGitDiffLineType type;
    std::string status;
    std::string contents;

    friend bool operator==(const Line&, const Line&) = default;
};

std::vector<Line> linesOf(const RVGitDiffMap& diff, std::size_t chunkIndex = 0) {
    std::vector<Line> lines;
    const auto chunks = diff.gitDiffChunks();
    if (!chunks || chunks->size() <= chunkIndex)
        return lines;
    for (const auto& line : (*chunks)[chunkIndex].gitDiffChunkLines())
        lines.push_back({line.gitDiffChunkLineLineNumbers(), line.gitDiffChunkLineType(),
                         line.gitDiffChunkLineStatus(), line.gitDiffChunkLineContents()});
    return lines;
}

std::vector<Numbers> numbersOf(const std::string& chunk) {
    std::vector<Numbers> numbers;
    for (const Line& line : linesOf(diffOf("diff --git a/x b/x\n+++ b/x\n" + chunk)))
        numbers.push_back(line.numbers);
    return numbers;
}

void expectLikeTwin(std::string_view text) {
    RVGitDiffOutputParser parser(text);
    const bool succeeded = parser.parse();
    EXPECT_EQ(describedDiff(parser.diff()) + (succeeded ? "" : "failed"), describedDiffOfTwin(text))
        << text;
}

TEST(RVGitDiffOutputParserTest, ModifiedFile) {
    const RVGitDiffMap diff = diffOf(modified);
    EXPECT_EQ(diff.gitDiffRaw(), modified);
    EXPECT_EQ(diff.gitDiffHeader(),
              std::string(modified).substr(0, std::string_view(modified).find("@@")));
    EXPECT_EQ(diff.gitDiffFilePath(), "notes.txt");
    EXPECT_EQ(diff.gitDiffOldFilePath(), "notes.txt");
    EXPECT_EQ(diff.gitDiffFileStatus(), RVGitFileStatusModified);
    EXPECT_EQ(diff.gitDiffOriginalObjectHashes(),
              Texts({"0123456789abcdef0123456789abcdef01234567"}));
    EXPECT_EQ(diff.gitDiffObjectHash(), "89abcdef0123456789abcdef0123456789abcdef");
    EXPECT_EQ(diff.gitDiffFileMode(), RVGitFileModeRegular);
    EXPECT_EQ(diff.gitDiffOriginalFileModes(), Texts({"100644"}));
    ASSERT_TRUE(diff.gitDiffExtendedHeaders());
    EXPECT_EQ(diff.gitDiffExtendedHeaders()->size(), 1u);
    EXPECT_FALSE(diff.gitDiffIsBinary());
    EXPECT_EQ(diff.gitDiffFileStatusSimilarityIndex(), 0u);

    ASSERT_EQ(diff.gitDiffChunks()->size(), 2u);
    const auto chunks = *diff.gitDiffChunks();
    EXPECT_EQ(chunks[0].gitDiffChunkFileRanges(), Ranges({{1, 3}, {1, 4}}));
    EXPECT_EQ(chunks[1].gitDiffChunkFileRanges(), Ranges({{10, 2}, {11, 1}}));
    EXPECT_EQ(chunks[1].gitDiffChunkRaw(),
              "@@ -10,2 +11 @@\n a\n-b\n\\ No newline at end of file\n");
    EXPECT_THAT(linesOf(diff), ElementsAre(Line{{1, 1}, RVGitDiffLineContext, " ", "radium"},
                                           Line{{2, 1}, RVGitDiffLineDeleted, "-", "polonium"},
                                           Line{{2, 2}, RVGitDiffLineAdded, "+", "Polonium"},
                                           Line{{2, 3}, RVGitDiffLineAdded, "+", "barium"},
                                           Line{{3, 4}, RVGitDiffLineContext, " ", "uranium"}));
    EXPECT_THAT(
        linesOf(diff, 1),
        ElementsAre(
            Line{{10, 11}, RVGitDiffLineContext, " ", "a"},
            Line{{11, 11}, RVGitDiffLineDeleted, "-", "b"},
            Line{{11, 11}, RVGitDiffLineNoNewlineAtEndOfFile, "\\", " No newline at end of file"}));
}

TEST(RVGitDiffOutputParserTest, StateFollowsTheLastChunk) {
    RVGitDiffOutputParser parser(modified);
    EXPECT_FALSE(parser.isFinishedParsingHeader());
    EXPECT_EQ(parser.numberOfParents(), 0u);
    EXPECT_TRUE(parser.diff().isEmpty());
    ASSERT_TRUE(parser.parse());
    EXPECT_TRUE(parser.isFinishedParsingHeader());
    EXPECT_EQ(parser.numberOfParents(), 1u);
    EXPECT_EQ(parser.currentLineNumbers(), Numbers({11, 11}));
    EXPECT_EQ(parser.maxCurrentLineNumbers(), Numbers({11, 11}));
}

TEST(RVGitDiffOutputParserTest, NewFileStartsItsNumbersAtZero) {
    const std::string text =
        "diff --git a/n b/n\nnew file mode 100755\nindex 0000000..89abcde\n--- /dev/null\n"
        "+++ b/n\n@@ -0,0 +1,3 @@\n+a\n+b\n+c\n";
    const RVGitDiffMap diff = diffOf(text);
    EXPECT_EQ(diff.gitDiffFilePath(), "n");
    EXPECT_EQ(diff.gitDiffOldFilePath(), std::nullopt);
    EXPECT_FALSE(diff.containsObjectForKey(RVGitDiffOldFilePathKey));
    EXPECT_EQ(diff.gitDiffFileStatus(), RVGitFileStatusAdded);
    EXPECT_EQ(diff.gitDiffFileMode(), RVGitFileModeExecutable);
    EXPECT_EQ(diff.gitDiffOriginalFileModes(), std::nullopt);
    EXPECT_THAT(numbersOf("@@ -0,0 +1,3 @@\n+a\n+b\n+c\n"),
                ElementsAre(Numbers{0, 1}, Numbers{0, 2}, Numbers{0, 3}));
    RVGitDiffOutputParser parser("diff --git a/x b/x\n+++ b/x\n@@ -0,0 +1,3 @@\n");
    ASSERT_TRUE(parser.parse());
    EXPECT_EQ(parser.currentLineNumbers(), Numbers({0, 0}));
    EXPECT_EQ(parser.maxCurrentLineNumbers(), Numbers({0, 3}));
}

TEST(RVGitDiffOutputParserTest, DeletedFileLosesItsNewPath) {
    const RVGitDiffMap diff = diffOf(
        "diff --git a/n b/n\ndeleted file mode 100644\nindex 89abcde..0000000\n--- a/n\n"
        "+++ /dev/null\n@@ -1 +0,0 @@\n-a\n");
    EXPECT_EQ(diff.gitDiffFilePath(), std::nullopt);
    EXPECT_EQ(diff.gitDiffOldFilePath(), "n");
    EXPECT_EQ(diff.gitDiffFileStatus(), RVGitFileStatusDeleted);
    EXPECT_EQ(diff.gitDiffOriginalFileModes(), Texts({"100644"}));
    EXPECT_FALSE(diff.containsObjectForKey(RVGitDiffFileModeKey));
    EXPECT_THAT(linesOf(diff), ElementsAre(Line{{1, 0}, RVGitDiffLineDeleted, "-", "a"}));
}

TEST(RVGitDiffOutputParserTest, PathsAreTakenFromTheDiffLine) {
    struct Case {
        std::string line;
        std::string oldPath;
        std::string path;
    };
    for (const auto& [line, oldPath, path] : std::vector<Case>{
             {"diff --git a/x y b/x y", "x y", "x y"},
             {"diff --git \"a/tab\\there\" \"b/tab\\there\"", "tab\there", "tab\there"},
             {"diff --git \"a/\\303\\251\\n\\\\\\\"\" b/plain", "\xC3\xA9\n\\\"", "plain"},
             // What is not quoted is not unquoted.
             {"diff --git a/back\\tslash b/back\\tslash", "back\\tslash", "back\\tslash"},
             {"diff --git a/\xC3\xA9 b/\xC3\xA9", "\xC3\xA9", "\xC3\xA9"},
             {"diff --git a/a -> b b/a -> b", "a -> b", "a -> b"},
             // The first group is greedy.
             {"diff --git a/p b/q b/p b/q", "p b/q b/p", "q"},
         }) {
        const RVGitDiffMap diff = diffOf(line + "\n");
        EXPECT_EQ(diff.gitDiffOldFilePath(), oldPath);
        EXPECT_EQ(diff.gitDiffFilePath(), path);
        EXPECT_EQ(diff.gitDiffRaw(), line + "\n");
        EXPECT_EQ(diff.gitDiffHeader(), line + "\n");
    }
}

TEST(RVGitDiffOutputParserTest, CombinedDiffCountsStatusColumns) {
    const RVGitDiffMap diff = diffOf(combined);
    EXPECT_EQ(diff.gitDiffRaw(), combined);
    EXPECT_EQ(diff.gitDiffHeader(), std::nullopt);
    EXPECT_FALSE(diff.containsObjectForKey(RVGitDiffHeaderKey));
    EXPECT_EQ(diff.gitDiffFilePath(), "notes.txt");
    EXPECT_EQ(diff.gitDiffOldFilePath(), "notes.txt");
    EXPECT_EQ(diff.gitDiffOriginalObjectHashes(), Texts({"1111111", "2222222"}));
    EXPECT_EQ(diff.gitDiffObjectHash(), "3333333");
    EXPECT_EQ((*diff.gitDiffChunks())[0].gitDiffChunkFileRanges(),
              Ranges({{1, 3}, {1, 3}, {1, 4}}));
    EXPECT_THAT(linesOf(diff), ElementsAre(Line{{1, 1, 1}, RVGitDiffLineContext, "  ", "both"},
                                           Line{{2, 1, 1}, RVGitDiffLineDeleted, "- ", "ours"},
                                           Line{{2, 2, 1}, RVGitDiffLineDeleted, " -", "theirs"},
                                           Line{{2, 2, 2}, RVGitDiffLineAdded, "++", "merged"},
                                           // A blank is remembered in the last column alone.
                                           Line{{2, 3, 3}, RVGitDiffLineAdded, "+ ", "from theirs"},
                                           Line{{2, 3, 4}, RVGitDiffLineAdded, " +", "from ours"},
                                           Line{{2, 3, 4},
                                                RVGitDiffLineNoNewlineAtEndOfFile,
                                                "\\ ",
                                                "No newline at end of file"}));
}

TEST(RVGitDiffOutputParserTest, CombinedDiffTakesThePathAsItStandsOrUnquoted) {
    EXPECT_EQ(diffOf("diff --combined x y\n").gitDiffFilePath(), "x y");
    EXPECT_EQ(diffOf("diff --cc \"tab\\there\"\n").gitDiffFilePath(), "tab\there");
    EXPECT_EQ(diffOf("diff --combined a/b\n").gitDiffRaw(), "diff --combined a/b\n");
    EXPECT_EQ(failingLineOf("diff --cc \n"), "diff --cc ");
}

TEST(RVGitDiffOutputParserTest, ALaterColumnBeatsAnEarlierOne) {
    EXPECT_THAT(linesOf(diffOf("diff --cc x\n+++ b/x\n@@@ -1,9 -1,9 +1,9 @@@\n+-x\n-+x\n--x\n")),
                ElementsAre(Line{{0, 1, 0}, RVGitDiffLineDeleted, "+-", "x"},
                            Line{{1, 1, 1}, RVGitDiffLineAdded, "-+", "x"},
                            Line{{2, 2, 1}, RVGitDiffLineDeleted, "--", "x"}));
}

TEST(RVGitDiffOutputParserTest, EightParents) {
    const std::string ranges = " -1,2 -1,2 -1,2 -1,2 -1,2 -1,2 -1,2 -1,2 +1,2 ";
    const RVGitDiffMap diff = diffOf("diff --cc x\nindex 1,2,3,4,5,6,7,8..9\n+++ b/x\n@@@@@@@@@" +
                                     ranges + "@@@@@@@@@\n++++++++x\n        y\n-       z\n");
    EXPECT_EQ(diff.gitDiffOriginalObjectHashes()->size(), 8u);
    const auto lines = linesOf(diff);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].numbers, Numbers({0, 0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(lines[1].numbers, Numbers({1, 1, 1, 1, 1, 1, 1, 1, 2}));
    EXPECT_EQ(lines[2].numbers, Numbers({2, 1, 1, 1, 1, 1, 1, 1, 2}));
    EXPECT_EQ(lines[2].contents, "z");
}

TEST(RVGitDiffOutputParserTest, PureRenameHasNoChunks) {
    const std::string text =
        "diff --git a/old b/new\nsimilarity index 100%\nrename from old\nrename to new\n";
    const RVGitDiffMap diff = diffOf(text);
    EXPECT_EQ(diff.gitDiffFileStatus(), RVGitFileStatusRenamed);
    EXPECT_EQ(diff.gitDiffFileStatusSimilarityIndex(), 100u);
    EXPECT_EQ(diff.gitDiffOldFilePath(), "old");
    EXPECT_EQ(diff.gitDiffFilePath(), "new");
    EXPECT_FALSE(diff.containsObjectForKey(RVGitDiffChunksKey));
    EXPECT_EQ(diff.gitDiffChunks(), std::nullopt);
    EXPECT_EQ(diff.gitDiffHeader(), text);
    EXPECT_EQ(diff.gitDiffExtendedHeaders(),
              Texts({"similarity index 100%", "rename from old", "rename to new"}));
    RVGitDiffOutputParser parser(text);
    ASSERT_TRUE(parser.parse());
    EXPECT_FALSE(parser.isFinishedParsingHeader());
}

TEST(RVGitDiffOutputParserTest, CopiesAndModeChanges) {
    EXPECT_EQ(diffOf("diff --git a/o b/n\nsimilarity index 88%\ncopy from o\ncopy to n\n")
                  .gitDiffFileStatus(),
              RVGitFileStatusCopied);
    const RVGitDiffMap diff =
        diffOf("diff --git a/x b/x\nold mode 100644\nnew mode 100755\nmode 1,2..3\n");
    EXPECT_EQ(diff.gitDiffFileMode(), RVGitFileModeExecutable);
    EXPECT_EQ(diff.gitDiffOriginalFileModes(), Texts({"100644"}));
    EXPECT_EQ(diff.gitDiffExtendedHeaders(),
              Texts({"old mode 100644", "new mode 100755", "mode 1,2..3"}));
    // A mode in the "index" line takes the place of both.
    EXPECT_EQ(diffOf("diff --git a/x b/x\nold mode 100644\nindex a..b 120000\n")
                  .gitDiffOriginalFileModes(),
              Texts({"120000"}));
}

TEST(RVGitDiffOutputParserTest, BinaryFilesEndTheHeader) {
    const std::string text =
        "diff --git a/x b/x\nindex 1..2 100644\nBinary files a/x and b/x differ\n";
    const RVGitDiffMap diff = diffOf(text);
    EXPECT_TRUE(diff.gitDiffIsBinary());
    EXPECT_TRUE(std::get<bool>(diff.objectForKey(RVGitDiffIsBinaryKey).value()));
    EXPECT_EQ(diff.gitDiffHeader(), text);
    EXPECT_EQ(diff.gitDiffExtendedHeaders(), Texts({"index 1..2 100644"}));
    EXPECT_FALSE(diffOf(modified).containsObjectForKey(RVGitDiffIsBinaryKey));
}

TEST(RVGitDiffOutputParserTest, UnmergedPathsAndBlankLinesVanish) {
    const RVGitDiffMap diff = diffOf(
        "* Unmerged path x\ndiff --git a/x b/x\n* Unmerged path x\n\n \t\n--- a/x\n+++ b/x\n"
        "@@ -1,2 +1,2 @@\n a\n* Unmerged path y\n\n+b\n");
    EXPECT_EQ(diff.gitDiffRaw(), "diff --git a/x b/x\n--- a/x\n+++ b/x\n@@ -1,2 +1,2 @@\n a\n+b\n");
    EXPECT_EQ(diff.gitDiffHeader(), "diff --git a/x b/x\n--- a/x\n+++ b/x\n");
    EXPECT_EQ((*diff.gitDiffChunks())[0].gitDiffChunkRaw(), "@@ -1,2 +1,2 @@\n a\n+b\n");
    EXPECT_EQ(linesOf(diff).size(), 2u);
    EXPECT_TRUE(diffOf("* Unmerged path x\n").isEmpty());
}

TEST(RVGitDiffOutputParserTest, RawTextEndsInALineBreakBeItThereOrNot) {
    const std::string text = "diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\n+b";
    const RVGitDiffMap diff = diffOf(text);
    EXPECT_EQ(diff.gitDiffRaw(), text + "\n");
    EXPECT_EQ((*diff.gitDiffChunks())[0].gitDiffChunkRaw(), "@@ -1 +1 @@\n+b\n");
    EXPECT_EQ(linesOf(diff)[0].contents, "b");
    EXPECT_EQ(diffOf("diff --git a/x b/x").gitDiffHeader(), "diff --git a/x b/x\n");
}

TEST(RVGitDiffOutputParserTest, RangesWithoutALengthAreOneLineLong) {
    const auto rangesOf = [](const std::string& header) {
        return (*diffOf("diff --git a/x b/x\n+++ b/x\n" + header + "\n").gitDiffChunks())[0]
            .gitDiffChunkFileRanges();
    };
    EXPECT_EQ(rangesOf("@@ -5 +5 @@"), Ranges({{5, 1}, {5, 1}}));
    EXPECT_EQ(rangesOf("@@ -5, +5,0 @@"), Ranges({{5, 0}, {5, 0}}));
    EXPECT_EQ(rangesOf("@@ -99999999999,99999999999 +1 @@"),
              Ranges({{2147483647, 2147483647}, {1, 1}}));
}

TEST(RVGitDiffOutputParserTest, NumbersStayAtTheirMaximum) {
    EXPECT_THAT(numbersOf("@@ -1 +1,0 @@\n a\n b\n-c\n+d\n"),
                ElementsAre(Numbers{1, 0}, Numbers{1, 0}, Numbers{1, 0}, Numbers{1, 0}));
}

TEST(RVGitDiffOutputParserTest, LinesThatAreNoneOfADiffsFail) {
    EXPECT_EQ(failingLineOf("diff --git a/x\n"), "diff --git a/x");
    EXPECT_EQ(failingLineOf("diff --git a/x b/x\nindex 1..\n+++ b/x\n"), "index 1..");
    EXPECT_EQ(failingLineOf("diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\nx\n"), "x");
    EXPECT_EQ(failingLineOf("diff --cc x\n+++ b/x\n@@@ -1 -1 +1 @@@\n+\n"), "+");
    RVGitDiffOutputParser parser("diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\n+a\nx\n+b\n");
    EXPECT_FALSE(parser.parse());
    // What was read by then stays.
    EXPECT_EQ(parser.diff().gitDiffRaw(), "diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\n+a\nx\n");
    EXPECT_EQ(linesOf(parser.diff()).size(), 1u);
}

TEST(RVGitDiffOutputParserTest, ALineAheadOfTheFirstChunkBelongsToNone) {
    const std::string text = "diff --git a/x b/x\n+++ b/x\nstray\n@@ -1 +1 @@\n+a\n";
    const RVGitDiffMap diff = diffOf(text);
    EXPECT_EQ(diff.gitDiffRaw(), text);
    EXPECT_EQ(linesOf(diff).size(), 1u);
}

TEST(RVGitDiffOutputParserTest, TextInOtherEncodingsIsDecodedAsAWhole) {
    const RVGitDiffMap diff =
        diffOf("diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\n-caf\xE9\n+caf\xE9\x80\r\n");
    EXPECT_THAT(linesOf(diff),
                ElementsAre(Line{{1, 0}, RVGitDiffLineDeleted, "-", "caf\xC3\xA9"},
                            Line{{1, 1}, RVGitDiffLineAdded, "+", "caf\xC3\xA9\xE2\x82\xAC\r"}));
    EXPECT_EQ(
        diff.gitDiffRaw(),
        "diff --git a/x b/x\n+++ b/x\n@@ -1 +1 @@\n-caf\xC3\xA9\n+caf\xC3\xA9\xE2\x82\xAC\r\n");
}

TEST(RVGitDiffOutputParserTest, StatusColumnsAreCountedInCharacters) {
    expectLikeTwin("diff --cc x\n+++ b/x\n@@@ -1 -1 +1 @@@\n\xC3\xA9+x\n");
    const auto lines = linesOf(diffOf("diff --cc x\n+++ b/x\n@@@ -1 -1 +1 @@@\n\xC3\xA9+x\n"));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].status, "\xC3\xA9+");
    EXPECT_EQ(lines[0].contents, "x");
}

TEST(RVGitDiffOutputParserTest, MapsShareTheBufferAndKeepItAlive) {
    auto buffer = std::make_shared<RVDataBuffer>();
    buffer->append(modified);
    RVGitDiffMap diff;
    {
        RVGitDiffOutputParser parser(buffer, buffer->view());
        ASSERT_TRUE(parser.parse());
        diff = parser.diff();
    }
    EXPECT_EQ(diff.contents()->text.data(), buffer->view().data());
    const std::weak_ptr<RVDataBuffer> kept = buffer;
    buffer.reset();
    EXPECT_FALSE(kept.expired());
    EXPECT_EQ(diff.gitDiffRaw(), modified);
    diff = RVGitDiffMap();
    EXPECT_TRUE(kept.expired());
}

TEST(RVGitDiffOutputParserTest, OneHugeLine) {
    const std::string content(50'000'000, 'x');
    RVGitDiffOutputParser parser("diff --git a/x b/x\n+++ b/x\n@@ -0,0 +1 @@\n+" + content + "\n");
    ASSERT_TRUE(parser.parse());
    const auto lines = linesOf(parser.diff());
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].contents == content);
}

TEST(RVGitDiffOutputParserTest, ChunkHeadersAreThoseOfTheRegularExpression) {
    std::mt19937 random(5);
    const std::vector<std::string> pieces = {
        "@",     "@@",    " ",   "-",  "+",  "-1", "+1", ",",        "0",        "12",
        " -1,2", " +3,4", " @@", " @", "\n", "\r", "x",  "\xD9\xA3", "\xC3\xA9", "\xE2\x80\xA8"};
    int numberOfMatches = 0;
    const auto check = [&](const std::string& line) {
        const auto match = RVGitDiffOutputParser::chunkHeaderRegex().firstMatch(line);
        const std::string expected = match.empty() ? std::string() : std::string(*match[0]);
        EXPECT_EQ(RVGitDiffOutputParser::chunkHeaderOfLine(line), expected) << line;
        numberOfMatches += !expected.empty();
    };
    for (int round = 0; round < 20000; ++round) {
        std::string line = round % 3 == 0 ? "" : round % 3 == 1 ? "@@ -1" : "@@ -1,2 +3";
        for (auto count = random() % 8; count > 0; --count)
            line += pieces[random() % pieces.size()];
        check(line);
    }
    for (const char* line :
         {"@@ -1,2 +3,4 @@", "@@@ -1,2 -3 +5 @@@", "@ -1 +1 @", "@@@@ -1 +1 @ section @@",
          // By the expression it would take seconds to find that this is none.
          "@@ -11111111 -11111111 -11111111 -11111111 x\xC3\xA9", "@@ -1,2, +1 @@", "@@  -1 +1 @@",
          "@@ -1 -2 @@", "@@ +1 @@", "@@ -\xD9\xA3 +1 @@"})
        check(line);
    for (const std::string& line : damagedOutputs("@@@ -10,2 -3 +45,6 @@@ f"))
        check(line);
    EXPECT_GT(numberOfMatches, 300);
}

TEST(RVGitDiffOutputParserTest, DiffLinesAreThoseOfTheRegularExpression) {
    std::mt19937 random(9);
    const std::vector<std::string> pieces = {
        "a/",   "b/",       " a/",  " b/",         " \"b/",       "\"a/",         "\"",
        " ",    "x",        "a/x ", " b/y",        "diff --git ", "\t",           "\r",
        "\x7F", "\xC3\xA9", "\\t",  "a",           "b",           "a/long/path ", "\x0B",
        "\x0C", "/",        ".",    "\xC2\x85 b/", "\xE2\x80\xA8"};
    int numberOfMatches = 0;
    for (int round = 0; round < 60000; ++round) {
        std::string line = random() % 8 ? "diff --git " : "";
        if (random() % 2)
            line += random() % 2 ? "a/" : "\"a/";
        for (auto count = random() % 8; count > 0; --count)
            line += pieces[random() % pieces.size()];
        const auto match = RVGitDiffOutputParser::diffHeaderRegex().firstMatch(line);
        std::vector<std::string_view> expected;
        if (!match.empty())
            expected = {*match[1], *match[2]};
        ASSERT_EQ(RVGitDiffOutputParser::diffHeaderComponentsOfLine(line), expected) << line;
        numberOfMatches += !match.empty();
    }
    EXPECT_GT(numberOfMatches, 1000);
}

TEST(RVGitDiffOutputParserTest, IndexLinesAreThoseOfTheRegularExpression) {
    std::mt19937 random(6);
    const std::vector<std::string> pieces = {"index ", "a1", "b",        ",",       ",",  "..",
                                             ".",      " ",  "100644",   "0",       "\r", "\f",
                                             "X",      "\n", "\xC2\x85", "\xD9\xA3"};
    int numberOfMatches = 0;
    const auto check = [&](const std::string& line) {
        std::vector<std::string_view> expected;
        const auto match = RVGitDiffOutputParser::indexRegex().firstMatch(line);
        for (std::size_t group = 1; group < match.size(); ++group)
            expected.push_back(match[group].value_or(std::string_view()));
        EXPECT_EQ(RVGitDiffOutputParser::indexComponentsOfLine(line), expected) << line;
        numberOfMatches += !expected.empty();
    };
    for (int round = 0; round < 5000; ++round) {
        std::string line = round % 3 == 0 ? "" : round % 3 == 1 ? "index " : "index a1,b2..c3";
        for (auto count = random() % 6; count > 0; --count)
            line += pieces[random() % pieces.size()];
        if (line.find('\n') == std::string::npos)
            check(line);
    }
    for (const char* line :
         {"index 12ab..34cd 100644", "index 1,2,3..4", "index 1,,2..4", "index ,1..2",
          "index 1,..2 ", "index a..b 100644\r", "index 1..2 x", " index 1..2"})
        check(line);
    EXPECT_GT(numberOfMatches, 250);
}

TEST(RVGitDiffOutputParserTest, DamagedDiffsAreReadAsThePlainWayReadsThem) {
    for (const char* text :
         {"diff --git a/x b/x\nindex 1..2 100644\n+++ b/x\n@@ -1,3 +1,2 @@ f\n a\n-b\n+c\n\\ No\n",
          "diff --cc x\nindex 1,2..3\n+++ b/x\n@@@ -1 -1 +1,2 @@@\n- a\n +b\n++c\n  d\n",
          "diff --git \"a/\\t\" b/n\nsimilarity index 9%\nrename from o\nBinary files a\n"}) {
        expectLikeTwin(text);
        for (const std::string& damaged : damagedOutputs(text))
            expectLikeTwin(damaged);
    }
}

TEST(RVGitDiffOutputParserTest, GeneratedDiffsAreReadAsThePlainWayReadsThem) {
    const std::vector<std::string> headerLines = {"diff --git a/x b/y",
                                                  "diff --cc x",
                                                  "diff --combined \"x\\t\"",
                                                  "old mode 100644",
                                                  "new mode 100755",
                                                  "deleted file mode 100644",
                                                  "new file mode 120000",
                                                  "copy from x",
                                                  "copy to y",
                                                  "rename from x",
                                                  "similarity index 77%",
                                                  "dissimilarity index 3%",
                                                  "index 12ab..34cd 100644",
                                                  "index 1,2,3..4",
                                                  "--- a/x",
                                                  "Binary files a and b differ",
                                                  " ",
                                                  "\xC2\xA0\t",
                                                  "",
                                                  "* Unmerged path z",
                                                  "GIT binary patch",
                                                  "mode 1,2..3"};
    const std::vector<std::string> chunkLines = {" context",
                                                 "+added",
                                                 "-deleted",
                                                 "\\ No newline at end of file",
                                                 "++both",
                                                 "+ one",
                                                 " +other",
                                                 "--gone",
                                                 "- -x",
                                                 "   ",
                                                 "",
                                                 "* Unmerged path z",
                                                 "@@ -3,2 +4,5 @@ f",
                                                 "@@@ -3,2 -7,9 +4,5 @@@",
                                                 "@@@@ -1 -2 -3,3 +4,5 @@@@",
                                                 "+\r",
                                                 "+caf\xE9",
                                                 "-\xC3\xA9\t",
                                                 "@@ -1 @@"};
    std::mt19937 random(7);
    int numberRead = 0;
    for (int round = 0; round < 2000; ++round) {
        std::string text = random() % 8 ? "diff --git a/x b/y\n" : "";
        for (auto count = random() % 6; count > 0; --count)
            text += headerLines[random() % headerLines.size()] + "\n";
        text += "+++ b/y\n@@ -1,4 +1,9 @@\n";
        for (auto count = random() % 20; count > 0; --count)
            text += chunkLines[random() % chunkLines.size()] + "\n";
        if (random() % 4 == 0)
            text.pop_back();
        expectLikeTwin(text);
        numberRead += RVGitDiffOutputParser(text).parse();
    }
    EXPECT_GT(numberRead, 200);
}

}  // namespace
