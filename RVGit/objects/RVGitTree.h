#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/objects/RVGitObject.h"
#include "RVGit/objects/RVGitTreeEntry.h"

/// A directory as git keeps it, with its entries. It is known by its hash, or by a revision and a
/// path. A snapshot, readable on any thread.
class RVGIT_EXPORT RVGitTree : public RVGitObject {
public:
    using Entries = RVGitTreeEntry::Entries;

    /// The repository is required.
    RVGitTree(std::shared_ptr<RVGitRepository> repository, std::optional<std::string> treeHash,
              std::optional<std::string> revision, std::optional<std::string> filePath,
              Entries entries);

    [[nodiscard]] static std::shared_ptr<RVGitTree> treeWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string treeHash, Entries entries);
    [[nodiscard]] static std::shared_ptr<RVGitTree> treeWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::optional<std::string> revision,
        std::optional<std::string> filePath, Entries entries);

    /// Loads the entries of "revision:filePath", directories not entered; null on failure, with
    /// the codes of RVGitTreeEntry::allTreeEntriesForRevision().
    [[nodiscard]] static std::shared_ptr<RVGitTree> treeForRevision(
        const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitTree> treeForTreeHash(
        const std::string& treeHash, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitTree> rootTreeForRevision(
        const std::optional<std::string>& revision,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    /// These forward to the operations of the same names of RVGitTreeEntry.
    [[nodiscard]] static std::optional<Entries> allTreeEntriesForTreeHash(
        const std::string& treeHash, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<Entries> allTreeEntriesForRevision(
        const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<Entries> allTreeEntriesForRevision(
        const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
        const std::shared_ptr<RVGitRepository>& repository, unsigned options,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitTreeEntry> treeEntryForRevision(
        const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    [[nodiscard]] std::optional<std::string> treeHash() const { return objectHash(); }
    [[nodiscard]] std::optional<std::string> shortTreeHash() const { return shortObjectHash(); }
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    [[nodiscard]] const std::optional<std::string>& filePath() const { return filePath_; }
    [[nodiscard]] const Entries& entries() const { return entries_; }

private:
    std::optional<std::string> revision_;
    std::optional<std::string> filePath_;
    Entries entries_;
};
