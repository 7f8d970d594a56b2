#include "RVGit/repository/RVGitRef.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVContainedFiles.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitRevListCommand.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/remotes/RVGitBranch.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/repository/RVGitShowRefCommand.h"
#include "RVGit/worktree/RVGitStash.h"

namespace {

constexpr std::string_view refsPrefix = "refs/";
constexpr std::string_view branchPrefix = "refs/heads/";
constexpr std::string_view remoteBranchPrefix = "refs/remotes/";
constexpr std::string_view tagPrefix = "refs/tags/";

// Empty for a type without prefix.
std::string_view prefixForRefType(RVGitRefType refType) {
    switch (refType) {
        case RVGitRefTypeBranch:
            return branchPrefix;
        case RVGitRefTypeRemoteBranch:
            return remoteBranchPrefix;
        case RVGitRefTypeTag:
            return tagPrefix;
        case RVGitRefTypeStash:
            return refsPrefix;
        case RVGitRefTypeNone:
            break;
    }
    return {};
}

// Where the text goes on behind as many characters as the prefix has; absent if it has fewer.
// Counted in characters since the text need not begin with the prefix, and none may be cut apart.
std::optional<std::size_t> offsetBehindPrefixLength(std::string_view text,
                                                    std::string_view prefix) {
    std::size_t offset = 0;
    for (char byte : prefix) {
        if (continuesCharacter(byte))
            continue;
        if (offset == text.size())
            return std::nullopt;
        do
            ++offset;
        while (offset < text.size() && continuesCharacter(text[offset]));
    }
    return offset;
}

bool headNamesCommit(const std::shared_ptr<RVGitRepository>& repository) {
    auto command = RVGitRevListCommand::gitRevListCommandWithRepository(
        repository, RVOptions{{RVGitRevListOptionMaxCount, 1}});
    command->setRevisions({RVGitHEADRevision});
    return command->run();
}

}  // namespace

RVGitRef::RVGitRef(std::shared_ptr<RVGitRepository> repository, std::string fullRefName,
                   std::optional<std::string> commitHash)
    : repository_(std::move(repository)),
      fullRefName_(std::move(fullRefName)),
      commitHash_(std::move(commitHash)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitRef> RVGitRef::refWithRepository(std::shared_ptr<RVGitRepository> repository,
                                                      std::string fullRefName,
                                                      std::optional<std::string> commitHash) {
    return std::make_shared<RVGitRef>(std::move(repository), std::move(fullRefName),
                                      std::move(commitHash));
}

std::shared_ptr<RVGitRef> RVGitRef::refWithRepository(std::shared_ptr<RVGitRepository> repository,
                                                      std::string fullRefName,
                                                      std::shared_ptr<RVGitCommit> commit) {
    auto ref = refWithRepository(std::move(repository), std::move(fullRefName),
                                 commit ? commit->commitHash() : std::nullopt);
    ref->commit_ = std::move(commit);
    return ref;
}

RVGitRefType RVGitRef::refTypeForRefName(std::string_view refName) {
    if (refName.starts_with(branchPrefix) || refName == RVGitHEADRevision || refName == "grafted")
        return RVGitRefTypeBranch;
    if (refName.starts_with(remoteBranchPrefix))
        return RVGitRefTypeRemoteBranch;
    if (refName.starts_with(tagPrefix))
        return RVGitRefTypeTag;
    if (refName.starts_with(refsPrefix))
        return RVGitRefTypeStash;
    return RVGitRefTypeNone;
}

bool RVGitRef::isValidRefName(const std::optional<std::string>& refName) {
    if (!refName)
        return false;
    auto command = RVGitCommand::gitCommandWithGitBinary(RVGitBinary::defaultGitBinary());
    command->setGitCommand("check-ref-format");
    command->addGitCommandArgument(
        refName->starts_with(refsPrefix) ? *refName : std::string(refsPrefix) + *refName);
    return command->run();
}

std::string RVGitRef::makeFullRefName(std::string_view refName, RVGitRefType refType) {
    std::string_view prefix = prefixForRefType(refType);
    if (refName == RVGitHEADRevision || refName.starts_with(refsPrefix) || prefix.empty())
        return std::string(refName);
    return pathByAppendingComponent(prefix, refName);
}

std::string RVGitRef::makeFullRemoteRefNameWithRemoteName(
    const std::optional<std::string>& remoteName, std::string_view refName) {
    if (remoteName == RVGitLocalRemoteName)
        return makeFullRefName(refName, RVGitRefTypeBranch);
    std::string name = makeRefName(refName, RVGitRefTypeBranch);
    if (remoteName)
        name = pathByAppendingComponent(*remoteName, name);
    return makeFullRefName(name, RVGitRefTypeRemoteBranch);
}

std::optional<std::string> RVGitRef::makeFullRefNameForRemoteWithName(
    const std::optional<std::string>& remoteName, std::string_view refName) {
    RVGitRefType refType = refTypeForRefName(refName);
    if (remoteName == RVGitLocalRemoteName) {
        if (refType != RVGitRefTypeBranch)
            return std::nullopt;
        return makeFullRefName(refName, RVGitRefTypeBranch);
    }
    if (refType != RVGitRefTypeRemoteBranch)
        return std::nullopt;
    std::string remotePrefix = std::string(remoteBranchPrefix) + remoteName.value_or("");
    auto offset = offsetBehindPrefixLength(refName, remotePrefix);
    if (!offset)
        return std::nullopt;
    return makeFullRefName(refName.substr(*offset), RVGitRefTypeBranch);
}

std::string RVGitRef::makeRefName(std::string_view refName, RVGitRefType refType) {
    if (!refName.starts_with(refsPrefix))
        return std::string(refName);
    auto offset = offsetBehindPrefixLength(refName, prefixForRefType(refType));
    if (!offset || offset == refName.size())
        return std::string(refName);
    return std::string(refName.substr(*offset));
}

std::optional<std::string> RVGitRef::refPrefixForRefType(RVGitRefType refType) {
    std::string_view prefix = prefixForRefType(refType);
    if (prefix.empty())
        return std::nullopt;
    return std::string(prefix);
}

std::optional<std::vector<std::shared_ptr<RVGitRef>>> RVGitRef::allRefsForRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    auto command = RVGitShowRefCommand::gitShowRefCommandWithRepository(repository, options);
    if (!command->run(error))
        return std::nullopt;

    std::vector<std::shared_ptr<RVGitRef>> refs;
    refs.reserve(command->refs().size());
    for (const auto& item : command->refs())
        if (item.fullRefName != "refs/stash")
            refs.push_back(refWithRepository(repository, item.fullRefName, item.commitHash));

    if (RVGitBranch::isInitialCommitOnHeadBranchForRepository(repository)) {
        auto initialRef = initialRefFromHeadFileForRepository(repository, error);
        if (initialRef)
            refs.push_back(std::move(initialRef));
        else if (error && !headNamesCommit(repository))
            return std::nullopt;
    }
    return refs;
}

