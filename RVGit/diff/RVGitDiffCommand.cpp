#include "RVGit/diff/RVGitDiffCommand.h"

#include <algorithm>

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/diff/RVGitDiffParser.h"
#include "RVGit/diff/RVGitDiffStatsOutputParser.h"

RVGitDiffCommand::RVGitDiffCommand(const std::shared_ptr<RVGitRepository>& repository,
                                   const std::optional<RVOptions>& options)
    : RVGitCommand(repository),
      comparesToIndex_(optionIsSet(options, RVGitDiffOptionStaged)),
      generatesBinaryDiffs_(optionIsSet(options, RVGitDiffOptionBinary)),
      skipsRenameDetection_(optionIsSet(options, RVGitDiffOptionNoRenames)),
      ignoresWhitespaceChanges_(optionIsSet(options, RVGitDiffOptionIgnoreWhitespaceChanges)) {
    const RVValue* format = valueForOption(options, RVGitDiffOptionSubmodule);
    if (format && format->string())
        submodule_ = *format->string();
}

RVGitDiffCommand::~RVGitDiffCommand() = default;

std::shared_ptr<RVGitDiffCommand> RVGitDiffCommand::gitDiffCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitDiffCommand>(repository, options);
}

void RVGitDiffCommand::gitCommandWillInitialize() {
    setGitCommand("diff");
    // The parser would pass over an empty line of context.
    overrideGitConfiguration("diff.suppressBlankEmpty", "false");
    addGitCommandOptions(
        {"--no-color", "--word-diff=none", "--no-ext-diff", "--full-index", "-C", "-M"});
    addGitCommandOptionsThatAreSet({
        {comparesToIndex_, "--staged"},
        {generatesBinaryDiffs_, "--binary"},
        {skipsRenameDetection_, "--no-renames"},
        {ignoresWhitespaceChanges_, "--ignore-all-space"},
    });
    if (submodule_)
        addGitCommandOption("--submodule=" + *submodule_);
}

bool RVGitDiffCommand::gitCommandShouldHandleError(const RVError& error) {
    return error.code() != RVGitRVGitGenericError || exitCode() != 1 ||
           !standardErrorData().empty();
}

bool RVGitDiffCommand::loadsDiffStats() const {
    return std::ranges::find(gitCommandOptions(), "--numstat") != gitCommandOptions().end();
}

RVGitDiffParser& RVGitDiffCommand::diffParser() {
    if (!diffParser_)
        diffParser_ = std::make_unique<RVGitDiffParser>(standardOutputBuffer());
    return *diffParser_;
}

void RVGitDiffCommand::gitCommandDidReceiveStandardOutput() {
    if (!loadsDiffStats())
        diffParser().parseAhead();
}

bool RVGitDiffCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (loadsDiffStats()) {
        RVGitDiffStatsOutputParser parser(standardOutputData());
        if (!parser.parse(error))
            return false;
        loadedDiffStats_ = parser.takeIndexedResults();
        return true;
    }
    if (!diffParser().parse(error))
        return false;
    loadedDiffs_ = diffParser().takeResult();
    return true;
}

std::vector<RVGitDiffStatsOutputParserResultItem> RVGitDiffCommand::takeLoadedDiffStats() {
    return std::move(loadedDiffStats_);
}
