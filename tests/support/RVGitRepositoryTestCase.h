#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/RVGitTestCase.h"

class RVGitRepository;

/// Base of tests that run the library's commands in a repository: a new one on the unborn branch
/// "main" is open.
class RVGitRepositoryTestCase : public RVGitTestCase {
protected:
    RVGitRepositoryTestCase();

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    /// Of the working tree.
    [[nodiscard]] const std::string& repositoryPath() const { return repositoryPath_; }
    /// The real git in the repository: its output without the newlines at the end.
    std::string gitInRepository(const std::vector<std::string>& arguments) const;
    /// Commits a file and returns the hash; each call makes another commit.
    std::string makeCommit(std::string_view message = "Message");

    /// Makes it the default binary for the rest of the test; its version probe is forgotten.
    [[nodiscard]] RVRecordingGit useRecordingGit();
    [[nodiscard]] RVFakeGit useFakeGit();
    /// The last recorded arguments behind those that every command of the repository has, which
    /// are checked.
    [[nodiscard]] std::vector<std::string> lastArguments(const RVRecordingGit& recorder) const;

private:
    std::string repositoryPath_;
    std::shared_ptr<RVGitRepository> repository_;
    int numberOfCommits_ = 0;
};
