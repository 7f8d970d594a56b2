#include "RVGit/worktree/RVGitStash.h"

#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/worktree/RVGitStashCommand.h"

namespace {

constexpr std::string_view automaticMessagePrefix = "WIP on ";
constexpr std::string_view userMessagePrefix = "On ";

}  // namespace

RVGitStash::RVGitStash(std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref)
    : repository_(std::move(repository)), ref_(std::move(ref)) {
    requireParameter(repository_ != nullptr, "repository");
    requireParameter(ref_ != nullptr, "ref");
}

std::shared_ptr<RVGitStash> RVGitStash::stashWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref) {
    return std::make_shared<RVGitStash>(std::move(repository), std::move(ref));
}

std::string RVGitStash::makeFullRefNameWithStashIndex(std::uint64_t index) {
    return "refs/stash@{" + std::to_string(index) + "}";
}

std::optional<std::vector<std::shared_ptr<RVGitStash>>> RVGitStash::allStashesForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const auto command = RVGitStashCommand::gitStashCommandWithRepository(repository);
    if (!command->run(error))
        return std::nullopt;
    // Older gits call the next entry of a list the parent of a commit, so it is asked for alone.
    const bool tellsParents = command->gitBinary()->isVersionAtLeast("2.14.2");
    std::vector<std::shared_ptr<RVGitStash>> stashes;
    stashes.reserve(command->stashes().size());
    for (const auto& item : command->stashes()) {
        const std::string name = makeFullRefNameWithStashIndex(stashes.size());
        auto ref = tellsParents
                       ? RVGitRef::refWithRepository(
                             repository, name, RVGitCommit::commitWithRepository(repository, item))
                       : RVGitRef::refWithRepository(repository, name, item.commitHash());
        auto stash = stashWithRepository(repository, std::move(ref));
        stash->creationDate_ = item.committerDate();
        stash->message_ = item.message();
        if (stash->message_) {
            stash->userMessage_ = parseStashMessageFromCommitMessage(*stash->message_);
            stash->originBranch_ = parseOriginBranchFromCommitMessage(*stash->message_);
        }
        stashes.push_back(std::move(stash));
    }
    return stashes;
}

std::shared_ptr<RVGitStash> RVGitStash::stashForRefName(
    const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const auto stashes = allStashesForRepository(repository, error);
    if (!stashes)
        return nullptr;
    const std::string fullRefName = RVGitMakeFullRefName(refName, RVGitRefTypeStash);
    for (const auto& stash : *stashes)
        if (stash->fullRefName() == fullRefName)
            return stash;
    clearErrorPlace(error);
    return nullptr;
}

std::shared_ptr<RVGitStash> RVGitStash::stashAtIndex(
    std::uint64_t index, const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const auto stashes = allStashesForRepository(repository, error);
    if (!stashes)
        return nullptr;
    if (index < stashes->size())
        return (*stashes)[index];
    clearErrorPlace(error);
    return nullptr;
}

std::shared_ptr<RVGitStash> RVGitStash::saveStashFromWorkingTreeInRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<std::string>& message,
    unsigned options, RVErrorPlace error) {
    const auto command = RVGitStashCommand::gitSaveStashCommandWithRepository(repository, message);
    command->setKeepsIndex((options & RVGitStashSaveOptionKeepsIndex) != 0);
    command->setIncludesUntrackedFiles((options & RVGitStashSaveOptionIncludesUntrackedFiles) != 0);
    // Where it was cancelled, what is at 0 may be another stash.
    const RVGitCancellationWatch watch;
    if (!command->run(error) || watch.isCancelled(error))
        return nullptr;
    return stashAtIndex(0, repository, error);
}

std::optional<std::string> RVGitStash::createStashFromWorkingTreeInRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<std::string>& message,
    RVErrorPlace error) {
    const auto command =
        RVGitStashCommand::gitCreateStashCommandWithRepository(repository, message);
    return command->run(error) ? command->commitHash() : std::nullopt;
}

bool RVGitStash::deleteStashAtIndex(std::uint64_t index,
                                    const std::shared_ptr<RVGitRepository>& repository,
                                    RVErrorPlace error) {
    return deleteStashWithRefName(makeFullRefNameWithStashIndex(index), repository, error);
}

bool RVGitStash::deleteStashWithRefName(const std::string& refName,
                                        const std::shared_ptr<RVGitRepository>& repository,
                                        RVErrorPlace error) {
    const auto stash = stashForRefName(refName, repository, error);
    return stash &&
           RVGitStashCommand::gitDeleteStashCommandWithRepository(repository, stash->refName())
               ->run(error);
}

bool RVGitStash::applyStashAtIndex(std::uint64_t index,
                                   const std::shared_ptr<RVGitRepository>& repository,
                                   bool deletingStash, RVErrorPlace error) {
    return applyStashWithRefName(makeFullRefNameWithStashIndex(index), repository, deletingStash,
                                 error);
}

bool RVGitStash::applyStashWithRefName(const std::string& refName,
                                       const std::shared_ptr<RVGitRepository>& repository,
                                       bool deletingStash, RVErrorPlace error) {
    return stashForRefName(refName, repository, error) &&
           RVGitStashCommand::gitApplyStashCommandWithRepository(repository, refName, deletingStash)
               ->run(error);
}

std::optional<std::string> RVGitStash::parseStashMessageFromCommitMessage(
    std::string_view commitMessage) {
    const auto colon = commitMessage.find(':');
    if (colon == std::string_view::npos ||
        commitMessage.substr(0, colon).starts_with(automaticMessagePrefix))
        return std::nullopt;
    return stringByTrimmingWhitespaceAndNewline(commitMessage.substr(colon + 1));
}

std::optional<std::string> RVGitStash::parseOriginBranchFromCommitMessage(
    std::string_view commitMessage) {
    const auto colon = commitMessage.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    const auto origin = commitMessage.substr(0, colon);
    for (const auto prefix : {automaticMessagePrefix, userMessagePrefix})
        if (origin.starts_with(prefix))
            return std::string(origin.substr(prefix.size()));
    return std::nullopt;
}

std::optional<std::string> RVGitStash::fullRefName() const {
    return ref_->fullRefName();
}
std::string RVGitStash::refName() const {
    return ref_->refName();
}
std::optional<std::string> RVGitStash::commitHash() const {
    return ref_->commitHash();
}
std::shared_ptr<RVGitCommit> RVGitStash::commit() {
    return ref_->commit();
}

std::uint64_t RVGitStash::index() const {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, R"(refs\/stash\@\{([0-9]+)\})", RVRegularExpression::CaseInsensitive);
    const std::string name = ref_->fullRefName().value_or("");
    const auto groups = expression->firstMatch(name);
    if (groups.size() != 2)
        throw RVInternalInconsistencyException("\"" + name + "\" is no entry of the stash list");
    return static_cast<std::uint64_t>(integerValue(*groups[1]));
}

std::optional<std::string> RVGitStash::originCommitHash() {
    return parentCommitHashAtIndex(0);
}
std::optional<std::string> RVGitStash::indexCommitHash() {
    return parentCommitHashAtIndex(1);
}
std::optional<std::string> RVGitStash::untrackedFilesCommitHash() {
    return parentCommitHashAtIndex(2);
}

std::optional<std::string> RVGitStash::parentCommitHashAtIndex(std::size_t index) {
    const auto commit = this->commit();
    if (!commit)
        return std::nullopt;
    const auto hashes = commit->parentCommitHashes();
    return index < hashes.size() ? std::optional(hashes[index]) : std::nullopt;
}
