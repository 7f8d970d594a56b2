#include "RVGit/remotes/RVGitBranchTrackingState.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/remotes/RVGitBranch.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

std::string textOf(const RVGitBranchTrackingState& state) {
    return (state.isHead ? "*" : "") + state.fullRefName + " " +
           state.upstreamRefName.value_or("-") + (state.isUpstreamGone ? " gone" : "") + " +" +
           std::to_string(state.commitsAhead) + " -" + std::to_string(state.commitsBehind);
}

const std::string boundary = "\x1f\x1d\x1f";
const std::string end("\0\n", 2);

std::string record(const Strings& fields) {
    std::string text;
    for (const std::string& field : fields)
        text += (text.empty() ? "" : boundary) + field;
    return text + end;
}

class RVGitBranchTrackingStateTest : public RVGitRepositoryTestCase {
protected:
    std::vector<RVGitBranchTrackingState> states() {
        std::optional<RVError> error;
        auto states = RVGitBranch::allBranchTrackingStatesForRepository(repository(), &error);
        EXPECT_TRUE(states.has_value());
        EXPECT_FALSE(error.has_value());
        return states.value_or(std::vector<RVGitBranchTrackingState>());
    }
    Strings texts() {
        Strings texts;
        for (const auto& state : states())
            texts.push_back(textOf(state));
        return texts;
    }
    /// Git does from 2.23 on.
    static bool tellsWorktrees() {
        return RVGitBinary::defaultGitBinary()->isVersionAtLeast("2.23.0");
    }
    /// main and upstreams in every relation to it.
    void makeBranches() {
        makeCommit();
        gitInRepository({"branch", "base"});
        makeCommit();
        gitInRepository({"branch", "middle"});
        makeCommit();
        for (const char* name : {"ahead", "behind", "gone", "level", "none", "split"})
            gitInRepository({"branch", name, "middle"});
        gitInRepository({"branch", "-q", "-u", "base", "ahead"});
        gitInRepository({"branch", "-q", "-u", "main", "behind"});
        gitInRepository({"branch", "-q", "-u", "middle", "level"});
        gitInRepository({"config", "branch.gone.remote", "."});
        gitInRepository({"config", "branch.gone.merge", "refs/heads/vanished"});
        gitInRepository({"branch", "-q", "-u", "main", "split"});
        gitInRepository({"update-ref", "refs/heads/split",
                         gitLine({"commit-tree", "-p", "middle", "-m", "Split", "main^{tree}"},
                                 repositoryPath())});
    }
};

TEST_F(RVGitBranchTrackingStateTest, TellsEveryRelation) {
    makeBranches();
    EXPECT_THAT(texts(),
                ElementsAre("refs/heads/ahead refs/heads/base +1 -0", "refs/heads/base - +0 -0",
                            "refs/heads/behind refs/heads/main +0 -1",
                            "refs/heads/gone refs/heads/vanished gone +0 -0",
                            "refs/heads/level refs/heads/middle +0 -0", "*refs/heads/main - +0 -0",
                            "refs/heads/middle - +0 -0", "refs/heads/none - +0 -0",
                            "refs/heads/split refs/heads/main +1 -1"));
    for (const auto& state : states())
        EXPECT_EQ(state.commitHash, gitInRepository({"rev-parse", state.fullRefName}));
}

TEST_F(RVGitBranchTrackingStateTest, OlderGitsAreAskedInAnotherWay) {
    makeBranches();
    const Strings expected = texts();
    const auto realVersion = RVGitBinary::defaultGitBinary();
    const auto expectTheSame = [&](const std::string& version) {
        auto fake = fakeGit("fake-" + version);
        fake.setVersion("git version " + version);
        fake.passOtherCallsOn();
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        EXPECT_EQ(texts(), expected) << version;
        for (const auto& state : states())
            EXPECT_EQ(state.worktreePath.has_value(), state.isHead && version == "2.23.0");
    };
    for (const std::string version : {"2.10.0", "2.12.9", "2.13.0", "2.22.5", "2.23.0"})
        // The real one must know the fields that this one is asked for.
        if (realVersion->isVersionAtLeast(version))
            expectTheSame(version);
}

TEST_F(RVGitBranchTrackingStateTest, ExactCommandLines) {
    makeCommit();
    auto recorder = useRecordingGit();
    (void)states();
    EXPECT_THAT(
        lastArguments(recorder),
        ElementsAre("for-each-ref",
                    std::string("--format=%(refname)%1f%1d%1f%(objectname)%1f%1d%1f%(HEAD)%1f%1d%1f"
                                "%(upstream)%1f%1d%1f%(upstream:track)%1f%1d%1f=%1f%1d%1f") +
                        (tellsWorktrees() ? "%(worktreepath)%00" : "%00"),
                    "refs/heads"));
    (void)RVGitBranch::trackingStateForBranchWithRefName("main", repository());
    EXPECT_EQ(lastArguments(recorder).back(), "refs/heads/main");
    EXPECT_THAT(RVGitBranchTrackingStateOutputParser::format(false, false),
                testing::HasSubstr("%(upstream:trackshort)%1f%1d%1f%00"));
}

