// The part of RVGitSubmoduleManager that has git change submodules: adding, updating, initializing
// and synchronizing them.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmoduleConfig.h"
#include "RVGit/submodules/RVGitSubmoduleContainment.h"
#include "RVGit/submodules/RVGitSubmoduleHelper.h"
#include "RVGit/submodules/RVGitSubmoduleLoader.h"
#include "RVGit/submodules/RVGitSubmoduleManager.h"
#include "RVGit/submodules/RVGitSubmodulePlaces.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitIndexEntry.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;
using Containment = RVGitSubmoduleContainment;
using Helper = RVGitSubmoduleHelper;

std::string checkedOutHash(RVGitRepository& repository) {
    const std::string ref = repository.HEADRefName().value_or("");
    return ref.starts_with("refs/") ? repository.HEADRevision().value_or("") : ref;
}

// Whether ".gitmodules" has the section, and as it is staged has not.
bool isSectionUnstaged(const std::string& name, const RVGitSubmoduleLoader& loader,
                       const Repository& repository) {
    const std::string file = ".gitmodules";
    if (!repository->index()->indexEntryForFilePath(file))
        return true;
    const std::string escapedName = stringByReplacingOccurrences(
        stringByReplacingOccurrences(name, "\\", "\\\\"), "\"", "\\\"");
    const auto diffs = loader.loadDiffsForFilePaths({file});
    return diffs && !diffs->empty() &&
           diffs->front()->rawDiff().value_or("").find("\n+[submodule \"" + escapedName + "\"]") !=
               std::string::npos;
}

// Whether an earlier add of the same came as far as the index and failed behind it: git would take
// what it has left for another submodule.
bool isHalfAdded(const Repository& repository, const std::string& URL, const std::string& path) {
    const RVGitSubmoduleLoader loader(repository);
    const auto entries = loader.submoduleIndexEntriesBySubmodulePath();
    const auto configs = loader.submoduleConfigsBySubmodulePath();
    const auto localConfigs = loader.localSubmoduleConfigsBySubmoduleName();
    if (!entries || !configs || !localConfigs)
        return false;
    const auto entry = entries->find(path);
    if (entry == entries->end())
        return false;
    // Where the recorded commit is the one that is checked out, it is not changed.
    const auto opened = RVGitRepository::repositoryWithPath(
        Helper::absoluteWorkingDirectoryPathForSubmodulePath(path, repository));
    if (!opened->isValid() || checkedOutHash(*opened) != entry->second->objectHash())
        return false;
    const auto config = configs->find(path);
    if (config == configs->end() || !config->second->URL())
        return true;
    if (config->second->URL() != URL)
        return false;
    const auto localConfig = localConfigs->find(config->second->name());
    return localConfig == localConfigs->end() || !localConfig->second->URL() ||
           isSectionUnstaged(config->second->name(), loader, repository);
}

bool isPlainDirectory(const std::string& path) {
    return RVFileManager::isDirectoryAtPath(path) && !RVFileManager::isSymbolicLinkAtPath(path);
}

// A directory with files, but without a repository, where a submodule belongs.
bool holdsFilesAlone(const std::string& directory) {
    return isPlainDirectory(directory) && !RVFileManager::isEmptyDirectoryAtPath(directory) &&
           !Containment::somethingIsAt(pathByAppendingComponent(directory, ".git"));
}

// Whether something would have to go for a file to be at the path.
bool isInTheWay(const std::string& directory, const std::string& path) {
    std::string place = directory;
    struct stat status;
    for (const std::string& part : componentsSeparatedByString(path, "/")) {
        if (::lstat(place.c_str(), &status) != 0)
            return false;
        if (!S_ISDIR(status.st_mode))
            return true;
        place = pathByAppendingComponent(place, part);
    }
    return Containment::somethingIsAt(place);
}

// Whether checking the commit out into the directory would replace a file that is another one; true
// where that cannot be found out.
bool wouldReplaceFiles(const std::string& directory, const std::string& gitDirectory,
                       const std::string& commitHash) {
    const auto command = RVGitCommand::gitCommandWithRepositoryPath(directory);
    command->setGitDirectoryPath(gitDirectory);
    command->setWorkingTreeDirectoryPath(directory);
    command->setGitCommand("diff");
    command->addGitCommandOptions(
        {"--name-only", "-z", "--no-renames", "--no-ext-diff", "--ignore-submodules"});
    command->addGitCommandRevision(commitHash);
    command->addGitCommandArgument("--");
    command->setValueForEnvironmentVariable("0", "GIT_OPTIONAL_LOCKS");
    if (!command->run())
        return true;
    const auto paths =
        componentsSeparatedByStringSequence(command->standardOutputData(), std::string(1, '\0'));
    return std::any_of(paths.begin(), paths.end(), [&](const std::string& path) {
        return !path.empty() && isInTheWay(directory, path);
    });
}

}  // namespace

