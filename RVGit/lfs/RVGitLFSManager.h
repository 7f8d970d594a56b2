#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"

class RVGitBinary;
class RVGitLFSCheckoutCommand;
class RVGitLFSCleanCommand;
class RVGitLFSCloneCommand;
class RVGitLFSFetchCommand;
class RVGitLFSLsFilesCommand;
class RVGitLFSPointer;
class RVGitLFSPruneCommand;
class RVGitLFSPullCommand;
class RVGitLFSPushCommand;
class RVGitLFSSmudgeCommand;
class RVGitLFSTrackCommand;
class RVGitLFSUntrackCommand;
class RVGitRefSpec;
class RVGitRemote;
class RVGitRepository;
class RVOperationQueue;

/// A pattern whose files are kept in LFS, and the attributes file that says so.
class RVGIT_EXPORT RVGitLFSTrackingEntry {
public:
    RVGitLFSTrackingEntry(std::string pattern, std::string fileName)
        : pattern_(std::move(pattern)), fileName_(std::move(fileName)) {}

    [[nodiscard]] const std::string& pattern() const { return pattern_; }
    [[nodiscard]] const std::string& fileName() const { return fileName_; }

private:
    std::string pattern_;
    std::string fileName_;
};

/// All that a caller does with Git LFS. Each operation runs one command on the manager's own serial
/// queue, so that no two of one manager overlap, and none counts against the shared queue's limit.
///
/// May be called on any thread. An operation with an error place blocks; one with a completion
/// handler returns its command at once, and calls the handler exactly once, however the command
/// ends, on the thread that ends it: one that has been cancelled has no error. Errors are those of
/// the command; code 100 where git could not be launched. What is raised while a command runs
/// reaches the caller of a blocking operation, and a handler as an error of the generic code 1.
///
/// Kept for compatibility: the options, and the argument that only stands in the place of a first
/// one, are not read.
class RVGIT_EXPORT RVGitLFSManager {
public:
    using Patterns = std::vector<std::string>;
    using TrackingEntries = std::vector<std::shared_ptr<RVGitLFSTrackingEntry>>;
    using RefSpecs = std::vector<std::shared_ptr<RVGitRefSpec>>;
    using CompletionHandler = std::function<void(const std::optional<RVError>& error)>;
    using PointerHandler = std::function<void(const std::shared_ptr<RVGitLFSPointer>& pointer,
                                              const std::optional<RVError>& error)>;
    /// The bytes are kept once, and for as long as the pointer to them is.
    using DataHandler = std::function<void(const std::shared_ptr<const RVDataBuffer>& data,
                                           const std::optional<RVError>& error)>;

