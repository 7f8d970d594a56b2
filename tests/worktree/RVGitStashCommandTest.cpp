#include "RVGit/worktree/RVGitStashCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitError.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Command = RVGitStashCommand;

class RVGitStashCommandTest : public RVGitRepositoryTestCase {
protected:
    std::string stashList() const { return gitInRepository({"stash", "list"}); }
};

class RVGitStashCommandLineTest : public RVGitStashCommandTest {
protected:
    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitStashCommandLineTest, ListsUnlessAFormIsChosen) {
    EXPECT_THAT(argumentsOf(recorder_, *Command::gitStashCommandWithRepository(repository())),
                ElementsAre("stash", "list", "--no-color", "-z",
                            "--pretty=format:%H%x1f%x1d%x1f%T%x1f%x1d%x1f%P%x1f%x1d%x1f%an%x1f%x1d"
                            "%x1f%at%x1f%x1d%x1f%ae%x1f%x1d%x1f%cn%x1f%x1d%x1f%ct%x1f%x1d%x1f%ce"
                            "%x1f%x1d%x1f%d%x1f%x1d%x1f%B"));
}

TEST_F(RVGitStashCommandLineTest, Saves) {
    const auto command = Command::gitSaveStashCommandWithRepository(repository(), std::nullopt);
    EXPECT_TRUE(command->savesStash());
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "push"));
}

TEST_F(RVGitStashCommandLineTest, SavesWithAMessage) {
    const auto command = Command::gitSaveStashCommandWithRepository(repository(), "-a: b\n\nc");
    EXPECT_EQ(command->message(), "-a: b\n\nc");
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "push", "-m", "-a: b\n\nc"));
}

TEST_F(RVGitStashCommandLineTest, AnEmptyMessageIsAMessage) {
    EXPECT_THAT(
        argumentsOf(recorder_, *Command::gitSaveStashCommandWithRepository(repository(), "")),
        ElementsAre("stash", "push", "-m", ""));
}

TEST_F(RVGitStashCommandLineTest, SavesUntrackedFiles) {
    const auto command = Command::gitSaveStashCommandWithRepository(repository(), std::nullopt);
    command->setIncludesUntrackedFiles(true);
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("stash", "push", "--include-untracked"));
}

TEST_F(RVGitStashCommandLineTest, SavesAndKeepsTheIndex) {
    const auto command = Command::gitSaveStashCommandWithRepository(repository(), "Message");
    command->setKeepsIndex(true);
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("stash", "push", "--keep-index", "-m", "Message"));
}

TEST_F(RVGitStashCommandLineTest, SavesSomePaths) {
    const auto command = Command::gitSaveStashCommandWithRepository(repository(), std::nullopt);
    command->setFilePaths({"-a", "b c"});
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "push", "--", "-a", "b c"));
}

TEST_F(RVGitStashCommandLineTest, OptionsOfASaveStandInAFixedOrder) {
    const auto command = Command::gitSaveStashCommandWithRepository(repository(), "Message");
    command->setFilePaths({"a"});
    command->setKeepsIndex(true);
    command->setIncludesUntrackedFiles(true);
    command->setRefName("name");
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("stash", "push", "--include-untracked", "--keep-index", "-m", "Message",
                            "--", "a", "name"));
}

TEST_F(RVGitStashCommandLineTest, Applies) {
    const auto command =
        Command::gitApplyStashCommandWithRepository(repository(), "stash@{1}", false);
    EXPECT_TRUE(command->appliesStash());
    EXPECT_FALSE(command->deletesStash());
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "apply", "stash@{1}"));
}

TEST_F(RVGitStashCommandLineTest, ApplyingAndDeletingIsAPop) {
    const auto command =
        Command::gitApplyStashCommandWithRepository(repository(), std::nullopt, true);
    EXPECT_TRUE(command->deletesStash());
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "pop"));
}

TEST_F(RVGitStashCommandLineTest, RestoresTheIndex) {
    const auto command =
        Command::gitApplyStashCommandWithRepository(repository(), "stash@{0}", false);
    command->setRestoresIndex(true);
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("stash", "apply", "--index", "stash@{0}"));
}

TEST_F(RVGitStashCommandLineTest, Deletes) {
    const auto command = Command::gitDeleteStashCommandWithRepository(repository(), "stash@{1}");
    EXPECT_TRUE(command->deletesStash());
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "drop", "stash@{1}"));
}

TEST_F(RVGitStashCommandLineTest, Stores) {
    const auto command =
        Command::gitStoreStashCommandWithRepository(repository(), std::nullopt, "abc");
    EXPECT_TRUE(command->storesStash());
    EXPECT_EQ(command->refName(), "abc");
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "store", "abc"));
}

