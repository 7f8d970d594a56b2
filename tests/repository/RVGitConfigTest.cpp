#include "RVGit/repository/RVGitConfig.h"

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfigCommand.h"
#include "RVGit/repository/RVGitConfigOptionsParser.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

using testing::AnyOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace {

using StringList = RVValue::StringList;

class RVGitConfigTest : public RVGitRepositoryTestCase {
protected:
    RVGitConfigTest() : config_(RVGitConfig::repositoryConfigForRepository(repository())) {
        // What a test writes to the user's configuration is its own.
        setEnvironmentVariable("HOME", makeDirectory("home"));
    }

    /// The repository's file alone.
    [[nodiscard]] const RVGitConfig& config() const { return *config_; }
    [[nodiscard]] std::string configFile() const { return repositoryPath() + "/.git/config"; }
    /// A place that holds an error, so that a test sees it cleared.
    [[nodiscard]] static std::optional<RVError> filledPlace() {
        return gitErrorWithCode(RVGitRVGitGenericError);
    }
    [[nodiscard]] static std::int64_t codeOf(const std::optional<RVError>& error) {
        return error ? error->code() : 0;
    }

private:
    std::shared_ptr<RVGitConfig> config_;
};

TEST_F(RVGitConfigTest, EachScopeHasItsRepositoryAndFile) {
    const auto bare = RVGitRepository::bareRepositoryWithGitDirectoryPath("/bare.git");
    const std::string gitDirectory = repositoryPath() + "/.git";
    struct Case {
        std::shared_ptr<RVGitConfig> config;
        std::shared_ptr<RVGitRepository> repository;
        std::optional<std::string> configFile;
    };
    const std::vector<Case> cases = {
        {RVGitConfig::systemWideConfig(), nullptr, "system"},
        {RVGitConfig::globalConfig(), nullptr, "global"},
        {RVGitConfig::configWithRepository(repository()), repository(), std::nullopt},
        {RVGitConfig::repositoryConfigForRepository(repository()), repository(),
         gitDirectory + "/config"},
        {RVGitConfig::submoduleConfigForRepository(repository()), repository(),
         repositoryPath() + "/.gitmodules"},
        {RVGitConfig::gitSVNConfigForRepository(repository()), repository(),
         gitDirectory + "/svn/.metadata"},
        {RVGitConfig::configWithFilePath("/some/file"), nullptr, "/some/file"},
        {RVGitConfig::submoduleConfigForRepository(bare), bare, std::nullopt},
        {RVGitConfig::gitSVNConfigForRepository(bare), bare, std::nullopt},
        {RVGitConfig::repositoryConfigForRepository(bare), bare, "/bare.git/config"},
        {repository()->config(), repository(), std::nullopt},
    };
    for (const Case& testCase : cases) {
        EXPECT_EQ(testCase.config->repository(), testCase.repository);
        EXPECT_EQ(testCase.config->configFile(), testCase.configFile);
    }
}

TEST_F(RVGitConfigTest, AFileIsAPathWhenAbsoluteAndATypeOtherwise) {
    const auto file = RVGitConfig::configWithFilePath("/some/file");
    EXPECT_EQ(file->configFilePath(), "/some/file");
    EXPECT_EQ(file->configFileOption(), std::nullopt);
    const auto global = RVGitConfig::globalConfig();
    EXPECT_EQ(global->configFilePath(), std::nullopt);
    EXPECT_EQ(global->configFileOption(), "global");
    const auto merged = RVGitConfig::configWithRepository(repository());
    EXPECT_EQ(merged->configFilePath(), std::nullopt);
    EXPECT_EQ(merged->configFileOption(), std::nullopt);
}

TEST_F(RVGitConfigTest, EachOperationRunsItsCommandLines) {
    struct Case {
        std::function<void(const RVGitConfig&)> operation;
        std::vector<std::vector<std::string>> argumentLists;
    };
    const std::vector<Case> cases = {
        {[](auto& c) { (void)c.valueForConfigKey("a.b"); }, {{"--get", "a.b"}}},
        {[](auto& c) {
             (void)c.valueForConfigKey("a.b",
                                       RVOptions{{RVGitConfigOptionEnsureBooleanValue, true}});
         },
         {{"--get", "--bool", "a.b"}}},
        {[](auto& c) { (void)c.firstValueForConfigKey("a.b"); }, {{"--get-all", "a.b"}}},
        {[](auto& c) { (void)c.lastValueForConfigKey("a.b"); }, {{"--get-all", "a.b"}}},
        {[](auto& c) { (void)c.valuesForConfigKey("a.b"); }, {{"--get-all", "a.b"}}},
        {[](auto& c) { (void)c.valuesForConfigKeyByRegularExpression("^a.*"); },
         {{"--get-regexp", "^a.*"}}},
        {[](auto& c) { (void)c.boolForConfigKey("a.b"); }, {{"--get", "--bool", "a.b"}}},
        {[](auto& c) { (void)c.integerForConfigKey("a.b"); }, {{"--get", "--int", "a.b"}}},
        {[](auto& c) { (void)c.containsConfigKeyWithName("a.b"); }, {{"--get-all", "a.b"}}},
        {[](auto& c) { (void)c.containsMultipleValuesForConfigKey("a.b"); },
         {{"--get-all", "a.b"}}},
        {[](auto& c) { (void)c.containsSectionWithName("branch.main"); },
         {{"--get-regexp", "branch.main.*"}}},
        {[](auto& c) { (void)c.allConfigValues(); }, {{"--list"}}},
        {[](auto& c) { (void)c.allEffectiveConfigValues(); }, {{"--list"}}},
        {[](auto& c) { (void)c.setValue("v", "a.b"); }, {{"--replace-all", "a.b", "v"}}},
        {[](auto& c) { (void)c.setValue("", "a.b"); }, {{"--replace-all", "a.b", ""}}},
        {[](auto& c) { (void)c.setValue(std::nullopt, "a.b"); }, {{"--unset-all", "a.b"}}},
        {[](auto& c) {
             (void)c.setValue("1", "a.b", RVOptions{{RVGitConfigOptionEnsureIntegerValue, true}});
         },
         {{"--replace-all", "--int", "a.b", "1"}}},
        {[](auto& c) { (void)c.setBool(true, "a.b"); },
         {{"--replace-all", "--bool", "a.b", "true"}}},
        {[](auto& c) { (void)c.setBool(false, "a.b"); },
         {{"--replace-all", "--bool", "a.b", "false"}}},
        {[](auto& c) { (void)c.setInteger(-7, "a.b"); }, {{"--replace-all", "--int", "a.b", "-7"}}},
        {[](auto& c) {
             (void)c.setValues({"v", "w"}, "a.b");
         },
         {{"--unset-all", "a.b"}, {"--add", "a.b", "v"}, {"--add", "a.b", "w"}}},
        {[](auto& c) { (void)c.setValues({}, "a.b"); }, {{"--unset-all", "a.b"}}},
        {[](auto& c) { (void)c.addValue("v", "a.b"); }, {{"--add", "a.b", "v"}}},
        {[](auto& c) {
             (void)c.addValues({"v", "w"}, "a.b");
         },
         {{"--add", "a.b", "v"}, {"--add", "a.b", "w"}}},
        {[](auto& c) { (void)c.replaceValue("v", "w", "a.b"); }, {{"a.b", "w", "^v$"}}},
        {[](auto& c) { (void)c.replaceValue("v", std::nullopt, "a.b"); },
         {{"--unset-all", "a.b", "^v$"}}},
        {[](auto& c) { (void)c.unsetValue("v", "a.b"); }, {{"--unset-all", "a.b", "^v$"}}},
        {[](auto& c) { (void)c.unsetConfigKey("a.b"); }, {{"--unset-all", "a.b"}}},
        {[](auto& c) { (void)c.removeSection("a"); }, {{"--remove-section", "a"}}},
        {[](auto& c) { (void)c.renameSection("a", "c"); }, {{"--rename-section", "a", "c"}}},
    };
    const RVRecordingGit recorder = useRecordingGit();
    const std::string file = scratchPath("file");
    struct Scope {
        std::shared_ptr<RVGitConfig> config;
        std::vector<std::string> options;
    };
    const std::vector<Scope> scopes = {
        {RVGitConfig::configWithFilePath(file), {"--file=" + file}},
        {RVGitConfig::globalConfig(), {"--global", "--includes"}},
    };
    for (const Scope& scope : scopes) {
        for (const Case& testCase : cases) {
            recorder.clear();
            testCase.operation(*scope.config);
            auto argumentLists = testCase.argumentLists;
            for (auto& arguments : argumentLists) {
                arguments.insert(arguments.begin(), scope.options.begin(), scope.options.end());
                arguments.insert(arguments.begin(), {"--no-pager", "config", "-z"});
            }
            EXPECT_THAT(recorder.argumentLists(), ElementsAreArray(argumentLists));
        }
    }
}

TEST_F(RVGitConfigTest, TheRepositoryIsTheWorkingDirectoryAndTheScopeAnOption) {
    const RVRecordingGit recorder = useRecordingGit();
    (void)config().valueForConfigKey("a.b");
    EXPECT_THAT(
        recorder.lastInvocation().arguments,
        ElementsAre("--no-pager", "config", "-z", "--file=" + configFile(), "--get", "a.b"));
    EXPECT_EQ(recorder.lastInvocation().workingDirectory, repositoryPath());

    (void)RVGitConfig::valueForConfigKey("a.b", repository());
    EXPECT_THAT(recorder.lastInvocation().arguments,
                ElementsAre("--no-pager", "config", "-z", "--get", "a.b"));
    EXPECT_EQ(recorder.lastInvocation().workingDirectory, repositoryPath());
    (void)RVGitConfig::valuesForConfigKey("a.b", repository());
    EXPECT_THAT(recorder.lastInvocation().arguments,
                ElementsAre("--no-pager", "config", "-z", "--get-all", "a.b"));

    (void)RVGitConfig::systemWideConfig()->valueForConfigKey("a.b");
    EXPECT_THAT(recorder.lastInvocation().arguments,
                ElementsAre("--no-pager", "config", "-z", "--system", "--get", "a.b"));
    (void)RVGitConfig::globalValueForConfigKey("a.b");
    EXPECT_THAT(
        recorder.lastInvocation().arguments,
        ElementsAre("--no-pager", "config", "-z", "--global", "--includes", "--get", "a.b"));
    (void)RVGitConfig::globalValuesForConfigKey("a.b");
    EXPECT_THAT(
        recorder.lastInvocation().arguments,
        ElementsAre("--no-pager", "config", "-z", "--global", "--includes", "--get-all", "a.b"));
}

TEST_F(RVGitConfigTest, ValuesComeBackWhole) {
    for (const std::string value :
         {"plain", "", " blanks around ", "one\ntwo\n", "\ttab", "quote \" and \\ and # and ;",
          "Zo\xC3\xAB \xF0\x9F\x8E\x89", "=", "--get", "one\r\ntwo"}) {
        EXPECT_TRUE(config().setValue(value, "section.Sub Section.key"));
        // Some gits write a carriage return without quotes and read it as a blank.
        std::string kept = git({"config", "-z", "section.Sub Section.key"}, repositoryPath());
        ASSERT_FALSE(kept.empty());
        kept.pop_back();
        EXPECT_TRUE(kept == value || value == "one\r\ntwo") << kept;
        EXPECT_EQ(config().valueForConfigKey("section.Sub Section.key"), kept);
        EXPECT_THAT(config().valuesForConfigKey("section.Sub Section.key"), ElementsAre(kept));
        EXPECT_THAT(config().valuesForConfigKeyByRegularExpression("^section"),
                    ElementsAre(Pair("section.Sub Section.key", kept)));
    }
}

TEST_F(RVGitConfigTest, AKeyWithTwoValuesGivesTheLastAndBothInTheirOrder) {
    EXPECT_TRUE(config().addValues({"z", "a"}, "some.key"));
    EXPECT_EQ(config().valueForConfigKey("some.key"), "a");
    EXPECT_EQ(config().firstValueForConfigKey("some.key"), "z");
    EXPECT_EQ(config().lastValueForConfigKey("some.key"), "a");
    EXPECT_THAT(config().valuesForConfigKey("some.key"), ElementsAre("z", "a"));
    EXPECT_TRUE(config().containsConfigKeyWithName("some.key"));
    EXPECT_TRUE(config().containsMultipleValuesForConfigKey("some.key"));
    EXPECT_THAT(config().valuesForConfigKeyByRegularExpression("^some"),
                ElementsAre(Pair("some.key", StringList{"z", "a"})));
}

TEST_F(RVGitConfigTest, AKeyThatIsNotSetGivesNothingAndAnEmptyPlace) {
    auto error = filledPlace();
    EXPECT_EQ(config().valueForConfigKey("some.key", &error), std::nullopt);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(config().firstValueForConfigKey("some.key", &error), std::nullopt);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(config().lastValueForConfigKey("some.key", &error), std::nullopt);
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_THAT(config().valuesForConfigKey("some.key", &error), IsEmpty());
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_THAT(config().valuesForConfigKeyByRegularExpression("^some", &error), IsEmpty());
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_FALSE(config().boolForConfigKey("some.key", &error));
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_EQ(config().integerForConfigKey("some.key", &error), RVNotFound);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_FALSE(config().containsConfigKeyWithName("some.key"));
    EXPECT_FALSE(config().containsMultipleValuesForConfigKey("some.key"));
    EXPECT_FALSE(config().containsSectionWithName("some"));

    error = filledPlace();
    EXPECT_FALSE(config().unsetConfigKey("some.key", &error));
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_FALSE(config().unsetValue("value", "some.key", &error));
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_FALSE(config().setValue(std::nullopt, "some.key", &error));
    EXPECT_EQ(error, std::nullopt);
    error = filledPlace();
    EXPECT_FALSE(config().replaceValue("value", std::nullopt, "some.key", &error));
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitConfigTest, AnExitCodeOf1WithAMessageIsNoMissingKey) {
    std::optional<RVError> error;
    EXPECT_EQ(config().valueForConfigKey("nosection", &error), std::nullopt);
    EXPECT_EQ(codeOf(error), RVGitRVGitGenericError);
    error.reset();
    EXPECT_THAT(config().valuesForConfigKey("nosection", &error), IsEmpty());
    EXPECT_EQ(codeOf(error), RVGitRVGitGenericError);
    error.reset();
    EXPECT_THAT(config().valuesForConfigKeyByRegularExpression("(", &error), IsEmpty());
    EXPECT_EQ(codeOf(error), RVGitRVGitGenericError);
}

TEST_F(RVGitConfigTest, BooleansAndIntegersAreReadAsGitReadsThem) {
    const std::vector<std::pair<std::string, bool>> booleans = {
        {"true", true},   {"yes", true}, {"On", true},   {"1", true},  {"17", true},
        {"false", false}, {"no", false}, {"off", false}, {"0", false}, {"", false},
    };
    for (const auto& [text, value] : booleans) {
        EXPECT_TRUE(config().setValue(text, "some.key"));
        EXPECT_EQ(config().boolForConfigKey("some.key"), value) << text;
    }
    writeFile(configFile(), "[some]\n\tkey\n");
    EXPECT_TRUE(config().boolForConfigKey("some.key"));

    const std::vector<std::pair<std::string, std::int64_t>> integers = {
        {"0", 0}, {"-3", -3}, {"12k", 12288}, {"9223372036854775807", RVNotFound}};
    for (const auto& [text, value] : integers) {
        EXPECT_TRUE(config().setValue(text, "some.key"));
        EXPECT_EQ(config().integerForConfigKey("some.key"), value) << text;
    }
}

TEST_F(RVGitConfigTest, AValueThatIsNoNumberFailsWith1000) {
    EXPECT_TRUE(config().setValue("some", "some.key"));
    std::optional<RVError> error;
    EXPECT_EQ(config().integerForConfigKey("some.key", &error), RVNotFound);
    EXPECT_EQ(codeOf(error), RVGitConfigBadValueError);
    error.reset();
    EXPECT_FALSE(config().setValue("some", "some.key",
                                   RVOptions{{RVGitConfigOptionEnsureIntegerValue, true}}, &error));
    EXPECT_EQ(codeOf(error), RVGitConfigBadValueError);
    error.reset();
    EXPECT_FALSE(config().boolForConfigKey("some.key", &error));
    EXPECT_TRUE(error);
}

TEST_F(RVGitConfigTest, SectionNamesAreUnanchoredRegularExpressions) {
    EXPECT_TRUE(config().setValue("1", "branch.main2.remote"));
    EXPECT_TRUE(config().containsSectionWithName("branch.main2"));
    EXPECT_TRUE(config().containsSectionWithName("branch.main"));
    EXPECT_TRUE(config().containsSectionWithName("ranch"));
    EXPECT_FALSE(config().containsSectionWithName("^ranch"));
    EXPECT_FALSE(config().containsSectionWithName("branch.other"));
}

TEST_F(RVGitConfigTest, SectionsAreReadByTheirPattern) {
    git({"config", "branch.Feature/A.remote", "origin"}, repositoryPath());
    git({"config", "branch.Feature/A.pushRemote", "fork"}, repositoryPath());
    git({"config", "branch.main.remote", "origin"}, repositoryPath());
    git({"config", "branch.autoSetupMerge", "always"}, repositoryPath());
    EXPECT_THAT(RVGitConfigOptionsParser::parseConfigOptionsBySection(
                    config().valuesForConfigKeyByRegularExpression("^branch.*")),
                ElementsAre(Pair("Feature/A",
                                 ElementsAre(Pair("pushremote", "fork"), Pair("remote", "origin"))),
                            Pair("main", ElementsAre(Pair("remote", "origin")))));
}

TEST_F(RVGitConfigTest, AllValuesAreListedAndReducedToTheLastTrimmedOne) {
    const auto file = RVGitConfig::configWithFilePath(writeFile(
        "file", "[a]\n\tone = \" x\\n\"\n\ttwo = 1\n\ttwo = \" 2 \"\n[b \"C\"]\n\tD =\n"));
    EXPECT_THAT(file->allConfigValues(),
                ElementsAre(Pair("a.one", " x\n"), Pair("a.two", StringList{"1", " 2 "}),
                            Pair("b.C.d", "")));
    EXPECT_THAT(file->allEffectiveConfigValues(),
                ElementsAre(Pair("a.one", "x"), Pair("a.two", "2"), Pair("b.C.d", "")));
}

TEST_F(RVGitConfigTest, AFileThatDoesNotExistHasNoValuesAndIsMadeByTheFirst) {
    const auto file = RVGitConfig::configWithFilePath(scratchPath("no such file"));
    std::optional<RVError> error;
    EXPECT_THAT(file->allConfigValues(&error), IsEmpty());
    EXPECT_EQ(codeOf(error), RVGitGPGSigningFailedError);
    error.reset();
    EXPECT_THAT(file->allEffectiveConfigValues(&error), IsEmpty());
    EXPECT_EQ(codeOf(error), RVGitGPGSigningFailedError);
    EXPECT_EQ(file->valueForConfigKey("a.b", &error), std::nullopt);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_TRUE(file->setValue("1", "a.b"));
    EXPECT_THAT(file->allConfigValues(), ElementsAre(Pair("a.b", "1")));
}

TEST_F(RVGitConfigTest, SettingReplacesAllValues) {
    EXPECT_TRUE(config().addValues({"one", "two"}, "some.key"));
    EXPECT_TRUE(config().setValue("three", "some.key"));
    EXPECT_THAT(config().valuesForConfigKey("some.key"), ElementsAre("three"));
    EXPECT_TRUE(config().setValues({"four", "five", "four"}, "some.key"));
    EXPECT_THAT(config().valuesForConfigKey("some.key"), ElementsAre("four", "five", "four"));
    EXPECT_TRUE(config().setValue(std::nullopt, "some.key"));
    EXPECT_FALSE(config().containsConfigKeyWithName("some.key"));
    EXPECT_TRUE(config().setBool(true, "some.key"));
    EXPECT_EQ(config().valueForConfigKey("some.key"), "true");
    EXPECT_TRUE(config().setInteger(std::numeric_limits<std::int64_t>::min() + 1, "some.key"));
    EXPECT_EQ(config().valueForConfigKey("some.key"), "-9223372036854775807");
}

TEST_F(RVGitConfigTest, SettingValuesOnAKeyThatIsNotSetLeavesThePlaceEmpty) {
    std::optional<RVError> error;
    EXPECT_TRUE(config().setValues({"one"}, "some.key", &error));
    EXPECT_EQ(error, std::nullopt);
    EXPECT_TRUE(config().setValues({}, "some.key", &error));
    EXPECT_FALSE(config().containsConfigKeyWithName("some.key"));
}

TEST_F(RVGitConfigTest, AFailureStopsSettingAndAddingValues) {
    const RVRecordingGit recorder = useRecordingGit();
    std::optional<RVError> error;
    EXPECT_FALSE(config().setValues({"one", "two"}, "nosection", &error));
    EXPECT_TRUE(error);
    EXPECT_EQ(recorder.invocations().size(), 1u);
    recorder.clear();
    error.reset();
    EXPECT_FALSE(config().addValues({"one", "two"}, "nosection", &error));
    EXPECT_TRUE(error);
    EXPECT_EQ(recorder.invocations().size(), 1u);
}

TEST_F(RVGitConfigTest, AValueIsReplacedOrUnsetLiterally) {
    const std::string value = R"(a.b*c+d?(e)[f]{g}^h$i|j\k)";
    const std::string similar = "axb*c+d?(e)[f]{g}^h$i|j\\k";
    EXPECT_TRUE(config().addValues({value, similar, value + "l", "l" + value}, "some.key"));
    EXPECT_TRUE(config().replaceValue(value, "new", "some.key"));
    EXPECT_THAT(config().valuesForConfigKey("some.key"),
                ElementsAre("new", similar, value + "l", "l" + value));
    EXPECT_TRUE(config().unsetValue(similar, "some.key"));
    EXPECT_THAT(config().valuesForConfigKey("some.key"),
                ElementsAre("new", value + "l", "l" + value));
    EXPECT_TRUE(config().replaceValue("new", std::nullopt, "some.key"));
    EXPECT_THAT(config().valuesForConfigKey("some.key"), ElementsAre(value + "l", "l" + value));
}

TEST_F(RVGitConfigTest, UnsettingAValueTakesEveryEntryThatHasIt) {
    EXPECT_TRUE(config().addValues({"x", "y", "x"}, "some.key"));
    EXPECT_TRUE(config().unsetValue("x", "some.key"));
    EXPECT_THAT(config().valuesForConfigKey("some.key"), ElementsAre("y"));
}

TEST_F(RVGitConfigTest, ReplacingAValueThatStandsTwiceFailsWith1003) {
    EXPECT_TRUE(config().addValues({"x", "x"}, "some.key"));
    std::optional<RVError> error;
    EXPECT_FALSE(config().replaceValue("x", "y", "some.key", &error));
    EXPECT_EQ(codeOf(error), RVGitConfigMultipleValuesForKeyError);
    EXPECT_THAT(config().valuesForConfigKey("some.key"), ElementsAre("x", "x"));
}

TEST_F(RVGitConfigTest, SectionsAreRemovedAndRenamed) {
    EXPECT_TRUE(config().setValue("origin", "branch.Old/Name.remote"));
    EXPECT_TRUE(config().renameSection("branch.Old/Name", "branch.new name"));
    EXPECT_EQ(config().valueForConfigKey("branch.new name.remote"), "origin");
    EXPECT_TRUE(config().removeSection("branch.new name"));
    EXPECT_FALSE(config().containsSectionWithName("branch.new name"));

    std::optional<RVError> error;
    EXPECT_FALSE(config().removeSection("branch.new name", &error));
    EXPECT_EQ(codeOf(error), RVGitConfigSectionNotFoundError);
    error.reset();
    EXPECT_FALSE(config().renameSection("branch.new name", "branch.other", &error));
    EXPECT_EQ(codeOf(error), RVGitConfigSectionNotFoundError);
}

TEST_F(RVGitConfigTest, NoSectionIsGivenANameThatGitCouldNotReadAnyMore) {
    EXPECT_TRUE(config().setValue("svn://host", "svn-remote.a.url"));
    const std::string before = readFile(configFile());
    const RVRecordingGit recorder = useRecordingGit();
    for (const std::string name : {"svn-remote.b\n[core]\n\tfsmonitor = x", "svn-remote.b\n", "\n",
                                   "svn-remote.b\"]\n[core]\n\tfsmonitor = x\n[z \""}) {
        recorder.clear();
        std::optional<RVError> error;
        EXPECT_FALSE(config().renameSection("svn-remote.a", name, &error));
        EXPECT_EQ(codeOf(error), RVGitConfigWriteError);
        EXPECT_THAT(recorder.argumentLists(), testing::IsEmpty());
    }
    EXPECT_EQ(readFile(configFile()), before);
    // What git can read again is as good a name as another.
    EXPECT_TRUE(config().renameSection("svn-remote.a", "svn-remote.b\"]\t\\[core]\r"));
    EXPECT_EQ(config().valueForConfigKey("svn-remote.b\"]\t\\[core]\r.url"), "svn://host");
    gitInRepository({"status"});
}

TEST_F(RVGitConfigTest, ASectionThatCannotBeWrittenFailsWith1006ThoughGitExitsWith0) {
    EXPECT_TRUE(config().setValue("one", "branch.old.remote"));
    const std::string before = readFile(configFile());
    // No file may grow: as if the disk were full.
    const std::string path = writeFile("limited-git/git",
                                       "#!/bin/sh\ntrap '' XFSZ\nulimit -f 0\n"
                                       "exec " +
                                           gitPath() + " \"$@\"\n",
                                       0755);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(path));
    std::optional<RVError> error;
    EXPECT_FALSE(config().renameSection("branch.old", "branch.new", &error));
    EXPECT_EQ(codeOf(error), RVGitConfigWriteError);
    error.reset();
    EXPECT_FALSE(config().removeSection("branch.old", &error));
    EXPECT_EQ(codeOf(error), RVGitConfigWriteError);
    EXPECT_EQ(readFile(configFile()), before);
}

