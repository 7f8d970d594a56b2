#include "RVGit/history/RVGitShortlogCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitRevisionArguments.h"

RVGitShortlogOutputParser::RVGitShortlogOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

std::string_view RVGitShortlogOutputParser::parserName() const {
    return "RVGitShortlogOutputParser";
}

bool RVGitShortlogOutputParser::parseOutputLine(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(R"((\d+)\s+(.+)\s+<(.+)>)");

    if (line.find('<') == std::string_view::npos)
        return true;
    auto components = expression->firstMatch(trimmedWhitespaceAndNewline(line));
    if (components.empty())
        return true;
    addResult({.authorName = precomposedString(*components[2]),
               .authorEmail = std::string(*components[3]),
               .numberOfCommits = static_cast<std::uint64_t>(integerValue(*components[1]))});
    return true;
}

RVGitShortlogCommand::RVGitShortlogCommand(const std::shared_ptr<RVGitRepository>& repository,
                                           std::string revision)
    : RVGitCommand(repository), revision_(std::move(revision)) {}

std::shared_ptr<RVGitShortlogCommand> RVGitShortlogCommand::gitShortlogCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string revision) {
    return std::make_shared<RVGitShortlogCommand>(repository, std::move(revision));
}

void RVGitShortlogCommand::gitCommandWillInitialize() {
    setGitCommand("shortlog");
    addGitOptions({"-c", "i18n.logOutputEncoding=UTF-8", "-c", "log.date=default"});
    addGitCommandOptions({"-n", "-s", "-e"});
    if (showsCommitters_)
        addGitCommandOption("-c");
    if (limit_ != 0)
        addGitCommandOption("-" + std::to_string(limit_));
    addGitCommandRevision(revision_);
    if (filePaths_) {
        addGitCommandFilePaths(*filePaths_);
    } else {
        separateRevisionsFromFiles(*this);
    }
}

bool RVGitShortlogCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    RVGitShortlogOutputParser parser(standardOutputData());
    bool parsed = parser.parse(error);
    result_ = parser.takeIndexedResults();
    return parsed;
}
