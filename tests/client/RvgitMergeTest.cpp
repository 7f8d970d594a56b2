#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/client/RvgitTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// The commands of the terminal client for what can stop half way.
class RvgitMergeTest : public RvgitTestCase {
protected:
    RvgitMergeTest() {
        git({"config", "--global", "core.editor", "false"});
        commit("file", "base\n", "Base");
        git({"checkout", "-q", "-b", "topic"}, repository_);
        for (const char* number : {"1", "2", "3", "4", "5"})
            commit(number == std::string("2") || number == std::string("4") ? "file" : number,
                   std::string("topic ") + number + "\n", std::string("Topic ") + number);
        git({"checkout", "-q", "main"}, repository_);
        commit("file", "main\n", "Main");
    }

    void commit(const std::string& file, const std::string& contents, const std::string& message) {
        commitFile(repository_, file, contents, message);
    }
    /// What is said of a stop.
    std::string stop(const std::vector<std::string>& arguments) {
        const auto result = rvgit(arguments);
        EXPECT_EQ(result.exitCode, 1) << result.standardOutput;
        EXPECT_THAT(result.standardError, HasSubstr("rvgit resolve, continue, skip or abort"));
        return result.standardError;
    }
    std::string shortHash(const std::string& revision) const {
        return gitLine({"rev-parse", revision}, repository_).substr(0, 8);
    }
    std::string subjects() const { return gitLine({"log", "--format=%s"}, repository_); }
};

TEST_F(RvgitMergeTest, ARebaseOfFiveCommitsWithTwoConflicts) {
    git({"checkout", "-q", "topic"}, repository_);
    const std::string two = shortHash("topic~3");
    const std::string underWay = "rebasing topic, 2 of 5, at " + two;
    EXPECT_THAT(stop({"rebase", "main"}), HasSubstr(underWay));
    EXPECT_THAT(outputOf({"status"}), StartsWith(underWay + "\nConflicts\n  UU file\n"));
    EXPECT_THAT(outputOf({}), HasSubstr("\nnow    " + underWay + "\n"));
    // Not before the conflict is resolved.
    EXPECT_THAT(stop({"continue"}), HasSubstr(underWay));
    outputOf({"resolve", "--theirs", "file"});
    outputOf({"resolve", "--add", "file"});
    EXPECT_EQ(outputOf({"status"}), underWay + "\nStaged\n  M file\n");
    outputOf({"continue", "-m", "Topic 2, resolved"});
    EXPECT_EQ(outputOf({"status"}), "Nothing has changed\n");
    EXPECT_EQ(subjects(), "Topic 5\nTopic 4\nTopic 3\nTopic 2, resolved\nTopic 1\nMain\nBase");
}

TEST_F(RvgitMergeTest, ARebaseIsSkippedThroughAndAborted) {
    git({"checkout", "-q", "topic"}, repository_);
    const RVRepositorySnapshot before(repository_);
    stop({"rebase", "main"});
    EXPECT_THAT(stop({"skip"}), HasSubstr("rebasing topic, 4 of 5, at " + shortHash("topic~1")));
    outputOf({"abort"});
    EXPECT_EQ(RVRepositorySnapshot(repository_).differencesFrom(before), "");
    outputOf({"rebase", "--onto", "main", "topic~1", "topic"});
    EXPECT_EQ(subjects(), "Topic 5\nMain\nBase");
}

TEST_F(RvgitMergeTest, AMergeAndEachWayToResolve) {
    const std::string underWay = "merging " + shortHash("topic") + " into main";
    EXPECT_THAT(stop({"merge", "topic"}), HasSubstr(underWay));
    EXPECT_THAT(outputOf({"status"}), StartsWith(underWay + "\n"));
    for (const auto& [option, contents] :
         {std::pair("--ours", "main\n"), std::pair("--theirs", "topic 4\n"),
          std::pair("--base", "base\n")}) {
        outputOf({"resolve", option, "file"});
        EXPECT_EQ(readFile(repository_ + "/file"), contents);
    }
    outputOf({"resolve", "--markers", "--", "file"});
    EXPECT_THAT(readFile(repository_ + "/file"), HasSubstr("<<<<<<<"));
    outputOf({"resolve", "--remove", "file"});
    EXPECT_THAT(refusal({"skip"}), HasSubstr("a merge has no steps to skip"));
    EXPECT_THAT(refusal({"quit"}), HasSubstr("only a cherry-pick or a revert"));
    outputOf({"continue"});
    // Older gits name the branch into which they merge.
    EXPECT_THAT(subjects(),
                StartsWith(isTestedGitAtLeast("2.34") ? "Merge branch 'topic'\n"
                                                      : "Merge branch 'topic' into main\n"));
    EXPECT_FALSE(fileExists(repository_ + "/file"));
}

