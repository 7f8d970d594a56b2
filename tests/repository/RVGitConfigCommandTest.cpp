#include "RVGit/repository/RVGitConfigCommand.h"

#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfig.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

class RVGitConfigCommandTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitConfigCommand> command(
        const std::optional<RVOptions>& options = std::nullopt) const {
        return RVGitConfigCommand::gitConfigCommandWithRepositoryPath(repositoryPath(), options);
    }
};

TEST_F(RVGitConfigCommandTest, BuildsTheCommandLine) {
    struct Case {
        std::function<void(RVGitConfigCommand&)> setUp;
        std::vector<std::string> arguments;
    };
    const std::string file = scratchPath("some file");
    const std::vector<Case> cases = {
        {[](auto&) {}, {}},
        {[](auto& c) { c.setConfigFileType(RVGitConfigFileTypeSystem); }, {"--system"}},
        {[](auto& c) { c.setConfigFileType(RVGitConfigFileTypeGlobal); },
         {"--global", "--includes"}},
        {[](auto& c) { c.setConfigFileType("local"); }, {}},
        {[&](auto& c) { c.setConfigFilePath(file); }, {"--file=" + file}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionAddValue); }, {"--add"}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionGetAllValues); }, {"--get-all"}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionGetAllValuesByRegularExpression); },
         {"--get-regexp"}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionGetValue); }, {"--get"}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionRemoveSection); }, {"--remove-section"}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionRenameSection); }, {"--rename-section"}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionReplaceAllValues); }, {"--replace-all"}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionUnsetAllValues); }, {"--unset-all"}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionUnsetValue); }, {"--unset"}},
        {[](auto& c) { c.setConfigAction(RVGitConfigActionListValues); }, {"--list"}},
        {[](auto& c) { c.setConfigAction("unknown"); }, {}},
        {[](auto& c) { c.setEnsuresBooleanValue(true); }, {"--bool"}},
        {[](auto& c) { c.setEnsuresIntegerValue(true); }, {"--int"}},
        {[](auto& c) { c.setConfigKey("a.b"); }, {"a.b"}},
        {[](auto& c) { c.setConfigValue("value"); }, {"value"}},
        {[](auto& c) { c.setConfigValueRegex("^x$"); }, {"^x$"}},
        {[&](auto& c) {
             c.setConfigValueRegex("^old$");
             c.setConfigValue("");
             c.setConfigKey("a.b");
             c.setEnsuresIntegerValue(true);
             c.setEnsuresBooleanValue(true);
             c.setConfigAction(RVGitConfigActionReplaceAllValues);
             c.setConfigFilePath(file);
             c.setConfigFileType(RVGitConfigFileTypeGlobal);
         },
         {"--global", "--includes", "--file=" + file, "--replace-all", "--bool", "--int", "a.b", "",
          "^old$"}},
    };
    const RVRecordingGit recorder = useRecordingGit();
    for (const Case& testCase : cases) {
        auto arguments = testCase.arguments;
        arguments.insert(arguments.begin(), {"--no-pager", "config", "-z"});
        const auto command = this->command();
        testCase.setUp(*command);
        command->run();
        EXPECT_THAT(recorder.lastInvocation().arguments, ElementsAreArray(arguments));
        EXPECT_EQ(recorder.lastInvocation().workingDirectory, repositoryPath());
    }
}

TEST_F(RVGitConfigCommandTest, ThePresenceOfAnOptionCountsWhateverItsValue) {
    EXPECT_FALSE(command()->ensuresBooleanValue());
    EXPECT_FALSE(command(RVOptions{})->ensuresIntegerValue());
    const auto boolean = command(RVOptions{{RVGitConfigOptionEnsureBooleanValue, false}});
    EXPECT_TRUE(boolean->ensuresBooleanValue());
    EXPECT_FALSE(boolean->ensuresIntegerValue());
    const auto integer = command(RVOptions{{RVGitConfigOptionEnsureIntegerValue, ""}});
    EXPECT_FALSE(integer->ensuresBooleanValue());
    EXPECT_TRUE(integer->ensuresIntegerValue());
    const auto unread = command(RVOptions{{RVGitConfigOptionConfigFilePath, "/file"},
                                          {RVGitConfigOptionConfigFileType, "system"}});
    EXPECT_EQ(unread->configFilePath(), std::nullopt);
    EXPECT_EQ(unread->configFileType(), std::nullopt);
}

TEST_F(RVGitConfigCommandTest, RunsWithoutAWorkingDirectoryWhereThereIsNoRepositoryPath) {
    const auto command =
        RVGitConfigCommand::gitConfigCommandWithRepositoryPath(std::nullopt, std::nullopt);
    EXPECT_EQ(command->repositoryPath(), std::nullopt);
    command->setConfigFileType(RVGitConfigFileTypeGlobal);
    command->setConfigAction(RVGitConfigActionGetValue);
    command->setConfigKey(RVGitUserNameConfigKey);
    EXPECT_TRUE(command->run());
    EXPECT_THAT(command->configValues(), ElementsAre(userName));
}

