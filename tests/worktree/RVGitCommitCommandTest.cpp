#include "RVGit/worktree/RVGitCommitCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <signal.h>

#include <filesystem>

#include "RVGit/base/RVString.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/worktree/RVGitCommitMessageEditor.h"
#include "tests/worktree/RVGitFlagTestCase.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Command = RVGitCommitCommand;

class RVGitCommitCommandTest : public RVGitFlagTestCase {
protected:
    [[nodiscard]] std::shared_ptr<Command> commandFor(std::optional<std::string> message,
                                                      unsigned options = 0) const {
        return Command::gitCommitCommandWithRepository(repository(), std::move(message), options);
    }
    /// Stages a new file.
    void stage(const std::string& path = "staged") const {
        writeFile("repository/" + path, "one\n");
        git({"add", path}, repositoryPath());
    }
    [[nodiscard]] bool commits(const std::string& message, unsigned options = 0) const {
        return commandFor(message, options)->run();
    }
    /// The message of the last commit as it is stored.
    [[nodiscard]] std::string storedMessage() const {
        const std::string commit = git({"cat-file", "commit", "HEAD"}, repositoryPath());
        return commit.substr(commit.find("\n\n") + 2);
    }
    [[nodiscard]] bool hasCommits() const {
        return runGit({"rev-parse", "-q", "--verify", "HEAD"}, repositoryPath()).exitCode == 0;
    }
    void writeHook(const std::string& name, const std::string& script) const {
        writeFile("repository/.git/hooks/" + name, "#!/bin/sh\n" + script, 0755);
    }
    void configure(const std::string& key, const std::string& value) const {
        git({"config", key, value}, repositoryPath());
    }

    static inline const Arguments pairs = {"-c", "i18n.commitencoding=UTF-8", "-c",
                                           "commit.verbose=false"};
};

TEST_F(RVGitCommitCommandTest, ArgumentsOfEachField) {
    Arguments before = pairs;
    before.emplace_back("commit");
    expectOptions<Command>(useRecordingGit(), [&] { return commandFor("Message"); },
                           {{&Command::setAmendsChanges, &Command::amendsChanges, "--amend"},
                            {&Command::setSignsOff, &Command::signsOff, "--signoff"},
                            {&Command::setAllowsEmpty, &Command::allowsEmpty, "--allow-empty"},
                            {&Command::setDoesNotVerify, &Command::doesNotVerify, "--no-verify"}},
                           before, {"-F-"});
}

TEST_F(RVGitCommitCommandTest, TheMaskSetsTheFields) {
    for (unsigned options = 0; options < 16; ++options) {
        const auto command = commandFor("Message", options);
        EXPECT_EQ(command->amendsChanges(), (options & 1U) != 0);
        EXPECT_EQ(command->signsOff(), (options & 2U) != 0);
        EXPECT_EQ(command->allowsEmpty(), (options & 4U) != 0);
        EXPECT_EQ(command->doesNotVerify(), (options & 8U) != 0);
        EXPECT_TRUE(command->isSupportingProgressOutput());
        EXPECT_EQ(command->message(), "Message");
        EXPECT_EQ(command->reEditsRevision(), std::nullopt);
    }
    const auto plain = Command::gitCommitCommandWithRepository(repository(), "Message");
    EXPECT_FALSE(plain->amendsChanges() || plain->signsOff() || plain->allowsEmpty() ||
                 plain->doesNotVerify());
}

TEST_F(RVGitCommitCommandTest, AMessageGoesThroughStandardInput) {
    const auto recorder = useRecordingGit();
    stage();
    EXPECT_TRUE(commits("Message"));
    EXPECT_THAT(lastArguments(recorder), ElementsAre("-c", "i18n.commitencoding=UTF-8", "-c",
                                                     "commit.verbose=false", "commit", "-F-"));
    EXPECT_EQ(recorder.lastInvocation().standardInput, "Message");
    EXPECT_FALSE(commits(""));
    EXPECT_EQ(recorder.lastInvocation().standardInput, "");
}

