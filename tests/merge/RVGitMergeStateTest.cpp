#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"
#include "tests/support/RVTestFiles.h"
#include "tests/support/RVTestRights.h"
#include "tests/support/RVUnprivilegedUser.h"

namespace fs = std::filesystem;

namespace {

using namespace std::string_literals;

/// The readers of the manager on git directories that are written by hand.
class RVGitMergeStateTest : public RVGitRepositoryTestCase {
protected:
    RVGitMergeStateTest() : manager_(RVGitMergeManager::mergeManagerWithRepository(repository())) {}

    std::string gitFile(const std::string& name) const {
        return repositoryPath() + "/.git/" + name;
    }
    void put(const std::string& name, std::string_view contents) const {
        writeFile(gitFile(name), contents);
    }
    void putDirectory(const std::string& name) const { makeDirectory(gitFile(name)); }
    /// As git leaves it when nothing is under way.
    void clear() const {
        for (const char* name :
             {"rebase-apply", "rebase-merge", "sequencer", "REVERT_HEAD", "CHERRY_PICK_HEAD",
              "SQUASH_MSG", "MERGE_HEAD", "MERGE_MSG", "ORIG_HEAD"})
            fs::remove_all(gitFile(name));
    }
    /// What every reader says, for comparison and to have all of them called.
    std::vector<std::string> everything() const {
        const auto text = [](const std::optional<std::string>& value) {
            return value ? "\"" + *value + "\"" : "nothing"s;
        };
        return {std::to_string(manager_->currentMergeMode()),
                std::to_string(manager_->isMerging()),
                std::to_string(manager_->isEditingRevision()),
                std::to_string(manager_->isPendingInteractiveRebase()),
                std::to_string(manager_->mergeTimestamp() > 0),
                text(manager_->originalRevision()),
                text(manager_->originalRefName()),
                text(manager_->mergedRevision()),
                text(manager_->mergeCommitMessage()),
                std::to_string(manager_->nextSequenceStep()),
                std::to_string(manager_->lastSequenceStep()),
                text(manager_->nextSequenceRevision()),
                text(manager_->lastSequenceRevision()),
                std::to_string(manager_->nextRebaseSequenceStep()),
                std::to_string(manager_->lastRebaseSequenceStep()),
                std::to_string(manager_->nextInteractiveRebaseSequenceStep()),
                std::to_string(manager_->lastInteractiveRebaseSequenceStep()),
                text(manager_->nextRebaseSequenceRevision()),
                text(manager_->amendSequenceRevision()),
                text(manager_->nextInteractiveRebaseSequenceRevision()),
                text(manager_->lastRebaseSequenceRevision()),
                std::to_string(manager_->nextDefaultSequencerStep()),
                std::to_string(manager_->lastDefaultSequencerStep()),
                text(manager_->nextDefaultSequencerRevision()),
                text(manager_->lastDefaultSequencerRevision())};
    }

    const std::shared_ptr<RVGitMergeManager> manager_;
};

TEST_F(RVGitMergeStateTest, HoldsItsHelpers) {
    EXPECT_EQ(manager_->repository(), repository());
    EXPECT_EQ(manager_->workingTreeManager()->repository(), repository());
    EXPECT_EQ(manager_->index()->repository(), repository());
    EXPECT_THROW((void)RVGitMergeManager::mergeManagerWithRepository(nullptr),
                 RVInvalidParameterException);
}

TEST_F(RVGitMergeStateTest, NothingIsUnderWay) {
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeNone);
    EXPECT_FALSE(manager_->isMerging());
    EXPECT_FALSE(manager_->isEditingRevision());
    EXPECT_FALSE(manager_->isPendingInteractiveRebase());
    EXPECT_FALSE(manager_->usesRebaseApplyBackend());
    EXPECT_EQ(manager_->mergeTimestamp(), 0);
    EXPECT_EQ(manager_->nextSequenceStep(), 0u);
    EXPECT_EQ(manager_->lastSequenceStep(), 0u);
    EXPECT_EQ(manager_->nextSequenceRevision(), std::nullopt);
    EXPECT_EQ(manager_->lastSequenceRevision(), std::nullopt);
    EXPECT_EQ(manager_->mergedRevision(), std::nullopt);
    EXPECT_EQ(manager_->mergeCommitMessage(), std::nullopt);
    EXPECT_EQ(manager_->originalRefName(), "refs/heads/main");
    EXPECT_EQ(manager_->originalRevision(), "");
    const std::string hash = makeCommit();
    EXPECT_EQ(manager_->originalRevision(), hash);
    put("ORIG_HEAD", "1a2b\n");
    EXPECT_EQ(manager_->originalRevision(), "1a2b");
}

