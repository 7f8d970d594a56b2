#include "RVGit/lfs/RVGitLFSManager.h"

#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/lfs/RVGitLFSCleanCommand.h"
#include "RVGit/lfs/RVGitLFSCommand.h"
#include "RVGit/lfs/RVGitLFSLsFilesCommand.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "RVGit/lfs/RVGitLFSSmudgeCommand.h"
#include "RVGit/lfs/RVGitLFSTrackCommand.h"
#include "RVGit/lfs/RVGitLFSTransferCommands.h"

namespace {

std::shared_ptr<RVGitLFSSmudgeCommand> smudgeCommand(
    const std::shared_ptr<RVGitRepository>& repository,
    const std::shared_ptr<RVGitLFSPointer>& pointer, std::optional<std::string> outputPath) {
    requireParameter(pointer != nullptr, "pointer");
    auto command = RVGitLFSSmudgeCommand::gitLFSSmudgeCommandWithRepository(repository);
    command->setPointer(pointer);
    command->setOutputPath(std::move(outputPath));
    return command;
}

std::shared_ptr<RVGitLFSPointer> pointerOfCommand(const RVGitLFSCleanCommand& command) {
    return std::make_shared<RVGitLFSPointer>(
        command.pointer() ? command.pointer()->allEntries() : RVGitLFSPointer::Entries(),
        command.pointerContents().value_or(""));
}

template <typename Command, typename Handler>
std::shared_ptr<Command> withProgress(std::shared_ptr<Command> command, Handler handler) {
    command->setProgressHandler(std::move(handler));
    return command;
}

}  // namespace

RVGitLFSManager::RVGitLFSManager() : RVGitLFSManager(nullptr) {}

RVGitLFSManager::RVGitLFSManager(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)),
      commandQueue_(RVOperationQueue::serialQueue(RVGitMakeQueueName("LFSManager"))) {}

RVGitLFSManager::~RVGitLFSManager() = default;

bool RVGitLFSManager::runCommand(const std::shared_ptr<RVGitCommand>& command,
                                 RVErrorPlace error) const {
    return RVGitCommandQueue::executeCommandOnQueue(command, *commandQueue_, error);
}

void RVGitLFSManager::runCommand(const std::shared_ptr<RVGitCommand>& command,
                                 CompletionHandler completionHandler) const {
    // The command's own completion handler hears nothing of a launch that failed.
    if (completionHandler)
        command->setCompletionBlock(
            [handler = std::move(completionHandler)](RVOperation& operation) {
                std::optional<RVError> error = static_cast<RVGitCommand&>(operation).error();
                // Something raised is no success for a handler, which nothing can be rethrown to.
                if (!error && operation.exception())
                    error = gitErrorWithException(operation.exception());
                handler(error);
            });
    commandQueue_->addOperation(command);
}

bool RVGitLFSManager::installGitLFSWithMode(std::int64_t mode, const std::optional<RVOptions>&,
                                            RVErrorPlace error) {
    const auto command = RVGitLFSInstallCommand::gitLFSInstallCommandWithRepository(repository_);
    command->setInstallationMode(mode);
    return runCommand(command, error);
}

bool RVGitLFSManager::uninstallGitLFS(const std::optional<RVOptions>&, RVErrorPlace error) {
    return runCommand(RVGitLFSUninstallCommand::gitLFSUninstallCommandWithRepository(repository_),
                      error);
}

bool RVGitLFSManager::update(const std::optional<RVOptions>&, RVErrorPlace error) {
    return runCommand(RVGitLFSUpdateCommand::gitLFSUpdateCommandWithRepository(repository_), error);
}

std::optional<RVGitLFSManager::TrackingEntries> RVGitLFSManager::allTrackingEntries(
    const std::optional<RVOptions>&, RVErrorPlace error) {
    const auto command = RVGitLFSTrackCommand::gitLFSTrackCommandWithRepository(repository_);
    if (!runCommand(command, error))
        return std::nullopt;
    if (command->isCancelled() || !command->trackedFilePatterns()) {
        clearErrorPlace(error);
        return std::nullopt;
    }
    TrackingEntries entries;
    entries.reserve(command->trackedFilePatterns()->size());
    for (const auto& item : *command->trackedFilePatterns())
        entries.push_back(std::make_shared<RVGitLFSTrackingEntry>(item.trackedFilePattern,
                                                                  item.attributeFileName));
    return entries;
}

bool RVGitLFSManager::addTrackedFilePatterns(const Patterns& patterns,
                                             const std::optional<RVOptions>&, RVErrorPlace error) {
    const auto command = RVGitLFSTrackCommand::gitLFSTrackCommandWithRepository(repository_);
    command->setPatterns(patterns);
    return runCommand(command, error);
}

bool RVGitLFSManager::removeTrackedFilePatterns(const Patterns& patterns,
                                                const std::optional<RVOptions>&,
                                                RVErrorPlace error) {
    const auto command = RVGitLFSUntrackCommand::gitLFSUntrackCommandWithRepository(repository_);
    command->setPatterns(patterns);
    return runCommand(command, error);
}

