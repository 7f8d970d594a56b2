#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <thread>

#include "RVGit/base/RVError.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/remotes/RVGitTransferTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Clock = std::chrono::steady_clock;

/// Transfers that are cancelled at random moments of their course.
class RVGitTransferCancelThreadsTest : public RVGitTransferTestCase {
protected:
    RVGitTransferCancelThreadsTest() {
        serveRepository();
        const std::string source = scratchPath("source of a.git");
        for (int number = 0; number < 400; ++number)
            writeFile(
                "source of a.git/" + std::to_string(number % 20) + "/" + std::to_string(number),
                noise(4000));
        git({"add", "."}, source);
        git({"commit", "-m", "Noise"}, source);
        git({"push", servedPath(), "main"}, source);
    }

    static constexpr std::size_t numberOfHeldBytes = 400'000;

    /// How many transfers are cancelled: RVGIT_TEST_ROUNDS, or else a few.
    static int numberOfRounds() {
        const char* rounds = std::getenv("RVGIT_TEST_ROUNDS");
        return rounds ? std::max(1, std::atoi(rounds) / 6) : 4;
    }
    std::string noise(std::size_t size) {
        std::string bytes(size, ' ');
        for (char& byte : bytes)
            byte = static_cast<char>(random_());
        return bytes;
    }
    /// Cancels at a moment before the end that a whole run had; what the command ended with must be
    /// no error.
    void cancelSometime(RVGitCommand& command, Clock::duration wholeRun) {
        const auto moment = std::chrono::duration_cast<std::chrono::microseconds>(wholeRun).count();
        command.enqueueCommand();
        std::this_thread::sleep_for(std::chrono::microseconds(
            std::uniform_int_distribution<long long>(0, moment)(random_)));
        command.cancel();
        EXPECT_TRUE(launchedProcessesEnd());
        command.waitUntilFinished();
        EXPECT_FALSE(command.error()) << command.standardErrorString();
    }
    template <typename Command>
    Clock::duration durationOf(Command& command) {
        const auto start = Clock::now();
        EXPECT_EQ(codeOf(command), 0) << command.standardErrorString();
        return Clock::now() - start;
    }
    /// Paths that end in ".lock".
    [[nodiscard]] std::vector<std::string> locksIn(const std::string& path) const {
        std::vector<std::string> locks;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(scratchPath(path)))
            if (entry.path().extension() == ".lock")
                locks.push_back(entry.path());
        return locks;
    }
    /// Each git makes a lock, and then notes that it has to take it away: one that is ended between
    /// these two leaves the lock, which nothing has been written into.
    [[nodiscard]] bool holdsNoLockButOneJustMade(const std::string& path) const {
        const std::vector<std::string> locks = locksIn(path);
        return locks.empty() || (locks.size() == 1 && std::filesystem::is_empty(locks.front()));
    }
    /// The names in a directory.
    [[nodiscard]] static std::vector<std::string> namesIn(const std::string& path) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path))
            names.push_back(entry.path().filename());
        return names;
    }
    std::shared_ptr<RVGitRepository> openRepository(const std::string& name) {
        const std::string path = initRepository(name);
        return RVGitRepository::repositoryWithWorkingTreeDirectoryPath(path, path + "/.git");
    }
    static void remove(const std::string& path) { std::filesystem::remove_all(path); }

    void cancelClones(Protocol protocol) {
        const std::string address = url(protocol);
        const auto clone = [&] {
            return RVGitCloneCommand::gitCloneCommandWithRemoteURL(address, scratchPath("new"), {});
        };
        const auto whole = durationOf(*clone());
        const std::string tip = gitLine({"rev-parse", "HEAD"}, "new");
        remove(scratchPath("new"));
        makeDirectory("existing");
        int numberOfLeavings = 0;
        for (int round = 0; round < numberOfRounds(); ++round) {
            const bool intoExisting = round % 4 == 3;
            const std::string path = scratchPath(intoExisting ? "existing" : "new");
            const auto command = RVGitCloneCommand::gitCloneCommandWithRemoteURL(address, path, {});
            cancelSometime(*command, whole);
            // Either it is whole, or nothing is left of it, but for what git had only just made and
            // not yet noted that it has to take away. It may be ended behind the checkout, when it
            // takes nothing back.
            if (fileExists(path + "/.git")) {
                EXPECT_EQ(gitLine({"rev-parse", "HEAD"}, path), tip) << round;
                EXPECT_TRUE(holdsNoLockButOneJustMade(path)) << round;
                // The lock is made before the first file.
                if (!locksIn(path).empty()) {
                    EXPECT_THAT(namesIn(path), ElementsAre(".git")) << round;
                    ++numberOfLeavings;
                }
            } else if (std::filesystem::exists(path)) {
                EXPECT_TRUE(std::filesystem::is_empty(path)) << round;
                numberOfLeavings += !intoExisting;
            } else {
                EXPECT_FALSE(intoExisting) << round;
            }
            remove(path);
            makeDirectory("existing");
        }
        // It is a matter of microseconds.
        EXPECT_LE(numberOfLeavings, 1 + numberOfRounds() / 10);
    }

    void cancelFetches(Protocol protocol) {
        const std::string address = url(protocol);
        const auto spec = RVGitRefSpec::refSpecFromString("refs/heads/main:refs/heads/fetched");
        const auto fetchInto = [&](const std::shared_ptr<RVGitRepository>& target) {
            return RVGitFetchCommand::gitFetchCommandWithRepository(target, address, spec);
        };
        const auto whole = durationOf(*fetchInto(openRepository("whole")));
        const std::string updated = refsIn("whole");
        for (int round = 0; round < numberOfRounds(); ++round) {
            const auto target = openRepository("target");
            cancelSometime(*fetchInto(target), whole);
            EXPECT_THAT(refsIn("target"), testing::AnyOf("", updated)) << round;
            EXPECT_TRUE(holdsNoLockButOneJustMade("target")) << round;
            EXPECT_EQ(runGit({"fsck"}, "target").exitCode, 0) << round;
            remove(scratchPath("target"));
        }
    }

    void cancelPushes(Protocol protocol) {
        gitInRepository({"fetch", servedPath(), "main:main2"});
        const auto pushTo = [&](const std::string& name) {
            const std::string path = initBareRepository("served/" + name);
            git({"config", "http.receivepack", "true"}, path);
            gitInRepository({"config", "remote.origin.url", url(protocol, name)});
            return push("main2:refs/heads/pushed");
        };
        const auto whole = durationOf(*pushTo("whole.git"));
        const std::string updated = refsIn("served/whole.git");
        const std::string before = refsIn(repositoryPath());
        for (int round = 0; round < numberOfRounds(); ++round) {
            cancelSometime(*pushTo("target.git"), whole);
            EXPECT_EQ(refsIn(repositoryPath()), before) << round;
            EXPECT_THAT(locksIn("repository"), IsEmpty()) << round;
            // The server takes note in its own time.
            const auto end = Clock::now() + std::chrono::seconds(5);
            while (!locksIn("served/target.git").empty() && Clock::now() < end)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            EXPECT_THAT(refsIn("served/target.git"), testing::AnyOf("", updated)) << round;
            EXPECT_EQ(runGit({"fsck"}, "served/target.git").exitCode, 0) << round;
            std::filesystem::rename(servedPath("target.git"),
                                    scratchPath("done" + std::to_string(round)));
        }
    }