TEST_F(RVGitCommitCommandTest, AnAmendedCommitTakesTheMessage) {
    stage();
    ASSERT_TRUE(commits("First"));
    const auto recorder = useRecordingGit();
    EXPECT_TRUE(commits("Second", RVGitCommitOptionAmend));
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("-c", "i18n.commitencoding=UTF-8", "-c", "commit.verbose=false",
                            "commit", "--amend", "-F-"));
    EXPECT_EQ(storedMessage(), "Second\n");
    EXPECT_EQ(gitInRepository({"rev-list", "--count", "HEAD"}), "1");
}

TEST_F(RVGitCommitCommandTest, ARevisionToReEditMakesTheMessageIgnored) {
    const std::string hash = makeCommit("Original");
    stage();
    const auto recorder = useRecordingGit();
    const auto command = commandFor("Ignored");
    command->setReEditsRevision(hash);
    command->setValueForEnvironmentVariable("true", "GIT_EDITOR");
    EXPECT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("-c", "i18n.commitencoding=UTF-8", "-c",
                                                     "commit.verbose=false", "commit", "-c", hash));
    EXPECT_EQ(recorder.lastInvocation().standardInput, std::nullopt);
    EXPECT_EQ(storedMessage(), "Original\n");
}

TEST_F(RVGitCommitCommandTest, TheEditorOfAReEditedRevisionIsTheCallers) {
    const std::string hash = makeCommit("Original");
    stage();
    const std::string editor = scratchPath("editor");
    ASSERT_TRUE(RVGitCommitMessageEditor::createGitCommitMessageEditorScriptAtURL(
        RVURL::fileURLWithPath(editor), "Edited"));
    const auto command = commandFor(std::nullopt);
    command->setReEditsRevision(hash);
    command->setValueForEnvironmentVariable(editor, "GIT_EDITOR");
    EXPECT_TRUE(command->run());
    EXPECT_EQ(storedMessage(), "Edited\n");
}

TEST_F(RVGitCommitCommandTest, WithoutAMessageGitRunsTheEditor) {
    stage();
    const auto recorder = useRecordingGit();
    const auto command = commandFor(std::nullopt);
    command->setValueForEnvironmentVariable("printf 'From the editor' >", "GIT_EDITOR");
    EXPECT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("-c", "i18n.commitencoding=UTF-8", "-c",
                                                     "commit.verbose=false", "commit"));
    EXPECT_EQ(recorder.lastInvocation().standardInput, std::nullopt);
    EXPECT_EQ(storedMessage(), "From the editor\n");

    stage("another");
    const auto failing = commandFor(std::nullopt);
    failing->setValueForEnvironmentVariable("false", "GIT_EDITOR");
    EXPECT_THAT(failing, failsWith(RVGitRVGitGenericError));
    EXPECT_EQ(gitInRepository({"rev-list", "--count", "HEAD"}), "1");
}

TEST_F(RVGitCommitCommandTest, AMessageArrivesAsItIs) {
    stage();
    const std::string message =
        "It's \"quoted\", $HOME, $(touch x), `touch x`, \\, \\n, %s, -F, \t tabs\n"
        "\n"
        "-- a rule --\n"
        "7b26278ebfd54ee8ec001b7c668de1137802ad9f63e4ebce3016f69c4f84884b\n"
        "\xf0\x9f\x98\x80 \xe2\x80\xa8 end\n";
    EXPECT_TRUE(commits(message));
    EXPECT_EQ(storedMessage(), message);
    EXPECT_FALSE(fileExists("repository/x"));
}

TEST_F(RVGitCommitCommandTest, LinesThatLookLikeCommentsStay) {
    stage();
    EXPECT_TRUE(commits("Subject\n\n#12 is fixed\n# so is this\n"));
    EXPECT_EQ(storedMessage(), "Subject\n\n#12 is fixed\n# so is this\n");
}

TEST_F(RVGitCommitCommandTest, DecomposedLettersAreStoredComposed) {
    stage();
    EXPECT_TRUE(commits("Cafe\u0301 A\u030a \u1112\u1161\u11ab\n"));
    EXPECT_EQ(storedMessage(), "Caf\u00e9 \u00c5 \ud55c\n");
}

