#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVGitTestCase.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// Branches and remotes in the terminal client, as a person works with them, in a pipe.
class RvgitBranchTest : public RVGitTestCase {
protected:
    RvgitBranchTest() : repository_(initRepository()) {}

    /// What it printed; the test fails where it failed.
    std::string rvgit(std::vector<std::string> arguments) {
        const auto result = run(std::move(arguments));
        EXPECT_EQ(result.exitCode, 0) << result.standardError;
        EXPECT_THAT(result.standardError, IsEmpty());
        return result.standardOutput;
    }
    /// What it complained of.
    std::string failureOf(std::vector<std::string> arguments) {
        const auto result = run(std::move(arguments));
        EXPECT_NE(result.exitCode, 0);
        EXPECT_THAT(result.standardOutput, IsEmpty());
        return result.standardError;
    }
    std::string commit() {
        return commitFile(repository_, "file", std::to_string(++number_), "Message").substr(0, 8);
    }
    [[nodiscard]] const std::string& repository() const { return repository_; }

private:
    RVTestProcessResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {RVGIT_CLIENT, "-C", repository_});
        return runProgram(arguments);
    }

    std::string repository_;
    int number_ = 0;
};

TEST_F(RvgitBranchTest, ListsBranchesWithWhatTheyTrack) {
    EXPECT_EQ(rvgit({"branch"}), "* main (no commit yet)\n");
    const std::string first = commit();
    rvgit({"branch", "create", "topic"});
    const std::string second = commit();
    rvgit({"branch", "track", "topic", "main"});
    rvgit({"branch", "track", "main", "topic"});
    git({"worktree", "add", "../linked", "-b", "linked"}, repository());
    // An older git does not tell where.
    const std::string linked =
        runGit({"for-each-ref", "--format=%(worktreepath)"}, repository()).exitCode == 0
            ? "  (checked out in " + scratchPath("linked") + ")\n"
            : "\n";
    EXPECT_EQ(rvgit({"branch", "list"}), "  linked " + second + linked + "* main   " + second +
                                             "  topic, 1 ahead\n  topic  " + first +
                                             "  main, 1 behind\n");
    rvgit({"branch", "untrack", "main"});
    rvgit({"branch", "rename", "topic", "new"});
    EXPECT_EQ(rvgit({"branch"}), "  linked " + second + linked + "* main   " + second +
                                     "\n  new    " + first + "  main, 1 behind\n");
    rvgit({"branch", "delete", "new"});
    EXPECT_EQ(git({"branch", "--format=%(refname:short)"}, repository()), "linked\nmain\n");
}

TEST_F(RvgitBranchTest, ADetachedHeadWithoutABranchIsNoFailure) {
    const std::string hash = commit();
    const std::string whole = gitLine({"rev-parse", "HEAD"}, repository());
    git({"checkout", "-q", "--detach"}, repository());
    git({"branch", "-q", "-D", "main"}, repository());
    EXPECT_EQ(rvgit({"branch"}), "* detached at " + whole + "\n");
    EXPECT_THAT(rvgit({}), HasSubstr("HEAD   detached at " + whole + "\nrefs   0 branches"));
    EXPECT_THAT(rvgit({"log"}), HasSubstr(hash));
}

TEST_F(RvgitBranchTest, WhereNothingCanBeListedTheClientSaysSo) {
    RVGIT_TEST_NEEDS_REF_FILES("HEAD is damaged in its file");
    commit();
    git({"checkout", "-q", "--detach"}, repository());
    git({"branch", "-q", "-D", "main"}, repository());
    writeFile("repository/.git/HEAD", std::string(40, '1') + "\n");
    EXPECT_THAT(failureOf({}), StartsWith("rvgit: Nothing Found\n"));
}

TEST_F(RvgitBranchTest, AnOverviewShowsTheUpstreamAndTheCounts) {
    commit();
    git({"branch", "base"}, repository());
    git({"branch", "-q", "-u", "base"}, repository());
    EXPECT_THAT(rvgit({}), HasSubstr("HEAD   refs/heads/main, tracks base\n"));
    commit();
    EXPECT_THAT(rvgit({}), HasSubstr("HEAD   refs/heads/main, tracks base, 1 ahead\n"));
    git({"branch", "-q", "-D", "base"}, repository());
    EXPECT_THAT(rvgit({}), HasSubstr("HEAD   refs/heads/main, tracks base, gone\n"));
}

TEST_F(RvgitBranchTest, RefusedDeletionsAndNamesAreTold) {
    commit();
    git({"checkout", "-q", "-b", "topic"}, repository());
    commit();
    git({"checkout", "-q", "main"}, repository());
    EXPECT_THAT(failureOf({"branch", "delete", "topic"}), StartsWith("rvgit: "));
    EXPECT_THAT(failureOf({"branch", "create", "main"}), HasSubstr("already exists"));
    EXPECT_THAT(failureOf({"branch", "create", "a..b"}), StartsWith("rvgit: "));
    EXPECT_THAT(failureOf({"branch", "delete", "-D"}), HasSubstr("has no option -D"));
    EXPECT_THAT(failureOf({"branch", "create"}), HasSubstr("needs a name"));
    EXPECT_THAT(failureOf({"branch", "rename", "a", "b", "c"}), HasSubstr("takes no c"));
    EXPECT_THAT(failureOf({"branch", "frobnicate"}), HasSubstr("branch has no frobnicate"));
    rvgit({"branch", "delete", "--force", "topic"});
    EXPECT_EQ(git({"branch", "--format=%(refname:short)"}, repository()), "main\n");
}

TEST_F(RvgitBranchTest, ManagesRemotes) {
    commit();
    EXPECT_EQ(rvgit({"remote"}), "");
    rvgit({"remote", "add", "origin", "../other"});
    git({"update-ref", "refs/remotes/origin/main", "HEAD"}, repository());
    EXPECT_EQ(rvgit({"remote", "list"}), "origin  ../other  1 branch\n");
    rvgit({"remote", "set-url", "--push", "origin", "../push"});
    rvgit({"remote", "set-url", "origin", "../fetch"});
    rvgit({"remote", "rename", "origin", "upstream"});
    EXPECT_EQ(rvgit({"remote"}), "upstream  ../fetch  1 branch\n  pushes to ../push\n");
    EXPECT_THAT(failureOf({"remote", "add", "upstream", "x"}), StartsWith("rvgit: "));
    EXPECT_THAT(failureOf({"remote", "remove", "missing"}),
                HasSubstr("there is no remote missing"));
    EXPECT_THAT(failureOf({"remote", "add", "--mirror", "x"}), HasSubstr("has no option --mirror"));
    EXPECT_THAT(failureOf({"remote", "add", "x"}), HasSubstr("needs a name and another"));
    rvgit({"remote", "remove", "upstream"});
    EXPECT_EQ(rvgit({"remote"}), "");
}

}  // namespace
