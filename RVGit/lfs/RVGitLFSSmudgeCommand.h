#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/lfs/RVGitLFSCommand.h"

class RVGitLFSPointer;

/// Runs `git lfs smudge` on a pointer, which gives the contents that it stands for, fetched from
/// the server if they are not here.
///
/// The pointer is handed over in the file "/tmp/smudge_input", which is fixed, so that one smudge
/// of a user runs at a time: it holds a lock on "/tmp/smudge_input.lock" from the writing of the
/// file to its removal, and the others, of this process or another, wait for it; cancel() ends the
/// wait. A link at either path is never followed, and what is no regular file of this user is
/// neither read nor replaced: that fails with the error of the system and the path, before git is
/// launched.
///
/// Other failures: code 1, above all where the contents are neither here nor with the server. Kept
/// for compatibility: it is no failure where git-lfs prints the pointer in their place and calls
/// that a success, as ".lfsconfig", a stranger's file, or GIT_LFS_SKIP_SMUDGE may have it do. Ask
/// RVGitLFSPointer::pointerFromData() of the data before they replace anything.
class RVGIT_EXPORT RVGitLFSSmudgeCommand : public RVGitLFSCommand {
public:
    explicit RVGitLFSSmudgeCommand(const std::shared_ptr<RVGitRepository>& repository);
    ~RVGitLFSSmudgeCommand() override;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSSmudgeCommand> gitLFSSmudgeCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    [[nodiscard]] const std::shared_ptr<RVGitLFSPointer>& pointer() const { return pointer_; }
    void setPointer(std::shared_ptr<RVGitLFSPointer> pointer) { pointer_ = std::move(pointer); }
    /// Where the contents are written to, in one step; a file that is there keeps its permissions.
    /// Kept for compatibility: a failure to write them is no failure of the command; outputError()
    /// has it.
    [[nodiscard]] const std::optional<std::string>& outputPath() const { return outputPath_; }
    void setOutputPath(std::optional<std::string> path) { outputPath_ = std::move(path); }

    // Results.

    /// The contents, kept once; null before the run and where it failed or was cancelled.
    [[nodiscard]] const std::shared_ptr<const RVDataBuffer>& data() const { return data_; }
    /// Why the file at the output path is not the one that was asked for.
    [[nodiscard]] const std::optional<RVError>& outputError() const { return outputError_; }

protected:
    void gitCommandWillInitialize() override;
    void gitCommandDidTerminate() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;
    void main() override;

private:
    class InputFile;

    std::shared_ptr<RVGitLFSPointer> pointer_;
    std::optional<std::string> outputPath_;
    std::unique_ptr<InputFile> inputFile_;
    std::shared_ptr<const RVDataBuffer> data_;
    std::optional<RVError> outputError_;
};