TEST_F(RVGitCommitCommandTest, ALongMessageIsFed) {
    stage();
    std::string message = "Subject\n\n";
    while (message.size() < 1'000'000)
        message += "A line of cafe\u0301, number " + std::to_string(message.size()) + "\n";
    EXPECT_TRUE(commits(message));
    EXPECT_TRUE(storedMessage() == precomposedString(message));
}

TEST_F(RVGitCommitCommandTest, AnEmptyMessageIsRefused) {
    stage();
    for (const char* message : {"", " \n\t\n"}) {
        const auto error = errorOf(*commandFor(message));
        EXPECT_EQ(error.code(), RVGitRVGitGenericError);
        EXPECT_THAT(error.userInfoString(RVGitCommandErrorOutputErrorKey).value_or(""),
                    HasSubstr("Aborting commit due to empty commit message."));
    }
    EXPECT_FALSE(hasCommits());
}

TEST_F(RVGitCommitCommandTest, NothingToCommitFailsUnlessEmptyIsAllowed) {
    makeCommit();
    writeFile("repository/file.txt", "changed\n");
    const auto error = errorOf(*commandFor("Message"));
    EXPECT_EQ(error.code(), RVGitRVGitGenericError);
    EXPECT_THAT(error.userInfoString(RVGitCommandStandardOutputErrorKey).value_or(""),
                HasSubstr("no changes added to commit"));
    EXPECT_TRUE(commits("Message", RVGitCommitOptionAllowEmpty));
    EXPECT_EQ(gitInRepository({"rev-list", "--count", "HEAD"}), "2");
    EXPECT_EQ(readFile("repository/file.txt"), "changed\n");
}

TEST_F(RVGitCommitCommandTest, ChangesThatAreNotStagedStayOut) {
    stage();
    writeFile("repository/staged", "changed\n");
    EXPECT_TRUE(commits("Message"));
    EXPECT_EQ(gitInRepository({"show", "HEAD:staged"}), "one");
    EXPECT_EQ(readFile("repository/staged"), "changed\n");
}

TEST_F(RVGitCommitCommandTest, SigningOffAddsTheLine) {
    stage();
    EXPECT_TRUE(commits("Subject", RVGitCommitOptionSignOff));
    EXPECT_EQ(storedMessage(), "Subject\n\nSigned-off-by: Marie Curie <marie@example.org>\n");
}

TEST_F(RVGitCommitCommandTest, ConfigurationThatFightsIsOverruled) {
    configure("i18n.commitEncoding", "ISO-8859-1");
    configure("commit.verbose", "true");
    configure("commit.template", writeFile("template", "From the template\n"));
    configure("core.editor", "false");
    configure("color.ui", "always");
    stage();
    EXPECT_TRUE(commits("Caf\u00e9\n\n\u4e2d\n"));
    EXPECT_EQ(storedMessage(), "Caf\u00e9\n\n\u4e2d\n");
    EXPECT_THAT(git({"cat-file", "commit", "HEAD"}, repositoryPath()),
                testing::Not(HasSubstr("\nencoding ")));
    EXPECT_TRUE(commits("Amended", RVGitCommitOptionAmend));
    EXPECT_EQ(storedMessage(), "Amended\n");
}

TEST_F(RVGitCommitCommandTest, TheConfiguredCleanupIsGits) {
    const std::string message =
        "Subject\n\n\n# comment\n"
        "# ------------------------ >8 ------------------------\nbelow\n";
    const std::string tidied =
        "Subject\n\n# comment\n# ------------------------ >8 ------------------------\nbelow\n";
    // Git looks for the scissors only in a message that it had edited.
    const std::pair<const char*, std::string> cases[] = {{"whitespace", tidied},
                                                         {"scissors", tidied},
                                                         {"verbatim", message},
                                                         {"strip", "Subject\n\nbelow\n"}};
    for (const auto& [cleanup, stored] : cases) {
        SCOPED_TRACE(cleanup);
        configure("commit.cleanup", cleanup);
        EXPECT_TRUE(commits(message, RVGitCommitOptionAllowEmpty));
        EXPECT_EQ(storedMessage(), stored);
    }
}

