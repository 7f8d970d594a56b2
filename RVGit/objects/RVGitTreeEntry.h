#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/objects/RVGitFileEntry.h"

/// How RVGitTreeEntry loads a tree.
enum RVGitTreeEntryOptions : unsigned {
    /// Goes into directories and lists the files alone.
    RVGitTreeEntryOptionRecursesDirectories = 1,
    /// Asks git for the sizes of blobs; they reach the result items of RVGitTreeCommand only.
    RVGitTreeEntryOptionIncludesFileSize = 2,
};

/// One line of a tree: a file, directory, link or submodule. A snapshot, readable on any thread.
class RVGIT_EXPORT RVGitTreeEntry : public RVGitFileEntry {
public:
    /// The repository is required. `fileSize` is not kept: see fileSize().
    RVGitTreeEntry(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                   RVGitObjectType objectType, std::optional<std::string> objectHash,
                   RVGitFileMode fileMode, std::uint64_t fileSize);

    [[nodiscard]] static std::shared_ptr<RVGitTreeEntry> treeEntryWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string filePath,
        RVGitObjectType objectType, std::optional<std::string> objectHash, RVGitFileMode fileMode,
        std::uint64_t fileSize);

    using Entries = std::vector<std::shared_ptr<RVGitTreeEntry>>;

    /// Runs `git ls-tree`; absent on failure: code 2900 if the object is no tree, 2901 if its name
    /// is unknown. Paths are relative to the tree.
    [[nodiscard]] static std::optional<Entries> allTreeEntriesForTreeHash(
        const std::string& treeHash, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    /// The same for "revision:directoryPath"; no path is the root. The entries' paths begin with
    /// the directory's. `options` are bits of RVGitTreeEntryOptions.
    [[nodiscard]] static std::optional<Entries> allTreeEntriesForRevision(
        const std::optional<std::string>& revision, const std::optional<std::string>& directoryPath,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::optional<Entries> allTreeEntriesForRevision(
        const std::optional<std::string>& revision, const std::optional<std::string>& directoryPath,
        const std::shared_ptr<RVGitRepository>& repository, unsigned options,
        RVErrorPlace error = nullptr);
    /// The one entry that stands at the path, a directory's own entry included; null with a
    /// cleared place if there is none.
    [[nodiscard]] static std::shared_ptr<RVGitTreeEntry> treeEntryForRevision(
        const std::optional<std::string>& revision, const std::optional<std::string>& filePath,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    [[nodiscard]] RVGitObjectType objectType() const { return objectType_; }
    /// Always 0, kept for compatibility; the size stands in the command's result item.
    [[nodiscard]] std::uint64_t fileSize() const { return 0; }

    [[nodiscard]] bool isTreeObject() const;
    [[nodiscard]] bool isBlobObject() const;
    [[nodiscard]] bool isCommitObject() const;

private:
    RVGitObjectType objectType_;
};
