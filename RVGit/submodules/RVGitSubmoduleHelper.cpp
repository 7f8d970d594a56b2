#include "RVGit/submodules/RVGitSubmoduleHelper.h"

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"

namespace {

// One ".." for each component of the path.
std::string pathUpFromPath(const std::string& path) {
    std::string up;
    for (const std::string& component : componentsSeparatedByString(path, "/"))
        if (!component.empty())
            up = pathByAppendingComponent(up, "..");
    return up;
}

std::shared_ptr<RVGitRepository> openedRepository(RVGitSubmodule& submodule) {
    return submodule.isValid() ? submodule.submoduleRepository() : nullptr;
}

}  // namespace

std::string RVGitSubmoduleHelper::absoluteWorkingDirectoryPathForSubmodulePath(
    const std::string& path, const std::shared_ptr<RVGitRepository>& repository) {
    return standardizedPath(pathByAppendingComponent(repository->path(), path));
}

std::string RVGitSubmoduleHelper::absoluteGitDirectoryPathForSubmoduleName(
    const std::string& name, const std::shared_ptr<RVGitRepository>& repository) {
    return standardizedPath(
        pathByAppendingComponent(repository->clonedSubmodulesDirectory().value_or(""), name));
}

std::string RVGitSubmoduleHelper::absoluteWorkingDirectoryPathForSubmodule(
    RVGitSubmodule& submodule, const std::shared_ptr<RVGitRepository>& repository) {
    const auto opened = openedRepository(submodule);
    return opened && opened->workingTreeDirectoryPath()
               ? *opened->workingTreeDirectoryPath()
               : absoluteWorkingDirectoryPathForSubmodulePath(submodule.path(), repository);
}

std::string RVGitSubmoduleHelper::absoluteGitDirectoryPathForSubmodule(
    RVGitSubmodule& submodule, const std::shared_ptr<RVGitRepository>& repository) {
    const auto opened = openedRepository(submodule);
    return opened && opened->gitDirectoryPath()
               ? *opened->gitDirectoryPath()
               : absoluteGitDirectoryPathForSubmoduleName(submodule.name(), repository);
}

std::string RVGitSubmoduleHelper::relativeGitDirectoryPathForSubmoduleWithName(
    const std::string& name, const std::string& path) {
    return pathByAppendingComponent(pathByAppendingComponent(pathUpFromPath(path), ".git/modules"),
                                    name);
}

std::string RVGitSubmoduleHelper::relativeWorkingTreePathForSubmoduleWithName(
    const std::string& name, const std::string& path) {
    return pathByAppendingComponent(pathByAppendingComponent("../..", pathUpFromPath(name)), path);
}

std::string RVGitSubmoduleHelper::stringRepresentationForSubmoduleStatus(
    RVGitSubmoduleStatus status) {
    switch (status) {
        case RVGitSubmoduleStatusClean:
            return "Clean (' ')";
        case RVGitSubmoduleStatusUninitialized:
            return "Uninitialized ('-')";
        case RVGitSubmoduleStatusUpdated:
            return "Updated ('+')";
        case RVGitSubmoduleStatusUnmerged:
            return "Unmerged";
        case RVGitSubmoduleStatusMissingConfiguration:
            return "Missing Configuration";
        case RVGitSubmoduleStatusMissingGitDirectory:
            return "Missing Git Directory";
        case RVGitSubmoduleStatusMissingWorkingTreePath:
            return "Missing Working Tree Path";
        default:
            return "None";
    }
}
