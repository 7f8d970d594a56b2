#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitFilePathsCommand.h"

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
class RVGIT_EXPORT RVGitResetCommand : public RVGitFilePathsCommand {
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

    /// Kept for compatibility: the row is not registered, so that such a failure is the generic
    /// error.
    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;

private:
    RVGitResetMode mode_ = RVGitResetModeNone;
    std::optional<std::string> revision_;
};
