#include "RVGit/command/RVGitCommandErrorDefinition.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(RVGitCommandErrorDefinitionThreadsTest, ManyThreadsMayMatchAtOnce) {
    auto cache = std::make_shared<RVGitRegularExpressionCache>();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                std::string number = std::to_string(i % 10);
                RVGitCommandErrorDefinition row(
                    RVGitErrorRow{.errorCode = 1, .standardErrorPatterns = {"code " + number}},
                    cache);
                EXPECT_TRUE(row.isMatchedByStandardError("Code " + number));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
