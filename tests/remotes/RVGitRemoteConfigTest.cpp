#include "RVGit/remotes/RVGitRemoteConfig.h"

#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using Strings = std::vector<std::string>;

class RVGitRemoteConfigTest : public RVGitRepositoryTestCase {
protected:
    void config(const std::string& key, const std::string& value) {
        gitInRepository({"config", "--add", key, value});
    }
    std::shared_ptr<RVGitRemoteConfig> configNamed(const std::string& name) {
        return RVGitRemoteConfigLoader::loaderWithRepository(repository())
            ->remoteConfigForRemoteWithName(name);
    }
};

TEST_F(RVGitRemoteConfigTest, ReadsOneRecordForEachSection) {
    config("remote.b.url", "one");
    config("remote.a.c.pushurl", "two");
    config("svn-remote.b.fetch", "trunk:refs/remotes/b/trunk");
    config("remotes.group", "a b");
    config("branch.x.remote", "b");
    const auto configs = RVGitRemoteConfig::allRemoteConfigsForRepository(repository());
    ASSERT_TRUE(configs.has_value());
    Strings names;
    for (const auto& record : *configs)
        names.push_back(record->name());
    EXPECT_THAT(names, ElementsAre("a.c", "b"));
    const auto byName =
        RVGitRemoteConfig::allRemoteConfigsByRemoteNameForRepository(repository()).value();
    EXPECT_EQ(byName.at("a.c")->pushURL(), "two");
    // A plain and a Subversion section of one name are one record.
    EXPECT_EQ(byName.at("b")->URL(), "one");
    EXPECT_EQ(byName.at("b")->fetchRefSpecs(), Strings{"trunk:refs/remotes/b/trunk"});
    EXPECT_EQ(byName.at("b")->repository(), repository());
}

TEST_F(RVGitRemoteConfigTest, WithoutASectionThereIsNone) {
    EXPECT_TRUE(RVGitRemoteConfig::allRemoteConfigsForRepository(repository()).value().empty());
}

TEST_F(RVGitRemoteConfigTest, OfRepeatedKeysTheFirstOrTheLastValueCounts) {
    for (const char* value : {"one", "two"}) {
        config("remote.a.url", value);
        config("remote.a.pushurl", value);
        config("remote.a.push", value);
    }
    config("remote.a.skipFetchAll", "true");
    config("remote.a.skipFetchAll", "false");
    config("remote.a.skipDefaultUpdate", "no");
    config("remote.a.skipDefaultUpdate", "true");
    const auto record = configNamed("a");
    ASSERT_TRUE(record);
    EXPECT_EQ(record->URL(), "one");
    EXPECT_EQ(record->pushURL(), "one");
    EXPECT_EQ(record->pushRefSpecs(), (Strings{"one", "two"}));
    EXPECT_EQ(record->fetchRefSpecs(), std::nullopt);
    EXPECT_FALSE(record->skipsFetchAll());
    EXPECT_TRUE(record->skipsDefaultUpdate());
    config("remote.a.skipDefaultUpdate", "TRUE");
    EXPECT_FALSE(configNamed("a")->skipsDefaultUpdate());
}

TEST_F(RVGitRemoteConfigTest, KeysAreFoundInAnyCase) {
    config("remote.a.tagOpt", "--no-tags");
    config("remote.a.push", "x");
    config("remote.a.push", "y");
    const auto record = configNamed("a");
    EXPECT_EQ(record->valueForConfigKey("TAGOPT"), RVValue("--no-tags"));
    EXPECT_EQ(record->lastValueForConfigKey("TagOpt"), "--no-tags");
    EXPECT_EQ(record->valueForConfigKey("push"), RVValue(Strings{"x", "y"}));
    EXPECT_EQ(record->lastValueForConfigKey("PUSH"), "y");
    EXPECT_EQ(record->valueForConfigKey("url"), std::nullopt);
    EXPECT_EQ(record->lastValueForConfigKey("url"), std::nullopt);
    EXPECT_EQ(record->dictionaryRepresentation(), record->gitConfigOptions());
    EXPECT_EQ(record->gitConfigOptions().size(), 2U);
}

TEST_F(RVGitRemoteConfigTest, AnUnknownNameIsNoError) {
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_EQ(RVGitRemoteConfigLoader(repository()).remoteConfigForRemoteWithName("x", &error),
              nullptr);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitRemoteConfigTest, AFailureIsReported) {
    auto fake = useFakeGit();
    fake.setAnswer(
        {.standardError = "fatal: bad config line 1 in file .git/config\n", .exitCode = 128});
    std::optional<RVError> error;
    EXPECT_FALSE(
        RVGitRemoteConfig::allRemoteConfigsForRepository(repository(), &error).has_value());
    EXPECT_TRUE(error.has_value());
    EXPECT_FALSE(RVGitRemoteConfig::allRemoteConfigsByRemoteNameForRepository(repository(), &error)
                     .has_value());
}

}  // namespace
