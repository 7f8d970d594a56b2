#include "RVGit/worktree/RVGitCheckAttrCommand.h"

#include <array>
#include <utility>

#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

using Items = std::vector<RVGitAttributesOutputParserResultItem>;

std::optional<Items> RVGitAttributesOutputParser::itemsFromNULSeparatedOutput(
    std::string_view outputData, RVErrorPlace error) {
    Items items;
    std::string_view path;
    while (!outputData.empty()) {
        std::array<std::string_view, 3> triple;
        for (std::string_view& piece : triple) {
            const auto end = outputData.find('\0');
            if (end == std::string_view::npos) {
                fillErrorPlace(
                    error,
                    gitErrorWithCode(
                        RVGitOutputParserError,
                        {{RVGitOutputParserNameErrorKey, "RVGitAttributesOutputParser"},
                         {RVGitOutputParserLineErrorKey, stringUsingBestEncoding(outputData)}}));
                return std::nullopt;
            }
            piece = outputData.substr(0, end);
            outputData.remove_prefix(end + 1);
        }
        std::string name = stringUsingBestEncoding(triple[1]);
        if (items.empty() || triple[0] != path || items.back().attributes.contains(name)) {
            path = triple[0];
            items.push_back({.filePath = stringUsingBestEncoding(path), .attributes = {}});
        }
        items.back().attributes.emplace(std::move(name), stringUsingBestEncoding(triple[2]));
    }
    return items;
}

bool RVGitAttributesOutputParser::parseOutputLine(std::string_view line) {
    auto pieces = componentsSeparatedByString(line, ": ");
    if (pieces.size() != 3)
        return false;
    if (indexedResultCache_.empty() ||
        !isEqualToUnicodeString(indexedResultCache_.back().filePath, pieces[0]))
        addResult({.filePath = std::move(pieces[0]), .attributes = {}});
    indexedResultCache_.back().attributes.insert_or_assign(std::move(pieces[1]),
                                                           std::move(pieces[2]));
    return true;
}

RVGitCheckAttrCommand::RVGitCheckAttrCommand(const std::shared_ptr<RVGitRepository>& repository,
                                             std::optional<std::vector<std::string>> filePaths)
    : RVGitFilePathsCommand(repository, std::move(filePaths)) {}

std::shared_ptr<RVGitCheckAttrCommand> RVGitCheckAttrCommand::gitCheckAttrCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository,
    std::optional<std::vector<std::string>> filePaths) {
    return std::make_shared<RVGitCheckAttrCommand>(repository, std::move(filePaths));
}

void RVGitCheckAttrCommand::gitCommandWillInitialize() {
    setGitCommand("check-attr");
    addGitCommandOptions({"--stdin", "-z"});
    addGitCommandArguments({"delta", "diff", "encoding", "eol", "export-ignore", "export-subst",
                            "filter", "ident", "merge", "text", "whitespace"});
    if (!filePaths())
        return;
    // git would take what stands on either side of a NUL for two paths.
    for (const std::string& filePath : *filePaths())
        if (holdsNUL(filePath))
            refuseGitCommandArgument(RVGitNoGitRepoError, RVGitFilePathErrorKey, filePath);
    setStandardInput(
        RVStandardInput::data(stringByJoiningComponents(*filePaths(), std::string_view("\0", 1))));
}

bool RVGitCheckAttrCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (readsNULSeparatedOutput_) {
        auto items =
            RVGitAttributesOutputParser::itemsFromNULSeparatedOutput(standardOutputData(), error);
        if (!items)
            return false;
        attributes_ = *std::move(items);
        return true;
    }
    RVGitAttributesOutputParser parser(standardOutputData());
    const bool parsed = parser.parse(error);
    attributes_ = parser.takeIndexedResults();
    return parsed;
}
