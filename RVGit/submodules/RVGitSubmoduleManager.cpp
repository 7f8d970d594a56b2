#include "RVGit/submodules/RVGitSubmoduleManager.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"
#include "RVGit/submodules/RVGitSubmoduleHelper.h"
#include "RVGit/submodules/RVGitSubmoduleLinks.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmodulePathspec.h"
#include "RVGit/worktree/RVGitMoveCommand.h"
#include "RVGit/worktree/RVGitStatusCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;
using Containment = RVGitSubmoduleContainment;
using Helper = RVGitSubmoduleHelper;

bool isEmptyPlainDirectory(const std::string& path) {
    return !RVFileManager::isSymbolicLinkAtPath(path) && RVFileManager::isDirectoryAtPath(path) &&
           RVFileManager::isEmptyDirectoryAtPath(path);
}

// Nothing is ever replaced.
bool moveItem(const std::string& path, const std::string& newPath, RVErrorPlace error) {
    int result = ::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, newPath.c_str(), RENAME_NOREPLACE);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
        // Not every file system knows the flag.
        if (RVGitSubmoduleContainment::somethingIsAt(newPath))
            errno = EEXIST;
        else
            result = ::rename(path.c_str(), newPath.c_str());
    }
    if (result == 0)
        return true;
    const int errorNumber = errno;
    fillErrorPlace(error, posixError(errorNumber, errorNumber == EEXIST ? newPath : path));
    return false;
}

/// Makes the directories that are missing above a path, and takes them away again unless they are
/// kept.
class ParentDirectories {
public:
    explicit ParentDirectories(const std::string& path) {
        std::vector<std::string> missing;
        for (std::string parent = pathByDeletingLastComponent(path);
             parent.size() > 1 && !RVGitSubmoduleContainment::somethingIsAt(parent);
             parent = pathByDeletingLastComponent(parent))
            missing.push_back(parent);
        // What cannot be made shows when something is moved into it.
        for (auto parent = missing.rbegin(); parent != missing.rend(); ++parent)
            if (::mkdir(parent->c_str(), 0777) == 0)
                made_.push_back(*parent);
    }
    ParentDirectories(const ParentDirectories&) = delete;
    ParentDirectories& operator=(const ParentDirectories&) = delete;
    ~ParentDirectories() {
        for (auto path = made_.rbegin(); path != made_.rend(); ++path)
            ::rmdir(path->c_str());
    }
    void keep() { made_.clear(); }

private:
    std::vector<std::string> made_;
};

/// Where the parts of a submodule are, as far as they are its own.
struct Places {
    std::string workingDirectory;
    std::string gitDirectory;
    /// False where the path leads out of the working tree, or where git takes a directory
    /// elsewhere for the working tree.
    bool workingDirectoryIsContained = false;
    /// The same of the folder "modules". Contained, too, is ".git" in the working directory.
    bool gitDirectoryIsContained = false;
    /// Whether a repository was found that is not the superproject.
    bool hasRepository = false;
};

Places placesOfSubmodule(RVGitSubmodule& submodule, const Repository& repository) {
    const Containment containment(repository);
    Places places;
    places.workingDirectory =
        Helper::absoluteWorkingDirectoryPathForSubmodulePath(submodule.path(), repository);
    places.gitDirectory =
        Helper::absoluteGitDirectoryPathForSubmoduleName(submodule.name(), repository);
    places.workingDirectoryIsContained =
        containment.containsWorkingDirectory(places.workingDirectory) &&
        !submodule.path().starts_with('/');

    const std::string foundGitDirectory =
        Helper::absoluteGitDirectoryPathForSubmodule(submodule, repository);
    const auto opened = submodule.isValid() ? submodule.submoduleRepository() : nullptr;
    places.hasRepository =
        opened && opened->isValid() &&
        !Containment::isSameFile(foundGitDirectory, repository->gitDirectoryPath().value_or(""));
    if (!places.hasRepository) {
        places.gitDirectoryIsContained = Containment::isSafeName(submodule.name()) &&
                                         containment.containsGitDirectory(places.gitDirectory);
        return places;
    }
    places.gitDirectory = foundGitDirectory;
    places.gitDirectoryIsContained =
        Containment::isSafeName(submodule.name()) &&
        (containment.containsGitDirectory(foundGitDirectory) ||
         Containment::isSameFile(foundGitDirectory,
                                 pathByAppendingComponent(places.workingDirectory, ".git")));
    if (!Containment::isSameFile(
            Helper::absoluteWorkingDirectoryPathForSubmodule(submodule, repository),
            places.workingDirectory))
        places.workingDirectoryIsContained = false;
    return places;
}

