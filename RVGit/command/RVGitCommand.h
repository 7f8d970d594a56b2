#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVCommandOperation.h"
#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorRow.h"

class RVGitBinary;
class RVGitCommandProgress;
class RVGitRepository;

/// Raised when a command line counts more than 4096 arguments: a programming error, since lists of
/// paths are cut by RVGitCommand::filePathsForGitCommand().
class RVGIT_EXPORT RVGitCommandArgumentsOverflowException : public std::length_error {
public:
    RVGitCommandArgumentsOverflowException(const std::string& reason, RVUserInfo userInfo)
        : std::length_error(reason), userInfo_(std::move(userInfo)) {}
    [[nodiscard]] static const char* name() { return "RVGitCommandArgumentsOverflowException"; }
    [[nodiscard]] std::string reason() const { return what(); }
    [[nodiscard]] const RVUserInfo& userInfo() const { return userInfo_; }

private:
    RVUserInfo userInfo_;
};

/// What can be ended early.
class RVGIT_EXPORT RVGitCommandCancelling {
public:
    virtual ~RVGitCommandCancelling() = default;
    /// Any thread, before the run, too.
    virtual void cancel() = 0;
};

/// Called on the operation's thread while the child runs, and once when it has ended.
using RVGitCommandProgressHandler = std::function<void(RVGitCommandProgress&)>;

/// What tells how far it has come.
class RVGIT_EXPORT RVGitCommandProgressObserving {
public:
    virtual ~RVGitCommandProgressObserving() = default;
    virtual void setProgressHandler(RVGitCommandProgressHandler handler) = 0;
    [[nodiscard]] virtual const RVGitCommandProgressHandler& progressHandler() const = 0;
    [[nodiscard]] virtual std::shared_ptr<RVGitCommandProgress> commandProgress() const = 0;
};

