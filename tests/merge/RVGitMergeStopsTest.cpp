#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/repository/RVGitRepository.h"
#include "tests/merge/RVGitMergeTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::StartsWith;

/// What the readers are to say of a stop. Revisions are names that git resolves; an empty one
/// stands for nothing.
struct Stop {
    RVGitMergeMode mode = RVGitMergeModeNone;
    bool isEditing = false;
    bool isPending = false;
    bool usesApply = false;
    std::uint64_t nextStep = 0;
    std::uint64_t lastStep = 0;
    std::string nextRevision = {};
    std::string lastRevision = {};
    std::string mergedRevision = {};
    std::string originalRevision = {};
    std::string branch = {};
    /// How the message begins; absent: there is none.
    std::optional<std::string> message = {};
};

/// The readers at every kind of stop of the real git, wherever the working tree lies.
class RVGitMergeStopsTest : public RVGitMergeTestCase {
protected:
    void atEachPlace(const std::function<void()>& body) {
        for (const RVGitMergePlace place : allMergePlaces) {
            makePlace(place);
            SCOPED_TRACE(path());
            body();
        }
    }
    /// Whether a ref alone tells of the operation, and that is in a table, which has no date for
    /// it.
    bool isMarkedInTables(RVGitMergeMode mode) {
        return !areTestedRefsInFiles() &&
               (mode == RVGitMergeModeCherryPick || mode == RVGitMergeModeRevert) &&
               !manager().nextSequenceRevision();
    }
    void expectStop(const std::function<void()>& start, const Stop& expected) {
        atEachPlace([&] {
            start();
            const std::string head = hash("HEAD");
            EXPECT_EQ(manager().currentMergeMode(), expected.mode);
            EXPECT_EQ(manager().isMerging(), expected.mode != RVGitMergeModeNone);
            EXPECT_EQ(manager().isEditingRevision(), expected.isEditing);
            EXPECT_EQ(manager().isPendingInteractiveRebase(), expected.isPending);
            EXPECT_EQ(manager().usesRebaseApplyBackend(), expected.usesApply);
            EXPECT_EQ(manager().nextSequenceStep(), expected.nextStep);
            EXPECT_EQ(manager().lastSequenceStep(), expected.lastStep);
            EXPECT_EQ(full(manager().nextSequenceRevision()), full(expected.nextRevision));
            EXPECT_EQ(full(manager().lastSequenceRevision()), full(expected.lastRevision));
            EXPECT_EQ(full(manager().mergedRevision()), full(expected.mergedRevision));
            // A revision of HEAD that is asked for is empty where it is detached.
            const auto original = manager().originalRevision();
            if (expected.originalRevision == "HEAD")
                EXPECT_THAT(original, testing::AnyOf(testing::Optional(head),
                                                     testing::Optional(std::string())));
            else
                EXPECT_EQ(full(original), full(expected.originalRevision));
            EXPECT_EQ(manager().originalRefName(), refName(expected.branch));
            const auto message = manager().mergeCommitMessage();
            EXPECT_EQ(message.has_value(), expected.message.has_value());
            if (message && expected.message) {
                EXPECT_THAT(*message, StartsWith(*expected.message));
            }
            EXPECT_EQ(manager().mergeTimestamp() > 1577934245.0,
                      expected.mode != RVGitMergeModeNone && !isMarkedInTables(expected.mode));
            // Any other object says the same.
            EXPECT_EQ(
                RVGitMergeManager(RVGitRepository::repositoryWithPath(path())).currentMergeMode(),
                expected.mode);
        });
    }
    /// At the second of three steps, which is where each of these lists stops. Of the stop only
    /// what tells one from another is to be given.
    void expectStopOfRebase(const std::string& list, const std::string& onto, Stop expected) {
        expected.nextStep = 2;
        expected.lastStep = 3;
        expectStop(rebase(list, onto), stopOfRebase(std::move(expected), onto));
    }
    /// What every rebase of "topic" has in common.
    static Stop stopOfRebase(Stop stop, const std::string& onto) {
        stop.lastRevision = "Four";
        stop.mergedRevision = "Four";
        stop.originalRevision = onto == "main" ? "Ours" : onto;
        stop.branch = "topic";
        return stop;
    }

    /// A rebase of "topic" that works off the list, as setSequence() takes it.
    std::function<void()> rebase(const std::string& list, const std::string& onto) {
        return [=, this] {
            setSequence(list);
            checkOut("topic");
            stopGit({"rebase", "-i", onto});
        };
    }
    std::function<void()> run(const std::vector<std::string>& arguments,
                              const std::string& branch = "main") {
        return [=, this] {
            checkOut(branch);
            stopGit(arguments);
        };
    }

private:
    std::string full(const std::optional<std::string>& revision) const {
        return revision && !revision->empty() ? hash(*revision) : "";
    }
};

TEST_F(RVGitMergeStopsTest, Merge) {
    expectStop(run({"merge", "topic"}), {.mode = RVGitMergeModeMerge,
                                         .mergedRevision = "Four",
                                         .originalRevision = "Ours",
                                         .branch = "main",
                                         .message = "Merge branch 'topic'"});
}

