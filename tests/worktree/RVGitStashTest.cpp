#include "RVGit/worktree/RVGitStash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitCommitOutputParser.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

/// An error that must be gone, or replaced, afterwards.
std::optional<RVError> staleError() {
    return RVError("stale", 1);
}

class RVGitStashTest : public RVGitRepositoryTestCase {
protected:
    std::shared_ptr<RVGitStash> save(const std::optional<std::string>& message = std::nullopt,
                                     unsigned options = 0) {
        std::optional<RVError> error;
        auto stash = RVGitStash::saveStashFromWorkingTreeInRepository(repository(), message,
                                                                      options, &error);
        EXPECT_NE(stash, nullptr);
        EXPECT_FALSE(error.has_value());
        return stash;
    }
    std::vector<std::shared_ptr<RVGitStash>> stashes() {
        auto list = RVGitStash::allStashesForRepository(repository());
        EXPECT_TRUE(list.has_value());
        return list.value_or(std::vector<std::shared_ptr<RVGitStash>>());
    }
    std::vector<std::optional<std::string>> userMessages() {
        std::vector<std::optional<std::string>> messages;
        for (const auto& stash : stashes())
            messages.push_back(stash->userMessage());
        return messages;
    }
    /// Two stashes, "second" at 0 and "first" at 1.
    void makeTwoStashes() {
        makeCommit();
        for (const char* message : {"first", "second"}) {
            change(message);
            save(message);
        }
    }
    std::string revision(const std::string& name) const {
        return gitInRepository({"rev-parse", name});
    }
    std::string status() const { return gitInRepository({"status", "--short"}); }
};

TEST_F(RVGitStashTest, RequiresRepositoryAndRef) {
    const auto ref = RVGitRef::refWithRepository(repository(), "refs/stash@{0}", "abc");
    EXPECT_THROW((void)RVGitStash::stashWithRepository(nullptr, ref), RVInvalidParameterException);
    EXPECT_THROW((void)RVGitStash::stashWithRepository(repository(), nullptr),
                 RVInvalidParameterException);
    const auto stash = RVGitStash::stashWithRepository(repository(), ref);
    EXPECT_EQ(stash->repository(), repository());
    EXPECT_EQ(stash->ref(), ref);
    EXPECT_EQ(stash->creationDate(), std::nullopt);
    EXPECT_EQ(stash->message(), std::nullopt);
    EXPECT_EQ(stash->userMessage(), std::nullopt);
    EXPECT_EQ(stash->originBranch(), std::nullopt);
}

TEST_F(RVGitStashTest, MakesFullNames) {
    EXPECT_EQ(RVGitStash::makeFullRefNameWithStashIndex(0), "refs/stash@{0}");
    EXPECT_EQ(RVGitStash::makeFullRefNameWithStashIndex(12345), "refs/stash@{12345}");
}

TEST_F(RVGitStashTest, TheIndexIsThatOfTheFullName) {
    const auto indexOf = [&](std::string name) {
        return RVGitStash::stashWithRepository(
                   repository(),
                   RVGitRef::refWithRepository(repository(), std::move(name), std::nullopt))
            ->index();
    };
    EXPECT_EQ(indexOf("refs/stash@{0}"), 0u);
    EXPECT_EQ(indexOf("refs/stash@{4711}"), 4711u);
    EXPECT_EQ(indexOf("REFS/Stash@{3}"), 3u);
    for (const char* name : {"refs/stash", "stash@{0}", "refs/stash@{}", "refs/stash@{now}", ""})
        EXPECT_THROW((void)indexOf(name), RVInternalInconsistencyException) << name;
}

