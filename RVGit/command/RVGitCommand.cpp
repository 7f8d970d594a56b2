#include "RVGit/command/RVGitCommand.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "RVGit/base/RVErrorManager.h"
#include "RVGit/base/RVFirstException.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandEnvironment.h"
#include "RVGit/command/RVGitCommandEnvironmentSanitizer.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/command/RVGitConfiguration.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/repository/RVGitRepository.h"

namespace {

// More than this many arguments in all are a programming error.
constexpr std::size_t maximumNumberOfArguments = 4096;

std::atomic<std::size_t> maximumNumberOfFilePaths = 4000;

const std::string& pathOfRequiredBinary(const std::shared_ptr<RVGitBinary>& gitBinary) {
    requireParameter(gitBinary != nullptr, "gitBinary");
    return gitBinary->launchPath();
}

const RVGitRepository& requiredRepository(const std::shared_ptr<RVGitRepository>& repository) {
    requireParameter(repository != nullptr, "repository");
    return *repository;
}

// Whether git would read the text for an option that does more than to select revisions.
bool isOption(std::string_view text) {
    if (!text.starts_with('-'))
        return false;
    static constexpr std::string_view selecting[] = {"--all", "--branches", "--tags", "--remotes",
                                                     "--not", "--reflog",   "--ours", "--theirs"};
    static constexpr std::string_view selectingByPattern[] = {
        "--branches=", "--tags=", "--remotes=", "--glob=", "--exclude="};
    const auto isStart = [&](std::string_view prefix) { return text.starts_with(prefix); };
    return std::ranges::find(selecting, text) == std::ranges::end(selecting) &&
           std::ranges::none_of(selectingByPattern, isStart);
}

bool isOptionInPlaceOfRevision(std::string_view text) {
    if (isOption(text) || text.starts_with("^-"))
        return true;
    // Both ends of a range. What follows ":" is a path, and ":/" or "{/" text to be searched for.
    const std::size_t range = std::min(text.find("..-"), text.find("...-"));
    return range < std::min(text.find(':'), text.find("{/"));
}

template <typename T>
void append(std::vector<T>& list, const std::vector<T>& items) {
    list.insert(list.end(), items.begin(), items.end());
}

// How many of the paths, from the first on, fit on one command line.
std::size_t numberOfFilePathsForOneCommand(const std::vector<std::string>& filePaths) {
    // Half of what the system accepts, in bytes; the environment and the options have the rest.
    // Where the stack is unlimited the C library names no bound, but the kernel has one.
    constexpr std::size_t kernelLimit = std::size_t{6} << 20;
    const auto byteLimit =
        std::min(kernelLimit, static_cast<std::size_t>(sysconf(_SC_ARG_MAX))) / 2;
    // One path always goes, so that a list comes to its end.
    const std::size_t limit =
        std::min(filePaths.size(), std::max<std::size_t>(maximumNumberOfFilePaths, 1));
    std::size_t bytes = 0;
    for (std::size_t index = 0; index < limit; ++index) {
        bytes += filePaths[index].size() + 1 + sizeof(char*);
        if (bytes > byteLimit && index > 0)
            return index;
    }
    return limit;
}

}  // namespace

RVGitCommand::RVGitCommand(std::shared_ptr<RVGitBinary> gitBinary,
                           std::optional<std::string> repositoryPath,
                           std::optional<std::string> gitDirectoryPath,
                           std::optional<std::string> workingTreeDirectoryPath)
    : RVCommandOperation(pathOfRequiredBinary(gitBinary), repositoryPath),
      gitBinary_(std::move(gitBinary)),
      repositoryPath_(std::move(repositoryPath)),
      gitDirectoryPath_(std::move(gitDirectoryPath)),
      workingTreeDirectoryPath_(std::move(workingTreeDirectoryPath)) {
    if (RVGitConfiguration::sharedConfiguration().sanitizesInheritedEnvironment())
        sanitizeEnvironment();
}

RVGitCommand::RVGitCommand(std::optional<std::string> repositoryPath)
    : RVGitCommand(RVGitBinary::defaultGitBinary(), std::move(repositoryPath)) {}

