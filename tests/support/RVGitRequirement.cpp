#include "tests/support/RVGitRequirement.h"

#include <cstdlib>

#include "RVGit/command/RVGitBinary.h"
#include "tests/support/RVTestProcess.h"

bool isTestedGitAtLeast(std::string_view version) {
    static const RVGitBinary testedGit(findTestProgram("git"));
    return testedGit.isVersionAtLeast(version);
}

bool areTestedRefsInFiles() {
    const char* format = std::getenv("RVGIT_TEST_REF_FORMAT");
    return format == nullptr || std::string_view(format) == "files";
}
