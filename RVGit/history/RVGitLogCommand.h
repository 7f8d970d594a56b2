#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/history/RVGitCommitOutputParser.h"
#include "RVGit/history/RVGitLogCommandOptions.h"

class RVGitDiffMap;
struct RVGitDiffStatsOutputParserResultItem;

/// `git log`: loads commits or their hashes, or counts them, and prints patches or statistics for
/// whoever parses them. An unborn branch is an empty history and no failure, unless a revision is
/// named: "HEAD" is unknown there. Codes: 1900 for an unknown revision, 11 where a message holds
/// the field boundary. Names are those that stand in the commit; the mailmap counts for searches.
class RVGIT_EXPORT RVGitLogCommand : public RVGitCommand {
public:
    using Items = std::vector<RVGitCommitOutputParserResultItem>;

    /// The repository is required. The options are those of RVGitLogCommandOptions.
    RVGitLogCommand(const std::shared_ptr<RVGitRepository>& repository,
                    const std::optional<RVOptions>& options);
    ~RVGitLogCommand() override;
    [[nodiscard]] static std::shared_ptr<RVGitLogCommand> gitLogCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);

    // What to list. Without revisions and without the selections of refs below git starts at HEAD;
    // without file paths it lists all commits.
    [[nodiscard]] const std::vector<std::string>& revisions() const { return revisions_; }
    void setRevisions(std::vector<std::string> revisions) { revisions_ = std::move(revisions); }
    [[nodiscard]] const std::vector<std::string>& filePaths() const { return filePaths_; }
    void setFilePaths(std::vector<std::string> paths) { filePaths_ = std::move(paths); }
    [[nodiscard]] bool showBranches() const { return showBranches_; }
    void setShowBranches(bool shows) { showBranches_ = shows; }
    [[nodiscard]] bool showRemotes() const { return showRemotes_; }
    void setShowRemotes(bool shows) { showRemotes_ = shows; }
    [[nodiscard]] bool showTags() const { return showTags_; }
    void setShowTags(bool shows) { showTags_ = shows; }
    /// All refs; the three above then count for nothing.
    [[nodiscard]] bool showAll() const { return showAll_; }
    void setShowAll(bool shows) { showAll_ = shows; }

    // What to do with them: the first of these that holds, and otherwise hashes only.

    /// Nothing of the commit itself is printed. A caller adds the command option "-p", or
    /// "--raw" and "--numstat", too.
    [[nodiscard]] bool generatesDiffs() const { return generatesDiffs_; }
    void setGeneratesDiffs(bool generates) { generatesDiffs_ = generates; }
    [[nodiscard]] bool generatesDiffStats() const { return generatesDiffStats_; }
    void setGeneratesDiffStats(bool generates) { generatesDiffStats_ = generates; }
    [[nodiscard]] bool countsCommits() const { return countsCommits_; }
    void setCountsCommits(bool counts) { countsCommits_ = counts; }
    /// True at first.
    [[nodiscard]] bool loadsFullCommitInfo() const { return loadsFullCommitInfo_; }
    void setLoadsFullCommitInfo(bool loads) { loadsFullCommitInfo_ = loads; }

    [[nodiscard]] bool decoratesCommits() const { return decoratesCommits_; }
    void setDecoratesCommits(bool decorates) { decoratesCommits_ = decorates; }
    /// Verifies signatures, where full commits are loaded: git runs gpg or ssh-keygen for each.
    [[nodiscard]] bool showsSignatures() const { return showsSignatures_; }
    void setShowsSignatures(bool shows) { showsSignatures_ = shows; }
    /// Who may sign with which SSH key; absent: what git's configuration says.
    [[nodiscard]] const std::optional<std::string>& allowedSignersFile() const {
        return allowedSignersFile_;
    }
    void setAllowedSignersFile(std::optional<std::string> path) {
        allowedSignersFile_ = std::move(path);
    }

    // Which of them, in which order.
    [[nodiscard]] bool firstParent() const { return firstParent_; }
    void setFirstParent(bool firstParent) { firstParent_ = firstParent; }
    /// 0: no limit.
    [[nodiscard]] std::uint64_t limit() const { return limit_; }
    void setLimit(std::uint64_t limit) { limit_ = limit; }
    [[nodiscard]] std::uint64_t offset() const { return offset_; }
    void setOffset(std::uint64_t offset) { offset_ = offset; }
    [[nodiscard]] bool reversesOrder() const { return reversesOrder_; }
    void setReversesOrder(bool reverses) { reversesOrder_ = reverses; }
    [[nodiscard]] bool sortsByTopoOrder() const { return sortsByTopoOrder_; }
    void setSortsByTopoOrder(bool sorts) { sortsByTopoOrder_ = sorts; }
    [[nodiscard]] bool sortsByDate() const { return sortsByDate_; }
    void setSortsByDate(bool sorts) { sortsByDate_ = sorts; }
    [[nodiscard]] bool followsRenames() const { return followsRenames_; }
    void setFollowsRenames(bool follows) { followsRenames_ = follows; }
    [[nodiscard]] bool noRenames() const { return noRenames_; }
    void setNoRenames(bool noRenames) { noRenames_ = noRenames; }

    // Searches, which ignore case. One pattern of a list must match.
    [[nodiscard]] const std::vector<std::string>& searchPatterns() const { return searchPatterns_; }
    void setSearchPatterns(std::vector<std::string> patterns) {
        searchPatterns_ = std::move(patterns);
    }
    [[nodiscard]] const std::vector<std::string>& searchAuthorPatterns() const {
        return searchAuthorPatterns_;
    }
    void setSearchAuthorPatterns(std::vector<std::string> patterns) {
        searchAuthorPatterns_ = std::move(patterns);
    }
    [[nodiscard]] const std::vector<std::string>& searchCommitterPatterns() const {
        return searchCommitterPatterns_;
    }
    void setSearchCommitterPatterns(std::vector<std::string> patterns) {
        searchCommitterPatterns_ = std::move(patterns);
    }
    /// Searched in the lines that a commit adds or removes.
    [[nodiscard]] const std::vector<std::string>& searchContentPatterns() const {
        return searchContentPatterns_;
    }
    void setSearchContentPatterns(std::vector<std::string> patterns) {
        searchContentPatterns_ = std::move(patterns);
    }
    [[nodiscard]] bool usesExtendedRegexSyntax() const { return usesExtendedRegexSyntax_; }
    void setUsesExtendedRegexSyntax(bool uses) { usesExtendedRegexSyntax_ = uses; }
    [[nodiscard]] std::optional<RVDate> sinceDate() const { return sinceDate_; }
    void setSinceDate(std::optional<RVDate> date) { sinceDate_ = date; }
    [[nodiscard]] std::optional<RVDate> untilDate() const { return untilDate_; }
    void setUntilDate(std::optional<RVDate> date) { untilDate_ = date; }

    /// Kept for callers; nothing here reads it.
    [[nodiscard]] bool showsDiffs() const { return showsDiffs_; }
    void setShowsDiffs(bool shows) { showsDiffs_ = shows; }
    /// The format that git was given, set while the arguments are built.
    [[nodiscard]] const std::optional<std::string>& prettyFormat() const { return prettyFormat_; }
    void setPrettyFormat(std::optional<std::string> format) { prettyFormat_ = std::move(format); }

    // Results.

    /// Commits or hashes, in git's order; absent if none were to be loaded or the run failed.
    [[nodiscard]] const std::optional<Items>& commits() const { return commits_; }
    /// RVNotFound unless commits were counted.
    [[nodiscard]] std::int64_t commitCount() const { return commitCount_; }
    /// The files, with the command option "-p". None if git printed more than one commit.
    [[nodiscard]] const std::vector<RVGitDiffMap>& loadedDiffs() const { return loadedDiffs_; }
    [[nodiscard]] std::vector<RVGitDiffMap> takeLoadedDiffs();
    /// The files, with the command option "--numstat" and without "-p".
    [[nodiscard]] const std::vector<RVGitDiffStatsOutputParserResultItem>& loadedDiffStats() const {
        return loadedDiffStats_;
    }
    [[nodiscard]] std::vector<RVGitDiffStatsOutputParserResultItem> takeLoadedDiffStats();
    /// Kept for compatibility: nothing fills it.
    [[nodiscard]] const std::vector<RVGitDiffStatsOutputParserResultItem>& diffStats() const {
        return diffStats_;
    }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();
    /// Whether git says that there is no commit yet: an empty history, and no failure.
    [[nodiscard]] static bool isEmptyHistoryError(const RVError& error);

