#include "RVGit/repository/RVGitRepository.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/worktree/RVGitIgnores.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

class RVGitRepositoryThreadsTest : public RVGitRepositoryTestCase {
protected:
    ~RVGitRepositoryThreadsTest() override {
        if (const auto path = RVGitRepository::temporaryFilePath())
            std::filesystem::remove(*path);
        RVGitRepository::setTemporaryFilePath(std::nullopt);
    }
    /// What eight threads get that ask the repository for its part at once: the same one.
    template <typename Ask>
    void expectOnePart(const Ask& ask) {
        std::vector<decltype(ask())> parts(8);
        {
            std::vector<std::jthread> threads;
            for (auto& part : parts)
                threads.emplace_back([&] { part = ask(); });
        }
        ASSERT_NE(parts[0], nullptr);
        EXPECT_EQ(parts[0]->repository(), repository());
        EXPECT_THAT(parts, testing::Each(parts[0]));
        EXPECT_EQ(ask(), parts[0]);
    }
};

TEST_F(RVGitRepositoryThreadsTest, ConcurrentCallersGetOneTemporaryFile) {
    const std::string directory = makeDirectory("temporary");
    setEnvironmentVariable("TMPDIR", directory);
    std::vector<std::optional<std::string>> paths(16);
    {
        std::vector<std::jthread> threads;
        for (auto& path : paths)
            threads.emplace_back(
                [&path] { path = RVGitRepository::temporaryAllowedSignersFilePath(); });
    }
    EXPECT_EQ(std::set(paths.begin(), paths.end()).size(), 1u);
    EXPECT_EQ(RVFileManager::namesInDirectoryAtPath(directory).size(), 1u);
    EXPECT_EQ(RVGitRepository::temporaryAllowedSignersFileLock().name(),
              "com.varnelsoft.Varnel.temporaryAllowedSignersFileURLAccesor");
    EXPECT_EQ(RVGitRepository::temporaryAllowedSignersFileLock().maxConcurrentOperationCount(), 1u);
}

TEST_F(RVGitRepositoryThreadsTest, ThreadsThatAskForAPartGetTheSameOne) {
    expectOnePart([&] { return repository()->config(); });
    expectOnePart([&] { return repository()->ignores(); });
    expectOnePart([&] { return repository()->index(); });
}

TEST_F(RVGitRepositoryThreadsTest, WhatIsOpenedWhileAllIsCancelledIsNotTakenForAnotherRepository) {
    makeCommit();
    const std::string inner = makeDirectory("repository/inner");
    const std::string other = makeDirectory("other");
    gitInRepository({"config", "core.worktree", other});
    const std::string& gitDirectory = repositoryPath() + "/.git";
    for (const char* pattern : {"*' --is-bare-repository '*", "*' --git-dir '*",
                                "*' core.worktree '*", "*' --is-inside-work-tree '*"}) {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {pattern});
        const auto opened = RVGitRepository::repositoryWithPath(gitDirectory);
        EXPECT_FALSE(opened->isValid()) << pattern;
        EXPECT_EQ(opened->path(), gitDirectory);
        EXPECT_EQ(opened->gitDirectoryPath(), std::nullopt);
        EXPECT_EQ(opened->workingTreeDirectoryPath(), std::nullopt);
    }
    EXPECT_EQ(RVGitRepository::repositoryWithPath(gitDirectory)->workingTreeDirectoryPath(), other);
    const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' --git-dir '*"});
    EXPECT_EQ(RVGitRepository::reasonForInvalidRepositoryAtPath(inner), std::nullopt);
}

TEST_F(RVGitRepositoryThreadsTest, TheRepositoryAroundOneWhoseMakingIsCancelledIsNotTakenForIt) {
    const std::string inner = makeDirectory("repository/inner");
    std::optional<RVError> error = RVError("before", 1);
    {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' init '*"});
        EXPECT_EQ(RVGitRepository::createRepositoryAtPath(inner, std::nullopt, &error), nullptr);
    }
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(RVGitRepository::createRepositoryAtPath(inner, std::nullopt)->path(), inner);
}

TEST_F(RVGitRepositoryThreadsTest, ARepositoryThatWasNotLookedAtIsNotCalledEmpty) {
    makeCommit();
    const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' show-ref '*"});
    EXPECT_FALSE(repository()->isEmpty());
}

TEST_F(RVGitRepositoryThreadsTest, AHeadThatWasNotReadIsAbsent) {
    makeCommit();
    {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' show-ref '*"});
        EXPECT_EQ(repository()->HEADRevision(), std::nullopt);
    }
    // What stands in the file where refs are kept in tables.
    writeFile("repository/.git/HEAD", "ref: refs/heads/.invalid\n");
    {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(),
                                        {"*' symbolic-ref '*"});
        EXPECT_EQ(repository()->HEADRefName(), std::nullopt);
    }
    const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' symbolic-ref '*"});
    EXPECT_FALSE(repository()->isHEADBranchDetached());
}

}  // namespace
