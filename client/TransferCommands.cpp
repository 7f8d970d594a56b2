#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitCommandEnvironment.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitCredentialCommand.h"
#include "RVGit/remotes/RVGitCredentials.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitLsRemoteCommand.h"
#include "RVGit/remotes/RVGitPullCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitURL.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"
#include "client/OperationText.h"
#include "client/TransferProgress.h"

namespace {

using Repository = std::shared_ptr<RVGitRepository>;

// What these name runs on the way to a server. They are left out of what git inherits, but here
// they are the user's own.
void keepWaysToServers() {
    for (const char* name : {"GIT_SSH", "GIT_SSH_COMMAND", "GIT_PROXY_COMMAND"})
        if (const char* value = std::getenv(name))
            RVGitCommandEnvironment::sharedEnvironment().setValueForEnvironmentVariable(value,
                                                                                        name);
}

/// The lines of git's table of refs, but for those that tell of no change. The parser of the
/// library knows neither a forced update nor a ref that a push has deleted.
std::string changedRefs(std::string_view standardError) {
    std::string changes;
    for (const std::string& line : componentsSeparatedByString(standardError, "\n")) {
        const bool isRow = line.size() > 3 && line[0] == ' ' && line[2] == ' ' &&
                           std::string_view(" +*-!tx").find(line[1]) != std::string_view::npos;
        const bool isChange =
            line.find(" -> ") != std::string::npos || line.find("[deleted]") != std::string::npos;
        if (isRow && isChange)
            changes += printable(line) + "\n";
    }
    return changes;
}

/// What the other side says, in lines that begin with "remote: ".
std::string remoteWords(std::string_view standardError) {
    std::string words;
    for (const std::string& line : componentsSeparatedByString(standardError, "\n"))
        if (line.starts_with("remote: ") && line.find('%') == std::string::npos)
            words += printable(stringByTrimmingWhitespaceAndNewline(line)) + "\n";
    return words;
}

void run(RVGitCommand& command) {
    keepWaysToServers();
    std::optional<RVError> error;
    bool done = false;
    {
        const TransferProgress progress(command);
        done = command.run(&error);
    }
    if (done || !error)
        return;
    // Whose refusal it is stands in these lines alone.
    if (error->code() == RVGitRemoteSyncError || error->code() == RVGitRemotePushRejectedError)
        std::fputs((remoteWords(command.standardErrorString()) +
                    changedRefs(command.standardErrorString()))
                       .c_str(),
                   stderr);
    throw Failure(error);
}

std::int64_t positiveNumberOf(Arguments& arguments, const std::string& option) {
    const auto number = arguments.numberOf(option);
    if (number == 0)
        throw UsageError(option + " needs a number above 0");
    return static_cast<std::int64_t>(number);
}

[[noreturn]] void refuse(const char* command, const std::string& word) {
    throw UsageError(std::string(command) + " takes no " + word);
}

std::string absolutePath(const std::string& path) {
    std::error_code ignored;
    return standardizedPath(std::filesystem::absolute(path, ignored).string());
}

/// A path on this machine from the root on, since git may run elsewhere; any other address as it
/// is.
std::string addressFrom(const std::string& text) {
    const RVURL url(text);
    const bool mayBePath = !url.scheme() && !isSCPSyntax(url);
    std::error_code ignored;
    return mayBePath && std::filesystem::exists(text, ignored) ? absolutePath(text) : text;
}

/// The name that git would give a clone.
std::string directoryNameFor(const std::string& address) {
    std::string name = address;
    while (name.ends_with('/'))
        name.pop_back();
    if (name.ends_with("/.git"))
        name.resize(name.size() - 5);
    name = name.substr(name.find_last_of("/:") + 1);
    if (name.ends_with(".git"))
        name.resize(name.size() - 4);
    if (name.empty() || name == "." || name == "..")
        throw UsageError("clone needs a path, since the address holds no name");
    return name;
}

/// The first of the keys that is set: a key of the current branch, or a whole one.
std::optional<std::string> configuredValue(const Repository& repository,
                                           std::initializer_list<const char*> keys) {
    const auto head = repository->HEADRefName();
    const auto branch = head ? RVGitRef::makeRefName(*head, RVGitRefTypeBranch) : std::string();
    for (const std::string key : keys) {
        const bool isWhole = key.find('.') != std::string::npos;
        if (auto value = repository->config()->lastValueForConfigKey(
                isWhole ? key : RVGitMakeBranchConfigKey(branch, key)))
            return value;
    }
    return std::nullopt;
}

/// Whether git takes the value for false; what is neither true nor false is a kind of true.
bool isOff(std::string_view value) {
    const std::string word = foldedString(value);
    return word.empty() || word == "false" || word == "no" || word == "off" || word == "0";
}

enum class Direction { Fetch, Push };

/// A remote of that name, or an address in the place of one. Without a name, the one that git would
/// take.
std::shared_ptr<RVGitRemote> remoteFor(std::optional<std::string> name, Direction direction,
                                       const Repository& repository) {
    const bool isTyped = name.has_value();
    if (!name && direction == Direction::Push)
        name = configuredValue(repository, {"pushRemote", "remote.pushDefault"});
    if (!name)
        name = configuredValue(repository, {"remote"});
    const std::string wanted = name.value_or(RVGitOriginRemoteName);
    std::optional<RVError> error;
    auto remote = RVGitRemote::remoteForName(wanted, repository, &error);
    if (error)
        throw Failure(error);
    if (remote)
        return remote;
    // What is configured is a path from the repository on.
    return RVGitRemote::remoteWithRepository(repository, isTyped ? addressFrom(wanted) : wanted,
                                             std::nullopt, std::nullopt, std::nullopt);
}

std::shared_ptr<RVGitRefSpec> refSpecFrom(const std::string& text) {
    auto refSpec = RVGitRefSpec::refSpecFromString(text);
    // git would take what is left of it for HEAD.
    if (!refSpec->localRefName() && !refSpec->remoteRefName())
        throw UsageError(printable(text) + " is no ref spec");
    return refSpec;
}

std::string currentBranch(const Repository& repository) {
    const auto head = repository->HEADRefName();
    if (!head || !head->starts_with("refs/heads/"))
        throw UsageError("no branch is checked out; name what to push");
    return *head;
}

/// With the full name of the remote's branch, and the hash that it had when it was last seen.
struct Lease {
    std::shared_ptr<RVGitRefSpec> refSpec;
    std::string hash;
};

Lease leaseFor(const std::shared_ptr<RVGitRefSpec>& refSpec, const RVGitRemote& remote,
               const Repository& repository) {
    const auto local = refSpec->localRefName();
    std::string name = refSpec->remoteRefName().value_or(local.value_or(""));
    // Git pushes the branch that it names, and none of that name.
    if (name == RVGitHEADRevision)
        name = currentBranch(repository);
    const auto fullName = RVGitMakeFullRefName(name, RVGitRefTypeBranch);
    const auto seenName = RVGitRef::makeFullRemoteRefNameWithRemoteName(remote.name(), fullName);
    std::optional<RVError> error;
    const auto seen = RVGitRef::refForFullRefName(seenName, repository, std::nullopt, &error);
    if (error)
        throw Failure(error);
    if (!seen || !seen->commitHash())
        throw UsageError("there is no " + printable(seenName) + " to lease; fetch first");
    return {RVGitRefSpec::refSpecWithLocalRefName(local, fullName), *seen->commitHash()};
}

}  // namespace

