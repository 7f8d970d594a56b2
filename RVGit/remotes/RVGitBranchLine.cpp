#include "RVGit/remotes/RVGitBranchLine.h"

#include <algorithm>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"

namespace {

constexpr std::size_t hashLength = 40;

bool isLowercaseHexDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
}

bool isPrintableASCII(char character) {
    return character > ' ' && character <= '~';
}

}  // namespace

std::optional<RVGitPlainBranchLine> RVGitPlainBranchLineFrom(std::string_view line) {
    RVGitPlainBranchLine plain;
    if (line.starts_with('*')) {
        plain.isMarked = true;
        line.remove_prefix(1);
    }
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    plain.name = line.substr(0, line.find(' '));
    if (plain.name.empty() || plain.name.front() == '(' ||
        !std::all_of(plain.name.begin(), plain.name.end(), isPrintableASCII))
        return std::nullopt;
    line.remove_prefix(plain.name.size());
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    plain.hash = line.substr(0, hashLength);
    if (line.size() <= hashLength || line[hashLength] != ' ' ||
        !std::all_of(plain.hash.begin(), plain.hash.end(), isLowercaseHexDigit))
        return std::nullopt;
    plain.subject = line.substr(hashLength + 1);
    return plain;
}

bool RVGitBranchLineHoldsHashOfOtherFormat(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        R"(^[*+]?\s*(?:\([^)]*\)|[^ ]+)\s+[0-9a-f]{64}\s)");
    return expression->matches(line);
}
