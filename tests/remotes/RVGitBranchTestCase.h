#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/remotes/RVGitBranch.h"
#include "tests/support/RVGitRepositoryTestCase.h"

/// Base of the tests of RVGitBranch.
class RVGitBranchTestCase : public RVGitRepositoryTestCase {
protected:
    using Strings = std::vector<std::string>;

    RVGitBranch::List listed() const {
        std::optional<RVError> error;
        auto branches = RVGitBranch::allBranchesForRepository(repository(), &error);
        EXPECT_TRUE(branches.has_value());
        EXPECT_FALSE(error.has_value());
        return branches.value_or(RVGitBranch::List());
    }
    /// The names, that of the checked-out branch behind a "*".
    Strings names() const {
        Strings names;
        for (const auto& branch : listed())
            names.push_back((branch->isHead() ? "*" : "") +
                            branch->fullRefName().value_or(branch->refName()));
        return names;
    }
    std::shared_ptr<RVGitBranch> branchNamed(const std::string& name) const {
        std::optional<RVError> error;
        auto branch = RVGitBranch::branchForRefName(name, repository(), &error);
        EXPECT_FALSE(error.has_value());
        return branch;
    }
    void config(const std::string& key, const std::string& value) {
        gitInRepository({"config", "--add", key, value});
    }
    /// A remote "origin" with a branch "main", which main tracks.
    void makeOrigin() {
        makeCommit();
        const std::string origin = initBareRepository("origin.git");
        gitInRepository({"remote", "add", "origin", origin});
        gitInRepository({"push", "-q", "-u", "origin", "main"});
    }
};
