#include "RVGit/lfs/RVGitLFSLsFilesCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"

RVGitLFSLsFilesOutputParser::RVGitLFSLsFilesOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

std::string_view RVGitLFSLsFilesOutputParser::parserName() const {
    return "RVGitLFSLsFilesOutputParser";
}

bool RVGitLFSLsFilesOutputParser::parseOutputLine(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place, R"(^[0-9a-f]+\s+\*{1}\s+(.+))",
        RVRegularExpression::DotMatchesLineSeparators);

    std::size_t end = 0;
    while (end < line.size() &&
           ((line[end] >= '0' && line[end] <= '9') || (line[end] >= 'a' && line[end] <= 'f')))
        ++end;
    if (end == 0)
        return true;
    // The form that git-lfs prints, but for paths that begin with something unusual.
    const std::string_view rest = line.substr(end);
    if (rest.starts_with(" - "))
        return true;
    if (rest.size() > 3 && rest.starts_with(" * ") && rest[3] > ' ' && rest[3] < '\x7f') {
        addResult(std::string(rest.substr(3)));
        return true;
    }
    const auto components = expression->firstMatch(line);
    if (!components.empty())
        addResult(std::string(*components[1]));
    return true;
}

std::shared_ptr<RVGitLFSLsFilesCommand> RVGitLFSLsFilesCommand::gitLFSLsFilesCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSLsFilesCommand>(repository);
}

void RVGitLFSLsFilesCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("ls-files");
    if (revision_)
        addGitCommandName(*revision_);
}

bool RVGitLFSLsFilesCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    RVGitLFSLsFilesOutputParser parser(standardOutputData());
    if (!parser.parse(error))
        return false;
    files_ = parser.takeIndexedResults();
    return true;
}
