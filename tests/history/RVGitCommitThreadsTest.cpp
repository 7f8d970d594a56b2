#include "RVGit/history/RVGitCommit.h"

#include <thread>
#include <vector>

#include "RVGit/command/RVGitActor.h"
#include "RVGit/objects/RVGitSignature.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

class RVGitCommitThreadsTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitCommitThreadsTest, ObjectsOfACommitAreMadeOnce) {
    makeCommit();
    const auto commit = RVGitCommit::commitForCommitHash("HEAD", repository());
    ASSERT_NE(commit, nullptr);
    std::vector<RVGitActor*> authors(8);
    std::vector<std::thread> threads;
    for (auto& author : authors)
        threads.emplace_back([&] { author = commit->author().get(); });
    for (auto& thread : threads)
        thread.join();
    EXPECT_THAT(authors, testing::Each(commit->author().get()));
    EXPECT_EQ(commit->committer(), commit->committer());
    EXPECT_EQ(commit->signature(), commit->signature());
}

}  // namespace