enum class Work { None, Some, Unknown };

/// Whether there are changes in the submodule's working tree, asked of git in the submodule itself,
/// where no configuration of the superproject hides them. Unknown is what a cancelled command and
/// one that fails, which leaves its error, have found out.
Work workInSubmodule(RVGitSubmodule& submodule, RVGitUntrackedFilesMode untrackedFiles,
                     RVGitIgnoreSubmodulesMode ignoreSubmodules, RVErrorPlace error) {
    const auto command = RVGitStatusCommand::gitStatusCommandWithRepository(
        submodule.submoduleRepository(), std::nullopt);
    command->setUntrackedFilesMode(untrackedFiles);
    command->setIgnoreSubmodulesMode(ignoreSubmodules);
    if (!command->run(error))
        return Work::Unknown;
    if (!command->changedFiles().empty())
        return Work::Some;
    return command->isCancelled() ? Work::Unknown : Work::None;
}

std::string configFileInGitDirectory(const std::string& gitDirectory) {
    return pathByAppendingComponent(gitDirectory, "config");
}

// Has the git directory and the working tree refer to each other, as far as they did.
bool setLinks(const std::string& gitDirectory, const Places& places, const std::string& path,
              const Repository& repository, RVErrorPlace error) {
    const auto top = Containment::resolvedPath(repository->path());
    const auto resolved = Containment::resolvedPath(gitDirectory);
    if (!top || !resolved)
        return true;
    const std::filesystem::path workingTree = pathByAppendingComponent(*top, path);
    const auto config = RVGitConfig::configWithFilePath(configFileInGitDirectory(*resolved));
    if (config->containsConfigKeyWithName("core.worktree") &&
        !config->setValue(workingTree.lexically_relative(*resolved).string(), "core.worktree",
                          error))
        return false;
    const bool isLinked =
        places.hasRepository && !RVFileManager::isDirectoryAtPath(
                                    pathByAppendingComponent(places.workingDirectory, ".git"));
    return !isLinked ||
           RVGitRepository::updateGitDirectoryFileForRepositoryAtPath(
               places.workingDirectory,
               std::filesystem::path(*resolved).lexically_relative(workingTree).string(), error);
}

// Of the name form, there or not, with the links in front of the name resolved.
std::string resolvedGitDirectory(const std::string& name, const Repository& repository) {
    const std::string modules = repository->clonedSubmodulesDirectory().value_or("");
    return pathByAppendingComponent(Containment::resolvedPath(modules).value_or(modules), name);
}

}  // namespace

RVGitSubmoduleManager::RVGitSubmoduleManager(std::shared_ptr<RVGitRepository> repository)
    : RVGitRepositoryPart(std::move(repository)) {
    requireParameter(this->repository() != nullptr, "repository");
}

RVGitSubmoduleManager::RVGitSubmoduleManager(std::weak_ptr<RVGitRepository> owner)
    : RVGitRepositoryPart(std::move(owner)) {}

std::shared_ptr<RVGitSubmoduleManager> RVGitSubmoduleManager::managerWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitSubmoduleManager>(std::move(repository));
}

bool RVGitSubmoduleManager::fail(RVGitErrorCode code, const RVUserInfo& userInfo,
                                 RVErrorPlace error) const {
    fillErrorPlace(error, gitErrorWithCode(code, RVGitMakeErrorUserInfo(repository(), userInfo)));
    return false;
}

bool RVGitSubmoduleManager::failToMove(RVGitErrorCode code, const std::string& source,
                                       const std::string& destination, RVErrorPlace error) const {
    return fail(
        code,
        {{RVGitSourceFilePathErrorKey, source}, {RVGitDestinationFilePathErrorKey, destination}},
        error);
}

std::shared_ptr<RVGitSubmodule> RVGitSubmoduleManager::submoduleForPath(const std::string& path,
                                                                        RVErrorPlace error) const {
    return RVGitSubmoduleLoader(repository()).submoduleForPath(path, error);
}

bool RVGitSubmoduleManager::canAddSubmoduleAtPath(const std::string& path, RVErrorPlace error) {
    const Repository repository = this->repository();
    const RVUserInfo userInfo = {{RVGitSubmoduleNameErrorKey, path}};
    const std::string absolutePath = standardizedPath(
        isAbsolutePath(path) ? path : pathByAppendingComponent(repository->path(), path));
    // The top itself is a directory that is not empty.
    if (absolutePath != repository->path() &&
        !Containment(repository).containsWorkingDirectory(absolutePath))
        return fail(RVGitAddSubmodulePathOutsideRepositoryError, userInfo, error);
    if (RVGitSubmoduleContainment::somethingIsAt(absolutePath) &&
        !isEmptyPlainDirectory(absolutePath))
        return fail(RVGitAddSubmodulePathAlreadyExistsError, userInfo, error);
    const auto names = RVGitSubmoduleLoader(repository).allSubmoduleNames(error);
    if (!names)
        return false;
    for (const std::string& name : *names)
        if (isEqualToUnicodeString(name, path))
            return fail(RVGitAddSubmodulePathAlreadyExistsError, userInfo, error);
    return true;
}

