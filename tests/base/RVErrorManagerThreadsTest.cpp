#include "RVGit/base/RVErrorManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(RVErrorManagerThreadsTest, AddingAndComposingMayMeet) {
    RVErrorManager manager;
    manager.addErrorDefinitions({{1, "PlainError", "Plain Title", "Plain reason.", {}}}, "Domain");
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            for (int step = 0; step < 200; ++step) {
                manager.addErrorDefinitions({{100 + number * 200 + step, "N", "T", "R", {}}},
                                            "Domain");
                setLocalizedString("key" + std::to_string(step), "text");
                const auto error = manager.errorWithDomain("Domain", 1, {});
                wrong += error.localizedDescription() != "Plain Title";
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_NE(manager.definition("Domain", 899), nullptr);
}

}  // namespace
