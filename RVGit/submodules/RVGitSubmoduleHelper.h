#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"

class RVGitRepository;
class RVGitSubmodule;

/// What is known of a submodule, by what is wrong with it.
enum RVGitSubmoduleStatus : std::int64_t {
    /// Unknown.
    RVGitSubmoduleStatusNone = 0,
    /// Checked out at the recorded commit.
    RVGitSubmoduleStatusClean = 1,
    RVGitSubmoduleStatusUninitialized = 2,
    /// Checked out at another commit than the recorded one.
    RVGitSubmoduleStatusUpdated = 3,
    /// The index has a conflict.
    RVGitSubmoduleStatusUnmerged = 4,
    /// In the index, but ".gitmodules" knows nothing of it.
    RVGitSubmoduleStatusMissingConfiguration = 5,
    /// Its git directory is gone.
    RVGitSubmoduleStatusMissingGitDirectory = 6,
    /// In ".gitmodules", but not in the index.
    RVGitSubmoduleStatusMissingWorkingTreePath = 7,
};

/// Where the parts of a submodule are. Names and paths are taken as they are, wherever they lead:
/// RVGitSubmoduleManager checks them before it touches anything. Any thread.
class RVGIT_EXPORT RVGitSubmoduleHelper {
public:
    /// `path` in the repository's `path`, standardized.
    [[nodiscard]] static std::string absoluteWorkingDirectoryPathForSubmodulePath(
        const std::string& path, const std::shared_ptr<RVGitRepository>& repository);
    /// "modules/NAME" in the repository's git directory, standardized.
    [[nodiscard]] static std::string absoluteGitDirectoryPathForSubmoduleName(
        const std::string& name, const std::shared_ptr<RVGitRepository>& repository);
    /// What git says of a valid submodule that can be opened, else the path form. Where a
    /// directory without a repository of its own stands in its place, git finds the superproject.
    [[nodiscard]] static std::string absoluteWorkingDirectoryPathForSubmodule(
        RVGitSubmodule& submodule, const std::shared_ptr<RVGitRepository>& repository);
    /// The same with the name form.
    [[nodiscard]] static std::string absoluteGitDirectoryPathForSubmodule(
        RVGitSubmodule& submodule, const std::shared_ptr<RVGitRepository>& repository);

    /// From the submodule's working tree to its git directory, as its ".git" file says it:
    /// "../../.git/modules/NAME" for a path of two components.
    [[nodiscard]] static std::string relativeGitDirectoryPathForSubmoduleWithName(
        const std::string& name, const std::string& path);
    /// From the git directory to the working tree, as its "core.worktree" says it: "../../../PATH"
    /// for a name of one component. Right where the superproject's git directory is ".git" in its
    /// working tree.
    [[nodiscard]] static std::string relativeWorkingTreePathForSubmoduleWithName(
        const std::string& name, const std::string& path);

    /// "Clean (' ')" and so on; "None" for any other value.
    [[nodiscard]] static std::string stringRepresentationForSubmoduleStatus(
        RVGitSubmoduleStatus status);
};
