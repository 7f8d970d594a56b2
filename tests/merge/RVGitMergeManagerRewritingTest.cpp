#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitCommandEnvironment.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "tests/merge/RVGitRewritingTestCase.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::SizeIs;
using Revisions = std::vector<std::string>;

class RVGitMergeManagerRewritingTest : public RVGitRewritingTestCase {
protected:
    /// What git was told by a gesture: its line behind the options of every command, the list of
    /// the sequence script, and the other editor.
    struct Rebase {
        std::vector<std::string> arguments;
        std::string list;
        std::optional<std::string> editor;
    };
    template <typename Gesture>
    Rebase rebaseOf(const Gesture& gesture, bool succeeds = true) {
        const auto recorder = useRecordingGit();
        std::optional<RVError> error;
        EXPECT_EQ(gesture(&error), succeeds)
            << (error ? error->userInfoString(RVGitCommandErrorOutputErrorKey).value_or("") : "");
        Rebase rebase;
        for (const auto& invocation : recorder.invocations()) {
            const auto word =
                std::find(invocation.arguments.begin(), invocation.arguments.end(), "rebase");
            if (word == invocation.arguments.end())
                continue;
            const auto pager = std::find(invocation.arguments.begin(), word, "--no-pager");
            rebase.arguments.assign(pager + 1, invocation.arguments.end());
            const auto& environment = invocation.environment;
            rebase.list = scriptedList(environment.at("GIT_SEQUENCE_EDITOR"));
            if (const auto editor = environment.find("GIT_EDITOR"); editor != environment.end())
                rebase.editor = editor->second;
        }
        return rebase;
    }
    [[nodiscard]] Revisions hashesOf(const std::string& letters) const {
        Revisions hashes;
        for (const char letter : letters)
            hashes.push_back(hashOf(std::string(1, letter)));
        return hashes;
    }
    [[nodiscard]] static std::vector<std::string> line(std::vector<std::string> rest) {
        std::vector<std::string> all = {"-c", "core.trustctime=false", "rebase"};
        all.insert(all.end(), rest.begin(), rest.end());
        return all;
    }
};

// Command lines and lists.

TEST_F(RVGitMergeManagerRewritingTest, DeletingDropsAndPicksTheRest) {
    const auto hashes = makeLetters(4);
    const auto rebase = rebaseOf(
        [&](RVErrorPlace error) { return manager().deleteRevisions(hashesOf("CB"), error); });
    EXPECT_EQ(rebase.arguments, line({"--interactive", hashes[0]}));
    EXPECT_EQ(rebase.list, "drop B\ndrop C\npick D\n");
    EXPECT_EQ(rebase.editor, ":");
    EXPECT_EQ(subjects(), "A D");
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
}

TEST_F(RVGitMergeManagerRewritingTest, DeletingTheRootStartsAtTheRoot) {
    makeLetters(3);
    const auto rebase = rebaseOf(
        [&](RVErrorPlace error) { return manager().deleteRevisions(hashesOf("A"), error); });
    EXPECT_EQ(rebase.arguments, line({"--root", "--interactive"}));
    EXPECT_EQ(rebase.list, "drop A\npick B\npick C\n");
    EXPECT_EQ(subjects(), "B C");
}

TEST_F(RVGitMergeManagerRewritingTest, DeletingTheRootsChildKeepsTheRoot) {
    const auto hashes = makeLetters(3);
    const auto rebase = rebaseOf(
        [&](RVErrorPlace error) { return manager().deleteRevisions(hashesOf("B"), error); });
    EXPECT_EQ(rebase.arguments, line({"--interactive", hashes[0]}));
    EXPECT_EQ(subjects(), "A C");
}

TEST_F(RVGitMergeManagerRewritingTest, MovingAboveInsertsBehindTheTarget) {
    const auto hashes = makeLetters(5);
    const auto rebase = rebaseOf([&](RVErrorPlace error) {
        return manager().moveRevisionsAboveRevision(hashesOf("CB"), hashOf("D"), error);
    });
    EXPECT_EQ(rebase.arguments, line({"--interactive", hashes[0]}));
    EXPECT_EQ(rebase.list, "pick D\npick B\npick C\npick E\n");
    EXPECT_EQ(rebase.editor, ":");
    EXPECT_EQ(subjects(), "A D B C E");
}