bool RVGitSubmoduleManager::removeSubmoduleAtPath(const std::string& path, unsigned options,
                                                  RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const Repository repository = this->repository();
    const auto submodule = submoduleForPath(path, error);
    if (watch.isCancelled(error) || !submodule)
        return false;
    const bool keepsWorkingTree = options & RVGitSubmoduleRemoveOptionKeepWorkingTree;
    const bool losesModifications = keepsWorkingTree || (options & RVGitSubmoduleRemoveOptionForce);
    const bool removesGitDirectory = options & RVGitSubmoduleRemoveOptionRemoveGitDirectory;
    const RVUserInfo userInfo = {{RVGitSubmodulePathErrorKey, submodule->path()}};
    if (submodule->isDirty() && !losesModifications)
        return fail(RVGitRemoveSubmoduleWithLocalModificationsError, userInfo, error);

    const Places places = placesOfSubmodule(*submodule, repository);
    const bool gitDirectoryExists =
        removesGitDirectory && RVGitSubmoduleContainment::somethingIsAt(places.gitDirectory);
    if (!places.workingDirectoryIsContained ||
        (gitDirectoryExists && (!places.gitDirectoryIsContained ||
                                Containment::holdsOtherGitDirectories(places.gitDirectory))) ||
        (removesGitDirectory && !Containment::isSafeName(submodule->name())))
        return fail(RVGitRemoveOperationNotPermittedError, userInfo, error);
    if (!Containment(repository).requirePlainSubmodulesFile(error))
        return false;
    // What ".gitmodules" alone declares may be any directory of the superproject.
    const bool workingDirectoryExists = RVFileManager::isDirectoryAtPath(places.workingDirectory);
    if (submodule->status() == RVGitSubmoduleStatusMissingWorkingTreePath && !losesModifications &&
        workingDirectoryExists && !RVFileManager::isEmptyDirectoryAtPath(places.workingDirectory))
        return fail(RVGitRemoveSubmoduleWithLocalModificationsError, userInfo, error);
    // The list leaves out what ".gitmodules" or the user's configuration says to ignore, and what
    // git had no time to tell where it was cancelled.
    if (places.hasRepository && !losesModifications && workingDirectoryExists) {
        std::optional<RVError> failure;
        const Work work = workInSubmodule(*submodule, RVGitUntrackedFilesModeNo,
                                          RVGitIgnoreSubmodulesModeNone, &failure);
        if (work == Work::Some)
            return fail(RVGitRemoveSubmoduleWithLocalModificationsError, userInfo, error);
        if (failure) {
            fillErrorPlace(error, *std::move(failure));
            return false;
        }
    }
    if (watch.isCancelled(error))
        return false;

    const auto workingTreeManager =
        RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository);
    const std::vector<std::string> pathspecs = {literalPathspec(submodule->path())};
    if (keepsWorkingTree) {
        if (!workingTreeManager->untrackFiles(pathspecs, error))
            return false;
    } else {
        if (workingDirectoryExists &&
            !RVFileManager::removeItemAtPath(places.workingDirectory, error))
            return false;
        if (!workingTreeManager->removeFiles(pathspecs, error))
            return false;
    }
    if (watch.isCancelled(error))
        return false;
    // One in the working tree has gone with it.
    if (removesGitDirectory && RVGitSubmoduleContainment::somethingIsAt(places.gitDirectory) &&
        !RVFileManager::removeItemAtPath(places.gitDirectory, error))
        return false;
    return RVGitSubmoduleConfigManager::defaultManagerWithRepository(repository)
               ->removeConfigSectionForSubmoduleWithName(submodule->name(), error) &&
           !watch.isCancelled(error) &&
           RVGitSubmoduleConfigManager::localConfigManagerWithRepository(repository)
               ->removeConfigSectionForSubmoduleWithName(submodule->name(), error) &&
           !watch.isCancelled(error);
}

