#pragma once

#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitRepository;

/// The directory of a remote's loose refs, "refs/remotes/NAME" in the git directory. The name comes
/// from a configuration that anybody may have written: one that would lead elsewhere ("..", or
/// through a symbolic link) is taken for one without a directory.
class RVGIT_EXPORT RVGitRemoteRefDirectory {
public:
    RVGitRemoteRefDirectory(const RVGitRepository& repository, std::string remoteName);

    /// Removes it, but for the directories of these other remotes. True if there is none.
    [[nodiscard]] bool remove(const std::vector<std::string>& otherRemoteNames, RVErrorPlace error);
    /// Gives it a name that differs in the case of letters, by way of a new directory, since a file
    /// system that ignores case cannot do it in one step. True if there is none, and where git has
    /// made the one of the new name. Where it cannot be done, as where the new name leads through a
    /// symbolic link, all is as before.
    [[nodiscard]] bool moveToNameOfOtherCase(const std::string& newRemoteName) const;

private:
    /// Whether the directory is there, behind no link.
    [[nodiscard]] bool exists() const;
    /// Whether a directory on the way to that remote's is a symbolic link.
    [[nodiscard]] bool liesBehindLink(const std::string& remoteName) const;

    std::string gitDirectoryPath_;
    std::string remotesPath_;
    std::string remoteName_;
};
