#include "RVGit/remotes/RVGitPushCommand.h"

#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitRefUpdatesOutputParser.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::Not;

using Command = RVGitPushCommand;
using RefSpecs = RVGitPushCommand::RefSpecs;

class RVGitPushCommandTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitRemote> remoteNamed(
        const std::string& name, const std::optional<std::string>& pushURL = std::nullopt) {
        return RVGitRemote::remoteWithRepository(repository(), name, std::nullopt, pushURL, {});
    }
    static std::shared_ptr<RVGitRefSpec> spec(std::string_view text) {
        return RVGitRefSpec::refSpecFromString(text);
    }
    std::shared_ptr<Command> push(const RefSpecs& refSpecs,
                                  const std::optional<RVOptions>& options = {}) {
        return Command::gitPushCommandWithRepository(repository(), remoteNamed("origin"), refSpecs,
                                                     options);
    }
    /// A bare repository as the remote "origin", with main pushed there.
    void pushToOrigin() {
        origin_ = initBareRepository("origin.git");
        gitInRepository({"remote", "add", "origin", origin_});
        makeCommit();
        ASSERT_TRUE(push({spec("refs/heads/main:refs/heads/main")})->run());
    }
    /// A commit that origin's main does not lead to, in place of the last.
    void amend() { gitInRepository({"commit", "--amend", "-m", "Amended"}); }
    [[nodiscard]] std::string hash(const std::string& name) const {
        return gitInRepository({"rev-parse", name});
    }
    [[nodiscard]] std::string originRefs() const {
        return gitLine({"for-each-ref", "--format=%(refname)"}, origin_);
    }
    [[nodiscard]] std::string originHash(const std::string& name = "refs/heads/main") const {
        return gitLine({"rev-parse", name}, origin_);
    }
    std::string origin_;
};

class RVGitPushCommandLineTest : public RVGitPushCommandTest {
protected:
    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitPushCommandLineTest, WithoutARemoteItIsThisRepository) {
    const auto command = Command::gitPushCommandWithRepository(
        repository(), nullptr, std::shared_ptr<RVGitRefSpec>(), std::nullopt);
    EXPECT_EQ(command->refSpecs(), std::nullopt);
    EXPECT_EQ(command->remoteName(), ".");
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("push", "-v", "--progress", "."));
}

TEST_F(RVGitPushCommandLineTest, OneSpecOrSeveralOrNone) {
    const auto one = Command::gitPushCommandWithRepository(repository(), remoteNamed("a/b"),
                                                           spec("x:y"), std::nullopt);
    EXPECT_THAT(argumentsOf(recorder_, *one),
                ElementsAre("push", "-v", "--progress", "a/b", "x:y"));
    EXPECT_THAT(argumentsOf(recorder_, *push({spec("x"), RVGitRefSpec::matchingRefsRefSpec(),
                                              RVGitRefSpec::deleteRefSpecWithRemoteRefName("z")})),
                ElementsAre("push", "-v", "--progress", "origin", "x", ":", ":z"));
    EXPECT_THAT(argumentsOf(recorder_, *push({})),
                ElementsAre("push", "-v", "--progress", "origin"));
}

TEST_F(RVGitPushCommandLineTest, EachOption) {
    const auto argumentsWith = [&](const RVOptions& options) {
        return argumentsOf(recorder_, *push({spec("x:y")}, options));
    };
    const auto lineWith = [](const char* option) {
        return ElementsAre("push", "-v", "--progress", option, "origin", "x:y");
    };
    EXPECT_THAT(argumentsWith({{"noVerify", true}}), lineWith("--no-verify"));
    EXPECT_THAT(argumentsWith({{"tags", true}}), lineWith("--tags"));
    EXPECT_THAT(argumentsWith({{"forcePush", true}}), lineWith("--force"));
    EXPECT_THAT(argumentsWith({{"forcePushWithLease", true}}), lineWith("--force-with-lease=y:"));
    EXPECT_THAT(argumentsWith({{"deleteRef", true}}),
                ElementsAre("push", "-v", "--progress", "--delete", "origin", "y"));
    EXPECT_THAT(argumentsWith({{"noVerify", false},
                               {"tags", false},
                               {"forcePush", false},
                               {"forcePushWithLease", false},
                               {"deleteRef", false}}),
                ElementsAre("push", "-v", "--progress", "origin", "x:y"));
}

