#include "RVGit/history/RVGitLogCommand.h"

#include <algorithm>
#include <iterator>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVDateFormatter.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/diff/RVGitDiffParser.h"
#include "RVGit/diff/RVGitDiffStatsOutputParser.h"
#include "RVGit/history/RVGitCommitRecords.h"

RVGitLogCommand::RVGitLogCommand(const std::shared_ptr<RVGitRepository>& repository,
                                 const std::optional<RVOptions>& options)
    : RVGitCommand(repository) {
    readOptions(options);
}

RVGitLogCommand::~RVGitLogCommand() = default;

std::shared_ptr<RVGitLogCommand> RVGitLogCommand::gitLogCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitLogCommand>(repository, options);
}

void RVGitLogCommand::readOptions(const std::optional<RVOptions>& options) {
    readOption(options, RVGitLogOptionDecorate, decoratesCommits_);
    readOption(options, RVGitLogOptionFirstParent, firstParent_);
    if (valueForOption(options, RVGitLogOptionVerifiesSignatures)) {
        readOption(options, RVGitLogOptionVerifiesSignatures, showsSignatures_);
        readOption(options, RVGitLogOptionAllowedSignersFile, allowedSignersFile_);
    }
    readOption(options, RVGitLogOptionLimit, limit_);
    readOption(options, RVGitLogOptionOffset, offset_);
    readOption(options, RVGitLogOptionSearchPatterns, searchPatterns_);
    readOption(options, RVGitLogOptionSearchAuthorPatterns, searchAuthorPatterns_);
    readOption(options, RVGitLogOptionSearchCommitterPatterns, searchCommitterPatterns_);
    readOption(options, RVGitLogOptionSearchContentPatterns, searchContentPatterns_);
    readOption(options, RVGitLogOptionSinceDate, sinceDate_);
    readOption(options, RVGitLogOptionUntilDate, untilDate_);
    readOption(options, RVGitLogOptionReverseOrder, reversesOrder_);
    readOption(options, RVGitLogOptionSortByTopoOrder, sortsByTopoOrder_);
    readOption(options, RVGitLogOptionSortByDate, sortsByDate_);
    readOption(options, RVGitLogOptionFollowRenames, followsRenames_);
    readOption(options, RVGitLogOptionNoRenames, noRenames_);
    readOption(options, RVGitLogOptionAllBranches, showBranches_);
    readOption(options, RVGitLogOptionAllRemoteBranches, showRemotes_);
    readOption(options, RVGitLogOptionAllTags, showTags_);
    readOption(options, RVGitLogOptionAllRefs, showAll_);
}

const RVGitErrorTable& RVGitLogCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitLogNoSuchRevisionError)
            .command("log")
            .exitCode(128)
            .standardError("fatal: ambiguous argument '(.+)': unknown revision or path not "
                           "in the working tree",
                           {RVGitRevisionErrorKey}),
        gitErrorRow(RVGitLogNoSuchRevisionError)
            .command("log")
            .exitCode(128)
            .standardError("fatal: bad revision '(.+)'", {RVGitRevisionErrorKey}),
    };
    return *table;
}

// Building the command line.

void RVGitLogCommand::gitCommandWillInitialize() {
    setGitCommand("log");
    addGitOptions({"-c", "i18n.logOutputEncoding=UTF-8", "-c", "log.date=default", "-c",
                   "log.showSignature=false"});
    // Without the first, a commit that has no parent changes nothing, not for a search of contents
    // either; with the second, lines of context go missing.
    overrideGitConfiguration("log.showRoot", "true");
    overrideGitConfiguration("diff.suppressBlankEmpty", "false");
    addGitCommandOptions({"-z", "--no-color", "--use-mailmap"});
    addPrettyFormatOption();
    if (limit_ != 0)
        addGitCommandOption("-n" + std::to_string(limit_));
    if (offset_ != 0)
        addGitCommandOption("--skip=" + std::to_string(offset_));
    addGitCommandOptionsThatAreSet({{firstParent_, "--first-parent"},
                                    {sortsByTopoOrder_, "--topo-order"},
                                    {sortsByDate_, "--date-order"},
                                    {followsRenames_, "--follow"},
                                    {noRenames_, "--no-renames"},
                                    {reversesOrder_, "--reverse"},
                                    {decoratesCommits_, "--decorate=full"},
                                    {usesExtendedRegexSyntax_, "-E"}});
    addSearchOptions();
    if (sinceDate_)
        addGitCommandOption("--since=" + rfc3339DateString(*sinceDate_));
    if (untilDate_)
        addGitCommandOption("--until=" + rfc3339DateString(*untilDate_));
    addGitCommandRevisions(revisions_, RVGitLogNoSuchRevisionError);
    addRefSelectionOptions();
    addGitCommandFilePaths(filePaths_);
    parsesAhead_ = loadsCommits();
}

void RVGitLogCommand::addPrettyFormatOption() {
    if (generatesDiffs_ || generatesDiffStats_) {
        addGitCommandOption("--pretty=format:");
        return;
    }
    if (countsCommits_) {
        addGitCommandOption("--pretty=format:.");
        return;
    }
    if (!loadsFullCommitInfo_) {
        prettyFormat_ = RVGitCommitOutputParser::gitCommitHashLogPrettyFormatString();
    } else if (!showsSignatures_) {
        prettyFormat_ = RVGitCommitOutputParser::gitCommitLogPrettyFormatString();
    } else {
        prettyFormat_ = RVGitCommitOutputParser::gitCommitLogPrettyFormatGPGString();
        if (allowedSignersFile_)
            addGitOptions({"-c", "gpg.ssh.allowedSignersFile=" + *allowedSignersFile_});
    }
    addGitCommandOption("--pretty=format:" + *prettyFormat_);
}

