#include "RVGit/worktree/RVGitStatusCommand.h"

#include <utility>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/worktree/RVGitWorkingTreeHelper.h"

namespace {

std::string filePathFromText(std::string_view text) {
    std::string path = unquotedCString(text);
    path.erase(path.find_last_not_of('/') + 1);
    path.erase(0, path.find_first_not_of('/'));
    return path;
}

// By mode, from 1 on.
constexpr std::string_view untrackedFilesWords[] = {"no", "normal", "all"};
constexpr std::string_view ignoreSubmodulesWords[] = {"none", "tracked", "dirty", "all"};

template <std::size_t count>
void addModeOption(RVGitCommand& command, std::string option,
                   const std::string_view (&words)[count], std::uint64_t mode) {
    if (mode >= 1 && mode <= count)
        command.addGitCommandOption(option.append(words[mode - 1]));
}

}  // namespace

RVGitStatusOutputParser::RVGitStatusOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData) {}

RVGitStatusOutputParser::RVGitStatusOutputParser(std::vector<std::string> outputLines)
    : RVGitItemOutputParser(std::move(outputLines)) {}

std::string_view RVGitStatusOutputParser::parserName() const {
    return "RVGitStatusOutputParser";
}

bool RVGitStatusOutputParser::parseOutputLine(std::string_view line) {
    const auto fromRight = textFromCharacter(line, 1);
    const auto fromBlank = textFromCharacter(line, 2);
    const auto fromPath = textFromCharacter(line, 3);
    if (!fromPath || fromPath->empty())
        return false;
    const auto left = line.substr(0, line.size() - fromRight->size());
    const auto right = fromRight->substr(0, fromRight->size() - fromBlank->size());

    RVGitStatusOutputParserResultItem item;
    std::string_view path = *fromPath;
    if (left == "R" || left == "C") {
        constexpr std::string_view arrow = " -> ";
        const auto end = path.find(arrow);
        if (end == std::string_view::npos ||
            path.find(arrow, end + arrow.size()) != std::string_view::npos)
            return false;
        item.originalFilePath = filePathFromText(path.substr(0, end));
        path.remove_prefix(end + arrow.size());
    }
    item.filePath = filePathFromText(path);
    item.leftFileStatus = RVGitWorkingTreeHelper::fileStatusFromString(left);
    item.rightFileStatus = RVGitWorkingTreeHelper::fileStatusFromString(right);

    if (item.rightFileStatus == RVGitFileStatusUntracked ||
        item.rightFileStatus == RVGitFileStatusIgnored) {
        const auto deleted = deletedFilesMap_.find(item.filePath);
        if (deleted != deletedFilesMap_.end()) {
            indexedResultCache_[deleted->second].rightFileStatus = item.rightFileStatus;
            return true;
        }
    }
    if (item.leftFileStatus == RVGitFileStatusDeleted)
        deletedFilesMap_.insert_or_assign(item.filePath, indexedResultCache_.size());
    addResult(std::move(item));
    return true;
}

RVGitStatusCommand::RVGitStatusCommand(const std::shared_ptr<RVGitRepository>& repository,
                                       std::optional<std::vector<std::string>> filePaths)
    : RVGitFilePathsCommand(repository, std::move(filePaths)) {}

std::shared_ptr<RVGitStatusCommand> RVGitStatusCommand::gitStatusCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths) {
    return std::make_shared<RVGitStatusCommand>(repository, std::move(filePaths));
}

void RVGitStatusCommand::gitCommandWillInitialize() {
    setGitCommand("status");
    // Of a quoted path that is not ASCII the escapes would stay.
    overrideGitConfiguration("core.quotePath", "true");
    addGitCommandOption("--porcelain");
    if (showsIgnoredFiles_)
        addGitCommandOption("--ignored");
    addModeOption(*this, "--untracked-files=", untrackedFilesWords, untrackedFilesMode_);
    addModeOption(*this, "--ignore-submodules=", ignoreSubmodulesWords, ignoreSubmodulesMode_);
    addFilePathArguments();
}

bool RVGitStatusCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    RVGitStatusOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    changedFiles_ = parser.takeIndexedResults();
    return parsed;
}
