#include "tests/support/RVTestSmallDisk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>

#include "tests/support/RVTestProcess.h"
#include "tests/support/RVTestRights.h"

namespace {

constexpr int nothingCanBeMounted = 77;

}  // namespace

bool isOnSmallDisk() {
    if (!std::getenv("RVGIT_TEST_ON_SMALL_DISK"))
        return false;
    // Nobody who has set the variable himself wants his disk to be filled.
    const auto space = std::filesystem::space(std::filesystem::temp_directory_path());
    EXPECT_LE(space.capacity, std::uintmax_t{8} << 20);
    return space.capacity <= std::uintmax_t{8} << 20;
}

void runThisTestOnSmallDisk(const std::string& directory) {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string script = "unshare --mount true || exit " +
                               std::to_string(nothingCanBeMounted) +
                               "\nexec unshare --mount sh -c '"
                               "mount -t tmpfs -o size=6m tmpfs \"$1\" || exit " +
                               std::to_string(nothingCanBeMounted) +
                               "\nRVGIT_TEST_ON_SMALL_DISK=1 TMPDIR=$1 exec \"$0\" "
                               "--gtest_filter=\"$2\"' \"$@\"";
    const auto result = runTestProcess(
        {"sh", "-c", script, "sh", std::filesystem::read_symlink("/proc/self/exe").string(),
         directory, std::string(test.test_suite_name()) + "." + test.name()},
        directory);
    RVGIT_TEST_NEEDS_RIGHTS(result.exitCode != nothingCanBeMounted, "no disk can be mounted");
    EXPECT_EQ(result.exitCode, 0) << result.standardOutput << result.standardError;
    EXPECT_THAT(result.standardOutput, testing::HasSubstr("[  PASSED  ] 1 test."));
}
