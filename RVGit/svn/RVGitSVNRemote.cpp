#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <system_error>

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/repository/RVGitUpdateRefCommand.h"
#include "RVGit/svn/RVGitSVNOptions.h"
#include "RVGit/svn/RVGitSVNRefSpec.h"

// The operations of RVGitRemote that are about Subversion alone.

namespace {

namespace fs = std::filesystem;
using Repository = std::shared_ptr<RVGitRepository>;
using Texts = std::vector<std::string>;

std::string refPrefix(const std::string& remoteName) {
    return "refs/remotes/" + remoteName;
}

// Whether there is a directory at the path below the root, behind no link.
bool isDirectoryBelow(const std::string& root, const std::string& relativePath) {
    std::string path = root;
    struct stat status;
    for (const std::string& part : componentsSeparatedByString(relativePath, "/")) {
        path = pathByAppendingComponent(path, part);
        if (::lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
            return false;
    }
    return true;
}

// Both names are plain. True where there is nothing to move.
bool moveRefDirectory(const std::optional<std::string>& root, const std::string& oldName,
                      const std::string& newName, RVErrorPlace error) {
    if (!root || !isDirectoryBelow(*root, refPrefix(oldName)))
        return true;
    const std::string from = pathByAppendingComponent(*root, refPrefix(oldName));
    const std::string to = pathByAppendingComponent(*root, refPrefix(newName));
    std::error_code failure;
    if (fs::exists(fs::symlink_status(to, failure)))
        failure = std::make_error_code(std::errc::file_exists);
    else
        fs::create_directories(fs::path(to).parent_path(), failure);
    if (!failure)
        fs::rename(from, to, failure);
    if (failure)
        fillErrorPlace(error, posixError(failure.value(), to));
    return !failure;
}

using Refs = std::map<std::string, std::string, std::less<>>;

// The hashes of a remote's refs, by their names. One that is damaged is left out, where `git
// show-ref` would fail, be it this remote's or not.
std::optional<Refs> refsOfRemote(const std::string& name, const Repository& repository,
                                 RVErrorPlace error) {
    const std::string prefix = refPrefix(name);
    const auto command = RVGitForEachRefCommand::gitForEachRefCommandWithRepository(repository);
    command->setPattern(prefix);
    command->setFormat("%(objectname) %(refname)");
    command->setOutputParserClass<RVGitRefOutputParser>();
    const RVGitCancellationWatch watch;
    if (!command->run(error) || watch.isCancelled(error))
        return std::nullopt;
    Refs refs;
    for (const auto& ref : dynamic_cast<RVGitRefOutputParser&>(*command->outputParser()).refs())
        if (ref.commitHash &&
            (ref.fullRefName == prefix || ref.fullRefName.starts_with(prefix + "/")))
            refs.emplace(ref.fullRefName, *ref.commitHash);
    return refs;
}

// Of the refs that were there before the directory has moved, those that git keeps elsewhere, in
// one file for many or in a table.
bool moveOtherRefs(const Refs& refs, const std::string& oldName, const std::string& newName,
                   const Repository& repository, RVErrorPlace error) {
    const auto left = refsOfRemote(oldName, repository, error);
    if (!left)
        return false;
    if (left->empty())
        return true;
    const auto moved = refsOfRemote(newName, repository, error);
    if (!moved)
        return false;
    Texts instructions;
    for (const auto& [ref, hash] : *left)
        instructions.push_back(std::string("delete ").append(ref).append(" ").append(hash));
    for (const auto& [ref, hash] : refs) {
        const std::string newRef = refPrefix(newName) + ref.substr(refPrefix(oldName).size());
        if (!moved->contains(newRef))
            instructions.push_back(std::string("create ").append(newRef).append(" ").append(hash));
    }
    const auto command = RVGitUpdateRefCommand::gitUpdateRefCommandWithRepository(repository, {});
    command->setInstructions(std::move(instructions));
    return command->run(error) && command->exitCode() == 0;
}

// Whether git may keep refs of the remote elsewhere than in its directory: in one file for many, in
// a table, in the git directory that linked working trees share, or as one ref of the remote's
// name.
bool mayKeepRefsElsewhere(const std::string& gitDirectory, const std::string& name) {
    const auto typeOf = [&](const std::string& relativePath) {
        std::error_code isUnknown;
        return fs::symlink_status(pathByAppendingComponent(gitDirectory, relativePath), isUnknown)
            .type();
    };
    for (const char* other : {"packed-refs", "reftable", "commondir"})
        if (typeOf(other) != fs::file_type::not_found)
            return true;
    const fs::file_type type = typeOf(refPrefix(name));
    return type != fs::file_type::directory && type != fs::file_type::not_found;
}

// At any depth; true where that cannot be found out.
bool holdsFiles(const std::string& directory) {
    std::error_code failure;
    fs::recursive_directory_iterator entry(directory, failure);
    for (; !failure && entry != fs::recursive_directory_iterator(); entry.increment(failure))
        if (entry->symlink_status(failure).type() != fs::file_type::directory)
            return true;
    return static_cast<bool>(failure);
}

// Both names are plain. True where there is nothing to move.
bool moveRefs(const Repository& repository, const std::string& oldName, const std::string& newName,
              RVErrorPlace error) {
    const std::string gitDirectory = repository->gitDirectoryPath().value_or("");
    if (!mayKeepRefsElsewhere(gitDirectory, oldName))
        return moveRefDirectory(gitDirectory, oldName, newName, error);
    const auto refs = refsOfRemote(oldName, repository, error);
    if (!refs)
        return false;
    // Behind the first key, empty directories may be left of refs that git has deleted.
    if (refs->empty())
        return (isDirectoryBelow(gitDirectory, refPrefix(newName)) &&
                !holdsFiles(pathByAppendingComponent(gitDirectory, refPrefix(oldName)))) ||
               moveRefDirectory(gitDirectory, oldName, newName, error);
    const auto others = refsOfRemote(newName, repository, error);
    if (!others)
        return false;
    if (!others->empty()) {
        fillErrorPlace(error, posixError(EEXIST, others->begin()->first));
        return false;
    }
    return moveRefDirectory(gitDirectory, oldName, newName, error) &&
           moveOtherRefs(*refs, oldName, newName, repository, error);
}

bool failWithCode(std::int64_t code, const Repository& repository, const std::string& name,
                  RVErrorPlace error) {
    fillErrorPlace(
        error, gitErrorWithCode(
                   code, RVGitMakeErrorUserInfo(repository, {{RVGitRemoteNameErrorKey, name}})));
    return false;
}

std::string pathWithWildcard(const std::string& path) {
    return lastPathComponent(path) == "*" ? path : pathByAppendingComponent(path, "*");
}

// Changes the section of the metadata, too. A remote that was never fetched from has none.
template <typename Change>
bool changeMetadata(const Repository& repository, const Change& change, RVErrorPlace error) {
    const auto metadata = RVGitConfig::gitSVNConfigForRepository(repository);
    std::optional<RVError> failure;
    if (!metadata->configFile() || change(*metadata, &failure) || !failure ||
        failure->code() == RVGitConfigSectionNotFoundError)
        return true;
    std::error_code isUnknown;
    if (!fs::exists(repository->SVNMetadatapath().value_or(""), isUnknown) && !isUnknown)
        return true;
    fillErrorPlace(error, *std::move(failure));
    return false;
}

}  // namespace

std::shared_ptr<RVGitRemote> RVGitRemote::createSVNRemoteWithName(
    const std::string& name, const std::string& URL, const Repository& repository,
    const std::optional<RVOptions>& options, RVErrorPlace error) {
    const RVGitCancellationWatch watch;
    if (existsRemoteWithName(name, repository)) {
        (void)failWithCode(RVGitCreateRemoteAlreadyExistsError, repository, name, error);
        return nullptr;
    }
    if (watch.isCancelled(error))
        return nullptr;
    const auto config = repository->config();
    const auto set = [&](const std::string& value, const char* word) {
        return config->setValue(value, RVGitMakeSVNRemoteConfigKey(name, word), error) &&
               !watch.isCancelled(error);
    };
    const auto add = [&](const std::string& value, const char* word) {
        return config->addValue(value, RVGitMakeSVNRemoteConfigKey(name, word), error) &&
               !watch.isCancelled(error);
    };
    if (!set(URL, RVGitSVNRemoteURLConfigKey))
        return nullptr;
    if (!options)
        return remoteForName(name, repository, error);

    const std::string prefix = ":" + refPrefix(name);
    if (options->contains(RVGitSVNOptionStandardDirectoryLayout) &&
        !(set("trunk" + prefix + "/trunk", RVGitSVNRemoteFetchConfigKey) &&
          set("branches/*" + prefix + "/*", RVGitSVNRemoteBranchesConfigKey) &&
          set("tags/*" + prefix + "/tags/*", RVGitSVNRemoteTagsConfigKey)))
        return nullptr;
    Texts trunkDirectories;
    Texts branchDirectories;
    Texts tagDirectories;
    readOption(options, RVGitSVNOptionTrunkDirectories, trunkDirectories);
    readOption(options, RVGitSVNOptionBranchesDirectories, branchDirectories);
    readOption(options, RVGitSVNOptionTagsDirectories, tagDirectories);
    for (const std::string& path : trunkDirectories)
        if (!add(std::string(path).append(prefix).append("/").append(path),
                 RVGitSVNRemoteFetchConfigKey))
            return nullptr;
    for (const std::string& path : branchDirectories)
        if (!add(pathWithWildcard(path) + prefix + "/*", RVGitSVNRemoteBranchesConfigKey))
            return nullptr;
    for (const std::string& path : tagDirectories)
        if (!add(pathWithWildcard(path) + prefix + "/tags/*", RVGitSVNRemoteTagsConfigKey))
            return nullptr;
    return remoteForName(name, repository, error);
}

bool RVGitRemote::deleteSVNRemote(const RVGitRemote& remote, RVErrorPlace error) {
    const Repository& repository = remote.repository();
    const RVGitCancellationWatch watch;
    const std::string section = RVGitMakeSVNRemoteConfigSection(remote.name());
    return repository->config()->removeSection(section, error) && !watch.isCancelled(error) &&
           changeMetadata(
               repository,
               [&](const RVGitConfig& metadata, RVErrorPlace failure) {
                   return metadata.removeSection(section, failure);
               },
               error) &&
           !watch.isCancelled(error);
}

bool RVGitRemote::renameSVNRemote(const RVGitRemote& remote, const std::string& newName,
                                  RVErrorPlace error) {
    const Repository& repository = remote.repository();
    const std::string& name = remote.name();
    if (!isPlainRelativePath(newName) || !isValidRemoteName(refPrefix(newName)))
        return failWithCode(RVGitRenameRemoteInvalidNameError, repository, newName, error);
    const RVGitCancellationWatch watch;
    const auto remotes = allRemotesForRepository(repository, error);
    if (!remotes || watch.isCancelled(error))
        return false;
    // Nothing moves into itself, and by then the sections would have the new name.
    if (newName.starts_with(name + "/")) {
        const auto refs = refsOfRemote(name, repository, error);
        if (!refs)
            return false;
        if (!refs->empty() ||
            isDirectoryBelow(repository->gitDirectoryPath().value_or(""), refPrefix(name))) {
            fillErrorPlace(error, posixError(EINVAL, refPrefix(newName)));
            return false;
        }
    }
    for (const auto& other : *remotes)
        if (isEqualToUnicodeString(other->name(), newName))
            return failWithCode(RVGitRenameRemoteAlreadyExistsError, repository, newName, error);

    const std::string section = RVGitMakeSVNRemoteConfigSection(name);
    const std::string newSection = RVGitMakeSVNRemoteConfigSection(newName);
    if (!repository->config()->renameSection(section, newSection, error) ||
        watch.isCancelled(error))
        return false;
    if (!changeMetadata(
            repository,
            [&](const RVGitConfig& metadata, RVErrorPlace failure) {
                return metadata.renameSection(section, newSection, failure);
            },
            error) ||
        watch.isCancelled(error))
        return false;
    for (const char* key : {RVGitSVNRemoteFetchConfigKey, RVGitSVNRemoteBranchesConfigKey,
                            RVGitSVNRemoteTagsConfigKey})
        if (!updateSVNRefSpecsForConfigKey(key, name, newName, repository, error))
            return false;
    return true;
}

bool RVGitRemote::updateSVNRefSpecsForConfigKey(const std::string& configKey,
                                                const std::string& oldRemoteName,
                                                const std::string& newRemoteName,
                                                const Repository& repository, RVErrorPlace error) {
    // The section has the new name already.
    const std::string key = RVGitMakeSVNRemoteConfigKey(newRemoteName, configKey);
    const auto config = repository->config();
    const RVGitCancellationWatch watch;
    std::optional<RVError> failure;
    const Texts values = config->valuesForConfigKey(key, &failure);
    if (failure) {
        fillErrorPlace(error, *failure);
        return false;
    }
    if (watch.isCancelled(error))
        return false;
    const std::string oldPrefix = refPrefix(oldRemoteName);
    const std::string newPrefix = refPrefix(newRemoteName);
    for (const std::string& value : values) {
        const auto refSpec = RVGitSVNRefSpec::SVNRefSpecFromString(value);
        if (!refSpec->localRefName() || !refSpec->localRefName()->starts_with(oldPrefix))
            continue;
        if (isPlainRelativePath(oldRemoteName) && isPlainRelativePath(newRemoteName) &&
            !(moveRefs(repository, oldRemoteName, newRemoteName, error) &&
              moveRefDirectory(repository->SVNDirectoryPath(), oldRemoteName, newRemoteName,
                               error)))
            return false;
        RVGitSVNRefSpec changed = *refSpec;
        changed.setLocalRefName(newPrefix + refSpec->localRefName()->substr(oldPrefix.size()));
        if (!config->replaceValue(refSpec->stringValue(), changed.stringValue(), key, error) ||
            watch.isCancelled(error))
            return false;
    }
    return true;
}

const std::optional<std::string>& RVGitRemote::SVNPrefix() const {
    if (SVNPrefix_ || !SVNTrunkRefSpecs_)
        return SVNPrefix_;
    std::optional<std::string> prefix;
    for (const std::string& text : *SVNTrunkRefSpecs_) {
        const auto refSpec = RVGitSVNRefSpec::SVNRefSpecFromString(text);
        const auto parts = componentsSeparatedByString(*refSpec->localRefName(), "/");
        if (parts.size() < 4)
            continue;
        if (!prefix)
            prefix = parts[2];
        else if (!isEqualToUnicodeString(*prefix, parts[2]))
            return SVNPrefix_;
    }
    SVNPrefix_ = std::move(prefix);
    return SVNPrefix_;
}

bool RVGitRemote::setSVNTrunkRefSpecs(const Texts& refSpecs, const std::string& remoteName,
                                      const Repository& repository, RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(remoteName, repository, nullptr,
                                                RVGitSVNRemoteFetchConfigKey, error);
    return key && repository->config()->setValues(refSpecs, *key, error);
}

bool RVGitRemote::unsetSVNTrunkRefSpecsForRemoteWithName(const std::string& remoteName,
                                                         const Repository& repository,
                                                         RVErrorPlace error) {
    return unsetConfigKeyForRemoteWithName(remoteName, repository, nullptr,
                                           RVGitSVNRemoteFetchConfigKey, error);
}

bool RVGitRemote::setSVNBranchRefSpecs(const Texts& refSpecs, const std::string& remoteName,
                                       const Repository& repository, RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(remoteName, repository, nullptr,
                                                RVGitSVNRemoteBranchesConfigKey, error);
    return key && repository->config()->setValues(refSpecs, *key, error);
}

bool RVGitRemote::unsetSVNBranchRefSpecsForRemoteWithName(const std::string& remoteName,
                                                          const Repository& repository,
                                                          RVErrorPlace error) {
    return unsetConfigKeyForRemoteWithName(remoteName, repository, nullptr,
                                           RVGitSVNRemoteBranchesConfigKey, error);
}

bool RVGitRemote::setSVNTagRefSpecs(const Texts& refSpecs, const std::string& remoteName,
                                    const Repository& repository, RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(remoteName, repository, nullptr,
                                                RVGitSVNRemoteTagsConfigKey, error);
    return key && repository->config()->setValues(refSpecs, *key, error);
}

bool RVGitRemote::unsetSVNTagRefSpecsForRemoteWithName(const std::string& remoteName,
                                                       const Repository& repository,
                                                       RVErrorPlace error) {
    return unsetConfigKeyForRemoteWithName(remoteName, repository, nullptr,
                                           RVGitSVNRemoteTagsConfigKey, error);
}
