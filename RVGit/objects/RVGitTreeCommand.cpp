#include "RVGit/objects/RVGitTreeCommand.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitObject.h"
#include "RVGit/objects/RVGitObjectReference.h"

namespace {

struct TreeRecord {
    std::string_view mode;
    std::string_view type;
    std::string_view hash;
    std::optional<std::string_view> size;
    std::string_view path;
};

constexpr std::size_t modeLength = 6;
constexpr std::size_t hashLength = 40;

bool isLetter(char c) {
    return c >= 'a' && c <= 'z';
}
bool isHashDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f');
}

/// The record as git writes it, by its columns: "100644 blob HASH[ SIZE]\tPATH". Absent for
/// anything that the regular expression might read in another way.
std::optional<TreeRecord> treeRecordByColumns(std::string_view line) {
    TreeRecord record;
    record.mode = line.substr(0, modeLength);
    if (line.size() < modeLength + 1 || line[modeLength] != ' ' ||
        !std::all_of(record.mode.begin(), record.mode.end(), isDigit))
        return std::nullopt;
    line.remove_prefix(modeLength + 1);

    const auto typeLength = line.find(' ');
    if (typeLength == std::string_view::npos || typeLength == 0)
        return std::nullopt;
    record.type = line.substr(0, typeLength);
    if (!std::all_of(record.type.begin(), record.type.end(), isLetter))
        return std::nullopt;
    line.remove_prefix(typeLength + 1);

    record.hash = line.substr(0, hashLength);
    if (record.hash.size() < hashLength ||
        !std::all_of(record.hash.begin(), record.hash.end(), isHashDigit))
        return std::nullopt;
    line.remove_prefix(hashLength);

    const auto tab = line.find('\t');
    if (tab == std::string_view::npos || tab + 1 == line.size())
        return std::nullopt;
    if (tab > 0) {
        const auto sizeStart = line.find_first_not_of(' ');
        record.size = line.substr(sizeStart, tab - sizeStart);
        const auto& size = *record.size;
        const bool isNumber = std::all_of(size.begin(), size.end(), isDigit) && !size.empty();
        if (sizeStart == 0 || (!isNumber && size != "-"))
            return std::nullopt;
    }
    // Where the tab stands at once there is no size, even if the path is "5\tname", of which the
    // expression would take the beginning for one: git writes a size behind blanks.
    record.path = line.substr(tab + 1);
    return record;
}

std::optional<TreeRecord> treeRecordByExpression(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, R"(^(\d{6})\s(\w+)\s([a-f0-9]{40})((?!\t)\s+(\d+|\-))?\t(.+))",
        RVRegularExpression::DotMatchesLineSeparators);
    const auto groups = expression->firstMatch(line);
    if (groups.empty())
        return std::nullopt;
    return TreeRecord{*groups[1], *groups[2], *groups[3], groups[5], *groups[6]};
}

}  // namespace

RVGitTreeOutputParser::RVGitTreeOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::NULByte) {}

RVGitTreeOutputParser::RVGitTreeOutputParser(std::vector<std::string> outputLines)
    : RVGitItemOutputParser(std::move(outputLines)) {}

std::string_view RVGitTreeOutputParser::parserName() const {
    return "RVGitTreeOutputParser";
}

bool RVGitTreeOutputParser::parseOutputLine(std::string_view line) {
    auto record = treeRecordByColumns(line);
    if (!record)
        record = treeRecordByExpression(line);
    if (!record)
        return false;
    addResult({
        .filePath = std::string(record->path),
        .objectHash = std::string(record->hash),
        .fileMode = RVGitFileModeFromString(record->mode),
        .objectType = RVGitObjectTypeFromString(record->type),
        .fileSize = record->size ? static_cast<std::uint64_t>(integerValue(*record->size)) : 0,
    });
    return true;
}

RVGitTreeCommand::RVGitTreeCommand(const std::shared_ptr<RVGitRepository>& repository,
                                   const std::optional<RVOptions>&)
    : RVGitCommand(repository) {}

std::shared_ptr<RVGitTreeCommand> RVGitTreeCommand::gitTreeCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::string& treeHash) {
    auto command = std::make_shared<RVGitTreeCommand>(repository);
    command->setObjectReference(treeHash);
    return command;
}

std::shared_ptr<RVGitTreeCommand> RVGitTreeCommand::gitTreeCommandWithRepositoryDirectoryPath(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<std::string>& revision,
    const std::optional<std::string>& directoryPath) {
    auto command = std::make_shared<RVGitTreeCommand>(repository);
    command->setObjectReference(RVGitObject::objectReferenceWithRevision(revision, directoryPath));
    return command;
}

std::shared_ptr<RVGitTreeCommand> RVGitTreeCommand::gitTreeCommandWithRepositoryFilePath(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<std::string>& revision,
    const std::optional<std::string>& filePath) {
    auto command = std::make_shared<RVGitTreeCommand>(repository);
    command->setRevision(revision);
    command->setFilePath(filePath);
    return command;
}

const RVGitErrorTable& RVGitTreeCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitTreeNotATreeObjectError)
            .command("ls-tree")
            .exitCode(128)
            .standardError("fatal: not a tree object"),
        gitErrorRow(RVGitTreeNotFoundError)
            .command("ls-tree")
            .exitCode(128)
            .standardError("fatal: Not a valid object name"),
    };
    return *table;
}

void RVGitTreeCommand::gitCommandWillInitialize() {
    setGitCommand("ls-tree");
    addGitCommandOption("-z");
    if (recursesDirectories_)
        addGitCommandOption("-r");
    if (includesFileSize_)
        addGitCommandOption("-l");
    if (objectReference_) {
        addGitCommandRevision(*objectReference_, RVGitTreeNotFoundError);
    } else if (revision_ && filePath_) {
        addGitCommandRevision(*revision_, RVGitTreeNotFoundError);
        addGitCommandFilePaths({*filePath_});
    }
}

RVUserInfo RVGitTreeCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    if (objectReference_) {
        addObjectReferenceToErrorUserInfo(*objectReference_, userInfo);
        return userInfo;
    }
    if (revision_)
        userInfo.insert_or_assign(RVGitRevisionErrorKey, *revision_);
    if (filePath_)
        userInfo.insert_or_assign(RVGitFilePathErrorKey, *filePath_);
    return userInfo;
}

bool RVGitTreeCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    RVGitTreeOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    treeEntries_ = parser.takeIndexedResults();
    return parsed;
}