TEST_F(RVGitStashCommandLineTest, StoresWithAMessage) {
    EXPECT_THAT(argumentsOf(recorder_, *Command::gitStoreStashCommandWithRepository(
                                           repository(), "Message", "abc")),
                ElementsAre("stash", "store", "-m", "Message", "abc"));
}

TEST_F(RVGitStashCommandLineTest, Shows) {
    const auto command = Command::gitShowStashCommandWithRepository(repository(), "stash@{0}");
    EXPECT_TRUE(command->showsStash());
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "show", "stash@{0}"));
}

TEST_F(RVGitStashCommandLineTest, ShowsAPatch) {
    const auto command = Command::gitShowStashCommandWithRepository(repository(), "stash@{0}");
    command->setCreatesPatch(true);
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "show", "-p", "stash@{0}"));
}

TEST_F(RVGitStashCommandLineTest, Creates) {
    const auto command = Command::gitCreateStashCommandWithRepository(repository(), std::nullopt);
    EXPECT_TRUE(command->createsStash());
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("stash", "create"));
}

TEST_F(RVGitStashCommandLineTest, CreatesWithAMessage) {
    EXPECT_THAT(argumentsOf(recorder_, *Command::gitCreateStashCommandWithRepository(repository(),
                                                                                     "a message")),
                ElementsAre("stash", "create", "a message"));
}

TEST_F(RVGitStashCommandLineTest, OfSeveralFormsTheFirstCounts) {
    const struct {
        void (Command::*choose)(bool);
        const char* subCommand;
    } forms[] = {{&Command::setCreatesStash, "create"}, {&Command::setShowsStash, "show"},
                 {&Command::setStoresStash, "store"},   {&Command::setDeletesStash, "drop"},
                 {&Command::setAppliesStash, "pop"},    {&Command::setSavesStash, "push"}};
    for (std::size_t count = 1; count <= std::size(forms); ++count) {
        const auto command = std::make_shared<Command>(repository());
        for (std::size_t index = 0; index < count; ++index)
            (*command.*forms[index].choose)(true);
        EXPECT_THAT(argumentsOf(recorder_, *command),
                    ElementsAre("stash", forms[count - 1].subCommand));
    }
}

TEST_F(RVGitStashCommandTest, BelowGit2132ASaveIsASave) {
    makeCommit();
    const struct {
        const char* version;
        std::vector<std::string> arguments;
    } cases[] = {{"2.13.1", {"save", "--keep-index", "Message"}},
                 {"2.9", {"save", "--keep-index", "Message"}},
                 {"2.13.2", {"push", "--keep-index", "-m", "Message"}},
                 {"2.14", {"push", "--keep-index", "-m", "Message"}},
                 {"10.0", {"push", "--keep-index", "-m", "Message"}}};
    for (const auto& [version, arguments] : cases) {
        auto fake = useFakeGit();
        fake.setVersion(std::string("git version ") + version);
        fake.passOtherCallsOn();
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
        change(version);
        gitInRepository({"add", "file.txt"});
        const auto command = Command::gitSaveStashCommandWithRepository(repository(), "Message");
        command->setKeepsIndex(true);
        EXPECT_TRUE(command->run()) << version;
        auto last = command->arguments();
        last.erase(last.begin(), std::find(last.begin(), last.end(), "stash") + 1);
        EXPECT_EQ(last, arguments) << version;
        EXPECT_THAT(stashList(), testing::StartsWith("stash@{0}: On main: Message")) << version;
        gitInRepository({"reset", "--hard"});
    }
}

TEST_F(RVGitStashCommandTest, RequiresARepository) {
    EXPECT_THROW((void)Command::gitStashCommandWithRepository(nullptr),
                 RVInvalidParameterException);
}

TEST_F(RVGitStashCommandTest, ListsTheNewestFirst) {
    makeCommit();
    for (const char* message : {"first", "second"}) {
        change(message);
        gitInRepository({"stash", "push", "-m", message});
    }
    const auto command = Command::gitStashCommandWithRepository(repository());
    ASSERT_TRUE(command->run());
    ASSERT_THAT(command->stashes(), SizeIs(2));
    EXPECT_EQ(command->stashes()[0].message(), "On main: second");
    EXPECT_EQ(command->stashes()[0].commitHash(), gitInRepository({"rev-parse", "stash@{0}"}));
    EXPECT_EQ(command->stashes()[1].message(), "On main: first");
    EXPECT_EQ(command->commitHash(), std::nullopt);
}