TEST_F(RVGitBranchTrackingStateTest, ABranchOfAnotherWorktreeIsThere) {
    makeCommit();
    gitInRepository({"worktree", "add", "-b", "linked", "../a linked one"});
    const auto all = states();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].fullRefName, "refs/heads/linked");
    EXPECT_FALSE(all[0].isHead);
    EXPECT_TRUE(all[1].isHead);
    EXPECT_EQ(all[0].worktreePath.has_value(), tellsWorktrees());
    if (tellsWorktrees()) {
        EXPECT_EQ(all[0].worktreePath, scratchPath("a linked one"));
        EXPECT_EQ(all[1].worktreePath, repositoryPath());
    }
}

TEST_F(RVGitBranchTrackingStateTest, ADetachedOrUnbornHeadIsNone) {
    EXPECT_THAT(states(), IsEmpty());
    makeCommit();
    gitInRepository({"checkout", "-q", "--detach"});
    const auto all = states();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_FALSE(all[0].isHead);
    EXPECT_EQ(all[0].worktreePath, std::nullopt);
}

TEST_F(RVGitBranchTrackingStateTest, OneBranchIsFoundByItsName) {
    makeBranches();
    for (const char* name : {"behind", "refs/heads/behind"}) {
        const auto state = RVGitBranch::trackingStateForBranchWithRefName(name, repository());
        ASSERT_TRUE(state.has_value());
        EXPECT_EQ(textOf(*state), "refs/heads/behind refs/heads/main +0 -1");
    }
    for (const char* name : {"missing", "beh", "--contains", "refs/tags/x"}) {
        std::optional<RVError> error = RVError("before", 1);
        EXPECT_FALSE(
            RVGitBranch::trackingStateForBranchWithRefName(name, repository(), &error).has_value());
        EXPECT_FALSE(error.has_value()) << name;
    }
}

TEST_F(RVGitBranchTrackingStateTest, AFailureIsReported) {
    RVGIT_TEST_NEEDS_REF_FILES("a ref is damaged in its file");
    makeCommit();
    writeFile("repository/.git/refs/heads/bad", std::string(40, '1') + "\n");
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "fatal: missing object\n", .exitCode = 128});
    std::optional<RVError> error;
    EXPECT_FALSE(
        RVGitBranch::allBranchTrackingStatesForRepository(repository(), &error).has_value());
    EXPECT_TRUE(error.has_value());
}

TEST(RVGitBranchTrackingStateOutputParserTest, ReadsRecords) {
    const std::string hash(40, 'a');
    const std::string output =
        record(
            {"refs/heads/a", hash, "*", "refs/remotes/o/a", "[ahead 12, behind 3]", "=", "/a b"}) +
        record({"refs/heads/b", hash, " ", "refs/remotes/o/b", "[gone]", "=", ""}) +
        record({"refs/heads/c", hash, " ", "refs/remotes/o/c", "", "", ""}) +
        record({"refs/heads/d", hash, " ", "refs/remotes/o/d", "[behind 1]", "<", ""});
    RVGitBranchTrackingStateOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    Strings texts;
    for (const auto& state : parser.indexedResultCache())
        texts.push_back(textOf(state));
    EXPECT_THAT(texts, ElementsAre("*refs/heads/a refs/remotes/o/a +12 -3",
                                   "refs/heads/b refs/remotes/o/b gone +0 -0",
                                   "refs/heads/c refs/remotes/o/c gone +0 -0",
                                   "refs/heads/d refs/remotes/o/d +0 -1"));
    EXPECT_EQ(parser.indexedResultCache()[0].worktreePath, "/a b");
}

TEST(RVGitBranchTrackingStateOutputParserTest, SkipsNoRecord) {
    const std::string hash(40, 'a');
    for (const Strings& fields :
         {Strings{"refs/heads/a", hash, "*", "", "", "="},
          Strings{"refs/heads/a", std::string(64, 'a'), "*", "", "", "=", ""},
          Strings{"refs/heads/a", hash, "*", "x", "[ahead]", "=", ""},
          Strings{"refs/heads/a", hash, "*", "x", "[ahead 1, ]", "=", ""},
          Strings{"refs/heads/a", hash, "*", "x", "[]", "=", ""},
          Strings{"refs/heads/a", hash, "*", "x", "ahead 1", "=", ""}}) {
        const std::string output = record(fields);
        RVGitBranchTrackingStateOutputParser parser(output);
        EXPECT_THAT([&](RVErrorPlace error) { return parser.parse(error); },
                    failsWith(RVGitOutputParserError))
            << output;
    }
}

TEST(RVGitBranchTrackingStateOutputParserTest, LivesWithDamagedOutput) {
    const std::string output = record({"refs/heads/a", std::string(40, 'a'), "*",
                                       "refs/remotes/o/a", "[ahead 12, behind 3]", "=", "/a b"});
    for (const std::string& damaged : damagedOutputs(output)) {
        RVGitBranchTrackingStateOutputParser parser(damaged);
        (void)parser.parse();
        for (const auto& state : parser.indexedResultCache())
            EXPECT_GE(state.commitHash.size(), 40U);
    }
}

}  // namespace
