#include "RVGit/base/RVRegularExpression.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(RVRegularExpressionThreadsTest, OneExpressionServesManyThreads) {
    static const RVRegularExpression expression("(\\d+)-(\\w+)?");
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 8; ++number) {
        threads.emplace_back([&wrong, number] {
            for (int step = 0; step < 2000; ++step) {
                const auto digits = std::to_string(number * 10000 + step);
                const std::string text =
                    std::string(static_cast<std::size_t>(step % 50), ' ') + digits + "-é" + digits;
                const auto match = expression.firstMatch(text);
                wrong += match.size() != 3 || match[1] != digits || match[2] != "é" + digits;
                wrong += expression.matches("none");
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
