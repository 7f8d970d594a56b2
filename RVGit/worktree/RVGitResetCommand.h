#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/command/RVGitCommand.h"

/// What a reset moves beside HEAD. Any other value counts as none.
enum RVGitResetMode : std::int64_t {
    /// The index, by git's own default.
    RVGitResetModeNone = 0,
    /// Nothing.
    RVGitResetModeSoft = 1,
    /// The index and the working tree: changes of files that git knows are lost.
    RVGitResetModeHard = 2,
    /// The index and the files that differ between the revisions; git fails rather than lose
    /// changes of them.
    RVGitResetModeKeep = 3,
};

/// Runs `git reset`. With paths it moves nothing but sets their index entries, and git takes no
/// mode.
class RVGitResetCommand : public RVGitCommand {
public:
    /// The code of the only error row, for a revision that cannot be resolved; the catalogue does
    /// not hold it.
    static constexpr std::int64_t unresolvedRevisionErrorCode = 3100;

    /// The repository is required. No mode, revision or paths.
    explicit RVGitResetCommand(const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitResetCommand> gitResetCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVGitResetMode mode,
        std::optional<std::string> revision);
    [[nodiscard]] static std::shared_ptr<RVGitResetCommand> gitResetCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVGitResetMode mode,
        std::optional<std::string> revision, std::optional<std::vector<std::string>> filePaths);

    [[nodiscard]] RVGitResetMode mode() const { return mode_; }
    void setMode(RVGitResetMode mode) { mode_ = mode; }
    /// Absent: HEAD.
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }
    /// Patterns, as git reads them: see RVGitWorkingTreeManager.
    [[nodiscard]] const std::optional<std::vector<std::string>>& filePaths() const {
        return filePaths_;
    }
    void setFilePaths(std::optional<std::vector<std::string>> filePaths) {
        filePaths_ = std::move(filePaths);
    }

    /// Kept for compatibility: the row is not registered, so that such a failure is the generic
    /// error.
    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;

private:
    RVGitResetMode mode_ = RVGitResetModeNone;
    std::optional<std::string> revision_;
    std::optional<std::vector<std::string>> filePaths_;
};