RVGitSubmoduleManager::IndexEntries RVGitSubmoduleManager::submoduleIndexEntries() const {
    return RVGitSubmoduleLoader(repository()).submoduleIndexEntriesBySubmodulePath();
}

bool RVGitSubmoduleManager::requireContainedPaths(
    const std::optional<std::vector<std::string>>& paths, const IndexEntries& entries,
    RVErrorPlace error) const {
    const Repository repository = this->repository();
    std::vector<std::string> checkedPaths = paths.value_or(std::vector<std::string>());
    if (!paths && entries)
        for (const auto& entry : *entries)
            checkedPaths.push_back(entry.first);
    for (const std::string& path : checkedPaths)
        if (!Containment(repository).containsWorkingDirectory(path))
            return fail(RVGitAddSubmodulePathOutsideRepositoryError,
                        {{RVGitSubmoduleNameErrorKey, path}}, error);
    return true;
}

bool RVGitSubmoduleManager::addSubmoduleWithURL(const std::string& URL, const std::string& atPath,
                                                unsigned options, RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    const Repository repository = this->repository();
    if (!requireContainedPaths({{atPath}}, std::nullopt, error) ||
        !Containment(repository).requirePlainSubmodulesFile(error) || watch.isCancelled(error))
        return false;
    const auto add = [&](unsigned addOptions, RVErrorPlace place) {
        return RVGitSubmoduleCommand::gitSubmoduleAddCommandWithRepository(repository, atPath, URL,
                                                                           addOptions)
            ->run(place);
    };
    // Git refuses even an empty directory.
    const std::string directory =
        Helper::absoluteWorkingDirectoryPathForSubmodulePath(atPath, repository);
    const bool makesRoom = isPlainDirectory(directory) &&
                           RVFileManager::isEmptyDirectoryAtPath(directory) &&
                           ::rmdir(directory.c_str()) == 0;
    std::optional<RVError> failure;
    if (add(options, &failure))
        return true;
    if (makesRoom)
        ::mkdir(directory.c_str(), 0777);
    if (failure && failure->code() == RVGitAddSubmodulePathAlreadyExistsError &&
        isHalfAdded(repository, URL, atPath))
        return !watch.isCancelled(error) && add(options | RVGitSubmoduleAddOptionForce, error);
    if (failure)
        fillErrorPlace(error, *std::move(failure));
    return false;
}

bool RVGitSubmoduleManager::requireReplaceableFiles(
    const std::optional<std::vector<std::string>>& paths, const IndexEntries& entries,
    unsigned options, RVErrorPlace error) const {
    const Repository repository = this->repository();
    const RVGitSubmoduleLoader loader(repository);
    const auto absolutePath = [&](const std::string& path) {
        return standardizedPath(
            isAbsolutePath(path) ? path : pathByAppendingComponent(repository->path(), path));
    };
    const auto isAskedFor = [&](const std::string& directory) {
        return !paths || std::any_of(paths->begin(), paths->end(), [&](const std::string& path) {
            const std::string place = absolutePath(path);
            return directory == place || directory.starts_with(place + "/");
        });
    };
    if (!entries)
        return true;
    // Where one of these cannot be read, it is git's turn to say so.
    std::optional<RVGitSubmoduleLoader::Configs> configs;
    std::optional<RVGitSubmoduleLoader::Configs> localConfigs;
    for (const auto& [path, entry] : *entries) {
        const std::string directory = absolutePath(path);
        if (!isAskedFor(directory))
            continue;
        // Through a link git does not go.
        if ((options & RVGitSubmoduleUpdateOptionRecursive) && isPlainDirectory(directory) &&
            RVFileManager::fileExistsAtPath(pathByAppendingComponent(directory, ".gitmodules"))) {
            if (const auto opened = repositoryInDirectory(directory)) {
                const RVGitSubmoduleManager nested(opened);
                if (!nested.requireReplaceableFiles(std::nullopt, nested.submoduleIndexEntries(),
                                                    options, error))
                    return false;
            }
        }
        if (!holdsFilesAlone(directory))
            continue;
        if (!configs)
            configs = loader.submoduleConfigsBySubmodulePath();
        if (!localConfigs)
            localConfigs = loader.localSubmoduleConfigsBySubmoduleName();
        if (!configs || !localConfigs)
            return true;
        const auto config = configs->find(path);
        if (config == configs->end())
            continue;
        const std::string& name = config->second->name();
        const auto localConfig = localConfigs->find(name);
        const bool isInitialized =
            localConfig != localConfigs->end() &&
            (localConfig->second->URL() || localConfig->second->configValueForKey("active"));
        const std::string gitDirectory =
            Helper::absoluteGitDirectoryPathForSubmoduleName(name, repository);
        // Without a git directory git clones, and refuses a directory that is not empty.
        if ((isInitialized || (options & RVGitSubmoduleUpdateOptionInitialize)) &&
            Containment::isSafeName(name) && RVFileManager::isDirectoryAtPath(gitDirectory) &&
            wouldReplaceFiles(directory, gitDirectory, entry->objectHash().value_or("")))
            return fail(RVGitAddSubmodulePathAlreadyExistsError,
                        {{RVGitSubmodulePathErrorKey, path}}, error);
    }
    return true;
}