TEST_F(RVGitConfigTest, WhatGitOnlyWarnsOfIsNoFailureOfASection) {
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardError = "warning: error: something\n"});
    std::optional<RVError> error;
    EXPECT_TRUE(config().removeSection("branch.old", &error));
    EXPECT_EQ(error, std::nullopt);
}

TEST_F(RVGitConfigTest, ABrokenFileFailsWith1001OnReadingAndWith1004OnWriting) {
    const auto file = RVGitConfig::configWithFilePath(writeFile("file", "[broken"));
    std::optional<RVError> error;
    EXPECT_EQ(file->valueForConfigKey("a.b", &error), std::nullopt);
    EXPECT_EQ(codeOf(error), RVGitConfigInvalidFileError);
    error.reset();
    EXPECT_THAT(file->allConfigValues(&error), IsEmpty());
    EXPECT_EQ(codeOf(error), RVGitConfigInvalidFileError);
    error.reset();
    EXPECT_FALSE(file->containsConfigKeyWithName("a.b"));
    EXPECT_FALSE(file->setValue("1", "a.b", &error));
    // 2.23 and later end with 3, which means a file that cannot be read; 2.13 with 128, as it does
    // on reading.
    if (isTestedGitAtLeast("2.23")) {
        EXPECT_EQ(codeOf(error), RVGitConfigReadError);
    } else {
        EXPECT_THAT(codeOf(error), AnyOf(RVGitConfigReadError, RVGitConfigInvalidFileError));
    }
    EXPECT_EQ(readFile("file"), "[broken");
}