TEST_F(RVGitStashCommandTest, CreatesGivesTheHashWithItsNewline) {
    makeCommit();
    change();
    const auto command = Command::gitCreateStashCommandWithRepository(repository(), "On b: m");
    ASSERT_TRUE(command->run());
    ASSERT_TRUE(command->commitHash().has_value());
    EXPECT_THAT(*command->commitHash(), SizeIs(41));
    EXPECT_EQ(command->commitHash()->back(), '\n');
    const std::string hash = command->commitHash()->substr(0, 40);
    EXPECT_EQ(gitInRepository({"log", "-1", "--format=%B", hash}), "On main: On b: m");
    EXPECT_EQ(stashList(), "");
    EXPECT_EQ(readFile("repository/file.txt"), "changed\n");
}

TEST_F(RVGitStashCommandTest, StoresACreatedCommit) {
    makeCommit();
    change();
    const std::string hash = gitInRepository({"stash", "create"});
    ASSERT_TRUE(Command::gitStoreStashCommandWithRepository(repository(), "stored", hash)->run());
    EXPECT_EQ(stashList(), "stash@{0}: stored");
    EXPECT_EQ(gitInRepository({"rev-parse", "stash@{0}"}), hash);
}

TEST_F(RVGitStashCommandTest, ShowsStatisticsOrThePatch) {
    makeCommit();
    change();
    gitInRepository({"stash"});
    const auto command = Command::gitShowStashCommandWithRepository(repository(), "stash@{0}");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(std::string(command->standardOutputData()), testing::HasSubstr(" file.txt | 2 +-"));
    const auto patch = Command::gitShowStashCommandWithRepository(repository(), "stash@{0}");
    patch->setCreatesPatch(true);
    ASSERT_TRUE(patch->run());
    EXPECT_THAT(std::string(patch->standardOutputData()),
                testing::HasSubstr("-1\n\\ No newline at end of file\n+changed\n"));
}

TEST_F(RVGitStashCommandTest, RestoringTheIndexStagesAgain) {
    makeCommit();
    change("staged\n");
    gitInRepository({"add", "file.txt"});
    change("unstaged\n");
    gitInRepository({"stash"});
    const auto command = Command::gitApplyStashCommandWithRepository(repository(), "0", true);
    command->setRestoresIndex(true);
    ASSERT_TRUE(command->run());
    EXPECT_EQ(git({"show", ":file.txt"}, repositoryPath()), "staged\n");
    EXPECT_EQ(readFile("repository/file.txt"), "unstaged\n");
    EXPECT_EQ(stashList(), "");
}

TEST_F(RVGitStashCommandTest, PathsOfASaveArePathspecs) {
    makeCommit();
    for (const char* path : {"a.txt", "b.txt", "*.txt", "c.md", "-d"})
        commitFile("repository", path, "old", "Message");
    for (const char* path : {"a.txt", "b.txt", "*.txt", "c.md", "-d"})
        writeFile(scratchPath("repository/") + path, "new");
    const auto plain = Command::gitSaveStashCommandWithRepository(repository(), std::nullopt);
    plain->setFilePaths({"-d", "a.txt"});
    ASSERT_TRUE(plain->run());
    EXPECT_EQ(gitInRepository({"diff", "--name-only"}), "*.txt\nb.txt\nc.md");
    const auto pattern = Command::gitSaveStashCommandWithRepository(repository(), std::nullopt);
    // No file has that name: some gits take one that has for the only one.
    pattern->setFilePaths({"?.txt"});
    ASSERT_TRUE(pattern->run());
    EXPECT_EQ(gitInRepository({"diff", "--name-only"}), "c.md");
    const auto literal = Command::gitSaveStashCommandWithRepository(repository(), std::nullopt);
    literal->setFilePaths({":(literal)c.md"});
    ASSERT_TRUE(literal->run());
    EXPECT_EQ(gitInRepository({"diff", "--name-only"}), "");
    EXPECT_EQ(gitInRepository({"stash", "show", "--name-only", "stash@{1}"}), "*.txt\nb.txt");
}

TEST_F(RVGitStashCommandTest, APathThatMatchesNothingFailsAndSavesNothing) {
    makeCommit();
    change();
    const auto command = Command::gitSaveStashCommandWithRepository(repository(), std::nullopt);
    command->setFilePaths({"missing"});
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(stashList(), "");
    EXPECT_EQ(readFile("repository/file.txt"), "changed\n");
}

