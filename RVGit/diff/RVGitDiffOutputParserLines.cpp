// How RVGitDiffOutputParser takes single lines of a header apart: the expressions that say what
// such a line is, and what reads it by hand, as the expressions would, at a fraction of their cost.

#include <algorithm>
#include <optional>

#include "RVGit/base/RVCharacter.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/diff/RVGitDiffOutputParser.h"

namespace {

// The length of the digit, of whatever script, that the text begins with; 0 if it does not.
std::size_t lengthOfDigit(std::string_view text) {
    static const RVNeverDestroyed<RVRegularExpression> digit(R"(^\d)");
    constexpr std::size_t mostBytesOfCharacter = 4;
    const auto match = digit->firstMatch(text.substr(0, mostBytesOfCharacter));
    return match.empty() ? 0 : match[0]->size();
}

std::size_t endOfDigits(std::string_view line, std::size_t position) {
    for (;;) {
        while (position < line.size() && line[position] >= '0' && line[position] <= '9')
            ++position;
        if (position == line.size() || static_cast<unsigned char>(line[position]) < 0x80)
            return position;
        const std::size_t length = lengthOfDigit(line.substr(position));
        if (length == 0)
            return position;
        position += length;
    }
}

// The position behind " -N", " -N," or " -N,M", the sign being that; absent if none stands there.
std::optional<std::size_t> endOfRange(std::string_view line, std::size_t position, char sign) {
    constexpr std::size_t signsLength = 2;
    if (line.size() < position + signsLength || line[position] != ' ' || line[position + 1] != sign)
        return std::nullopt;
    const std::size_t start = position + signsLength;
    position = endOfDigits(line, start);
    if (position == start)
        return std::nullopt;
    if (position < line.size() && line[position] == ',')
        ++position;
    return endOfDigits(line, position);
}

// "$" lets one line break pass.
constexpr std::string_view lineBreaks[] = {"\r",       "\v",           "\f",
                                           "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};

std::string_view withoutLineBreak(std::string_view line) {
    for (const std::string_view lineBreak : lineBreaks) {
        if (line.ends_with(lineBreak))
            return line.substr(0, line.size() - lineBreak.size());
    }
    return line;
}

}  // namespace

const RVRegularExpression& RVGitDiffOutputParser::diffHeaderRegex() {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        R"re(^diff --git ("?a/.+"?) ("?b/.+"?)$)re");
    return *expression;
}

const RVRegularExpression& RVGitDiffOutputParser::combinedDiffHeaderRegex() {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        R"re(^diff --(combined|cc) ("?.+"?)$)re");
    return *expression;
}

const RVRegularExpression& RVGitDiffOutputParser::indexRegex() {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        R"(^index ([a-z0-9]+),?([a-z0-9,]+)*\.\.([a-z0-9]+) ?([0-9]+)?$)");
    return *expression;
}

const RVRegularExpression& RVGitDiffOutputParser::chunkHeaderRegex() {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        R"(^(@+( \-(\d+),?(\d+)?)+ \+(\d+),?(\d+)? @+))");
    return *expression;
}

std::vector<std::string_view> RVGitDiffOutputParser::diffHeaderComponentsOfLine(
    std::string_view line) {
    line = withoutLineBreak(line);
    // "." matches none of them.
    const bool isPlain = std::ranges::all_of(
        line, [](char byte) { return byte >= 0x20 && static_cast<unsigned char>(byte) < 0x80; });
    const auto isInLine = [line](std::string_view lineBreak) {
        return line.find(lineBreak) != std::string_view::npos;
    };
    if (!isPlain && std::ranges::any_of(lineBreaks, isInLine))
        return {};
    constexpr std::string_view prefix = "diff --git ";
    if (!line.starts_with(prefix))
        return {};
    line.remove_prefix(prefix.size());
    const auto isPath = [](std::string_view text, std::string_view side) {
        if (text.starts_with('"'))
            text.remove_prefix(1);
        return text.size() > side.size() && text.starts_with(side);
    };
    // The first path is as long as it can be.
    for (std::size_t blank = line.rfind(' '); blank != std::string_view::npos && blank > 0;
         blank = line.rfind(' ', blank - 1)) {
        const std::string_view newPath = line.substr(blank + 1);
        if (!isPath(newPath, "b/"))
            continue;
        const std::string_view oldPath = line.substr(0, blank);
        if (isPath(oldPath, "a/"))
            return {oldPath, newPath};
        return {};
    }
    return {};
}

std::vector<std::string_view> RVGitDiffOutputParser::indexComponentsOfLine(std::string_view line) {
    line = withoutLineBreak(line);
    constexpr std::string_view prefix = "index ";
    if (!line.starts_with(prefix))
        return {};
    line.remove_prefix(prefix.size());
    const auto takeRun = [&line](auto belongs) {
        const auto end = std::ranges::find_if_not(line, belongs);
        const auto run = line.substr(0, static_cast<std::size_t>(end - line.begin()));
        line.remove_prefix(run.size());
        return run;
    };
    const auto take = [&line](std::string_view text) {
        const bool found = line.starts_with(text);
        if (found)
            line.remove_prefix(text.size());
        return found;
    };
    const auto isOfHash = [](char byte) { return isDigit(byte) || (byte >= 'a' && byte <= 'z'); };

    const std::string_view firstHash = takeRun(isOfHash);
    (void)take(",");
    const std::string_view otherHashes =
        takeRun([&](char byte) { return byte == ',' || isOfHash(byte); });
    if (firstHash.empty() || !take(".."))
        return {};
    const std::string_view newHash = takeRun(isOfHash);
    (void)take(" ");
    const std::string_view mode = takeRun(isDigit);
    if (newHash.empty() || !line.empty())
        return {};
    return {firstHash, otherHashes, newHash, mode};
}

std::string_view RVGitDiffOutputParser::chunkHeaderOfLine(std::string_view line) {
    const auto endOfSigns = [line](std::size_t position) {
        return std::min(line.find_first_not_of('@', position), line.size());
    };
    std::size_t position = endOfSigns(0);
    if (position == 0)
        return {};
    bool hasOldRange = false;
    for (auto end = endOfRange(line, position, '-'); end; end = endOfRange(line, position, '-')) {
        hasOldRange = true;
        position = *end;
    }
    const auto end = endOfRange(line, position, '+');
    if (!hasOldRange || !end || !line.substr(*end).starts_with(" @"))
        return {};
    return line.substr(0, endOfSigns(*end + 1));
}