std::shared_ptr<RVGitRef> RVGitRef::refForFullRefName(
    const std::string& fullRefName, const std::shared_ptr<RVGitRepository>& repository,
    const std::optional<RVOptions>& options, RVErrorPlace error) {
    auto refs = allRefsForRepository(repository, options, error);
    if (!refs)
        return nullptr;
    const auto found =
        RVFindUnicodeName(refs->begin(), refs->end(), fullRefName,
                          [](const auto& ref) -> const std::string& { return ref->fullRefName_; });
    if (found == refs->end()) {
        clearErrorPlace(error);
        return nullptr;
    }
    return *found;
}

std::shared_ptr<RVGitRef> RVGitRef::headRefForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    requireParameter(repository != nullptr, "repository");
    const auto refName = repository->HEADRefName();
    if (!refName) {
        // For its error.
        constexpr std::size_t maximumSize = std::size_t{64} << 10;
        (void)RVContainedFiles(repository->gitDirectoryPath())
            .UTF8Contents("HEAD", maximumSize, error);
        return nullptr;
    }
    return refForFullRefName(makeFullRefName(*refName, RVGitRefTypeBranch), repository,
                             std::nullopt, error);
}

std::shared_ptr<RVGitRef> RVGitRef::initialRefFromHeadFileForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    requireParameter(repository != nullptr, "repository");
    auto refName = repository->HEADRefName();
    if (!refName || !refName->starts_with(branchPrefix)) {
        clearErrorPlace(error);
        return nullptr;
    }
    return refWithRepository(repository, *refName, std::nullopt);
}

std::string RVGitRef::refName() const {
    return makeRefName(fullRefName_, refType());
}

std::shared_ptr<RVGitCommit> RVGitRef::commit() {
    if (!commit_ && commitHash_)
        commit_ = RVGitCommit::commitForCommitHash(*commitHash_, repository_);
    return commit_;
}

std::shared_ptr<RVGitRefProtocol> RVGitRef::refObject(RVErrorPlace error) const {
    switch (refType()) {
        case RVGitRefTypeBranch:
            return RVGitBranch::branchForRefName(fullRefName_, repository_, error);
        case RVGitRefTypeRemoteBranch:
            return RVGitRemoteBranch::remoteBranchForRefName(fullRefName_, repository_, error);
        case RVGitRefTypeTag:
            return RVGitTag::tagForRefName(fullRefName_, repository_, error);
        case RVGitRefTypeStash:
            return RVGitStash::stashForRefName(fullRefName_, repository_, error);
        case RVGitRefTypeNone:
            break;
    }
    clearErrorPlace(error);
    return nullptr;
}

RVGitRefType RVGitRef::refType() const {
    if (isHeadRef() || fullRefName_.starts_with(branchPrefix))
        return RVGitRefTypeBranch;
    if (fullRefName_.starts_with(remoteBranchPrefix))
        return RVGitRefTypeRemoteBranch;
    if (fullRefName_.starts_with(tagPrefix))
        return RVGitRefTypeTag;
    if (fullRefName_.starts_with("refs/stash"))
        return RVGitRefTypeStash;
    return RVGitRefTypeNone;
}

bool RVGitRef::isBranchRefType() const {
    return refType() == RVGitRefTypeBranch;
}

bool RVGitRef::isRemoteBranchRefType() const {
    return refType() == RVGitRefTypeRemoteBranch;
}

bool RVGitRef::isTagRefType() const {
    return refType() == RVGitRefTypeTag;
}

bool RVGitRef::isStashRefType() const {
    return refType() == RVGitRefTypeStash;
}

std::string RVGitMakeFullRefName(std::string_view refName, RVGitRefType refType) {
    return RVGitRef::makeFullRefName(refName, refType);
}

std::string RVGitMakeShortRefName(std::string_view refName, RVGitRefType refType) {
    return RVGitRef::makeRefName(refName, refType);
}

std::string RVGitMakeFullRemoteRefName(const std::optional<std::string>& remoteName,
                                       std::string_view refName) {
    return RVGitRef::makeFullRemoteRefNameWithRemoteName(remoteName, refName);
}

std::optional<std::string> RVGitMakeFullRefNameForRemote(
    const std::optional<std::string>& remoteName, std::string_view refName) {
    return RVGitRef::makeFullRefNameForRemoteWithName(remoteName, refName);
}

bool RVGitValidateRefName(const std::optional<std::string>& refName) {
    return RVGitRef::isValidRefName(refName);
}