RVGitCommand::RVGitCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitCommand(RVGitBinary::defaultGitBinary(), requiredRepository(repository).path(),
                   requiredRepository(repository).gitDirectoryPath(),
                   requiredRepository(repository).workingTreeDirectoryPath()) {}

RVGitCommand::RVGitCommand(std::optional<std::string> gitDirectoryPath,
                           std::optional<std::string> workingTreeDirectoryPath)
    : RVGitCommand(RVGitBinary::defaultGitBinary(), std::nullopt, std::move(gitDirectoryPath),
                   std::move(workingTreeDirectoryPath)) {}

RVGitCommand::~RVGitCommand() = default;

std::shared_ptr<RVGitCommand> RVGitCommand::gitCommandWithGitBinary(
    std::shared_ptr<RVGitBinary> gitBinary) {
    return std::make_shared<RVGitCommand>(std::move(gitBinary));
}

std::shared_ptr<RVGitCommand> RVGitCommand::gitCommandWithGitBinary(
    std::shared_ptr<RVGitBinary> gitBinary, std::optional<std::string> repositoryPath) {
    return std::make_shared<RVGitCommand>(std::move(gitBinary), std::move(repositoryPath));
}

std::shared_ptr<RVGitCommand> RVGitCommand::gitCommandWithGitBinary(
    std::shared_ptr<RVGitBinary> gitBinary, std::optional<std::string> gitDirectoryPath,
    std::optional<std::string> workingTreeDirectoryPath) {
    return std::make_shared<RVGitCommand>(std::move(gitBinary), std::nullopt,
                                          std::move(gitDirectoryPath),
                                          std::move(workingTreeDirectoryPath));
}

std::shared_ptr<RVGitCommand> RVGitCommand::gitCommandWithRepositoryPath(
    std::optional<std::string> repositoryPath) {
    return std::make_shared<RVGitCommand>(std::move(repositoryPath));
}

std::shared_ptr<RVGitCommand> RVGitCommand::gitCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitCommand>(repository);
}

void RVGitCommand::addGitOption(std::string option) {
    gitOptions_.push_back(std::move(option));
}

void RVGitCommand::addGitOptions(const std::vector<std::string>& options) {
    append(gitOptions_, options);
}

void RVGitCommand::addGitCommandOption(std::string option) {
    gitCommandOptions_.push_back(std::move(option));
}

void RVGitCommand::addGitCommandOptions(const std::vector<std::string>& options) {
    append(gitCommandOptions_, options);
}

void RVGitCommand::addGitCommandOptionsThatAreSet(
    std::initializer_list<std::pair<bool, const char*>> options) {
    for (const auto& [isSet, option] : options)
        if (isSet)
            addGitCommandOption(option);
}

void RVGitCommand::addGitCommandArgument(std::string argument) {
    gitCommandArguments_.push_back(std::move(argument));
}

void RVGitCommand::addGitCommandArguments(const std::vector<std::string>& arguments) {
    append(gitCommandArguments_, arguments);
}

void RVGitCommand::addGitCommandRevision(std::string revision, std::int64_t refusalCode) {
    if (isOptionInPlaceOfRevision(revision))
        refuseGitCommandArgument(refusalCode, RVGitRevisionErrorKey, std::move(revision));
    else
        addGitCommandArgument(std::move(revision));
}

void RVGitCommand::addGitCommandRevisions(const std::vector<std::string>& revisions,
                                          std::int64_t refusalCode) {
    for (const std::string& revision : revisions)
        addGitCommandRevision(revision, refusalCode);
}

void RVGitCommand::addGitCommandName(std::string name, std::int64_t refusalCode) {
    if (name.starts_with('-'))
        refuseGitCommandArgument(refusalCode, RVGitRefNameErrorKey, std::move(name));
    else
        addGitCommandArgument(std::move(name));
}

void RVGitCommand::addGitCommandNames(const std::vector<std::string>& names,
                                      std::int64_t refusalCode) {
    for (const std::string& name : names)
        addGitCommandName(name, refusalCode);
}

