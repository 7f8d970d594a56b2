#include "RVGit/history/RVGitCommitGraphLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace {

using Ends = std::pair<RVGitCommitGraphPoint, RVGitCommitGraphPoint>;

constexpr RVGitCommitGraphRect row{100, 40, 300, 24};

TEST(RVGitCommitGraphLineTest, ColumnsAreTenUnitsWideAndCentredOnTheSeventh) {
    EXPECT_EQ(KTCommitLineColumnWidth, 10);
    EXPECT_EQ(KTCommitLineColumnMiddle, 7);
}

TEST(RVGitCommitGraphLineTest, PassingLineRunsFromTheLowerToTheUpperEdge) {
    RVGitCommitGraphLine line(1, 4, 2);
    EXPECT_EQ(line.lineForRVGitCommitGraphLine(row, 9), (Ends{{127, 40}, {147, 64}}));
}

TEST(RVGitCommitGraphLineTest, StartingLineRunsFromTheDotToTheLowerEdge) {
    RVGitCommitGraphLine line(1, 1, 3, true, false);
    EXPECT_EQ(line.lineForRVGitCommitGraphLine(row, 1), (Ends{{117, 52}, {137, 40}}));
}

TEST(RVGitCommitGraphLineTest, EndingLineRunsFromTheDotToTheUpperEdge) {
    RVGitCommitGraphLine line(1, 5, 2, false, true);
    EXPECT_EQ(line.lineForRVGitCommitGraphLine(row, 2), (Ends{{127, 52}, {157, 64}}));
}

TEST(RVGitCommitGraphLineTest, LineThatStartsAndEndsIsDrawnAsEnding) {
    RVGitCommitGraphLine line(1, 5, 2, true, true);
    EXPECT_EQ(line.lineForRVGitCommitGraphLine(row, 2), (Ends{{127, 52}, {157, 64}}));
}

TEST(RVGitCommitGraphLineTest, DotStandsInTheGivenColumnWhateverTheLineSays) {
    RVGitCommitGraphLine line(1, 1, 3, true, false);
    EXPECT_EQ(line.lineForRVGitCommitGraphLine(row, 6).first, (RVGitCommitGraphPoint{167, 52}));
}

TEST(RVGitCommitGraphLineTest, WidthIsNotUsedAndOddHeightsAreHalvedExactly) {
    RVGitCommitGraphLine line(1, 0, 0, false, true);
    EXPECT_EQ(line.lineForRVGitCommitGraphLine({0.5, 0.25, -1, 21}, 0),
              (Ends{{7.5, 10.75}, {7.5, 21.25}}));
}

struct SymbolCase {
    std::uint64_t startIndex;
    std::uint64_t endIndex;
    bool isStarting;
    bool isEnding;
    const char* symbol;
};

TEST(RVGitCommitGraphLineTest, SymbolTellsKindAndDirection) {
    const SymbolCase cases[] = {
        {2, 2, true, false, "*"},  {2, 1, true, false, "/"},  {1, 2, true, false, "\\"},
        {2, 2, false, false, "|"}, {2, 1, false, false, "/"}, {1, 2, false, false, "/"},
        {2, 2, false, true, "+"},  {2, 1, false, true, "/"},  {1, 2, false, true, "/"},
        {2, 2, true, true, "+"},   {2, 1, true, true, "/"},   {1, 2, true, true, "/"},
    };
    for (const SymbolCase& c : cases) {
        RVGitCommitGraphLine line(1, c.startIndex, c.endIndex, c.isStarting, c.isEnding);
        EXPECT_EQ(line.description(), c.symbol)
            << c.startIndex << " to " << c.endIndex << ", starting " << c.isStarting << ", ending "
            << c.isEnding;
    }
}

TEST(RVGitCommitGraphLineTest, FieldsAreWritable) {
    RVGitCommitGraphLine line;
    EXPECT_EQ(line, RVGitCommitGraphLine(0, 0, 0, false, false));
    line.setLineID(~std::uint64_t{0});
    line.setStartIndex(3);
    line.setEndIndex(4);
    line.setIsStarting(true);
    line.setIsEnding(true);
    EXPECT_EQ(line, RVGitCommitGraphLine(~std::uint64_t{0}, 3, 4, true, true));
}

TEST(RVGitCommitGraphLinesTest, DescriptionJoinsTheSymbolsInOrder) {
    RVGitCommitGraphLines lines;
    EXPECT_EQ(lines.description(), "");
    lines.addCommitGraphLine({1, 0, 0});
    lines.addCommitGraphLine({2, 1, 0, false, true});
    lines.addCommitGraphLine({3, 0, 0, true, false});
    lines.addCommitGraphLine({4, 0, 1, true, false});
    EXPECT_EQ(lines.description(), "|/*\\");
}

TEST(RVGitCommitGraphLinesTest, CopySharesTheLinesAndKeepsTheCommitIndex) {
    RVGitCommitGraphLines lines;
    lines.setCommitIndex(5);
    RVGitCommitGraphLines copy = lines;
    EXPECT_EQ(copy.commitIndex(), 5u);
    lines.setCommitIndex(6);
    EXPECT_EQ(copy.commitIndex(), 5u);

    copy.addCommitGraphLine({1, 0, 0});
    EXPECT_EQ(lines.description(), "|");
    lines.commitLines().clear();
    EXPECT_EQ(copy.description(), "");
}

TEST(RVGitCommitGraphLinesTest, RowThatWasMovedFromStaysUsable) {
    RVGitCommitGraphLines lines;
    lines.addCommitGraphLine({1, 0, 0});
    RVGitCommitGraphLines moved = std::move(lines);
    EXPECT_EQ(moved.description(), "|");
    EXPECT_EQ(lines.description(), "|");  // NOLINT(bugprone-use-after-move)
}

}  // namespace