bool RVGitSubmoduleManager::moveSubmoduleWithPath(const std::string& path,
                                                  const std::string& toNewPath,
                                                  RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const Repository repository = this->repository();
    const auto submodule = submoduleForPath(path, error);
    if (watch.isCancelled(error) || !submodule)
        return false;
    const Places places = placesOfSubmodule(*submodule, repository);
    const std::string& oldDirectory = places.workingDirectory;
    const std::string newDirectory =
        Helper::absoluteWorkingDirectoryPathForSubmodulePath(toNewPath, repository);
    const std::string configFile = configFileInGitDirectory(places.gitDirectory);
    const bool configExists = RVFileManager::fileExistsAtPath(configFile);
    if (!places.workingDirectoryIsContained || isAbsolutePath(toNewPath) ||
        !Containment(repository).containsWorkingDirectory(newDirectory) ||
        (configExists &&
         (!places.gitDirectoryIsContained || RVFileManager::isSymbolicLinkAtPath(configFile))))
        return failToMove(RVGitMoveFileOutsideRepositoryError, path, toNewPath, error);
    if (oldDirectory == newDirectory)
        return failToMove(RVGitMoveFileSelfTargetError, path, toNewPath, error);
    if (!Containment(repository).requirePlainSubmodulesFile(error) || watch.isCancelled(error))
        return false;

    // Never with anything in it, even if that has just come.
    if (isEmptyPlainDirectory(newDirectory))
        ::rmdir(newDirectory.c_str());
    if (RVFileManager::isDirectoryAtPath(oldDirectory)) {
        ParentDirectories parents(newDirectory);
        if (!moveItem(oldDirectory, newDirectory, error))
            return false;
        parents.keep();
    }
    // A git directory in the working tree has moved with it, and needs no such value.
    if (RVFileManager::fileExistsAtPath(configFile) &&
        !RVGitConfig::configWithFilePath(configFile)
             ->setValue(
                 Helper::relativeWorkingTreePathForSubmoduleWithName(submodule->name(), toNewPath),
                 "core.worktree", error))
        return false;
    if (watch.isCancelled(error) ||
        !RVGitSubmoduleConfigManager::defaultManagerWithRepository(repository)
             ->setPath(toNewPath, submodule->name(), error))
        return false;
    (void)RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository)
        ->stageFiles(literalPathspecs({submodule->path(), toNewPath}));
    return !watch.isCancelled(error);
}

bool RVGitSubmoduleManager::renameSubmoduleWithName(const std::string& name,
                                                    const std::string& toNewName,
                                                    RVErrorPlace error) {
    return renameSubmodule(name, toNewName, false, error);
}

bool RVGitSubmoduleManager::renameSubmoduleKeepingLinksWithName(const std::string& name,
                                                                const std::string& toNewName,
                                                                RVErrorPlace error) {
    return renameSubmodule(name, toNewName, true, error);
}

bool RVGitSubmoduleManager::renameSubmodule(const std::string& name, const std::string& toNewName,
                                            bool keepsLinks, RVErrorPlace error) const {
    const RVGitCancellationWatch watch;
    const Repository repository = this->repository();
    const RVGitSubmoduleLoader loader(repository);
    const auto submodule = loader.submoduleForName(name, error);
    if (watch.isCancelled(error) || !submodule)
        return false;
    const Places places = placesOfSubmodule(*submodule, repository);
    const std::string& oldDirectory = places.gitDirectory;
    const std::string newDirectory =
        Helper::absoluteGitDirectoryPathForSubmoduleName(toNewName, repository);
    const bool directoryExists = RVFileManager::isDirectoryAtPath(oldDirectory);
    if (!Containment::isSafeName(submodule->name()) || !Containment::isSafeName(toNewName) ||
        !Containment(repository).containsGitDirectory(newDirectory) ||
        (directoryExists && (!places.gitDirectoryIsContained ||
                             Containment::holdsOtherGitDirectories(oldDirectory))) ||
        (places.hasRepository && !places.workingDirectoryIsContained))
        return failToMove(RVGitMoveFileOutsideRepositoryError, name, toNewName, error);
    if (!Containment(repository).requirePlainSubmodulesFile(error))
        return false;
    // Git would make one section of both.
    const auto names = loader.allSubmoduleNames(error);
    if (!names)
        return false;
    if (std::find(names->begin(), names->end(), toNewName) != names->end())
        return failToMove(RVGitMoveFileAlreadyExistsError, name, toNewName, error);

    if (watch.isCancelled(error))
        return false;
    // It has been moved where an earlier call failed behind this step; what has not been linked
    // anew then still names the directory of the old name.
    const bool isMoved = Containment::isSameFile(oldDirectory, newDirectory);
    const std::string resolvedOldDirectory =
        isMoved ? resolvedGitDirectory(name, repository)
                : Containment::resolvedPath(oldDirectory)
                      .value_or(resolvedGitDirectory(name, repository));
    if (directoryExists && !isMoved) {
        ParentDirectories parents(newDirectory);
        if (!moveItem(oldDirectory, newDirectory, error))
            return false;
        parents.keep();
    }
    if (keepsLinks) {
        if (!setLinks(newDirectory, places, submodule->path(), repository, error))
            return false;
        const auto resolved = Containment::resolvedPath(newDirectory);
        if (resolved && !relinkNestedSubmodules(resolvedOldDirectory, *resolved, repository, error))
            return false;
    } else if (places.hasRepository) {
        (void)RVGitRepository::updateGitDirectoryFileForRepositoryAtPath(
            places.workingDirectory,
            Helper::relativeGitDirectoryPathForSubmoduleWithName(toNewName, submodule->path()));
    }
    return !watch.isCancelled(error) &&
           RVGitSubmoduleConfigManager::defaultManagerWithRepository(repository)
               ->renameConfigSectionForSubmoduleWithName(submodule->name(), toNewName, error) &&
           !watch.isCancelled(error) &&
           RVGitSubmoduleConfigManager::localConfigManagerWithRepository(repository)
               ->renameConfigSectionForSubmoduleWithName(submodule->name(), toNewName, error) &&
           !watch.isCancelled(error);
}

