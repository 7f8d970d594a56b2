#include "RVGit/remotes/RVGitCloneCommand.h"

#include <filesystem>

#include "RVGit/command/RVGitError.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVTestRights.h"
#include "tests/support/RVUnprivilegedUser.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitCloneCommandTest : public RVGitRepositoryTestCase {
protected:
    static std::shared_ptr<RVGitCloneCommand> clone(const std::string& url, const std::string& path,
                                                    const std::optional<RVOptions>& options) {
        return RVGitCloneCommand::gitCloneCommandWithRemoteURL(url, path, options);
    }
    RVError errorOfClone(const std::string& url, const std::string& path) {
        std::optional<RVError> error;
        EXPECT_FALSE(
            RVGitCloneCommand::gitCloneCommandWithRemoteURL(url, path, std::nullopt)->run(&error));
        return error.value_or(RVError("none", 0));
    }
};

class RVGitCloneCommandLineTest : public RVGitCloneCommandTest {
protected:
    /// Whether git succeeds is of no interest here.
    std::vector<std::string> allArgumentsOf(RVGitCloneCommand& command) {
        (void)command.run();
        return recorder_.lastInvocation().arguments;
    }
    std::vector<std::string> argumentsWith(const std::optional<RVOptions>& options) {
        return allArgumentsOf(*RVGitCloneCommand::gitCloneCommandWithRemoteURL(
            "/no/where", scratchPath("new"), options));
    }
    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitCloneCommandLineTest, NoOptions) {
    const auto line =
        ElementsAre("--no-pager", "clone", "--progress", "/no/where", scratchPath("new"));
    EXPECT_THAT(argumentsWith(std::nullopt), line);
    EXPECT_THAT(argumentsWith(RVOptions{}), line);
    EXPECT_THAT(argumentsWith(RVOptions{{RVGitCloneOptionBare, false},
                                        {RVGitCloneOptionInitializeSubmodules, false}}),
                line);
}

TEST_F(RVGitCloneCommandLineTest, EachOption) {
    const auto lineWith = [&](const char* option) {
        return ElementsAre("--no-pager", "clone", "--progress", option, "/no/where",
                           scratchPath("new"));
    };
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCloneOptionBare", true}}), lineWith("--bare"));
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCloneOptionInitializeSubmodules", true}}),
                lineWith("--recursive"));
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCloneOptionDepth", 1}}), lineWith("--depth=1"));
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCloneOptionFilter", "blob:none"}}),
                lineWith("--filter=blob:none"));
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCloneOptionSingleBranch", true}}),
                lineWith("--single-branch"));
    EXPECT_THAT(argumentsWith(RVOptions{{"RVGitCloneOptionSingleBranch", false}}),
                lineWith("--no-single-branch"));
}

TEST_F(RVGitCloneCommandLineTest, AllOptionsInTheirOrder) {
    const auto command = clone("/no/where", scratchPath("new"), std::nullopt);
    command->setBare(true);
    command->setInitializesSubmodules(true);
    command->setDepth(3);
    command->setFilter("tree:0");
    command->setSingleBranch(true);
    EXPECT_THAT(
        allArgumentsOf(*command),
        ElementsAre("--no-pager", "clone", "--progress", "--bare", "--recursive", "--depth=3",
                    "--filter=tree:0", "--single-branch", "/no/where", scratchPath("new")));
}

TEST_F(RVGitCloneCommandLineTest, AnExistingDirectoryBecomesTheWorkingDirectory) {
    const std::string directory = makeDirectory("here");
    const auto command = clone(repositoryPath(), directory, std::nullopt);
    EXPECT_THAT(allArgumentsOf(*command),
                ElementsAre("--no-pager", "clone", "--progress", repositoryPath(), "."));
    EXPECT_EQ(recorder_.lastInvocation().workingDirectory, directory);
    EXPECT_TRUE(fileExists("here/.git"));
}

TEST_F(RVGitCloneCommandLineTest, AFileInThePathsPlaceFailsWith100) {
    writeFile("file", "kept");
    EXPECT_EQ(errorOfClone(repositoryPath(), scratchPath("file")).code(), RVGitNoGitRepoError);
    EXPECT_THAT(recorder_.invocations(), IsEmpty());
    EXPECT_EQ(readFile("file"), "kept");
}

TEST_F(RVGitCloneCommandLineTest, AnAddressThatLooksLikeAnOptionIsRefused) {
    for (const char* address :
         {"--upload-pack=touch hit", "-u", "-", "--config=core.sshCommand=touch hit"}) {
        const RVError error = errorOfClone(address, scratchPath("new"));
        EXPECT_EQ(error.code(), RVGitRVGitGenericError) << address;
        EXPECT_EQ(error.userInfo().at(RVGitRemoteURLErrorKey), address);
    }
    EXPECT_THAT(recorder_.invocations(), IsEmpty());
}

TEST_F(RVGitCloneCommandLineTest, ALocalPathThatLooksLikeAnOptionIsAPath) {
    const auto command = clone("/no/where", "--template=x", std::nullopt);
    EXPECT_THAT(allArgumentsOf(*command),
                ElementsAre("--no-pager", "clone", "--progress", "/no/where", "./--template=x"));
}

TEST_F(RVGitCloneCommandLineTest, NULBytesAreNotLaunched) {
    const std::string cut("/no/where\0x", 11);
    EXPECT_EQ(errorOfClone(cut, scratchPath("new")).code(), RVGitNoGitRepoError);
    EXPECT_EQ(errorOfClone("/no/where", cut).code(), RVGitNoGitRepoError);
    EXPECT_THAT(recorder_.invocations(), IsEmpty());
}