TEST_F(RVGitMergeManagerRewritingTest, MovingBelowInsertsAheadOfTheTarget) {
    const auto hashes = makeLetters(5);
    const auto rebase = rebaseOf([&](RVErrorPlace error) {
        return manager().moveRevisionsBelowRevision(hashesOf("EC"), hashOf("B"), error);
    });
    // The target lies further back than the commits that move.
    EXPECT_EQ(rebase.arguments, line({"--interactive", hashes[0]}));
    EXPECT_EQ(rebase.list, "pick C\npick E\npick B\npick D\n");
    EXPECT_EQ(subjects(), "A C E B D");
}

TEST_F(RVGitMergeManagerRewritingTest, MovingBelowTheRootStartsAtTheRoot) {
    makeLetters(3);
    const auto rebase = rebaseOf([&](RVErrorPlace error) {
        return manager().moveRevisionsBelowRevision(hashesOf("C"), hashOf("A"), error);
    });
    EXPECT_EQ(rebase.arguments, line({"--root", "--interactive"}));
    EXPECT_EQ(subjects(), "C A B");
}

TEST_F(RVGitMergeManagerRewritingTest, MovingAboveTheNewestAppends) {
    makeLetters(4);
    const auto rebase = rebaseOf([&](RVErrorPlace error) {
        return manager().moveRevisions(hashesOf("B"), hashOf("D"), false, error);
    });
    EXPECT_EQ(rebase.list, "pick C\npick D\npick B\n");
    EXPECT_EQ(subjects(), "A C D B");
}

TEST_F(RVGitMergeManagerRewritingTest, ATargetThatMovesItselfCountsAsTheFirst) {
    makeLetters(5);
    EXPECT_EQ(rebaseOf([&](RVErrorPlace error) {
                  return manager().moveRevisions(hashesOf("DB"), hashOf("D"), true, error);
              }).list,
              "pick B\npick D\npick C\npick E\n");
    makeLetters(5);
    EXPECT_EQ(rebaseOf([&](RVErrorPlace error) {
                  return manager().moveRevisions(hashesOf("DB"), hashOf("D"), false, error);
              }).list,
              "pick C\npick B\npick D\npick E\n");
    // With nothing kept there is nothing to stand behind.
    makeLetters(3);
    EXPECT_EQ(rebaseOf([&](RVErrorPlace error) {
                  return manager().moveRevisions(hashesOf("CB"), hashOf("C"), false, error);
              }).list,
              "pick B\npick C\n");
}

TEST_F(RVGitMergeManagerRewritingTest, SquashingWithoutATargetMovesTheChosenToTheStart) {
    const auto hashes = makeLetters(5);
    const auto rebase = rebaseOf(
        [&](RVErrorPlace error) { return manager().squashRevisions(hashesOf("EDB"), error); });
    EXPECT_EQ(rebase.arguments, line({"--interactive", hashes[0]}));
    EXPECT_EQ(rebase.list, "pick B\nsquash D\nsquash E\npick C\n");
    EXPECT_EQ(rebase.editor, "true");
    EXPECT_EQ(subjects(), "A B C");
    EXPECT_EQ(gitInRepository({"log", "-1", "--pretty=%B", "HEAD^"}), "B\n\nD\n\nE");
}

TEST_F(RVGitMergeManagerRewritingTest, SquashingIntoATargetFoldsEveryChosenCommit) {
    makeLetters(5);
    const auto rebase = rebaseOf([&](RVErrorPlace error) {
        return manager().squashRevisions(hashesOf("EB"), hashOf("C"), error);
    });
    EXPECT_EQ(rebase.list, "pick C\nsquash B\nsquash E\npick D\n");
    EXPECT_EQ(rebase.editor, "true");
    EXPECT_EQ(subjects(), "A C D");
    EXPECT_EQ(gitInRepository({"log", "-1", "--pretty=%B", "HEAD^"}), "C\n\nB\n\nE");
}

