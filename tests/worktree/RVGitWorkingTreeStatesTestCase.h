#pragma once

#include <string>

#include "RVGit/base/RVTypes.h"
#include "tests/support/RVPorcelainStatus.h"
#include "tests/worktree/RVGitWorkingTreeTestCase.h"

/// Base of tests that bring files into a state and compare the listing with what git says in
/// another format.
class RVGitWorkingTreeStatesTestCase : public RVGitWorkingTreeTestCase {
protected:
    /// The options that list every file.
    static const RVOptions everything;

    // Files below the repository.

    void writeContents(const std::string& file) const;
    /// Writes other contents than writeContents() does.
    void changeFile(const std::string& file) const;
    void stage(const std::string& file) const;
    void remove(const std::string& file) const;
    void replaceByLink(const std::string& file, const std::string& target = "target") const;

    /// Compares the whole listing.
    void expectListingOfGit() const;

private:
    /// An entry against the record of the same path.
    void expectEntry(const RVGitWorkingTreeEntry& entry, const RVPorcelainStatus& status) const;
};
