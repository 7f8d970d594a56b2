#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitFilePathsCommand.h"

/// Runs `git add`. Without paths and without updatesAllFiles() git adds nothing and succeeds.
/// Failure: code 1300 if a path matches no file.
class RVGIT_EXPORT RVGitAddCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required.
    explicit RVGitAddCommand(const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitAddCommand> gitAddCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitAddCommand> gitAddCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::vector<std::string>> filePaths);

    /// Stages removals, too; without paths, everything.
    [[nodiscard]] bool updatesAllFiles() const { return updatesAllFiles_; }
    void setUpdatesAllFiles(bool updates) { updatesAllFiles_ = updates; }
    /// Goes on with the other files where one cannot be added; git then fails at the end.
    [[nodiscard]] bool ignoresErrors() const { return ignoresErrors_; }
    void setIgnoresErrors(bool ignores) { ignoresErrors_ = ignores; }
    /// Git accepts this in a dry run only ("--dry-run", an option that the caller adds).
    [[nodiscard]] bool ignoresMissingFiles() const { return ignoresMissingFiles_; }
    void setIgnoresMissingFiles(bool ignores) { ignoresMissingFiles_ = ignores; }
    /// Adds ignored files.
    [[nodiscard]] bool forcesAdd() const { return forcesAdd_; }
    void setForcesAdd(bool forces) { forcesAdd_ = forces; }
    /// Adds the name without the contents.
    [[nodiscard]] bool intentsToAdd() const { return intentsToAdd_; }
    void setIntentsToAdd(bool intents) { intentsToAdd_ = intents; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    bool updatesAllFiles_ = false;
    bool ignoresErrors_ = false;
    bool ignoresMissingFiles_ = false;
    bool forcesAdd_ = false;
    bool intentsToAdd_ = false;
};
