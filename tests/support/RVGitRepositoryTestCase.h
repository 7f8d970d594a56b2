#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "tests/support/RVErrorMatchers.h"
#include "tests/support/RVGitTestCase.h"

class RVGitCommand;
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
    /// Changes the file that makeCommit() commits, in the working tree alone.
    void change(std::string_view contents = "changed\n") const;

    /// Makes it the default binary for the rest of the test; its version probe is forgotten.
    [[nodiscard]] RVRecordingGit useRecordingGit();
    [[nodiscard]] RVFakeGit useFakeGit();
    /// The last recorded arguments behind those that every command of the repository has, which
    /// are checked.
    [[nodiscard]] std::vector<std::string> lastArguments(const RVRecordingGit& recorder) const;
    /// Runs the command, whatever comes of it, and returns its lastArguments().
    [[nodiscard]] std::vector<std::string> argumentsOf(const RVRecordingGit& recorder,
                                                       RVGitCommand& command) const;
    /// What the command fails with when it is run: the test fails if it does not, and if it says
    /// nothing (then it is an error of the domain "none").
    [[nodiscard]] static RVError errorOf(RVGitCommand& command);
    /// The same of an operation that is called with an error place.
    template <typename Operation>
    requires std::invocable<const Operation&, RVErrorPlace>
    [[nodiscard]] static RVError errorOf(const Operation& operation) {
        std::optional<RVError> error;
        EXPECT_FALSE(operation(&error));
        EXPECT_TRUE(error.has_value());
        return error.value_or(RVError("none", 0));
    }

private:
    std::string repositoryPath_;
    std::shared_ptr<RVGitRepository> repository_;
    int numberOfCommits_ = 0;
};
