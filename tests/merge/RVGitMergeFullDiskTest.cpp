// A temporary directory on a disk that is full: nothing that was half written is ever run or
// believed, and nothing is left behind.

#include <sys/mount.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/merge/RVGitDiffTool.h"
#include "RVGit/merge/RVGitDiffToolCommand.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/merge/RVGitMergeTool.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/merge/RVGitRewritingTestCase.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVRepositorySnapshot.h"
#include "tests/support/RVTestSmallDisk.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t block = 4096;

/// "A" to "T", with "T" at HEAD; each test fills the disk as far as it needs.
class RVGitFullTemporaryDirectoryTest : public RVGitRewritingTestCase {
protected:
    void SetUp() override {
        if (!isOnSmallDisk())
            return;
        hashes_ = makeLetters(20);
        ASSERT_EQ(
            ::mount("tmpfs", temporaryDirectory().c_str(), "tmpfs", 0, "size=64k,nr_inodes=16"), 0);
        before_.emplace(repositoryPath());
    }
    void TearDown() override {
        if (isOnSmallDisk())
            ::umount2(temporaryDirectory().c_str(), MNT_DETACH);
    }

    /// Leaves so many blocks.
    void fill(std::size_t blocksLeft) {
        std::ofstream filler(temporaryDirectory() + "/filler", std::ios::binary);
        const std::string bytes(block, 'x');
        for (struct statvfs status;
             ::statvfs(temporaryDirectory().c_str(), &status) == 0 && status.f_bfree > blocksLeft;)
            filler.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
    }
    void makeRoom() { fs::remove(temporaryDirectory() + "/filler"); }

    [[nodiscard]] const std::string& hash(std::size_t index) const { return hashes_.at(index); }
    /// Nothing was done, and nothing but the filler is there.
    void expectNothingDone() {
        EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(*before_), "");
        EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(temporaryDirectory()),
                    ElementsAre("filler"));
    }
    void expectFull(const std::function<bool(RVErrorPlace)>& operation) {
        EXPECT_THAT(operation, failsWith(ENOSPC));
        expectNothingDone();
    }
    /// As a state to go back to.
    void rememberState() { before_.emplace(repositoryPath()); }

private:
    std::vector<std::string> hashes_;
    std::optional<RVRepositorySnapshot> before_;
};

TEST_F(RVGitFullTemporaryDirectoryTest, NoGestureBegins) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    fill(0);
    expectFull([&](RVErrorPlace e) {
        return manager().moveRevisionsAboveRevision({hash(5)}, hash(7), e);
    });
    expectFull([&](RVErrorPlace e) {
        return manager().moveRevisionsBelowRevision({hash(5)}, hash(2), e);
    });
    expectFull([&](RVErrorPlace e) { return manager().deleteRevisions({hash(5)}, e); });
    expectFull([&](RVErrorPlace e) { return manager().squashRevisions({hash(9), hash(8)}, e); });
    expectFull([&](RVErrorPlace e) { return manager().fixupRevisions({hash(9)}, hash(8), e); });
    expectFull([&](RVErrorPlace e) { return manager().setCommitMessage("Mine", hash(9), e); });
    expectFull([&](RVErrorPlace e) { return manager().editRevision(hash(9), e); });
    expectFull([&](RVErrorPlace e) {
        return manager().rebaseOntoWithRevision(hash(9), {hash(10)}, hash(3), std::nullopt, e);
    });
    makeRoom();
    EXPECT_TRUE(manager().deleteRevisions({hash(5)}));
    EXPECT_EQ(subjects(), "A B C D E G H I J K L M N O P Q R S T");
}

TEST_F(RVGitFullTemporaryDirectoryTest, HalfAListIsNotWorkedOff) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    // More than a block: a script that ends anywhere would drop the commits behind.
    for (int count = 0; count < 60; ++count)
        (void)makeCommit("More");
    rememberState();
    fill(1);
    expectFull([&](RVErrorPlace e) { return manager().deleteRevisions({hash(1)}, e); });
    expectFull([&](RVErrorPlace e) { return manager().editRevision(hash(1), e); });
    makeRoom();
    EXPECT_TRUE(manager().deleteRevisions({hash(1)}));
    EXPECT_EQ(gitInRepository({"rev-list", "--count", "HEAD"}), "79");
}

TEST_F(RVGitFullTemporaryDirectoryTest, AMessageThatDoesNotFitLeavesNoListBehind) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    const std::string message = "Subject\n\n" + std::string(2 * block, 'm');
    for (const std::size_t blocksLeft : {1u, 2u}) {
        fill(blocksLeft);
        expectFull(
            [&](RVErrorPlace e) { return manager().setCommitMessage(message, hash(18), e); });
        makeRoom();
    }
    // Here the message fits, and the list does not.
    fill(3);
    expectFull([&](RVErrorPlace e) { return manager().setCommitMessage(message, hash(0), e); });
    makeRoom();
    EXPECT_TRUE(manager().setCommitMessage(message, hash(18)));
    EXPECT_EQ(gitInRepository({"log", "-1", "--format=%s", "HEAD~1"}), "Subject");
}

