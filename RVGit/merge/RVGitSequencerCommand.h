#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// What `git cherry-pick` and `git revert` have in common, which take commits one after the other
/// and stop where one cannot be taken. They never open an editor.
///
/// Failure: code 2200 for a step that has stopped at conflicts, which leaves the operation under
/// way; from older gits 2001 if changes of the working tree are in the way, 2002 if conflicts are.
/// Everything else is code 1, a step without changes too, which leaves the operation under way as
/// well: ask RVGitMergeManager::currentMergeMode() after any failure. A revision that begins with
/// "-", even one that elsewhere only selects, is refused with code 1 before anything runs.
class RVGIT_EXPORT RVGitSequencerCommand : public RVGitCommand {
public:
    /// In the order in which they are taken; a range counts as git sorts it.
    [[nodiscard]] const std::optional<std::vector<std::string>>& revisions() const {
        return revisions_;
    }
    void setRevisions(std::optional<std::vector<std::string>> revisions) {
        revisions_ = std::move(revisions);
    }
    /// 0: none.
    [[nodiscard]] std::uint64_t mainlineParentNumber() const { return mainlineParentNumber_; }
    void setMainlineParentNumber(std::uint64_t number) { mainlineParentNumber_ = number; }
    [[nodiscard]] bool commitsChanges() const { return commitsChanges_; }
    void setCommitsChanges(bool commits) { commitsChanges_ = commits; }
    [[nodiscard]] bool fastForwards() const { return fastForwards_; }
    void setFastForwards(bool fastForwards) { fastForwards_ = fastForwards; }

    // What is done, instead, with what is under way.

    [[nodiscard]] bool continuesProcess() const { return continuesProcess_; }
    void setContinuesProcess(bool continues) { continuesProcess_ = continues; }
    /// Adds nothing with a git below 2.23.0, which then fails.
    [[nodiscard]] bool skipsProcess() const { return skipsProcess_; }
    void setSkipsProcess(bool skips) { skipsProcess_ = skips; }
    [[nodiscard]] bool abortsProcess() const { return abortsProcess_; }
    void setAbortsProcess(bool aborts) { abortsProcess_ = aborts; }
    [[nodiscard]] bool quitsProcess() const { return quitsProcess_; }
    void setQuitsProcess(bool quits) { quitsProcess_ = quits; }

protected:
    /// What tells one of the commands from the other: its word, and the keys of its options.
    struct Words {
        const char* command;
        const char* mainlineParentNumberOption;
        const char* commitChangesOption;
        const char* fastForwardOption;
    };
    /// The repository is required.
    RVGitSequencerCommand(const std::shared_ptr<RVGitRepository>& repository,
                          const std::optional<RVOptions>& options, const Words& words);

    void gitCommandWillInitialize() override;

private:
    const char* word_;
    std::optional<std::vector<std::string>> revisions_;
    std::uint64_t mainlineParentNumber_ = 0;
    bool commitsChanges_ = true;
    bool fastForwards_ = false;
    bool continuesProcess_ = false;
    bool skipsProcess_ = false;
    bool abortsProcess_ = false;
    bool quitsProcess_ = false;
};
