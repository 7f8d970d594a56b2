#include "RVGit/history/RVGitBlameOutputParser.h"

#include <locale.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"

namespace {

using Item = RVGitBlameOutputParserResultItem;

/// The number at the start of the text, after white space; 0 if there is none. By the C library,
/// since not every C++ library can read one of these from characters.
double doubleValue(std::string_view text) {
    static const locale_t plainLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    text = trimmedWhitespaceAndNewline(text);
    // Neither hexadecimal numbers nor "inf" and "nan".
    const std::string number(text.substr(0, text.find_first_not_of("0123456789+-.eE")));
    const double value = strtod_l(number.c_str(), nullptr, plainLocale);
    return std::isfinite(value) ? value : 0;
}

RVDate dateOfTimestamp(double timestamp) {
    // Far beyond any date, and far from where the conversion to whole seconds would overflow.
    constexpr double limit = 1e15;
    return RVDate(
        std::chrono::seconds(static_cast<std::int64_t>(std::clamp(timestamp, -limit, limit))));
}

void readHeader(std::string_view line, Item& item) {
    std::array<std::string_view, 4> pieces;
    std::size_t count = 0;
    for (bool isLast = false; !isLast; ++count) {
        std::size_t end = line.find(' ');
        isLast = end == std::string_view::npos;
        if (count < pieces.size())
            pieces[count] = line.substr(0, end);
        if (!isLast)
            line.remove_prefix(end + 1);
    }
    if (count < 3)
        return;
    item.commitHash = pieces[0];
    item.originalLineNumber = static_cast<std::uint64_t>(int32Value(pieces[1]));
    item.finalLineNumber = static_cast<std::uint64_t>(int32Value(pieces[2]));
    if (count == 4)
        item.lineGroup = static_cast<std::uint64_t>(int32Value(pieces[3]));
}

void readPrevious(std::string_view line, Item& item) {
    std::vector<std::string> pieces = componentsSeparatedByString(line, " ");
    pieces.pop_back();
    item.parentCommitHashes = std::move(pieces);
}

struct Field {
    std::string_view prefix;
    void (*read)(std::string_view value, Item& item);
};

constexpr Field fields[] = {
    {"author ", [](std::string_view value, Item& item) { item.authorName = value; }},
    {"author-mail ", [](std::string_view value,
                        Item& item) { item.authorEmail = withoutFirstAndLastCharacter(value); }},
    {"author-time ",
     [](std::string_view value, Item& item) { item.authorTimestamp = doubleValue(value); }},
    {"author-tz ", [](std::string_view value, Item& item) { item.authorTimeZone = value; }},
    {"committer ", [](std::string_view value, Item& item) { item.committerName = value; }},
    {"committer-mail ",
     [](std::string_view value, Item& item) {
         item.committerEmail = withoutFirstAndLastCharacter(value);
     }},
    {"committer-time ",
     [](std::string_view value, Item& item) { item.committerTimestamp = doubleValue(value); }},
    {"committer-tz ", [](std::string_view value, Item& item) { item.committerTimeZone = value; }},
    {"filename ",
     [](std::string_view value, Item& item) { item.filePath = unquotedCString(value); }},
    {"summary ", [](std::string_view value, Item& item) { item.summary = value; }},
};

}  // namespace

RVDate RVGitBlameOutputParserResultItem::authorDate() const {
    if (!authorDate_)
        authorDate_ = dateOfTimestamp(authorTimestamp);
    return *authorDate_;
}

RVDate RVGitBlameOutputParserResultItem::committerDate() const {
    if (!committerDate_)
        committerDate_ = dateOfTimestamp(committerTimestamp);
    return *committerDate_;
}

RVGitBlameOutputParser::RVGitBlameOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

RVGitBlameOutputParser::RVGitBlameOutputParser(std::vector<std::string> outputLines)
    : RVGitItemOutputParser(std::move(outputLines)) {}

bool RVGitBlameOutputParser::parseOutputLine(std::string_view line) {
    bool isItemOpen = indexedResultCache_.size() == currentLineNumber_ + 1;
    if (!isItemOpen) {
        if (beginsWithSHA256Hash(line))
            return false;
        readHeader(line, indexedResultCache_.emplace_back());
        return true;
    }
    Item& item = indexedResultCache_.back();
    if (line.starts_with('\t')) {
        item.lineContents = line.substr(1);
        ++currentLineNumber_;
        return true;
    }
    if (line.starts_with("previous ")) {
        readPrevious(line, item);
        return true;
    }
    for (const Field& field : fields) {
        if (line.starts_with(field.prefix)) {
            field.read(line.substr(field.prefix.size()), item);
            break;
        }
    }
    return true;
}
