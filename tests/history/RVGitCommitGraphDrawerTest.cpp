#include "RVGit/history/RVGitCommitGraphDrawer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "RVGit/base/RVTypes.h"
#include "RVGit/history/RVGitCommit.h"

namespace {

using Parents = std::optional<std::vector<std::string>>;

struct Commit {
    std::string hash;
    Parents parents;
};

/// A row as text: "commitIndex: ID start-end ..." with "*" behind a starting and "+" behind an
/// ending line.
std::string text(const RVGitCommitGraphLines& row) {
    std::string result = std::to_string(row.commitIndex()) + ":";
    for (const RVGitCommitGraphLine& line : row.commitLines()) {
        result += " " + std::to_string(line.lineID()) + " " + std::to_string(line.startIndex()) +
                  "-" + std::to_string(line.endIndex());
        result += line.isStarting() ? "*" : "";
        result += line.isEnding() ? "+" : "";
    }
    return result;
}

std::string text(const RVGitCommitGraphDrawerCommitLines& lanes) {
    std::string result;
    for (const auto& lane : lanes.commitLines()) {
        result += result.empty() ? "" : " ";
        result += std::to_string(lane->lineID()) + ":" + lane->commitHash();
    }
    return result;
}

class RVGitCommitGraphDrawerTest : public ::testing::Test {
protected:
    std::string draw(const std::string& commitHash, const Parents& parents) {
        return text(*drawer_.drawGraphForCommitHash(commitHash, parents));
    }
    std::string lanes() const { return text(*drawer_.commitLines()); }

    RVGitCommitGraphDrawer drawer_;
};

/// The same rules, written the plain way: each lane is looked up by its ID after the commit has
/// been routed.
class PlainDrawer {
public:
    bool drawsFirstParentOnly = false;
    std::uint64_t lastCommitLineID = 0;

    std::string draw(const std::string& commitHash, Parents parents) {
        if (drawsFirstParentOnly && parents && parents->size() >= 2)
            parents->resize(1);
        std::vector<std::uint64_t> waiting;
        for (const auto& [lineID, hash] : lanes_) {
            if (hash == commitHash)
                waiting.push_back(lineID);
        }
        auto snapshot = lanes_;
        bool isHead = waiting.empty();
        std::uint64_t commitIndex = isHead ? lanes_.size() : indexOf(waiting[0]);
        for (std::size_t other = 1; other < waiting.size(); ++other)
            end(waiting[other]);

        std::vector<std::uint32_t> starting;
        if (!parents || parents->empty()) {
            if (!isHead)
                end(waiting[0]);
        } else {
            for (const std::string& parent : *parents) {
                if (parent == parents->front() && !isHead)
                    lanes_[indexOf(waiting[0])].second = parent;
                else
                    starting.push_back(static_cast<std::uint32_t>(laneFor(parent, isHead)));
            }
        }

        RVGitCommitGraphLines row;
        row.setCommitIndex(commitIndex);
        for (std::uint64_t index = 0; index < snapshot.size(); ++index) {
            std::uint64_t lineID = snapshot[index].first;
            std::uint64_t column = indexOf(lineID);
            bool isClosed = column == static_cast<std::uint64_t>(RVNotFound);
            row.addCommitGraphLine(
                {lineID, index, isClosed ? commitIndex : column, false, isClosed});
        }
        for (std::uint64_t lineID : starting)
            row.addCommitGraphLine({lineID, commitIndex, indexOf(lineID), true, false});
        return text(row);
    }

    std::string lanes() const {
        std::string result;
        for (const auto& [lineID, hash] : lanes_)
            result += (result.empty() ? "" : " ") + std::to_string(lineID) + ":" + hash;
        return result;
    }

private:
    std::uint64_t indexOf(std::uint64_t lineID) const {
        for (std::size_t index = 0; index < lanes_.size(); ++index) {
            if (lanes_[index].first == lineID)
                return index;
        }
        return static_cast<std::uint64_t>(RVNotFound);
    }
    void end(std::uint64_t lineID) {
        lanes_.erase(lanes_.begin() + static_cast<std::ptrdiff_t>(indexOf(lineID)));
    }
    std::uint64_t laneFor(const std::string& commitHash, bool isHead) {
        if (!isHead) {
            for (const auto& [lineID, hash] : lanes_) {
                if (hash == commitHash)
                    return lineID;
            }
        }
        lanes_.emplace_back(++lastCommitLineID, commitHash);
        return lastCommitLineID;
    }

