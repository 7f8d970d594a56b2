#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// Runs `git mv`. Paths are taken as they are, but no "--" stands before them, so that one with a
/// leading dash has to be written "./-name". Failure: code 2100 if the destination exists, 2101 if
/// its directory does not, 2102 if the source is not under version control, 2103 if a path is
/// outside the working tree, 2104 if a directory is to be moved into itself, 2105 if the source is
/// a directory in which git knows no file, 2106 if the source does not exist.
class RVGIT_EXPORT RVGitMoveCommand : public RVGitCommand {
public:
    /// The repository is required.
    explicit RVGitMoveCommand(const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitMoveCommand> gitMoveCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        std::optional<std::string> sourceFilePath, std::optional<std::string> destinationFilePath);

    [[nodiscard]] const std::optional<std::string>& sourceFilePath() const {
        return sourceFilePath_;
    }
    void setSourceFilePath(std::optional<std::string> path) { sourceFilePath_ = std::move(path); }
    [[nodiscard]] const std::optional<std::string>& destinationFilePath() const {
        return destinationFilePath_;
    }
    void setDestinationFilePath(std::optional<std::string> path) {
        destinationFilePath_ = std::move(path);
    }
    /// Replaces a file at the destination.
    [[nodiscard]] bool forcesRename() const { return forcesRename_; }
    void setForcesRename(bool forces) { forcesRename_ = forces; }
    /// Leaves out, without a failure, what cannot be moved.
    [[nodiscard]] bool ignoresErrors() const { return ignoresErrors_; }
    void setIgnoresErrors(bool ignores) { ignoresErrors_ = ignores; }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;

private:
    std::optional<std::string> sourceFilePath_;
    std::optional<std::string> destinationFilePath_;
    bool forcesRename_ = false;
    bool ignoresErrors_ = false;
};