TEST_F(RVGitFullTemporaryDirectoryTest, NoFileCanBeMade) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    std::vector<std::string> names;
    for (int count = 0; count < 16; ++count)
        if (std::ofstream(temporaryDirectory() + "/" + std::to_string(count)))
            names.push_back(std::to_string(count));
    std::sort(names.begin(), names.end());
    EXPECT_EQ(
        errorOf([&](RVErrorPlace e) { return manager().deleteRevisions({hash(5)}, e); }).code(),
        ENOSPC);
    EXPECT_EQ(RVFileManager::namesInDirectoryAtPath(temporaryDirectory()), names);
    EXPECT_EQ(subjects(), "A B C D E F G H I J K L M N O P Q R S T");
}

TEST_F(RVGitFullTemporaryDirectoryTest, WhatHasStoppedStaysAsItIs) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    EXPECT_TRUE(manager().editRevision(hash(10), true));
    gitInRepository({"commit", "-q", "--amend", "-m", "Changed"});
    for (const auto& name : RVFileManager::namesInDirectoryAtPath(temporaryDirectory()))
        fs::remove(temporaryDirectory() + "/" + name);
    rememberState();
    const std::string message(2 * block, 'm');
    for (const std::size_t blocksLeft : {0u, 1u}) {
        fill(blocksLeft);
        expectFull(
            [&](RVErrorPlace e) { return manager().continueRebaseWithCommitMessage(message, e); });
        expectFull([&](RVErrorPlace e) {
            return manager().continueEmptyRebaseWithCommitMessage(message, e);
        });
        expectFull([&](RVErrorPlace e) {
            return manager().continueCurrentOperationWithCommitMessage(message, e);
        });
        makeRoom();
    }
    fill(0);
    // What needs no script goes on and back as ever.
    EXPECT_TRUE(manager().continueRebase());
    EXPECT_EQ(gitInRepository({"rev-list", "--count", "HEAD"}), "20");
    EXPECT_THAT(subjects(), HasSubstr("J Changed L"));
}

TEST_F(RVGitFullTemporaryDirectoryTest, MergesAndPreviewsNeedNoTemporaryFile) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    gitInRepository({"checkout", "-q", "-b", "side", hash(10)});
    (void)makeCommit("Side");
    gitInRepository({"checkout", "-q", "main"});
    fill(0);
    EXPECT_TRUE(manager().canMergeRevision("side", "main"));
    EXPECT_TRUE(manager().mergeWithRevision("side", std::nullopt));
    EXPECT_TRUE(manager().revertRevisions({"HEAD~1"}, std::nullopt));
    EXPECT_TRUE(manager().cherryPickRevisions({"HEAD~1^2"}, std::nullopt) ||
                manager().abortCurrentOperation());
    EXPECT_EQ(manager().currentMergeMode(), RVGitMergeModeNone);
    EXPECT_THAT(RVFileManager::namesInDirectoryAtPath(temporaryDirectory()), ElementsAre("filler"));
}

TEST_F(RVGitFullTemporaryDirectoryTest, NoToolIsShownHalfAFile) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    const std::string contents(3 * block, 'c');
    (void)commitFile("repository", "large", contents, "Large");
    (void)commitFile("repository", "large", contents + "more\n", "Larger");
    // It tells what it was shown.
    const std::string shown = scratchPath("shown");
    const std::string program =
        writeFile("tools/tool", "#!/bin/sh\ncat \"$1\"/* >>'" + shown + "'\n", 0755);
    gitInRepository({"config", "difftool.tool.cmd", "'" + program + "' \"$LOCAL\""});
    rememberState();
    fill(1);
    std::mutex mutex;
    std::optional<RVError> told;
    int exitCode = 0;
    const auto tool = RVGitDiffTool::diffToolWithRepository(repository(), "tool");
    tool->launchWithRevisions(std::vector<std::string>{"HEAD~1", "HEAD"}, std::nullopt,
                              RVGitDiffToolOptionPerformsDirectoryDiff,
                              [&](int code, const std::optional<RVError>& error) {
                                  const std::lock_guard lock(mutex);
                                  exitCode = code;
                                  told = error;
                              });
    tool->queue().waitUntilAllOperationsAreFinished();
    const std::lock_guard lock(mutex);
    EXPECT_TRUE(told.has_value());
    EXPECT_NE(exitCode, 0);
    EXPECT_FALSE(fileExists(shown)) << readFile(shown).size();
    EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).stateFiles.size(), 0u);
}

TEST_F(RVGitFullTemporaryDirectoryTest, ThereIsNoFileForSignersThen) {
    RVGIT_TEST_NEEDS_SMALL_DISK();
    RVGitRepository::setTemporaryFilePath(std::nullopt);
    for (int count = 0; count < 16; ++count)
        (void)std::ofstream(temporaryDirectory() + "/" + std::to_string(count));
    EXPECT_EQ(RVGitRepository::temporaryAllowedSignersFilePath(), std::nullopt);
    fs::remove(temporaryDirectory() + "/0");
    EXPECT_NE(RVGitRepository::temporaryAllowedSignersFilePath(), std::nullopt);
    RVGitRepository::setTemporaryFilePath(std::nullopt);
}

}  // namespace
