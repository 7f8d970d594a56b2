#pragma once

#include <gtest/gtest.h>

#include <string_view>

/// Whether the git that the tests run with, the first in PATH, is the given version or a newer one;
/// whatever binary a test has made the default. For a test that expects another thing of an old
/// git.
[[nodiscard]] bool isTestedGitAtLeast(std::string_view version);

/// Skips the test, in whose body it stands, where the git that the tests run with is older than the
/// version. `reason` says what that git cannot do:
///
///     RVGIT_TEST_NEEDS_GIT("2.29", "it knows no other object format");
#define RVGIT_TEST_NEEDS_GIT(version, reason) \
    if (!isTestedGitAtLeast(version))         \
    GTEST_SKIP() << "needs git " << (version) << ", an older one: " << (reason)

/// Whether the repositories of the tests keep each ref in a file of its own, and not in tables as
/// the variable RVGIT_TEST_REF_FORMAT may ask for.
[[nodiscard]] bool areTestedRefsInFiles();

/// Skips the test, in whose body it stands, where refs are kept in tables. `reason` says what for
/// it needs the files.
#define RVGIT_TEST_NEEDS_REF_FILES(reason) \
    if (!areTestedRefsInFiles())           \
    GTEST_SKIP() << "needs refs in files: " << (reason)
