// The part of RVGitSubmoduleManager that moves and renames submodules.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVSystem.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"
#include "RVGit/submodules/RVGitSubmoduleHelper.h"
#include "RVGit/submodules/RVGitSubmoduleLinks.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"
#include "RVGit/submodules/RVGitSubmodulePathspec.h"
#include "RVGit/submodules/RVGitSubmodulePlaces.h"
#include "RVGit/worktree/RVGitMoveCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;
using Containment = RVGitSubmoduleContainment;
using Helper = RVGitSubmoduleHelper;

// Nothing is ever replaced.
bool moveItem(const std::string& path, const std::string& newPath, RVErrorPlace error) {
    const int errorNumber = RVSystem::renameWithoutReplacing(path.c_str(), newPath.c_str());
    if (errorNumber == 0)
        return true;
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

std::string configFileInGitDirectory(const std::string& gitDirectory) {
    return pathByAppendingComponent(gitDirectory, "config");
}

// Has the git directory and the working tree refer to each other, as far as they did when it was
// still in the old one.
bool setLinks(const std::string& oldGitDirectory, const std::string& gitDirectory,
              const RVGitSubmodulePlaces& places, const std::string& path,
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
    const bool isLinked = places.hasRepository || places.linksToGitDirectory
                              ? !RVFileManager::isDirectoryAtPath(
                                    pathByAppendingComponent(places.workingDirectory, ".git"))
                              : places.workingDirectoryIsContained &&
                                    !RVFileManager::isSymbolicLinkAtPath(places.workingDirectory) &&
                                    namesGitDirectory(workingTree.string(), oldGitDirectory);
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

bool RVGitSubmoduleManager::failToMove(RVGitErrorCode code, const std::string& source,
                                       const std::string& destination, RVErrorPlace error) const {
    return fail(
        code,
        {{RVGitSourceFilePathErrorKey, source}, {RVGitDestinationFilePathErrorKey, destination}},
        error);
}

bool RVGitSubmoduleManager::moveSubmoduleWithPath(const std::string& path,
                                                  const std::string& toNewPath,
                                                  RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const Repository repository = this->repository();
    const auto submodule = submoduleForPath(path, error);
    if (watch.isCancelled(error) || !submodule)
        return false;
    const RVGitSubmodulePlaces places = placesOfSubmodule(*submodule, repository);
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
    if (Containment::isEmptyPlainDirectory(newDirectory))
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
    const RVGitSubmodulePlaces places = placesOfSubmodule(*submodule, repository);
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
        if (!setLinks(resolvedOldDirectory, newDirectory, places, submodule->path(), repository,
                      error))
            return false;
        const auto resolved = Containment::resolvedPath(newDirectory);
        if (resolved && !relinkNestedSubmodules(resolvedOldDirectory, *resolved, repository, error))
            return false;
    } else if (places.hasRepository || places.linksToGitDirectory) {
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
    const RVGitSubmodulePlaces places = placesOfSubmodule(*submodule, repository);
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
    const bool makesRoom = Containment::isEmptyPlainDirectory(newDirectory);
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