TEST_F(RVGitMergeStateTest, EachMarkGivesItsModeAndBeatsThoseBelow) {
    // From the weakest on: each stays when the next one comes.
    put("MERGE_HEAD", "");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeMerge);
    put("SQUASH_MSG", "");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeSquash);
    put("CHERRY_PICK_HEAD", "");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeCherryPick);
    put("REVERT_HEAD", "");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeRevert);
    put("sequencer/todo", "pick 1a2b\n");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeCherryPick);
    put("sequencer/todo", "revert 1a2b\npick 3c4d\n");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeRevert);
    putDirectory("rebase-merge");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeRebase);
    put("rebase-merge/amend", "1a2b\n");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeEditing);
    putDirectory("rebase-apply");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeRebase);
    EXPECT_TRUE(manager_->isMerging());
}

TEST_F(RVGitMergeStateTest, AListThatBeginsWithAnotherCommandFallsThroughToTheHeads) {
    for (const char* list : {"reword 1a2b\n", "p 1a2b\n", "", "\n# nothing\n", "break\npick 1a2b\n",
                             "PICK 1a2b\n", "\xFF pick 1a2b\n"}) {
        clear();
        put("sequencer/todo", list);
        EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeNone) << list;
        put("CHERRY_PICK_HEAD", "1a2b\n");
        EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeCherryPick) << list;
        put("REVERT_HEAD", "1a2b\n");
        EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeRevert) << list;
    }
    // What stands ahead of a line that cannot be read counts.
    clear();
    put("sequencer/todo", "revert 1a2b\nbroken\n");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeRevert);
    EXPECT_EQ(manager_->lastSequenceStep(), 1u);
}

TEST_F(RVGitMergeStateTest, AFileInADirectorysPlaceIsNoRebase) {
    put("rebase-apply", "");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeNone);
    EXPECT_TRUE(manager_->usesRebaseApplyBackend());
    put("rebase-merge", "");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeNone);
    put("sequencer", "");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeNone);
    EXPECT_FALSE(manager_->isPendingInteractiveRebase());
    put("MERGE_HEAD", "");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeMerge);
}

TEST_F(RVGitMergeStateTest, ADirectoryInAFilesPlaceExistsAndCannotBeRead) {
    putDirectory("MERGE_HEAD");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeMerge);
    EXPECT_EQ(manager_->mergedRevision(), std::nullopt);
    EXPECT_GT(manager_->mergeTimestamp(), 0);
    putDirectory("MERGE_MSG");
    EXPECT_EQ(manager_->mergeCommitMessage(), std::nullopt);
    putDirectory("rebase-merge/head-name");
    EXPECT_EQ(manager_->originalRefName(), std::nullopt);
    putDirectory("rebase-merge/msgnum");
    EXPECT_EQ(manager_->nextSequenceStep(), 0u);
}

TEST_F(RVGitMergeStateTest, EditingAndFolding) {
    put("rebase-merge/amend", "1a2b\n");
    EXPECT_TRUE(manager_->isEditingRevision());
    put("rebase-merge/message-squash", "");
    EXPECT_FALSE(manager_->isEditingRevision());
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeEditing);
    fs::remove(gitFile("rebase-merge/message-squash"));
    put("rebase-merge/message-fixup", "");
    EXPECT_FALSE(manager_->isEditingRevision());
    fs::remove_all(gitFile("rebase-merge"));
    EXPECT_FALSE(manager_->isEditingRevision());
}

