#include "RVGit/remotes/RVGitBranch.h"

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/support/RVCanceller.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using namespace std::string_literals;

class RVGitBranchThreadsTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitBranchThreadsTest, AListingThatIsCancelledIsNoListAndNoError) {
    makeCommit();
    const RVHangingGit git = hangingGit("branch");
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git.path()));
    const RVCanceller canceller(git.begunPath());
    std::optional<RVError> error = RVError("before", 1);
    EXPECT_FALSE(RVGitBranch::allBranchesForRepository(repository(), &error).has_value());
    EXPECT_FALSE(error.has_value());
}

TEST_F(RVGitBranchThreadsTest, AListingWhoseConfigurationIsNotReadWholeIsNoListAndNoError) {
    makeCommit();
    const std::function<bool(RVErrorPlace)> listings[] = {
        [&](RVErrorPlace e) {
            return RVGitBranch::allBranchesForRepository(repository(), e).has_value();
        },
        [&](RVErrorPlace e) {
            return RVGitRemote::allRemotesForRepository(repository(), e).has_value();
        },
        [&](RVErrorPlace e) {
            return RVGitRemote::SVNRemoteConfigOptionsForRepository(repository(), e).has_value();
        },
    };
    for (const auto& listing : listings) {
        const RVHangingGit git = hangingGit("config", "branch.main.remote\norigin\0"s);
        RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git.path()));
        const RVCanceller canceller(git.begunPath());
        std::optional<RVError> error = RVError("before", 1);
        EXPECT_FALSE(listing(&error));
        EXPECT_FALSE(error.has_value());
    }
}

TEST_F(RVGitBranchThreadsTest, TrackingOfWhichItWasNotReadWhetherThereIsAnyIsNotGone) {
    makeCommit();
    gitInRepository({"config", "branch.main.remote", "origin"});
    std::optional<RVError> error = RVError("before", 1);
    {
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' config '*"});
        EXPECT_FALSE(RVGitBranch::removeTrackingForBranchWithRefName("main", repository(), &error));
    }
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(gitInRepository({"config", "branch.main.remote"}), "origin");
    ASSERT_TRUE(RVGitBranch::removeTrackingForBranchWithRefName("main", repository(), &error));
    EXPECT_NE(runGit({"config", "branch.main.remote"}, repositoryPath()).exitCode, 0);
}

TEST_F(RVGitBranchThreadsTest, AnOlderBranchIsNotTakenForOneWhoseMakingIsCancelled) {
    const std::string hash = makeCommit();
    gitInRepository({"branch", "topic"});
    makeCommit();
    for (const bool isTracking : {false, true}) {
        std::optional<RVError> error = RVError("before", 1);
        const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), {"*' branch '*"});
        EXPECT_EQ(isTracking ? RVGitBranch::createTrackingBranchWithRefName("topic", "main",
                                                                            repository(), &error)
                             : RVGitBranch::createBranchWithRefName("topic", std::nullopt,
                                                                    repository(), &error),
                  nullptr);
        EXPECT_EQ(error, std::nullopt);
    }
    EXPECT_EQ(gitInRepository({"rev-parse", "topic"}), hash);
}

TEST_F(RVGitBranchThreadsTest, AListingMayBeMadeOnAThreadOfTheQueue) {
    makeCommit();
    gitInRepository({"branch", "topic"});
    for (int round = 0; round < 5; ++round) {
        std::size_t count = 0;
        auto command = RVGitCommand::gitCommandWithRepository(repository());
        command->setGitCommand("status");
        command->setCompletionHandler([&](RVGitCommand&) {
            const auto branches = RVGitBranch::allBranchesForRepository(repository());
            count = branches ? branches->size() : 0;
        });
        EXPECT_TRUE(command->run());
        EXPECT_EQ(count, 2U);
    }
}

TEST_F(RVGitBranchThreadsTest, ManyThreadsListAtOnce) {
    makeCommit();
    gitInRepository({"branch", "topic"});
    std::atomic<int> wholeLists = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 12; ++number)
        threads.emplace_back([&] {
            const auto branches = RVGitBranch::allBranchesForRepository(repository());
            const auto remotes = RVGitRemote::allRemotesForRepository(repository());
            if (branches && branches->size() == 2 && remotes && remotes->empty())
                ++wholeLists;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wholeLists, 12);
}

}  // namespace
