#include "tests/support/RVGitTestEnvironment.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <system_error>

#include "tests/support/RVGitTestCase.h"
#include "tests/support/RVTestFiles.h"

namespace {

// What a compiler's runtime or the search for programs needs, and nothing that git reads.
constexpr const char* allowedVariables[] = {
    "PATH",
    "TMPDIR",
    "ASAN_OPTIONS",
    "LSAN_OPTIONS",
    "TSAN_OPTIONS",
    "UBSAN_OPTIONS",
    "GCOV_PREFIX",
    "GCOV_PREFIX_STRIP",
    "LLVM_PROFILE_FILE",
    "RVGIT_TEST_PATCHES",
    "RVGIT_TEST_SELECTIONS",
    "RVGIT_TEST_HISTORY",
    "RVGIT_TEST_LONG_LISTS",
    "RVGIT_TEST_ROUNDS",
    "RVGIT_TEST_EXPECT_RIGHTS",
    "RVGIT_TEST_MEGABYTES",
    "RVGIT_TEST_ON_SMALL_DISK",
    "RVGIT_TEST_REF_FORMAT",
};

std::string root;

}  // namespace

void RVGitTestEnvironment::replaceProcessEnvironment() {
    std::map<std::string, std::string> kept;
    for (const char* name : allowedVariables) {
        if (const char* value = std::getenv(name)) {
            kept[name] = value;
        }
    }
    umask(022);
    clearenv();
    for (const auto& [name, value] : kept) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    // The only way to a suite whose repositories keep their refs in tables.
    if (const char* format = std::getenv("RVGIT_TEST_REF_FORMAT")) {
        setenv("GIT_DEFAULT_REF_FORMAT", format, 1);
    }
    setenv("TZ", "UTC", 1);
    setenv("GIT_CONFIG_NOSYSTEM", "1", 1);
    setenv("GIT_AUTHOR_DATE", "1577934245 +0000", 1);
    setenv("GIT_COMMITTER_DATE", "1577934245 +0000", 1);
}

const std::string& RVGitTestEnvironment::rootDirectory() {
    return root;
}

void RVGitTestEnvironment::SetUp() {
    const std::filesystem::path temporary =
        std::filesystem::canonical(std::filesystem::temp_directory_path());
    root = temporary / "rvgit-tests.XXXXXX";
    if (mkdtemp(root.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "mkdtemp " + root);
    }
    writeConfiguration();
    setenv("HOME", (root + "/home").c_str(), 1);
    // "git config --system" reads and writes the system's file even with GIT_CONFIG_NOSYSTEM.
    setenv("GIT_CONFIG_SYSTEM", (root + "/etc/gitconfig").c_str(), 1);
    // A repository in or above the temporary directory is none of the tests' business.
    setenv("GIT_CEILING_DIRECTORIES", root.c_str(), 1);
}

void RVGitTestEnvironment::writeConfiguration() {
    // Submodules are cloned from paths, and no background process may outlive its test. Nothing
    // here has to survive a power cut.
    writeTestFile(root + "/home/.gitconfig",
                  "[user]\n\tname = Marie Curie\n\temail = marie@example.org\n"
                  "[init]\n\tdefaultBranch = main\n"
                  "[protocol \"file\"]\n\tallow = always\n"
                  "[gc]\n\tauto = 0\n[maintenance]\n\tauto = false\n[core]\n\tfsync = none\n");
    writeTestFile(root + "/etc/gitconfig", "");
}

void RVGitTestEnvironment::TearDown() {
    removeTestTree(root);
}
