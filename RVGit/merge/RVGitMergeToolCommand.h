#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// Runs `git mergetool`, which starts a program in which a person resolves the conflicts of a file,
/// and stages the file when the program says that it is resolved. It runs as long as that program
/// does: RVGitMergeTool runs it without blocking the caller. Failure: code 2004, with the path, if
/// the tool did not resolve the conflicts.
class RVGIT_EXPORT RVGitMergeToolCommand : public RVGitCommand {
public:
    /// The repository is required.
    explicit RVGitMergeToolCommand(const std::shared_ptr<RVGitRepository>& repository,
                                   std::optional<std::string> filePath = std::nullopt);
    [[nodiscard]] static std::shared_ptr<RVGitMergeToolCommand> gitMergeToolCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::string> filePath = std::nullopt);

    /// From the top of the working tree. Absent: every conflicted file, one after the other.
    [[nodiscard]] const std::optional<std::string>& filePath() const { return filePath_; }
    void setFilePath(std::optional<std::string> filePath) { filePath_ = std::move(filePath); }
    /// A tool that git knows or the configuration defines; absent: that of "merge.tool".
    [[nodiscard]] const std::optional<std::string>& mergeToolName() const { return mergeToolName_; }
    void setMergeToolName(std::optional<std::string> name) { mergeToolName_ = std::move(name); }
    /// Whether the file with its conflict markers stays, as "NAME.orig". Whatever the user's
    /// configuration says of it.
    [[nodiscard]] bool keepsBackupFiles() const { return keepsBackupFiles_; }
    void setKeepsBackupFiles(bool keeps) { keepsBackupFiles_ = keeps; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;

private:
    std::optional<std::string> filePath_;
    std::optional<std::string> mergeToolName_;
    bool keepsBackupFiles_ = false;
};
