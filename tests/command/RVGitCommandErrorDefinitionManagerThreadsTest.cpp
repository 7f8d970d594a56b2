#include "RVGit/command/RVGitCommandErrorDefinitionManager.h"

#include <thread>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitCommandErrorDefinition.h"
#include "tests/support/RVGitTestCase.h"

namespace {

class RVGitCommandErrorDefinitionManagerThreadsTest : public RVGitTestCase {};

TEST_F(RVGitCommandErrorDefinitionManagerThreadsTest, RowsMayBeAddedAndMatchedByManyThreads) {
    RVFakeGit fake = fakeGit();
    fake.setAnswer({.standardError = "text", .exitCode = 1});
    const auto failed =
        RVGitCommand::gitCommandWithGitBinary(RVGitBinary::gitBinaryWithPath(fake.path()));
    ASSERT_FALSE(failed->run());
    (void)failed->standardErrorString();
    (void)failed->standardOutputString();
    RVGitCommandErrorDefinitionManager manager;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 25; ++i) {
                manager.addGitCommandErrorDefinitions(
                    {{.errorCode = thread * 100 + i, .standardErrorPatterns = {"text"}}});
                EXPECT_NE(manager.gitCommandErrorDefinitionForCommand(*failed), nullptr);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(manager.allGitCommandErrorDefinitions()->size(), 100U);
    const auto row = manager.gitCommandErrorDefinitionForCommand(*failed);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->errorCode(), 324);
}

}  // namespace
