#include "RVGit/diff/RVGitDiffStatsOutputParser.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"

namespace {

struct RawRecord {
    /// Each with its blank behind it: "100644 100755 ".
    std::string_view modes;
    std::string_view hashes;
    std::string_view status;
    std::string_view similarityIndex;
};

struct NumstatRecord {
    std::string_view linesAdded;
    std::string_view linesDeleted;
};

bool isHashDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f');
}
bool isStatus(char c) {
    return std::string_view("ADMCR").find(c) != std::string_view::npos;
}

/// Takes words of that length, each with a blank behind it, off the front of the text.
template <std::size_t length>
std::string_view takeWords(std::string_view& text, bool (*isOfWord)(char)) {
    std::size_t end = 0;
    while (text.size() - end > length && text[end + length] == ' ' &&
           std::all_of(text.begin() + end, text.begin() + end + length, isOfWord))
        end += length + 1;
    const std::string_view words = text.substr(0, end);
    text.remove_prefix(end);
    return words;
}

/// The first characters of the text for which that holds, taken off its front.
std::string_view takeWhile(std::string_view& text, bool (*holds)(char), std::size_t limit) {
    std::size_t size = 0;
    while (size < std::min(limit, text.size()) && holds(text[size]))
        ++size;
    const std::string_view taken = text.substr(0, size);
    text.remove_prefix(size);
    return taken;
}

/// The record as git writes it. Absent for anything that the regular expression might read in
/// another way.
std::optional<RawRecord> rawRecordByColumns(std::string_view line) {
    const auto start = line.find_first_not_of(':');
    if (start == 0 || start == std::string_view::npos)
        return std::nullopt;
    line.remove_prefix(start);
    RawRecord record;
    record.modes = takeWords<6>(line, isDigit);
    record.hashes = takeWords<40>(line, isHashDigit);
    if (record.modes.empty() || record.hashes.empty() || line.empty() || !isStatus(line.front()))
        return std::nullopt;
    record.status = line.substr(0, 1);
    line.remove_prefix(1);
    (void)takeWhile(line, isStatus, 1);
    record.similarityIndex = takeWhile(line, isDigit, 3);
    // Digits of other scripts count too.
    const bool endsInASCII = line.empty() || static_cast<unsigned char>(line.front()) < 0x80;
    return endsInASCII ? std::optional(record) : std::nullopt;
}

// A record may begin anywhere in the line; it is looked for where the last of its colons may stand.
std::optional<RawRecord> rawRecord(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        R"(^:((\d{6} )+)(([a-f0-9]{40} )+)([ADMCR])([ADMCR])?(\d{1,3})?)");
    const auto mayBeDigit = [](char c) {
        return isDigit(c) || static_cast<unsigned char>(c) >= 0x80;
    };
    for (auto colon = line.find(':'); colon != std::string_view::npos;
         colon = line.find(':', colon + 1)) {
        if (colon + 1 == line.size() || !mayBeDigit(line[colon + 1]))
            continue;
        if (auto record = rawRecordByColumns(line.substr(colon)))
            return record;
        const auto groups = expression->firstMatch(line.substr(colon));
        if (!groups.empty())
            return RawRecord{*groups[1], *groups[3], *groups[5], groups[7].value_or("")};
    }
    return std::nullopt;
}

std::optional<NumstatRecord> numstatRecordByColumns(std::string_view line) {
    NumstatRecord record;
    for (std::string_view* number : {&record.linesAdded, &record.linesDeleted}) {
        *number = takeWhile(line, isDigit, std::string_view::npos);
        if (number->empty() || !line.starts_with('\t'))
            return std::nullopt;
        line.remove_prefix(1);
    }
    return record;
}

std::optional<NumstatRecord> numstatRecord(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(R"(^(\d+)\t(\d+)\t(.+)?)");
    if (auto record = numstatRecordByColumns(line))
        return record;
    // Digits of other scripts count too; they alone can still make it a record.
    const bool isASCII = std::all_of(line.begin(), line.end(),
                                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (isASCII || std::count(line.begin(), line.end(), '\t') < 2)
        return std::nullopt;
    const auto groups = expression->firstMatch(line);
    if (groups.empty())
        return std::nullopt;
    return NumstatRecord{*groups[1], *groups[2]};
}

std::uint64_t unsignedValue(std::string_view digits) {
    return static_cast<std::uint64_t>(integerValue(digits));
}

/// Whether it is a record, but for hashes of 64 digits.
bool isRecordOfSHA256(std::string_view line) {
    constexpr std::size_t lengthOfMode = 6;
    const auto start = line.find_first_not_of(':');
    if (start == 0 || start == std::string_view::npos)
        return false;
    line.remove_prefix(start);
    return !takeWords<lengthOfMode>(line, isDigit).empty() && beginsWithSHA256Hash(line);
}

/// The words of the text; the last one apart.
std::pair<std::vector<std::string>, std::string> wordsAndLastWord(std::string_view text) {
    std::vector<std::string> words =
        componentsSeparatedByString(trimmedWhitespaceAndNewline(text), " ");
    std::string lastWord = std::move(words.back());
    words.pop_back();
    return {std::move(words), std::move(lastWord)};
}

}  // namespace

RVGitDiffStatsOutputParser::RVGitDiffStatsOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::NULByte) {}

RVGitDiffStatsOutputParser::RVGitDiffStatsOutputParser(std::vector<std::string> outputLines)
    : RVGitItemOutputParser(std::move(outputLines)) {}

std::string_view RVGitDiffStatsOutputParser::parserName() const {
    return "RVGitDiffStatsOutputParser";
}

bool RVGitDiffStatsOutputParser::parseOutputLine(std::string_view line) {
    line = trimmedNewlines(line);
    switch (std::exchange(nextLine_, NextLine::Record)) {
        case NextLine::FilePath:
            indexedResultCache_.back().filePath = line;
            indexedResultCache_.back().originalFilePath = line;
            return true;
        case NextLine::OldFilePath:
            indexedResultCache_.back().originalFilePath = line;
            nextLine_ = NextLine::NewFilePath;
            return true;
        case NextLine::NewFilePath:
            indexedResultCache_.back().filePath = line;
            return true;
        case NextLine::Record:
            break;
    }
    if (const auto record = rawRecord(line)) {
        RVGitDiffStatsOutputParserResultItem item;
        std::string fileMode;
        std::tie(item.originalFileModes, fileMode) = wordsAndLastWord(record->modes);
        std::tie(item.originalObjectHashes, item.objectHash) = wordsAndLastWord(record->hashes);
        item.fileMode = RVGitFileModeFromString(fileMode);
        item.fileStatus = RVGitFileStatusFromString(record->status);
        item.fileStatusSimilarityIndex = unsignedValue(record->similarityIndex);
        nextLine_ = record->similarityIndex.empty() ? NextLine::FilePath : NextLine::OldFilePath;
        addResult(std::move(item));
    } else if (const auto stats = numstatRecord(line)) {
        const auto index = numstatsFileIndex_++;
        if (index < indexedResultCache_.size()) {
            indexedResultCache_[index].linesAdded = unsignedValue(stats->linesAdded);
            indexedResultCache_[index].linesDeleted = unsignedValue(stats->linesDeleted);
        }
    } else if (isRecordOfSHA256(line)) {
        return false;
    }
    return true;
}
