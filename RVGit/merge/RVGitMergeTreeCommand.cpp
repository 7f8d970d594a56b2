#include "RVGit/merge/RVGitMergeTreeCommand.h"

#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/repository/RVGitRepository.h"

struct RVGitMergeTreeOutputParser::Header {
    std::string_view side;
    std::string_view mode;
    std::string_view hash;
    std::string_view path;

    /// Absent if the line is no header.
    static std::optional<Header> inLine(std::string_view line);

private:
    static std::optional<Header> byExpression(std::string_view line);
};

namespace {

constexpr std::size_t hashLength = 40;

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}
bool isLetter(char c) {
    return c >= 'a' && c <= 'z';
}
bool isOctalDigit(char c) {
    return c >= '0' && c <= '7';
}
bool isHashDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
}
/// Perhaps a blank of another kind.
bool isUnusual(char c) {
    return static_cast<unsigned char>(c) >= 0x7F || (c < ' ' && !isBlank(c));
}

/// Takes the characters of a kind off the text's start.
std::string_view takeWhile(std::string_view& text, bool (*isOfKind)(char)) {
    std::size_t length = 0;
    while (length < text.size() && isOfKind(text[length]))
        ++length;
    const std::string_view taken = text.substr(0, length);
    text.remove_prefix(length);
    return taken;
}

}  // namespace

std::optional<RVGitMergeTreeOutputParser::Header> RVGitMergeTreeOutputParser::Header::byExpression(
    std::string_view line) {
    // A path may hold any line separator but the newline.
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, R"(^\s*([a-z]+)\s+([0-7]+)\s+([0-9a-f]{40})\s+(.+)$)",
        RVRegularExpression::DotMatchesLineSeparators);
    const auto groups = expression->firstMatch(line);
    if (groups.empty())
        return std::nullopt;
    return Header{*groups[1], *groups[2], *groups[3], *groups[4]};
}

std::optional<RVGitMergeTreeOutputParser::Header> RVGitMergeTreeOutputParser::Header::inLine(
    std::string_view line) {
    const std::string_view whole = line;
    Header header;
    // Nearly every line is one of a diff, and is told from a header by its first characters. Where
    // a character may count as white space without being plain, the expression decides.
    const auto isUnclear = [&] { return !line.empty() && isUnusual(line.front()); };
    (void)takeWhile(line, isBlank);
    header.side = takeWhile(line, isLetter);
    if (isUnclear())
        return byExpression(whole);
    if (header.side.empty() || takeWhile(line, isBlank).empty())
        return std::nullopt;
    header.mode = takeWhile(line, isOctalDigit);
    if (isUnclear())
        return byExpression(whole);
    if (header.mode.empty() || takeWhile(line, isBlank).empty())
        return std::nullopt;
    header.hash = takeWhile(line, isHashDigit);
    if (isUnclear())
        return byExpression(whole);
    const std::string_view gap = takeWhile(line, isBlank);
    if (header.hash.size() != hashLength || gap.empty())
        return std::nullopt;
    if (isUnclear())
        return byExpression(whole);
    // A path of blanks alone keeps the last of them.
    header.path = line.empty() && gap.size() > 1 ? gap.substr(gap.size() - 1) : line;
    if (header.path.empty())
        return std::nullopt;
    return header;
}

RVGitMergeTreeOutputParser::RVGitMergeTreeOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

RVGitMergeTreeOutputParser::RVGitMergeTreeOutputParser(std::vector<std::string> outputLines)
    : RVGitItemOutputParser(std::move(outputLines)) {}

std::string_view RVGitMergeTreeOutputParser::parserName() const {
    return "RVGitMergeTreeOutputParser";
}

bool RVGitMergeTreeOutputParser::parseOutputLine(std::string_view line) {
    if (!firstLineParsed_) {
        firstLineParsed_ = true;
        currentResultItem_.emplace().message = std::string(line);
        return true;
    }
    const auto header = Header::inLine(line);
    if (!header) {
        parsingHeaderComplete_ = true;
        lastOutputLine_ = line;
        addDiffLine(line);
        return true;
    }
    if (parsingHeaderComplete_) {
        currentResultItem_->isBinaryFile = binaryEntry_;
        removeLastDiffLine();
        closeCurrentItem();
        currentResultItem_.emplace().message = lastOutputLine_;
        clearEntryState();
    }
    fillSide(*header);
    lastOutputLine_ = line;
    return true;
}