TEST_F(RVGitStashTest, ReadsTheMessageOfTheUser) {
    const struct {
        const char* commitMessage;
        std::optional<std::string> userMessage;
        std::optional<std::string> originBranch;
    } cases[] = {
        {"WIP on main: 0123abc Subject", std::nullopt, "main"},
        {"On main: Message", "Message", "main"},
        {"On feature/a b: \t Message: with: colons\n\nand lines \n",
         "Message: with: colons\n\nand lines", "feature/a b"},
        {"On (no branch): Message", "Message", "(no branch)"},
        {"On main:", "", "main"},
        {"On : x", "x", ""},
        {"WIP on : x", std::nullopt, ""},
        {"WIP on main", std::nullopt, std::nullopt},
        {"On main", std::nullopt, std::nullopt},
        {"no colon", std::nullopt, std::nullopt},
        {"", std::nullopt, std::nullopt},
        {":", "", std::nullopt},
        {"stored: by hand", "by hand", std::nullopt},
        {"wip on main: x", "x", std::nullopt},
        {"on main: x", "x", std::nullopt},
        {" On main: x", "x", std::nullopt},
    };
    for (const auto& [commitMessage, userMessage, originBranch] : cases) {
        EXPECT_EQ(RVGitStash::parseStashMessageFromCommitMessage(commitMessage), userMessage)
            << commitMessage;
        EXPECT_EQ(RVGitStash::parseOriginBranchFromCommitMessage(commitMessage), originBranch)
            << commitMessage;
    }
}