TEST_F(RVGitMergeStateTest, PendingIsARebaseByTheMergeBackendWithoutAStop) {
    putDirectory("rebase-merge");
    EXPECT_TRUE(manager_->isPendingInteractiveRebase());
    put("rebase-merge/stopped-sha", "1a2b\n");
    EXPECT_FALSE(manager_->isPendingInteractiveRebase());
    fs::remove(gitFile("rebase-merge/stopped-sha"));
    put("rebase-merge/amend", "");
    EXPECT_FALSE(manager_->isPendingInteractiveRebase());
    fs::remove(gitFile("rebase-merge/amend"));
    putDirectory("rebase-apply");
    EXPECT_FALSE(manager_->isPendingInteractiveRebase());
}

TEST_F(RVGitMergeStateTest, TheTimeIsThatOfTheFileThatMarksTheOperation) {
    const auto setTime = [&](const std::string& name, time_t seconds) {
        if (!fs::exists(gitFile(name)))
            put(name, "");
        const timespec times[] = {{0, 0}, {seconds, 250000000}};
        ASSERT_EQ(utimensat(AT_FDCWD, gitFile(name).c_str(), times, 0), 0);
    };
    setTime("MERGE_HEAD", 1000);
    EXPECT_EQ(manager_->mergeTimestamp(), 1000.25);
    setTime("SQUASH_MSG", 2000);
    EXPECT_EQ(manager_->mergeTimestamp(), 2000.25);
    setTime("CHERRY_PICK_HEAD", 3000);
    setTime("sequencer/head", 3500);
    EXPECT_EQ(manager_->mergeTimestamp(), 3000.25);
    put("sequencer/todo", "pick 1a2b\n");
    EXPECT_EQ(manager_->mergeTimestamp(), 3500.25);
    setTime("REVERT_HEAD", 4000);
    put("sequencer/todo", "drop 1a2b\n");
    EXPECT_EQ(manager_->mergeTimestamp(), 3500.25);
    fs::remove(gitFile("sequencer/todo"));
    EXPECT_EQ(manager_->mergeTimestamp(), 4000.25);
    setTime("rebase-merge/onto", 5000);
    EXPECT_EQ(manager_->mergeTimestamp(), 5000.25);
    put("rebase-merge/amend", "");
    EXPECT_EQ(manager_->mergeTimestamp(), 5000.25);
    putDirectory("rebase-apply");
    EXPECT_EQ(manager_->mergeTimestamp(), 5000.25);
    setTime("rebase-apply/onto", 6000);
    EXPECT_EQ(manager_->mergeTimestamp(), 6000.25);
    clear();
    putDirectory("rebase-merge");
    EXPECT_EQ(manager_->mergeTimestamp(), 0);
}

TEST_F(RVGitMergeStateTest, TheOriginalRevision) {
    const std::string head = makeCommit();
    put("ORIG_HEAD", "orig\n");
    put("MERGE_HEAD", "");
    EXPECT_EQ(manager_->originalRevision(), "orig");
    put("CHERRY_PICK_HEAD", "");
    EXPECT_EQ(manager_->originalRevision(), head);
    put("sequencer/head", " \tsequence\r\n\n");
    EXPECT_EQ(manager_->originalRevision(), "sequence");
    put("REVERT_HEAD", "");
    EXPECT_EQ(manager_->originalRevision(), "sequence");
    putDirectory("rebase-merge");
    EXPECT_EQ(manager_->originalRevision(), head);
    put("rebase-merge/onto", "merge-onto");
    EXPECT_EQ(manager_->originalRevision(), "merge-onto");
    put("rebase-merge/amend", "");
    put("rebase-apply/onto", "apply-onto\n");
    EXPECT_EQ(manager_->originalRevision(), "apply-onto");
    fs::remove(gitFile("rebase-apply/onto"));
    EXPECT_EQ(manager_->originalRevision(), "merge-onto");
    fs::remove_all(gitFile("rebase-apply"));
    put("rebase-merge/onto", "\xFF");
    EXPECT_EQ(manager_->originalRevision(), head);
    // A file without a line is read, and says nothing.
    put("rebase-merge/onto", "");
    EXPECT_EQ(manager_->originalRevision(), "");
}

