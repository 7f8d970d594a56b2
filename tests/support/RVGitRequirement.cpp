#include "tests/support/RVGitRequirement.h"

#include "RVGit/command/RVGitBinary.h"
#include "tests/support/RVTestProcess.h"

bool isTestedGitAtLeast(std::string_view version) {
    static const RVGitBinary testedGit(findTestProgram("git"));
    return testedGit.isVersionAtLeast(version);
}