TEST_F(RVGitConfigCommandTest, ReadsTheOutputAsTheActionPrintsIt) {
    struct Case {
        const char* action;
        std::string output;
        std::vector<std::string> values;
        RVOptions options;
    };
    const std::string nul(1, '\0');
    const std::vector<Case> cases = {
        {RVGitConfigActionGetValue, "one" + nul, {"one"}, {}},
        {RVGitConfigActionGetValue, "one\ntwo\n" + nul, {"one\ntwo\n"}, {}},
        {RVGitConfigActionGetValue, nul, {""}, {}},
        {RVGitConfigActionGetValue, "", {}, {}},
        {RVGitConfigActionGetValue, "one", {"one"}, {}},
        {RVGitConfigActionGetAllValues, "one" + nul + nul + "two" + nul, {"one", "", "two"}, {}},
        {RVGitConfigActionGetAllValues, nul + nul, {"", ""}, {}},
        {RVGitConfigActionListValues, "a.b\n1" + nul, {}, {{"a.b", "1"}}},
        {RVGitConfigActionGetAllValuesByRegularExpression, "a.b\n1" + nul, {}, {{"a.b", "1"}}},
        {RVGitConfigActionAddValue, "a.b\n1" + nul, {}, {}},
    };
    for (const Case& testCase : cases) {
        useFakeGit().setAnswer({.standardOutput = testCase.output});
        const auto command = this->command();
        command->setConfigAction(testCase.action);
        EXPECT_TRUE(command->run());
        EXPECT_EQ(command->configValues(), testCase.values);
        EXPECT_EQ(command->configOptions(), testCase.options);
    }
}

TEST_F(RVGitConfigCommandTest, AKeyWithoutAValueMakesAListFailWith11) {
    writeFile(repositoryPath() + "/.git/config", "[a]\n\tb = 1\n\tvalueless\n");
    for (const char* action :
         {RVGitConfigActionListValues, RVGitConfigActionGetAllValuesByRegularExpression}) {
        const auto command = this->command();
        command->setConfigAction(action);
        if (action == std::string(RVGitConfigActionGetAllValuesByRegularExpression))
            command->setConfigKey("^a");
        std::optional<RVError> error;
        EXPECT_FALSE(command->run(&error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code(), RVGitOutputParserError);
        EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), "a.valueless");
        EXPECT_THAT(command->configOptions(), IsEmpty());
    }
}

TEST_F(RVGitConfigCommandTest, FailuresHaveTheCodesOfTheRows) {
    struct Case {
        int exitCode;
        std::string standardError;
        std::int64_t code;
    };
    const std::vector<Case> cases = {
        {128, "fatal: bad config file line 1 in x\n", RVGitConfigInvalidFileError},
        {1, "", RVGitConfigKeyNotFoundError},
        {1, "error: key does not contain a section: x\n", RVGitRVGitGenericError},
        {5, "", RVGitConfigKeyNotFoundError},
        {5, "error: something else\n", RVGitRVGitGenericError},
        {2, "error: More than one value for the key a.b\n", RVGitConfigMultipleValuesForKeyError},
        {2, "error: no section\n", RVGitRVGitGenericError},
        {5, "warning: a.b has multiple values\n", RVGitConfigMultipleValuesForKeyError},
        {3, "", RVGitConfigReadError},
        {3, "error: invalid config file x\n", RVGitConfigReadError},
        {128, "fatal: no such section: x\n", RVGitConfigSectionNotFoundError},
        {4, "", RVGitConfigWriteError},
        {4, "error: could not write config file x\n", RVGitConfigWriteError},
        {128, "fatal: bad config value for 'x'\n", RVGitConfigInvalidFileError},
        {128, "fatal: bad numeric config value '1x' for 'a.b'\n", RVGitConfigBadValueError},
    };
    for (const Case& testCase : cases) {
        useFakeGit().setAnswer(
            {.standardError = testCase.standardError, .exitCode = testCase.exitCode});
        std::optional<RVError> error;
        EXPECT_FALSE(command()->run(&error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code(), testCase.code) << testCase.standardError;
        EXPECT_EQ(error->userInfoString(RVGitConfigKeyErrorKey), std::nullopt);
        EXPECT_EQ(error->userInfoString(RVGitConfigFileErrorKey), std::nullopt);
    }
}

TEST_F(RVGitConfigCommandTest, TheRowsHoldForConfigAlone) {
    EXPECT_EQ(RVGitConfigCommand::gitErrorDefinitions().size(), 8u);
    for (const RVGitErrorRow& row : RVGitConfigCommand::gitErrorDefinitions())
        EXPECT_THAT(row.commandNames, ElementsAre("config"));
}

}  // namespace
