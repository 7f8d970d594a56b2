#include "RVGit/history/RVGitMergeBaseCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"

RVGitMergeBaseOutputParser::RVGitMergeBaseOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

const RVGitMergeBaseOutputParserResultItem* RVGitMergeBaseOutputParser::result() const {
    return indexedResultCache().empty() ? nullptr : &indexedResultCache().front();
}

std::string_view RVGitMergeBaseOutputParser::parserName() const {
    return "RVGitMergeBaseOutputParser";
}

bool RVGitMergeBaseOutputParser::parseOutputLine(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, "^([0-9a-f]{40})$", RVRegularExpression::DotMatchesLineSeparators);
    auto components = expression->firstMatch(line);
    if (components.empty())
        return false;
    addResult({std::string(*components[1])});
    return true;
}

RVGitMergeBaseCommand::RVGitMergeBaseCommand(const std::shared_ptr<RVGitRepository>& repository)
    : RVGitCommand(repository) {}

std::shared_ptr<RVGitMergeBaseCommand> RVGitMergeBaseCommand::gitMergeBaseCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitMergeBaseCommand>(repository);
}

void RVGitMergeBaseCommand::gitCommandWillInitialize() {
    setGitCommand("merge-base");
    if (checksAncestor_)
        addGitCommandOption("--is-ancestor");
    addGitCommandRevisions(revisions_);
}

void RVGitMergeBaseCommand::gitCommandDidTerminate() {
    if (checksAncestor_)
        isAncestor_ = exitCode() == 0;
}

bool RVGitMergeBaseCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (revisions_.size() < 2)
        return false;
    RVGitMergeBaseOutputParser parser(standardOutputData());
    bool parsed = parser.parse(error);
    const auto* result = parser.result();
    if (parsed && result)
        mergeBaseCommitHash_ = result->commitHash;
    return parsed;
}
