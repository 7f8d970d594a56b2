#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/RVFakeGit.h"
#include "tests/support/RVHangingGit.h"
#include "tests/support/RVRecordingGit.h"
#include "tests/support/RVTestProcess.h"

/// Base of every test that touches files or git. Each test has a scratch directory of its own,
/// deleted afterwards, and works with the real git through git(), which does not use the library.
/// The library's default binary is the real git.
///
/// The whole process runs in an allow-listed environment with a private HOME (see
/// RVGitTestEnvironment), so nothing of the machine's configuration reaches a test. Relative
/// paths given to the helpers are below the scratch directory.
class RVGitTestCase : public testing::Test {
protected:
    /// The identity in the private HOME's configuration.
    static constexpr char userName[] = "Marie Curie";
    static constexpr char userEmail[] = "marie@example.org";
    /// The author and committer date of a commit unless a test sets another: 2020-01-02 03:04:05
    /// UTC, as git takes it and in seconds.
    static constexpr char defaultDate[] = "1577934245 +0000";
    static constexpr long long defaultTime = 1577934245;

    RVGitTestCase();
    ~RVGitTestCase() override;

    // Files.

    /// Free of symbolic links and of a trailing slash.
    [[nodiscard]] const std::string& scratchDirectory() const { return scratchDirectory_; }
    /// The absolute path of "a/b" below the scratch directory; an absolute path stays as it is.
    [[nodiscard]] std::string scratchPath(std::string_view relativePath) const;
    /// Makes the directory with its parents; returns its absolute path.
    std::string makeDirectory(std::string_view path) const;
    /// Writes the file, making its parents; returns its absolute path.
    std::string writeFile(std::string_view path, std::string_view contents,
                          unsigned permissions = 0644) const;
    /// The bytes of a file; fails the test where it cannot be read.
    [[nodiscard]] std::string readFile(std::string_view path) const;
    /// True for anything at the path, a dangling link too.
    [[nodiscard]] bool fileExists(std::string_view path) const;

    // The real git.

    /// The git that stands first in PATH.
    [[nodiscard]] static const std::string& gitPath();
    /// What git printed, byte for byte. Fails the test on another exit code than 0. The working
    /// directory is the scratch directory unless given; standard input is empty unless given.
    std::string git(const std::vector<std::string>& arguments, std::string_view directory = {},
                    const std::optional<std::string>& standardInput = std::nullopt) const;
    /// The same without the newlines at the end.
    std::string gitLine(const std::vector<std::string>& arguments,
                        std::string_view directory = {}) const;
    /// Runs git whatever the outcome.
    [[nodiscard]] RVTestProcessResult runGit(
        const std::vector<std::string>& arguments, std::string_view directory = {},
        const std::optional<std::string>& standardInput = std::nullopt) const;
    /// Any other program, found in PATH unless it holds a slash.
    [[nodiscard]] RVTestProcessResult runProgram(
        const std::vector<std::string>& commandLine, std::string_view directory = {},
        const std::optional<std::string>& standardInput = std::nullopt) const;

    /// A new repository on the unborn branch "main"; returns its absolute path.
    std::string initRepository(std::string_view name = "repository") const;
    std::string initBareRepository(std::string_view name = "bare.git") const;
    /// Writes the file, stages it and commits the index, with the message as it is; returns the
    /// hash of the commit.
    std::string commitFile(std::string_view repositoryPath, std::string_view file,
                           std::string_view contents, std::string_view message) const;
    /// Writes a copy of the commit with a signature that no key has made; returns its hash.
    std::string makeSignedCopyOfCommit(std::string_view revision,
                                       std::string_view repositoryPath) const;

    // The environment of this process, put back when the test ends.

    /// An absent value removes the variable.
    void setEnvironmentVariable(const std::string& name, const std::optional<std::string>& value);
    /// GIT_AUTHOR_DATE and GIT_COMMITTER_DATE; the committer's is the author's unless given.
    void setDates(const std::string& authorDate,
                  const std::optional<std::string>& committerDate = std::nullopt);

    // The stand-ins. `name` is a new directory below the scratch directory.

    [[nodiscard]] RVRecordingGit recordingGit(std::string_view name = "recording-git") const;
    [[nodiscard]] RVFakeGit fakeGit(std::string_view name = "fake-git") const;
    [[nodiscard]] RVHangingGit hangingGit(std::string_view words, std::string_view output = {},
                                          std::string_view name = "hanging-git") const;

private:
    struct SavedVariable {
        std::string name;
        std::optional<std::string> value;
    };

    std::string scratchDirectory_;
    std::vector<SavedVariable> savedVariables_;
};