protected:
    void gitCommandWillInitialize() override;
    void gitCommandDidReceiveStandardOutput() override;
    bool gitCommandShouldHandleError(const RVError& error) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    void readOptions(const std::optional<RVOptions>& options);
    void addPrettyFormatOption();
    void addSearchOptions();
    void addRefSelectionOptions();
    [[nodiscard]] bool hasGitCommandOption(std::string_view option) const;
    [[nodiscard]] bool loadsCommits() const;
    [[nodiscard]] const std::vector<std::string>& recordFormat() const;
    [[nodiscard]] bool parseRecordsUntil(std::size_t end, RVErrorPlace error);

    std::vector<std::string> revisions_;
    std::vector<std::string> filePaths_;
    bool countsCommits_ = false;
    bool generatesDiffs_ = false;
    bool generatesDiffStats_ = false;
    bool loadsFullCommitInfo_ = true;
    bool decoratesCommits_ = false;
    bool firstParent_ = false;
    bool usesExtendedRegexSyntax_ = false;
    bool showsSignatures_ = false;
    bool reversesOrder_ = false;
    bool sortsByTopoOrder_ = false;
    bool sortsByDate_ = false;
    bool followsRenames_ = false;
    bool noRenames_ = false;
    bool showBranches_ = false;
    bool showRemotes_ = false;
    bool showTags_ = false;
    bool showAll_ = false;
    bool showsDiffs_ = false;
    std::optional<std::string> allowedSignersFile_;
    std::uint64_t limit_ = 0;
    std::uint64_t offset_ = 0;
    std::vector<std::string> searchPatterns_;
    std::vector<std::string> searchAuthorPatterns_;
    std::vector<std::string> searchCommitterPatterns_;
    std::vector<std::string> searchContentPatterns_;
    std::optional<RVDate> sinceDate_;
    std::optional<RVDate> untilDate_;
    std::optional<std::string> prettyFormat_;

    std::optional<Items> commits_;
    std::int64_t commitCount_ = RVNotFound;
    std::vector<RVGitDiffMap> loadedDiffs_;
    std::vector<RVGitDiffStatsOutputParserResultItem> loadedDiffStats_;
    std::vector<RVGitDiffStatsOutputParserResultItem> diffStats_;

    /// What has been parsed while git runs. It becomes the result only if the output as a whole
    /// does.
    std::shared_ptr<RVGitCommitRecords> records_;
    Items itemsParsedAhead_;
    std::size_t bytesParsed_ = 0;
    std::size_t bytesSeen_ = 0;
    bool parsesAhead_ = false;
};