void RVGitMergeTreeOutputParser::parsingDidFinish() {
    if (!currentResultItem_)
        return;
    RVGitMergeTreeOutputParserResultItem& item = *currentResultItem_;
    if (!item.message && !lastOutputLine_.empty())
        item.message = lastOutputLine_;
    const bool hasSubmodule = item.baseFileMode == RVGitFileModeSubmodule ||
                              item.ourFileMode == RVGitFileModeSubmodule ||
                              item.theirFileMode == RVGitFileModeSubmodule ||
                              item.resultFileMode == RVGitFileModeSubmodule;
    if (!hasSubmodule && currentDiffLines_.empty())
        item.isBinaryFile = true;
    closeCurrentItem();
    currentResultItem_.reset();
    clearEntryState();
}

void RVGitMergeTreeOutputParser::addDiffLine(std::string_view line) {
    if (binaryEntry_)
        return;
    currentDiffSize_ += line.size();
    // Kept for compatibility: no empty line gets here.
    if (line.empty() || currentDiffSize_ > maximumDiffSize) {
        treatAsBinary();
        return;
    }
    currentDiffLines_ += '\n';
    currentDiffLines_ += line;
}

void RVGitMergeTreeOutputParser::treatAsBinary() {
    binaryEntry_ = true;
    currentDiffLines_.clear();
    currentDiffLines_.shrink_to_fit();
}

void RVGitMergeTreeOutputParser::removeLastDiffLine() {
    if (!currentDiffLines_.empty())
        currentDiffLines_.resize(currentDiffLines_.rfind('\n'));
}

void RVGitMergeTreeOutputParser::closeCurrentItem() {
    if (!currentDiffLines_.empty())
        currentResultItem_->diff = currentDiffLines_.substr(1);
    addResult(*std::move(currentResultItem_));
}

void RVGitMergeTreeOutputParser::clearEntryState() {
    currentDiffLines_.clear();
    parsingHeaderComplete_ = false;
    binaryEntry_ = false;
    currentDiffSize_ = 0;
}

void RVGitMergeTreeOutputParser::fillSide(const Header& header) {
    using Item = RVGitMergeTreeOutputParserResultItem;
    struct Side {
        std::string_view name;
        std::optional<std::string> Item::*objectHash;
        std::optional<std::string> Item::*filePath;
        RVGitFileMode Item::*fileMode;
    };
    static constexpr Side sides[] = {
        {"base", &Item::baseObjectHash, &Item::baseFilepath, &Item::baseFileMode},
        {"our", &Item::ourObjectHash, &Item::ourFilepath, &Item::ourFileMode},
        {"their", &Item::theirObjectHash, &Item::theirFilepath, &Item::theirFileMode},
        {"result", &Item::resultObjectHash, &Item::resultFilepath, &Item::resultFileMode},
    };
    Item& item = *currentResultItem_;
    for (const Side& side : sides) {
        if (side.name != header.side)
            continue;
        item.*side.objectHash = std::string(header.hash);
        item.*side.filePath = std::string(header.path);
        item.*side.fileMode = RVGitFileModeFromString(header.mode);
    }
}

RVGitMergeTreeCommand::RVGitMergeTreeCommand(const std::shared_ptr<RVGitRepository>& repository,
                                             std::string baseTreeRevision,
                                             std::string sourceTreeRevision,
                                             std::string targetTreeRevision)
    : RVGitCommand(repository),
      baseTreeRevision_(std::move(baseTreeRevision)),
      sourceTreeRevision_(std::move(sourceTreeRevision)),
      targetTreeRevision_(std::move(targetTreeRevision)) {}

std::shared_ptr<RVGitMergeTreeCommand> RVGitMergeTreeCommand::gitMergeTreeCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string baseTreeRevision,
    std::string sourceTreeRevision, std::string targetTreeRevision) {
    return std::make_shared<RVGitMergeTreeCommand>(repository, std::move(baseTreeRevision),
                                                   std::move(sourceTreeRevision),
                                                   std::move(targetTreeRevision));
}

void RVGitMergeTreeCommand::gitCommandWillInitialize() {
    setGitCommand("merge-tree");
    addGitCommandRevision(baseTreeRevision_);
    addGitCommandRevision(targetTreeRevision_);
    addGitCommandRevision(sourceTreeRevision_);
}

bool RVGitMergeTreeCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    RVGitMergeTreeOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    const auto repository = RVGitRepository::repositoryWithPath(repositoryPath().value_or(""));
    auto items = parser.takeIndexedResults();
    mergeTreeEntries_.reserve(items.size());
    for (auto& item : items)
        mergeTreeEntries_.push_back(
            RVGitMergeTreeEntry::mergeTreeEntryWithParserResultItem(std::move(item), repository));
    return parsed;
}
