#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitFilePathsCommand.h"

/// Runs `git update-index`. Failure: code 3000 if a file to be marked is not in the index.
class RVGIT_EXPORT RVGitUpdateIndexCommand : public RVGitFilePathsCommand {
public:
    /// The repository is required.
    explicit RVGitUpdateIndexCommand(const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitUpdateIndexCommand>
    gitUpdateIndexCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                        std::optional<std::vector<std::string>> filePaths);

    /// Takes a file that is in the index, but not in the working tree, for no failure.
    [[nodiscard]] bool ignoresMissingFiles() const { return ignoresMissingFiles_; }
    void setIgnoresMissingFiles(bool ignores) { ignoresMissingFiles_ = ignores; }
    /// Has git take the files for unchanged without looking at them.
    [[nodiscard]] bool setsAssumeUnchangedBit() const { return setsAssumeUnchangedBit_; }
    void setSetsAssumeUnchangedBit(bool sets) { setsAssumeUnchangedBit_ = sets; }
    [[nodiscard]] bool unsetsAssumeUnchangedBit() const { return unsetsAssumeUnchangedBit_; }
    void setUnsetsAssumeUnchangedBit(bool unsets) { unsetsAssumeUnchangedBit_ = unsets; }
    /// Makes a conflict of the index anew that has been resolved.
    [[nodiscard]] bool unresolves() const { return unresolves_; }
    void setUnresolves(bool unresolves) { unresolves_ = unresolves; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;

private:
    bool ignoresMissingFiles_ = false;
    bool setsAssumeUnchangedBit_ = false;
    bool unsetsAssumeUnchangedBit_ = false;
    bool unresolves_ = false;
};