TEST_F(RVGitConfigTest, NamedKeysAreReadAndWritten) {
    using Getter = std::optional<std::string> (RVGitConfig::*)() const;
    using Setter = bool (RVGitConfig::*)(const std::optional<std::string>&, RVErrorPlace) const;
    struct Case {
        Getter getter;
        Setter setter;
        const char* key;
    };
    const Case cases[] = {
        {&RVGitConfig::userName, &RVGitConfig::setUserName, "user.name"},
        {&RVGitConfig::userEmail, &RVGitConfig::setUserEmail, "user.email"},
        {&RVGitConfig::userSigningKey, &RVGitConfig::setUserSigningKey, "user.signingkey"},
        {&RVGitConfig::gpgProgramPath, &RVGitConfig::setGPGProgramPath, "gpg.program"},
        {&RVGitConfig::sshProgramPath, &RVGitConfig::setSSHProgramPath, "gpg.ssh.program"},
        {&RVGitConfig::gpgFormat, &RVGitConfig::setGPGFormat, "gpg.format"},
        {&RVGitConfig::allowedSignersFile, &RVGitConfig::setAllowedSignersFile,
         "gpg.ssh.allowedsignersfile"},
    };
    for (const Case& testCase : cases) {
        EXPECT_EQ((config().*testCase.getter)(), std::nullopt) << testCase.key;
        EXPECT_TRUE((config().*testCase.setter)("some value", nullptr));
        EXPECT_EQ((config().*testCase.getter)(), "some value") << testCase.key;
        EXPECT_EQ(gitInRepository({"config", testCase.key}), "some value");
        EXPECT_TRUE((config().*testCase.setter)(std::nullopt, nullptr));
        EXPECT_EQ((config().*testCase.getter)(), std::nullopt) << testCase.key;
    }

    EXPECT_FALSE(config().gpgSigningEnabled());
    EXPECT_TRUE(config().setGPGSigningEnabled(true));
    EXPECT_TRUE(config().gpgSigningEnabled());
    EXPECT_EQ(gitInRepository({"config", "commit.gpgsign"}), "true");
    EXPECT_FALSE(config().convertGitMojiToCodeOnCommit());
    EXPECT_TRUE(config().setConvertGitMojiToCodeOnCommit(true));
    EXPECT_TRUE(config().convertGitMojiToCodeOnCommit());
    EXPECT_EQ(gitInRepository({"config", "varnel.convertGitMojiToCodeOnCommit"}), "true");
}