TEST_F(RVGitStashTest, ARepositoryWithoutStashesHasAnEmptyList) {
    auto error = staleError();
    EXPECT_THAT(RVGitStash::allStashesForRepository(repository()), Optional(IsEmpty()));
    makeCommit();
    EXPECT_THAT(RVGitStash::allStashesForRepository(repository(), &error), Optional(IsEmpty()));
    error.reset();
    EXPECT_EQ(RVGitStash::stashAtIndex(0, repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitStashTest, AListThatFailsIsAbsent) {
    std::filesystem::remove_all(repositoryPath() + "/.git");
    std::optional<RVError> error;
    EXPECT_EQ(RVGitStash::allStashesForRepository(repository(), &error), std::nullopt);
    EXPECT_TRUE(error.has_value());
    auto place = staleError();
    EXPECT_EQ(RVGitStash::stashForRefName("stash@{0}", repository(), &place), nullptr);
    EXPECT_EQ(place, error);
    place = staleError();
    EXPECT_EQ(RVGitStash::stashAtIndex(0, repository(), &place), nullptr);
    EXPECT_EQ(place, error);
    EXPECT_FALSE(RVGitStash::deleteStashAtIndex(0, repository(), &place));
    EXPECT_EQ(place, error);
    EXPECT_FALSE(RVGitStash::applyStashAtIndex(0, repository(), false, &place));
    EXPECT_EQ(place, error);
}

TEST_F(RVGitStashTest, TellsAllOfAStash) {
    const std::string head = makeCommit("Subject");
    change();
    setDates("1600000000 +0200");
    const auto stash = save("My: message");
    ASSERT_NE(stash, nullptr);
    EXPECT_EQ(stash->repository(), repository());
    EXPECT_EQ(stash->fullRefName(), "refs/stash@{0}");
    EXPECT_EQ(stash->refName(), "stash@{0}");
    EXPECT_TRUE(stash->ref()->isStashRefType());
    EXPECT_EQ(stash->index(), 0u);
    EXPECT_EQ(stash->commitHash(), revision("stash@{0}"));
    EXPECT_EQ(stash->creationDate(), RVDate(std::chrono::seconds(1600000000)));
    EXPECT_EQ(stash->message(), "On main: My: message");
    EXPECT_EQ(stash->userMessage(), "My: message");
    EXPECT_EQ(stash->originBranch(), "main");
    EXPECT_EQ(stash->originCommitHash(), head);
    EXPECT_EQ(stash->indexCommitHash(), revision("stash@{0}^2"));
    EXPECT_EQ(stash->untrackedFilesCommitHash(), std::nullopt);
    EXPECT_EQ(readFile("repository/file.txt"), "1");
}

TEST_F(RVGitStashTest, TheCommitComesWithTheListing) {
    makeTwoStashes();
    const auto recorder = useRecordingGit();
    const auto list = stashes();
    ASSERT_THAT(list, SizeIs(2));
    for (const auto& stash : list) {
        ASSERT_NE(stash->commit(), nullptr);
        EXPECT_EQ(stash->commit(), stash->ref()->commit());
        EXPECT_EQ(stash->commit()->commitHash(), stash->commitHash());
        EXPECT_EQ(stash->commit()->message(), stash->message());
        EXPECT_TRUE(stash->commit()->isMergeCommit());
        EXPECT_EQ(stash->commit()->repository(), repository());
        EXPECT_NE(stash->originCommitHash(), std::nullopt);
    }
    EXPECT_EQ(list[1]->index(), 1u);
    // Of older gits each is asked for.
    EXPECT_THAT(recorder.invocations(), SizeIs(isTestedGitAtLeast("2.14.2") ? 1 : 3));
}

TEST_F(RVGitStashTest, AGitWhoseListsTellOtherParentsIsAskedForTheCommitItself) {
    makeTwoStashes();
    const std::string parents = gitInRepository({"log", "-1", "--format=%P", "stash@{0}"});
    std::string output =
        git({"stash", "list", "--no-color", "-z",
             "--pretty=format:" + RVGitCommitOutputParser::gitStashListPrettyFormatString()},
            repositoryPath());
    const std::string next = revision("stash@{1}");
    if (const auto position = output.find(parents); position != std::string::npos)
        output.replace(position, parents.size(), next);
    RVFakeGit fake = fakeGit();
    fake.setAnswer("list", {.standardOutput = output});
    fake.passOtherCallsOn();
    for (const auto& [version, origin] :
         {std::pair("2.14.1", revision("HEAD")), std::pair("2.14.2", next)}) {
        fake.setVersion(std::string("git version ") + version);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        const auto list = stashes();
        ASSERT_THAT(list, SizeIs(2));
        EXPECT_EQ(list[0]->originCommitHash(), origin) << version;
    }
}

TEST_F(RVGitStashTest, WithoutACommitThereAreNoParents) {
    const auto stash = RVGitStash::stashWithRepository(
        repository(), RVGitRef::refWithRepository(repository(), "refs/stash@{0}", std::nullopt));
    EXPECT_EQ(stash->commit(), nullptr);
    EXPECT_EQ(stash->commitHash(), std::nullopt);
    EXPECT_EQ(stash->originCommitHash(), std::nullopt);
    EXPECT_EQ(stash->indexCommitHash(), std::nullopt);
    EXPECT_EQ(stash->untrackedFilesCommitHash(), std::nullopt);
}

TEST_F(RVGitStashTest, TheParentsAreLoadedWhereOnlyTheHashIsKnown) {
    const std::string head = makeCommit();
    change();
    save();
    const auto stash = RVGitStash::stashWithRepository(
        repository(),
        RVGitRef::refWithRepository(repository(), "refs/stash@{0}", revision("stash@{0}")));
    EXPECT_EQ(stash->originCommitHash(), head);
    EXPECT_EQ(stash->indexCommitHash(), revision("stash@{0}^2"));
}

TEST_F(RVGitStashTest, WithoutAMessageGitMakesOne) {
    makeCommit("Subject: colon");
    change();
    const auto stash = save();
    ASSERT_NE(stash, nullptr);
    EXPECT_EQ(stash->message(),
              "WIP on main: " + revision("HEAD").substr(0, 7) + " Subject: colon");
    EXPECT_EQ(stash->userMessage(), std::nullopt);
    EXPECT_EQ(stash->originBranch(), "main");
}

TEST_F(RVGitStashTest, MessagesOfAnyShapeComeBack) {
    makeCommit();
    const std::string messages[] = {"-m",
                                    "a: b: c",
                                    ": colon ahead",
                                    "WIP on elsewhere: no",
                                    "first line\n\nthird line: end",
                                    "quotes \" ' $HOME `x` \\ # tab\t%H",
                                    "\u00e9 e\u0301 日本",
                                    std::string(10'000, 'x')};
    for (const std::string& message : messages) {
        change(message);
        const auto stash = save(message);
        ASSERT_NE(stash, nullptr);
        EXPECT_EQ(stash->message(), "On main: " + message);
        EXPECT_EQ(stash->userMessage(), message);
        EXPECT_EQ(stash->originBranch(), "main");
    }
    EXPECT_THAT(stashes(), SizeIs(std::size(messages)));
}

TEST_F(RVGitStashTest, ADetachedHeadHasNoBranch) {
    makeCommit();
    gitInRepository({"checkout", "--detach"});
    change();
    EXPECT_EQ(save("Message")->originBranch(), "(no branch)");
}

TEST_F(RVGitStashTest, AStoredMessageNeedNotBeThatOfTheCommit) {
    makeCommit();
    change();
    // "git stash store" takes such a commit no longer.
    gitInRepository({"update-ref", "--create-reflog", "-m", "shown: by git", "refs/stash", "HEAD"});
    const auto list = stashes();
    ASSERT_THAT(list, SizeIs(1));
    EXPECT_EQ(list[0]->message(), "Message");
    EXPECT_EQ(list[0]->userMessage(), std::nullopt);
    EXPECT_EQ(list[0]->originBranch(), std::nullopt);
    EXPECT_EQ(list[0]->originCommitHash(), std::nullopt);
}

TEST_F(RVGitStashTest, TheSaveOptionsAreBitsOneAndTwo) {
    makeCommit();
    const auto recorder = useRecordingGit();
    const std::vector<std::string> expected[] = {
        {"stash", "push"},
        {"stash", "push", "--keep-index"},
        {"stash", "push", "--include-untracked"},
        {"stash", "push", "--include-untracked", "--keep-index"}};
    for (unsigned options = 0; options < 4; ++options) {
        (void)RVGitStash::saveStashFromWorkingTreeInRepository(repository(), std::nullopt, options);
        EXPECT_EQ(lastArguments(recorder), expected[options]);
    }
}

TEST_F(RVGitStashTest, SavingNothingFailsWith2701AndAddsNoStash) {
    makeCommit();
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitStash::saveStashFromWorkingTreeInRepository(repository(), "m", 0, error);
        },
        failsWith(RVGitSaveStashNoChangesError));
    EXPECT_THAT(stashes(), IsEmpty());
}

TEST_F(RVGitStashTest, AMessageThatSaysThereAreNoChangesFailsButIsSaved) {
    makeCommit();
    change();
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitStash::saveStashFromWorkingTreeInRepository(
                repository(), "no local changes to save", 0, error);
        },
        failsWith(RVGitSaveStashNoChangesError));
    EXPECT_EQ(git({"show", "stash@{0}:file.txt"}, repositoryPath()), "changed\n");
}

