#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>

/// Whether the variable RVGIT_TEST_EXPECT_RIGHTS says that this machine gives the tests the rights
/// that some of them need: mounts of their own, other users, devices.
[[nodiscard]] inline bool areTestRightsExpected() {
    const char* value = std::getenv("RVGIT_TEST_EXPECT_RIGHTS");
    return value && *value && std::string_view(value) != "0";
}

/// Ends the test, in whose body it stands, where `areGiven` is false: it is skipped, so that the
/// others can run everywhere, and fails where the rights are expected, so that nobody takes it for
/// one that has run. `missing` says what cannot be done:
///
///     RVGIT_TEST_NEEDS_RIGHTS(mounted, "no disk can be mounted");
#define RVGIT_TEST_NEEDS_RIGHTS(areGiven, missing)                                                \
    if (areGiven) {                                                                               \
    } else if (areTestRightsExpected())                                                           \
        FAIL() << (missing) << ", and RVGIT_TEST_EXPECT_RIGHTS says that everything can be done"; \
    else                                                                                          \
        GTEST_SKIP() << (missing)
