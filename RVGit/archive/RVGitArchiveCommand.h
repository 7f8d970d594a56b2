#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// What `git archive` is told to write. Any other number: git goes by the destination's extension.
enum RVGitArchiveFormat : std::int64_t {
    RVGitArchiveFormatNone = 0,
    RVGitArchiveFormatZip = 1,
    RVGitArchiveFormatTar = 2
};

/// Runs `git archive`, which packs a revision, or chosen paths of it, into a file. Attributes that
/// say what is left out or substituted are read from the working tree, too. Failure: code 1500 if
/// the revision cannot be resolved; 1 if no archive could be written, be it for a path that
/// does not exist, a destination that cannot be made or a full disk; 111 if its directory does not
/// exist, from a row that every command has.
///
/// git writes the destination itself from its start, also over a file that is there, and opens it
/// before it looks at the revision. What a failed or cancelled run has begun is removed if nothing
/// was there before, so that half an archive never stands as if it were whole; what it has begun to
/// write over a file that was there stays, cut off.
class RVGIT_EXPORT RVGitArchiveCommand : public RVGitCommand {
public:
    /// The repository is required. A relative destination is below the repository's path.
    RVGitArchiveCommand(const std::shared_ptr<RVGitRepository>& repository, std::string revision,
                        std::optional<std::vector<std::string>> filePaths, std::string destination);
    [[nodiscard]] static std::shared_ptr<RVGitArchiveCommand> gitArchiveCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::string revision,
        std::optional<std::vector<std::string>> filePaths, std::string destination);

    [[nodiscard]] const std::string& revision() const { return revision_; }
    void setRevision(std::string revision) { revision_ = std::move(revision); }
    /// What to pack, as pathspecs; absent or empty for all.
    [[nodiscard]] const std::optional<std::vector<std::string>>& filePaths() const {
        return filePaths_;
    }
    void setFilePaths(std::optional<std::vector<std::string>> filePaths) {
        filePaths_ = std::move(filePaths);
    }
    [[nodiscard]] const std::string& destination() const { return destination_; }
    void setDestination(std::string destination) { destination_ = std::move(destination); }
    [[nodiscard]] std::int64_t format() const { return format_; }
    void setFormat(std::int64_t format) { format_ = format; }

    /// The files and directories that were packed, in git's order, directories with a slash at the
    /// end. Empty after a failure. Kept for compatibility: they are the lines of standard error, so
    /// that a warning of git's stands among them.
    [[nodiscard]] const std::vector<std::string>& archivedFilePaths() const {
        return archivedFilePaths_;
    }
    void setArchivedFilePaths(std::vector<std::string> filePaths) {
        archivedFilePaths_ = std::move(filePaths);
    }
    [[nodiscard]] const std::vector<std::string>& archivedFilePathsResult() const {
        return archivedFilePaths_;
    }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    void gitCommandDidTerminate() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    [[nodiscard]] std::string absoluteDestination() const;

    std::string revision_;
    std::optional<std::vector<std::string>> filePaths_;
    std::string destination_;
    std::int64_t format_ = RVGitArchiveFormatNone;
    bool destinationWasThere_ = true;
    std::vector<std::string> archivedFilePaths_;
};
