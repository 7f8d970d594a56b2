#include <cerrno>
#include <filesystem>

#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitInitCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/svn/RVGitSVNCommand.h"
#include "client/Commands.h"
#include "client/TransferProgress.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;

void run(RVGitCommand& command) {
    std::optional<RVError> error;
    bool done = false;
    {
        const TransferProgress progress(command);
        done = command.run(&error);
    }
    if (!done && error)
        throw Failure(error);
}

std::string workingDirectory() {
    std::error_code ignored;
    return std::filesystem::current_path(ignored).string();
}

Repository repositoryHere() {
    auto repository = RVGitRepository::repositoryWithPath(workingDirectory());
    if (!repository->isValid())
        throw Failure(gitErrorWithCode(RVGitNoGitRepoError,
                                       {{RVGitRepositoryPathErrorKey, workingDirectory()}}));
    return repository;
}

/// The first one, unless it is named.
std::shared_ptr<RVGitRemote> remoteFor(const Repository& repository,
                                       const std::optional<std::string>& name) {
    std::optional<RVError> error;
    const auto remotes = RVGitRemote::allRemotesForRepository(repository, &error);
    if (!remotes)
        throw Failure(error);
    for (const auto& remote : *remotes)
        if (remote->isSVNRemote() && (!name || remote->name() == *name))
            return remote;
    throw UsageError(name ? "there is no Subversion remote " + printable(*name)
                          : "there is no Subversion remote");
}

// git svn clone takes one of them alone.
void cloneWithSeveralTrunks(const std::string& address, const std::string& path,
                            const RVOptions& options) {
    if (RVFileManager::fileExistsAtPath(path) && !RVFileManager::isEmptyDirectoryAtPath(path))
        throw Failure(posixError(ENOTEMPTY, path));
    run(*RVGitInitCommand::gitInitCommandWithPath(path, std::nullopt));
    const auto repository = RVGitRepository::repositoryWithPath(path);
    std::optional<RVError> error;
    const auto remote =
        RVGitRemote::createSVNRemoteWithName("svn", address, repository, options, &error);
    if (!remote)
        throw Failure(error);
    run(*RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository, remote));
}

void clone(Arguments& arguments, Output& output) {
    RVOptions options;
    const auto add = [&](const char* key, const std::string& value) {
        RVValue::StringList list;
        if (const auto found = options.find(key); found != options.end())
            list = *found->second.stringList();
        list.push_back(value);
        options.insert_or_assign(key, std::move(list));
    };
    std::vector<std::string> words;
    while (const auto word = arguments.next()) {
        if (*word == "--stdlayout")
            options.insert_or_assign(RVGitSVNOptionStandardDirectoryLayout, true);
        else if (*word == "--trunk")
            add(RVGitSVNOptionTrunkDirectories, arguments.valueOf(*word));
        else if (*word == "--branches")
            add(RVGitSVNOptionBranchesDirectories, arguments.valueOf(*word));
        else if (*word == "--tags")
            add(RVGitSVNOptionTagsDirectories, arguments.valueOf(*word));
        else if (word->starts_with('-') || words.size() == 2)
            throw UsageError("svn clone takes no " + *word);
        else
            words.push_back(*word);
    }
    if (words.empty())
        throw UsageError("svn clone needs an address");
    const std::string name = words.size() == 2 ? words[1] : lastPathComponent(words[0]);
    if (words.size() == 1 && (name.empty() || name == "/" || name == "." || name == ".."))
        throw UsageError("svn clone needs a path, since the address holds no name");
    const std::string path =
        isAbsolutePath(name) ? name : pathByAppendingComponent(workingDirectory(), name);
    const auto trunks = options.find(RVGitSVNOptionTrunkDirectories);
    const bool hasSeveralTrunks =
        trunks != options.end() && trunks->second.stringList()->size() +
                                           options.contains(RVGitSVNOptionStandardDirectoryLayout) >
                                       1;
    if (hasSeveralTrunks)
        cloneWithSeveralTrunks(words[0], path, options);
    else
        run(*RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(words[0], path, options));
    output << "Cloned into " << printable(name) << "\n";
}

template <typename Command>
void copy(Command make, Arguments& arguments, const std::string& action) {
    std::vector<std::string> words;
    std::optional<std::string> message;
    std::optional<std::string> destination;
    bool createsParents = false;
    while (const auto word = arguments.next()) {
        if (*word == "-m")
            message = arguments.valueOf(*word);
        else if (*word == "--destination")
            destination = arguments.valueOf(*word);
        else if (*word == "--parents")
            createsParents = true;
        else if (word->starts_with('-') || words.size() == 2)
            throw UsageError("svn " + action + " takes no " + *word);
        else
            words.push_back(*word);
    }
    if (words.empty())
        throw UsageError("svn " + action + " needs a name");
    const auto repository = repositoryHere();
    const auto command =
        make(repository, remoteFor(repository, std::nullopt), words[0],
             words.size() == 2 ? std::optional(words[1]) : std::optional<std::string>());
    command->setMessage(message);
    command->setDestination(destination);
    command->setCreatesParentDirectories(createsParents);
    run(*command);
}

void rebase(const Repository& repository, const std::shared_ptr<RVGitRemote>& remote) {
    try {
        run(*RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(repository, remote));
    } catch (Failure& failure) {
        if (RVGitMergeManager::mergeManagerWithRepository(repository)->currentMergeMode() ==
            RVGitMergeModeRebase)
            failure.advice =
                "Resolve the conflicts and go on with rvgit continue, or give up with rvgit abort.";
        throw;
    }
}

}  // namespace

void runSVN(const std::shared_ptr<RVGitRepository>&, Arguments arguments, Output& output) {
    const std::string action = arguments.next().value_or("");
    if (action == "clone")
        return clone(arguments, output);
    if (action == "branch")
        return copy(&RVGitSVNBranchCommand::gitSVNBranchCommandWithRepository, arguments, action);
    if (action == "tag")
        return copy(&RVGitSVNTagCommand::gitSVNTagCommandWithRepository, arguments, action);
    if (action != "fetch" && action != "rebase" && action != "dcommit")
        throw UsageError((action.empty() ? "svn needs to be told what to do"
                                         : "svn has no " + printable(action)) +
                         "; see rvgit help svn");

    const auto word = action == "rebase" ? std::nullopt : arguments.nextOperand("svn " + action);
    if (const auto more = arguments.nextOperand("svn " + action))
        throw UsageError("svn " + action + " takes no " + *more);
    const auto repository = repositoryHere();
    const auto remote = remoteFor(repository, action == "fetch" ? word : std::nullopt);
    if (action == "fetch")
        run(*RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository, remote));
    else if (action == "rebase")
        rebase(repository, remote);
    else
        run(*RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(repository, remote, word));
}