TEST_F(RVGitMergeStateTest, TheOriginalRef) {
    makeCommit();
    EXPECT_EQ(manager_->originalRefName(), "refs/heads/main");
    put("rebase-apply/head-name", "refs/heads/applied\r\n");
    EXPECT_EQ(manager_->originalRefName(), "refs/heads/applied");
    put("rebase-merge/head-name", "refs/heads/é topic");
    EXPECT_EQ(manager_->originalRefName(), "refs/heads/é topic");
    for (const char* contents : {"detached HEAD\n", "", " refs/heads/x", "heads/x", "refs/\xFF"}) {
        put("rebase-merge/head-name", contents);
        EXPECT_EQ(manager_->originalRefName(), std::nullopt) << contents;
    }
    clear();
    gitInRepository({"checkout", "-q", "--detach"});
    EXPECT_EQ(manager_->originalRefName(), std::nullopt);
}

TEST_F(RVGitMergeStateTest, TheMergedRevision) {
    put("MERGE_HEAD", "one\ntwo\n");
    EXPECT_EQ(manager_->mergedRevision(), "one\ntwo");
    put("SQUASH_MSG", "");
    EXPECT_EQ(manager_->mergedRevision(), "one\ntwo");
    put("CHERRY_PICK_HEAD", "pick\n");
    EXPECT_EQ(manager_->mergedRevision(), "pick");
    put("REVERT_HEAD", "revert\n");
    EXPECT_EQ(manager_->mergedRevision(), "revert");
    put("rebase-merge/orig-head", "merge\n");
    EXPECT_EQ(manager_->mergedRevision(), "merge");
    put("rebase-merge/amend", "");
    EXPECT_EQ(manager_->mergedRevision(), "merge");
    putDirectory("rebase-apply");
    EXPECT_EQ(manager_->mergedRevision(), "merge");
    put("rebase-apply/orig-head", "apply\n");
    EXPECT_EQ(manager_->mergedRevision(), "apply");
    EXPECT_EQ(manager_->lastRebaseSequenceRevision(), "apply");
}

TEST_F(RVGitMergeStateTest, TheMessageOfTheFirstFileThatExists) {
    put("MERGE_MSG", " Merge \n\n# Conflicts:\r\n");
    EXPECT_EQ(manager_->mergeCommitMessage(), " Merge \n\n# Conflicts:\r\n");
    for (const char* name :
         {"rebase-apply/final-commit", "rebase-merge/message", "rebase-merge/message-squash",
          "rebase-merge/message-fixup", "SQUASH_MSG"}) {
        put(name, name);
        EXPECT_EQ(manager_->mergeCommitMessage(), name);
    }
    // The first that exists counts, be it empty or not to be read.
    put("SQUASH_MSG", "");
    EXPECT_EQ(manager_->mergeCommitMessage(), "");
    put("SQUASH_MSG", "caf\xE9");
    EXPECT_EQ(manager_->mergeCommitMessage(), std::nullopt);
}

TEST_F(RVGitMergeStateTest, WhereRefsAreKeptInTablesTheyAreAskedFor) {
    const std::string hash = makeCommit();
    put("HEAD", "ref: refs/heads/.invalid\n");
    RVFakeGit fake = useFakeGit();
    fake.setAnswer({.standardError = "fatal: not a valid ref\n", .exitCode = 128});
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeNone);
    EXPECT_EQ(manager_->mergedRevision(), std::nullopt);
    EXPECT_EQ(manager_->originalRevision(), std::nullopt);
    fake.setAnswer("ORIG_HEAD", {.standardOutput = "1a2b\n"});
    EXPECT_EQ(manager_->originalRevision(), "1a2b");
    fake.setAnswer("CHERRY_PICK_HEAD", {.standardOutput = hash + "\n"});
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeCherryPick);
    EXPECT_EQ(manager_->mergedRevision(), hash);
    fake.setAnswer("REVERT_HEAD", {.standardOutput = hash + "\n"});
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeRevert);
    EXPECT_EQ(manager_->mergedRevision(), hash);
}