TEST_F(RVGitMergeStopsTest, MergeThatIsNotCommitted) {
    expectStop(run({"merge", "--no-commit", "clean"}), {.mode = RVGitMergeModeMerge,
                                                        .mergedRevision = "Clean",
                                                        .originalRevision = "Ours",
                                                        .branch = "main",
                                                        .message = "Merge branch 'clean'"});
}

TEST_F(RVGitMergeStopsTest, OctopusThatIsNotCommitted) {
    atEachPlace([&] {
        stopGit({"merge", "--no-commit", "clean", "One"});
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeMerge);
        EXPECT_EQ(manager().mergedRevision(), hash("clean") + "\n" + hash("One"));
    });
}

TEST_F(RVGitMergeStopsTest, OctopusThatStopsAtItsLastHead) {
    atEachPlace([&] {
        stopGit({"merge", "clean", "topic"});
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeMerge);
        EXPECT_EQ(manager().mergedRevision(), hash("clean") + "\n" + hash("topic"));
        EXPECT_THAT(manager().mergeCommitMessage().value_or(""),
                    StartsWith("Merge branches 'clean' and 'topic'"));
    });
}

TEST_F(RVGitMergeStopsTest, OctopusThatFails) {
    expectStop(run({"merge", "topic", "third"}), {.originalRevision = "Ours", .branch = "main"});
}

TEST_F(RVGitMergeStopsTest, Squash) {
    expectStop(run({"merge", "--squash", "clean"}),
               {.mode = RVGitMergeModeSquash,
                .originalRevision = "Ours",
                .branch = "main",
                .message = "Squashed commit of the following:"});
}

TEST_F(RVGitMergeStopsTest, SquashWithConflicts) {
    expectStop(run({"merge", "--squash", "topic"}),
               {.mode = RVGitMergeModeSquash,
                .originalRevision = "Ours",
                .branch = "main",
                .message = "Squashed commit of the following:"});
}

TEST_F(RVGitMergeStopsTest, RebaseByTheMergeBackend) {
    RVGIT_TEST_NEEDS_GIT("2.20", "its merge backend keeps files of its own, and no list of steps");
    expectStop(run({"rebase", "--merge", "main"}, "topic"),
               stopOfRebase({.mode = RVGitMergeModeRebase,
                             .nextStep = 2,
                             .lastStep = 4,
                             .nextRevision = "Two",
                             .message = "Two\n"},
                            "main"));
}

TEST_F(RVGitMergeStopsTest, RebaseByTheApplyBackend) {
    expectStop(
        [this] {
            checkOut("topic");
            stopRebaseByApplying();
        },
        stopOfRebase({.mode = RVGitMergeModeRebase,
                      .usesApply = true,
                      .nextStep = 2,
                      .lastStep = 4,
                      .nextRevision = "Two",
                      .message = "Two\n"},
                     "main"));
}

TEST_F(RVGitMergeStopsTest, Edit) {
    expectStopOfRebase("pick %One\nedit %Two\npick %Three", "Base",
                       {.mode = RVGitMergeModeEditing,
                        .isEditing = true,
                        .nextRevision = "HEAD",
                        .message = "Two\n"});
}

TEST_F(RVGitMergeStopsTest, RewordWithConflicts) {
    RVGIT_TEST_NEEDS_GIT("2.20", "it marks every such stop as one to edit");
    expectStopOfRebase("pick %One\nreword %Two\npick %Three", "main",
                       {.mode = RVGitMergeModeRebase, .nextRevision = "Two", .message = "Two\n"});
}

TEST_F(RVGitMergeStopsTest, BreakKeepsTheRevisionInFrontOfIt) {
    RVGIT_TEST_NEEDS_GIT("2.20", "it knows no step that breaks");
    expectStopOfRebase("pick %One\nbreak\npick %Two", "Base",
                       {.mode = RVGitMergeModeRebase,
                        .isPending = true,
                        .nextRevision = "One",
                        .message = std::nullopt});
}

TEST_F(RVGitMergeStopsTest, ExecThatFailsGivesItsOwnWordForARevision) {
    atEachPlace([&] {
        rebase("pick %One\nexec false\npick %Two", "Base")();
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRebase);
        EXPECT_TRUE(manager().isPendingInteractiveRebase());
        EXPECT_EQ(manager().nextSequenceStep(), 2u);
        EXPECT_EQ(manager().lastSequenceStep(), 3u);
        EXPECT_EQ(manager().nextSequenceRevision(), "false");
    });
}

TEST_F(RVGitMergeStopsTest, FixupWithConflicts) {
    RVGIT_TEST_NEEDS_GIT("2.20", "it marks every such stop as one to edit");
    expectStopOfRebase("pick %One\nfixup %Two\npick %Three", "main",
                       {.mode = RVGitMergeModeEditing, .nextRevision = "HEAD", .message = "One\n"});
}

