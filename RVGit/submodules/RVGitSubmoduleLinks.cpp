#include "RVGit/submodules/RVGitSubmoduleLinks.h"

#include <filesystem>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"

namespace {

namespace fs = std::filesystem;
using Containment = RVGitSubmoduleContainment;

constexpr int maximumDepth = 32;

class Relinking {
public:
    Relinking(const std::shared_ptr<RVGitRepository>& superproject, RVErrorPlace error)
        : containment_(superproject),
          top_(Containment::resolvedPath(superproject->path()).value_or(superproject->path())),
          error_(error) {}

    /// Of all git directories below a folder.
    [[nodiscard]] bool relinkBelow(const fs::path& oldFolder, const fs::path& newFolder,
                                   int depth) const {
        if (depth == 0)
            return true;
        for (const std::string& name : RVFileManager::namesInDirectoryAtPath(newFolder.string())) {
            const fs::path old = oldFolder / name;
            const fs::path now = newFolder / name;
            std::error_code isUnknown;
            if (!fs::is_directory(fs::symlink_status(now, isUnknown)))
                continue;
            // A name may have a slash.
            const bool isGitDirectory = Containment::isGitDirectory(now.string());
            if (isGitDirectory && !relink(old, now))
                return false;
            if (!(isGitDirectory ? relinkBelow(old / "modules", now / "modules", depth - 1)
                                 : relinkBelow(old, now, depth - 1)))
                return false;
        }
        return true;
    }

private:
    [[nodiscard]] bool relink(const fs::path& old, const fs::path& now) const {
        const auto config = RVGitConfig::configWithFilePath((now / "config").string());
        std::optional<RVError> failure;
        const auto value = config->valueForConfigKey("core.worktree", &failure);
        if (failure && failure->code() != RVGitConfigKeyNotFoundError) {
            fillErrorPlace(error_, *std::move(failure));
            return false;
        }
        if (!value)
            return true;
        // The value is the old one, or the new one where an earlier call failed behind it.
        for (const fs::path& base : {old, now}) {
            const fs::path workingTree = (base / *value).lexically_normal();
            if (!namesGitDirectory(workingTree.string(), old.string()) &&
                !namesGitDirectory(workingTree.string(), now.string()))
                continue;
            if (!containment_.containsWorkingDirectory(
                    workingTree.lexically_relative(top_).string()))
                continue;
            return config->setValue(workingTree.lexically_relative(now).string(), "core.worktree",
                                    error_) &&
                   RVGitRepository::updateGitDirectoryFileForRepositoryAtPath(
                       workingTree.string(), now.lexically_relative(workingTree).string(), error_);
        }
        return true;
    }

    RVGitSubmoduleContainment containment_;
    fs::path top_;
    RVErrorPlace error_;
};

}  // namespace

bool rvgit::namesGitDirectory(const std::string& workingTree, const std::string& gitDirectory) {
    const std::string file = pathByAppendingComponent(workingTree, ".git");
    if (RVFileManager::isDirectoryAtPath(file))
        return false;
    const auto link = RVGitRepository::bareRepositoryWithGitDirectoryPath(file)
                          ->gitDirectoryPathFromGitDirectoryFileLink();
    return link && (fs::path(workingTree) / *link).lexically_normal() ==
                       fs::path(gitDirectory).lexically_normal();
}

bool rvgit::relinkNestedSubmodules(const std::string& oldGitDirectory,
                                   const std::string& newGitDirectory,
                                   const std::shared_ptr<RVGitRepository>& superproject,
                                   RVErrorPlace error) {
    return Relinking(superproject, error)
        .relinkBelow(fs::path(oldGitDirectory) / "modules", fs::path(newGitDirectory) / "modules",
                     maximumDepth);
}
