#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

/// A git that records how it was called and then becomes the real one: for exact command lines.
///
///     RVRecordingGit recorder = recordingGit();
///     // ... run a command whose RVGitBinary has the path recorder.path() ...
///     EXPECT_THAT(recorder.lastInvocation().arguments, ElementsAre("--no-pager", "gc"));
///
/// Making an RVGitBinary runs a version probe, which is recorded like any other call.
class RVRecordingGit {
public:
    struct Invocation {
        /// Without the program's own name.
        std::vector<std::string> arguments;
        std::map<std::string, std::string> environment;
        /// Absent where the command was given none: /dev/null, or none open at all. Present and
        /// empty for an empty pipe or file.
        std::optional<std::string> standardInput;
        std::string workingDirectory;
    };

    /// Writes the script "git" into the directory, which it makes.
    RVRecordingGit(std::string directory, const std::string& realGitPath);

    [[nodiscard]] const std::string& path() const { return path_; }
    /// In the order in which the calls began.
    [[nodiscard]] std::vector<Invocation> invocations() const;
    /// Throws std::out_of_range where nothing has been recorded.
    [[nodiscard]] Invocation lastInvocation() const;
    /// The argument lists alone.
    [[nodiscard]] std::vector<std::vector<std::string>> argumentLists() const;
    /// Forgets what has been recorded.
    void clear() const;

private:
    std::string recordsPath_;
    std::string path_;
};
