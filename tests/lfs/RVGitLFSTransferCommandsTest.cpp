#include "RVGit/lfs/RVGitLFSTransferCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "tests/lfs/RVGitLFSTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RVGitLFSTransferCommandsTest : public RVGitLFSTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitRemote> remote(const std::string& name) const {
        return RVGitRemote::remoteWithRepository(repository(), name, std::nullopt, std::nullopt,
                                                 std::nullopt);
    }
    [[nodiscard]] Arguments cloneArguments(const RVRecordingGit& recorder, const std::string& path,
                                           const std::optional<RVOptions>& options) const {
        const auto command = RVGitLFSCloneCommand::gitLFSCloneCommandWithRemoteURL(
            scratchPath("missing.git"), path, options);
        EXPECT_TRUE(command->isSupportingProgressOutput());
        (void)command->run();
        return recorder.lastInvocation().arguments;
    }
};

TEST_F(RVGitLFSTransferCommandsTest, ArgumentsOfClone) {
    const auto recorder = useRecordingGit();
    const std::string url = scratchPath("missing.git");
    const std::string path = scratchPath("new");
    EXPECT_THAT(cloneArguments(recorder, path, std::nullopt),
                ElementsAre("--no-pager", "lfs", "clone", "--progress", url, path));
    EXPECT_THAT(cloneArguments(recorder, path,
                               RVOptions{{RVGitCloneOptionBare, true},
                                         {RVGitCloneOptionInitializeSubmodules, true}}),
                ElementsAre("--no-pager", "lfs", "clone", "--progress", "--bare", "--recursive",
                            url, path));
    EXPECT_THAT(cloneArguments(recorder, path,
                               RVOptions{{RVGitCloneOptionBare, false},
                                         {RVGitCloneOptionInitializeSubmodules, false}}),
                ElementsAre("--no-pager", "lfs", "clone", "--progress", url, path));
    EXPECT_THAT(cloneArguments(recorder, "-new", std::nullopt),
                ElementsAre("--no-pager", "lfs", "clone", "--progress", url, "./-new"));
    makeDirectory("there");
    EXPECT_THAT(cloneArguments(recorder, scratchPath("there"), std::nullopt),
                ElementsAre("--no-pager", "lfs", "clone", "--progress", url, "."));
    EXPECT_EQ(recorder.lastInvocation().workingDirectory, scratchPath("there"));
}

TEST_F(RVGitLFSTransferCommandsTest, ArgumentsOfFetch) {
    const auto recorder = useRecordingGit();
    const auto command = [this](auto... set) {
        auto made = RVGitLFSFetchCommand::gitLFSFetchCommandWithRepository(repository());
        (set(*made), ...);
        return made;
    };
    using Command = RVGitLFSFetchCommand;
    EXPECT_THAT(argumentsOf(recorder, *command()), ElementsAre("lfs", "fetch"));
    EXPECT_THAT(argumentsOf(recorder, *command([](Command& c) { c.setPrunesOldObjects(true); })),
                ElementsAre("lfs", "fetch", "--prune"));
    for (const auto& [mode, option] : std::vector<std::pair<std::int64_t, std::string>>{
             {RVGitLFSFetchModeRecent, "--recent"}, {RVGitLFSFetchModeAll, "--all"}}) {
        EXPECT_THAT(
            argumentsOf(recorder, *command([mode = mode](Command& c) { c.setFetchMode(mode); })),
            ElementsAre("lfs", "fetch", option));
    }
    EXPECT_THAT(argumentsOf(recorder, *command([](Command& c) { c.setFetchMode(3); })),
                ElementsAre("lfs", "fetch"));
    const auto origin = remote("origin");
    const auto refSpec = RVGitRefSpec::refSpecFromString("main");
    EXPECT_THAT(argumentsOf(recorder, *command([&](Command& c) { c.setRemote(origin); })),
                ElementsAre("lfs", "fetch"));
    EXPECT_THAT(argumentsOf(recorder, *command([&](Command& c) { c.setRefSpec(refSpec); })),
                ElementsAre("lfs", "fetch"));
    EXPECT_THAT(argumentsOf(recorder, *command([&](Command& c) {
                                c.setPrunesOldObjects(true);
                                c.setFetchMode(RVGitLFSFetchModeAll);
                                c.setRemote(origin);
                                c.setRefSpec(refSpec);
                            })),
                ElementsAre("lfs", "fetch", "--prune", "--all", "origin", "main"));
}

