#include "RVGit/submodules/RVGitSubmoduleConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmoduleConfigHelper.h"
#include "RVGit/submodules/RVGitSubmoduleConfigLoader.h"
#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"
#include "tests/submodules/RVGitSubmoduleTestCase.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;
using testing::SizeIs;
using testing::UnorderedElementsAre;

using Helper = RVGitSubmoduleConfigHelper;
using Manager = RVGitSubmoduleConfigManager;

TEST(RVGitSubmoduleConfigHelperTest, ReadsUpdateStrategiesInAnyCase) {
    EXPECT_EQ(Helper::updateStrategyFromConfigValue("none"), 1);
    EXPECT_EQ(Helper::updateStrategyFromConfigValue("checkout"), 2);
    EXPECT_EQ(Helper::updateStrategyFromConfigValue("MeRGe"), 3);
    EXPECT_EQ(Helper::updateStrategyFromConfigValue("rebase"), 4);
    for (const char* other : {"", "!command", "merge ", "3", "rebases"})
        EXPECT_EQ(Helper::updateStrategyFromConfigValue(other), 0) << other;
    EXPECT_EQ(Helper::updateStrategyFromConfigValue(std::nullopt), 0);
}

TEST(RVGitSubmoduleConfigHelperTest, ReadsStatusIgnoreModes) {
    EXPECT_EQ(Helper::statusIgnoreModeFromConfigValue("none"), 1);
    EXPECT_EQ(Helper::statusIgnoreModeFromConfigValue("ALL"), 2);
    EXPECT_EQ(Helper::statusIgnoreModeFromConfigValue("dirty"), 3);
    EXPECT_EQ(Helper::statusIgnoreModeFromConfigValue("untracked"), 4);
    EXPECT_EQ(Helper::statusIgnoreModeFromConfigValue("tracked"), 0);
    EXPECT_EQ(Helper::statusIgnoreModeFromConfigValue(std::nullopt), 0);
}

TEST(RVGitSubmoduleConfigHelperTest, ReadsRecurseSubmodulesOptions) {
    for (const char* text : {"false", "0", "False"})
        EXPECT_EQ(Helper::recurseSubmodulesOptionFromConfigValue(text), 1) << text;
    for (const char* text : {"true", "1"})
        EXPECT_EQ(Helper::recurseSubmodulesOptionFromConfigValue(text), 2) << text;
    for (const char* text : {"on-demand", "ondemand", "On-Demand"})
        EXPECT_EQ(Helper::recurseSubmodulesOptionFromConfigValue(text), 3) << text;
    for (const char* text : {"2", "yes", "", "on demand"})
        EXPECT_EQ(Helper::recurseSubmodulesOptionFromConfigValue(text), 0) << text;
}

TEST(RVGitSubmoduleConfigHelperTest, WritesTheFirstFormOfEachValue) {
    for (const char* text : {"none", "checkout", "merge", "rebase"})
        EXPECT_EQ(Helper::updateStrategyToConfigValue(Helper::updateStrategyFromConfigValue(text)),
                  text);
    for (const char* text : {"none", "all", "dirty", "untracked"})
        EXPECT_EQ(
            Helper::statusIgnoreModeToConfigValue(Helper::statusIgnoreModeFromConfigValue(text)),
            text);
    for (const char* text : {"false", "true", "on-demand"})
        EXPECT_EQ(Helper::recurseSubmodulesOptionToConfigValue(
                      Helper::recurseSubmodulesOptionFromConfigValue(text)),
                  text);
    EXPECT_EQ(Helper::recurseSubmodulesOptionToConfigValue(
                  Helper::recurseSubmodulesOptionFromConfigValue("ondemand")),
              "on-demand");
}

TEST(RVGitSubmoduleConfigHelperTest, WhatIsOutOfRangeHasNoText) {
    for (const int value : {-1, 0, 5}) {
        EXPECT_EQ(
            Helper::updateStrategyToConfigValue(static_cast<RVGitSubmoduleUpdateStrategy>(value)),
            std::nullopt);
        EXPECT_EQ(Helper::statusIgnoreModeToConfigValue(
                      static_cast<RVGitSubmoduleStatusIgnoreMode>(value)),
                  std::nullopt);
    }
    EXPECT_EQ(Helper::recurseSubmodulesOptionToConfigValue(
                  static_cast<RVGitSubmoduleRecurseSubmodulesOption>(4)),
              std::nullopt);
}