bool RVGitSubmoduleManager::relocateSubmoduleWithPath(const std::string& path,
                                                      const std::string& toNewPath,
                                                      RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const Repository repository = this->repository();
    const auto submodule = submoduleForPath(path, error);
    if (watch.isCancelled(error) || !submodule)
        return false;
    const Places places = placesOfSubmodule(*submodule, repository);
    const std::string newDirectory =
        Helper::absoluteWorkingDirectoryPathForSubmodulePath(toNewPath, repository);
    if (!places.workingDirectoryIsContained || isAbsolutePath(toNewPath) ||
        !Containment(repository).containsWorkingDirectory(newDirectory) ||
        (places.hasRepository && !places.gitDirectoryIsContained))
        return failToMove(RVGitMoveFileOutsideRepositoryError, path, toNewPath, error);
    if (places.workingDirectory == newDirectory)
        return failToMove(RVGitMoveFileSelfTargetError, path, toNewPath, error);
    if (!Containment(repository).requirePlainSubmodulesFile(error) || watch.isCancelled(error))
        return false;
    // Git would move it into a directory that is there.
    const bool makesRoom = isEmptyPlainDirectory(newDirectory);
    if (RVGitSubmoduleContainment::somethingIsAt(newDirectory) &&
        (!makesRoom || ::rmdir(newDirectory.c_str()) != 0))
        return failToMove(RVGitMoveFileAlreadyExistsError, path, toNewPath, error);
    ParentDirectories parents(newDirectory);
    if (RVGitMoveCommand::gitMoveCommandWithRepository(repository, submodule->path(), toNewPath)
            ->run(error)) {
        parents.keep();
        return !watch.isCancelled(error);
    }
    if (makesRoom)
        ::mkdir(newDirectory.c_str(), 0777);
    return false;
}

bool RVGitSubmoduleManager::submoduleContainsUncommittedWork(const std::string& atPath,
                                                             RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const Repository repository = this->repository();
    std::optional<RVError> failure;
    const auto submodule = submoduleForPath(atPath, &failure);
    if (watch.isCancelled(error))
        return true;
    if (!submodule) {
        const bool failed = failure.has_value();
        if (failed)
            fillErrorPlace(error, *std::move(failure));
        else
            clearErrorPlace(error);
        return failed;
    }
    const Places places = placesOfSubmodule(*submodule, repository);
    if (!places.workingDirectoryIsContained) {
        (void)fail(RVGitRemoveOperationNotPermittedError,
                   {{RVGitSubmodulePathErrorKey, submodule->path()}}, error);
        return true;
    }
    if (RVFileManager::isSymbolicLinkAtPath(places.workingDirectory) ||
        !RVFileManager::isDirectoryAtPath(places.workingDirectory))
        return RVGitSubmoduleContainment::somethingIsAt(places.workingDirectory);
    if (!places.hasRepository)
        return !RVFileManager::isEmptyDirectoryAtPath(places.workingDirectory, error);
    const Work work = workInSubmodule(*submodule, RVGitUntrackedFilesModeNormal,
                                      RVGitIgnoreSubmodulesModeNone, &failure);
    if (failure)
        fillErrorPlace(error, *std::move(failure));
    return work != Work::None;
}