bool RVGitSubmoduleManager::updateSubmodules(const std::optional<std::vector<std::string>>& paths,
                                             unsigned options, RVErrorPlace error) const {
    // Without any path git would take them all.
    if (paths && paths->empty())
        return true;
    const RVGitCancellationWatch watch;
    const bool mayReplaceFiles = options & RVGitSubmoduleUpdateOptionForce;
    const IndexEntries entries = paths && mayReplaceFiles ? std::nullopt : submoduleIndexEntries();
    return requireContainedPaths(paths, entries, error) &&
           (mayReplaceFiles || requireReplaceableFiles(paths, entries, options, error)) &&
           !watch.isCancelled(error) &&
           RVGitSubmoduleCommand::gitSubmoduleUpdateCommandWithRepository(repository(), paths,
                                                                          options)
               ->run(error);
}

bool RVGitSubmoduleManager::initSubmodules(const std::optional<std::vector<std::string>>& paths,
                                           RVErrorPlace error) const {
    if (paths && paths->empty())
        return true;
    return RVGitSubmoduleCommand::gitSubmoduleInitCommandWithRepository(repository(), paths)
        ->run(error);
}

bool RVGitSubmoduleManager::synchronizeURLs(const std::optional<std::vector<std::string>>& paths,
                                            RVErrorPlace error) const {
    const RVGitCancellationWatch watch;
    return requireContainedPaths(paths, paths ? std::nullopt : submoduleIndexEntries(), error) &&
           !watch.isCancelled(error) &&
           RVGitSubmoduleCommand::gitSubmoduleSyncCommandWithRepository(repository(), paths)
               ->run(error);
}

bool RVGitSubmoduleManager::updateAllSubmodulesWithOptions(unsigned options, RVErrorPlace error) {
    return updateSubmodules(std::nullopt, options, error);
}

bool RVGitSubmoduleManager::updateSubmoduleAtPath(const std::string& path, unsigned options,
                                                  RVErrorPlace error) {
    return updateSubmodules({{path}}, options, error);
}

bool RVGitSubmoduleManager::updateSubmoduleAtPaths(const std::vector<std::string>& paths,
                                                   unsigned options, RVErrorPlace error) {
    return updateSubmodules(paths, options, error);
}

bool RVGitSubmoduleManager::initAllSubmodules(RVErrorPlace error) {
    return initSubmodules(std::nullopt, error);
}

bool RVGitSubmoduleManager::initSubmoduleAtPath(const std::string& path, RVErrorPlace error) {
    return initSubmodules({{path}}, error);
}

bool RVGitSubmoduleManager::initSubmodulesAtPaths(const std::vector<std::string>& paths,
                                                  RVErrorPlace error) {
    return initSubmodules(paths, error);
}

bool RVGitSubmoduleManager::synchronizeAllSubmoduleURLs(RVErrorPlace error) {
    return synchronizeURLs(std::nullopt, error);
}

bool RVGitSubmoduleManager::synchronizeURLForSubmoduleAtPath(const std::string& path,
                                                             RVErrorPlace error) {
    return synchronizeURLs({{path}}, error);
}