TEST_F(RVGitMergeManagerRewritingTest, FixingUpKeepsTheMessage) {
    const auto hashes = makeLetters(5);
    auto rebase = rebaseOf(
        [&](RVErrorPlace error) { return manager().fixupRevisions(hashesOf("DC"), error); });
    EXPECT_EQ(rebase.arguments, line({"--interactive", hashes[1]}));
    EXPECT_EQ(rebase.list, "pick C\nfixup D\npick E\n");
    EXPECT_EQ(rebase.editor, "true");
    EXPECT_EQ(subjects(), "A B C E");
    EXPECT_EQ(gitInRepository({"log", "-1", "--pretty=%B", "HEAD^"}), "C");

    // One commit is enough where there is a target, which may be the root.
    makeLetters(3);
    rebase = rebaseOf([&](RVErrorPlace error) {
        return manager().fixupRevisions(hashesOf("C"), hashOf("A"), error);
    });
    EXPECT_EQ(rebase.arguments, line({"--root", "--interactive"}));
    EXPECT_EQ(rebase.list, "pick A\nfixup C\npick B\n");
    EXPECT_EQ(subjects(), "A B");
}

TEST_F(RVGitMergeManagerRewritingTest, RewordingKeepsLinesThatLookLikeComments) {
    const auto hashes = makeLetters(3);
    const auto rebase = rebaseOf([&](RVErrorPlace error) {
        return manager().setCommitMessage("It's new: \"$HOME\" `x`\n\n# not a comment\n",
                                          hashOf("B"), error);
    });
    std::vector<std::string> expected = {
        "-c",     "core.trustctime=false", "-c",     "commit.cleanup=whitespace",
        "rebase", "--interactive",         hashes[0]};
    EXPECT_EQ(rebase.arguments, expected);
    ASSERT_TRUE(rebase.editor);
    const std::string file = writeFile("message", "old");
    EXPECT_EQ(runProgram({*rebase.editor, file}).exitCode, 0);
    EXPECT_EQ(readFile(file), "It's new: \"$HOME\" `x`\n\n# not a comment\n\n");
    EXPECT_EQ(subjects(), "A It's new: \"$HOME\" `x` C");
    EXPECT_EQ(history()[1].message, "It's new: \"$HOME\" `x`\n\n# not a comment\n");
}

TEST_F(RVGitMergeManagerRewritingTest, RewordingTheRoot) {
    makeLetters(2);
    const auto rebase = rebaseOf([&](RVErrorPlace error) {
        return manager().setCommitMessage("First", hashOf("A"), error);
    });
    EXPECT_EQ(rebase.arguments, (std::vector<std::string>{"-c", "core.trustctime=false", "-c",
                                                          "commit.cleanup=whitespace", "rebase",
                                                          "--root", "--interactive"}));
    EXPECT_EQ(subjects(), "First B");
}

TEST_F(RVGitMergeManagerRewritingTest, EditingTakesACommitApart) {
    const auto hashes = makeLetters(4);
    const auto rebase =
        rebaseOf([&](RVErrorPlace error) { return manager().editRevision(hashOf("C"), error); });
    EXPECT_EQ(rebase.arguments, line({"--interactive", hashes[1]}));
    EXPECT_EQ(rebase.list, "edit C\npick D\n");
    EXPECT_EQ(rebase.editor, ":");
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeEditing);
    EXPECT_EQ(gitInRepository({"rev-parse", "HEAD"}), hashes[1]);
    EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "?? c");
    gitInRepository({"add", "c"});
    gitInRepository({"commit", "-q", "-m", "New"});
    EXPECT_TRUE(manager().continueRebase());
    EXPECT_EQ(subjects(), "A B New D");
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
}