TEST_F(RVGitStashTest, ASaveWhoseStashIsGoneGivesNoneAndNoError) {
    useFakeGit().setAnswer({});
    auto error = staleError();
    EXPECT_EQ(RVGitStash::saveStashFromWorkingTreeInRepository(repository(), "m", 0, &error),
              nullptr);
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitStashTest, SavingWithoutACommitFailsWith2700) {
    change();
    gitInRepository({"add", "file.txt"});
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitStash::saveStashFromWorkingTreeInRepository(repository(), "m", 0, error);
        },
        failsWith(RVGitSaveStashInitialCommitError));
    EXPECT_EQ(readFile("repository/file.txt"), "changed\n");
}

TEST_F(RVGitStashTest, CreatingAStashChangesNothing) {
    makeCommit();
    change();
    const auto hash = RVGitStash::createStashFromWorkingTreeInRepository(repository(), "Message");
    ASSERT_TRUE(hash.has_value());
    EXPECT_THAT(*hash, testing::MatchesRegex("[0-9a-f]{40}\n"));
    EXPECT_EQ(gitInRepository({"show", hash->substr(0, 40) + ":file.txt"}), "changed");
    EXPECT_THAT(stashes(), IsEmpty());
    EXPECT_EQ(readFile("repository/file.txt"), "changed\n");
}

