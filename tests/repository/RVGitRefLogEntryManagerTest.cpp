#include "RVGit/repository/RVGitRefLogEntryManager.h"

#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/repository/RVGitRefLogEntry.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using std::nullopt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

class RVGitRefLogEntryManagerTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitRefLogEntryManager> manager() const {
        return RVGitRefLogEntryManager::refLogEntryManagerWithRepository(repository());
    }
    /// The one entry that git's answer makes.
    [[nodiscard]] std::shared_ptr<RVGitRefLogEntry> entryOfMessage(const std::string& message) {
        RVFakeGit fake = useFakeGit();
        fake.setAnswer({.standardOutput = std::string(40, 'a') + "\x1F\x1D\x1F" + message +
                                          "\x1F\x1D\x1F"
                                          "HEAD@{2024-01-01T10:00:00+01:00}"});
        auto entries = manager()->loadHEADRefLogEntries(nullopt);
        return entries && entries->size() == 1 ? entries->front() : nullptr;
    }
};

TEST_F(RVGitRefLogEntryManagerTest, LoadsEntries) {
    setDates("1700000000 +0100");
    std::string hash = makeCommit("First: of all");
    auto entries = manager()->loadRefLogEntriesForRefWithName("main", nullopt);
    ASSERT_NE(entries, nullopt);
    ASSERT_EQ(entries->size(), 1u);
    const auto& entry = *entries->front();
    EXPECT_EQ(entry.date(), RVDate(std::chrono::seconds(1700000000)));
    EXPECT_EQ(entry.revision(), hash);
    EXPECT_EQ(entry.subject(), "commit (initial): First: of all");
    EXPECT_EQ(entry.commandName(), "commit");
}

TEST_F(RVGitRefLogEntryManagerTest, TheCommandNameIsTheFirstWordWithoutAColon) {
    auto commandName = [&](const std::string& message) {
        auto entry = entryOfMessage(message);
        return entry ? entry->commandName() : "no entry";
    };
    EXPECT_EQ(commandName("commit: Message"), "commit");
    EXPECT_EQ(commandName("commit:"), "commit");
    EXPECT_EQ(commandName("commit::"), "commit:");
    EXPECT_EQ(commandName("pull origin: Fast-forward"), "pull");
    EXPECT_EQ(commandName("checkout"), "checkout");
    EXPECT_EQ(commandName("a:b c"), "a:b");
    EXPECT_EQ(commandName(""), "");
    EXPECT_EQ(commandName(" leading"), "");
}

TEST_F(RVGitRefLogEntryManagerTest, BothSpellingsOfUTCAreRead) {
    for (const std::string zone : {"Z", "+00:00"}) {
        RVFakeGit fake = useFakeGit();
        fake.setAnswer({.standardOutput = std::string(40, 'a') +
                                          "\x1F\x1D\x1Fx\x1F\x1D\x1F"
                                          "HEAD@{2023-11-14T22:13:20" +
                                          zone + "}"});
        auto entries = manager()->loadHEADRefLogEntries(nullopt);
        ASSERT_TRUE(entries && entries->size() == 1) << zone;
        EXPECT_EQ(entries->front()->date(), RVDate(std::chrono::seconds(1700000000))) << zone;
    }
}

TEST_F(RVGitRefLogEntryManagerTest, ADateThatCannotBeReadIsAbsent) {
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardOutput = std::string(40, 'a') + "\x1F\x1D\x1Fx\x1F\x1D\x1F"
                                                             "HEAD@{0}"});
    auto entries = manager()->loadHEADRefLogEntries(nullopt);
    ASSERT_TRUE(entries && entries->size() == 1);
    EXPECT_EQ(entries->front()->date(), nullopt);
}

TEST_F(RVGitRefLogEntryManagerTest, HeadIsAskedForByName) {
    makeCommit();
    auto recorder = useRecordingGit();
    auto entries = manager()->loadHEADRefLogEntries(nullopt);
    EXPECT_THAT(entries, Optional(testing::SizeIs(1)));
    EXPECT_EQ(lastArguments(recorder).back(), "HEAD");
}

TEST_F(RVGitRefLogEntryManagerTest, OptionsChooseEntries) {
    makeCommit("First");
    makeCommit("Second");
    auto entries = manager()->loadHEADRefLogEntries(RVOptions{{RVGitLogOptionOffset, 1}});
    ASSERT_TRUE(entries && entries->size() == 1);
    EXPECT_EQ(entries->front()->subject(), "commit (initial): First");
}

TEST_F(RVGitRefLogEntryManagerTest, CountsEntries) {
    makeCommit();
    makeCommit();
    std::optional<RVError> error;
    EXPECT_EQ(manager()->numberOfRefLogEntriesForRefWithName("HEAD", &error), 2);
    EXPECT_EQ(error, nullopt);
    EXPECT_EQ(manager()->numberOfRefLogEntriesForRefWithName("main"), 2);
}

// git would say of each signature what it thinks of it, between the entries.
TEST_F(RVGitRefLogEntryManagerTest, SignaturesAreNotShownWhateverIsConfigured) {
    makeCommit("First");
    const std::string hash = makeSignedCopyOfCommit("HEAD", repositoryPath());
    gitInRepository({"update-ref", "-m", "signed", "HEAD", hash});
    gitInRepository({"config", "log.showSignature", "true"});
    setEnvironmentVariable("GIT_CONFIG_PARAMETERS", "'log.showSignature=true'");
    auto error = std::optional<RVError>();
    const auto entries = manager()->loadHEADRefLogEntries(nullopt, &error);
    ASSERT_TRUE(entries) << error->userInfoString("RVGitOutputParserLineErrorKey").value_or("");
    ASSERT_EQ(entries->size(), 2u);
    EXPECT_EQ(entries->front()->revision(), hash);
    EXPECT_EQ(entries->front()->subject(), "signed");
    EXPECT_EQ(manager()->numberOfRefLogEntriesForRefWithName("HEAD"), 2);
}

TEST_F(RVGitRefLogEntryManagerTest, ARefWithoutAReflogHasNoEntries) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    EXPECT_EQ(manager()->numberOfRefLogEntriesForRefWithName("v1"), 0);
    EXPECT_THAT(manager()->loadRefLogEntriesForRefWithName("v1", nullopt), Optional(IsEmpty()));
}

TEST_F(RVGitRefLogEntryManagerTest, AFailureIsToldByThePlaceAlone) {
    std::optional<RVError> error;
    EXPECT_EQ(manager()->numberOfRefLogEntriesForRefWithName("none", &error), RVNotFound);
    EXPECT_NE(error, nullopt);
    EXPECT_EQ(manager()->numberOfRefLogEntriesForRefWithName("none"), 0);

    error.reset();
    EXPECT_EQ(manager()->loadRefLogEntriesForRefWithName("none", nullopt, &error), nullopt);
    EXPECT_NE(error, nullopt);
    EXPECT_THAT(manager()->loadRefLogEntriesForRefWithName("none", nullopt), Optional(IsEmpty()));
}

TEST_F(RVGitRefLogEntryManagerTest, WhatStoodInThePlaceDoesNotCount) {
    makeCommit();
    std::optional<RVError> error = RVError("domain", 1);
    EXPECT_EQ(manager()->numberOfRefLogEntriesForRefWithName("HEAD", &error), 1);
    EXPECT_EQ(error, nullopt);
}

TEST_F(RVGitRefLogEntryManagerTest, NeedsARepository) {
    EXPECT_EQ(manager()->repository(), repository());
    EXPECT_THROW(RVGitRefLogEntryManager(nullptr), RVInvalidParameterException);
}