void runClone(const Repository&, Arguments arguments, Output& output) {
    RVOptions options;
    std::vector<std::string> words;
    while (const auto word = arguments.next()) {
        if (*word == "--bare")
            options.insert_or_assign(RVGitCloneOptionBare, true);
        else if (*word == "--recursive")
            options.insert_or_assign(RVGitCloneOptionInitializeSubmodules, true);
        else if (*word == "--depth")
            options.insert_or_assign(RVGitCloneOptionDepth, positiveNumberOf(arguments, *word));
        else if (*word == "--filter")
            options.insert_or_assign(RVGitCloneOptionFilter, arguments.valueOf(*word));
        else if (*word == "--single-branch")
            options.insert_or_assign(RVGitCloneOptionSingleBranch, true);
        else if (word->starts_with('-') || words.size() == 2)
            refuse("clone", *word);
        else
            words.push_back(*word);
    }
    if (words.empty())
        throw UsageError("clone needs an address");
    const std::string path = words.size() == 2 ? words[1] : directoryNameFor(words[0]);
    const auto command = RVGitCloneCommand::gitCloneCommandWithRemoteURL(
        addressFrom(words[0]), absolutePath(path), options);
    run(*command);
    output << "Cloned into " << printable(path) << "\n";
}

void runFetch(const Repository& repository, Arguments arguments, Output& output) {
    RVOptions options;
    std::vector<std::string> words;
    while (const auto word = arguments.next()) {
        if (*word == "--prune")
            options.insert_or_assign(RVGitFetchOptionPruneObsoleteRemoteBranches, true);
        else if (*word == "--tags")
            options.insert_or_assign(RVGitFetchOptionForceTagsDownload, true);
        else if (*word == "--recurse-submodules")
            options.insert_or_assign(RVGitFetchOptionRecurseSubmodules, true);
        else if (*word == "--depth")
            options.insert_or_assign(RVGitFetchOptionDepth, positiveNumberOf(arguments, *word));
        else if (*word == "--unshallow")
            options.insert_or_assign(RVGitFetchOptionUnshallow, true);
        else if (word->starts_with('-') || words.size() == 2)
            refuse("fetch", *word);
        else
            words.push_back(*word);
    }
    const auto remote = remoteFor(words.empty() ? std::nullopt : std::optional(words[0]),
                                  Direction::Fetch, repository);
    const auto command = RVGitFetchCommand::gitFetchCommandWithRepository(
        repository, remote, words.size() == 2 ? refSpecFrom(words[1]) : nullptr, options);
    run(*command);
    output << changedRefs(command->standardErrorString());
}

