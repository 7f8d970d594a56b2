#pragma once

#include <memory>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// Runs `git merge-tree --write-tree`: makes the merge that `git merge` would make, with its
/// renames and its merge of several bases, but neither in the working tree nor in the index, and
/// tells the paths at which it would stop. The trees and files that it makes stay in the object
/// database until git collects its garbage. For git 2.38 and later; an older one is not launched.
///
/// Failure: code 1 for a git that is too old, which is said under RVGitCommandErrorOutputErrorKey,
/// for a revision that git does not know or that begins with "-", and for histories without a
/// common commit; 11 if the output cannot be read.
class RVGIT_EXPORT RVGitConflictingFilePathsCommand : public RVGitCommand {
public:
    /// The repository is required.
    RVGitConflictingFilePathsCommand(const std::shared_ptr<RVGitRepository>& repository,
                                     std::string revision, std::string intoRevision);
    [[nodiscard]] static std::shared_ptr<RVGitConflictingFilePathsCommand>
    gitConflictingFilePathsCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository,
                                                 std::string revision, std::string intoRevision);

    /// Whether the git has what this needs.
    [[nodiscard]] static bool isSupportedByGitBinary(const RVGitBinary& gitBinary);

    /// What is merged.
    [[nodiscard]] const std::string& revision() const { return revision_; }
    [[nodiscard]] const std::string& intoRevision() const { return intoRevision_; }

    /// In git's order, each once, after the run; empty if the merge is clean. Where a file was
    /// renamed, the names that the conflict would bear.
    [[nodiscard]] const std::vector<std::string>& conflictingFilePaths() const {
        return conflictingFilePaths_;
    }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandShouldHandleError(const RVError& error) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::string revision_;
    std::string intoRevision_;
    std::vector<std::string> conflictingFilePaths_;
};
