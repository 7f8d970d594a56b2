#include "RVGit/lfs/RVGitLFSCleanCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"

RVGitLFSCleanOutputParserResultItem::RVGitLFSCleanOutputParserResultItem(
    RVGitLFSPointer::Entries entries)
    : entries_(std::move(entries)) {
    RVGitLFSPointer::requireKeys(entries_);
}

RVGitLFSCleanOutputParser::RVGitLFSCleanOutputParser(std::string_view outputData)
    : RVGitOutputParser(outputData, Delimiter::Newline) {}

RVGitLFSCleanOutputParserResultItem RVGitLFSCleanOutputParser::pointer() const {
    return RVGitLFSCleanOutputParserResultItem(resultCache_);
}

std::string_view RVGitLFSCleanOutputParser::parserName() const {
    return "RVGitLFSCleanOutputParser";
}

bool RVGitLFSCleanOutputParser::parseOutputLine(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, R"(^([0-9a-z\.-]+)\s+(.+))", RVRegularExpression::DotMatchesLineSeparators);
    const auto components = expression->firstMatch(line);
    if (components.size() >= 3)
        resultCache_.insert_or_assign(std::string(*components[1]), std::string(*components[2]));
    return true;
}

std::shared_ptr<RVGitLFSCleanCommand> RVGitLFSCleanCommand::gitLFSCleanCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSCleanCommand>(repository);
}

void RVGitLFSCleanCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("clean");
    if (filePath_)
        setStandardInput(RVStandardInput::file(*filePath_));
}

bool RVGitLFSCleanCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    RVGitLFSCleanOutputParser parser(standardOutputData());
    if (!parser.parse(error))
        return false;
    // What a cancelled run has printed may be cut off.
    if (isCancelled() && !RVGitLFSPointer::validatePointerDictionary(parser.resultCache()))
        return true;
    pointerContents_ = standardOutputString();
    pointer_ = parser.pointer();
    return true;
}