std::shared_ptr<RVGitLFSTrackCommand> RVGitLFSManager::track(const Patterns& patterns,
                                                             const std::optional<RVOptions>&) {
    auto command = RVGitLFSTrackCommand::gitLFSTrackCommandWithRepository(repository_);
    command->setPatterns(patterns);
    (void)runCommand(command, RVErrorPlace());
    return command;
}

std::shared_ptr<RVGitLFSUntrackCommand> RVGitLFSManager::untrack(const Patterns& patterns,
                                                                 const std::optional<RVOptions>&) {
    auto command = RVGitLFSUntrackCommand::gitLFSUntrackCommandWithRepository(repository_);
    command->setPatterns(patterns);
    (void)runCommand(command, RVErrorPlace());
    return command;
}

std::shared_ptr<RVGitLFSCloneCommand> RVGitLFSManager::cloneRepositoryAtURL(
    const std::string& URL, const std::string& localPath, const std::optional<RVOptions>& options,
    const RVEnvironment& environment, RVGitCommandProgressHandler progressHandler,
    CompletionHandler completionHandler) {
    auto command = RVGitLFSCloneCommand::gitLFSCloneCommandWithRemoteURL(URL, localPath, options);
    for (const auto& [name, value] : environment)
        command->setValueForEnvironmentVariable(value, name);
    command->setProgressHandler(std::move(progressHandler));
    runCommand(command, std::move(completionHandler));
    return command;
}

bool RVGitLFSManager::fetchRemote(const std::shared_ptr<RVGitRemote>&,
                                  const std::optional<RVOptions>&, RVErrorPlace error) {
    return runCommand(RVGitLFSFetchCommand::gitLFSFetchCommandWithRepository(repository_), error);
}

std::shared_ptr<RVGitLFSFetchCommand> RVGitLFSManager::fetchRemote(
    const std::shared_ptr<RVGitRemote>&, const std::optional<RVOptions>&,
    RVGitCommandProgressHandler progressHandler, CompletionHandler completionHandler) {
    auto command = withProgress(RVGitLFSFetchCommand::gitLFSFetchCommandWithRepository(repository_),
                                std::move(progressHandler));
    runCommand(command, std::move(completionHandler));
    return command;
}

bool RVGitLFSManager::pullRemote(const std::shared_ptr<RVGitRemote>& remote,
                                 const std::optional<RVOptions>&, RVErrorPlace error) {
    return runCommand(RVGitLFSPullCommand::gitLFSPullCommandWithRepository(repository_, remote),
                      error);
}

std::shared_ptr<RVGitLFSPullCommand> RVGitLFSManager::pullRemote(
    const std::shared_ptr<RVGitRemote>& remote, const std::optional<RVOptions>&,
    RVGitCommandProgressHandler progressHandler, CompletionHandler completionHandler) {
    auto command =
        withProgress(RVGitLFSPullCommand::gitLFSPullCommandWithRepository(repository_, remote),
                     std::move(progressHandler));
    runCommand(command, std::move(completionHandler));
    return command;
}

bool RVGitLFSManager::pushRemote(const std::shared_ptr<RVGitRemote>& remote,
                                 const std::optional<RVOptions>&, RVErrorPlace error) {
    return runCommand(RVGitLFSPushCommand::gitLFSPushCommandWithRepository(repository_, remote),
                      error);
}

std::shared_ptr<RVGitLFSPushCommand> RVGitLFSManager::pushRemote(
    const std::shared_ptr<RVGitRemote>& remote, const std::optional<RVOptions>&,
    RVGitCommandProgressHandler progressHandler, CompletionHandler completionHandler) {
    auto command =
        withProgress(RVGitLFSPushCommand::gitLFSPushCommandWithRepository(repository_, remote),
                     std::move(progressHandler));
    runCommand(command, std::move(completionHandler));
    return command;
}

bool RVGitLFSManager::pushRemote(const std::shared_ptr<RVGitRemote>& remote,
                                 const RefSpecs& refSpecs, RVErrorPlace error) {
    requireParameter(!refSpecs.empty(), "refSpecs");
    const auto command = RVGitLFSPushCommand::gitLFSPushCommandWithRepository(repository_, remote);
    command->setRefSpecs(refSpecs);
    return runCommand(command, error);
}

bool RVGitLFSManager::checkout(const std::optional<RVOptions>&, RVErrorPlace error) {
    return runCommand(RVGitLFSCheckoutCommand::gitLFSCheckoutCommandWithRepository(repository_),
                      error);
}

std::shared_ptr<RVGitLFSCheckoutCommand> RVGitLFSManager::checkout(
    const std::optional<RVOptions>&, CompletionHandler completionHandler) {
    auto command = RVGitLFSCheckoutCommand::gitLFSCheckoutCommandWithRepository(repository_);
    runCommand(command, std::move(completionHandler));
    return command;
}

