#include "RVGit/repository/RVGitInitCommand.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAreArray;

namespace {

class RVGitInitCommandTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitInitCommandTest, BuildsTheCommandLine) {
    struct Case {
        std::optional<RVOptions> options;
        std::vector<std::string> gitArguments;
    };
    const std::string path = scratchPath("new");
    const std::vector<Case> cases = {
        {std::nullopt, {"init", path}},
        {RVOptions{}, {"init", path}},
        {RVOptions{{RVGitInitOptionBare, true}}, {"init", "--bare", path}},
        {RVOptions{{RVGitInitOptionBare, false}}, {"init", path}},
        {RVOptions{{RVGitInitOptionSharedMode, RVGitInitOptionSharedModeDefault}},
         {"init", "--shared=umask", path}},
        {RVOptions{{RVGitInitOptionSharedMode, RVGitInitOptionSharedModeGroup}},
         {"init", "--shared=group", path}},
        {RVOptions{{RVGitInitOptionBare, true},
                   {RVGitInitOptionSharedMode, RVGitInitOptionSharedModeAll}},
         {"init", "--bare", "--shared=all", path}},
    };
    const RVRecordingGit recorder = useRecordingGit();
    for (const Case& testCase : cases) {
        EXPECT_TRUE(RVGitInitCommand::gitInitCommandWithPath(path, testCase.options)->run());
        auto arguments = testCase.gitArguments;
        arguments.insert(arguments.begin(), "--no-pager");
        EXPECT_THAT(recorder.lastInvocation().arguments, ElementsAreArray(arguments));
    }
}

TEST_F(RVGitInitCommandTest, HasNoRepositoryPathAndTheFieldsOfItsOptions) {
    const auto command = RVGitInitCommand::gitInitCommandWithPath(
        "/somewhere", RVOptions{{RVGitInitOptionBare, true}, {RVGitInitOptionSharedMode, "group"}});
    EXPECT_EQ(command->path(), "/somewhere");
    EXPECT_TRUE(command->isBare());
    EXPECT_EQ(command->sharedMode(), "group");
    EXPECT_EQ(command->repositoryPath(), std::nullopt);
    EXPECT_EQ(command->gitDirectoryPath(), std::nullopt);
    EXPECT_EQ(command->workingTreeDirectoryPath(), std::nullopt);
    EXPECT_EQ(command->gitBinary(), RVGitBinary::defaultGitBinary());
}

TEST_F(RVGitInitCommandTest, MakesARepositoryOfTheAskedKind) {
    const std::string path = scratchPath("shared bare");
    EXPECT_TRUE(RVGitInitCommand::gitInitCommandWithPath(
                    path, RVOptions{{RVGitInitOptionBare, true},
                                    {RVGitInitOptionSharedMode, RVGitInitOptionSharedModeGroup}})
                    ->run());
    EXPECT_EQ(gitLine({"rev-parse", "--is-bare-repository"}, path), "true");
    EXPECT_EQ(gitLine({"config", "core.sharedrepository"}, path), "1");
}

TEST_F(RVGitInitCommandTest, AFailureNamesThePath) {
    const std::string path = writeFile("file", "") + "/below";
    std::optional<RVError> error;
    EXPECT_FALSE(RVGitInitCommand::gitInitCommandWithPath(path, std::nullopt)->run(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userInfoString(RVGitRepositoryPathErrorKey), path);
}

}  // namespace
