#include <map>
#include <thread>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "tests/remotes/RVGitTransferTestCase.h"

namespace {

using testing::Contains;
using testing::Key;

/// The percentages of each phase, and whether one ever went down.
class Phases {
public:
    /// Takes all that is shown.
    void take(const RVGitCommandProgress& progress) {
        for (const std::string& line : progress.outputBuffer())
            take(line);
    }
    [[nodiscard]] const std::map<std::string, std::int64_t>& percents() const { return percents_; }

private:
    void take(const std::string& line) {
        static const auto& expression = *new RVRegularExpression(
            R"(^(?:remote: )?([A-Z][a-z]+ [a-z]+): +(\d+)% \((\d+)/(\d+)\))");
        const auto components = expression.firstMatch(line);
        if (components.empty())
            return;
        const auto percent = integerValue(*components[2]);
        auto& last = percents_.try_emplace(std::string(*components[1]), 0).first->second;
        EXPECT_GE(percent, last) << line;
        EXPECT_LE(percent, 100) << line;
        last = std::max(last, percent);
    }

    std::map<std::string, std::int64_t> percents_;
};

class RVGitTransferProgressThreadsTest : public RVGitTransferTestCase,
                                         public testing::WithParamInterface<Protocol> {
protected:
    /// A repository of 20,000 objects.
    void serveManyObjects() {
        serveRepository();
        std::string stream =
            "commit refs/heads/main\ncommitter A <a@b> 1577934245 +0000\n"
            "data 2\nx\n";
        for (int number = 0; number < 19'870; ++number) {
            const std::string contents =
                "a line that all have\n" + std::to_string(number * 7919) + "\n";
            stream += "M 100644 inline " + std::to_string(number % 128) + "/" +
                      std::to_string(number) + "\ndata " + std::to_string(contents.size()) + "\n" +
                      contents + "\n";
        }
        git({"fast-import", "--quiet", "--force"}, servedPath(), stream);
        EXPECT_EQ(gitLine({"count-objects", "-v"}, servedPath()).find("in-pack: 20000") ==
                      std::string::npos,
                  false)
            << gitLine({"count-objects", "-v"}, servedPath());
    }
    /// Runs the command; the phases that its handler saw.
    std::map<std::string, std::int64_t> phasesOf(RVGitCommand& command) {
        Phases phases;
        std::thread::id thread;
        std::thread::id operationThread;
        bool indeterminate = true;
        double last = 0;
        command.setProgressHandler([&](RVGitCommandProgress& progress) {
            if (thread == std::thread::id())
                thread = std::this_thread::get_id();
            EXPECT_EQ(std::this_thread::get_id(), thread);
            phases.take(progress);
            indeterminate = progress.isIndeterminate();
            last = progress.overallProgress();
            EXPECT_GE(last, 0);
            EXPECT_LE(last, 1);
        });
        command.setCompletionHandler(
            [&](RVGitCommand&) { operationThread = std::this_thread::get_id(); });
        EXPECT_EQ(codeOf(command), 0) << command.standardErrorString();
        EXPECT_EQ(last, 1);
        EXPECT_FALSE(indeterminate);
        EXPECT_EQ(thread, operationThread);
        return phases.percents();
    }
    /// The same bytes in pieces of each of these lengths.
    static void feedInPieces(const std::string& command, std::string_view bytes) {
        for (const std::size_t length : {1u, 2u, 3u, 7u, 64u, 1000u}) {
            RVGitCommandProgress progress(command);
            Phases phases;
            for (std::size_t start = 0; start < bytes.size(); start += length) {
                progress.updateProgressWithOutputData(bytes.substr(start, length));
                phases.take(progress);
                ASSERT_LE(progress.overallProgress(), 1);
            }
            progress.finishProgress();
            EXPECT_EQ(progress.overallProgress(), 1);
        }
        // A cut at each byte of the last lines, where the phases meet.
        const std::string_view tail =
            bytes.substr(bytes.size() - std::min<std::size_t>(bytes.size(), 1500));
        for (std::size_t cut = 0; cut <= tail.size(); ++cut) {
            RVGitCommandProgress progress(command);
            Phases phases;
            for (const std::string_view piece : {tail.substr(0, cut), tail.substr(cut)}) {
                progress.updateProgressWithOutputData(piece);
                phases.take(progress);
            }
            ASSERT_LE(progress.overallProgress(), 1);
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Over, RVGitTransferProgressThreadsTest,
                         testing::Values(Protocol::SSH, Protocol::HTTP),
                         testing::PrintToStringParamName());

TEST_P(RVGitTransferProgressThreadsTest, OfTwentyThousandObjects) {
    serveManyObjects();
    const std::string address = url(GetParam());
    const auto clone = RVGitCloneCommand::gitCloneCommandWithRemoteURL(
        address, scratchPath("new"), RVOptions{{RVGitCloneOptionBare, true}});
    auto phases = phasesOf(*clone);
    EXPECT_THAT(phases, Contains(Key("Receiving objects")));
    EXPECT_EQ(clone->commandProgress()->command(), "clone");
    feedInPieces("clone", clone->standardErrorData());

    gitInRepository({"remote", "add", "origin", address});
    const auto fetched = fetch();
    phases = phasesOf(*fetched);
    EXPECT_THAT(phases, Contains(Key("Receiving objects")));
    expectUpdates(*fetched, true);
    feedInPieces("fetch", fetched->standardErrorData());

    initBareRepository("served/target.git");
    git({"config", "http.receivepack", "true"}, servedPath("target.git"));
    gitInRepository({"remote", "set-url", "origin", url(GetParam(), "target.git")});
    const auto pushed = push("refs/remotes/origin/main:refs/heads/main");
    phases = phasesOf(*pushed);
    EXPECT_THAT(phases, Contains(Key("Writing objects")));
    expectUpdates(*pushed, true);
    feedInPieces("push", pushed->standardErrorData());

    // Nothing to do is no update.
    const auto again = push("refs/remotes/origin/main:refs/heads/main");
    (void)phasesOf(*again);
    expectUpdates(*again, false);
}

}  // namespace
