#include "RVGit/remotes/RVGitRemoteRefDirectory.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

namespace fs = std::filesystem;

bool isBelow(const std::string& path, const std::string& directory) {
    return path.starts_with(directory + "/");
}

// Removes what the path stands for, but for the given paths and the directories on the way there.
bool removeItem(const std::string& path, const std::vector<std::string>& keptPaths,
                RVErrorPlace error) {
    if (std::find(keptPaths.begin(), keptPaths.end(), path) != keptPaths.end())
        return true;
    const bool holdsKept =
        std::any_of(keptPaths.begin(), keptPaths.end(),
                    [&](const std::string& kept) { return isBelow(kept, path); });
    if (!holdsKept || RVFileManager::isSymbolicLinkAtPath(path) ||
        !RVFileManager::isDirectoryAtPath(path))
        return RVFileManager::removeItemAtPath(path, error);
    std::optional<RVError> failure;
    for (const std::string& name : RVFileManager::namesInDirectoryAtPath(path, &failure))
        if (!removeItem(pathByAppendingComponent(path, name), keptPaths, error))
            return false;
    if (!failure)
        return true;
    fillErrorPlace(error, *std::move(failure));
    return false;
}

bool rename(const std::string& from, const std::string& to) {
    std::error_code failure;
    fs::create_directories(fs::path(to).parent_path(), failure);
    if (!failure)
        fs::rename(from, to, failure);
    return !failure;
}

}  // namespace

RVGitRemoteRefDirectory::RVGitRemoteRefDirectory(const RVGitRepository& repository,
                                                 std::string remoteName)
    : gitDirectoryPath_(repository.gitDirectoryPath().value_or("")),
      remotesPath_(pathByAppendingComponent(gitDirectoryPath_, "refs/remotes")),
      remoteName_(std::move(remoteName)) {}

bool RVGitRemoteRefDirectory::exists() const {
    if (!isPlainRelativePath(remoteName_) || liesBehindLink(remoteName_))
        return false;
    std::error_code failure;
    return fs::symlink_status(pathByAppendingComponent(remotesPath_, remoteName_), failure)
                   .type() != fs::file_type::not_found &&
           !failure;
}

bool RVGitRemoteRefDirectory::liesBehindLink(const std::string& remoteName) const {
    std::string path = remotesPath_;
    for (const std::string& part : componentsSeparatedByString(remoteName, "/")) {
        if (RVFileManager::isSymbolicLinkAtPath(path))
            return true;
        path = pathByAppendingComponent(path, part);
    }
    return false;
}

bool RVGitRemoteRefDirectory::remove(const std::vector<std::string>& otherRemoteNames,
                                     RVErrorPlace error) {
    if (!exists())
        return true;
    std::vector<std::string> keptPaths;
    for (const std::string& name : otherRemoteNames)
        if (isPlainRelativePath(name) && isBelow(name, remoteName_)) {
            std::string path = pathByAppendingComponent(remotesPath_, name);
            if (RVFileManager::fileExistsAtPath(path))
                keptPaths.push_back(std::move(path));
        }
    return removeItem(pathByAppendingComponent(remotesPath_, remoteName_), keptPaths, error);
}

bool RVGitRemoteRefDirectory::moveToNameOfOtherCase(const std::string& newRemoteName) const {
    if (!exists() || !isPlainRelativePath(newRemoteName))
        return true;
    if (liesBehindLink(newRemoteName))
        return false;
    const std::string path = pathByAppendingComponent(remotesPath_, remoteName_);
    const std::string newPath = pathByAppendingComponent(remotesPath_, newRemoteName);
    std::error_code ignored;
    if (RVFileManager::fileExistsAtPath(newPath) && !fs::equivalent(path, newPath, ignored))
        return true;
    // In the git directory, so that it is a matter of names alone, on one file system.
    std::string temporary = pathByAppendingComponent(gitDirectoryPath_, "rvgit-rename.XXXXXX");
    if (!mkdtemp(temporary.data()))
        return false;
    const std::string halfWay = pathByAppendingComponent(temporary, newRemoteName);
    bool moved = rename(path, halfWay);
    if (moved && !rename(halfWay, newPath)) {
        moved = false;
        (void)rename(halfWay, path);
    }
    // Nothing but empty directories is left in it, unless it could not be moved back.
    if (!RVFileManager::fileExistsAtPath(halfWay))
        (void)RVFileManager::removeItemAtPath(temporary);
    return moved;
}