TEST_F(RVGitMergeStateTest, OneThatGitKeepsInTables) {
    RVGIT_TEST_NEEDS_GIT("2.45", "it keeps refs in files alone");
    const std::string path = scratchPath("tables");
    git({"init", "-q", "--ref-format=reftable", "-b", "main", path});
    commitFile(path, "file", "base\n", "Base");
    git({"checkout", "-q", "-b", "topic"}, path);
    // A branch of the name is another ref.
    git({"update-ref", "refs/heads/REVERT_HEAD", "HEAD"}, path);
    const std::string theirs = commitFile(path, "file", "theirs\n", "Theirs");
    git({"checkout", "-q", "main"}, path);
    const std::string ours = commitFile(path, "file", "ours\n", "Ours");
    const auto manager =
        RVGitMergeManager::mergeManagerWithRepository(RVGitRepository::repositoryWithPath(path));
    EXPECT_EQ(manager->currentMergeMode(), RVGitMergeModeNone);
    EXPECT_FALSE(manager->cherryPickRevisions({"topic"}, std::nullopt));
    EXPECT_EQ(manager->currentMergeMode(), RVGitMergeModeCherryPick);
    EXPECT_EQ(manager->mergedRevision(), theirs);
    EXPECT_EQ(manager->originalRevision(), ours);
    EXPECT_TRUE(manager->abortCurrentOperation());
    EXPECT_EQ(manager->currentMergeMode(), RVGitMergeModeNone);
    EXPECT_FALSE(manager->revertRevisions({"main^"}, std::nullopt));
    EXPECT_EQ(manager->currentMergeMode(), RVGitMergeModeRevert);
    EXPECT_TRUE(manager->abortCurrentOperation());
    EXPECT_EQ(manager->currentMergeMode(), RVGitMergeModeNone);
}

TEST_F(RVGitMergeStateTest, PositionOfARebaseByTheApplyBackend) {
    put("rebase-apply/next", "0003\n");
    put("rebase-apply/last", " 7");
    put("rebase-apply/original-commit", "1a2b\n");
    put("rebase-apply/orig-head", "3c4d\n");
    EXPECT_EQ(manager_->nextSequenceStep(), 3u);
    EXPECT_EQ(manager_->lastSequenceStep(), 7u);
    EXPECT_EQ(manager_->nextSequenceRevision(), "1a2b");
    EXPECT_EQ(manager_->lastSequenceRevision(), "3c4d");
    // With both directories, the position is that of the other backend.
    put("rebase-merge/msgnum", "4\n");
    put("rebase-merge/end", "8\n");
    put("rebase-merge/done", "pick 5e6f\n");
    EXPECT_EQ(manager_->nextSequenceStep(), 4u);
    EXPECT_EQ(manager_->lastSequenceStep(), 8u);
    EXPECT_EQ(manager_->nextSequenceRevision(), "5e6f");
    EXPECT_EQ(manager_->lastSequenceRevision(), "3c4d");
    EXPECT_EQ(manager_->nextRebaseSequenceStep(), 3u);
}

TEST_F(RVGitMergeStateTest, PositionOfARebaseByTheMergeBackend) {
    put("rebase-merge/msgnum", "2\n");
    put("rebase-merge/end", "5\n");
    put("rebase-merge/done", "pick 1a2b One\npick 3c4d Two\n");
    put("rebase-merge/orig-head", "5e6f\n");
    EXPECT_EQ(manager_->nextSequenceStep(), 2u);
    EXPECT_EQ(manager_->lastSequenceStep(), 5u);
    EXPECT_EQ(manager_->nextSequenceRevision(), "3c4d");
    EXPECT_EQ(manager_->lastSequenceRevision(), "5e6f");
    put("rebase-merge/amend", "7a8b\n");
    EXPECT_EQ(manager_->nextSequenceStep(), 2u);
    EXPECT_EQ(manager_->lastSequenceStep(), 5u);
    EXPECT_EQ(manager_->nextSequenceRevision(), "7a8b");
    EXPECT_EQ(manager_->lastSequenceRevision(), "5e6f");
}

