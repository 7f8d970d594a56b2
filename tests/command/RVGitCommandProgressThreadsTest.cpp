#include "RVGit/command/RVGitCommandProgress.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "tests/support/RVGitTestCase.h"

namespace {

using testing::Each;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;
using testing::Not;

class ProgressCommand : public RVGitCommand {
public:
    using RVGitCommand::RVGitCommand;

protected:
    void gitCommandWillInitialize() override {
        setGitCommand("clone");
        setSupportsProgressOutput(true);
        addGitCommandOption("--progress");
    }
};

class RVGitCommandProgressThreadsTest : public RVGitTestCase {};

TEST_F(RVGitCommandProgressThreadsTest, MayBeReadWhileOutputArrives) {
    RVGitCommandProgress progress("clone");
    std::thread reader([&] {
        for (int i = 0; i < 500; ++i) {
            EXPECT_LE(progress.overallProgress(), 1);
            EXPECT_GE(progress.lineCount(), 1U);
            EXPECT_LE(progress.lastProgressOutputLine().size(), 100U);
        }
    });
    for (int i = 0; i < 500; ++i)
        progress.updateProgressWithOutputString("Receiving objects: " + std::to_string(i % 101) +
                                                "%\r");
    reader.join();
    EXPECT_EQ(progress.lineCount(), 1U);
}

TEST_F(RVGitCommandProgressThreadsTest, ACommandFeedsItsProgressFromBothStreamsAndFinishesIt) {
    RVFakeGit fake = fakeGit();
    fake.setAnswer({.standardOutput = "Compressing objects: 100% (3/3), done.\n",
                    .standardError = "Receiving objects: 50% (1/2)\rReceiving objects: 100% (2/2)\n"
                                     " * [new branch]      main       -> origin/main\n"});
    auto command = std::make_shared<ProgressCommand>(RVGitBinary::gitBinaryWithPath(fake.path()));
    std::vector<double> values;
    command->setProgressHandler(
        [&](RVGitCommandProgress& progress) { values.push_back(progress.overallProgress()); });
    EXPECT_EQ(command->commandProgress(), nullptr);
    ASSERT_TRUE(command->run());
    ASSERT_NE(command->commandProgress(), nullptr);
    EXPECT_THAT(values, Not(IsEmpty()));
    EXPECT_THAT(values, Each(testing::AllOf(Ge(0), Le(1))));
    EXPECT_EQ(values.back(), 1);
    EXPECT_TRUE(command->commandProgress()->isUpdated());
    EXPECT_FALSE(command->commandProgress()->isIndeterminate());
}

TEST_F(RVGitCommandProgressThreadsTest, ARealCloneReportsItsProgress) {
    const std::string source = initRepository("source");
    commitFile(source, "file", "1", "First");
    auto command = std::make_shared<ProgressCommand>(RVGitBinary::gitBinaryWithPath(gitPath()));
    command->addGitCommandArguments({"--no-local", source, scratchPath("copy")});
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->commandProgress()->overallProgress(), 1);
    EXPECT_THAT(command->commandProgress()->currentProgressOutput(),
                testing::HasSubstr("Receiving objects: 100% (3/3)"));
    EXPECT_FALSE(command->commandProgress()->isUpdated());
}

}  // namespace