    std::vector<std::pair<std::uint64_t, std::string>> lanes_;
};

/// Draws a history both ways. Every so often another drawer takes over the lanes.
void expectBothDrawersToAgree(const std::vector<Commit>& history, bool drawsFirstParentOnly,
                              std::uint64_t lastCommitLineID, std::size_t resumeInterval) {
    PlainDrawer plain;
    plain.drawsFirstParentOnly = drawsFirstParentOnly;
    plain.lastCommitLineID = lastCommitLineID;
    auto drawer = RVGitCommitGraphDrawer::graphDrawer();
    drawer->setDrawsFirstParentOnly(drawsFirstParentOnly);
    drawer->commitLines()->setLastCommitLineID(lastCommitLineID);
    for (std::size_t index = 0; index < history.size(); ++index) {
        const Commit& commit = history[index];
        if (index % resumeInterval == resumeInterval - 1) {
            drawer = RVGitCommitGraphDrawer::graphDrawerWithCommitLines(drawer->commitLines());
            drawer->setDrawsFirstParentOnly(drawsFirstParentOnly);
        }
        auto row = drawer->drawGraphForCommitHash(commit.hash, commit.parents);
        ASSERT_EQ(text(*row), plain.draw(commit.hash, commit.parents)) << "row " << index;
        ASSERT_EQ(text(*drawer->commitLines()), plain.lanes()) << "row " << index;
        ASSERT_EQ(drawer->commitLines()->lastCommitLineID(), plain.lastCommitLineID);
        ASSERT_EQ(drawer->isStartOfGraph(), plain.lanes().empty());
    }
}

using Random = std::mt19937;

std::size_t below(Random& random, std::size_t limit) {
    return random() % limit;
}

std::string hashOfNumber(std::size_t number) {
    std::string digits = std::to_string(number);
    return std::string(40 - digits.size(), 'a') + digits;
}

/// A history in topological order, newest first: each commit's parents are among the older ones,
/// near as a rule; some are roots, some stand alone, some parents are named twice, and the oldest
/// parents are cut off.
std::vector<Commit> orderedHistory(Random& random) {
    std::size_t count = 1 + below(random, 60);
    std::size_t reach = 1 + below(random, 12);
    std::vector<Commit> history;
    for (std::size_t number = count; number > 0; --number) {
        std::vector<std::string> parents;
        std::size_t parentCount = below(random, 10) ? 1 : below(random, 6);
        if (below(random, 4) == 0)
            parentCount = 2;
        for (std::size_t parent = 0; parent < parentCount; ++parent) {
            std::size_t distance = 1 + below(random, reach);
            if (distance < number + 3)
                parents.push_back(hashOfNumber(number + 3 - distance));
        }
        if (parents.empty() && below(random, 2))
            history.push_back({hashOfNumber(number + 3), std::nullopt});
        else
            history.push_back({hashOfNumber(number + 3), std::move(parents)});
    }
    return history;
}

/// Commits in no order at all, from so few names that everything collides.
std::vector<Commit> disorderedHistory(Random& random) {
    std::size_t nameCount = 1 + below(random, 10);
    std::vector<Commit> history(1 + below(random, 80));
    for (Commit& commit : history) {
        commit.hash = hashOfNumber(below(random, nameCount));
        if (below(random, 8) == 0)
            continue;
        commit.parents.emplace(below(random, 6));
        for (std::string& parent : *commit.parents)
            parent = hashOfNumber(below(random, nameCount));
    }
    return history;
}

TEST_F(RVGitCommitGraphDrawerTest, MergeIsDrawnRowByRow) {
    EXPECT_EQ(draw("E", Parents({"C", "D"})), "0: 1 0-0* 2 0-1*");
    EXPECT_EQ(lanes(), "1:C 2:D");
    EXPECT_EQ(draw("D", Parents({"B"})), "1: 1 0-0 2 1-1");
    EXPECT_EQ(lanes(), "1:C 2:B");
    EXPECT_EQ(draw("C", Parents({"B"})), "0: 1 0-0 2 1-1");
    EXPECT_EQ(lanes(), "1:B 2:B");
    EXPECT_EQ(draw("B", Parents({"A"})), "0: 1 0-0 2 1-0+");
    EXPECT_EQ(lanes(), "1:A");
    EXPECT_EQ(draw("A", std::nullopt), "0: 1 0-0+");
    EXPECT_EQ(lanes(), "");
}

TEST_F(RVGitCommitGraphDrawerTest, SecondHeadAndALaneThatMovesLeftAreDrawnRowByRow) {
    EXPECT_EQ(draw("F", Parents({"E"})), "0: 1 0-0*");
    EXPECT_EQ(lanes(), "1:E");
    EXPECT_EQ(draw("G", Parents({"E", "D"})), "1: 1 0-0 2 1-1* 3 1-2*");
    EXPECT_EQ(lanes(), "1:E 2:E 3:D");
    EXPECT_EQ(draw("E", Parents({"C"})), "0: 1 0-0 2 1-0+ 3 2-1");
    EXPECT_EQ(lanes(), "1:C 3:D");
    EXPECT_EQ(draw("D", Parents({"C"})), "1: 1 0-0 3 1-1");
    EXPECT_EQ(lanes(), "1:C 3:C");
    EXPECT_EQ(draw("C", std::vector<std::string>()), "0: 1 0-0+ 3 1-0+");
    EXPECT_EQ(lanes(), "");
}

TEST_F(RVGitCommitGraphDrawerTest, RowDescribesItselfInSymbols) {
    EXPECT_EQ(drawer_.drawGraphForCommitHash("E", Parents({"C", "D"}))->description(), "*\\");
    EXPECT_EQ(drawer_.drawGraphForCommitHash("D", Parents({"B"}))->description(), "||");
    EXPECT_EQ(drawer_.drawGraphForCommitHash("C", Parents({"B"}))->description(), "||");
    EXPECT_EQ(drawer_.drawGraphForCommitHash("B", Parents({"A"}))->description(), "|/");
    EXPECT_EQ(drawer_.drawGraphForCommitHash("A", std::nullopt)->description(), "+");
}

TEST_F(RVGitCommitGraphDrawerTest, IsolatedCommitLeavesNoLane) {
    EXPECT_TRUE(drawer_.isStartOfGraph());
    EXPECT_EQ(draw("X", std::nullopt), "0:");
    EXPECT_TRUE(drawer_.isStartOfGraph());
    EXPECT_EQ(draw("X", std::vector<std::string>()), "0:");
    EXPECT_TRUE(drawer_.isStartOfGraph());
}

TEST_F(RVGitCommitGraphDrawerTest, IsolatedCommitStandsRightOfTheLanesThatPassIt) {
    draw("E", Parents({"C", "D"}));
    EXPECT_EQ(draw("X", std::nullopt), "2: 1 0-0 2 1-1");
    EXPECT_EQ(lanes(), "1:C 2:D");
    EXPECT_FALSE(drawer_.isStartOfGraph());
}

TEST_F(RVGitCommitGraphDrawerTest, RepeatedFirstParentContinuesTheCommitsLane) {
    draw("B", Parents({"A"}));
    EXPECT_EQ(draw("A", Parents({"P", "P", "Q", "P"})), "0: 1 0-0 2 0-1*");
    EXPECT_EQ(lanes(), "1:P 2:Q");
}

TEST_F(RVGitCommitGraphDrawerTest, RepeatedFurtherParentJoinsTheLaneThatItOpened) {
    draw("B", Parents({"A"}));
    EXPECT_EQ(draw("A", Parents({"P", "Q", "Q"})), "0: 1 0-0 2 0-1* 2 0-1*");
    EXPECT_EQ(lanes(), "1:P 2:Q");
}

TEST_F(RVGitCommitGraphDrawerTest, RepeatedParentOfAHeadOpensALaneEachTime) {
    EXPECT_EQ(draw("A", Parents({"P", "P"})), "0: 1 0-0* 2 0-1*");
    EXPECT_EQ(lanes(), "1:P 2:P");
}

TEST_F(RVGitCommitGraphDrawerTest, OctopusOpensALaneForEachFurtherParent) {
    draw("B", Parents({"A"}));
    EXPECT_EQ(draw("A", Parents({"P", "Q", "R", "S"})), "0: 1 0-0 2 0-1* 3 0-2* 4 0-3*");
}

TEST_F(RVGitCommitGraphDrawerTest, FirstParentOnlyNeverBranches) {
    EXPECT_FALSE(drawer_.drawsFirstParentOnly());
    drawer_.setDrawsFirstParentOnly(true);
    EXPECT_EQ(draw("D", Parents({"C", "X"})), "0: 1 0-0*");
    EXPECT_EQ(draw("C", Parents({"B", "X", "Y"})), "0: 1 0-0");
    EXPECT_EQ(draw("B", Parents({"A"})), "0: 1 0-0");
    EXPECT_EQ(draw("A", std::vector<std::string>()), "0: 1 0-0+");
    EXPECT_TRUE(drawer_.isStartOfGraph());
}

TEST_F(RVGitCommitGraphDrawerTest, TwoLanesToOneFirstParentRunOnAndTheRightOneEndsThere) {
    draw("E", Parents({"C", "D"}));
    EXPECT_EQ(draw("C", Parents({"B"})), "0: 1 0-0 2 1-1");
    EXPECT_EQ(draw("D", Parents({"B"})), "1: 1 0-0 2 1-1");
    EXPECT_EQ(lanes(), "1:B 2:B");
    EXPECT_EQ(draw("B", Parents({"A"})), "0: 1 0-0 2 1-0+");
}

TEST_F(RVGitCommitGraphDrawerTest, MergeParentThatIsAwaitedIsJoinedWithoutANewLane) {
    draw("E", Parents({"D", "C"}));
    EXPECT_EQ(draw("D", Parents({"B", "C"})), "0: 1 0-0 2 1-1 2 0-1*");
    EXPECT_EQ(lanes(), "1:B 2:C");
    EXPECT_EQ(drawer_.commitLines()->lastCommitLineID(), 2u);
}

TEST_F(RVGitCommitGraphDrawerTest, MergeParentOnTheLeftIsJoinedThere) {
    draw("E", Parents({"C", "D"}));
    EXPECT_EQ(draw("D", Parents({"B", "C"})), "1: 1 0-0 2 1-1 1 1-0*");
}

TEST_F(RVGitCommitGraphDrawerTest, LanesRightOfAClosedOneMoveLeftInTheSameRow) {
    draw("E", Parents({"A", "B", "C"}));
    EXPECT_EQ(draw("A", std::nullopt), "0: 1 0-0+ 2 1-0 3 2-1");
    EXPECT_EQ(lanes(), "2:B 3:C");
}

TEST_F(RVGitCommitGraphDrawerTest, SnapshotTakenBeforeARowKeepsItsLanes) {
    draw("E", Parents({"A", "B", "C"}));
    auto snapshot = drawer_.commitLines()->currentCommitLines();
    draw("A", std::nullopt);
    draw("B", Parents({"C"}));
    ASSERT_EQ(snapshot.size(), 3u);
    EXPECT_EQ(snapshot[0]->commitHash(), "A");
    EXPECT_EQ(snapshot[1]->commitHash(), "C");
    EXPECT_EQ(snapshot[1], drawer_.commitLines()->commitLineAtIndex(0));
}

TEST_F(RVGitCommitGraphDrawerTest, DrawerGoesOnWithTheLanesOfAnother) {
    draw("E", Parents({"C", "D"}));
    auto resumed = RVGitCommitGraphDrawer::graphDrawerWithCommitLines(drawer_.commitLines());
    EXPECT_EQ(resumed->commitLines(), drawer_.commitLines());
    EXPECT_FALSE(resumed->isStartOfGraph());
    EXPECT_EQ(text(*resumed->drawGraphForCommitHash("D", Parents({"B", "X"}))),
              "1: 1 0-0 2 1-1 3 1-2*");
    EXPECT_EQ(lanes(), "1:C 2:B 3:X");
}

TEST_F(RVGitCommitGraphDrawerTest, AbsentLanesGiveANewList) {
    auto drawer = RVGitCommitGraphDrawer::graphDrawerWithCommitLines(nullptr);
    ASSERT_NE(drawer->commitLines(), nullptr);
    EXPECT_TRUE(drawer->isStartOfGraph());
    EXPECT_TRUE(RVGitCommitGraphDrawer::graphDrawer()->isStartOfGraph());
}

TEST_F(RVGitCommitGraphDrawerTest, HashMayBeThatOfALaneThatEndsInTheRow) {
    const std::string hash = hashOfNumber(1);
    for (const std::string& parent : {hash, hash, std::string("X"), hash})
        draw("head", Parents({parent}));
    const std::string& ending = drawer_.commitLines()->commitLineAtIndex(1)->commitHash();
    EXPECT_EQ(text(*drawer_.drawGraphForCommitHash(ending, Parents({"P"}))),
              "0: 1 0-0 2 1-0+ 3 2-1 4 3-0+");
    EXPECT_EQ(lanes(), "1:P 3:X");
}

TEST_F(RVGitCommitGraphDrawerTest, ErrorPlaceIsLeftAlone) {
    std::optional<RVError> error = RVError("domain", 7);
    ASSERT_NE(drawer_.drawGraphForCommitHash("A", std::nullopt, &error), nullptr);
    EXPECT_EQ(error->code(), 7);
}

TEST_F(RVGitCommitGraphDrawerTest, StartingLinesKeepTheLow32BitsOfAnID) {
    drawer_.commitLines()->setLastCommitLineID(0xFFFFFFFE);
    std::string notFound = std::to_string(RVNotFound);
    EXPECT_EQ(draw("E", Parents({"A", "B", "C"})),
              "0: 4294967295 0-0* 0 0-" + notFound + "* 1 0-" + notFound + "*");
    EXPECT_EQ(lanes(), "4294967295:A 4294967296:B 4294967297:C");
    EXPECT_EQ(draw("B", Parents({"A"})), "1: 4294967295 0-0 4294967296 1-1 4294967297 2-2");
}

TEST_F(RVGitCommitGraphDrawerTest, CutIDIsLookedUpAsItIs) {
    draw("E", Parents({"A"}));
    drawer_.commitLines()->setLastCommitLineID(0x100000000);
    EXPECT_EQ(draw("F", Parents({"B"})), "1: 1 0-0 1 1-0*");
    EXPECT_EQ(lanes(), "1:A 4294967297:B");
}

TEST_F(RVGitCommitGraphDrawerTest, CommitIsDrawnByItsHashAndParents) {
    auto commit = std::make_shared<RVGitCommit>();
    EXPECT_EQ(text(*drawer_.drawGraphForCommit(commit)), "0:");
    commit->setCommitHash("E");
    commit->setParentCommitHashes({"C", "D"});
    std::optional<RVError> error = RVError("domain", 7);
    EXPECT_EQ(text(*drawer_.drawGraphForCommit(commit, &error)), "0: 1 0-0* 2 0-1*");
    EXPECT_EQ(error.value().code(), 7);
    commit->setCommitHash("C");
    commit->setParentCommitHashes({});
    EXPECT_EQ(text(*drawer_.drawGraphForCommit(commit)), "0: 1 0-0+ 2 1-0");
    EXPECT_EQ(lanes(), "2:D");
    EXPECT_THROW(drawer_.drawGraphForCommit(nullptr), RVInvalidParameterException);
}

TEST_F(RVGitCommitGraphDrawerTest, AgreesWithThePlainRulesOnOrderedHistories) {
    Random random(20240517);
    for (std::size_t round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        expectBothDrawersToAgree(orderedHistory(random), round % 5 == 0, round % 7 ? 0 : 0xFFFFFFF0,
                                 2 + round % 9);
        if (HasFatalFailure())
            return;
    }
}

TEST_F(RVGitCommitGraphDrawerTest, AgreesWithThePlainRulesOnDisorderedHistories) {
    Random random(4711);
    for (std::size_t round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        expectBothDrawersToAgree(disorderedHistory(random), round % 5 == 0,
                                 round % 7 ? 0 : 0xFFFFFFF8, 2 + round % 9);
        if (HasFatalFailure())
            return;
    }
}

}  // namespace
