#include "RVGit/objects/RVGitTree.h"

#include <utility>

RVGitTree::RVGitTree(std::shared_ptr<RVGitRepository> repository,
                     std::optional<std::string> treeHash, std::optional<std::string> revision,
                     std::optional<std::string> filePath, Entries entries)
    : RVGitObject(std::move(repository), RVGitObjectTypeTree, std::move(treeHash)),
      revision_(std::move(revision)),
      filePath_(std::move(filePath)),
      entries_(std::move(entries)) {}

std::shared_ptr<RVGitTree> RVGitTree::treeWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string treeHash, Entries entries) {
    return std::make_shared<RVGitTree>(std::move(repository), std::move(treeHash), std::nullopt,
                                       std::nullopt, std::move(entries));
}

std::shared_ptr<RVGitTree> RVGitTree::treeWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::optional<std::string> revision,
    std::optional<std::string> filePath, Entries entries) {
    return std::make_shared<RVGitTree>(std::move(repository), std::nullopt, std::move(revision),
                                       std::move(filePath), std::move(entries));
}

std::shared_ptr<RVGitTree> RVGitTree::treeForRevision(
    const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    auto entries = allTreeEntriesForRevision(revision, filePath, repository, error);
    if (!entries)
        return nullptr;
    return treeWithRepository(repository, revision, filePath, std::move(*entries));
}

std::shared_ptr<RVGitTree> RVGitTree::treeForTreeHash(
    const std::string& treeHash, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    auto entries = allTreeEntriesForTreeHash(treeHash, repository, error);
    if (!entries)
        return nullptr;
    return treeWithRepository(repository, treeHash, std::move(*entries));
}

std::shared_ptr<RVGitTree> RVGitTree::rootTreeForRevision(
    const std::optional<std::string>& revision, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    return treeForRevision(revision, std::nullopt, repository, error);
}

std::optional<RVGitTree::Entries> RVGitTree::allTreeEntriesForTreeHash(
    const std::string& treeHash, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    return RVGitTreeEntry::allTreeEntriesForTreeHash(treeHash, repository, error);
}

std::optional<RVGitTree::Entries> RVGitTree::allTreeEntriesForRevision(
    const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    return RVGitTreeEntry::allTreeEntriesForRevision(revision, filePath, repository, error);
}

std::optional<RVGitTree::Entries> RVGitTree::allTreeEntriesForRevision(
    const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
    const std::shared_ptr<RVGitRepository>& repository, unsigned options, RVErrorPlace error) {
    return RVGitTreeEntry::allTreeEntriesForRevision(revision, filePath, repository, options,
                                                     error);
}

std::shared_ptr<RVGitTreeEntry> RVGitTree::treeEntryForRevision(
    const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    return RVGitTreeEntry::treeEntryForRevision(revision, filePath, repository, error);
}
