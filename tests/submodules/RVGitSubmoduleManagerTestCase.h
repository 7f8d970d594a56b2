#pragma once

#include <string>

#include "tests/submodules/RVGitSubmoduleTestCase.h"

/// Base of the tests of RVGitSubmoduleManager.
class RVGitSubmoduleManagerTestCase : public RVGitSubmoduleTestCase {
protected:
    [[nodiscard]] std::string head() const { return gitLine({"rev-parse", "HEAD"}, "library"); }
    [[nodiscard]] std::string indexEntry(const std::string& path) const {
        return "160000 " + head() + " 0\t" + path;
    }
    [[nodiscard]] std::string configText() const { return readFile("repository/.git/config"); }
};