    /// For cloning alone: whatever else needs a repository throws.
    RVGitLFSManager();
    explicit RVGitLFSManager(std::shared_ptr<RVGitRepository> repository);
    ~RVGitLFSManager();
    RVGitLFSManager(const RVGitLFSManager&) = delete;
    RVGitLFSManager& operator=(const RVGitLFSManager&) = delete;

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] RVOperationQueue& commandQueue() const { return *commandQueue_; }
    /// Stored for callers; the commands use the default binary.
    [[nodiscard]] const std::shared_ptr<RVGitBinary>& gitBinary() const { return gitBinary_; }
    void setGitBinary(std::shared_ptr<RVGitBinary> gitBinary) { gitBinary_ = std::move(gitBinary); }

    // Setting up.

    /// One of RVGitLFSInstallationMode.
    [[nodiscard]] bool installGitLFSWithMode(std::int64_t mode,
                                             const std::optional<RVOptions>& options = std::nullopt,
                                             RVErrorPlace error = nullptr);
    /// Takes the filters out of the user's configuration, for all repositories.
    [[nodiscard]] bool uninstallGitLFS(const std::optional<RVOptions>& options = std::nullopt,
                                       RVErrorPlace error = nullptr);
    /// Writes the hooks. What git-lfs says goes to standard error.
    [[nodiscard]] bool update(const std::optional<RVOptions>& options = std::nullopt,
                              RVErrorPlace error = nullptr);

    // Tracking.

    /// Kept for compatibility: without patterns that hold a blank or are lockable.
    [[nodiscard]] std::optional<TrackingEntries> allTrackingEntries(
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);
    /// Writes ".gitattributes" in the root; it is not staged.
    [[nodiscard]] bool addTrackedFilePatterns(
        const Patterns& patterns, const std::optional<RVOptions>& options = std::nullopt,
        RVErrorPlace error = nullptr);
    [[nodiscard]] bool removeTrackedFilePatterns(
        const Patterns& patterns, const std::optional<RVOptions>& options = std::nullopt,
        RVErrorPlace error = nullptr);
    /// The same; the command that has run comes back.
    std::shared_ptr<RVGitLFSTrackCommand> track(
        const Patterns& patterns, const std::optional<RVOptions>& options = std::nullopt);
    std::shared_ptr<RVGitLFSUntrackCommand> untrack(
        const Patterns& patterns, const std::optional<RVOptions>& options = std::nullopt);

    // Transfer.

    /// `environment` goes over that of the command.
    std::shared_ptr<RVGitLFSCloneCommand> cloneRepositoryAtURL(
        const std::string& URL, const std::string& localPath,
        const std::optional<RVOptions>& options, const RVEnvironment& environment,
        RVGitCommandProgressHandler progressHandler, CompletionHandler completionHandler);
    /// Kept for compatibility: the remote is not read; git-lfs takes its default.
    [[nodiscard]] bool fetchRemote(const std::shared_ptr<RVGitRemote>& remote,
                                   const std::optional<RVOptions>& options = std::nullopt,
                                   RVErrorPlace error = nullptr);
    std::shared_ptr<RVGitLFSFetchCommand> fetchRemote(const std::shared_ptr<RVGitRemote>& remote,
                                                      const std::optional<RVOptions>& options,
                                                      RVGitCommandProgressHandler progressHandler,
                                                      CompletionHandler completionHandler);
    [[nodiscard]] bool pullRemote(const std::shared_ptr<RVGitRemote>& remote,
                                  const std::optional<RVOptions>& options = std::nullopt,
                                  RVErrorPlace error = nullptr);
    std::shared_ptr<RVGitLFSPullCommand> pullRemote(const std::shared_ptr<RVGitRemote>& remote,
                                                    const std::optional<RVOptions>& options,
                                                    RVGitCommandProgressHandler progressHandler,
                                                    CompletionHandler completionHandler);
    /// Kept for compatibility: git-lfs uploads nothing where no ref is named.
    [[nodiscard]] bool pushRemote(const std::shared_ptr<RVGitRemote>& remote,
                                  const std::optional<RVOptions>& options = std::nullopt,
                                  RVErrorPlace error = nullptr);
    std::shared_ptr<RVGitLFSPushCommand> pushRemote(const std::shared_ptr<RVGitRemote>& remote,
                                                    const std::optional<RVOptions>& options,
                                                    RVGitCommandProgressHandler progressHandler,
                                                    CompletionHandler completionHandler);
    /// Uploads the objects that the refs with the local names of these ref specs need. At least one
    /// is required.
    [[nodiscard]] bool pushRemote(const std::shared_ptr<RVGitRemote>& remote,
                                  const RefSpecs& refSpecs, RVErrorPlace error = nullptr);

    // Objects and files.

    /// Puts contents that are here in the place of pointers.
    [[nodiscard]] bool checkout(const std::optional<RVOptions>& options = std::nullopt,
                                RVErrorPlace error = nullptr);
    std::shared_ptr<RVGitLFSCheckoutCommand> checkout(const std::optional<RVOptions>& options,
                                                      CompletionHandler completionHandler);
    /// Removes local copies of old objects that the remote has.
    [[nodiscard]] bool prune(const std::optional<RVOptions>& options = std::nullopt,
                             RVErrorPlace error = nullptr);
    std::shared_ptr<RVGitLFSPruneCommand> prune(const std::optional<RVOptions>& options,
                                                CompletionHandler completionHandler);
    /// Those whose contents stand in the working tree. Absent on failure; absent with a cleared
    /// place if it was cancelled, as the list of tracked patterns is.
    [[nodiscard]] std::optional<std::vector<std::string>> allTrackedFiles(
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);
    [[nodiscard]] std::optional<std::vector<std::string>> allTrackedFilesForRevision(
        const std::string& revision, const std::optional<RVOptions>& options = std::nullopt,
        RVErrorPlace error = nullptr);

    // Pointers.

    /// The pointer for a file, whose contents are kept among the repository's objects. Kept for
    /// compatibility: a failure throws RVInvalidParameterException, since there is no pointer then,
    /// and so does an empty file. The other form gives an error.
    [[nodiscard]] std::shared_ptr<RVGitLFSPointer> createPointerFromFileAtPath(
        const std::string& filePath, const std::optional<RVOptions>& options = std::nullopt,
        RVErrorPlace error = nullptr);
    std::shared_ptr<RVGitLFSCleanCommand> createPointerFromFileAtPath(
        const std::string& filePath, const std::optional<RVOptions>& options,
        PointerHandler completionHandler);
    /// Writes the contents that the pointer stands for. The pointer is required. Kept for
    /// compatibility: true also where the file could not be written.
    [[nodiscard]] bool createFileFromPointer(const std::shared_ptr<RVGitLFSPointer>& pointer,
                                             const std::string& outputPath,
                                             const std::optional<RVOptions>& options = std::nullopt,
                                             RVErrorPlace error = nullptr);
    std::shared_ptr<RVGitLFSSmudgeCommand> createFileFromPointer(
        const std::shared_ptr<RVGitLFSPointer>& pointer, const std::string& outputPath,
        const std::optional<RVOptions>& options, CompletionHandler completionHandler);
    /// The contents that the pointer stands for; null with an error.
    [[nodiscard]] std::shared_ptr<const RVDataBuffer> createFileDataFromPointer(
        const std::shared_ptr<RVGitLFSPointer>& pointer,
        const std::optional<RVOptions>& options = std::nullopt, RVErrorPlace error = nullptr);
    std::shared_ptr<RVGitLFSSmudgeCommand> createFileDataFromPointer(
        const std::shared_ptr<RVGitLFSPointer>& pointer, const std::optional<RVOptions>& options,
        DataHandler completionHandler);
    /// Null for what is no pointer. Runs nothing.
    [[nodiscard]] std::shared_ptr<RVGitLFSPointer> pointerFromData(std::string_view data) const;

private:
    bool runCommand(const std::shared_ptr<RVGitCommand>& command, RVErrorPlace error) const;
    void runCommand(const std::shared_ptr<RVGitCommand>& command,
                    CompletionHandler completionHandler) const;
    [[nodiscard]] std::optional<std::vector<std::string>> filesOfCommand(
        const std::shared_ptr<RVGitLFSLsFilesCommand>& command, RVErrorPlace error) const;

    std::shared_ptr<RVGitRepository> repository_;
    std::unique_ptr<RVOperationQueue> commandQueue_;
    std::shared_ptr<RVGitBinary> gitBinary_;
};
