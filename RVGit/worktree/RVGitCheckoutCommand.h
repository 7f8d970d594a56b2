#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitFilePathsCommand.h"

/// Runs `git checkout`: of a revision, which moves HEAD and keeps changes or fails; or of paths,
/// which moves nothing and replaces the files, their changes being lost. Failure: code 1600 if
/// changes would have been overwritten.
class RVGIT_EXPORT RVGitCheckoutCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required.
    explicit RVGitCheckoutCommand(const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitCheckoutCommand> gitCheckoutCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> revision);
    [[nodiscard]] static std::shared_ptr<RVGitCheckoutCommand> gitCheckoutCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> revision,
        std::optional<std::vector<std::string>> filePaths);

    /// Absent with paths: their contents come from the index. "--ours" and "--theirs" stand here,
    /// too, and take one side of a conflict.
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }
    /// Throws changes away that stand in the way.
    [[nodiscard]] bool usesForce() const { return usesForce_; }
    void setUsesForce(bool uses) { usesForce_ = uses; }
    /// Of a revision: merges the changes into it. Of paths: makes a conflict anew.
    [[nodiscard]] bool usesMerge() const { return usesMerge_; }
    void setUsesMerge(bool uses) { usesMerge_ = uses; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::optional<std::string> revision_;
    bool usesForce_ = false;
    bool usesMerge_ = false;
};
