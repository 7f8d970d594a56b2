#pragma once

#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitRepository;

/// What of a superproject an operation on submodules may touch: its working tree without the git
/// directory, and the folder "modules" in that. ".gitmodules" is a stranger's file: a name or a
/// path in it may lead anywhere. Looks at the disk at each question; any thread.
class RVGIT_EXPORT RVGitSubmoduleContainment {
public:
    /// The repository is required.
    explicit RVGitSubmoduleContainment(std::shared_ptr<RVGitRepository> repository);

    /// Whether a submodule may be at the path, which is one from the top of the working tree or an
    /// absolute one: below the top, not in a git directory, and below no symbolic link.
    [[nodiscard]] bool containsWorkingDirectory(const std::string& path) const;
    /// Whether the git directory at the absolute path, or the one that may be made there, is below
    /// the folder "modules", with links resolved, and is not part of another git directory.
    [[nodiscard]] bool containsGitDirectory(const std::string& path) const;
    /// Whether the name makes a path below "modules": it is plain, and of one line.
    [[nodiscard]] static bool isSafeName(const std::string& name);
    /// Whether git directories of other submodules lie in this one, as those of "lib/a" lie in that
    /// of "lib".
    [[nodiscard]] static bool holdsOtherGitDirectories(const std::string& gitDirectoryPath);

    /// False with code 1006 if ".gitmodules" is a symbolic link, through which git would write into
    /// another file, or a special file; with code 102 for a bare repository.
    [[nodiscard]] bool requirePlainSubmodulesFile(RVErrorPlace error = nullptr) const;

    /// Whether the directory at the path looks like a git directory.
    [[nodiscard]] static bool isGitDirectory(const std::string& path);
    /// Whether a directory is at the path, and no link to one, with nothing in it.
    [[nodiscard]] static bool isEmptyPlainDirectory(const std::string& path);
    /// True for anything at the path, a dangling link too.
    [[nodiscard]] static bool somethingIsAt(const std::string& path);
    /// Whether a pipe, a device or a socket is there, which git would read or wait for without end.
    [[nodiscard]] static bool isSpecialFile(const std::string& path);
    /// The path with all links resolved; absent if there is nothing.
    [[nodiscard]] static std::optional<std::string> resolvedPath(const std::string& path);
    /// Whether two paths lead to one file, or are equal where there is none.
    [[nodiscard]] static bool isSameFile(const std::string& path, const std::string& otherPath);

private:
    std::shared_ptr<RVGitRepository> repository_;
};