void runPull(const Repository& repository, Arguments arguments, Output& output) {
    RVOptions options;
    std::optional<bool> usesRebase;
    std::vector<std::string> words;
    while (const auto word = arguments.next()) {
        if (*word == "--rebase" || *word == "--no-rebase")
            usesRebase = *word == "--rebase";
        else if (*word == "--no-verify")
            options.insert_or_assign(RVGitPullOptionNoVerify, true);
        else if (word->starts_with('-') || words.size() == 2)
            refuse("pull", *word);
        else
            words.push_back(*word);
    }
    const auto remote = remoteFor(words.empty() ? std::nullopt : std::optional(words[0]),
                                  Direction::Fetch, repository);
    // Git is told one or the other, whatever is configured.
    if (!usesRebase)
        usesRebase = !isOff(configuredValue(repository, {"rebase", "pull.rebase"}).value_or(""));
    options.insert_or_assign(RVGitPullOptionRebase, *usesRebase);
    const auto command = RVGitPullCommand::gitPullCommandWithRepository(
        repository, remote, words.size() == 2 ? refSpecFrom(words[1]) : nullptr, options);
    try {
        run(*command);
    } catch (const Failure& failure) {
        // It may have stopped at conflicts.
        reportOperation(false, failure.error, repository, output);
    }
    output << changedRefs(command->standardErrorString())
           << printableLines(stringByTrimmingWhitespaceAndNewline(command->standardOutputString()));
}

