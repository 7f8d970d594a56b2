#include "RVGit/merge/RVGitMergeManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "tests/merge/RVGitMergeManagerTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVFailureCode.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace fs = std::filesystem;

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

/// Messages that could do harm, and the scripts that hand them to git.
class RVGitMergeManagerMessagesTest : public RVGitMergeManagerTestCase {};

TEST_F(RVGitMergeManagerMessagesTest, AMessageThatWouldEndTheScriptIsRefused) {
    const std::string proof = scratchPath("proof");
    const std::string text =
        "x\n7b26278ebfd54ee8ec001b7c668de1137802ad9f63e4ebce3016f69c4f84884b\ntouch '" + proof +
        "'\n";
    stopRebase();
    resolve("two\n");
    const RVRepositorySnapshot before(path());
    for (const std::string& refused : {text, "nul\0byte"s}) {
        EXPECT_GT(codeOf([&](RVErrorPlace e) {
                      return manager().continueRebaseWithCommitMessage(refused, e);
                  }),
                  0);
        EXPECT_GT(codeOf([&](RVErrorPlace e) {
                      return manager().continueEmptyRebaseWithCommitMessage(refused, e);
                  }),
                  0);
    }
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
    EXPECT_TRUE(manager().abortRebase());
    // Where no script is made, it is text as any other.
    checkOut("main");
    stopCherryPick({"Two"});
    resolve("two\n");
    EXPECT_TRUE(manager().continueCherryPickWithCommitMessage(text));
    EXPECT_THAT(message(), HasSubstr("touch"));
    EXPECT_FALSE(fileExists("proof"));
}

TEST_F(RVGitMergeManagerMessagesTest, AStrangersMessageIsTextAndNothingInItIsRun) {
    const std::string proof = scratchPath("proof");
    const std::string text = "$(touch '" + proof + "') `touch '" + proof + "'`\n\n'; touch '" +
                             proof + "'; \"\n%s %n \\\n";
    gitHere({"checkout", "-q", "-b", "strange", "Base"});
    write("file", "strange\n");
    git({"commit", "-q", "-a", "-F", "-"}, path(), text);
    gitHere({"checkout", "-q", "-b", "ours-again", "main"});
    gitHere({"checkout", "-q", "strange"});
    EXPECT_FALSE(manager().rebaseWithRevision("main", std::nullopt));
    resolve("strange and ours\n");
    const auto proposed = manager().mergeCommitMessage();
    ASSERT_TRUE(proposed);
    EXPECT_THAT(*proposed, StartsWith(text));
    expectSuccess(
        [&](RVErrorPlace e) { return manager().continueRebaseWithCommitMessage(*proposed, e); });
    EXPECT_EQ(message() + "\n", text);
    EXPECT_FALSE(fileExists("proof"));
}

TEST_F(RVGitMergeManagerMessagesTest, AMessageIsNotWrittenThroughALink) {
    stopCherryPick({"Two"});
    resolve("two\n");
    writeFile("outside", "precious\n");
    fs::remove(gitFile("MERGE_MSG"));
    fs::create_symlink(scratchPath("outside"), gitFile("MERGE_MSG"));
    EXPECT_TRUE(manager().continueCherryPickWithCommitMessage("Mine"));
    EXPECT_EQ(readFile("outside"), "precious\n");
    EXPECT_EQ(message(), "Mine");
}

TEST_F(RVGitMergeManagerMessagesTest, AMessageThatCannotBeWrittenDoesNotStopTheContinuation) {
    stopCherryPick({"Two"});
    resolve("two\n");
    fs::remove(gitFile("MERGE_MSG"));
    const auto recorder = record();
    (void)manager().continueCherryPickWithCommitMessage("Mine");
    EXPECT_FALSE(fs::exists(gitFile("MERGE_MSG")) && readFile(gitFile("MERGE_MSG")) == "Mine");
    EXPECT_THAT(lineOf(recorder),
                ElementsAre("-c", "core.trustctime=false", "cherry-pick", "--continue"));
}

TEST_F(RVGitMergeManagerMessagesTest, TheEditorOfAContinuationIsQuotedWhereItMustBe) {
    for (const char* name : {"plain", "a b", "it's", "do$HOME", "`x`"}) {
        makePlace(RVGitMergePlace::Repository);
        SCOPED_TRACE(name);
        stopRebase();
        resolve("two\n");
        const std::string directory = makeDirectory(name);
        setEnvironmentVariable("TMPDIR", directory);
        const auto recorder = record();
        (void)manager().continueRebaseWithCommitMessage("Mine");
        const std::string editor = recorder.lastInvocation().environment.at("GIT_EDITOR");
        if (name == "plain"s) {
            EXPECT_THAT(editor, StartsWith(directory + "/"));
        } else {
            EXPECT_THAT(editor, StartsWith("'"));
        }
        setEnvironmentVariable("TMPDIR", std::nullopt);
        EXPECT_EQ(gitHere({"log", "-1", "--format=%s", "HEAD~2"}), "Mine");
    }
}

TEST_F(RVGitMergeManagerMessagesTest, AFullTemporaryDirectoryIsAFailureThatChangesNothing) {
    stopRebase();
    resolve("two\n");
    const RVRepositorySnapshot before(path());
    setEnvironmentVariable("TMPDIR", scratchPath("missing"));
    EXPECT_THAT(
        [&](RVErrorPlace e) { return manager().continueRebaseWithCommitMessage("Mine", e); },
        failsWith(ENOENT));
    EXPECT_THAT(
        [&](RVErrorPlace e) { return manager().continueEmptyRebaseWithCommitMessage("Mine", e); },
        failsWith(ENOENT));
    EXPECT_EQ(RVRepositorySnapshot(path()).differencesFrom(before), "");
}

}  // namespace
