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

}  // namespace
