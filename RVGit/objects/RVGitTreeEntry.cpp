#include "RVGit/objects/RVGitTreeEntry.h"

#include <utility>

#include "RVGit/base/RVPath.h"
#include "RVGit/objects/RVGitTreeCommand.h"

namespace {

std::optional<RVGitTreeEntry::Entries> treeEntriesOfCommand(
    RVGitTreeCommand& command, const std::shared_ptr<RVGitRepository>& repository,
    const std::optional<std::string>& directoryPath, RVErrorPlace error) {
    if (!command.run(error))
        return std::nullopt;
    RVGitTreeEntry::Entries entries;
    entries.reserve(command.treeEntries().size());
    for (const auto& item : command.treeEntries())
        entries.push_back(RVGitTreeEntry::treeEntryWithRepository(
            repository,
            directoryPath ? pathByAppendingComponent(*directoryPath, item.filePath) : item.filePath,
            item.objectType, item.objectHash, item.fileMode, item.fileSize));
    return entries;
}

}  // namespace

RVGitTreeEntry::RVGitTreeEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                               RVGitObjectType objectType, std::optional<std::string> objectHash,
                               RVGitFileMode fileMode, std::uint64_t)
    : RVGitFileEntry(std::move(repository), std::move(filePath), std::move(objectHash), fileMode),
      objectType_(objectType) {}

std::shared_ptr<RVGitTreeEntry> RVGitTreeEntry::treeEntryWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string filePath, RVGitObjectType objectType,
    std::optional<std::string> objectHash, RVGitFileMode fileMode, std::uint64_t fileSize) {
    return std::make_shared<RVGitTreeEntry>(std::move(repository), std::move(filePath), objectType,
                                            std::move(objectHash), fileMode, fileSize);
}

std::optional<RVGitTreeEntry::Entries> RVGitTreeEntry::allTreeEntriesForTreeHash(
    const std::string& treeHash, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    auto command = RVGitTreeCommand::gitTreeCommandWithRepository(repository, treeHash);
    return treeEntriesOfCommand(*command, repository, std::nullopt, error);
}

std::optional<RVGitTreeEntry::Entries> RVGitTreeEntry::allTreeEntriesForRevision(
    const std::optional<std::string>& revision, const std::optional<std::string>& directoryPath,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    return allTreeEntriesForRevision(revision, directoryPath, repository, 0, error);
}

std::optional<RVGitTreeEntry::Entries> RVGitTreeEntry::allTreeEntriesForRevision(
    const std::optional<std::string>& revision, const std::optional<std::string>& directoryPath,
    const std::shared_ptr<RVGitRepository>& repository, unsigned options, RVErrorPlace error) {
    auto command = RVGitTreeCommand::gitTreeCommandWithRepositoryDirectoryPath(repository, revision,
                                                                               directoryPath);
    command->setRecursesDirectories(options & RVGitTreeEntryOptionRecursesDirectories);
    command->setIncludesFileSize(options & RVGitTreeEntryOptionIncludesFileSize);
    return treeEntriesOfCommand(*command, repository, directoryPath, error);
}

std::shared_ptr<RVGitTreeEntry> RVGitTreeEntry::treeEntryForRevision(
    const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    auto command =
        RVGitTreeCommand::gitTreeCommandWithRepositoryFilePath(repository, revision, filePath);
    auto entries = treeEntriesOfCommand(*command, repository, std::nullopt, error);
    if (!entries)
        return nullptr;
    if (entries->empty()) {
        clearErrorPlace(error);
        return nullptr;
    }
    return entries->back();
}

bool RVGitTreeEntry::isTreeObject() const {
    return objectType_ == RVGitObjectTypeTree;
}
bool RVGitTreeEntry::isBlobObject() const {
    return objectType_ == RVGitObjectTypeBlob;
}
bool RVGitTreeEntry::isCommitObject() const {
    return objectType_ == RVGitObjectTypeCommit;
}
