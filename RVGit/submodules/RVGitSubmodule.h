#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "RVGit/base/RVExport.h"
#include "RVGit/submodules/RVGitSubmoduleConfig.h"
#include "RVGit/submodules/RVGitSubmoduleHelper.h"

class RVGitCommit;
class RVGitRemote;
class RVGitRepository;

/// How a submodule keeps its git directory.
enum RVGitSubmoduleLayoutFormat : std::int64_t {
    /// Nothing that could be opened.
    RVGitSubmoduleLayoutFormatUnknown = 0,
    /// In the superproject's "modules", with a link file in the working tree.
    RVGitSubmoduleLayoutFormatLinked = 1,
    /// ".git" in the working tree is a directory, as with gits before 1.7.8.
    RVGitSubmoduleLayoutFormatEmbedded = 2,
};

/// One submodule of a repository, joined from the index, ".gitmodules", the repository's own
/// configuration and the working tree. A snapshot that stays on one thread: what is filled when it
/// is first asked for takes no lock. RVGitSubmoduleLoader makes them.
class RVGIT_EXPORT RVGitSubmodule {
public:
    /// The repository is required.
    RVGitSubmodule(std::shared_ptr<RVGitRepository> repository, std::string name, std::string path);
    [[nodiscard]] static std::shared_ptr<RVGitSubmodule> submoduleWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string name, std::string path);

    /// The superproject.
    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    /// Of its section in the configuration; the path where it has none.
    [[nodiscard]] const std::string& name() const { return name_; }
    /// From the top of the superproject's working tree. Where ".gitmodules" alone gives it, it may
    /// be anything.
    [[nodiscard]] const std::string& path() const { return path_; }

    /// What is checked out; absent where that is not known.
    [[nodiscard]] const std::optional<std::string>& commitHash() const { return commitHash_; }
    void setCommitHash(std::optional<std::string> hash) { commitHash_ = std::move(hash); }
    /// What the superproject's index records; of a conflict, one side.
    [[nodiscard]] const std::optional<std::string>& indexCommitHash() const {
        return indexCommitHash_;
    }
    void setIndexCommitHash(std::optional<std::string> hash) { indexCommitHash_ = std::move(hash); }
    /// Git's name for what is checked out: "heads/main", "v1.0-2-g0123abc".
    [[nodiscard]] const std::optional<std::string>& describe() const { return describe_; }
    void setDescribe(std::optional<std::string> describe) { describe_ = std::move(describe); }
    /// Whether git calls it dirty. Files that are only untracked do not count from git 2.31 on:
    /// RVGitSubmoduleManager::submoduleContainsUncommittedWork() asks for all.
    [[nodiscard]] bool isDirty() const { return dirty_; }
    void setDirty(bool dirty) { dirty_ = dirty; }
    [[nodiscard]] RVGitSubmoduleStatus status() const { return status_; }
    void setStatus(RVGitSubmoduleStatus status) { status_ = status; }
    /// From ".gitmodules"; null without a section there.
    [[nodiscard]] const std::shared_ptr<RVGitSubmoduleConfig>& config() const { return config_; }
    void setConfig(std::shared_ptr<RVGitSubmoduleConfig> config) { config_ = std::move(config); }
    /// From the repository's configuration.
    [[nodiscard]] const std::shared_ptr<RVGitSubmoduleConfig>& localConfig() const {
        return localConfig_;
    }
    void setLocalConfig(std::shared_ptr<RVGitSubmoduleConfig> config) {
        localConfig_ = std::move(config);
    }
    /// For callers; the library neither sets nor reads it.
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }

    // Of the two configurations the local one counts where it has a value.

    [[nodiscard]] std::optional<std::string> URL() const;
    [[nodiscard]] std::optional<std::string> upstreamBranch() const;
    [[nodiscard]] RVGitSubmoduleUpdateStrategy updateStrategy() const;
    [[nodiscard]] RVGitSubmoduleStatusIgnoreMode statusIgnoreMode() const;
    [[nodiscard]] RVGitSubmoduleRecurseSubmodulesOption recurseSubmodules() const;

    /// Whether nothing is missing; true for one that is not initialized.
    [[nodiscard]] bool isValid() const;
    /// Whether it has been initialized; true for each status but the uninitialized one, for which
    /// the local configuration must have an address.
    [[nodiscard]] bool isRegistered() const;

    // Each runs git when it is first asked for, once for the object.

    [[nodiscard]] RVGitSubmoduleLayoutFormat layoutFormat();
    /// What git finds at the path; null for an uninitialized submodule. It may be invalid; and
    /// where the path has no repository of its own, it is the superproject.
    [[nodiscard]] std::shared_ptr<RVGitRepository> submoduleRepository();
    /// `commitHash` as a commit of the superproject, kept for compatibility: null, since the commit
    /// is one of the submodule, unless the superproject happens to have it.
    [[nodiscard]] std::shared_ptr<RVGitCommit> commit();
    /// Null without a repository or a remote "origin".
    [[nodiscard]] std::shared_ptr<RVGitRemote> originRemote();
    /// How many commits what is checked out has that the recorded commit has not; 0 unless the
    /// status is updated, and on failure.
    [[nodiscard]] std::uint64_t updatedCommitsAhead();
    /// The other way round.
    [[nodiscard]] std::uint64_t updatedCommitsBehind();
    /// How many paths have changed; 0 unless it is dirty, valid, and its status is not ignored.
    [[nodiscard]] std::uint64_t numberOfDirtyChanges();

    [[nodiscard]] bool loadedUpdatedCommitsAhead() const {
        return updatedCommitsAhead_.has_value();
    }
    [[nodiscard]] bool loadedUpdatedCommitsBehind() const {
        return updatedCommitsBehind_.has_value();
    }
    [[nodiscard]] bool loadedNumberOfDirtyChanges() const {
        return numberOfDirtyChanges_.has_value();
    }

private:
    [[nodiscard]] bool hasUpdatedCommits() const;
    [[nodiscard]] std::uint64_t countCommits(const std::string& fromRevision,
                                             const std::string& toRevision);

    std::shared_ptr<RVGitRepository> repository_;
    std::string name_;
    std::string path_;
    std::optional<std::string> commitHash_;
    std::optional<std::string> indexCommitHash_;
    std::optional<std::string> describe_;
    bool dirty_ = false;
    RVGitSubmoduleStatus status_ = RVGitSubmoduleStatusNone;
    std::shared_ptr<RVGitSubmoduleConfig> config_;
    std::shared_ptr<RVGitSubmoduleConfig> localConfig_;
    std::optional<std::string> revision_;
    std::shared_ptr<RVGitRepository> submoduleRepository_;
    std::optional<std::shared_ptr<RVGitCommit>> commit_;
    std::optional<std::shared_ptr<RVGitRemote>> originRemote_;
    std::optional<std::uint64_t> updatedCommitsAhead_;
    std::optional<std::uint64_t> updatedCommitsBehind_;
    std::optional<std::uint64_t> numberOfDirtyChanges_;
};
