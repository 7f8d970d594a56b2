#include "RVGit/remotes/RVGitForEachRefBranchOutputParser.h"

#include <array>
#include <chrono>
#include <optional>

#include "RVGit/base/RVString.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"

namespace {

template <typename Item>
std::optional<Item> branchFromRecord(std::string_view record) {
    std::array<std::string_view, 2> fields;
    if (!fieldsOfForEachRefRecord(record, fields))
        return std::nullopt;
    // The name is that of what the ref points to, which git marks.
    constexpr std::string_view peeledSuffix = "^{}";
    auto [fullRefName, creatorDate] = fields;
    if (fullRefName.ends_with(peeledSuffix))
        fullRefName.remove_suffix(peeledSuffix.size());
    return Item{.fullRefName = std::string(fullRefName),
                .creatorDate = RVDate(std::chrono::seconds(int32Value(creatorDate)))};
}

}  // namespace

RVGitForEachRefBranchOutputParser::RVGitForEachRefBranchOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::NULByte) {}

std::string_view RVGitForEachRefBranchOutputParser::commitBoundaryString() {
    return RVGitForEachRefBoundary;
}

std::string_view RVGitForEachRefBranchOutputParser::parserName() const {
    return "RVGitForEachRefBranchOutputParser";
}

bool RVGitForEachRefBranchOutputParser::parseOutputLine(std::string_view line) {
    if (auto item = branchFromRecord<RVGitForEachRefBranchOutputParserResultItem>(line))
        addResult(*std::move(item));
    return true;
}

RVGitForEachRefRemoteBranchOutputParser::RVGitForEachRefRemoteBranchOutputParser(
    std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::NULByte) {}

std::string_view RVGitForEachRefRemoteBranchOutputParser::commitBoundaryString() {
    return RVGitForEachRefBoundary;
}

std::string_view RVGitForEachRefRemoteBranchOutputParser::parserName() const {
    return "RVGitForEachRefRemoteBranchOutputParser";
}

bool RVGitForEachRefRemoteBranchOutputParser::parseOutputLine(std::string_view line) {
    if (auto item = branchFromRecord<RVGitForEachRefRemoteBranchOutputParserResultItem>(line))
        addResult(*std::move(item));
    return true;
}