TEST_F(RVGitMergeStateTest, PositionOfASequence) {
    for (const char* command : {"pick", "revert"}) {
        put("sequencer/todo",
            command + " 1a2b One\n"s + command + " 3c4d Two\n"s + command + " 5e6f Three"s);
        EXPECT_EQ(manager_->nextSequenceStep(), 0u);
        EXPECT_EQ(manager_->lastSequenceStep(), 3u);
        EXPECT_EQ(manager_->nextSequenceRevision(), "1a2b");
        EXPECT_EQ(manager_->lastSequenceRevision(), "5e6f");
        EXPECT_EQ(manager_->nextDefaultSequencerStep(), 0u);
    }
}

TEST_F(RVGitMergeStateTest, NumbersThatAreNone) {
    putDirectory("rebase-merge");
    for (const auto& [contents, number] :
         {std::pair(""s, 0ull), std::pair("x"s, 0ull), std::pair("-3"s, 0ull),
          std::pair("12x"s, 12ull), std::pair("\r\n7\r\n"s, 7ull), std::pair("\xFF"s, 0ull),
          std::pair("99999999999999999999"s, 9223372036854775807ull)}) {
        put("rebase-merge/msgnum", contents);
        EXPECT_EQ(manager_->nextSequenceStep(), number) << contents;
    }
}

// State files that a stranger has made.

constexpr const char* stateFiles[] = {"MERGE_HEAD",
                                      "MERGE_MSG",
                                      "SQUASH_MSG",
                                      "CHERRY_PICK_HEAD",
                                      "REVERT_HEAD",
                                      "ORIG_HEAD",
                                      "sequencer/todo",
                                      "sequencer/head",
                                      "rebase-apply/onto",
                                      "rebase-apply/head-name",
                                      "rebase-apply/next",
                                      "rebase-apply/last",
                                      "rebase-apply/orig-head",
                                      "rebase-apply/original-commit",
                                      "rebase-apply/final-commit",
                                      "rebase-merge/onto",
                                      "rebase-merge/head-name",
                                      "rebase-merge/msgnum",
                                      "rebase-merge/end",
                                      "rebase-merge/done",
                                      "rebase-merge/orig-head",
                                      "rebase-merge/amend",
                                      "rebase-merge/message",
                                      "rebase-merge/message-squash",
                                      "rebase-merge/message-fixup",
                                      "rebase-merge/stopped-sha"};

class RVGitHostileMergeStateTest : public RVGitMergeStateTest {
protected:
    /// Each state file in turn becomes what `make` makes of its path, beside a rebase of either
    /// backend and beside none, and all readers are asked.
    void forEachStateFile(const std::function<void(const std::string& path)>& make,
                          const std::string& secret) {
        for (const char* name : stateFiles) {
            for (const char* directory : {"", "rebase-merge/x", "rebase-apply/x"}) {
                clear();
                if (*directory)
                    put(directory, "");
                fs::create_directories(fs::path(gitFile(name)).parent_path());
                make(gitFile(name));
                const auto said = everything();
                if (secret.empty())
                    continue;
                for (const std::string& text : said)
                    EXPECT_EQ(text.find(secret), std::string::npos) << name;
            }
        }
    }
};

TEST_F(RVGitHostileMergeStateTest, NoReaderWaitsForAPipe) {
    forEachStateFile([](const std::string& path) { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); }, "");
}

TEST_F(RVGitHostileMergeStateTest, NoReaderOpensADevice) {
    RVGIT_TEST_NEEDS_RIGHTS(mknod(gitFile("test").c_str(), S_IFCHR | 0600, makedev(1, 5)) == 0,
                            "devices cannot be made here");
    fs::remove(gitFile("test"));
    // It would never end.
    forEachStateFile(
        [](const std::string& path) {
            ASSERT_EQ(mknod(path.c_str(), S_IFCHR | 0600, makedev(1, 5)), 0);
        },
        "");
}

TEST_F(RVGitHostileMergeStateTest, NoReaderFollowsALink) {
    const std::string target = writeFile("secret", "pick secret\n");
    forEachStateFile([&](const std::string& path) { fs::create_symlink(target, path); }, "secret");
    clear();
    fs::create_symlink(target, gitFile("MERGE_HEAD"));
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeMerge);
    EXPECT_EQ(manager_->mergedRevision(), std::nullopt);
}