void RVGitLogCommand::addSearchOptions() {
    const std::pair<const char*, const std::vector<std::string>&> searches[] = {
        {"--grep=", searchPatterns_},
        {"--author=", searchAuthorPatterns_},
        {"--committer=", searchCommitterPatterns_},
        {"-G", searchContentPatterns_}};
    bool ignoresCase = false;
    for (const auto& [option, patterns] : searches) {
        for (const std::string& pattern : patterns)
            addGitCommandOption(option + pattern);
        ignoresCase = ignoresCase || !patterns.empty();
    }
    if (ignoresCase)
        addGitCommandOption("-i");
}

void RVGitLogCommand::addRefSelectionOptions() {
    if (showAll_) {
        addGitCommandOption("--all");
        return;
    }
    if (showRemotes_)
        addGitCommandOption("--remotes");
    if (showTags_)
        addGitCommandOption("--tags");
    if (showBranches_)
        addGitCommandOption("--branches");
}

// Reading the output.

bool RVGitLogCommand::hasGitCommandOption(std::string_view option) const {
    return std::ranges::find(gitCommandOptions(), option) != gitCommandOptions().end();
}

bool RVGitLogCommand::loadsCommits() const {
    return !generatesDiffs_ && !generatesDiffStats_ && !countsCommits_ &&
           !hasGitCommandOption("-p") && !hasGitCommandOption("--numstat");
}

const std::vector<std::string>& RVGitLogCommand::recordFormat() const {
    if (!loadsFullCommitInfo_)
        return RVGitCommitOutputParser::gitCommitHashLogPrettyFormat();
    return showsSignatures_ ? RVGitCommitOutputParser::gitCommitLogPrettyFormatGPG()
                            : RVGitCommitOutputParser::gitCommitLogPrettyFormat();
}

void RVGitLogCommand::gitCommandDidReceiveStandardOutput() {
    if (!parsesAhead_)
        return;
    const std::string_view output = standardOutputData();
    const std::size_t lastDelimiter = output.substr(bytesSeen_).rfind('\0');
    if (lastDelimiter != std::string_view::npos)
        // A record that cannot be read is met again, and reported, when the output is complete.
        parsesAhead_ = parseRecordsUntil(bytesSeen_ + lastDelimiter, nullptr);
    bytesSeen_ = output.size();
}

bool RVGitLogCommand::parseRecordsUntil(std::size_t end, RVErrorPlace error) {
    if (!records_)
        records_ = std::make_shared<RVGitCommitRecords>(standardOutputBuffer(), recordFormat());
    RVGitCommitOutputParser parser(records_,
                                   standardOutputData().substr(bytesParsed_, end - bytesParsed_));
    if (!parser.parse(error))
        return false;
    auto items = parser.takeIndexedResults();
    itemsParsedAhead_.insert(itemsParsedAhead_.end(), std::move_iterator(items.begin()),
                             std::move_iterator(items.end()));
    bytesParsed_ = end;
    return true;
}

bool RVGitLogCommand::isEmptyHistoryError(const RVError& error) {
    // "Your current branch does not have any commits yet", which stands in no catalogue.
    constexpr std::int64_t noCommitsYetError = 107;
    return error.code() == RVGitBadDefaultRevisionError || error.code() == noCommitsYetError;
}

bool RVGitLogCommand::gitCommandShouldHandleError(const RVError& error) {
    if (!isEmptyHistoryError(error))
        return true;
    if (countsCommits_)
        commitCount_ = 0;
    else
        commits_.emplace();
    return false;
}

std::vector<RVGitDiffMap> RVGitLogCommand::takeLoadedDiffs() {
    return std::move(loadedDiffs_);
}

std::vector<RVGitDiffStatsOutputParserResultItem> RVGitLogCommand::takeLoadedDiffStats() {
    return std::move(loadedDiffStats_);
}

bool RVGitLogCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (hasGitCommandOption("-p")) {
        // A NUL byte stands between two commits.
        if (standardOutputData().find('\0') == std::string_view::npos) {
            RVGitDiffParser parser(standardOutputBuffer());
            if (!parser.parse(error))
                return false;
            loadedDiffs_ = parser.takeResult();
        }
        return true;
    }
    if (hasGitCommandOption("--numstat")) {
        RVGitDiffStatsOutputParser parser(standardOutputData());
        const bool parsed = parser.parse(error);
        loadedDiffStats_ = parser.takeIndexedResults();
        return parsed;
    }
    if (commitCount_ != RVNotFound || commits_)
        return true;
    if (countsCommits_) {
        const std::string& output = standardOutputString();
        commitCount_ = output.empty() ? 0 : std::ranges::count(output, '\0') + 1;
        return true;
    }
    if (!parseRecordsUntil(standardOutputData().size(), error))
        return false;
    commits_ = std::move(itemsParsedAhead_);
    return true;
}
