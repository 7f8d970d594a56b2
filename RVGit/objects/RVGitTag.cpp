#include "RVGit/objects/RVGitTag.h"

#include <utility>

#include "RVGit/base/RVString.h"
#include "RVGit/base/RVUnicodeSearch.h"
#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"
#include "RVGit/objects/RVGitForEachRefTagOutputParser.h"
#include "RVGit/objects/RVGitTagCommand.h"
#include "RVGit/objects/RVGitVerifyTagCommand.h"

RVGitTag::RVGitTag(std::shared_ptr<RVGitRepository> repository, std::shared_ptr<RVGitRef> ref,
                   std::optional<std::string> objectHash, std::optional<std::string> message,
                   std::optional<RVDate> creatorDate)
    : RVGitObject(std::move(repository), objectHash ? RVGitObjectTypeTag : RVGitObjectTypeNone,
                  std::move(objectHash)),
      ref_(std::move(ref)),
      creatorDate_(creatorDate) {
    requireParameter(ref_ != nullptr, "ref");
    if (this->objectHash().has_value())
        message_ = std::move(message);
}

std::shared_ptr<RVGitTag> RVGitTag::tagWithRepository(std::shared_ptr<RVGitRepository> repository,
                                                      std::shared_ptr<RVGitRef> ref,
                                                      std::optional<std::string> objectHash,
                                                      std::optional<std::string> message,
                                                      std::optional<RVDate> creatorDate) {
    return std::make_shared<RVGitTag>(std::move(repository), std::move(ref), std::move(objectHash),
                                      std::move(message), creatorDate);
}

std::optional<std::vector<std::shared_ptr<RVGitTag>>> RVGitTag::allTagsForRepository(
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    auto command = RVGitForEachRefCommand::gitForEachRefCommandWithRepository(repository);
    command->setOutputParserClass<RVGitForEachRefTagOutputParser>();
    command->setFormat(RVGitForEachRefTagOutputParser::format());
    command->setPattern("refs/tags");
    if (!command->run(error))
        return std::nullopt;
    auto items = command->takeResult<RVGitForEachRefTagOutputParserResultItem>();
    std::vector<std::shared_ptr<RVGitTag>> tags;
    tags.reserve(items.size());
    for (auto& item : items) {
        auto ref = RVGitRef::refWithRepository(repository, std::move(item.fullRefName),
                                               std::move(item.commitHash));
        tags.push_back(tagWithRepository(repository, std::move(ref), std::move(item.tagObjectHash),
                                         std::move(item.message), item.creatorDate));
    }
    return tags;
}

std::shared_ptr<RVGitTag> RVGitTag::tagForRefName(
    const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const auto tags = allTagsForRepository(repository, error);
    if (!tags)
        return nullptr;
    const std::string fullRefName = RVGitRef::makeFullRefName(refName, RVGitRefTypeTag);
    const auto found = RVFindUnicodeName(tags->begin(), tags->end(), fullRefName,
                                         [](const auto& tag) { return tag->fullRefName(); });
    if (found != tags->end())
        return *found;
    clearErrorPlace(error);
    return nullptr;
}

std::shared_ptr<RVGitTag> RVGitTag::createTagWithRefName(
    const std::string& refName, const std::optional<std::string>& revision,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    return createTagWithRefName(refName, std::nullopt, revision, repository, error);
}

std::shared_ptr<RVGitTag> RVGitTag::createTagWithRefName(
    const std::string& refName, const std::optional<std::string>& message,
    const std::optional<std::string>& revision, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    auto command =
        RVGitTagCommand::gitCreateTagCommandWithRepository(repository, refName, revision, message);
    const RVGitCancellationWatch watch;
    // Where it was cancelled, one of that name is an older one.
    if (!command->run(error) || watch.isCancelled(error))
        return nullptr;
    return tagForRefName(refName, repository, error);
}

bool RVGitTag::deleteTagWithRefName(const std::string& refName,
                                    const std::shared_ptr<RVGitRepository>& repository,
                                    RVErrorPlace error) {
    return RVGitTagCommand::gitDeleteTagCommandWithRepository(repository, {refName})->run(error);
}

std::shared_ptr<RVGitSignature> RVGitTag::verifyTagWithRefName(
    const std::string& refName, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    return verifyTagWithRefName(refName, std::nullopt, repository, error);
}

std::shared_ptr<RVGitSignature> RVGitTag::verifyTagWithRefName(
    const std::string& refName, const std::optional<std::string>& allowedSignersFilePath,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    auto command = RVGitVerifyTagCommand::gitVerifyTagCommandWithRepository(repository, refName);
    command->setAllowedSignersFilePath(allowedSignersFilePath);
    const bool succeeded = command->run(error);
    if (command->signature() && !succeeded)
        clearErrorPlace(error);
    return command->signature();
}

std::optional<std::string> RVGitTag::fullRefName() const {
    return ref_->fullRefName();
}
std::string RVGitTag::refName() const {
    return ref_->refName();
}
std::optional<std::string> RVGitTag::commitHash() const {
    return ref_->commitHash();
}
std::shared_ptr<RVGitCommit> RVGitTag::commit() {
    return ref_->commit();
}