void RVGitCommand::addGitCommandFilePaths(const std::vector<std::string>& filePaths) {
    addGitCommandArgument("--");
    for (const std::string& filePath : filePaths) {
        refuseEmptyFilePath(filePath);
        addGitCommandArgument(filePath);
    }
}

void RVGitCommand::refuseEmptyFilePath(std::string_view filePath) {
    if (filePath.empty())
        refuseGitCommandArgument(RVGitRVGitGenericError, RVGitFilePathErrorKey, {});
}

void RVGitCommand::addGitCommandFilePath(std::string filePath) {
    refuseEmptyFilePath(filePath);
    if (filePath.starts_with('-'))
        filePath.insert(0, "./");
    addGitCommandArgument(std::move(filePath));
}

void RVGitCommand::refuseGitCommandArgument(std::int64_t code, const char* key,
                                            std::string argument) {
    if (!refusal_)
        refusal_ = gitErrorWithCode(
            code, gitCommandWillUseErrorUserInfo(RVUserInfo{{key, std::move(argument)}}));
}

void RVGitCommand::addEnvironmentVariables(const RVEnvironment& variables) {
    for (const auto& [name, value] : variables)
        setValueForEnvironmentVariable(value, name);
}

void RVGitCommand::sanitizeEnvironment() {
    const auto& names =
        RVGitCommandEnvironmentSanitizerConfig::sharedConfig().blacklistedEnvironmentVariables();
    if (names)
        for (const std::string& name : *names)
            setValueForEnvironmentVariable(std::nullopt, name);
}

bool RVGitCommand::run(RVErrorPlace error) {
    return RVGitCommandQueue::sharedQueue().executeCommand(
        std::static_pointer_cast<RVGitCommand>(shared_from_this()), error);
}

void RVGitCommand::enqueueCommand() {
    RVGitCommandQueue::sharedQueue().enqueueCommand(
        std::static_pointer_cast<RVGitCommand>(shared_from_this()));
}

const std::string& RVGitCommand::standardOutputString() {
    if (!standardOutputString_)
        standardOutputString_ = stringUsingBestEncoding(standardOutputData());
    return *standardOutputString_;
}

const std::string& RVGitCommand::standardErrorString() {
    if (!standardErrorString_)
        standardErrorString_ = stringUsingBestEncoding(standardErrorData());
    return *standardErrorString_;
}

const RVGitErrorTable& RVGitCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> none;
    return *none;
}

std::size_t RVGitCommand::maximumNumberOfAllowedFilePathArguments() {
    return maximumNumberOfFilePaths;
}

void RVGitCommand::setMaximumNumberOfAllowedFilePathArguments(std::size_t number) {
    maximumNumberOfFilePaths = number;
}

std::vector<std::string> RVGitCommand::filePathsForGitCommand(
    const std::vector<std::string>& filePaths, bool* exceedsArgumentsLimit) {
    const std::size_t count = numberOfFilePathsForOneCommand(filePaths);
    if (exceedsArgumentsLimit)
        *exceedsArgumentsLimit = count < filePaths.size();
    return {filePaths.begin(), filePaths.begin() + static_cast<std::ptrdiff_t>(count)};
}

std::vector<std::string> RVGitCommand::remainingFilePathsFromFilePaths(
    const std::vector<std::string>& filePaths) {
    const std::size_t count = numberOfFilePathsForOneCommand(filePaths);
    return {filePaths.begin() + static_cast<std::ptrdiff_t>(count), filePaths.end()};
}

RVGitCommandArgumentsOverflowException
RVGitCommand::gitCommandArgumentsOverflowExceptionWithGitCommand(RVGitCommand& command,
                                                                 RVUserInfo userInfo) {
    const std::string format = localizedString("GIT_COMMAND_ARGUMENTS_OVERFLOW",
                                               "Too many arguments for a Git command (%d).");
    return {stringByReplacingOccurrences(format, "%d", std::to_string(command.arguments().size())),
            std::move(userInfo)};
}

