#include "RVGit/submodules/RVGitSubmodulePlaces.h"

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"
#include "RVGit/submodules/RVGitSubmoduleHelper.h"

using Containment = RVGitSubmoduleContainment;
using Helper = RVGitSubmoduleHelper;

std::shared_ptr<RVGitRepository> rvgit::repositoryInDirectory(
    const std::string& directory, std::shared_ptr<RVGitRepository> opened) {
    if (!Containment::somethingIsAt(pathByAppendingComponent(directory, ".git")))
        return nullptr;
    if (!opened)
        opened = RVGitRepository::repositoryWithPath(directory);
    return opened->isValid() && Containment::isSameFile(opened->path(), directory) ? opened
                                                                                   : nullptr;
}

RVGitSubmodulePlaces rvgit::placesOfSubmodule(RVGitSubmodule& submodule,
                                              const std::shared_ptr<RVGitRepository>& repository) {
    const Containment containment(repository);
    RVGitSubmodulePlaces places;
    places.workingDirectory =
        Helper::absoluteWorkingDirectoryPathForSubmodulePath(submodule.path(), repository);
    places.gitDirectory =
        Helper::absoluteGitDirectoryPathForSubmoduleName(submodule.name(), repository);
    places.workingDirectoryIsContained =
        containment.containsWorkingDirectory(places.workingDirectory) &&
        !submodule.path().starts_with('/');
    const auto opened = submodule.isValid() ? submodule.submoduleRepository() : nullptr;
    if (places.workingDirectoryIsContained &&
        !RVFileManager::isSymbolicLinkAtPath(places.workingDirectory))
        places.ownRepository = repositoryInDirectory(places.workingDirectory, opened);

    const std::string foundGitDirectory =
        Helper::absoluteGitDirectoryPathForSubmodule(submodule, repository);
    places.hasRepository =
        opened && opened->isValid() &&
        !Containment::isSameFile(foundGitDirectory, repository->gitDirectoryPath().value_or(""));
    if (!places.hasRepository) {
        places.gitDirectoryIsContained = Containment::isSafeName(submodule.name()) &&
                                         containment.containsGitDirectory(places.gitDirectory);
        places.linksToGitDirectory =
            places.ownRepository &&
            Containment::isSameFile(places.ownRepository->gitDirectoryPath().value_or(""),
                                    places.gitDirectory);
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
