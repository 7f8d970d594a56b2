#include "RVGit/merge/RVGitMergeTreeCommand.h"

#include <functional>
#include <utility>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/command/RVGitValues.h"
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

namespace {

/// Whether it is a header, but for a hash of 64 digits.
bool isHeaderOfSHA256(std::string_view line) {
    (void)takeWhile(line, isBlank);
    return !takeWhile(line, isLetter).empty() && !takeWhile(line, isBlank).empty() &&
           !takeWhile(line, isOctalDigit).empty() && !takeWhile(line, isBlank).empty() &&
           beginsWithSHA256Hash(line);
}

}  // namespace

RVGitMergeTreeOutputParser::RVGitMergeTreeOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

RVGitMergeTreeOutputParser::RVGitMergeTreeOutputParser(std::vector<std::string> outputLines)
    : RVGitItemOutputParser(std::move(outputLines)) {}

std::string_view RVGitMergeTreeOutputParser::parserName() const {
    return "RVGitMergeTreeOutputParser";
}

// Lines are cut at newlines, so that they lie in the output, or in what the parser keeps of it, as
// long as the parser lives: none is copied but those that a result keeps.

bool RVGitMergeTreeOutputParser::parseOutputLine(std::string_view line) {
    if (!firstLineParsed_) {
        firstLineParsed_ = true;
        currentResultItem_.emplace().message = std::string(line);
        return true;
    }
    const auto header = Header::inLine(line);
    // Ahead of any text of a file there are headers alone.
    if (!header && !parsingHeaderComplete_ && isHeaderOfSHA256(line))
        return false;
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
        currentResultItem_.emplace().message = std::string(lastOutputLine_);
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
        item.message = std::string(lastOutputLine_);
    const bool hasSubmodule = item.baseFileMode == RVGitFileModeSubmodule ||
                              item.ourFileMode == RVGitFileModeSubmodule ||
                              item.theirFileMode == RVGitFileModeSubmodule ||
                              item.resultFileMode == RVGitFileModeSubmodule;
    if (!hasSubmodule && currentDiff().empty())
        item.isBinaryFile = true;
    closeCurrentItem();
    clearEntryState();
}

void RVGitMergeTreeOutputParser::didReadItem(RVGitMergeTreeOutputParserResultItem item,
                                             std::string_view diff) {
    if (!diff.empty())
        item.diff = std::string(diff);
    addResult(std::move(item));
}

std::string_view RVGitMergeTreeOutputParser::currentDiff() const {
    return copiedDiffLines_ ? std::string_view(*copiedDiffLines_) : currentDiffLines_;
}

void RVGitMergeTreeOutputParser::addDiffLine(std::string_view line) {
    if (binaryEntry_)
        return;
    currentDiffSize_ += line.size();
    // Kept for compatibility: no empty line gets here.
    if (line.empty() || currentDiffSize_ > maximumDiffSize) {
        binaryEntry_ = true;
        clearDiff();
    } else if (copiedDiffLines_) {
        *copiedDiffLines_ += '\n';
        *copiedDiffLines_ += line;
    } else if (currentDiffLines_.empty()) {
        currentDiffLines_ = line;
    } else if (line.data() == currentDiffLines_.data() + currentDiffLines_.size() + 1) {
        currentDiffLines_ = {currentDiffLines_.data(), currentDiffLines_.size() + 1 + line.size()};
    } else {
        copiedDiffLines_ = std::string(currentDiffLines_) + '\n' + std::string(line);
    }
}

void RVGitMergeTreeOutputParser::clearDiff() {
    currentDiffLines_ = {};
    copiedDiffLines_.reset();
}

void RVGitMergeTreeOutputParser::removeLastDiffLine() {
    const auto lineStart = currentDiff().rfind('\n');
    if (lineStart == std::string_view::npos)
        clearDiff();
    else if (copiedDiffLines_)
        copiedDiffLines_->resize(lineStart);
    else
        currentDiffLines_ = currentDiffLines_.substr(0, lineStart);
}

void RVGitMergeTreeOutputParser::closeCurrentItem() {
    didReadItem(*std::move(currentResultItem_), currentDiff());
    currentResultItem_.reset();
}

void RVGitMergeTreeOutputParser::clearEntryState() {
    clearDiff();
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
    // No selections either: git would take "--all" for an abbreviation of an option of its own, and
    // print a report of another form.
    addGitCommandNames({baseTreeRevision_, targetTreeRevision_, sourceTreeRevision_});
}

/// Makes an entry of each item at once, and leaves its diff where it lies in the output.
class RVGitMergeTreeCommand::EntryParser : public RVGitMergeTreeOutputParser {
public:
    EntryParser(std::shared_ptr<const RVDataBuffer> output,
                std::shared_ptr<RVGitRepository> repository)
        : RVGitMergeTreeOutputParser(output->view()),
          output_(std::move(output)),
          repository_(std::move(repository)) {}

    RVGitMergeTreeEntry::List entries;

protected:
    void didReadItem(RVGitMergeTreeOutputParserResultItem item, std::string_view diff) override {
        const std::string_view output = output_->view();
        const std::less_equal<const char*> isAheadOf;
        const bool isPartOfOutput = isAheadOf(output.data(), diff.data()) &&
                                    isAheadOf(diff.data(), output.data() + output.size());
        auto entry =
            RVGitMergeTreeEntry::mergeTreeEntryWithParserResultItem(std::move(item), repository_);
        if (!diff.empty() && isPartOfOutput) {
            entry->setDiff(output_, diff);
        } else if (!diff.empty()) {
            const auto copy = std::make_shared<const std::string>(diff);
            entry->setDiff(copy, *copy);
        }
        entries.push_back(std::move(entry));
    }

private:
    std::shared_ptr<const RVDataBuffer> output_;
    std::shared_ptr<RVGitRepository> repository_;
};

bool RVGitMergeTreeCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    EntryParser parser(standardOutputBuffer(),
                       RVGitRepository::repositoryWithPath(repositoryPath().value_or("")));
    const bool parsed = parser.parse(error);
    mergeTreeEntries_ = std::move(parser.entries);
    return parsed;
}