TEST_F(RVGitStashTest, CreatingAStashWithoutChangesGivesNoHash) {
    makeCommit();
    EXPECT_EQ(
        RVGitStash::createStashFromWorkingTreeInRepository(repository(), std::nullopt).value_or(""),
        "");
    useFakeGit().setAnswer({.exitCode = 1});
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitStash::createStashFromWorkingTreeInRepository(repository(), std::nullopt,
                                                                      error);
        },
        failsWith(RVGitRVGitGenericError));
}

TEST_F(RVGitStashTest, FindsAStashByItsNameWithAndWithoutPrefix) {
    makeTwoStashes();
    for (const char* name : {"stash@{1}", "refs/stash@{1}"}) {
        const auto stash = RVGitStash::stashForRefName(name, repository());
        ASSERT_NE(stash, nullptr) << name;
        EXPECT_EQ(stash->userMessage(), "first");
        EXPECT_EQ(stash->index(), 1u);
    }
    EXPECT_EQ(RVGitStash::stashAtIndex(1, repository())->userMessage(), "first");
    for (const char* name : {"stash", "stash@{2}", "refs/stash", "", "HEAD", "1", "stash@{01}",
                             "refs/refs/stash@{0}"}) {
        auto error = staleError();
        EXPECT_EQ(RVGitStash::stashForRefName(name, repository(), &error), nullptr) << name;
        EXPECT_FALSE(error.has_value()) << name;
    }
    auto error = staleError();
    EXPECT_EQ(RVGitStash::stashAtIndex(2, repository(), &error), nullptr);
    EXPECT_FALSE(error.has_value());
    EXPECT_EQ(RVGitStash::stashAtIndex(~std::uint64_t(0), repository()), nullptr);
}

TEST_F(RVGitStashTest, DeletesByIndexAndByName) {
    makeTwoStashes();
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(RVGitStash::deleteStashAtIndex(1, repository()));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("stash", "drop", "stash@{1}"));
    EXPECT_THAT(userMessages(), ElementsAre("second"));
    EXPECT_TRUE(RVGitStash::deleteStashWithRefName("refs/stash@{0}", repository()));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("stash", "drop", "stash@{0}"));
    EXPECT_THAT(userMessages(), IsEmpty());
}

TEST_F(RVGitStashTest, DeletingWhatIsNotThereRunsNothing) {
    makeTwoStashes();
    const auto recorder = useRecordingGit();
    auto error = staleError();
    EXPECT_FALSE(RVGitStash::deleteStashAtIndex(2, repository(), &error));
    EXPECT_FALSE(error.has_value());
    EXPECT_FALSE(RVGitStash::deleteStashWithRefName("stash", repository(), &error));
    EXPECT_EQ(lastArguments(recorder)[1], "list");
    EXPECT_THAT(recorder.invocations(), SizeIs(2));
    EXPECT_THAT(stashes(), SizeIs(2));
}

TEST_F(RVGitStashTest, AppliesByIndexAndByTheNameAsGiven) {
    makeTwoStashes();
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(RVGitStash::applyStashAtIndex(1, repository(), false));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("stash", "apply", "refs/stash@{1}"));
    EXPECT_EQ(readFile("repository/file.txt"), "first");
    EXPECT_THAT(stashes(), SizeIs(2));
    gitInRepository({"reset", "--hard"});
    EXPECT_TRUE(RVGitStash::applyStashWithRefName("stash@{0}", repository(), true));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("stash", "pop", "stash@{0}"));
    EXPECT_EQ(readFile("repository/file.txt"), "second");
    EXPECT_THAT(userMessages(), ElementsAre("first"));
}