TEST(RVGitSubmoduleConfigHelperTest, MakesSectionsAndKeys) {
    EXPECT_EQ(Helper::submoduleConfigSectionWithSubmoduleName("a.b"), "submodule.a.b");
    EXPECT_EQ(Helper::submoduleConfigKeyWithSubmoduleName("a.b", "url"), "submodule.a.b.url");
}

TEST(RVGitSubmoduleConfigHelperTest, LowersKeysAndTakesTheLastOfAList) {
    EXPECT_THAT(Helper::configValuesWithLowercaseConfigKeysFromConfigValues(
                    {{"URL", "one"},
                     {"Path", std::vector<std::string>{"first", "last"}},
                     {"empty", std::vector<std::string>()},
                     {"number", 4},
                     {"flag", true}}),
                UnorderedElementsAre(Pair("url", "one"), Pair("path", "last")));
}

TEST(RVGitSubmoduleConfigHelperTest, BothFamiliesOfKeysAreTheSame) {
    EXPECT_STREQ(RVGitSubmodulePathConfigKey, "path");
    EXPECT_STREQ(RVGitSubmoduleURLConfigKey, "url");
    EXPECT_STREQ(RVGitSubmoduleUpdateConfigKey, "update");
    EXPECT_STREQ(RVGitSubmoduleIgnoreConfigKey, "ignore");
    EXPECT_STREQ(RVGitSubmoduleFetchRecurseSubmodulesConfigKey, "fetchrecursesubmodules");
    EXPECT_STREQ(RVGitSubmoduleConfigKeyPath, RVGitSubmodulePathConfigKey);
    EXPECT_STREQ(RVGitSubmoduleConfigKeyURL, RVGitSubmoduleURLConfigKey);
    EXPECT_STREQ(RVGitSubmoduleConfigKeyUpdate, RVGitSubmoduleUpdateConfigKey);
    EXPECT_STREQ(RVGitSubmoduleConfigKeyIgnore, RVGitSubmoduleIgnoreConfigKey);
    EXPECT_STREQ(RVGitSubmoduleConfigKeyBranch, "branch");
    EXPECT_STREQ(RVGitSubmoduleConfigKeyFetchRecurseSubmodules,
                 RVGitSubmoduleFetchRecurseSubmodulesConfigKey);
}

class RVGitSubmoduleConfigTest : public RVGitRepositoryTestCase {
protected:
    void writeSubmodulesFile(std::string_view contents) {
        writeFile("repository/.gitmodules", contents);
    }
    [[nodiscard]] std::string submodulesFile() const { return readFile("repository/.gitmodules"); }

    std::shared_ptr<RVGitSubmoduleConfigLoader> loader =
        RVGitSubmoduleConfigLoader::loaderWithRepository(repository());
    std::shared_ptr<Manager> manager = Manager::defaultManagerWithRepository(repository());
    std::shared_ptr<Manager> localManager = Manager::localConfigManagerWithRepository(repository());
    std::optional<RVError> error;
};

TEST_F(RVGitSubmoduleConfigTest, RequiresItsParameters) {
    EXPECT_THROW(RVGitSubmoduleConfig(nullptr, RVGitSubmoduleConfigTypeDefault, "a", RVOptions()),
                 RVInvalidParameterException);
    EXPECT_THROW(RVGitSubmoduleConfigLoader(nullptr), RVInvalidParameterException);
    EXPECT_THROW(Manager(nullptr, RVGitSubmoduleConfigTypeDefault), RVInvalidParameterException);
    EXPECT_THROW(Manager(repository(), static_cast<RVGitSubmoduleConfigType>(0)),
                 RVInvalidParameterException);
}

