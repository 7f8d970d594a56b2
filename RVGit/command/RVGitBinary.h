#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"

/// One installation of git. The application picks it and makes it the default: no other operation
/// of the library searches for one. Making one runs git once to ask for its version, and waits for
/// it. A binary that cannot run or is too old is no error: it is not valid. Set up on one thread
/// before commands use it, then read by any.
class RVGIT_EXPORT RVGitBinary {
public:
    /// `libexecPath` is git's exec directory, if it is not the one that git itself knows.
    explicit RVGitBinary(std::string path, std::optional<std::string> libexecPath = std::nullopt);

    [[nodiscard]] static std::shared_ptr<RVGitBinary> gitBinaryWithPath(
        std::string path, std::optional<std::string> libexecPath = std::nullopt);
    /// Whether the path names an executable file and a binary made of it is valid.
    [[nodiscard]] static bool isGitBinaryAtPath(const std::string& path);

    /// The first executable "git" in the directories of PATH that are absolute; null if there is
    /// none. Whether it is new enough isValid() tells.
    [[nodiscard]] static std::shared_ptr<RVGitBinary> gitBinaryInPath();

    /// What commands use unless told otherwise; null until it is set. Any thread.
    [[nodiscard]] static std::shared_ptr<RVGitBinary> defaultGitBinary();
    static void setDefaultGitBinary(std::shared_ptr<RVGitBinary> gitBinary);

    /// "2.1.0".
    [[nodiscard]] static std::string minimumVersionRequirement();

    /// Whether the version is known and not below minimumVersionRequirement().
    [[nodiscard]] bool isValid() const { return valid_; }
    [[nodiscard]] const std::string& path() const { return path_; }
    /// The path as commands launch it. A relative one would be looked for inside the repository,
    /// where anybody may have put a file: it is made absolute when the binary is made, and so are
    /// the exec directory and additionalPaths() for the commands.
    [[nodiscard]] const std::string& launchPath() const { return launchPath_; }
    [[nodiscard]] const std::optional<std::string>& launchLibexecPath() const {
        return launchLibexecPath_;
    }
    [[nodiscard]] const std::vector<std::string>& launchAdditionalPaths() const {
        return launchAdditionalPaths_;
    }
    [[nodiscard]] const std::optional<std::string>& libexecPath() const { return libexecPath_; }
    /// These two are derived from the exec directory, and absent without one. Kept for
    /// compatibility: PERL5LIB of a command is this path with ":$PERL5LIB" behind it, letter by
    /// letter, since nothing expands it.
    [[nodiscard]] const std::optional<std::string>& perlLibraryPath() const {
        return perlLibraryPath_;
    }
    [[nodiscard]] const std::optional<std::string>& templatesDirectoryPath() const {
        return templatesDirectoryPath_;
    }
    /// Such as "2.39.5", with whatever git adds; absent if unknown.
    [[nodiscard]] const std::optional<std::string>& version() const { return version_; }
    /// Whether the version is known and not below the given one.
    [[nodiscard]] bool isVersionAtLeast(std::string_view required) const;

    /// Put ahead of PATH in every command.
    [[nodiscard]] const std::vector<std::string>& additionalPaths() const {
        return additionalPaths_;
    }
    void setAdditionalPaths(std::vector<std::string> paths);
    /// Put behind the git options of every command.
    [[nodiscard]] const std::vector<std::string>& defaultOptions() const { return defaultOptions_; }
    void setDefaultOptions(std::vector<std::string> options) {
        defaultOptions_ = std::move(options);
    }

    /// What keeps a repository that a stranger made from running programs of its own: no hooks, no
    /// file-system monitor, no transport that is a program. For setDefaultOptions() of a binary
    /// with which such a repository is opened; filters, diff and merge drivers, and aliases of the
    /// repository's configuration are left to git.
    [[nodiscard]] static std::vector<std::string> defaultOptionsForUntrustedRepositories();

    /// Runs "git --version" and returns what it says behind "git version"; absent if it fails.
    [[nodiscard]] std::optional<std::string> gitBinaryVersion();

private:
    bool valid_ = false;
    std::string path_;
    std::optional<std::string> libexecPath_;
    std::string launchPath_;
    std::optional<std::string> launchLibexecPath_;
    std::vector<std::string> launchAdditionalPaths_;
    std::optional<std::string> perlLibraryPath_;
    std::optional<std::string> templatesDirectoryPath_;
    std::optional<std::string> version_;
    std::vector<std::string> additionalPaths_;
    std::vector<std::string> defaultOptions_;
};
