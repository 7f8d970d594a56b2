#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/history/RVGitCommitOutputParser.h"

/// Runs `git stash`, in each of its forms. A factory chooses the form; of several fields that
/// choose one, the first in the order save, apply, delete, store, show, create counts, and without
/// any it is the list.
///
/// Failure: codes 2700 and 2701 for a save without a commit or without changes, 2702 for an apply
/// that ends in conflicts of contents, 2705 for one that local changes are in the way of (not with
/// deletesStash), 11 for a list that cannot be read. 2703, 2704, 2706 and 2707 are those of older
/// gits for a stash that does not exist; from newer ones that is the generic code 1.
///
/// Kept for compatibility: whatever the form, output that holds "No local changes to save" in any
/// case of the letters is code 2701, be it the message of a stash in the list.
class RVGIT_EXPORT RVGitStashCommand : public RVGitCommand {
public:
    /// The repository is required.
    explicit RVGitStashCommand(const std::shared_ptr<RVGitRepository>& repository);

    /// The list form.
    [[nodiscard]] static std::shared_ptr<RVGitStashCommand> gitStashCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitStashCommand> gitSaveStashCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message);
    [[nodiscard]] static std::shared_ptr<RVGitStashCommand> gitDeleteStashCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName);
    [[nodiscard]] static std::shared_ptr<RVGitStashCommand> gitApplyStashCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName,
        bool deletingStash);
    [[nodiscard]] static std::shared_ptr<RVGitStashCommand> gitCreateStashCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message);
    [[nodiscard]] static std::shared_ptr<RVGitStashCommand> gitStoreStashCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> message,
        std::optional<std::string> commitHash);
    [[nodiscard]] static std::shared_ptr<RVGitStashCommand> gitShowStashCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName);

    // The form.

    /// "push", or "save" with a git below 2.13.2, which takes no file paths.
    [[nodiscard]] bool savesStash() const { return savesStash_; }
    void setSavesStash(bool saves) { savesStash_ = saves; }
    /// "apply", or "pop" with deletesStash.
    [[nodiscard]] bool appliesStash() const { return appliesStash_; }
    void setAppliesStash(bool applies) { appliesStash_ = applies; }
    /// "drop".
    [[nodiscard]] bool deletesStash() const { return deletesStash_; }
    void setDeletesStash(bool deletes) { deletesStash_ = deletes; }
    [[nodiscard]] bool storesStash() const { return storesStash_; }
    void setStoresStash(bool stores) { storesStash_ = stores; }
    [[nodiscard]] bool showsStash() const { return showsStash_; }
    void setShowsStash(bool shows) { showsStash_ = shows; }
    [[nodiscard]] bool createsStash() const { return createsStash_; }
    void setCreatesStash(bool creates) { createsStash_ = creates; }

    // What it takes.

    /// Of the show form: the diff itself, in standardOutputData().
    [[nodiscard]] bool createsPatch() const { return createsPatch_; }
    void setCreatesPatch(bool creates) { createsPatch_ = creates; }
    /// Of the save form.
    [[nodiscard]] bool includesUntrackedFiles() const { return includesUntrackedFiles_; }
    void setIncludesUntrackedFiles(bool includes) { includesUntrackedFiles_ = includes; }
    /// Of the save form: what is staged stays in the working tree, and is saved as well.
    [[nodiscard]] bool keepsIndex() const { return keepsIndex_; }
    void setKeepsIndex(bool keeps) { keepsIndex_ = keeps; }
    /// Of the apply form: what was staged is staged again.
    [[nodiscard]] bool restoresIndex() const { return restoresIndex_; }
    void setRestoresIndex(bool restores) { restoresIndex_ = restores; }
    /// The last argument of any form; for the store form the hash of the commit.
    [[nodiscard]] const std::optional<std::string>& refName() const { return refName_; }
    void setRefName(std::optional<std::string> refName) { refName_ = std::move(refName); }
    /// Of the save, store and create forms.
    [[nodiscard]] const std::optional<std::string>& message() const { return message_; }
    void setMessage(std::optional<std::string> message) { message_ = std::move(message); }
    /// Of the save form: the only paths to save, as pathspecs; empty for all.
    [[nodiscard]] const std::vector<std::string>& filePaths() const { return filePaths_; }
    void setFilePaths(std::vector<std::string> filePaths) { filePaths_ = std::move(filePaths); }

    // Results, after the run.

    /// Of the list form: the newest stash first.
    [[nodiscard]] const std::vector<RVGitCommitOutputParserResultItem>& stashes() const {
        return stashes_;
    }
    /// Of the create form. Kept for compatibility: with the newline that git prints behind it.
    [[nodiscard]] const std::optional<std::string>& commitHash() const { return commitHash_; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    bool savesStash_ = false;
    bool appliesStash_ = false;
    bool deletesStash_ = false;
    bool storesStash_ = false;
    bool showsStash_ = false;
    bool createsStash_ = false;
    bool createsPatch_ = false;
    bool includesUntrackedFiles_ = false;
    bool keepsIndex_ = false;
    bool restoresIndex_ = false;
    std::optional<std::string> refName_;
    std::optional<std::string> message_;
    std::vector<std::string> filePaths_;
    std::vector<RVGitCommitOutputParserResultItem> stashes_;
    std::optional<std::string> commitHash_;
};
