#include "RVGit/history/RVGitCommitGraphDrawerCommitLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVTypes.h"

namespace {

using Lane = RVGitCommitGraphDrawerCommitLine;
using Lanes = RVGitCommitGraphDrawerCommitLines;

/// The open lanes as "ID:hash", separated by blanks.
std::string text(const Lanes& lanes) {
    std::string result;
    for (const auto& lane : lanes.commitLines()) {
        result += result.empty() ? "" : " ";
        result += std::to_string(lane->lineID()) + ":" + lane->commitHash();
    }
    return result;
}

template <typename Operation>
std::string inconsistency(Operation operation) {
    try {
        operation();
    } catch (const RVInternalInconsistencyException& exception) {
        return exception.what();
    }
    return "nothing was thrown";
}

TEST(RVGitCommitGraphDrawerCommitLineTest, HashMayBeAPartOfTheOldOne) {
    Lane lane(1, "abc");
    lane.setCommitHash(std::string_view(lane.commitHash()).substr(1));
    EXPECT_EQ(lane.commitHash(), "bc");
    EXPECT_TRUE(lane.isPointingTowardsCommitHash("bc", Lane::numberOfCommitHash("bc")));
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, NewListIsEmpty) {
    Lanes lanes;
    EXPECT_TRUE(lanes.isEmpty());
    EXPECT_EQ(lanes.nextCommitLineIndex(), 0u);
    EXPECT_EQ(lanes.lastCommitLineID(), 0u);
    EXPECT_TRUE(lanes.currentCommitLines().empty());
    EXPECT_TRUE(lanes.allCommitLinesPointingTowardsCommitHash("").empty());
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, IDsCountFromOneAndAreNeverReused) {
    Lanes lanes;
    EXPECT_EQ(lanes.nextCommitLineID(), 1u);
    EXPECT_EQ(lanes.commitLineWithCommitHash("a", false), 2u);
    lanes.endCommitLineWithID(2);
    EXPECT_EQ(lanes.commitLineWithCommitHash("a", false), 3u);
    EXPECT_EQ(lanes.lastCommitLineID(), 3u);
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, ListOperationsActOnColumns) {
    Lanes lanes;
    lanes.addCommitLine(std::make_shared<Lane>(1, "a"));
    lanes.addCommitLine(std::make_shared<Lane>(2, "b"));
    lanes.addCommitLine(std::make_shared<Lane>(3, "c"));
    EXPECT_EQ(lanes.nextCommitLineIndex(), 3u);
    lanes.replaceCommitLineAtIndex(1, std::make_shared<Lane>(7, "x"));
    EXPECT_EQ(text(lanes), "1:a 7:x 3:c");
    EXPECT_EQ(lanes.commitLineAtIndex(1)->lineID(), 7u);
    lanes.removeCommitLineAtIndex(0);
    EXPECT_EQ(text(lanes), "7:x 3:c");
    EXPECT_FALSE(lanes.isEmpty());
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, ALaneMayBeRemovedAtAnyColumn) {
    const std::vector<std::string> remainders = {"2:b 3:c 4:d", "1:a 3:c 4:d", "1:a 2:b 4:d",
                                                 "1:a 2:b 3:c"};
    for (std::size_t column = 0; column < remainders.size(); ++column) {
        SCOPED_TRACE(column);
        Lanes removed, ended;
        for (Lanes* lanes : {&removed, &ended}) {
            for (const char* hash : {"a", "b", "c", "d"})
                lanes->commitLineWithCommitHash(hash, true);
        }
        removed.removeCommitLineAtIndex(column);
        EXPECT_EQ(text(removed), remainders[column]);
        ended.endCommitLineWithID(column + 1);
        EXPECT_EQ(text(ended), remainders[column]);
        EXPECT_EQ(ended.nextCommitLineIndex(), 3u);
    }
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, ColumnsOutsideTheListAndNullLanesAreRefused) {
    Lanes lanes;
    lanes.addCommitLine(std::make_shared<Lane>(1, "a"));
    EXPECT_THROW(lanes.removeCommitLineAtIndex(1), RVInvalidParameterException);
    EXPECT_THROW(lanes.replaceCommitLineAtIndex(1, std::make_shared<Lane>()),
                 RVInvalidParameterException);
    EXPECT_THROW((void)lanes.commitLineAtIndex(1), RVInvalidParameterException);
    EXPECT_THROW(lanes.addCommitLine(nullptr), RVInvalidParameterException);
    EXPECT_THROW(lanes.replaceCommitLineAtIndex(0, nullptr), RVInvalidParameterException);
    EXPECT_EQ(text(lanes), "1:a");
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, SnapshotKeepsItsOrderAndSharesTheLanes) {
    Lanes lanes;
    lanes.commitLineWithCommitHash("a", true);
    lanes.commitLineWithCommitHash("b", true);
    auto snapshot = lanes.currentCommitLines();
    lanes.endCommitLineWithID(1);
    lanes.updateCommitLineWithID(2, "c");
    ASSERT_EQ(snapshot.size(), 2u);
    EXPECT_EQ(snapshot[0]->lineID(), 1u);
    EXPECT_EQ(snapshot[1]->commitHash(), "c");
    EXPECT_EQ(snapshot[1], lanes.commitLineAtIndex(0));
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, IndexOfAnIDIsItsColumnOrNotFound) {
    Lanes lanes;
    lanes.commitLineWithCommitHash("a", true);
    lanes.commitLineWithCommitHash("b", true);
    EXPECT_EQ(lanes.indexOfCommitLineWithID(2), 1u);
    lanes.endCommitLineWithID(1);
    EXPECT_EQ(lanes.indexOfCommitLineWithID(2), 0u);
    EXPECT_EQ(lanes.indexOfCommitLineWithID(1), static_cast<std::uint64_t>(RVNotFound));
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, AllLanesTowardsACommitComeInColumnOrder) {
    Lanes lanes;
    lanes.commitLineWithCommitHash("a", true);
    lanes.commitLineWithCommitHash("b", true);
    lanes.commitLineWithCommitHash("a", true);
    auto found = lanes.allCommitLinesPointingTowardsCommitHash("a");
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0]->lineID(), 1u);
    EXPECT_EQ(found[1]->lineID(), 3u);
    EXPECT_TRUE(lanes.allCommitLinesPointingTowardsCommitHash("A").empty());
    EXPECT_TRUE(lanes.allCommitLinesPointingTowardsCommitHash("").empty());
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, LaneForACommitIsTheLeftmostUnlessItIsForAHead) {
    Lanes lanes;
    EXPECT_EQ(lanes.commitLineWithCommitHash("a", false), 1u);
    EXPECT_EQ(lanes.commitLineWithCommitHash("a", true), 2u);
    EXPECT_EQ(lanes.commitLineWithCommitHash("a", false), 1u);
    EXPECT_EQ(text(lanes), "1:a 2:a");
    EXPECT_EQ(lanes.commitLineIndexWithCommitHash("a", true), 2u);
    EXPECT_EQ(lanes.commitLineIndexWithCommitHash("a", false), 0u);
    EXPECT_EQ(lanes.lastCommitLineID(), 3u);
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, LanePointedElsewhereIsFoundThere) {
    Lanes lanes;
    lanes.commitLineWithCommitHash("a", true);
    lanes.updateCommitLineWithID(1, "b");
    EXPECT_TRUE(lanes.allCommitLinesPointingTowardsCommitHash("a").empty());
    EXPECT_EQ(lanes.allCommitLinesPointingTowardsCommitHash("b").size(), 1u);

    lanes.commitLineAtIndex(0)->setCommitHash("c");
    EXPECT_TRUE(lanes.allCommitLinesPointingTowardsCommitHash("b").empty());
    EXPECT_EQ(lanes.allCommitLinesPointingTowardsCommitHash("c").size(), 1u);

    lanes.commitLineAtIndex(0)->setLineID(9);
    EXPECT_EQ(lanes.indexOfCommitLineWithID(9), 0u);
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, NewLaneHeadsTowardsTheEmptyHash) {
    Lanes lanes;
    lanes.addCommitLine(std::make_shared<Lane>());
    EXPECT_EQ(lanes.allCommitLinesPointingTowardsCommitHash("").size(), 1u);
}

TEST(RVGitCommitGraphDrawerCommitLinesTest, IDsThatAreNotOpenAreAnInconsistency) {
    Lanes lanes;
    lanes.commitLineWithCommitHash("a", true);
    EXPECT_EQ(inconsistency([&] { lanes.updateCommitLineWithID(2, "b"); }),
              "Could not find the commit line with ID 2.");
    EXPECT_EQ(inconsistency([&] { lanes.endCommitLineWithID(42); }),
              "Could not find the commit line with ID 42.");
    EXPECT_EQ(inconsistency([&] { lanes.endCommitLineWithID(~std::uint64_t{0}); }),
              "Could not find the commit line with ID -1.");
    EXPECT_EQ(text(lanes), "1:a");
}

}  // namespace