/// One invocation of git, used for one run: it is made, filled with options, run on the shared
/// queue, and turned into parsed data or an error record. A subclass fills the hooks and nothing
/// else. Fields are set on one thread before the run and results read after it; hooks, parsing
/// and the completion handler run on the operation's thread, and the progress handler on that
/// thread too, while the child runs. cancel() may be called on any thread.
///
/// An exception of a hook or a handler ends a child that still runs as cancel() does: by SIGTERM,
/// with a grace in which git removes its locks. The remaining hooks and the completion handler are
/// called, the progress handler is not called again, and run() or waitUntilFinished() throws the
/// exception. A command whose result could not be read for an exception has an error of code 1.
///
/// A handler that waits for its own command, or for a command that waits for that one, is told by
/// RVInternalInconsistencyException.
class RVGIT_EXPORT RVGitCommand : public RVCommandOperation,
                                  public RVGitCommandCancelling,
                                  public RVGitCommandProgressObserving,
                                  private RVCommandOperationDelegate {
public:
    using CompletionHandler = std::function<void(RVGitCommand&)>;

    /// The binary is required. `repositoryPath` is the child's working directory; the other two
    /// become "--git-dir" and "--work-tree".
    RVGitCommand(std::shared_ptr<RVGitBinary> gitBinary,
                 std::optional<std::string> repositoryPath = std::nullopt,
                 std::optional<std::string> gitDirectoryPath = std::nullopt,
                 std::optional<std::string> workingTreeDirectoryPath = std::nullopt);
    /// The default binary, in the given working directory.
    explicit RVGitCommand(std::optional<std::string> repositoryPath);
    /// The default binary, with the repository's three paths. The repository is required.
    explicit RVGitCommand(const std::shared_ptr<RVGitRepository>& repository);
    /// The default binary, with no working directory.
    RVGitCommand(std::optional<std::string> gitDirectoryPath,
                 std::optional<std::string> workingTreeDirectoryPath);
    ~RVGitCommand() override;

    [[nodiscard]] static std::shared_ptr<RVGitCommand> gitCommandWithGitBinary(
        std::shared_ptr<RVGitBinary> gitBinary);
    [[nodiscard]] static std::shared_ptr<RVGitCommand> gitCommandWithGitBinary(
        std::shared_ptr<RVGitBinary> gitBinary, std::optional<std::string> repositoryPath);
    [[nodiscard]] static std::shared_ptr<RVGitCommand> gitCommandWithGitBinary(
        std::shared_ptr<RVGitBinary> gitBinary, std::optional<std::string> gitDirectoryPath,
        std::optional<std::string> workingTreeDirectoryPath);
    [[nodiscard]] static std::shared_ptr<RVGitCommand> gitCommandWithRepositoryPath(
        std::optional<std::string> repositoryPath);
    [[nodiscard]] static std::shared_ptr<RVGitCommand> gitCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    // Building. Texts that come as data are added by the operations for revisions, names and paths.

    /// Behind "git", ahead of the command word.
    void addGitOption(std::string option);
    void addGitOptions(const std::vector<std::string>& options);
    /// Behind the command word, ahead of the arguments.
    void addGitCommandOption(std::string option);
    void addGitCommandOptions(const std::vector<std::string>& options);
    /// Those options whose flags are set.
    void addGitCommandOptionsThatAreSet(
        std::initializer_list<std::pair<bool, const char*>> options);
    /// For words of the library's own, and for what stands behind "--".
    void addGitCommandArgument(std::string argument);
    void addGitCommandArguments(const std::vector<std::string>& arguments);
    /// Adds a revision or a range that came as data, of which git must not make an option: a text
    /// that begins with "-", behind a "^" or as the end of a range, too, is refused, unless it is
    /// one of the few that select revisions and do nothing else ("--all", "--not", "--glob=...").
    /// A command with a refused text is not launched: it fails with the code given, the text
    /// standing under RVGitRevisionErrorKey.
    void addGitCommandRevision(std::string revision,
                               std::int64_t refusalCode = RVGitRVGitGenericError);
    void addGitCommandRevisions(const std::vector<std::string>& revisions,
                                std::int64_t refusalCode = RVGitRVGitGenericError);
    /// The same for the name of a ref, tag, branch, remote or stash, for an address, a hash or a
    /// configuration key: every text that begins with "-" is refused, and stands under
    /// RVGitRefNameErrorKey.
    void addGitCommandName(std::string name, std::int64_t refusalCode = RVGitRVGitGenericError);
    void addGitCommandNames(const std::vector<std::string>& names,
                            std::int64_t refusalCode = RVGitRVGitGenericError);
    /// Adds "--" and the paths. An empty path is refused: gits below 2.16 take it for all files.
    void addGitCommandFilePaths(const std::vector<std::string>& filePaths);
    /// Adds a path for a git command that knows no "--": one that begins with "-" gets "./" in
    /// front.
    void addGitCommandFilePath(std::string filePath);
    /// Merges the variables over the environment.
    void addEnvironmentVariables(const RVEnvironment& variables);
    void sanitizeEnvironment();
    /// Has git, and what git runs, take a setting whatever is configured. It goes through the
    /// environment and leaves the command line as it is; one of the same key that stands there, as
    /// "-c", wins. The value must hold no quote.
    void overrideGitConfiguration(const std::string& key, const std::string& value);

    // Running.

    /// Runs the command on the shared queue and waits for it. False and a filled place if it
    /// failed; a cancelled command has not failed. Throws what was raised while it was prepared,
    /// RVGitCommandArgumentsOverflowException above all, and what a hook or a handler threw.
    bool run(RVErrorPlace error = nullptr);
    /// Puts the command on the shared queue and returns; the result arrives through the completion
    /// handler and error(). Throws nothing of the command's own: waitUntilFinished() does.
    void enqueueCommand();
    void cancel() override { RVCommandOperation::cancel(); }

    // Fields.
    [[nodiscard]] const std::shared_ptr<RVGitBinary>& gitBinary() const { return gitBinary_; }
    [[nodiscard]] const std::optional<std::string>& repositoryPath() const {
        return repositoryPath_;
    }
    [[nodiscard]] const std::optional<std::string>& gitDirectoryPath() const {
        return gitDirectoryPath_;
    }
    [[nodiscard]] const std::optional<std::string>& workingTreeDirectoryPath() const {
        return workingTreeDirectoryPath_;
    }
    void setRepositoryPath(std::optional<std::string> path) { repositoryPath_ = std::move(path); }
    void setGitDirectoryPath(std::optional<std::string> path) {
        gitDirectoryPath_ = std::move(path);
    }
    void setWorkingTreeDirectoryPath(std::optional<std::string> path) {
        workingTreeDirectoryPath_ = std::move(path);
    }
    /// The word behind git's own options: "log".
    [[nodiscard]] const std::optional<std::string>& gitCommand() const { return gitCommand_; }
    void setGitCommand(std::optional<std::string> name) { gitCommand_ = std::move(name); }
    /// The word behind that: "show" of "reflog show".
    [[nodiscard]] const std::optional<std::string>& gitSubCommand() const { return gitSubCommand_; }
    void setGitSubCommand(std::optional<std::string> name) { gitSubCommand_ = std::move(name); }
    /// Options ahead of the command word.
    [[nodiscard]] const std::vector<std::string>& gitOptions() const { return gitOptions_; }
    void setGitOptions(std::vector<std::string> options) { gitOptions_ = std::move(options); }
    /// Options behind the command words.
    [[nodiscard]] const std::vector<std::string>& gitCommandOptions() const {
        return gitCommandOptions_;
    }
    void setGitCommandOptions(std::vector<std::string> options) {
        gitCommandOptions_ = std::move(options);
    }
    /// Positional arguments, placed last.
    [[nodiscard]] const std::vector<std::string>& gitCommandArguments() const {
        return gitCommandArguments_;
    }
    void setGitCommandArguments(std::vector<std::string> arguments) {
        gitCommandArguments_ = std::move(arguments);
    }

    void setProgressHandler(RVGitCommandProgressHandler handler) override {
        progressHandler_ = std::move(handler);
    }
    [[nodiscard]] const RVGitCommandProgressHandler& progressHandler() const override {
        return progressHandler_;
    }
    /// Absent unless the command supports progress and has been prepared.
    [[nodiscard]] std::shared_ptr<RVGitCommandProgress> commandProgress() const override {
        return commandProgress_;
    }
    /// Called once when the command has run, whatever the outcome, and dropped afterwards. Not
    /// called for a command that was cancelled before its launch, had an argument refused or could
    /// not be launched.
    [[nodiscard]] const CompletionHandler& completionHandler() const { return completionHandler_; }
    void setCompletionHandler(CompletionHandler handler) {
        completionHandler_ = std::move(handler);
    }
    /// Whether variables that would redirect git are removed from the environment first.
    [[nodiscard]] bool sanitizesEnvironment() const { return sanitizesEnvironment_; }
    void setSanitizesEnvironment(bool sanitizes) { sanitizesEnvironment_ = sanitizes; }
    /// Whether git's standard error is read for progress, and handed to the progress handler.
    [[nodiscard]] bool isSupportingProgressOutput() const { return supportsProgressOutput_; }
    void setSupportsProgressOutput(bool supports) { supportsProgressOutput_ = supports; }
    /// Stored for callers; the library neither sets nor reads it.
    [[nodiscard]] bool isAuthenticationPassed() const { return authenticationPassed_; }
    void setAuthenticationPassed(bool passed) { authenticationPassed_ = passed; }

    /// The decoded output, cached on first request: not to be read before the child has exited.
    [[nodiscard]] const std::string& standardOutputString();
    [[nodiscard]] const std::string& standardErrorString();

    // Error rows.

    /// The rows that apply to every command.
    [[nodiscard]] static const RVGitErrorTable& sharedGitErrorDefinitions();
    /// The rows of a command class; none here.
    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

    // Lists of paths.

    /// How many paths one command line takes; 4000 at first. Any thread.
    [[nodiscard]] static std::size_t maximumNumberOfAllowedFilePathArguments();
    static void setMaximumNumberOfAllowedFilePathArguments(std::size_t number);
    /// The first paths, as many as one command line takes: at most the maximum number, and fewer
    /// where so many long paths would exceed what the system accepts in bytes. `exceeded`, if not
    /// null, is set to whether any were left out.
    [[nodiscard]] static std::vector<std::string> filePathsForGitCommand(
        const std::vector<std::string>& filePaths, bool* exceedsArgumentsLimit);
    /// The paths that filePathsForGitCommand() left out of the same list.
    [[nodiscard]] static std::vector<std::string> remainingFilePathsFromFilePaths(
        const std::vector<std::string>& filePaths);

    [[nodiscard]] static RVGitCommandArgumentsOverflowException
    gitCommandArgumentsOverflowExceptionWithGitCommand(RVGitCommand& command, RVUserInfo userInfo);

protected:
    // Hooks, in the order of their calls.

    /// Turns fields into options and arguments, in the order in which they must stand. An error
    /// stored here keeps the command from being launched.
    virtual void gitCommandWillInitialize() {}
    /// A last look at arguments().
    virtual void gitCommandDidInitialize() {}
    /// Called while the child runs, each time that standardOutputData() has grown; for parsing
    /// ahead. What it makes of it must be dropped where the run fails.
    virtual void gitCommandDidReceiveStandardOutput() {}
    /// The child has exited; errors have not been mapped yet.
    virtual void gitCommandDidTerminate() {}
    /// Whether a non-zero exit is a failure; false has the output parsed as after a success.
    virtual bool gitCommandShouldHandleError(const RVError&) { return true; }
    /// Adds the keys that the reasons of the command's errors name.
    virtual RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) { return userInfo; }
    /// Parses the output into the command's results; false and a filled place fail the command.
    virtual bool gitCommandWillParseOutput(RVErrorPlace) { return true; }

    /// For gitCommandDidInitialize(): each takes the one such argument out of arguments().
    void removeGitDirOption();
    void removeWorkTreeOption();

    /// Keeps the command from being launched: it fails with the code, the first refused text
    /// standing under the key.
    void refuseGitCommandArgument(std::int64_t code, const char* key, std::string argument);

    [[nodiscard]] RVError makeGitError();
    [[nodiscard]] RVUserInfo makeGitErrorUserInfo();

    void commandWillExecute() final;
    void commandDidFailToLaunch(int errorNumber) final;
    void commandDidTerminate() final;
    void commandDidReceiveStandardOutput(std::string_view bytes) final;