TEST_F(RVGitMergeStopsTest, SquashStepWithConflicts) {
    RVGIT_TEST_NEEDS_GIT("2.20", "it marks every such stop as one to edit");
    expectStopOfRebase("pick %One\nsquash %Two\npick %Three", "main",
                       {.mode = RVGitMergeModeEditing,
                        .nextRevision = "HEAD",
                        .message = "# This is a combination of 2 commits.\n"});
}

TEST_F(RVGitMergeStopsTest, RebaseStepWithoutChanges) {
    expectStopOfRebase("pick %One\npick %Same\npick %Two", "main",
                       {.mode = RVGitMergeModeRebase, .nextRevision = "Same", .message = "Same\n"});
}

TEST_F(RVGitMergeStopsTest, CherryPickOfOne) {
    expectStop(run({"cherry-pick", "Two"}), {.mode = RVGitMergeModeCherryPick,
                                             .mergedRevision = "Two",
                                             .originalRevision = "HEAD",
                                             .branch = "main",
                                             .message = "Two\n"});
}

TEST_F(RVGitMergeStopsTest, CherryPickOfASequence) {
    expectStop(run({"cherry-pick", "Base..topic"}), {.mode = RVGitMergeModeCherryPick,
                                                     .lastStep = 3,
                                                     .nextRevision = "Two",
                                                     .lastRevision = "Four",
                                                     .mergedRevision = "Two",
                                                     .originalRevision = "Ours",
                                                     .branch = "main",
                                                     .message = "Two\n"});
}

TEST_F(RVGitMergeStopsTest, CherryPickWithoutChanges) {
    expectStop(run({"cherry-pick", "Same"}), {.mode = RVGitMergeModeCherryPick,
                                              .mergedRevision = "Same",
                                              .originalRevision = "HEAD",
                                              .branch = "main",
                                              .message = "Same\n"});
    expectStop(run({"cherry-pick", "Clean", "Same", "After"}), {.mode = RVGitMergeModeCherryPick,
                                                                .lastStep = 2,
                                                                .nextRevision = "Same",
                                                                .lastRevision = "After",
                                                                .mergedRevision = "Same",
                                                                .originalRevision = "Ours",
                                                                .branch = "main",
                                                                .message = "Same\n"});
}

TEST_F(RVGitMergeStopsTest, RevertOfOne) {
    expectStop(run({"revert", "Early"}, "later"), {.mode = RVGitMergeModeRevert,
                                                   .mergedRevision = "Early",
                                                   .originalRevision = "HEAD",
                                                   .branch = "later",
                                                   .message = "Revert \"Early\"\n"});
}

TEST_F(RVGitMergeStopsTest, RevertOfASequence) {
    expectStop(run({"revert", "Late", "Early", "Middle"}, "later"),
               {.mode = RVGitMergeModeRevert,
                .lastStep = 2,
                .nextRevision = "Early",
                .lastRevision = "Middle",
                .mergedRevision = "Early",
                .originalRevision = "Late",
                .branch = "later",
                .message = "Revert \"Early\"\n"});
}

TEST_F(RVGitMergeStopsTest, RevertWithoutChanges) {
    // Git forgets a single one, but for its message.
    expectStop(run({"revert", "Third"}), {.mode = RVGitMergeModeRevert,
                                          .mergedRevision = "Third",
                                          .originalRevision = "HEAD",
                                          .branch = "main",
                                          .message = "Revert \"Third\"\n"});
    const auto revertTwice = [this] {
        checkOut("later");
        gitHere({"revert", "--no-edit", "Late"});
        stopGit({"revert", "Late", "Middle"});
    };
    expectStop(revertTwice, {.mode = RVGitMergeModeRevert,
                             .lastStep = 2,
                             .nextRevision = "Late",
                             .lastRevision = "Middle",
                             .originalRevision = "HEAD",
                             .branch = "later",
                             .message = "Revert \"Late\"\n"});
}

TEST_F(RVGitMergeStopsTest, RevertThatIsNotCommitted) {
    expectStop(run({"revert", "--no-commit", "Ours"}), {.mode = RVGitMergeModeRevert,
                                                        .mergedRevision = "Ours",
                                                        .originalRevision = "HEAD",
                                                        .branch = "main",
                                                        .message = "Revert \"Ours\"\n"});
}

TEST_F(RVGitMergeStopsTest, CherryPickThatIsNotCommittedLeavesItsMessageAlone) {
    expectStop(run({"cherry-pick", "--no-commit", "Clean"}),
               {.originalRevision = "HEAD", .branch = "main", .message = "Clean\n"});
}

TEST_F(RVGitMergeStopsTest, AMailThatDoesNotApply) {
    atEachPlace([&] {
        write("patch.mail", gitHere({"format-patch", "--stdout", "-1", "Two"}) + "\n");
        stopGit({"am", "patch.mail"});
        EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeRebase);
        EXPECT_TRUE(manager().usesRebaseApplyBackend());
        EXPECT_EQ(manager().nextSequenceStep(), 1u);
        EXPECT_EQ(manager().lastSequenceStep(), 1u);
        EXPECT_EQ(manager().mergeCommitMessage(), "Two\n");
        EXPECT_EQ(manager().nextSequenceRevision(), std::nullopt);
    });
}

}  // namespace