TEST_F(RVGitSubmoduleConfigTest, ReadsTheSectionsOfBothFiles) {
    writeSubmodulesFile(
        "[submodule \"lib.c/x y\"]\n\tpath = a/b\n\tURL = ../lib\n\tUpdate = MERGE\n"
        "\tignore = untracked\n\tbranch = next\n\tfetchRecurseSubmodules = ondemand\n"
        "[submodule \"other\"]\n\tpath = o\n[submodule]\n\trecurse = true\n"
        "[core]\n\tbare = false\n");
    gitInRepository({"config", "submodule.other.url", "/elsewhere"});
    gitInRepository({"config", "submodule.active", "."});

    const auto configs = loader->allSubmoduleConfigs(&error);
    ASSERT_THAT(configs, Optional(SizeIs(2)));
    const RVGitSubmoduleConfig& config = *configs->front();
    EXPECT_EQ(config.repository(), repository());
    EXPECT_EQ(config.configType(), RVGitSubmoduleConfigTypeDefault);
    EXPECT_EQ(config.name(), "lib.c/x y");
    EXPECT_EQ(config.path(), "a/b");
    EXPECT_EQ(config.URL(), "../lib");
    EXPECT_EQ(config.configValueForKey("uRl"), "../lib");
    EXPECT_EQ(config.configValueForKey("missing"), std::nullopt);
    EXPECT_EQ(config.branch(), "next");
    EXPECT_EQ(config.updateStrategy(), RVGitSubmoduleUpdateStrategyMerge);
    EXPECT_EQ(config.statusIgnoreMode(), RVGitSubmoduleStatusIgnoreModeUntracked);
    EXPECT_EQ(config.recurseSubmodules(), RVGitSubmoduleRecurseSubmodulesOptionOnDemand);
    EXPECT_EQ(configs->back()->updateStrategy(), RVGitSubmoduleUpdateStrategyUnknown);

    const auto localConfigs = loader->allLocalSubmoduleConfigs(&error);
    ASSERT_THAT(localConfigs, Optional(SizeIs(1)));
    EXPECT_EQ(localConfigs->front()->configType(), RVGitSubmoduleConfigTypeLocal);
    EXPECT_EQ(localConfigs->front()->URL(), "/elsewhere");
    EXPECT_EQ(localConfigs->front()->path(), std::nullopt);
}

TEST_F(RVGitSubmoduleConfigTest, OfARepeatedKeyTheLastValueCounts) {
    writeSubmodulesFile("[submodule \"a\"]\n\turl = one\n\turl = two\n");
    EXPECT_EQ(loader->submoduleConfigForSubmoduleWithName("a")->URL(), "two");
}

TEST_F(RVGitSubmoduleConfigTest, WithoutTheFileThereAreNone) {
    EXPECT_THAT(loader->allSubmoduleConfigs(&error), Optional(IsEmpty()));
    EXPECT_FALSE(error);
}

TEST_F(RVGitSubmoduleConfigTest, ABareRepositoryHasNone) {
    const auto bare = RVGitRepository::bareRepositoryWithGitDirectoryPath(initBareRepository());
    git({"config", "submodule.a.url", "x"}, *bare->gitDirectoryPath());
    EXPECT_THAT(RVGitSubmoduleConfigLoader(bare).allSubmoduleConfigs(&error), Optional(IsEmpty()));
    EXPECT_FALSE(Manager(bare, RVGitSubmoduleConfigTypeDefault).setPath("p", "a", &error));
    EXPECT_EQ(error->code(), RVGitNoWorkTreeError);
}

TEST_F(RVGitSubmoduleConfigTest, FindsByName) {
    writeSubmodulesFile("[submodule \"caf\u00e9\"]\n\tpath = p\n");
    ASSERT_NE(loader->submoduleConfigForSubmoduleWithName("cafe\u0301"), nullptr);
    error = RVError("domain", 1);
    EXPECT_EQ(loader->submoduleConfigForSubmoduleWithName("other", &error), nullptr);
    EXPECT_FALSE(error);
    error = RVError("domain", 1);
    EXPECT_EQ(loader->localSubmoduleConfigForSubmoduleWithName("caf\u00e9", &error), nullptr);
    EXPECT_FALSE(error);
}

TEST_F(RVGitSubmoduleConfigTest, ABrokenFileIsAnError) {
    writeSubmodulesFile("[submodule \"a\"\n");
    EXPECT_EQ(loader->allSubmoduleConfigs(&error), std::nullopt);
    EXPECT_EQ(error->code(), RVGitConfigInvalidFileError);
    error.reset();
    EXPECT_EQ(loader->submoduleConfigForSubmoduleWithName("a", &error), nullptr);
    EXPECT_TRUE(error);
}

TEST_F(RVGitSubmoduleConfigTest, AKeyWithoutAValueCannotBeRead) {
    writeSubmodulesFile("[submodule \"a\"]\n\tpath\n");
    EXPECT_EQ(loader->allSubmoduleConfigs(&error), std::nullopt);
    EXPECT_EQ(error->code(), RVGitOutputParserError);
}