TEST_F(RVGitLFSTransferCommandsTest, ArgumentsOfPullAndPush) {
    const auto recorder = useRecordingGit();
    for (const auto& [given, name] :
         std::vector<std::pair<std::shared_ptr<RVGitRemote>, std::string>>{
             {remote("origin"), "origin"}, {nullptr, "."}}) {
        const auto pull = RVGitLFSPullCommand::gitLFSPullCommandWithRepository(repository(), given);
        EXPECT_EQ(pull->remoteName(), name);
        EXPECT_THAT(argumentsOf(recorder, *pull), ElementsAre("lfs", "pull", name));
        const auto push = RVGitLFSPushCommand::gitLFSPushCommandWithRepository(repository(), given);
        EXPECT_EQ(push->remoteName(), name);
        EXPECT_THAT(argumentsOf(recorder, *push), ElementsAre("lfs", "push", name));
    }
    const auto push =
        RVGitLFSPushCommand::gitLFSPushCommandWithRepository(repository(), remote("origin"));
    push->setRefSpecs({RVGitRefSpec::refSpecFromString("main:other"),
                       RVGitRefSpec::deleteRefSpecWithRemoteRefName("gone"),
                       RVGitRefSpec::refSpecWithLocalRefName(std::nullopt, "x")});
    EXPECT_THAT(argumentsOf(recorder, *push), ElementsAre("lfs", "push", "origin", "main", "HEAD"));
}

TEST_F(RVGitLFSTransferCommandsTest, NamesThatAreOptionsNeverReachGit) {
    const auto recorder = useRecordingGit();
    const auto refused = [&](RVGitCommand& command) {
        EXPECT_EQ(errorOf(command).code(), RVGitRVGitGenericError);
        EXPECT_THAT(recorder.invocations(), IsEmpty());
    };
    refused(*RVGitLFSCloneCommand::gitLFSCloneCommandWithRemoteURL("--upload-pack=touch x",
                                                                   scratchPath("new"), {}));
    refused(*RVGitLFSPullCommand::gitLFSPullCommandWithRepository(repository(), remote("-I")));
    const auto push =
        RVGitLFSPushCommand::gitLFSPushCommandWithRepository(repository(), remote("origin"));
    push->setRefSpecs({RVGitRefSpec::refSpecFromString("--all")});
    refused(*push);
    const auto fetch = RVGitLFSFetchCommand::gitLFSFetchCommandWithRepository(repository());
    fetch->setRemote(remote("--all"));
    fetch->setRefSpec(RVGitRefSpec::refSpecFromString("main"));
    refused(*fetch);
}

TEST_F(RVGitLFSTransferCommandsTest, AFailedCloneNamesTheAddress) {
    const std::string url = scratchPath("missing.git");
    const auto error = errorOf(*RVGitLFSCloneCommand::gitLFSCloneCommandWithRemoteURL(
        url, scratchPath("new"), std::nullopt));
    EXPECT_EQ(error.userInfoString(RVGitRemoteURLErrorKey), url);
    EXPECT_FALSE(fileExists("new"));
}

TEST_F(RVGitLFSTransferCommandsTest, TheDefaultBinaryIsRequiredForAClone) {
    const auto saved = RVGitBinary::defaultGitBinary();
    RVGitBinary::setDefaultGitBinary(nullptr);
    EXPECT_THROW((void)RVGitLFSCloneCommand::gitLFSCloneCommandWithRemoteURL("a", "b", {}),
                 RVInvalidParameterException);
    RVGitBinary::setDefaultGitBinary(saved);
}

}  // namespace