TEST_F(RVGitConfigTest, NamedKeysHaveTheirTexts) {
    EXPECT_STREQ(RVGitGPGSSHAllowedSignersFileConfigKey, "gpg.ssh.allowedsignersfile");
    EXPECT_STREQ(RVGitCoreExcludesFileConfigKey, "core.excludesfile");
    EXPECT_STREQ(RVGitHTTPProxyConfigKey, "http.proxy");
    EXPECT_STREQ(RVGitHTTPSSLVerifyConfigKey, "http.sslverify");
    EXPECT_STREQ(RVGitStatusShowUntrackedFilesConfigKey, "status.showuntrackedfiles");
}

TEST_F(RVGitConfigTest, TheGlobalScopeIsTheUsersFileWithItsIncludes) {
    writeFile("home/.gitconfig", "[include]\n\tpath = included\n[a]\n\tb = 1\n");
    writeFile("home/included", "[a]\n\tb = 0\n\tc = 2\n");
    EXPECT_EQ(RVGitConfig::globalValueForConfigKey("a.c"), "2");
    EXPECT_THAT(RVGitConfig::globalValuesForConfigKey("a.b"), ElementsAre("0", "1"));
    EXPECT_TRUE(RVGitConfig::globalConfig()->setUserName("Someone"));
    EXPECT_EQ(gitLine({"config", "--global", "user.name"}), "Someone");
    EXPECT_EQ(config().valueForConfigKey("a.c"), std::nullopt);
}

