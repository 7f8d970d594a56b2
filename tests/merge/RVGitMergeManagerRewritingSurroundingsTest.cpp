#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/merge/RVGitRewritingTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::SizeIs;

class RVGitMergeManagerRewritingSurroundingsTest : public RVGitRewritingTestCase {};

// Scripts.

TEST_F(RVGitMergeManagerRewritingSurroundingsTest, ScriptsAreThereBeforeTheRebaseAndStay) {
    const auto hashes = makeLetters(3);
    // A git that looks at the script when it is launched.
    auto fake = useFakeGit();
    fake.passOtherCallsOn();
    ASSERT_TRUE(manager().setCommitMessage("New", hashes[1]));
    const auto names = RVFileManager::namesInDirectoryAtPath(temporaryDirectory());
    EXPECT_THAT(names, SizeIs(2));
    for (const std::string& name : names) {
        struct stat status = {};
        ASSERT_EQ(lstat((temporaryDirectory() + "/" + name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0755U);
    }
}

TEST_F(RVGitMergeManagerRewritingSurroundingsTest, GesturesWorkFromAnyTemporaryDirectory) {
    for (const char* name : {"a blank", "it's", "$HOME", "a\"b", "`x`", "a\\b", "new\nline", "*",
                             "a;b&c|d", "(a)", "#a", "~", "a=b", "é", "-x"}) {
        setEnvironmentVariable("TMPDIR", makeDirectory(std::string("tmp/") + name));
        const auto hashes = makeLetters(4);
        EXPECT_TRUE(manager().setCommitMessage("New", hashes[1])) << name;
        EXPECT_EQ(subjects(), "A New C D") << name;
    }
}

// Surroundings.

TEST_F(RVGitMergeManagerRewritingSurroundingsTest, EditorsOfTheSurroundingsAreNotOpened) {
    const std::string loud = "'" + scratchPath("loud editor") + "'";
    for (const char* name : {"GIT_EDITOR", "GIT_SEQUENCE_EDITOR", "EDITOR", "VISUAL"})
        setEnvironmentVariable(name, loud);
    auto hashes = makeLetters(5);
    EXPECT_TRUE(manager().deleteRevisions({hashes[4]}));
    EXPECT_TRUE(manager().moveRevisionsBelowRevision({hashes[3]}, hashes[1]));
    EXPECT_TRUE(manager().squashRevisions({hashOf("C"), hashOf("B")}));
    EXPECT_TRUE(manager().setCommitMessage("New", gitInRepository({"rev-parse", "HEAD"})));
    EXPECT_TRUE(manager().editRevision(gitInRepository({"rev-parse", "HEAD"}), true));
    EXPECT_TRUE(manager().abortRebase());
}

TEST_F(RVGitMergeManagerRewritingSurroundingsTest, TheUsersSettingsChangeNothing) {
    const std::pair<const char*, const char*> settings[] = {
        {"rebase.autoSquash", "true"},
        {"rebase.autoStash", "true"},
        {"rebase.updateRefs", "true"},
        {"rebase.abbreviateCommands", "true"},
        {"rebase.missingCommitsCheck", "error"},
        {"rebase.instructionFormat", "%an: %s"},
        {"core.commentChar", ";"},
        {"merge.ff", "only"},
        {"merge.conflictStyle", isTestedGitAtLeast("2.35") ? "zdiff3" : "diff3"},
        {"rerere.enabled", "true"},
        {"rerere.autoUpdate", "true"},
        {"core.autocrlf", "true"},
        {"rebase.stat", "true"},
        {"log.showSignature", "true"},
        {"rebase.rescheduleFailedExec", "true"},
        {"commit.verbose", "true"},
        {"log.follow", "true"},
        {"advice.skippedCherryPicks", "true"},
        {"rebase.forkPoint", "true"},
        {"core.abbrev", "4"},
        {"color.ui", "always"},
        {"commit.status", "false"},
    };
    for (const auto& [key, value] : settings)
        gitInRepository({"config", key, value});
    const auto hashes = makeHistory({{"A\n", {{"a", "a\n"}}},
                                     {"B\n", {{"b", "b\n"}}},
                                     {"C\n", {{"c", "c\n"}}},
                                     {"fixup! B\n", {{"d", "d\n"}}},
                                     {"E\n", {{"e", "e\n"}}}});
    gitInRepository({"branch", "-f", "kept", hashes[2]});
    EXPECT_TRUE(manager().deleteRevisions({hashes[2]}));
    EXPECT_EQ(subjects(), "A B fixup! B E");
    EXPECT_TRUE(manager().setCommitMessage("# New\n\n; Body", hashes[1]));
    EXPECT_EQ(subjects(), "A # New fixup! B E");
    EXPECT_EQ(gitInRepository({"rev-parse", "kept"}), hashes[2]);
    EXPECT_TRUE(manager().squashRevisions(
        {gitInRepository({"rev-parse", "HEAD"}), gitInRepository({"rev-parse", "HEAD^"})}));
    EXPECT_EQ(gitInRepository({"rev-list", "--count", "HEAD"}), "3");
    EXPECT_EQ(gitInRepository({"status", "--porcelain"}), "");
}

TEST_F(RVGitMergeManagerRewritingSurroundingsTest, ChangesThatAreNotCommittedAreKept) {
    const auto hashes = makeLetters(3);
    writeFile("repository/a", "changed\n");
    const RVRepositorySnapshot before(repositoryPath());
    std::optional<RVError> error;
    EXPECT_FALSE(manager().deleteRevisions({hashes[1]}, &error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(manager().editRevision(hashes[1], &error));
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
}

TEST_F(RVGitMergeManagerRewritingSurroundingsTest, ADetachedHEADAndALinkedWorktreeAreRewritten) {
    auto hashes = makeLetters(3);
    gitInRepository({"checkout", "-q", "--detach"});
    EXPECT_TRUE(manager().deleteRevisions({hashes[1]}));
    EXPECT_EQ(subjects(), "A C");
    EXPECT_EQ(subjects("main"), "A B C");

    const std::string linked = scratchPath("linked");
    gitInRepository({"worktree", "add", "-b", "side", linked, "main"});
    const auto repositoryOfLinked = RVGitRepository::repositoryWithPath(linked);
    RVGitMergeManager managerOfLinked(repositoryOfLinked);
    EXPECT_TRUE(managerOfLinked.editRevision(hashes[1]));
    EXPECT_EQ(managerOfLinked.currentMergeMode(), RVGitMergeModeEditing);
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
    // Newer gits do not overwrite the file that they no longer know.
    if (isTestedGitAtLeast("2.34")) {
        EXPECT_FALSE(managerOfLinked.abortRebase());
        git({"add", "b"}, linked);
    }
    EXPECT_TRUE(managerOfLinked.abortRebase());
    EXPECT_TRUE(managerOfLinked.moveRevisionsAboveRevision({hashes[1]}, hashes[2]));
    EXPECT_EQ(subjects("side"), "A C B");
}

}  // namespace
