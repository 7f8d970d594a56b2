#pragma once

#include <cstdlib>

/// How many rounds a randomized test goes through: so many in the normal run, or what the variable
/// RVGIT_TEST_ROUNDS says.
[[nodiscard]] inline int numberOfTestRounds(int inTheNormalRun) {
    const char* text = std::getenv("RVGIT_TEST_ROUNDS");
    const int rounds = text ? std::atoi(text) : 0;
    return rounds > 0 ? rounds : inTheNormalRun;
}
