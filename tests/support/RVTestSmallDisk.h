#pragma once

#include <string>

/// Whether this process is one whose temporary directory, and with it every scratch folder, is a
/// disk of six megabytes.
[[nodiscard]] bool isOnSmallDisk();

/// Runs the test that calls it once more, in a process with mounts of its own, so that none can
/// stay behind, and with the small disk at the directory. What comes out there comes out here.
void runThisTestOnSmallDisk(const std::string& directory);

/// Goes on with the test, in whose body it stands first, on a small disk alone:
///
///     TEST_F(RVGitThingTest, SaysThatTheDiskIsFull) {
///         RVGIT_TEST_NEEDS_SMALL_DISK();
///         ...
///
/// Skipped, or failed where the rights are expected, if no disk can be mounted.
#define RVGIT_TEST_NEEDS_SMALL_DISK() \
    if (!isOnSmallDisk())             \
    return runThisTestOnSmallDisk(makeDirectory("disk"))