TEST_F(RVGitMergeManagerRewritingTest, EditingTheRootWorksWherePathsAreNoPatterns) {
    for (const char* name : {"GIT_LITERAL_PATHSPECS", "GIT_NOGLOB_PATHSPECS"}) {
        SCOPED_TRACE(name);
        const auto hashes = makeLetters(2);
        setEnvironmentVariable(name, "1");
        EXPECT_TRUE(manager().editRevision(hashes[0]));
        EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "D  a\n?? a");
        setEnvironmentVariable(name, std::nullopt);
        // As the program that takes paths literally would have it.
        RVGitCommandEnvironment::sharedEnvironment().setValueForEnvironmentVariable("1", name);
        gitInRepository({"add", "a"});
        EXPECT_TRUE(manager().abortRebase());
        EXPECT_TRUE(manager().editRevision(hashes[0]));
        EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "D  a\n?? a");
        gitInRepository({"add", "a"});
        EXPECT_TRUE(manager().abortRebase());
        RVGitCommandEnvironment::sharedEnvironment().unsetValueForEnvironmentVariable(name);
    }
}

TEST_F(RVGitMergeManagerRewritingTest, FilesThatAreNamedAsRevisionsAreNotMistaken) {
    const auto hashes = makeLetters(3);
    const std::string names[] = {"repository/HEAD", "repository/HEAD^"};
    for (const std::string& name : names)
        writeFile(name, "no revision\n");
    EXPECT_TRUE(manager().editRevision(hashes[1]));
    // Neither does git itself know what is meant.
    for (const std::string& name : names)
        fs::remove(scratchPath(name));
    EXPECT_EQ(subjects(), "A");
    EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "?? b");
    gitInRepository({"add", "b"});
    EXPECT_TRUE(manager().abortRebase());
    EXPECT_EQ(subjects(), "A B C");
}

TEST_F(RVGitMergeManagerRewritingTest, EditingForAmendingLeavesTheCommit) {
    const auto hashes = makeLetters(4);
    const RVRepositorySnapshot before(repositoryPath());
    EXPECT_TRUE(manager().editRevision(hashes[1], true));
    EXPECT_TRUE(manager().isEditingRevision());
    EXPECT_EQ(gitInRepository({"rev-parse", "HEAD"}), hashes[1]);
    EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "");
    gitInRepository({"commit", "-q", "--amend", "-m", "Amended"});
    EXPECT_TRUE(manager().continueRebase());
    EXPECT_EQ(subjects(), "A Amended C D");

    makeLetters(4);
    EXPECT_TRUE(manager().editRevision(hashes[1], true));
    EXPECT_TRUE(manager().abortRebase());
    EXPECT_EQ(subjects(), "A B C D");
}

TEST_F(RVGitMergeManagerRewritingTest, EditingTheRootTakesItsFilesOutOfTheIndex) {
    const auto hashes = makeLetters(2);
    const RVRepositorySnapshot before(repositoryPath());
    const auto recorder = useRecordingGit();
    ASSERT_TRUE(manager().editRevision(hashes[0]));
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("rm", "--cached", "-r", "-q", "-f", "--", "*"));
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeEditing);
    EXPECT_EQ(gitInRepository({"log", "--pretty=%s"}), "A");
    EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "D  a\n?? a");
    EXPECT_EQ(readFile("repository/a"), "a\n");
    gitInRepository({"add", "a"});
    EXPECT_TRUE(manager().abortRebase());
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
}

TEST_F(RVGitMergeManagerRewritingTest, EditingResetsWithoutAModeToTheParent) {
    const auto hashes = makeLetters(2);
    const auto recorder = useRecordingGit();
    ASSERT_TRUE(manager().editRevision(hashes[1]));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("reset", "-q", "HEAD^"));
}

