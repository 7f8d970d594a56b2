#pragma once

#include <string>
#include <string_view>

/// A git that hangs in one call, until somebody ends it, and becomes the real one in all others:
/// for what is cancelled or interrupted half way.
///
///     const RVHangingGit git = hangingGit("ls-files");
///     RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(git.path()));
///     const RVCanceller canceller(git.begunPath());
///     EXPECT_FALSE(operation(&error));
///
/// The test fails where no call has hung when this goes, where a process is still hanging then, and
/// where it has not been ended within a minute, which ends it.
class RVHangingGit {
public:
    /// Writes the script "git" into the directory, which it makes; what another one has left there
    /// is forgotten. The first call hangs in which the words follow one another ("submodule
    /// status"), without words the first of all; never one with the argument "--version". It prints
    /// the output before that.
    RVHangingGit(std::string_view directory, std::string_view realGitPath, std::string_view words,
                 std::string_view output = {});
    ~RVHangingGit();
    RVHangingGit(const RVHangingGit&) = delete;
    RVHangingGit& operator=(const RVHangingGit&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    /// Where there is a file once a call hangs and all of its output is written.
    [[nodiscard]] const std::string& begunPath() const { return begunPath_; }
    /// Returns once a call hangs; fails the test and returns false where none does within a
    /// minute.
    bool waitUntilBegun() const;
    /// The same as a command of a shell, which says nothing.
    [[nodiscard]] std::string waitingCommand() const;
    /// Whether the process that has hung ends within a minute.
    [[nodiscard]] bool ends() const;

private:
    std::string words_;
    std::string path_;
    std::string begunPath_;
    std::string outlivedPath_;
};
