#include "RVGit/worktree/RVGitAttributes.h"

#include <utility>

#include "RVGit/worktree/RVGitCheckAttrCommand.h"

namespace {

using AttributesList = std::vector<std::shared_ptr<RVGitAttributes>>;

std::optional<AttributesList> attributesFromCommand(
    RVGitCheckAttrCommand& command, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    if (!command.run(error))
        return std::nullopt;
    auto items = command.takeAttributes();
    AttributesList list;
    list.reserve(items.size());
    for (auto& item : items)
        list.push_back(RVGitAttributes::gitAttributesWithRepository(
            repository, std::move(item.filePath), std::move(item.attributes)));
    return list;
}

[[noreturn]] void failAsNotImplemented() {
    throw RVInternalInconsistencyException("Not implemented yet.");
}

}  // namespace

RVGitAttributes::RVGitAttributes(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                                 RVValue::StringMap attributes)
    : repository_(std::move(repository)),
      filePath_(std::move(filePath)),
      attributes_(std::move(attributes)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitAttributes> RVGitAttributes::gitAttributesWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string filePath,
    RVValue::StringMap attributes) {
    return std::make_shared<RVGitAttributes>(std::move(repository), std::move(filePath),
                                             std::move(attributes));
}

std::optional<AttributesList> RVGitAttributes::allEffectiveGitAttributesForFilePaths(
    const std::vector<std::string>& filePaths, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const auto command =
        RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(repository, filePaths);
    command->setReadsNULSeparatedOutput(true);
    return attributesFromCommand(*command, repository, error);
}

std::optional<AttributesList> RVGitAttributes::allGitAttributesForFilePaths(
    const std::vector<std::string>& filePaths, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const auto command =
        RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(repository, filePaths);
    return attributesFromCommand(*command, repository, error);
}

std::shared_ptr<RVGitAttributes> RVGitAttributes::gitAttributesForFilePath(
    const std::string& filePath, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    const auto list = allGitAttributesForFilePaths({filePath}, repository, error);
    if (!list)
        return nullptr;
    return list->empty() ? gitAttributesWithRepository(repository, filePath, {}) : list->back();
}

bool RVGitAttributes::setGitAttributeWithName(const std::string&, const std::string&,
                                              const std::shared_ptr<RVGitRepository>&,
                                              RVErrorPlace) {
    failAsNotImplemented();
}

bool RVGitAttributes::setValue(const std::string&, const std::string&, const std::string&,
                               const std::shared_ptr<RVGitRepository>&, RVErrorPlace) {
    failAsNotImplemented();
}

bool RVGitAttributes::unsetGitAttributeWithName(const std::string&, const std::string&,
                                                const std::shared_ptr<RVGitRepository>&,
                                                RVErrorPlace) {
    failAsNotImplemented();
}

bool RVGitAttributes::removeGitAttributeWithName(const std::string&, const std::string&,
                                                 const std::shared_ptr<RVGitRepository>&,
                                                 RVErrorPlace) {
    failAsNotImplemented();
}

bool RVGitAttributes::isGitAttributeSetWithName(std::string_view name) const {
    const auto found = attributes_.find(name);
    return found != attributes_.end() && found->second != "unspecified";
}

std::optional<std::string> RVGitAttributes::valueForGitAttributeWithName(
    std::string_view name) const {
    const auto found = attributes_.find(name);
    return found == attributes_.end() ? std::nullopt : std::optional(found->second);
}