private:
    // What the command's own hooks of these names would hide.
    using RVCommandOperationDelegate::commandDidFailToLaunch;
    using RVCommandOperationDelegate::commandDidTerminate;
    void commandDidReceiveStandardOutputData(RVCommandOperation&, std::string_view bytes) override;
    void commandDidReceiveStandardErrorData(RVCommandOperation&, std::string_view bytes) override;
    void didUpdateProgressWithData(std::string_view bytes);
    [[nodiscard]] std::vector<std::string> makeArguments() const;
    void refuseEmptyFilePath(std::string_view filePath);
    void applyBinary();
    void mapResult();
    void removeArgumentWithPrefix(std::string_view prefix);

    std::shared_ptr<RVGitBinary> gitBinary_;
    std::optional<std::string> repositoryPath_;
    std::optional<std::string> gitDirectoryPath_;
    std::optional<std::string> workingTreeDirectoryPath_;
    std::optional<std::string> gitCommand_;
    std::optional<std::string> gitSubCommand_;
    std::vector<std::string> gitOptions_;
    std::vector<std::string> gitCommandOptions_;
    std::vector<std::string> gitCommandArguments_;
    /// Of the first argument that was refused.
    std::optional<RVError> refusal_;
    RVGitCommandProgressHandler progressHandler_;
    CompletionHandler completionHandler_;
    std::shared_ptr<RVGitCommandProgress> commandProgress_;
    std::optional<std::string> standardOutputString_;
    std::optional<std::string> standardErrorString_;
    bool sanitizesEnvironment_ = false;
    bool supportsProgressOutput_ = false;
    bool authenticationPassed_ = false;
};