private:
    std::mt19937 random_{std::random_device{}()};
};

TEST_F(RVGitTransferCancelThreadsTest, ClonesOverSSH) {
    cancelClones(Protocol::SSH);
}

TEST_F(RVGitTransferCancelThreadsTest, ClonesOverHTTPS) {
    cancelClones(Protocol::HTTPS);
}

TEST_F(RVGitTransferCancelThreadsTest, FetchesOverSSH) {
    cancelFetches(Protocol::SSH);
}

TEST_F(RVGitTransferCancelThreadsTest, FetchesOverHTTPS) {
    cancelFetches(Protocol::HTTPS);
}

TEST_F(RVGitTransferCancelThreadsTest, PushesOverSSH) {
    cancelPushes(Protocol::SSH);
}

TEST_F(RVGitTransferCancelThreadsTest, PushesOverHTTPS) {
    cancelPushes(Protocol::HTTPS);
}

// What a handler ends could be whole before it is heard: nothing of these comes to its end.

TEST_F(RVGitTransferCancelThreadsTest, AHandlerThatCancelsEndsTheTransfer) {
    const RVTestCuttingServer holding(sshServer().port(), numberOfHeldBytes,
                                      RVTestCuttingServer::Afterwards::Holds);
    setEnvironmentVariable("GIT_SSH_COMMAND", sshServer().sshCommandForAnyPort());
    const auto command = RVGitCloneCommand::gitCloneCommandWithRemoteURL(
        urlThrough(holding, Protocol::SSH), scratchPath("new"), std::nullopt);
    int numberOfCalls = 0;
    command->setProgressHandler([&](RVGitCommandProgress&) {
        ++numberOfCalls;
        command->cancel();
    });
    EXPECT_EQ(codeOf(*command), 0);
    EXPECT_TRUE(command->isCancelled());
    EXPECT_GT(numberOfCalls, 0);
    EXPECT_TRUE(launchedProcessesEnd());
    EXPECT_FALSE(fileExists("new"));
    command->setProgressHandler({});
}

TEST_F(RVGitTransferCancelThreadsTest, AHandlerThatThrowsEndsTheTransferAndIsHeard) {
    const RVTestCuttingServer holding(webServer().httpsPort(), numberOfHeldBytes,
                                      RVTestCuttingServer::Afterwards::Holds);
    const auto command = RVGitCloneCommand::gitCloneCommandWithRemoteURL(
        urlThrough(holding, Protocol::HTTPS), scratchPath("new"), std::nullopt);
    command->setProgressHandler(
        [](RVGitCommandProgress&) { throw std::runtime_error("the handler's"); });
    EXPECT_THROW((void)command->run(), std::runtime_error);
    EXPECT_TRUE(launchedProcessesEnd());
    EXPECT_FALSE(fileExists("new"));
}

}  // namespace
