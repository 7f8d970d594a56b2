#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <future>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/lfs/RVGitLFSCommand.h"
#include "RVGit/lfs/RVGitLFSManager.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;

void require(bool done, const std::optional<RVError>& error) {
    if (!done)
        throw Failure(error);
}

void requireNoMore(Arguments& arguments, const std::string& action) {
    if (const auto word = arguments.nextOperand("lfs " + action))
        throw UsageError("lfs " + action + " takes no " + *word);
}

std::string pathOfFile(const Repository& repository, const std::string& path) {
    return isAbsolutePath(path) ? path : pathByAppendingComponent(repository->path(), path);
}

std::shared_ptr<RVGitRemote> remoteNamed(const Repository& repository, const std::string& name) {
    std::optional<RVError> error;
    auto remote = RVGitRemote::remoteForName(name, repository, &error);
    if (error)
        throw Failure(error);
    if (!remote)
        throw UsageError("there is no remote " + printable(name));
    return remote;
}

void install(RVGitLFSManager& manager, Arguments& arguments) {
    std::int64_t mode = RVGitLFSInstallationModeGlobal;
    while (const auto word = arguments.next()) {
        if (*word == "--local")
            mode = RVGitLFSInstallationModeLocal;
        else if (*word == "--system")
            mode = RVGitLFSInstallationModeSystem;
        else
            throw UsageError("lfs install takes no " + *word);
    }
    std::optional<RVError> error;
    require(manager.installGitLFSWithMode(mode, std::nullopt, &error), error);
}

void track(RVGitLFSManager& manager, Arguments& arguments, Output& output) {
    const auto patterns = arguments.operands("lfs track");
    std::optional<RVError> error;
    if (!patterns.empty())
        return require(manager.addTrackedFilePatterns(patterns, std::nullopt, &error), error);
    const auto entries = manager.allTrackingEntries(std::nullopt, &error);
    require(entries.has_value(), error);
    for (const auto& entry : *entries)
        output << printable(entry->pattern()) << "  " << printable(entry->fileName()) << "\n";
}

void untrack(RVGitLFSManager& manager, Arguments& arguments) {
    const auto patterns = arguments.operands("lfs untrack");
    if (patterns.empty())
        throw UsageError("lfs untrack needs a pattern");
    std::optional<RVError> error;
    require(manager.removeTrackedFilePatterns(patterns, std::nullopt, &error), error);
}

void listFiles(RVGitLFSManager& manager, Arguments& arguments, Output& output) {
    const auto revision = arguments.nextOperand("lfs ls-files");
    requireNoMore(arguments, "ls-files");
    std::optional<RVError> error;
    const auto files = revision
                           ? manager.allTrackedFilesForRevision(*revision, std::nullopt, &error)
                           : manager.allTrackedFiles(std::nullopt, &error);
    if (error)
        throw Failure(error);
    for (const std::string& file : files.value_or(std::vector<std::string>()))
        output << printable(file) << "\n";
}

void push(const Repository& repository, RVGitLFSManager& manager, Arguments& arguments) {
    const auto remote =
        remoteNamed(repository, arguments.nextOperand("lfs push").value_or(RVGitOriginRemoteName));
    RVGitLFSManager::RefSpecs refSpecs;
    for (const std::string& ref : arguments.operands("lfs push"))
        refSpecs.push_back(RVGitRefSpec::refSpecWithLocalRefName(ref));
    if (refSpecs.empty())
        refSpecs.push_back(
            RVGitRefSpec::refSpecWithLocalRefName(repository->HEADRefName().value_or("HEAD")));
    std::optional<RVError> error;
    require(manager.pushRemote(remote, refSpecs, &error), error);
}

// By the form with a handler, which has an error where the other one raises something.
void printPointer(const Repository& repository, RVGitLFSManager& manager, Arguments& arguments,
                  Output& output) {
    const std::string path = pathOfFile(repository, arguments.operandOf("lfs pointer"));
    requireNoMore(arguments, "pointer");
    // The library would only say that git could not be launched.
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0 || ::access(path.c_str(), R_OK) != 0)
        throw Failure(posixError(errno, path));
    if (!S_ISREG(status.st_mode))
        throw Failure(posixError(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, path),
                      "It is no plain file");
    std::promise<std::pair<std::shared_ptr<RVGitLFSPointer>, std::optional<RVError>>> promise;
    (void)manager.createPointerFromFileAtPath(path, std::nullopt,
                                              [&](const auto& pointer, const auto& error) {
                                                  promise.set_value({pointer, error});
                                              });
    const auto [pointer, error] = promise.get_future().get();
    if (!pointer && error && status.st_size == 0)
        throw Failure(*error, "An empty file has no pointer: git keeps it as it is.");
    require(pointer != nullptr, error);
    output << pointer->stringRepresentation();
}

void printContents(const Repository& repository, RVGitLFSManager& manager, Arguments& arguments) {
    const std::string path = pathOfFile(repository, arguments.operandOf("lfs smudge"));
    requireNoMore(arguments, "smudge");
    std::optional<RVError> error;
    const auto text = RVFileManager::contentsOfFileAtPath(path, &error);
    require(text.has_value(), error);
    const auto pointer = manager.pointerFromData(*text);
    if (!pointer)
        throw UsageError(printable(path) + " is no LFS pointer");
    const auto data = manager.createFileDataFromPointer(pointer, std::nullopt, &error);
    require(data != nullptr, error);
    // As large as it may be: not by way of the collected output. That it could not be written is
    // seen at the end, with all that is written then.
    endWhenInterrupted();
    std::fwrite(data->view().data(), 1, data->size(), stdout);
}

}  // namespace

void runLFS(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
            Output& output) {
    const std::string action = arguments.next().value_or("");
    // Kept for whoever interrupts.
    const auto manager = std::make_shared<RVGitLFSManager>(repository);
    whenInterrupted([manager] { manager->commandQueue().cancelAllOperations(); });
    std::optional<RVError> error;
    if (action == "install")
        return install(*manager, arguments);
    if (action == "track")
        return track(*manager, arguments, output);
    if (action == "untrack")
        return untrack(*manager, arguments);
    if (action == "ls-files")
        return listFiles(*manager, arguments, output);
    if (action == "push")
        return push(repository, *manager, arguments);
    if (action == "pointer")
        return printPointer(repository, *manager, arguments, output);
    if (action == "smudge")
        return printContents(repository, *manager, arguments);
    if (action == "pull") {
        const auto remote = remoteNamed(
            repository, arguments.nextOperand("lfs pull").value_or(RVGitOriginRemoteName));
        requireNoMore(arguments, action);
        return require(manager->pullRemote(remote, std::nullopt, &error), error);
    }
    if (action != "fetch" && action != "checkout" && action != "prune")
        throw UsageError((action.empty() ? "lfs needs to be told what to do"
                                         : "lfs has no " + printable(action)) +
                         "; see rvgit help lfs");
    requireNoMore(arguments, action);
    if (action == "fetch")
        return require(manager->fetchRemote(nullptr, std::nullopt, &error), error);
    if (action == "checkout")
        return require(manager->checkout(std::nullopt, &error), error);
    require(manager->prune(std::nullopt, &error), error);
}
