#include "RVGit/repository/RVGitRefLogCommand.h"

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitRevisionArguments.h"
#include "RVGit/history/RVGitCommitOutputParser.h"
#include "RVGit/history/RVGitLogCommandOptions.h"

RVGitRefLogCommand::RVGitRefLogCommand(const std::shared_ptr<RVGitRepository>& repository,
                                       std::optional<std::string> refName,
                                       const std::optional<RVOptions>& options)
    : RVGitCommand(repository), refName_(std::move(refName)) {
    if (const auto* limit = valueForOption(options, RVGitLogOptionLimit))
        limit_ = limit->unsignedValue();
    if (const auto* offset = valueForOption(options, RVGitLogOptionOffset))
        offset_ = offset->unsignedValue();
    const auto* patterns = valueForOption(options, RVGitLogOptionSearchPatterns);
    if (patterns && patterns->stringList() && !patterns->stringList()->empty())
        searchPattern_ = patterns->stringList()->front();
}

RVGitRefLogCommand::~RVGitRefLogCommand() = default;

std::shared_ptr<RVGitRefLogCommand> RVGitRefLogCommand::gitRefLogCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return gitRefLogCommandWithRepository(repository, std::nullopt, options);
}

std::shared_ptr<RVGitRefLogCommand> RVGitRefLogCommand::gitRefLogCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName,
    const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitRefLogCommand>(repository, std::move(refName), options);
}

void RVGitRefLogCommand::gitCommandWillInitialize() {
    setGitCommand("reflog");
    setGitSubCommand("show");
    // What it says of the signatures would stand between the entries.
    overrideGitConfiguration("log.showSignature", "false");
    addGitCommandOption("--pretty=format:" +
                        RVGitCommitOutputParser::gitRefLogPrettyFormatString());
    addGitCommandOption("--date=iso-strict");
    if (limit_ != 0)
        addGitCommandOption("-n" + std::to_string(limit_));
    if (offset_ != 0)
        addGitCommandOption("--skip=" + std::to_string(offset_));
    if (refName_)
        addGitCommandName(*refName_);
    separateRevisionsFromFiles(*this);
    if (searchPattern_)
        addGitCommandOptions({"--grep=" + *searchPattern_, "-i"});
}

bool RVGitRefLogCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (countsEntries_) {
        entryCount_ = lineCount(standardOutputString());
        return true;
    }
    auto parser = RVGitCommitOutputParser::commitParserWithData(
        standardOutputBuffer(), RVGitCommitOutputParser::gitRefLogPrettyFormat(), false);
    if (!parser->parse(error))
        return false;
    reflogEntries_ = parser->takeIndexedResults();
    return true;
}