TEST_F(RVGitSubmoduleConfigTest, SetsAndUnsetsEachKey) {
    struct Case {
        const char* key;
        std::function<bool(Manager&)> set;
        std::function<bool(Manager&)> unset;
        const char* value;
    };
    const std::vector<Case> cases = {
        {"url", [](Manager& m) { return m.setURL("u://x", "a.b"); },
         [](Manager& m) { return m.unsetURLForSubmoduleWithName("a.b"); }, "u://x"},
        {"update",
         [](Manager& m) { return m.setUpdateStrategy(RVGitSubmoduleUpdateStrategyRebase, "a.b"); },
         [](Manager& m) { return m.unsetUpdateStrategyForSubmoduleWithName("a.b"); }, "rebase"},
        {"ignore",
         [](Manager& m) { return m.setStatusIgnoreMode(RVGitSubmoduleStatusIgnoreModeAll, "a.b"); },
         [](Manager& m) { return m.unsetStatusIgnoreModeForSubmoduleWithName("a.b"); }, "all"},
        {"branch", [](Manager& m) { return m.setBranch("-next", "a.b"); },
         [](Manager& m) { return m.unsetBranchForSubmoduleWithName("a.b"); }, "-next"},
        {"fetchrecursesubmodules",
         [](Manager& m) {
             return m.setRecurseSubmodulesOption(RVGitSubmoduleRecurseSubmodulesOptionOnDemand,
                                                 "a.b");
         },
         [](Manager& m) { return m.unsetRecurseSubmodulesOptionForSubmoduleWithName("a.b"); },
         "on-demand"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.key);
        const std::string key = std::string("submodule.a.b.") + test.key;
        for (const bool isLocal : {false, true}) {
            Manager& used = isLocal ? *localManager : *manager;
            const std::string file = isLocal ? ".git/config" : ".gitmodules";
            EXPECT_TRUE(test.set(used));
            EXPECT_EQ(gitInRepository({"config", "-f", file, key}), test.value);
            EXPECT_TRUE(test.unset(used));
            EXPECT_EQ(runGit({"config", "-f", file, key}, repositoryPath()).exitCode, 1);
            // Not tested first: that is the configuration's answer to a key that is not set.
            EXPECT_FALSE(test.unset(used));
        }
    }
    EXPECT_TRUE(manager->setPath("p q", "a.b", &error));
    EXPECT_EQ(gitInRepository({"config", "-f", ".gitmodules", "submodule.a.b.path"}), "p q");
}

TEST_F(RVGitSubmoduleConfigTest, AnUnknownValueUnsetsTheKey) {
    writeSubmodulesFile("[submodule \"a\"]\n\tupdate = merge\n\tpath = p\n");
    EXPECT_TRUE(manager->setUpdateStrategy(RVGitSubmoduleUpdateStrategyUnknown, "a", &error));
    EXPECT_EQ(loader->submoduleConfigForSubmoduleWithName("a")->updateStrategy(), 0);
}

TEST_F(RVGitSubmoduleConfigTest, RenamesAndRemovesSections) {
    writeSubmodulesFile("[submodule \"a.b\"]\n\tpath = p\n");
    EXPECT_TRUE(manager->renameConfigSectionForSubmoduleWithName("a.b", "c/d.e", &error));
    EXPECT_EQ(submodulesFile(), "[submodule \"c/d.e\"]\n\tpath = p\n");
    EXPECT_TRUE(manager->removeConfigSectionForSubmoduleWithName("c/d.e", &error));
    EXPECT_EQ(submodulesFile(), "");
    EXPECT_FALSE(error);
}

TEST_F(RVGitSubmoduleConfigTest, WithoutTheSectionRenamingAndRemovingSucceed) {
    writeSubmodulesFile("[submodule \"library\"]\n\tpath = p\n");
    for (Manager* used : {manager.get(), localManager.get()}) {
        EXPECT_TRUE(used->renameConfigSectionForSubmoduleWithName("lib", "new", &error));
        EXPECT_TRUE(used->removeConfigSectionForSubmoduleWithName("lib", &error));
        EXPECT_TRUE(used->removeConfigSectionForSubmoduleWithName("lib", &error));
    }
    EXPECT_FALSE(error);
    EXPECT_EQ(submodulesFile(), "[submodule \"library\"]\n\tpath = p\n");
}