TEST_F(RVGitStashCommandTest, SavingWithoutACommitFailsWith2700) {
    change();
    const auto error =
        errorOf(*Command::gitSaveStashCommandWithRepository(repository(), "Message"));
    EXPECT_EQ(error.code(), RVGitSaveStashInitialCommitError);
    EXPECT_EQ(error.localizedFailureReason(),
              "Could not save stash. You need the initial commit first.");
    EXPECT_EQ(readFile("repository/file.txt"), "changed\n");
}

TEST_F(RVGitStashCommandTest, SavingWithoutChangesFailsWith2701) {
    makeCommit();
    const auto error =
        errorOf(*Command::gitSaveStashCommandWithRepository(repository(), "Message"));
    EXPECT_EQ(error.code(), RVGitSaveStashNoChangesError);
    EXPECT_EQ(error, gitErrorWithCode(RVGitSaveStashNoChangesError));
    EXPECT_EQ(stashList(), "");
}

TEST_F(RVGitStashCommandTest, TheTextOfNoChangesCountsInAnyCaseAndForm) {
    useFakeGit().setAnswer({.standardOutput = "x\nNO local Changes TO save\n"});
    for (auto choose :
         {&Command::setSavesStash, &Command::setAppliesStash, &Command::setDeletesStash,
          &Command::setStoresStash, &Command::setShowsStash, &Command::setCreatesStash}) {
        const auto command = std::make_shared<Command>(repository());
        (*command.*choose)(true);
        EXPECT_THAT(command, failsWith(RVGitSaveStashNoChangesError));
        EXPECT_EQ(command->commitHash(), std::nullopt);
    }
}

TEST_F(RVGitStashCommandTest, AMessageThatSaysThereAreNoChangesFailsTheListWith2701) {
    makeCommit();
    change();
    gitInRepository({"stash", "push", "-m", "no local changes to save"});
    EXPECT_THAT(Command::gitStashCommandWithRepository(repository()),
                failsWith(RVGitSaveStashNoChangesError));
}

TEST_F(RVGitStashCommandTest, ConflictsFailWith2702AndKeepTheStash) {
    for (const bool deletesStash : {false, true}) {
        makeCommit();
        change();
        gitInRepository({"stash"});
        makeCommit();
        const auto error = errorOf(
            *Command::gitApplyStashCommandWithRepository(repository(), "stash@{0}", deletesStash));
        EXPECT_EQ(error.code(), RVGitApplyStashMergeConflictsError);
        EXPECT_THAT(stashList(), testing::StartsWith("stash@{0}: WIP on main"));
        EXPECT_EQ(gitInRepository({"status", "--short"}), "UU file.txt");
        EXPECT_THAT(readFile("repository/file.txt"), testing::HasSubstr("changed\n"));
        gitInRepository({"reset", "--hard"});
    }
}

TEST_F(RVGitStashCommandTest, LocalChangesInTheWayOfAnApplyFailWith2705) {
    makeCommit();
    change("stashed\n");
    gitInRepository({"stash"});
    change("local\n");
    EXPECT_EQ(
        errorOf(*Command::gitApplyStashCommandWithRepository(repository(), "stash@{0}", false))
            .code(),
        RVGitApplyStashUncommittedChangesError);
    EXPECT_EQ(readFile("repository/file.txt"), "local\n");
    EXPECT_THAT(stashList(), testing::StartsWith("stash@{0}"));
}

TEST_F(RVGitStashCommandTest, LocalChangesInTheWayOfAPopHaveNoCodeOfTheirOwn) {
    makeCommit();
    change("stashed\n");
    gitInRepository({"stash"});
    change("local\n");
    EXPECT_EQ(errorOf(*Command::gitApplyStashCommandWithRepository(repository(), "stash@{0}", true))
                  .code(),
              RVGitRVGitGenericError);
    EXPECT_EQ(readFile("repository/file.txt"), "local\n");
    EXPECT_THAT(stashList(), testing::StartsWith("stash@{0}"));
}

TEST_F(RVGitStashCommandTest, AStashThatDoesNotExistHasNoCodeOfItsOwnToday) {
    makeCommit();
    for (const char* name : {"stash@{0}", "stash@{5}"}) {
        EXPECT_FALSE(Command::gitApplyStashCommandWithRepository(repository(), name, false)->run());
        EXPECT_THAT(Command::gitDeleteStashCommandWithRepository(repository(), name),
                    failsWith(RVGitRVGitGenericError));
        EXPECT_THAT(Command::gitShowStashCommandWithRepository(repository(), name),
                    failsWith(RVGitRVGitGenericError));
    }
}

