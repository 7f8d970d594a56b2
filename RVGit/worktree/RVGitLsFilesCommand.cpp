#include "RVGit/worktree/RVGitLsFilesCommand.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitFilePathsOutputParser.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/worktree/RVGitIndexHelper.h"

namespace {

// The columns of a record as git prints it: "H 100644 HASH 0\tPATH".
constexpr std::size_t modeColumn = 2;
constexpr std::size_t modeLength = 6;
constexpr std::size_t hashColumn = 9;
constexpr std::size_t hashLength = 40;
constexpr std::size_t stageColumn = 50;
constexpr std::size_t pathColumn = 52;

/// A letter of "-v", in either case.
bool isFlag(char c) {
    switch (c | 0x20) {
        case 'h':
        case 's':
        case 'm':
        case 'r':
        case 'c':
        case 'k':
            return true;
        default:
            return false;
    }
}

/// False for anything that the regular expression might read in another way, and for the modes that
/// git does not write.
bool readRecordByColumns(std::string_view line, RVGitIndexOutputParserResultItem& item) {
    if (line.size() <= pathColumn || !isFlag(line[0]) || line[modeColumn - 1] != ' ' ||
        line[hashColumn - 1] != ' ' || line[stageColumn - 1] != ' ' ||
        line[pathColumn - 1] != '\t' || line[stageColumn] < '0' || line[stageColumn] > '9')
        return false;
    const auto mode = RVGitKnownFileModeFromString(line.substr(modeColumn, modeLength));
    const auto hash = RVGitCompactHash::hashOfDigits(line.substr(hashColumn, hashLength));
    if (!mode || !hash)
        return false;
    item.filePath = line.substr(pathColumn);
    item.objectHash = *hash;
    item.flag = line[0];
    item.fileMode = *mode;
    item.stage = RVGitIndexHelper::indexStageFromString(line.substr(stageColumn, 1));
    return true;
}

bool readRecordByExpression(std::string_view line, RVGitIndexOutputParserResultItem& item) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, R"(^([hsmrckHSMRCK])?\s+([0-9]{6})\s([0-9a-f]{40})\s([0-9])\t(.+))",
        RVRegularExpression::DotMatchesLineSeparators);
    const auto groups = expression->firstMatch(line);
    if (groups.empty())
        return false;
    item.filePath = *groups[5];
    item.objectHash = RVGitCompactHash::hashOfDigits(*groups[3]).value_or(RVGitCompactHash());
    if (groups[1])
        item.flag = groups[1]->front();
    item.fileMode = RVGitFileModeFromString(*groups[2]);
    item.stage = RVGitIndexHelper::indexStageFromString(*groups[4]);
    return true;
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
    // Of a record with a longer hash the filters know no path.
    const bool holdsSHA256Hash = line.size() > hashColumn && line[hashColumn - 1] == ' ' &&
                                 beginsWithSHA256Hash(line.substr(hashColumn));
    if (holdsSHA256Hash)
        return false;
    if (!shouldParseOutputLine(line))
        return true;
    RVGitIndexOutputParserResultItem& item = indexedResultCache_.emplace_back();
    if (readRecordByColumns(line, item))
        return true;
    ++numberOfRecordsOutsideColumns_;
    if (readRecordByExpression(line, item))
        return true;
    indexedResultCache_.pop_back();
    return false;
}

RVGitLsFilesCommand::RVGitLsFilesCommand(const std::shared_ptr<RVGitRepository>& repository,
                                         std::optional<std::vector<std::string>> filePaths,
                                         unsigned options)
    : RVGitFilePathsCommand(repository, std::move(filePaths)),
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
    addFilePathArguments();
}

bool RVGitLsFilesCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (!showsIndexInfo_) {
        RVGitFilePathsOutputParser parser(standardOutputData());
        const bool parsed = parser.parse(error);
        filePathEntries_ = parser.takeIndexedResults();
        return parsed;
    }
    RVGitIndexOutputParser parser(standardOutputData());
    parser.setFilePaths(filePaths().value_or(std::vector<std::string>()));
    parser.setFiltersAssumeUnchangedFiles(showsAssumeUnchangedFiles_);
    parser.setFiltersSubmodules(showsSubmodules_);
    const bool parsed = parser.parse(error);
    entries_ = parser.takeIndexedResults();
    return parsed;
}