void RVGitCommand::commandWillExecute() {
    if (sanitizesEnvironment_)
        sanitizeEnvironment();
    addEnvironmentVariables(
        RVGitCommandEnvironment::sharedEnvironment().dictionaryRepresentation());
    gitCommandWillInitialize();
    if (refusal_)
        return finishWithError(*refusal_);
    if (supportsProgressOutput_) {
        setDelegate(this);
        commandProgress_ = std::make_shared<RVGitCommandProgress>(gitCommand_);
    }
    applyBinary();
    setArguments(makeArguments());
    gitCommandDidInitialize();
    if (arguments().size() > maximumNumberOfArguments)
        throw gitCommandArgumentsOverflowExceptionWithGitCommand(*this, makeGitErrorUserInfo());
}

void RVGitCommand::applyBinary() {
    setValueForEnvironmentVariable("", "GIT_PAGER");
    // "$PERL5LIB" stays as it is: nothing expands it. Kept for compatibility.
    if (gitBinary_->perlLibraryPath())
        setValueForEnvironmentVariable(*gitBinary_->perlLibraryPath() + ":$PERL5LIB", "PERL5LIB");
    if (gitBinary_->templatesDirectoryPath())
        setValueForEnvironmentVariable(gitBinary_->templatesDirectoryPath(), "GIT_TEMPLATE_DIR");

    std::vector<std::string> directories;
    if (const auto path = valueForEnvironmentVariable("PATH"))
        directories = componentsSeparatedByString(*path, ":");
    const std::string binaryDirectory = pathByDeletingLastComponent(gitBinary_->launchPath());
    if (std::find(directories.begin(), directories.end(), binaryDirectory) == directories.end())
        directories.insert(directories.begin(), binaryDirectory);
    const std::vector<std::string>& additional = gitBinary_->launchAdditionalPaths();
    directories.insert(directories.begin(), additional.begin(), additional.end());
    setValueForEnvironmentVariable(stringByJoiningComponents(directories, ":"), "PATH");

    addGitOptions(gitBinary_->defaultOptions());
    setValueForEnvironmentVariable("en_US.UTF-8", "LANG");
    setValueForEnvironmentVariable("en_US.UTF-8", "LC_ALL");
}

std::vector<std::string> RVGitCommand::makeArguments() const {
    std::vector<std::string> list;
    list.reserve(6 + gitOptions_.size() + gitCommandOptions_.size() + gitCommandArguments_.size());
    if (gitDirectoryPath_)
        list.push_back("--git-dir=" + *gitDirectoryPath_);
    if (workingTreeDirectoryPath_)
        list.push_back("--work-tree=" + *workingTreeDirectoryPath_);
    if (gitBinary_->launchLibexecPath())
        list.push_back("--exec-path=" + *gitBinary_->launchLibexecPath());
    list.push_back("--no-pager");
    append(list, gitOptions_);
    if (gitCommand_)
        list.push_back(*gitCommand_);
    if (gitSubCommand_)
        list.push_back(*gitSubCommand_);
    append(list, gitCommandOptions_);
    append(list, gitCommandArguments_);
    return list;
}

void RVGitCommand::overrideGitConfiguration(const std::string& key, const std::string& value) {
    // What git itself hands down the options "-c" in; those of this command come behind it. Every
    // git reads it, whereas numbered variables need 2.31.
    constexpr char variable[] = "GIT_CONFIG_PARAMETERS";
    std::string parameters = valueForEnvironmentVariable(variable).value_or("");
    if (!parameters.empty())
        parameters += ' ';
    setValueForEnvironmentVariable(parameters + "'" + key + "=" + value + "'", variable);
}

void RVGitCommand::removeGitDirOption() {
    removeArgumentWithPrefix("--git-dir=");
}

void RVGitCommand::removeWorkTreeOption() {
    removeArgumentWithPrefix("--work-tree=");
}

void RVGitCommand::removeArgumentWithPrefix(std::string_view prefix) {
    std::vector<std::string> changed = arguments();
    const auto found =
        std::find_if(changed.begin(), changed.end(),
                     [&](const std::string& argument) { return argument.starts_with(prefix); });
    if (found != changed.end())
        changed.erase(found);
    setArguments(std::move(changed));
}