void runPush(const Repository& repository, Arguments arguments, Output& output) {
    RVOptions options;
    bool leases = false;
    bool deletes = false;
    std::optional<std::string> remoteName;
    std::vector<std::string> words;
    while (const auto word = arguments.next()) {
        if (*word == "--force")
            options.insert_or_assign(RVGitPushOptionForcePush, true);
        else if (*word == "--force-with-lease")
            leases = true;
        else if (*word == "--delete")
            deletes = true;
        else if (*word == "--tags")
            options.insert_or_assign(RVGitPushOptionPushTags, true);
        else if (*word == "--no-verify")
            options.insert_or_assign(RVGitPushOptionNoVerify, true);
        else if (word->starts_with('-'))
            refuse("push", *word);
        else if (!remoteName)
            remoteName = *word;
        else
            words.push_back(*word);
    }
    // Wherever the option stands, it counts for all of them.
    RVGitPushCommand::RefSpecs refSpecs;
    for (const std::string& word : words)
        refSpecs.push_back(deletes ? RVGitRefSpec::deleteRefSpecWithRemoteRefName(word)
                                   : refSpecFrom(word));
    if (leases && (deletes || options.contains(RVGitPushOptionForcePush)))
        throw UsageError("push takes one of --force, --force-with-lease and --delete");
    if (deletes && refSpecs.empty())
        throw UsageError("push --delete needs a remote, and names behind it");
    if (leases && refSpecs.size() > 1)
        throw UsageError("push --force-with-lease takes one branch");
    const auto remote = remoteFor(remoteName, Direction::Push, repository);
    std::string leasedHash;
    if (leases) {
        const auto refSpec = refSpecs.empty()
                                 ? RVGitRefSpec::refSpecWithLocalRefName(currentBranch(repository))
                                 : refSpecs.front();
        const Lease lease = leaseFor(refSpec, *remote, repository);
        refSpecs = {lease.refSpec};
        leasedHash = lease.hash;
        options.insert_or_assign(RVGitPushOptionForcePushWithLease, true);
    }
    if (deletes)
        options.insert_or_assign(RVGitPushOptionDeleteRef, true);
    const auto command = RVGitPushCommand::gitPushCommandWithRepository(
        repository, remote, std::optional(refSpecs), options);
    command->setLeaseValueCommitHash(leasedHash);
    run(*command);
    output << changedRefs(command->standardErrorString());
}

void runLsRemote(const Repository&, Arguments arguments, Output& output) {
    RVOptions options;
    std::optional<std::string> address;
    while (const auto word = arguments.next()) {
        if (*word == "--heads")
            options.insert_or_assign(RVGitLsRemoteOptionHeads, true);
        else if (*word == "--tags")
            options.insert_or_assign(RVGitLsRemoteOptionTags, true);
        else if (word->starts_with('-') || address)
            refuse("ls-remote", *word);
        else
            address = *word;
    }
    if (!address)
        throw UsageError("ls-remote needs an address");
    const auto command =
        RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL(addressFrom(*address), options);
    run(*command);
    for (const auto& ref : command->refs())
        output << output.in(Colour::Yellow, ref.commitHash.value_or("")) << "  "
               << printable(ref.fullRefName) << "\n";
}

void runCredential(const Repository&, Arguments arguments, Output& output) {
    const std::string action = arguments.next().value_or("");
    if (action != "fill" && action != "approve" && action != "reject")
        throw UsageError("credential takes fill, approve or reject");
    const RVURL url(arguments.operandOf("credential " + action));
    if (const auto word = arguments.nextOperand("credential " + action))
        refuse("credential", *word);
    std::shared_ptr<RVGitCredentialCommand> command;
    if (action == "fill") {
        command = RVGitCredentialCommand::gitFillCredentialCommandWithHTTPURL(url);
    } else if (action == "reject") {
        command = RVGitCredentialCommand::gitRejectCredentialCommandWithHTTPURL(url);
    } else {
        // Whoever lists processes sees their arguments.
        std::string username;
        std::string password;
        endWhenInterrupted();
        if (!std::getline(std::cin, username) || !std::getline(std::cin, password))
            throw UsageError("credential approve reads a name and a password, each on a line");
        whenInterrupted({});
        command =
            RVGitCredentialCommand::gitApproveCredentialCommandWithHTTPURL(url, username, password);
    }
    std::optional<RVError> error;
    if (!command->run(&error))
        throw Failure(error);
    if (action != "fill")
        return;
    const auto& credentials = command->credentials();
    if (!credentials)
        throw UsageError("no credential is known for this address");
    output << "username=" << printable(credentials->user()) << "\n"
           << "password=" << credentials->password() << "\n";
}