TEST_F(RvgitMergeTest, ASquash) {
    stop({"merge", "--squash", "topic"});
    EXPECT_THAT(outputOf({"status"}), StartsWith("squashing into main\n"));
    outputOf({"resolve", "file", "--add"});
    outputOf({"continue", "-m", "Squashed"});
    EXPECT_EQ(subjects(), "Squashed\nMain\nBase");
}

TEST_F(RvgitMergeTest, ACherryPickAndARevert) {
    const std::string text = "cherry-picking on main, 4 left, at " + shortHash("topic~3");
    EXPECT_THAT(stop({"cherry-pick", "topic~5..topic"}), HasSubstr(text));
    EXPECT_THAT(outputOf({"status"}), StartsWith(text + "\n"));
    outputOf({"quit"});
    EXPECT_EQ(subjects(), "Topic 1\nMain\nBase");
    git({"reset", "-q", "--hard", "HEAD^"}, repository_);
    // A step without changes.
    commit("3", "topic 3\n", "The same as Topic 3");
    EXPECT_THAT(stop({"cherry-pick", "topic~4", "topic~2", "topic"}),
                HasSubstr("cherry-picking on main, 2 left, at " + shortHash("topic~2")));
    outputOf({"continue", "--empty", "-m", "Nothing in it"});
    EXPECT_EQ(subjects(), "Topic 5\nNothing in it\nTopic 1\nThe same as Topic 3\nMain\nBase");
    git({"checkout", "-q", "--detach"}, repository_);
    EXPECT_THAT(stop({"revert", "topic~3"}),
                HasSubstr("reverting on a detached HEAD, at " + shortHash("topic~3")));
    outputOf({"abort"});
    outputOf({"revert", "HEAD"});
    EXPECT_THAT(subjects(), StartsWith("Revert \"Topic 5\"\n"));
}

TEST_F(RvgitMergeTest, WrongCommandLines) {
    for (const char* command : {"continue", "skip", "abort", "quit"})
        EXPECT_THAT(refusal({command}), HasSubstr("there is nothing to "));
    EXPECT_THAT(refusal({"merge"}), HasSubstr("merge needs one revision"));
    EXPECT_THAT(refusal({"merge", "a", "b"}), HasSubstr("merge needs one revision"));
    EXPECT_THAT(refusal({"merge", "--exec=x"}), HasSubstr("merge has no option --exec=x"));
    EXPECT_THAT(refusal({"rebase", "--onto"}), HasSubstr("--onto needs a value"));
    EXPECT_THAT(refusal({"cherry-pick"}), HasSubstr("cherry-pick needs revisions"));
    EXPECT_THAT(refusal({"cherry-pick", "-m", "x"}), HasSubstr("-m needs a number"));
    EXPECT_THAT(refusal({"revert", "--ff", "x"}), HasSubstr("revert has no option --ff"));
    EXPECT_THAT(refusal({"resolve", "file"}), HasSubstr("resolve needs one of"));
    EXPECT_THAT(refusal({"resolve", "--ours"}), HasSubstr("and paths"));
    EXPECT_THAT(refusal({"resolve", "--ours", "--theirs", "file"}), HasSubstr("--theirs here"));
    EXPECT_THAT(refusal({"resolve", "--base", "file"}), HasSubstr("no such version"));
    EXPECT_THAT(refusal({"abort", "now"}), HasSubstr("abort takes no now"));
    const auto result = rvgit({"merge", "nowhere"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.standardError, Not(HasSubstr("rvgit resolve")));
}

}  // namespace