TEST_F(RVGitSubmoduleConfigTest, ANameIsNoPattern) {
    for (const char* name : {"c++", "a(b", "a[b", "x{2}", "a|b", "$a^", "a.*", "back\\slash",
                             "q\"q", "caf\u00e9", "a b", "[x] y", "]"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(manager->setPath("p", name, &error));
        ASSERT_NE(loader->submoduleConfigForSubmoduleWithName(name), nullptr);
        EXPECT_TRUE(manager->renameConfigSectionForSubmoduleWithName(name, "new", &error));
        EXPECT_EQ(loader->submoduleConfigForSubmoduleWithName(name), nullptr);
        EXPECT_TRUE(manager->renameConfigSectionForSubmoduleWithName("new", name, &error));
        EXPECT_TRUE(manager->removeConfigSectionForSubmoduleWithName(name, &error));
        EXPECT_THAT(loader->allSubmoduleConfigs(), Optional(IsEmpty()));
    }
}

TEST_F(RVGitSubmoduleConfigTest, ANameThatBeginsAnotherIsNotTheOther) {
    const std::string text = "[submodule \"three.js\"]\n\tpath = p\n\turl = u\n";
    writeSubmodulesFile(text);
    EXPECT_TRUE(manager->renameConfigSectionForSubmoduleWithName("three", "new", &error));
    EXPECT_TRUE(manager->removeConfigSectionForSubmoduleWithName("three", &error));
    EXPECT_FALSE(error);
    EXPECT_EQ(submodulesFile(), text);
}

TEST_F(RVGitSubmoduleConfigTest, ASectionThatGitDoesNotFindByItsNameMovesKeyByKey) {
    writeSubmodulesFile(
        "[submodule \"a]\"]\n\tpath = p q\n\turl = u\n\tx = 1\n\tx = 2\n"
        "[submodule \"a].b\"]\n\tpath = b\n");
    EXPECT_TRUE(manager->renameConfigSectionForSubmoduleWithName("a]", "a]", &error));
    EXPECT_TRUE(manager->renameConfigSectionForSubmoduleWithName("a]", "c", &error));
    EXPECT_EQ(gitInRepository({"config", "-f", ".gitmodules", "--list"}),
              "submodule.a].b.path=b\nsubmodule.c.path=p q\nsubmodule.c.url=u\n"
              "submodule.c.x=1\nsubmodule.c.x=2");
    EXPECT_TRUE(manager->removeConfigSectionForSubmoduleWithName("a].b", &error));
    EXPECT_TRUE(manager->removeConfigSectionForSubmoduleWithName("a].b", &error));
    EXPECT_EQ(loader->submoduleConfigForSubmoduleWithName("a].b"), nullptr);
}

TEST_F(RVGitSubmoduleConfigTest, ALinkInTheFilesPlaceIsNeverWrittenThrough) {
    const std::string target = writeFile("elsewhere", "[submodule \"a\"]\n\tpath = p\n");
    fs::create_symlink(target, repositoryPath() + "/.gitmodules");
    EXPECT_FALSE(manager->setURL("u", "a", &error));
    EXPECT_EQ(error->code(), RVGitConfigWriteError);
    EXPECT_EQ(error->userInfoString(RVGitConfigFileErrorKey), repositoryPath() + "/.gitmodules");
    EXPECT_FALSE(manager->unsetURLForSubmoduleWithName("a", &error));
    EXPECT_FALSE(manager->renameConfigSectionForSubmoduleWithName("a", "b", &error));
    EXPECT_FALSE(manager->removeConfigSectionForSubmoduleWithName("a", &error));
    EXPECT_EQ(readFile("elsewhere"), "[submodule \"a\"]\n\tpath = p\n");
}

TEST_F(RVGitSubmoduleConfigTest, ANewNameWithALineBreakDoesNotBreakTheFile) {
    writeSubmodulesFile("[submodule \"a\"]\n\tpath = p\n");
    EXPECT_FALSE(manager->renameConfigSectionForSubmoduleWithName("a", "b\nc", &error));
    EXPECT_TRUE(error);
    EXPECT_EQ(submodulesFile(), "[submodule \"a\"]\n\tpath = p\n");
}

}  // namespace