TEST_F(RVGitCloneCommandTest, HasNoRepositoryAndSupportsProgress) {
    const auto command = clone("url", "path", std::nullopt);
    EXPECT_EQ(command->repositoryPath(), std::nullopt);
    EXPECT_EQ(command->gitDirectoryPath(), std::nullopt);
    EXPECT_EQ(command->workingTreeDirectoryPath(), std::nullopt);
    EXPECT_TRUE(command->isSupportingProgressOutput());
    EXPECT_FALSE(command->isAuthenticationPassed());
}

TEST_F(RVGitCloneCommandTest, ClonesAsGitDoes) {
    makeCommit();
    const auto command = clone(repositoryPath(), scratchPath("new"), std::nullopt);
    ASSERT_TRUE(command->run());
    git({"clone", repositoryPath(), "oracle"});
    EXPECT_EQ(git({"show-ref"}, "new"), git({"show-ref"}, "oracle"));
    EXPECT_EQ(readFile("new/file.txt"), readFile("oracle/file.txt"));
    EXPECT_FALSE(command->isAuthenticationPassed());
}

TEST_F(RVGitCloneCommandTest, ClonesBare) {
    makeCommit();
    ASSERT_TRUE(
        RVGitCloneCommand::gitCloneCommandWithRemoteURL(repositoryPath(), scratchPath("new.git"),
                                                        RVOptions{{RVGitCloneOptionBare, true}})
            ->run());
    EXPECT_EQ(gitLine({"rev-parse", "--is-bare-repository"}, "new.git"), "true");
}

TEST_F(RVGitCloneCommandTest, ClonesSubmodules) {
    const std::string module = initRepository("module");
    commitFile(module, "inside", "1", "Message");
    git({"submodule", "add", module, "module"}, repositoryPath());
    git({"commit", "-m", "Message"}, repositoryPath());
    ASSERT_TRUE(RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                    repositoryPath(), scratchPath("new"),
                    RVOptions{{RVGitCloneOptionInitializeSubmodules, true}})
                    ->run());
    EXPECT_TRUE(fileExists("new/module/inside"));
}

TEST_F(RVGitCloneCommandTest, ClonesASingleBranchToADepthWithoutBlobs) {
    RVGIT_TEST_NEEDS_GIT("2.17", "it knows no filters");
    makeCommit();
    makeCommit();
    gitInRepository({"branch", "other"});
    gitInRepository({"config", "uploadpack.allowFilter", "true"});
    ASSERT_TRUE(RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                    "file://" + repositoryPath(), scratchPath("new"),
                    RVOptions{{RVGitCloneOptionDepth, 1},
                              {RVGitCloneOptionFilter, "blob:none"},
                              {RVGitCloneOptionBare, true}})
                    ->run());
    EXPECT_EQ(gitLine({"rev-list", "--all", "--count"}, "new"), "1");
    EXPECT_EQ(gitLine({"for-each-ref", "--format=%(refname)"}, "new"), "refs/heads/main");
    // Below "core" until 2.24.
    EXPECT_THAT(gitLine({"config", "--get-regexp", "partialclonefilter"}, "new"),
                testing::EndsWith("blob:none"));
    ASSERT_TRUE(RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                    "file://" + repositoryPath(), scratchPath("all"),
                    RVOptions{{RVGitCloneOptionDepth, 1},
                              {RVGitCloneOptionSingleBranch, false},
                              {RVGitCloneOptionBare, true}})
                    ->run());
    EXPECT_EQ(gitLine({"for-each-ref", "--format=%(refname)"}, "all"),
              "refs/heads/main\nrefs/heads/other");
}

TEST_F(RVGitCloneCommandTest, IntoAFullDirectoryFailsAndLeavesItAlone) {
    makeCommit();
    writeFile("full/file", "kept");
    const RVError error = errorOfClone(repositoryPath(), scratchPath("full"));
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_EQ(error.userInfo().at(RVGitRemoteURLErrorKey), repositoryPath());
    EXPECT_EQ(readFile("full/file"), "kept");
    EXPECT_FALSE(fileExists("full/.git"));
}

TEST_F(RVGitCloneCommandTest, IntoAnUnwritableDirectoryFailsAndLeavesItEmpty) {
    makeCommit();
    const std::string directory = makeDirectory("unwritable");
    std::filesystem::permissions(directory, std::filesystem::perms(0555));
    const RVUnprivilegedUser user(scratchDirectory());
    RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
    EXPECT_NE(errorOfClone(repositoryPath(), directory).code(), 0);
    EXPECT_NE(errorOfClone(repositoryPath(), directory + "/new").code(), 0);
    EXPECT_TRUE(std::filesystem::is_empty(directory));
}

TEST_F(RVGitCloneCommandTest, BelowAFileFails) {
    makeCommit();
    writeFile("file", "kept");
    (void)errorOfClone(repositoryPath(), scratchPath("file/new"));
    EXPECT_EQ(readFile("file"), "kept");
}

TEST_F(RVGitCloneCommandTest, AFailureLeavesNothingOfANewDirectoryAndAnExistingOneEmpty) {
    (void)errorOfClone(scratchPath("nothing"), scratchPath("new"));
    EXPECT_FALSE(fileExists("new"));
    const std::string empty = makeDirectory("empty");
    (void)errorOfClone(scratchPath("nothing"), empty);
    EXPECT_TRUE(std::filesystem::is_empty(empty));
}

}  // namespace