void RVGitCommand::commandDidFailToLaunch(int) {
    finishWithError(gitErrorWithCode(RVGitNoGitRepoError));
}

void RVGitCommand::commandDidTerminate() {
    RVFirstException exception;
    exception.keepFrom([&] { gitCommandDidTerminate(); });
    if (commandProgress_) {
        commandProgress_->finishProgress();
        if (progressHandler_ && !handlerDidThrow())
            exception.keepFrom([&] { progressHandler_(*commandProgress_); });
    }
    exception.keepFrom([&] {
        try {
            mapResult();
        } catch (...) {
            // Whoever is only told of the end is not to take it for a success.
            if (!isCancelled() && !error())
                finishWithError(gitErrorWithCode(RVGitRVGitGenericError, makeGitErrorUserInfo()));
            throw;
        }
    });
    // Taken out first: the handler may set another, and may hold the command that holds it.
    if (const CompletionHandler handler = std::exchange(completionHandler_, nullptr))
        exception.keepFrom([&] { handler(*this); });
    completionHandler_ = nullptr;
    exception.rethrow();
}

void RVGitCommand::mapResult() {
    if (!isCancelled() && exitCode() != 0) {
        RVError failure = makeGitError();
        // To look through long output takes a while, and ends with a cancel.
        if (!isCancelled() && gitCommandShouldHandleError(failure))
            return finishWithError(std::move(failure));
    }
    std::optional<RVError> parseError;
    // The output of a cancelled command may be cut off anywhere: not to parse is no failure then.
    if (!gitCommandWillParseOutput(&parseError) && parseError && !isCancelled())
        finishWithError(std::move(*parseError));
}

void RVGitCommand::commandDidReceiveStandardOutput(std::string_view bytes) {
    RVCommandOperation::commandDidReceiveStandardOutput(bytes);
    gitCommandDidReceiveStandardOutput();
}

void RVGitCommand::commandDidReceiveStandardOutputData(RVCommandOperation&,
                                                       std::string_view bytes) {
    didUpdateProgressWithData(bytes);
}

void RVGitCommand::commandDidReceiveStandardErrorData(RVCommandOperation&, std::string_view bytes) {
    didUpdateProgressWithData(bytes);
}

void RVGitCommand::didUpdateProgressWithData(std::string_view bytes) {
    commandProgress_->updateProgressWithOutputData(bytes);
    if (progressHandler_)
        progressHandler_(*commandProgress_);
}

RVError RVGitCommand::makeGitError() {
    RVUserInfo userInfo = makeGitErrorUserInfo();
    const RVError mapped = gitErrorWithCommand(*this);
    for (const auto& [key, value] : mapped.userInfo())
        userInfo.insert_or_assign(key, value);
    // Composed from too few keys so far; the last step composes them anew.
    userInfo.erase(RVLocalizedDescriptionErrorKey);
    userInfo.erase(RVLocalizedFailureReasonErrorKey);
    return gitErrorWithCode(mapped.code(), gitCommandWillUseErrorUserInfo(std::move(userInfo)));
}

RVUserInfo RVGitCommand::makeGitErrorUserInfo() {
    RVUserInfo userInfo;
    if (gitBinary_->version())
        userInfo.emplace(RVGitBinaryVersionErrorKey, *gitBinary_->version());
    userInfo.emplace(RVGitCommandCallErrorKey, commandCall());
    userInfo.emplace(RVGitCommandExitCodeErrorKey, exitCode());
    if (repositoryPath_)
        userInfo.emplace(RVGitRepositoryPathErrorKey, *repositoryPath_);
    userInfo.emplace(RVGitCommandErrorOutputErrorKey, standardErrorString());
    userInfo.emplace(RVGitCommandStandardOutputErrorKey, standardOutputString());
    userInfo.emplace(RVGitCommandEnvironmentErrorKey, environment());
    return userInfo;
}
