#pragma once

#include <sys/types.h>

#include <chrono>
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
    struct Call {
        /// A pattern of the shell for the arguments, with a blank on either side: "*' config '*".
        std::string pattern;
        /// How many calls that match become the real git before; all do behind it.
        int skipped = 0;
        /// A command of the shell that runs ahead of hanging; "$GIT" "$@" is what was asked for.
        std::string before = ":";

        /// In which the words follow one another ("submodule status"), or any without words; never
        /// one with the argument "--version".
        [[nodiscard]] static Call withWords(std::string_view words);
    };

    /// Writes the script "git" into the directory, which it makes anew.
    RVHangingGit(std::string_view directory, std::string_view realGitPath, const Call& call);
    ~RVHangingGit();
    RVHangingGit(const RVHangingGit&) = delete;
    RVHangingGit& operator=(const RVHangingGit&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    /// Where there is a file once a call hangs and what it does before is done.
    [[nodiscard]] const std::string& begunPath() const { return begunPath_; }
    /// Returns once a call hangs; fails the test and returns false where none does within a
    /// minute.
    bool waitUntilBegun() const;
    /// The same as a command of a shell, which says nothing.
    [[nodiscard]] std::string waitingCommand() const;
    /// Whether the process that has hung ends within a minute.
    [[nodiscard]] bool ends() const;
    /// How many calls have matched.
    [[nodiscard]] int numberOfCalls() const;

private:
    /// Of the call that hangs; 0 before.
    [[nodiscard]] pid_t processID() const;
    [[nodiscard]] bool endsWithin(std::chrono::seconds time) const;

    std::string pattern_;
    std::string directory_;
    std::string path_;
    std::string begunPath_;
    std::string outlivedPath_;
};