TEST_F(RVGitStashCommandTest, RowsHoldForTheirSubCommandAndExitCode) {
    const std::string tooFew = "fatal: Log for 'stash' only has 3 entries.\n";
    const std::string none = "No stash found.\n";
    const std::string unknown =
        "fatal: ambiguous argument 'stash@{7}': unknown revision or path not in the working tree.";
    const std::string changes =
        "error: Your local changes to the following files would be overwritten by merge:\n\tf\n";
    const std::string name = "fatal: git checkout: we do not like 'a b' as a branch name.\n";
    const struct {
        const char* subCommand;
        int exitCode;
        std::string standardError;
        std::string standardOutput;
        std::int64_t code;
        const char* key = nullptr;
        const char* value = nullptr;
    } rows[] = {
        {"push", 1, "You do not have the initial commit yet", "", 2700},
        {"save", 1, "fatal: you do not have the initial commit yet", "", 2700},
        {"drop", 1, tooFew, "", 2706},
        {"drop", 1, none, "", 2707},
        {"drop", 1, unknown, "", 2707, RVGitStashIndexErrorKey, "7"},
        {"pop", 1, "", "CONFLICT (content): Merge conflict in f\n", 2702},
        {"apply", 1, "", "CONFLICT (content): Merge conflict in f\n", 2702},
        {"apply", 1, "CONFLICT (content): Merge conflict in f\n", "", 1},
        {"apply", 1, tooFew, "", 2703},
        {"pop", 1, tooFew, "", 1},
        {"pop", 1, none, "", 1},
        {"pop", 128, unknown, "", 1},
        {"apply", 1, none, "", 2704},
        {"apply", 128, unknown, "", 2704, RVGitStashIndexErrorKey, "7"},
        {"apply", 1, changes, "", 2705},
        {"apply", 128, changes, "", 2705},
        {"pop", 1, changes, "", 1},
        {"branch", 128, name, "", 2500, RVGitRefNameErrorKey, "a b"},
        {"branch", 1, tooFew, "", 2501},
        {"branch", 1, none, "", 2502},
        {"branch", 1, unknown, "", 2502, RVGitStashIndexErrorKey, "7"},
        {"branch", 128, changes, "", 2503},
    };
    auto fake = useFakeGit();
    const auto errorFor = [&](const auto& row, int exitCode) {
        fake.setAnswer({.standardOutput = row.standardOutput,
                        .standardError = row.standardError,
                        .exitCode = exitCode});
        const auto command = RVGitCommand::gitCommandWithRepository(repository());
        command->setGitCommand("stash");
        command->setGitSubCommand(row.subCommand);
        return errorOf(*command);
    };
    const auto isListed = [&](const auto& row, int exitCode) {
        return std::any_of(std::begin(rows), std::end(rows), [&](const auto& other) {
            return std::string_view(other.subCommand) == row.subCommand &&
                   other.standardError == row.standardError && other.exitCode == exitCode;
        });
    };
    for (const auto& row : rows) {
        const auto error = errorFor(row, row.exitCode);
        EXPECT_EQ(error.code(), row.code) << row.subCommand << ' ' << row.standardError;
        for (const int exitCode : {1, 2, 128}) {
            if (isListed(row, exitCode))
                continue;
            EXPECT_EQ(errorFor(row, exitCode).code(), RVGitRVGitGenericError)
                << row.subCommand << ' ' << exitCode << ' ' << row.standardError;
        }
        if (row.key)
            EXPECT_EQ(error.userInfoString(row.key), row.value) << row.subCommand;
        else
            EXPECT_FALSE(error.userInfo().contains(RVGitStashIndexErrorKey)) << row.subCommand;
    }
}

TEST_F(RVGitStashCommandTest, TheTableHasItsRowsInOrder) {
    std::vector<std::int64_t> codes;
    for (const RVGitErrorRow& row : Command::gitErrorDefinitions()) {
        EXPECT_THAT(row.commandNames, ElementsAre("stash"));
        codes.push_back(row.errorCode);
    }
    EXPECT_THAT(codes, ElementsAre(2700, 2706, 2707, 2707, 2702, 2703, 2704, 2704, 2705, 2500, 2501,
                                   2502, 2502, 2503));
}

TEST_F(RVGitStashCommandTest, OutputThatIsNoListFailsWith11) {
    useFakeGit().setAnswer({.standardOutput = "stash@{0}: On main: Message\n"});
    const auto command = Command::gitStashCommandWithRepository(repository());
    EXPECT_THAT(command, failsWith(RVGitOutputParserError));
    EXPECT_THAT(command->stashes(), IsEmpty());
}

}  // namespace