TEST_F(RVGitHostileMergeStateTest, NoReaderLooksBehindALinkedDirectory) {
    for (const char* name : {"rebase-apply", "rebase-merge", "sequencer"}) {
        clear();
        for (const char* file :
             {"onto", "head-name", "todo", "head", "done", "amend", "msgnum", "message"})
            writeFile("elsewhere/"s + file, "pick 4711\n");
        fs::create_symlink(scratchPath("elsewhere"), gitFile(name));
        EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeNone) << name;
        for (const std::string& text : everything())
            EXPECT_EQ(text.find("4711"), std::string::npos) << name;
    }
}

TEST_F(RVGitHostileMergeStateTest, NoReaderTakesAGigabyte) {
    forEachStateFile(
        [](const std::string& path) {
            writeTestFile(path, "pick 1a2b\n");
            fs::resize_file(path, std::uintmax_t{1} << 30);
        },
        "1a2b");
}

TEST_F(RVGitHostileMergeStateTest, AListOfAMegabyteIsReadWhole) {
    std::string list;
    while (list.size() < (1u << 20))
        list += "pick " + std::to_string(1000000 + list.size()) + " a subject\n";
    put("sequencer/todo", list + "pick 1a2b last");
    EXPECT_EQ(manager_->lastSequenceRevision(), "1a2b");
    put("rebase-merge/done", list + "pick 1a2b last\n");
    EXPECT_EQ(manager_->nextSequenceRevision(), "1a2b");
    put("MERGE_MSG", list);
    EXPECT_EQ(manager_->mergeCommitMessage(), list);
}

TEST_F(RVGitHostileMergeStateTest, FilesThatMayNotBeReadExistAllTheSame) {
    for (const char* name : stateFiles) {
        put(name, "pick 4711\n");
        fs::permissions(gitFile(name), fs::perms::none);
    }
    const RVUnprivilegedUser user(repositoryPath());
    RVGIT_TEST_NEEDS_RIGHTS(user.isEffective(), "nothing is forbidden to this user");
    EXPECT_EQ(manager_->currentMergeMode(), RVGitMergeModeRebase);
    EXPECT_EQ(manager_->mergeCommitMessage(), std::nullopt);
    EXPECT_EQ(manager_->mergedRevision(), std::nullopt);
    EXPECT_EQ(manager_->originalRefName(), std::nullopt);
    EXPECT_EQ(manager_->nextSequenceStep(), 0u);
    EXPECT_EQ(manager_->nextSequenceRevision(), std::nullopt);
    EXPECT_EQ(manager_->lastDefaultSequencerStep(), 0u);
    EXPECT_GT(manager_->mergeTimestamp(), 0);
}

TEST_F(RVGitHostileMergeStateTest, AnInvalidAndABareRepositoryHaveNothingUnderWay) {
    const auto invalid = RVGitRepository::repositoryWithPath(makeDirectory("none"));
    const auto none = RVGitMergeManager::mergeManagerWithRepository(invalid);
    EXPECT_EQ(none->currentMergeMode(), RVGitMergeModeNone);
    EXPECT_EQ(none->originalRefName(), std::nullopt);
    EXPECT_EQ(none->mergeCommitMessage(), std::nullopt);
    EXPECT_FALSE(none->canResolveUnmergedFileByAdding("file"));
    const auto bare = RVGitRepository::bareRepositoryWithGitDirectoryPath(initBareRepository());
    EXPECT_EQ(RVGitMergeManager(bare).currentMergeMode(), RVGitMergeModeNone);
}

TEST_F(RVGitHostileMergeStateTest, ReadersRunNoProcess) {
    RVGIT_TEST_NEEDS_REF_FILES("git is asked for what is in tables");
    makeCommit();
    put("ORIG_HEAD", "1a2b\n");
    const auto recorder = useRecordingGit();
    for (const char* name : stateFiles) {
        clear();
        put("ORIG_HEAD", "1a2b\n");
        put("sequencer/head", "1a2b\n");
        put("rebase-merge/onto", "1a2b\n");
        put(name, "pick 1a2b\n");
        (void)everything();
    }
    EXPECT_TRUE(recorder.argumentLists().empty());
}

}  // namespace