TEST_F(RVGitPushCommandLineTest, AllOptionsInTheirOrder) {
    const auto command = push({spec("x:y")}, RVOptions{{RVGitPushOptionDeleteRef, true},
                                                       {RVGitPushOptionForcePushWithLease, true},
                                                       {RVGitPushOptionPushTags, true},
                                                       {RVGitPushOptionNoVerify, true}});
    command->setLeaseValueCommitHash("abc");
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("push", "-v", "--progress", "--no-verify", "--tags",
                            "--force-with-lease=y:abc", "--delete", "origin", "y"));
}

TEST_F(RVGitPushCommandLineTest, BothForcesAreNone) {
    EXPECT_THAT(argumentsOf(recorder_, *push({spec("x:y")},
                                             RVOptions{{RVGitPushOptionForcePush, true},
                                                       {RVGitPushOptionForcePushWithLease, true}})),
                ElementsAre("push", "-v", "--progress", "origin", "x:y"));
}

TEST_F(RVGitPushCommandLineTest, ADeletingPushIsNotForced) {
    EXPECT_THAT(
        argumentsOf(recorder_, *push({spec("x:y")}, RVOptions{{RVGitPushOptionForcePush, true},
                                                              {RVGitPushOptionDeleteRef, true}})),
        ElementsAre("push", "-v", "--progress", "--delete", "origin", "y"));
}

TEST_F(RVGitPushCommandLineTest, ALeaseIsThatOfTheFirstSpec) {
    const auto command =
        push({spec("x:y"), spec("v:w")}, RVOptions{{RVGitPushOptionForcePushWithLease, true}});
    command->setLeaseValueCommitHash("abc");
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("push", "-v", "--progress", "--force-with-lease=y:abc", "origin", "x:y",
                            "v:w"));
}

TEST_F(RVGitPushCommandLineTest, ALeaseWithoutASpecHasAnEmptyName) {
    const auto command = push({}, RVOptions{{RVGitPushOptionForcePushWithLease, true}});
    command->setLeaseValueCommitHash("abc");
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("push", "-v", "--progress", "--force-with-lease=:abc", "origin"));
}

TEST_F(RVGitPushCommandLineTest, DeletesABranchOrATagByItsFullName) {
    const auto branch =
        Command::gitPushCommandWithRepositoryDeletingBranch(repository(), remoteNamed("r"), "a/b");
    EXPECT_TRUE(branch->deletesRef());
    EXPECT_THAT(argumentsOf(recorder_, *branch),
                ElementsAre("push", "-v", "--progress", "--delete", "r", "refs/heads/a/b"));
    EXPECT_THAT(argumentsOf(recorder_, *Command::gitPushCommandWithRepositoryDeletingTag(
                                           repository(), remoteNamed("r"), "v1")),
                ElementsAre("push", "-v", "--progress", "--delete", "r", "refs/tags/v1"));
    EXPECT_THAT(argumentsOf(recorder_, *Command::gitPushCommandWithRepositoryDeletingTag(
                                           repository(), remoteNamed("r"), "refs/heads/x")),
                ElementsAre("push", "-v", "--progress", "--delete", "r", "refs/heads/x"));
}

TEST_F(RVGitPushCommandLineTest, ADeleteWithoutARemoteRefNameNamesNone) {
    EXPECT_THAT(
        argumentsOf(recorder_, *push({spec("x")}, RVOptions{{RVGitPushOptionDeleteRef, true}})),
        ElementsAre("push", "-v", "--progress", "--delete", "origin"));
}

TEST_F(RVGitPushCommandLineTest, SeveralDeletesRelyOnTheirSpecs) {
    EXPECT_THAT(argumentsOf(recorder_, *push({RVGitRefSpec::deleteRefSpecWithRemoteRefName("a"),
                                              RVGitRefSpec::deleteRefSpecWithRemoteRefName("b")},
                                             RVOptions{{RVGitPushOptionDeleteRef, true}})),
                ElementsAre("push", "-v", "--progress", "origin", ":a", ":b"));
}

