#include "RVGit/command/RVGitCommandEnvironment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(RVGitCommandEnvironmentThreadsTest, MayBeChangedByManyThreads) {
    RVGitCommandEnvironment environment;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 200; ++i) {
                environment.setValueForEnvironmentVariable(std::to_string(i),
                                                           "T" + std::to_string(thread));
                EXPECT_LE(environment.dictionaryRepresentation().size(), 4U);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(
        environment.dictionaryRepresentation(),
        ElementsAre(Pair("T0", "199"), Pair("T1", "199"), Pair("T2", "199"), Pair("T3", "199")));
}

}  // namespace
