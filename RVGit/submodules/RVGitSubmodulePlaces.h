#pragma once

#include <memory>
#include <string>

#include "RVGit/base/RVExport.h"

class RVGitRepository;
class RVGitSubmodule;

/// Where the parts of a submodule are, as far as they are its own.
struct RVGitSubmodulePlaces {
    std::string workingDirectory;
    std::string gitDirectory;
    /// False where the path leads out of the working tree, or where git takes a directory
    /// elsewhere for the working tree.
    bool workingDirectoryIsContained = false;
    /// The same of the folder "modules". Contained, too, is ".git" in the working directory.
    bool gitDirectoryIsContained = false;
    /// Whether a repository was found that is not the superproject.
    bool hasRepository = false;
    /// The same of what is in the working directory itself, whatever the list says of the
    /// submodule; null without one.
    std::shared_ptr<RVGitRepository> ownRepository = {};
    /// Whether that one has the git directory.
    bool linksToGitDirectory = false;
};

inline namespace RVGIT_EXPORT rvgit {

/// The repository is the superproject. Asks git in the submodule where its parts are.
[[nodiscard]] RVGitSubmodulePlaces placesOfSubmodule(
    RVGitSubmodule& submodule, const std::shared_ptr<RVGitRepository>& repository);

/// The repository in a directory, and not the one that the directory is in; null without one.
/// `opened` is what a caller has opened the directory as, who spares git the question.
[[nodiscard]] std::shared_ptr<RVGitRepository> repositoryInDirectory(
    const std::string& directory, std::shared_ptr<RVGitRepository> opened = nullptr);

}  // namespace rvgit