TEST_F(RVGitPushCommandLineTest, WhatLooksLikeAnOptionIsRefused) {
    const std::string hostile = "--receive-pack=touch hit";
    EXPECT_EQ(errorOf(*Command::gitPushCommandWithRepository(repository(), remoteNamed(hostile),
                                                             spec("x"), std::nullopt))
                  .code(),
              RVGitRVGitGenericError);
    EXPECT_THAT(push({spec("x"), spec(hostile)}), failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(push({spec("x:" + hostile)}, RVOptions{{RVGitPushOptionDeleteRef, true}}),
                failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(recorder_.invocations(), IsEmpty());
}

TEST_F(RVGitPushCommandTest, SupportsProgress) {
    EXPECT_TRUE(push({})->isSupportingProgressOutput());
}

TEST_F(RVGitPushCommandTest, TheRowOfAMissingUpstreamBranchReadsStandardOutput) {
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardOutput = "fatal: x has no upstream branch.\n", .exitCode = 128});
    EXPECT_THAT(push({}), failsWith(RVGitRemotePushNoUpstreamBranchError));
    fake.setAnswer({.standardError = "fatal: x has no upstream branch.\n", .exitCode = 128});
    EXPECT_THAT(push({}), failsWith(RVGitRVGitGenericError));
    fake.setAnswer({.standardOutput = "fatal: x has no upstream branch.\n", .exitCode = 1});
    EXPECT_THAT(push({}), failsWith(RVGitRemoteSyncError));
}

TEST_F(RVGitPushCommandTest, AMissingUpstreamBranchOfARealGitIsGeneric) {
    pushToOrigin();
    gitInRepository({"checkout", "-q", "-b", "topic"});
    const auto error = errorOf(*push({}));
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_THAT(error.userInfo().at(RVGitCommandErrorOutputErrorKey).displayString(),
                testing::HasSubstr("has no upstream branch"));
}

TEST_F(RVGitPushCommandTest, AFailureTellsTheRemoteTheBranchAndThePushURL) {
    const auto info =
        errorOf(*Command::gitPushCommandWithRepository(repository(), remoteNamed("none", "up"),
                                                       spec("refs/heads/x:refs/heads/y"), {}))
            .userInfo();
    EXPECT_EQ(info.at(RVGitRemoteNameErrorKey), "none");
    EXPECT_EQ(info.at(RVGitRevisionErrorKey), "x");
    EXPECT_EQ(info.at(RVGitRemoteURLErrorKey), "up");
    const auto other = errorOf(*push({})).userInfo();
    EXPECT_THAT(other, Not(Contains(Key(RVGitRevisionErrorKey))));
    EXPECT_THAT(other, Not(Contains(Key(RVGitRemoteURLErrorKey))));
}

TEST_F(RVGitPushCommandTest, PushesNewBranchesFastForwardsAndTags) {
    pushToOrigin();
    EXPECT_EQ(originHash(), hash("main"));
    makeCommit();
    gitInRepository({"tag", "v1"});
    gitInRepository({"tag", "v2"});
    ASSERT_TRUE(push({spec("main:topic"), spec("main")}, RVOptions{{RVGitPushOptionPushTags, true}})
                    ->run());
    EXPECT_EQ(originHash(), hash("main"));
    EXPECT_EQ(originRefs(), "refs/heads/main\nrefs/heads/topic\nrefs/tags/v1\nrefs/tags/v2");
}

TEST_F(RVGitPushCommandTest, ARejectedPushFailsWith2401AndChangesNothing) {
    pushToOrigin();
    const std::string before = originHash();
    amend();
    const auto error = errorOf(*push({spec("refs/heads/main:refs/heads/main")}));
    EXPECT_EQ(error.code(), RVGitRemotePushRejectedError);
    EXPECT_EQ(error.userInfo().at(RVGitRevisionErrorKey), "main");
    EXPECT_EQ(originHash(), before);
}

TEST_F(RVGitPushCommandTest, AForcedPushReplacesTheRemotesCommits) {
    pushToOrigin();
    amend();
    ASSERT_TRUE(push({spec("main")}, RVOptions{{RVGitPushOptionForcePush, true}})->run());
    EXPECT_EQ(originHash(), hash("main"));
}

