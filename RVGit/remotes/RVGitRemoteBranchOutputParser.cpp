#include "RVGit/remotes/RVGitRemoteBranchOutputParser.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/remotes/RVGitBranchLine.h"

RVGitRemoteBranchOutputParser::RVGitRemoteBranchOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

std::string_view RVGitRemoteBranchOutputParser::parserName() const {
    return "RVGitRemoteBranchOutputParser";
}

bool RVGitRemoteBranchOutputParser::parseOutputLine(std::string_view line) {
    // A marked line is left to the expression, to which the mark is a part of the name.
    if (const auto plain = RVGitPlainBranchLineFrom(line); plain && !plain->isMarked) {
        branchNamed(plain->name).commitHash = plain->hash;
        return true;
    }
    static const RVNeverDestroyed<RVRegularExpression> branchLine(
        R"(^\s*([^ ]+)\s+([0-9a-f]{40})\s+)");
    if (const auto components = branchLine->firstMatch(line); !components.empty()) {
        branchNamed(*components[1]).commitHash = *components[2];
        return true;
    }
    static const RVNeverDestroyed<RVRegularExpression> symbolicLine(R"(^\s*[^ ]+\s+\-\>\s(.+))");
    if (const auto components = symbolicLine->firstMatch(line); !components.empty()) {
        branchNamed(*components[1]).isHead = true;
        return true;
    }
    return !RVGitBranchLineHoldsHashOfOtherFormat(line);
}

RVGitRemoteBranchOutputParserResultItem& RVGitRemoteBranchOutputParser::branchNamed(
    std::string_view name) {
    std::string fullRefName = "refs/remotes/";
    fullRefName += name;
    auto& item = resultForKeyMakingIt(fullRefName);
    item.fullRefName = std::move(fullRefName);
    return item;
}
