#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/history/RVGitBlameOutputParser.h"

/// Runs `git blame --porcelain` for a file as it was in a revision. Code 11 for hashes of 64
/// digits.
class RVGIT_EXPORT RVGitBlameCommand : public RVGitCommand {
public:
    /// The repository is required.
    RVGitBlameCommand(const std::shared_ptr<RVGitRepository>& repository,
                      std::optional<std::string> revision, std::optional<std::string> filePath);

    [[nodiscard]] static std::shared_ptr<RVGitBlameCommand> gitBlameCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> revision,
        std::optional<std::string> filePath);

    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }
    [[nodiscard]] const std::optional<std::string>& filePath() const { return filePath_; }
    void setFilePath(std::optional<std::string> filePath) { filePath_ = std::move(filePath); }

    /// The lines of the file once the command has run: whatever could be read, also where git
    /// failed in between.
    [[nodiscard]] const std::vector<RVGitBlameOutputParserResultItem>& annotatedLines() const {
        return annotatedLines_;
    }
    /// Moves the lines out of the command.
    [[nodiscard]] std::vector<RVGitBlameOutputParserResultItem> takeAnnotatedLines() {
        return std::move(annotatedLines_);
    }

protected:
    void gitCommandWillInitialize() override;
    void gitCommandDidTerminate() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;

private:
    std::optional<std::string> revision_;
    std::optional<std::string> filePath_;
    std::vector<RVGitBlameOutputParserResultItem> annotatedLines_;
};
