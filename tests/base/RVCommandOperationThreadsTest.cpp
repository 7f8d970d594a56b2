#include "RVGit/base/RVCommandOperation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "RVGit/base/RVOperationQueue.h"

namespace {

using testing::ElementsAre;

class Recorder : public RVCommandOperationDelegate {
public:
    std::vector<std::string> calls;

private:
    void commandDidFailToLaunch(RVCommandOperation&) override { calls.push_back("failed"); }
    void commandDidTerminate(RVCommandOperation&) override { calls.push_back("terminated"); }
    void commandDidReceiveStandardOutputData(RVCommandOperation&, std::string_view data) override {
        calls.push_back("out:" + std::string(data));
    }
    void commandDidReceiveStandardErrorData(RVCommandOperation&, std::string_view data) override {
        calls.push_back("err:" + std::string(data));
    }
};

void run(const std::shared_ptr<RVCommandOperation>& command) {
    RVOperationQueue::serialQueue("commands")->runOperation(command);
}

std::shared_ptr<RVCommandOperation> shell(const std::string& script,
                                          RVCommandOperationDelegate* delegate = nullptr) {
    return std::make_shared<RVCommandOperation>("/bin/sh", std::nullopt,
                                                std::vector<std::string>{"-c", script}, delegate);
}

TEST(RVCommandOperationThreadsTest, CollectsOutputWhetherOrNotThereIsADelegate) {
    Recorder recorder;
    for (RVCommandOperationDelegate* delegate :
         {static_cast<RVCommandOperationDelegate*>(&recorder),
          static_cast<RVCommandOperationDelegate*>(nullptr)}) {
        auto command = shell("printf out; printf err >&2; exit 6", delegate);
        run(command);
        EXPECT_EQ(command->standardOutputData(), "out");
        EXPECT_EQ(command->standardErrorData(), "err");
        EXPECT_EQ(command->exitCode(), 6);
        EXPECT_FALSE(command->error());
    }
    EXPECT_THAT(recorder.calls, testing::UnorderedElementsAre("out:out", "err:err", "terminated"));
    EXPECT_EQ(recorder.calls.back(), "terminated");
}

TEST(RVCommandOperationThreadsTest, AFailedLaunchIsToldInsteadOfTheEnd) {
    Recorder recorder;
    auto command = std::make_shared<RVCommandOperation>("/nonexistent/tool", std::nullopt,
                                                        std::vector<std::string>{}, &recorder);
    run(command);
    EXPECT_THAT(recorder.calls, ElementsAre("failed"));
    ASSERT_TRUE(command->error());
    EXPECT_EQ(command->error()->domain(), RVPOSIXErrorDomain);
    EXPECT_EQ(command->error()->code(), ENOENT);
}

TEST(RVCommandOperationThreadsTest, TheEnvironmentIsThatOfTheLaunchWithoutLANGUAGE) {
    auto command = shell("printf '%s' \"${LANGUAGE-none} $RVGIT_TEST_INHERITED\"");
    setenv("LANGUAGE", "de", 1);
    setenv("RVGIT_TEST_INHERITED", "a=b", 1);
    EXPECT_EQ(command->environment().at("RVGIT_TEST_INHERITED"), "a=b");
    EXPECT_EQ(command->environment().count("LANGUAGE"), 0u);
    run(command);
    unsetenv("LANGUAGE");
    unsetenv("RVGIT_TEST_INHERITED");
    EXPECT_EQ(command->standardOutputData(), "none a=b");
}

TEST(RVCommandOperationThreadsTest, VariablesAreChangedOneByOneOrAllReplaced) {
    auto command = shell("printf '%s' \"${HOME-none} ${VALUE-none} ${OTHER-none}\"");
    command->setValueForEnvironmentVariable(std::nullopt, "HOME");
    command->setValueForEnvironmentVariable("1", "VALUE");
    EXPECT_EQ(command->valueForEnvironmentVariable("HOME"), std::nullopt);
    EXPECT_EQ(command->valueForEnvironmentVariable("VALUE"), "1");
    run(command);
    EXPECT_EQ(command->standardOutputData(), "none 1 none");

    auto replaced = shell("printf '%s' \"${HOME-none} ${VALUE-none} ${OTHER-none}\"");
    replaced->setValueForEnvironmentVariable("1", "VALUE");
    replaced->setEnvironment({{"OTHER", "2"}});
    run(replaced);
    EXPECT_EQ(replaced->standardOutputData(), "none none 2");
}

TEST(RVCommandOperationThreadsTest, TheWorkingDirectoryMayBeReplacedBeforeTheLaunch) {
    auto command = shell("pwd");
    command->setWorkingDirectory("/usr");
    run(command);
    EXPECT_EQ(command->standardOutputData(), "/usr\n");
}

TEST(RVCommandOperationThreadsTest, TheCallIsPrintedAsAShellWouldTakeIt) {
    RVCommandOperation command("/usr/bin/my git", std::nullopt,
                               {"log", "--pretty=%H", "a b", "it's", "", "x\ny"});
    EXPECT_EQ(command.commandCall(),
              "'/usr/bin/my git' log --pretty=%H 'a b' 'it'\\''s' '' 'x\ny'");
}

TEST(RVCommandOperationThreadsTest, SettingAnErrorDoesNotFinishTheOperation) {
    auto command = shell("exit 0");
    command->setError(RVError("domain", 5));
    EXPECT_FALSE(command->isFinished());
    run(command);
    EXPECT_EQ(command->error()->code(), 5);
}

TEST(RVCommandOperationThreadsTest, AnExceptionBeforeTheLaunchLeavesTheChildUnlaunched) {
    class Refusing : public RVCommandOperation {
    public:
        using RVCommandOperation::RVCommandOperation;

    private:
        void commandWillExecute() override { throw std::runtime_error("refused"); }
        void commandDidTerminate() override { ADD_FAILURE() << "launched"; }
    };
    EXPECT_THROW(run(std::make_shared<Refusing>("/bin/true")), std::runtime_error);
}

TEST(RVCommandOperationThreadsTest, StartLaunchesWithoutAQueue) {
    auto command = shell("printf started");
    command->start();
    command->waitUntilFinished();
    EXPECT_EQ(command->standardOutputData(), "started");
}

}  // namespace