bool RVGitLFSManager::prune(const std::optional<RVOptions>&, RVErrorPlace error) {
    return runCommand(RVGitLFSPruneCommand::gitLFSPruneCommandWithRepository(repository_), error);
}

std::shared_ptr<RVGitLFSPruneCommand> RVGitLFSManager::prune(const std::optional<RVOptions>&,
                                                             CompletionHandler completionHandler) {
    auto command = RVGitLFSPruneCommand::gitLFSPruneCommandWithRepository(repository_);
    runCommand(command, std::move(completionHandler));
    return command;
}

std::optional<std::vector<std::string>> RVGitLFSManager::filesOfCommand(
    const std::shared_ptr<RVGitLFSLsFilesCommand>& command, RVErrorPlace error) const {
    if (!runCommand(command, error))
        return std::nullopt;
    // The list of one that was cancelled ends anywhere.
    if (command->isCancelled()) {
        clearErrorPlace(error);
        return std::nullopt;
    }
    return command->files();
}

std::optional<std::vector<std::string>> RVGitLFSManager::allTrackedFiles(
    const std::optional<RVOptions>&, RVErrorPlace error) {
    const auto command = RVGitLFSLsFilesCommand::gitLFSLsFilesCommandWithRepository(repository_);
    return filesOfCommand(command, error);
}

std::optional<std::vector<std::string>> RVGitLFSManager::allTrackedFilesForRevision(
    const std::string& revision, const std::optional<RVOptions>&, RVErrorPlace error) {
    const auto command = RVGitLFSLsFilesCommand::gitLFSLsFilesCommandWithRepository(repository_);
    command->setRevision(revision);
    return filesOfCommand(command, error);
}

std::shared_ptr<RVGitLFSPointer> RVGitLFSManager::createPointerFromFileAtPath(
    const std::string& filePath, const std::optional<RVOptions>&, RVErrorPlace error) {
    const auto command = RVGitLFSCleanCommand::gitLFSCleanCommandWithRepository(repository_);
    command->setFilePath(filePath);
    (void)runCommand(command, error);
    return pointerOfCommand(*command);
}

std::shared_ptr<RVGitLFSCleanCommand> RVGitLFSManager::createPointerFromFileAtPath(
    const std::string& filePath, const std::optional<RVOptions>&,
    PointerHandler completionHandler) {
    auto command = RVGitLFSCleanCommand::gitLFSCleanCommandWithRepository(repository_);
    command->setFilePath(filePath);
    CompletionHandler handler;
    if (completionHandler)
        handler = [completionHandler = std::move(completionHandler),
                   weakCommand = std::weak_ptr(command)](const std::optional<RVError>& error) {
            const auto finished = weakCommand.lock();
            completionHandler(
                finished && finished->pointer() && !error ? pointerOfCommand(*finished) : nullptr,
                error);
        };
    runCommand(command, std::move(handler));
    return command;
}

bool RVGitLFSManager::createFileFromPointer(const std::shared_ptr<RVGitLFSPointer>& pointer,
                                            const std::string& outputPath,
                                            const std::optional<RVOptions>&, RVErrorPlace error) {
    return runCommand(smudgeCommand(repository_, pointer, outputPath), error);
}

std::shared_ptr<RVGitLFSSmudgeCommand> RVGitLFSManager::createFileFromPointer(
    const std::shared_ptr<RVGitLFSPointer>& pointer, const std::string& outputPath,
    const std::optional<RVOptions>&, CompletionHandler completionHandler) {
    auto command = smudgeCommand(repository_, pointer, outputPath);
    runCommand(command, std::move(completionHandler));
    return command;
}

std::shared_ptr<const RVDataBuffer> RVGitLFSManager::createFileDataFromPointer(
    const std::shared_ptr<RVGitLFSPointer>& pointer, const std::optional<RVOptions>&,
    RVErrorPlace error) {
    const auto command = smudgeCommand(repository_, pointer, std::nullopt);
    (void)runCommand(command, error);
    return command->data();
}

std::shared_ptr<RVGitLFSSmudgeCommand> RVGitLFSManager::createFileDataFromPointer(
    const std::shared_ptr<RVGitLFSPointer>& pointer, const std::optional<RVOptions>&,
    DataHandler completionHandler) {
    auto command = smudgeCommand(repository_, pointer, std::nullopt);
    CompletionHandler handler;
    if (completionHandler)
        handler = [completionHandler = std::move(completionHandler),
                   weakCommand = std::weak_ptr(command)](const std::optional<RVError>& error) {
            const auto finished = weakCommand.lock();
            completionHandler(finished ? finished->data() : nullptr, error);
        };
    runCommand(command, std::move(handler));
    return command;
}

std::shared_ptr<RVGitLFSPointer> RVGitLFSManager::pointerFromData(std::string_view data) const {
    return RVGitLFSPointer::pointerFromData(data);
}
