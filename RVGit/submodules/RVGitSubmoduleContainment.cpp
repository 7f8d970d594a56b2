#include "RVGit/submodules/RVGitSubmoduleContainment.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

constexpr int maximumDepthOfGitDirectories = 16;

bool isBelow(std::string_view path, std::string_view directory) {
    return path.size() > directory.size() + 1 && path.starts_with(directory) &&
           (directory == "/" || path[directory.size()] == '/');
}

// A real directory, which is not the case of a link to one.
bool isPlainDirectory(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool holdsGitDirectories(const std::string& path, int depth) {
    if (depth == 0)
        return true;
    // Git's own directories, which may be large; the ones in "modules" belong to the submodule.
    constexpr std::array<std::string_view, 9> known = {
        "objects", "refs", "logs", "hooks", "info", "modules", "worktrees", "branches", "lfs"};
    for (const std::string& name : RVFileManager::namesInDirectoryAtPath(path)) {
        const std::string item = pathByAppendingComponent(path, name);
        if (std::find(known.begin(), known.end(), name) != known.end() || !isPlainDirectory(item))
            continue;
        if (RVGitSubmoduleContainment::isGitDirectory(item) || holdsGitDirectories(item, depth - 1))
            return true;
    }
    return false;
}

}  // namespace

RVGitSubmoduleContainment::RVGitSubmoduleContainment(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {
    requireParameter(repository_ != nullptr, "repository");
}

bool RVGitSubmoduleContainment::containsWorkingDirectory(const std::string& path) const {
    if (!repository_->workingTreeDirectoryPath() || path.empty() ||
        path.find('\0') != std::string::npos)
        return false;
    const std::string& top = repository_->path();
    const std::string absolutePath =
        standardizedPath(isAbsolutePath(path) ? path : pathByAppendingComponent(top, path));
    if (!isBelow(absolutePath, top))
        return false;

    const auto components = componentsSeparatedByString(
        std::string_view(absolutePath).substr(top == "/" ? 1 : top.size() + 1), "/");
    std::string directory = top;
    for (std::size_t index = 0; index < components.size(); ++index) {
        if (lowercaseString(components[index]) == ".git")
            return false;
        const bool isLast = index + 1 == components.size();
        directory = pathByAppendingComponent(directory, components[index]);
        if (!isLast && RVFileManager::isSymbolicLinkAtPath(directory))
            return false;
    }
    // A git directory need not be called ".git".
    const auto place = resolvedPath(absolutePath);
    const auto gitDirectory = resolvedPath(repository_->gitDirectoryPath().value_or(""));
    return !place || !gitDirectory || RVFileManager::isSymbolicLinkAtPath(absolutePath) ||
           (*place != *gitDirectory && !isBelow(*place, *gitDirectory) &&
            !isBelow(*gitDirectory, *place));
}

bool RVGitSubmoduleContainment::containsGitDirectory(const std::string& path) const {
    const auto modules = resolvedPath(repository_->clonedSubmodulesDirectory().value_or(""));
    // Without the folder there is nothing in it yet, and names are all that there is to look at.
    if (!modules)
        return repository_->clonedSubmodulesDirectory() &&
               isBelow(standardizedPath(path),
                       standardizedPath(*repository_->clonedSubmodulesDirectory()));
    std::string existing = standardizedPath(path);
    std::string rest;
    while (!RVGitSubmoduleContainment::somethingIsAt(existing) && existing.size() > 1) {
        rest = pathByAppendingComponent(lastPathComponent(existing), rest);
        existing = pathByDeletingLastComponent(existing);
    }
    const auto resolved = resolvedPath(existing);
    if (!resolved)
        return false;
    const std::string place = pathByAppendingComponent(*resolved, rest);
    if (!isBelow(place, *modules))
        return false;
    for (std::string parent = pathByDeletingLastComponent(place); isBelow(parent, *modules);
         parent = pathByDeletingLastComponent(parent))
        if (isGitDirectory(parent))
            return false;
    return true;
}

bool RVGitSubmoduleContainment::isSafeName(const std::string& name) {
    return isPlainRelativePath(name) && name.find('\n') == std::string::npos;
}

bool RVGitSubmoduleContainment::holdsOtherGitDirectories(const std::string& gitDirectoryPath) {
    return holdsGitDirectories(gitDirectoryPath, maximumDepthOfGitDirectories);
}

bool RVGitSubmoduleContainment::requirePlainSubmodulesFile(RVErrorPlace error) const {
    const auto file = repository_->submodulesFilePath();
    if (file && !RVFileManager::isSymbolicLinkAtPath(*file) && !isSpecialFile(*file))
        return true;
    fillErrorPlace(
        error, gitErrorWithCode(file ? RVGitConfigWriteError : RVGitNoWorkTreeError,
                                RVGitMakeErrorUserInfo(
                                    repository_, {{RVGitConfigFileErrorKey, file.value_or("")}})));
    return false;
}

bool RVGitSubmoduleContainment::isGitDirectory(const std::string& path) {
    return somethingIsAt(pathByAppendingComponent(path, "HEAD")) &&
           RVFileManager::isDirectoryAtPath(pathByAppendingComponent(path, "objects"));
}

bool RVGitSubmoduleContainment::isEmptyPlainDirectory(const std::string& path) {
    return !RVFileManager::isSymbolicLinkAtPath(path) && RVFileManager::isDirectoryAtPath(path) &&
           RVFileManager::isEmptyDirectoryAtPath(path);
}

bool RVGitSubmoduleContainment::somethingIsAt(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0;
}

bool RVGitSubmoduleContainment::isSpecialFile(const std::string& path) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) &&
           !S_ISDIR(status.st_mode);
}

std::optional<std::string> RVGitSubmoduleContainment::resolvedPath(const std::string& path) {
    std::array<char, PATH_MAX> buffer;
    if (path.empty() || !::realpath(path.c_str(), buffer.data()))
        return std::nullopt;
    return std::string(buffer.data());
}

bool RVGitSubmoduleContainment::isSameFile(const std::string& path, const std::string& otherPath) {
    const auto resolved = resolvedPath(path);
    const auto otherResolved = resolvedPath(otherPath);
    if (resolved || otherResolved)
        return resolved == otherResolved;
    return standardizedPath(path) == standardizedPath(otherPath);
}