TEST_F(RVGitMergeManagerRewritingTest, TransplantingTakesTheChosenCommitsAlone) {
    const auto hashes = makeLetters(4);
    gitInRepository({"checkout", "-q", "-b", "other", hashes[0]});
    commitFile("repository", "x", "x\n", "X");
    gitInRepository({"checkout", "-q", "main"});
    const auto rebase = rebaseOf([&](RVErrorPlace error) {
        return manager().rebaseOntoWithRevision("main", {hashes[3], hashes[1]}, "other",
                                                std::nullopt, error);
    });
    EXPECT_EQ(rebase.arguments, line({"--interactive", "--onto", "other", "main"}));
    EXPECT_EQ(rebase.list, "pick B\npick D\n");
    EXPECT_EQ(rebase.editor, ":");
    EXPECT_EQ(subjects(), "A X B D");
    EXPECT_EQ(gitInRepository({"symbolic-ref", "HEAD"}), "refs/heads/main");
}

TEST_F(RVGitMergeManagerRewritingTest, TransplantingTakesTheCallersOptions) {
    const auto hashes = makeLetters(2);
    const auto recorder = useRecordingGit();
    (void)manager().rebaseOntoWithRevision(
        "main", {hashes[1]}, "target",
        RVOptions{{RVGitRebaseOptionNoVerify, true}, {RVGitRebaseOptionOnto, false}});
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("-c", "core.trustctime=false", "rebase", "--no-verify", "--interactive",
                            "--onto", "target", "main"));
    (void)manager().rebaseOntoWithRevision("main", {hashes[1]}, std::nullopt, std::nullopt);
    EXPECT_THAT(lastArguments(recorder), ElementsAre("-c", "core.trustctime=false", "rebase",
                                                     "--interactive", "--onto", "main"));
}

// Ranges.

TEST_F(RVGitMergeManagerRewritingTest, TheRangeRunsFromHEADDownToTheCommit) {
    const auto hashes = makeLetters(4);
    const auto recorder = useRecordingGit();
    std::optional<RVError> error;
    auto commits = manager().allCommitsForInteractiveRebaseIncludingRevision(hashes[2], &error);
    ASSERT_TRUE(commits);
    ASSERT_THAT(*commits, SizeIs(2));
    EXPECT_EQ(commits->front()->commitHash(), hashes[3]);
    EXPECT_EQ(commits->back()->commitHash(), hashes[2]);
    const auto arguments = lastArguments(recorder);
    EXPECT_THAT(arguments, testing::Contains(hashes[2] + "^..HEAD"));
    EXPECT_THAT(arguments, testing::Contains("--topo-order"));

    commits = manager().allCommitsForInteractiveRebaseIncludingRevision(hashes[0], &error);
    ASSERT_TRUE(commits);
    EXPECT_THAT(*commits, SizeIs(4));
    EXPECT_THAT(lastArguments(recorder), testing::Contains("HEAD"));
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitMergeManagerRewritingTest, TheRangeReachesBackToATargetThatIsOlder) {
    const auto hashes = makeLetters(5);
    std::optional<RVError> error;
    const auto count = [&](std::size_t revision, std::size_t target) {
        const auto commits =
            manager().allCommitsForRevisions({hashes[revision]}, hashes[target], &error);
        return commits ? commits->size() : 0;
    };
    EXPECT_EQ(count(3, 4), 2u);
    EXPECT_EQ(count(3, 1), 4u);
    EXPECT_EQ(count(3, 0), 5u);
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitMergeManagerRewritingTest, APlaceThatIsFilledMeansNothing) {
    const auto hashes = makeLetters(2);
    const std::string unknown(40, '1');
    std::optional<RVError> error;
    EXPECT_EQ(manager().allCommitsForRevisions({unknown}, hashes[0], &error), std::nullopt);
    EXPECT_TRUE(error);
    error.reset();
    EXPECT_EQ(manager().allCommitsForRevisions({hashes[1]}, unknown, &error), std::nullopt);
    EXPECT_TRUE(error);
    // Without a place to tell the failure, the target's range is all there is to go by.
    EXPECT_THAT(
        manager().allCommitsForRevisions({unknown}, hashes[0]).value_or(RVGitCommit::List()),
        SizeIs(2));
    EXPECT_THROW((void)manager().allCommitsForRevisions({}, hashes[0]),
                 RVInvalidParameterException);
}

}  // namespace