TEST_F(RVGitConfigTest, TheMergedViewReadsAllScopesAndWritesTheRepositorys) {
    writeFile("home/.gitconfig", "[a]\n\tb = global\n\tc = global\n");
    EXPECT_TRUE(config().setValue("local", "a.b"));
    const auto merged = RVGitConfig::configWithRepository(repository());
    EXPECT_EQ(merged->valueForConfigKey("a.b"), "local");
    EXPECT_EQ(merged->valueForConfigKey("a.c"), "global");
    EXPECT_THAT(RVGitConfig::valuesForConfigKey("a.b", repository()),
                ElementsAre("global", "local"));
    EXPECT_EQ(RVGitConfig::valueForConfigKey("a.b", repository()), "local");
    EXPECT_TRUE(merged->setValue("new", "a.c"));
    EXPECT_EQ(config().valueForConfigKey("a.c"), "new");
}

TEST_F(RVGitConfigTest, AConfigKeepsItsRepositoryAlive) {
    auto repository =
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath("/tree", "/tree/.git");
    const std::weak_ptr<RVGitRepository> weak = repository;
    auto made = RVGitConfig::configWithRepository(repository);
    auto owned = repository->config();
    repository.reset();
    EXPECT_EQ(made->repository(), weak.lock());
    made.reset();
    ASSERT_FALSE(weak.expired());
    EXPECT_EQ(owned->repository(), weak.lock());
    owned.reset();
    EXPECT_TRUE(weak.expired());
}

}  // namespace
