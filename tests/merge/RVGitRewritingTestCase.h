#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/merge/RVGitMergeManager.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVRepositorySnapshot.h"

/// What a commit of a test's history is made of.
struct RVTestCommit {
    std::string message;
    /// Files that it writes, whole, with their contents; none leaves the tree as it is.
    std::map<std::string, std::string> files;
    friend bool operator==(const RVTestCommit&, const RVTestCommit&) = default;
};

/// Base of tests that rewrite history. Every editor that the user may have configured complains
/// and fails, and the temporary directory is one of the test's own.
class RVGitRewritingTestCase : public RVGitRepositoryTestCase {
protected:
    RVGitRewritingTestCase();

    [[nodiscard]] RVGitMergeManager& manager() { return *manager_; }
    /// Where scripts are written.
    [[nodiscard]] const std::string& temporaryDirectory() const { return temporaryDirectory_; }

    /// Replaces the branch "main" and the working tree by a linear history; returns the hashes,
    /// oldest first. Messages are taken byte for byte.
    std::vector<std::string> makeHistory(const std::vector<RVTestCommit>& commits) const;
    /// Commits "A", "B", ... of which each writes a file of its own name in lower case.
    std::vector<std::string> makeLetters(std::size_t count) const;

    struct Listed {
        std::string message;
        std::string tree;
        friend bool operator==(const Listed&, const Listed&) = default;
    };
    /// From the root on, by first parents; messages byte for byte.
    [[nodiscard]] std::vector<Listed> history() const;
    /// The first lines of the messages, joined: "A B C".
    [[nodiscard]] std::string subjects(const std::string& revision = "HEAD") const;
    /// The hash of a commit by the first line of its message.
    [[nodiscard]] std::string hashOf(const std::string& subject) const;

    /// The list that the last script made for git, with hashes replaced by subjects: "pick A\n".
    [[nodiscard]] std::string scriptedList(const std::string& scriptPath) const;

private:
    std::string temporaryDirectory_;
    std::shared_ptr<RVGitMergeManager> manager_;
};
