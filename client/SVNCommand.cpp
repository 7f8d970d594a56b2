#include <filesystem>

#include "RVGit/base/RVPath.h"
#include "RVGit/remotes/RVGitRemote.h"
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
    const auto repository = RVGitRepository::repositoryWithPath(workingDirectory());
    if (!repository->isValid())
        throw UsageError("there is no repository at " + printable(workingDirectory()));
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

void clone(Arguments& arguments) {
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
    const std::string path = words.size() == 2 ? words[1] : lastPathComponent(words[0]);
    if (words.size() == 1 && (path.empty() || path == "/" || path == "." || path == ".."))
        throw UsageError("svn clone needs a path, since the address holds no name");
    run(*RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
        words[0], isAbsolutePath(path) ? path : pathByAppendingComponent(workingDirectory(), path),
        options));
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

}  // namespace

void runSVN(const std::shared_ptr<RVGitRepository>&, Arguments arguments, Output&) {
    const std::string action = arguments.valueOf("svn");
    if (action == "clone")
        return clone(arguments);
    if (action == "branch")
        return copy(&RVGitSVNBranchCommand::gitSVNBranchCommandWithRepository, arguments, action);
    if (action == "tag")
        return copy(&RVGitSVNTagCommand::gitSVNTagCommandWithRepository, arguments, action);
    if (action != "fetch" && action != "rebase" && action != "dcommit")
        throw UsageError("svn has no " + action);

    const auto word = action == "rebase" ? std::nullopt : arguments.nextOperand("svn " + action);
    if (const auto more = arguments.nextOperand("svn " + action))
        throw UsageError("svn " + action + " takes no " + *more);
    const auto repository = repositoryHere();
    const auto remote = remoteFor(repository, action == "fetch" ? word : std::nullopt);
    if (action == "fetch")
        run(*RVGitSVNFetchCommand::gitSVNFetchCommandWithRepository(repository, remote));
    else if (action == "rebase")
        run(*RVGitSVNRebaseCommand::gitSVNRebaseCommandWithRepository(repository, remote));
    else
        run(*RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(repository, remote, word));
}
