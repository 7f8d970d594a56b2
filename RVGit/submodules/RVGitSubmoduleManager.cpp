#include "RVGit/submodules/RVGitSubmoduleManager.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleCommand.h"
#include "RVGit/submodules/RVGitSubmoduleConfigManager.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmodulePathspec.h"
#include "RVGit/submodules/RVGitSubmodulePlaces.h"
#include "RVGit/worktree/RVGitStatusCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeManager.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;
using Containment = RVGitSubmoduleContainment;

enum class Work { None, Some, Unknown };

/// Whether there are changes in the submodule's working tree, asked of git in the submodule itself,
/// where no configuration of the superproject hides them. Unknown is what a cancelled command and
/// one that fails, which leaves its error, have found out.
Work workInSubmodule(const Repository& submodule, RVGitUntrackedFilesMode untrackedFiles,
                     RVErrorPlace error) {
    const auto command =
        RVGitStatusCommand::gitStatusCommandWithRepository(submodule, std::nullopt);
    command->setUntrackedFilesMode(untrackedFiles);
    command->setIgnoreSubmodulesMode(RVGitIgnoreSubmodulesModeNone);
    if (!command->run(error))
        return Work::Unknown;
    if (!command->changedFiles().empty())
        return Work::Some;
    return command->isCancelled() ? Work::Unknown : Work::None;
}

// Whether the git directory of the repository, or of a submodule in it at any depth, would go with
// the working tree. True, too, where the index that names these cannot be read.
bool embedsGitDirectory(const std::string& directory, const Repository& repository) {
    // Of a link, the link alone goes.
    if (RVFileManager::isSymbolicLinkAtPath(directory))
        return false;
    const std::string gitDirectory = pathByAppendingComponent(directory, ".git");
    // One that is damaged, too.
    if (RVFileManager::isDirectoryAtPath(gitDirectory) &&
        !RVFileManager::isSymbolicLinkAtPath(gitDirectory) &&
        !RVFileManager::isEmptyDirectoryAtPath(gitDirectory))
        return true;
    if (!repository)
        return false;
    const auto entries = RVGitSubmoduleLoader(repository).submoduleIndexEntriesBySubmodulePath();
    return !entries || std::any_of(entries->begin(), entries->end(), [&](const auto& entry) {
        const std::string place = pathByAppendingComponent(directory, entry.first);
        return embedsGitDirectory(place, repositoryInDirectory(place));
    });
}

// Moves such git directories to where git keeps them.
bool absorbGitDirectories(const std::string& path, const Repository& repository,
                          RVErrorPlace error) {
    const auto command = std::make_shared<RVGitSubmoduleCommand>(repository);
    command->setGitSubCommand("absorbgitdirs");
    command->setFilePaths({{path}});
    return command->run(error);
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
        !Containment::isEmptyPlainDirectory(absolutePath))
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

    const RVGitSubmodulePlaces places = placesOfSubmodule(*submodule, repository);
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
    if (places.ownRepository && !losesModifications) {
        std::optional<RVError> failure;
        const Work work =
            workInSubmodule(places.ownRepository, RVGitUntrackedFilesModeNo, &failure);
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
        if (!removesGitDirectory &&
            embedsGitDirectory(places.workingDirectory, places.ownRepository) &&
            !absorbGitDirectories(submodule->path(), repository, error))
            return false;
        if (watch.isCancelled(error))
            return false;
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
    const RVGitSubmodulePlaces places = placesOfSubmodule(*submodule, repository);
    if (!places.workingDirectoryIsContained) {
        (void)fail(RVGitRemoveOperationNotPermittedError,
                   {{RVGitSubmodulePathErrorKey, submodule->path()}}, error);
        return true;
    }
    if (RVFileManager::isSymbolicLinkAtPath(places.workingDirectory) ||
        !RVFileManager::isDirectoryAtPath(places.workingDirectory))
        return RVGitSubmoduleContainment::somethingIsAt(places.workingDirectory);
    if (!places.ownRepository)
        return !RVFileManager::isEmptyDirectoryAtPath(places.workingDirectory, error);
    const Work work =
        workInSubmodule(places.ownRepository, RVGitUntrackedFilesModeNormal, &failure);
    if (failure)
        fillErrorPlace(error, *std::move(failure));
    return work != Work::None;
}