TEST_F(RVGitCommitCommandTest, AHookThatFailsStopsTheCommitAndIsHeard) {
    stage();
    for (const char* name : {"pre-commit", "prepare-commit-msg", "commit-msg"}) {
        SCOPED_TRACE(name);
        writeHook(name, "echo 'printed'\necho 'refused' >&2\nexit 3\n");
        const auto error = errorOf(*commandFor("Message"));
        EXPECT_EQ(error.code(), RVGitRVGitGenericError);
        EXPECT_EQ(error.userInfo().at(RVGitCommandExitCodeErrorKey).integerValue(), 1);
        EXPECT_THAT(error.userInfoString(RVGitCommandErrorOutputErrorKey).value_or(""),
                    HasSubstr("refused\n"));
        EXPECT_FALSE(hasCommits());
        EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "A  staged");
        std::filesystem::remove(scratchPath("repository/.git/hooks/" + std::string(name)));
    }
    EXPECT_TRUE(commits("Message"));
}

TEST_F(RVGitCommitCommandTest, NotVerifyingSkipsTheHooksThatRefuse) {
    stage();
    writeHook("pre-commit", "exit 1\n");
    writeHook("commit-msg", "exit 1\n");
    EXPECT_FALSE(commits("Message"));
    EXPECT_TRUE(commits("Message", RVGitCommitOptionNoVerify));
    EXPECT_EQ(storedMessage(), "Message\n");
}

TEST_F(RVGitCommitCommandTest, AHookThatFailsAfterwardsChangesNothing) {
    stage();
    writeHook("post-commit", "exit 1\n");
    EXPECT_TRUE(commits("Message"));
    EXPECT_TRUE(hasCommits());
}

TEST_F(RVGitCommitCommandTest, AHookMayPrintAndChangeTheMessage) {
    stage();
    writeHook("pre-commit", "seq 1 100000\nseq 1 100000 >&2\n");
    writeHook("commit-msg", "echo 'From the hook' >\"$1\"\n");
    EXPECT_TRUE(commits("Message"));
    EXPECT_EQ(storedMessage(), "From the hook\n");
}

TEST_F(RVGitCommitCommandTest, AHookReadsNothing) {
    stage();
    for (const char* name : {"pre-commit", "prepare-commit-msg", "commit-msg", "post-commit"})
        writeHook(name, std::string("cat >\"$GIT_DIR/") + name + ".input\"\n");
    EXPECT_TRUE(commits("Message"));
    // Git gives its hooks an input of their own that is empty, and keeps the message to itself.
    for (const char* name : {"pre-commit", "prepare-commit-msg", "commit-msg", "post-commit"})
        EXPECT_EQ(readFile(std::string("repository/.git/") + name + ".input"), "");
    EXPECT_EQ(storedMessage(), "Message\n");
}

TEST_F(RVGitCommitCommandTest, AProcessThatAHookLeavesBehindIsNotWaitedFor) {
    stage();
    // It holds the outputs for longer than any test may take.
    writeHook("post-commit",
              "sh -c 'echo $$ >\"$GIT_DIR/left.pid\"; exec sleep 600' &\n"
              "until [ -s \"$GIT_DIR/left.pid\" ]; do sleep 0.01; done\n");
    EXPECT_TRUE(commits("Message"));
    const int left = std::stoi(readFile("repository/.git/left.pid"));
    EXPECT_EQ(kill(left, 0), 0);
    EXPECT_EQ(kill(left, SIGKILL), 0);
    EXPECT_EQ(storedMessage(), "Message\n");
}

TEST_F(RVGitCommitCommandTest, SigningFollowsTheConfiguration) {
    stage();
    configure("commit.gpgSign", "true");
    configure("gpg.program", "false");
    EXPECT_THAT(commandFor("Message"), failsWith(RVGitGPGSigningKeyUnvailableError));
    EXPECT_FALSE(hasCommits());
}

TEST_F(RVGitCommitCommandTest, ProgressIsReported) {
    stage();
    const auto command = commandFor("Message");
    bool isCalled = false;
    command->setProgressHandler([&](RVGitCommandProgress&) { isCalled = true; });
    EXPECT_TRUE(command->run());
    EXPECT_TRUE(isCalled);
}

TEST_F(RVGitCommitCommandTest, NeedsARepository) {
    EXPECT_THROW((void)Command::gitCommitCommandWithRepository(nullptr, "Message"),
                 RVInvalidParameterException);
}

}  // namespace