TEST_F(RVGitStashTest, APopByIndexTakesTheFullName) {
    makeTwoStashes();
    EXPECT_TRUE(RVGitStash::applyStashAtIndex(1, repository(), true));
    EXPECT_EQ(readFile("repository/file.txt"), "first");
    EXPECT_THAT(userMessages(), ElementsAre("second"));
}

TEST_F(RVGitStashTest, ApplyingPastTheEndRunsNoApply) {
    makeTwoStashes();
    const auto recorder = useRecordingGit();
    auto error = staleError();
    EXPECT_FALSE(RVGitStash::applyStashAtIndex(2, repository(), false, &error));
    EXPECT_FALSE(error.has_value());
    EXPECT_EQ(lastArguments(recorder)[1], "list");
    EXPECT_THAT(recorder.invocations(), SizeIs(1));
}

TEST_F(RVGitStashTest, ConflictsKeepTheStash) {
    for (const bool deletingStash : {false, true}) {
        makeCommit();
        change();
        const auto hash = save()->commitHash();
        makeCommit();
        EXPECT_THAT(
            [&](RVErrorPlace error) {
                return RVGitStash::applyStashAtIndex(0, repository(), deletingStash, error);
            },
            failsWith(RVGitApplyStashMergeConflictsError));
        EXPECT_EQ(stashes().front()->commitHash(), hash);
        EXPECT_EQ(status(), "UU file.txt");
        gitInRepository({"reset", "--hard"});
        gitInRepository({"stash", "clear"});
    }
}

TEST_F(RVGitStashTest, ALockedIndexFailsAndLeavesAllAsItIs) {
    makeCommit();
    change();
    writeFile("repository/new", "new");
    const std::string lock = writeFile("repository/.git/index.lock", "");
    // Older gits pass on the words that stand for a lock: 2.23.4 does, 2.34.8 does not.
    const auto codeOfLock =
        isTestedGitAtLeast("2.34") ? RVGitRVGitGenericError : RVGitIndexLockError;
    std::optional<RVError> error;
    for (unsigned options = 0; options < 4; ++options) {
        error = staleError();
        EXPECT_EQ(
            RVGitStash::saveStashFromWorkingTreeInRepository(repository(), "m", options, &error),
            nullptr);
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->code(), codeOfLock);
        EXPECT_EQ(error->domain(), RVGitErrorDomain);
        EXPECT_EQ(status(), " M file.txt\n?? new");
        EXPECT_EQ(readFile("repository/file.txt"), "changed\n");
        EXPECT_THAT(stashes(), IsEmpty());
    }
    std::filesystem::remove(lock);
    const auto stash = save("m", RVGitStashSaveOptionIncludesUntrackedFiles);
    ASSERT_NE(stash, nullptr);
    for (const bool deletingStash : {false, true}) {
        writeFile(lock, "");
        error = staleError();
        EXPECT_FALSE(RVGitStash::applyStashAtIndex(0, repository(), deletingStash, &error));
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->code(), codeOfLock);
        EXPECT_EQ(status(), "");
        EXPECT_EQ(readFile("repository/file.txt"), "1");
        EXPECT_EQ(revision("stash@{0}"), stash->commitHash());
        std::filesystem::remove(lock);
        EXPECT_TRUE(RVGitStash::applyStashAtIndex(0, repository(), deletingStash));
        EXPECT_EQ(readFile("repository/file.txt"), "changed\n");
        EXPECT_EQ(readFile("repository/new"), "new");
        gitInRepository({"reset", "--hard"});
        gitInRepository({"clean", "-f"});
    }
    EXPECT_THAT(stashes(), IsEmpty());
}

