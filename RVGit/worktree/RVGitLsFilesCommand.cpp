#include "RVGit/worktree/RVGitLsFilesCommand.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/worktree/RVGitFilePathsOutputParser.h"
#include "RVGit/worktree/RVGitIndexHelper.h"

namespace {

// The columns of a record as git prints it: "H 100644 HASH 0\tPATH".
constexpr std::size_t modeColumn = 2;
constexpr std::size_t modeLength = 6;
constexpr std::size_t hashColumn = 9;
constexpr std::size_t hashLength = 40;
constexpr std::size_t stageColumn = 50;
constexpr std::size_t pathColumn = 52;

struct IndexRecord {
    std::optional<char> flag;
    std::string_view mode;
    RVGitCompactHash hash;
    std::string_view stage;
    std::string_view path;
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Absent for anything that the regular expression might read in another way.
std::optional<IndexRecord> indexRecordByColumns(std::string_view line) {
    if (line.size() <= pathColumn || line[modeColumn - 1] != ' ' || line[hashColumn - 1] != ' ' ||
        line[stageColumn - 1] != ' ' || line[pathColumn - 1] != '\t' ||
        !isDigit(line[stageColumn]) ||
        std::string_view("HhSsMmRrCcKk").find(line[0]) == std::string_view::npos)
        return std::nullopt;
    const auto mode = line.substr(modeColumn, modeLength);
    if (!std::all_of(mode.begin(), mode.end(), isDigit))
        return std::nullopt;
    auto hash = RVGitCompactHash::hashOfDigits(line.substr(hashColumn, hashLength));
    if (!hash)
        return std::nullopt;
    return IndexRecord{line[0], mode, std::move(*hash), line.substr(stageColumn, 1),
                       line.substr(pathColumn)};
}

std::optional<IndexRecord> indexRecordByExpression(std::string_view line) {
    static const RVRegularExpression expression(
        R"(^([hsmrckHSMRCK])?\s+([0-9]{6})\s([0-9a-f]{40})\s([0-9])\t(.+))",
        RVRegularExpression::DotMatchesLineSeparators);
    const auto groups = expression.firstMatch(line);
    if (groups.empty())
        return std::nullopt;
    return IndexRecord{groups[1] ? std::optional(groups[1]->front()) : std::nullopt, *groups[2],
                       RVGitCompactHash(std::string(*groups[3])), *groups[4], *groups[5]};
}

}  // namespace

RVGitIndexOutputParser::RVGitIndexOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::NULByte) {}

RVGitIndexOutputParser::RVGitIndexOutputParser(std::vector<std::string> outputLines)
    : RVGitItemOutputParser(std::move(outputLines)) {}

std::string_view RVGitIndexOutputParser::parserName() const {
    return "RVGitIndexOutputParser";
}

bool RVGitIndexOutputParser::shouldParseOutputLine(std::string_view line) const {
    if (!filtersAssumeUnchangedFiles_ && !filtersSubmodules_ && filePaths_.empty())
        return true;
    if (filtersAssumeUnchangedFiles_ && RVGitIndexHelper::isAssumeUnchangedFlag(line.substr(0, 1)))
        return true;
    if (filtersSubmodules_) {
        const auto mode = textFromCharacter(line, modeColumn);
        if (mode && RVGitFileModeFromString(mode->substr(0, modeLength)) == RVGitFileModeSubmodule)
            return true;
    }
    if (filePaths_.empty())
        return false;
    const auto path = textFromCharacter(line, pathColumn);
    return path && std::any_of(filePaths_.begin(), filePaths_.end(), [&](const std::string& given) {
               return path->starts_with(given) || isEqualToUnicodeString(*path, given);
           });
}

bool RVGitIndexOutputParser::parseOutputLine(std::string_view line) {
    if (!shouldParseOutputLine(line))
        return true;
    auto record = indexRecordByColumns(line);
    if (!record)
        record = indexRecordByExpression(line);
    if (!record)
        return false;
    addResult({
        .filePath = std::string(record->path),
        .objectHash = std::move(record->hash),
        .flag = record->flag,
        .fileMode = RVGitFileModeFromString(record->mode),
        .stage = RVGitIndexHelper::indexStageFromString(record->stage),
    });
    return true;
}

RVGitLsFilesCommand::RVGitLsFilesCommand(const std::shared_ptr<RVGitRepository>& repository,
                                         std::optional<std::vector<std::string>> filePaths,
                                         unsigned options)
    : RVGitCommand(repository),
      filePaths_(std::move(filePaths)),
      showsIndexInfo_(options & RVGitLsFilesCommandOptionShowsIndexInfo),
      usesStandardExcludes_(options & RVGitLsFilesCommandOptionUsesStandardExcludes),
      showsIgnoredFiles_(options & RVGitLsFilesCommandOptionShowsIgnoredFiles),
      showsOtherFiles_(options & RVGitLsFilesCommandOptionShowsOtherFiles),
      showsAssumeUnchangedFiles_(options & RVGitLsFilesCommandOptionShowsAssumeUnchangedFiles),
      showsSubmodules_(options & RVGitLsFilesCommandOptionShowsSubmodules) {}

std::shared_ptr<RVGitLsFilesCommand> RVGitLsFilesCommand::gitLsFilesCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLsFilesCommand>(repository);
}

std::shared_ptr<RVGitLsFilesCommand> RVGitLsFilesCommand::gitLsFilesCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths, unsigned options) {
    return std::make_shared<RVGitLsFilesCommand>(repository, std::move(filePaths), options);
}

void RVGitLsFilesCommand::gitCommandWillInitialize() {
    setGitCommand("ls-files");
    addGitCommandOption("-z");
    if (showsIndexInfo_)
        addGitCommandOptions({"-v", "--stage"});
    if (showsIgnoredFiles_)
        addGitCommandOption("--ignored");
    if (showsOtherFiles_)
        addGitCommandOption("--others");
    if (usesStandardExcludes_)
        addGitCommandOption("--exclude-standard");
    if (filePaths_) {
        addGitCommandArgument("--");
        addGitCommandArguments(*filePaths_);
    }
}

bool RVGitLsFilesCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (!showsIndexInfo_) {
        RVGitFilePathsOutputParser parser(standardOutputData());
        const bool parsed = parser.parse(error);
        filePathEntries_ = parser.takeIndexedResults();
        return parsed;
    }
    RVGitIndexOutputParser parser(standardOutputData());
    parser.setFilePaths(filePaths_.value_or(std::vector<std::string>()));
    parser.setFiltersAssumeUnchangedFiles(showsAssumeUnchangedFiles_);
    parser.setFiltersSubmodules(showsSubmodules_);
    const bool parsed = parser.parse(error);
    entries_ = parser.takeIndexedResults();
    return parsed;
}
