// What becomes of the library when the process ends.

#include <filesystem>
#include <sstream>

#include "tests/support/RVGitTestCase.h"

namespace {

class RVGitProcessExitTest : public RVGitTestCase {};

TEST_F(RVGitProcessExitTest, TheProcessMayEndWhileCommandsRun) {
    const std::string repository = initRepository();
    for (int number = 0; number < 20; ++number) {
        const std::string text = std::to_string(number);
        commitFile(repository, "file", text, "Commit " + text);
        git({"tag", "-m", "Message", "v" + text}, repository);
    }
    for (int attempt = 0; attempt < 20; ++attempt) {
        const auto result = runProgram({RVGIT_LEAVING_PROGRAM, repository, gitPath()});
        ASSERT_EQ(result.exitCode, 0) << result.standardError;
        ASSERT_EQ(result.standardError, "");
    }
}

TEST_F(RVGitProcessExitTest, TheTemporaryFileOfAllowedSignersGoesWithTheProcess) {
    const std::string repository = initRepository();
    commitFile(repository, "file", "text", "Message");
    setEnvironmentVariable("TMPDIR", makeDirectory("temporary"));
    const auto result = runProgram({RVGIT_SIGNERS_PROGRAM, repository, gitPath()});
    ASSERT_EQ(result.exitCode, 0) << result.standardError;
    ASSERT_THAT(result.standardOutput, testing::StartsWith(scratchPath("temporary") + "/"));
    EXPECT_TRUE(std::filesystem::is_empty(scratchPath("temporary")));
}

TEST_F(RVGitProcessExitTest, TheLibraryDestroysNothingAtTheEndOfTheProcess) {
    // What a compiler calls for each static that has a destructor.
    const auto symbols = runProgram({"nm", "-A", "-u", RVGIT_STATIC_LIBRARY});
    ASSERT_EQ(symbols.exitCode, 0) << symbols.standardError;
    EXPECT_THAT(symbols.standardOutput, testing::HasSubstr(" waitpid"));
    std::istringstream lines(symbols.standardOutput);
    for (std::string line; std::getline(lines, line);)
        EXPECT_THAT(line, testing::Not(testing::HasSubstr("__cxa_atexit")));
}

#ifdef RVGIT_PORTABLE
TEST_F(RVGitProcessExitTest, ThePortableLibraryCallsNothingThatOnlyLinuxHas) {
    const auto symbols = runProgram({"nm", "-u", RVGIT_STATIC_LIBRARY});
    ASSERT_EQ(symbols.exitCode, 0) << symbols.standardError;
    EXPECT_THAT(symbols.standardOutput, testing::HasSubstr(" fork"));
    for (const char* name : {"pidfd", "eventfd", "posix_spawn", "closefrom", "pipe2", "mkostemp",
                             "prctl", "getrandom", "memfd", "splice", "inotify", "renameat2"})
        EXPECT_THAT(symbols.standardOutput, testing::Not(testing::HasSubstr(name)));
}
#endif

}  // namespace