TEST_F(RVGitStashTest, ConfigurationOfTheUserChangesNothing) {
    makeCommit("Sujet é");
    writeFile("repository/.mailmap", "Other <other@example.org> <marie@example.org>\n");
    change();
    save("Été");
    change("more\n");
    save();
    struct Fields {
        std::optional<std::string> hash, message, userMessage, originBranch, origin, index;
        bool operator==(const Fields&) const = default;
    };
    const auto listed = [&] {
        std::vector<Fields> all;
        for (const auto& stash : stashes())
            all.push_back({stash->commitHash(), stash->message(), stash->userMessage(),
                           stash->originBranch(), stash->originCommitHash(),
                           stash->indexCommitHash()});
        return all;
    };
    const auto plain = listed();
    ASSERT_THAT(plain, SizeIs(2));
    EXPECT_EQ(plain[1].userMessage, "Été");
    const std::pair<const char*, const char*> settings[] = {
        {"log.showSignature", "true"},
        {"log.mailmap", "true"},
        {"log.date", "relative"},
        {"log.decorate", "full"},
        {"log.follow", "true"},
        {"log.abbrevCommit", "true"},
        {"format.pretty", "oneline"},
        {"color.ui", "always"},
        {"color.diff", "always"},
        {"stash.showPatch", "true"},
        {"stash.showStat", "false"},
        {"stash.showIncludeUntracked", "true"},
        {"core.quotePath", "false"},
        {"core.pager", "false"},
        {"pager.stash", "false"},
        {"commit.gpgSign", "true"},
        {"i18n.logOutputEncoding", "ISO-8859-1"}};
    for (const auto& [key, value] : settings) {
        gitInRepository({"config", key, value});
        EXPECT_EQ(listed(), plain) << key;
    }
    change("third\n");
    EXPECT_EQ(save("Naïve")->userMessage(), "Naïve");
    EXPECT_TRUE(RVGitStash::applyStashAtIndex(0, repository(), true));
    EXPECT_EQ(readFile("repository/file.txt"), "third\n");
    gitInRepository({"reset", "--hard"});
    EXPECT_EQ(listed(), plain);
}

TEST_F(RVGitStashTest, AMessageIsUTF8WhateverEncodingOfCommitsIsConfigured) {
    makeCommit();
    change();
    gitInRepository({"config", "i18n.commitEncoding", "ISO-8859-1"});
    const auto created = RVGitStash::createStashFromWorkingTreeInRepository(repository(), "Été");
    ASSERT_TRUE(created);
    EXPECT_EQ(save("Été")->userMessage(), "Été");
    gitInRepository({"config", "--unset", "i18n.commitEncoding"});
    EXPECT_EQ(stashes().at(0)->userMessage(), "Été");
    const std::string hash = created->substr(0, created->find('\n'));
    for (const std::string& revision : {hash, std::string("stash@{0}")})
        EXPECT_EQ(gitInRepository({"log", "-1", "--format=%e|%s", revision, "--"}),
                  "|On main: Été");
}

TEST_F(RVGitStashTest, AListOfManyStashesIsInOrder) {
    RVGIT_TEST_NEEDS_REF_FILES("five hundred are written into the file of the reflog");
    makeCommit();
    change();
    const std::string hash = gitInRepository({"stash", "create"});
    gitInRepository({"stash", "store", "-m", "first", hash});
    const std::string reflogEntry = readFile("repository/.git/logs/refs/stash");
    std::string reflog;
    for (int count = 0; count < 500; ++count)
        reflog += reflogEntry;
    writeFile("repository/.git/logs/refs/stash", reflog);
    const auto list = stashes();
    ASSERT_THAT(list, SizeIs(500));
    for (std::size_t index = 0; index < list.size(); ++index)
        EXPECT_EQ(list[index]->index(), index);
    EXPECT_EQ(RVGitStash::stashForRefName("stash@{499}", repository())->index(), 499u);
}

}  // namespace
