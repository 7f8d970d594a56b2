#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitFilePathsCommand.h"

/// Runs `git rm`, always with "-f": files with changes, staged or not, are removed as well and
/// their contents lost. Failure: code 2600 if the system does not permit the removal, 2601 if git
/// refuses to lose changes.
class RVGIT_EXPORT RVGitRmCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required.
    explicit RVGitRmCommand(const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitRmCommand> gitRmCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitRmCommand> gitRmCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::vector<std::string>> filePaths);

    /// Takes directories with all that git knows in them.
    [[nodiscard]] bool removesFilesRecursively() const { return removesFilesRecursively_; }
    void setRemovesFilesRecursively(bool removes) { removesFilesRecursively_ = removes; }
    /// Leaves the files in the working tree.
    [[nodiscard]] bool removesFilesFromIndex() const { return removesFilesFromIndex_; }
    void setRemovesFilesFromIndex(bool removes) { removesFilesFromIndex_ = removes; }
    /// Takes a path that git does not know for no failure.
    [[nodiscard]] bool ignoresUnmatched() const { return ignoresUnmatched_; }
    void setIgnoresUnmatched(bool ignores) { ignoresUnmatched_ = ignores; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;

private:
    bool removesFilesRecursively_ = false;
    bool removesFilesFromIndex_ = false;
    bool ignoresUnmatched_ = false;
};