TEST_F(RVGitPushCommandTest, ALeaseDecidesWhetherAPushIsForced) {
    pushToOrigin();
    const std::string before = originHash();
    const std::string other = makeCommit();
    gitInRepository({"reset", "--hard", "HEAD~1"});
    amend();
    const auto leased = [&](const std::string& value) {
        auto command = push({spec("refs/heads/main:refs/heads/main")},
                            RVOptions{{RVGitPushOptionForcePushWithLease, true}});
        command->setLeaseValueCommitHash(value);
        return command;
    };
    EXPECT_THAT(leased(other), failsWith(RVGitRemotePushRejectedError));
    EXPECT_EQ(originHash(), before);
    ASSERT_TRUE(leased(before)->run());
    EXPECT_EQ(originHash(), hash("main"));
}

TEST_F(RVGitPushCommandTest, BothForcesTogetherAreRejectedLikeAPlainPush) {
    pushToOrigin();
    amend();
    EXPECT_EQ(errorOf(*push({spec("main")}, RVOptions{{RVGitPushOptionForcePush, true},
                                                      {RVGitPushOptionForcePushWithLease, true}}))
                  .code(),
              RVGitRemotePushRejectedError);
}

TEST_F(RVGitPushCommandTest, DeletesBranchesAndTags) {
    pushToOrigin();
    gitInRepository({"tag", "v1"});
    ASSERT_TRUE(push({spec("main:a/b"), spec("main:c"), spec("main:d"), spec("v1")})->run());
    const auto origin = remoteNamed("origin");
    ASSERT_TRUE(
        Command::gitPushCommandWithRepositoryDeletingBranch(repository(), origin, "a/b")->run());
    ASSERT_TRUE(
        Command::gitPushCommandWithRepositoryDeletingTag(repository(), origin, "v1")->run());
    EXPECT_EQ(originRefs(), "refs/heads/c\nrefs/heads/d\nrefs/heads/main");
    ASSERT_TRUE(push({RVGitRefSpec::deleteRefSpecWithRemoteRefName("c"),
                      RVGitRefSpec::deleteRefSpecWithRemoteRefName("d")},
                     RVOptions{{RVGitPushOptionDeleteRef, true}})
                    ->run());
    EXPECT_EQ(originRefs(), "refs/heads/main");
}

TEST_F(RVGitPushCommandTest, DeletingWhatIsNotThereIsAWarningOfGits) {
    pushToOrigin();
    const auto command = Command::gitPushCommandWithRepositoryDeletingBranch(
        repository(), remoteNamed("origin"), "none");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->standardErrorString(), testing::HasSubstr("non-existent ref"));
    EXPECT_EQ(originRefs(), "refs/heads/main");
}

TEST_F(RVGitPushCommandTest, ARefusalByAHookOfTheRemoteFailsWith201) {
    pushToOrigin();
    writeFile("origin.git/hooks/update", "#!/bin/sh\necho not today\nexit 1\n", 0755);
    makeCommit();
    const std::string before = originHash();
    EXPECT_THAT(push({spec("main")}), failsWith(RVGitRemoteSyncError));
    EXPECT_EQ(originHash(), before);
}

TEST_F(RVGitPushCommandTest, NoVerifyLeavesOutTheHook) {
    pushToOrigin();
    makeCommit();
    writeFile("repository/.git/hooks/pre-push", "#!/bin/sh\nexit 1\n", 0755);
    EXPECT_THAT(push({spec("main")}), failsWith(RVGitRemoteSyncError));
    ASSERT_TRUE(push({spec("main")}, RVOptions{{RVGitPushOptionNoVerify, true}})->run());
    EXPECT_EQ(originHash(), hash("main"));
}

TEST_F(RVGitPushCommandTest, UpdatesTellWhatChanged) {
    pushToOrigin();
    const auto again = push({spec("main")});
    ASSERT_TRUE(again->run());
    EXPECT_FALSE(again->commandProgress()->isUpdated());
    makeCommit();
    const auto changed = push({spec("main"), spec("main:new")});
    ASSERT_TRUE(changed->run());
    RVGitRefUpdatesOutputParser parser(changed->standardErrorData());
    ASSERT_TRUE(parser.parse());
    ASSERT_EQ(parser.result().size(), 2u);
    EXPECT_EQ(parser.result()[0].type, RVGitRefUpdateTypeFastForward);
    EXPECT_EQ(parser.result()[1].type, RVGitRefUpdateTypeNew);
    EXPECT_EQ(parser.result()[1].to, "new");
}

}  // namespace
