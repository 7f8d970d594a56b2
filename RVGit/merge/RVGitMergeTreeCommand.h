#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/merge/RVGitMergeTreeEntry.h"

/// One entry of the report of `git merge-tree`. Sides that it does not tell have no path and no
/// hash, and the mode none.
struct RVGIT_EXPORT RVGitMergeTreeOutputParserResultItem {
    /// The first line: "changed in both".
    std::optional<std::string> message = {};
    /// The lines behind the header, joined by newlines; absent if there are none.
    std::optional<std::string> diff = {};
    std::optional<std::string> baseObjectHash = {};
    std::optional<std::string> baseFilepath = {};
    std::optional<std::string> ourObjectHash = {};
    std::optional<std::string> ourFilepath = {};
    std::optional<std::string> theirObjectHash = {};
    std::optional<std::string> theirFilepath = {};
    std::optional<std::string> resultObjectHash = {};
    std::optional<std::string> resultFilepath = {};
    RVGitFileMode baseFileMode = RVGitFileModeNone;
    RVGitFileMode ourFileMode = RVGitFileModeNone;
    RVGitFileMode theirFileMode = RVGitFileModeNone;
    RVGitFileMode resultFileMode = RVGitFileModeNone;
    bool isBinaryFile = false;
};

/// Reads the report of `git merge-tree BASE OURS THEIRS`: for each path a message, indented header
/// lines with a side, a mode, a hash and a path, and the lines of a diff. Nothing in it says where
/// an entry ends, so a line is known for the next message only by the header that follows.
///
/// Kept for compatibility: a line of a diff that looks like a header (a context line of just that
/// shape) begins a new entry of unknown type, and a path that holds a newline is cut there.
class RVGIT_EXPORT RVGitMergeTreeOutputParser
    : public RVGitItemOutputParser<RVGitMergeTreeOutputParserResultItem> {
public:
    /// The most bytes of a diff, without line ends, that an entry keeps. One with more loses all
    /// of it and counts as binary.
    static constexpr std::size_t maximumDiffSize = std::size_t{20} * 1024 * 1024;

    explicit RVGitMergeTreeOutputParser(std::string_view outputData);
    explicit RVGitMergeTreeOutputParser(std::vector<std::string> outputLines);

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
    void parsingDidFinish() override;

    /// An entry is complete but for its diff, which is empty if there is none. Here it becomes a
    /// result with a copy of the diff.
    virtual void didReadItem(RVGitMergeTreeOutputParserResultItem item, std::string_view diff);

private:
    struct Header;
    [[nodiscard]] std::string_view currentDiff() const;
    void addDiffLine(std::string_view line);
    void clearDiff();
    void removeLastDiffLine();
    void closeCurrentItem();
    void clearEntryState();
    void fillSide(const Header& header);

    bool firstLineParsed_ = false;
    bool parsingHeaderComplete_ = false;
    bool binaryEntry_ = false;
    std::size_t currentDiffSize_ = 0;
    std::string_view lastOutputLine_;
    /// The diff's lines so far, as they lie one behind the other in the output; copied where they
    /// do not, an empty line having been passed over between them.
    std::string_view currentDiffLines_;
    std::optional<std::string> copiedDiffLines_;
    std::optional<RVGitMergeTreeOutputParserResultItem> currentResultItem_;
};

/// Runs `git merge-tree BASE TARGET SOURCE`: what a merge of the source into the target would do,
/// found without a working tree. Git's three-argument form knows no renames; and it has been in
/// want of care for long: where git is 2.38 or later, RVGitConflictingFilePathsCommand foretells
/// the merge that git would really make.
class RVGIT_EXPORT RVGitMergeTreeCommand : public RVGitCommand {
public:
    /// The repository is required.
    RVGitMergeTreeCommand(const std::shared_ptr<RVGitRepository>& repository,
                          std::string baseTreeRevision, std::string sourceTreeRevision,
                          std::string targetTreeRevision);
    [[nodiscard]] static std::shared_ptr<RVGitMergeTreeCommand> gitMergeTreeCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::string baseTreeRevision,
        std::string sourceTreeRevision, std::string targetTreeRevision);

    [[nodiscard]] const std::string& baseTreeRevision() const { return baseTreeRevision_; }
    /// "Their" side.
    [[nodiscard]] const std::string& sourceTreeRevision() const { return sourceTreeRevision_; }
    /// "Our" side.
    [[nodiscard]] const std::string& targetTreeRevision() const { return targetTreeRevision_; }
    /// Stored for callers; nothing in the library sets it.
    [[nodiscard]] bool hasConflict() const { return hasConflict_; }
    void setHasConflict(bool hasConflict) { hasConflict_ = hasConflict; }

    /// In the report's order, after the run. Their repository is opened anew, on the command's
    /// path, and the diffs keep all of the report alive.
    [[nodiscard]] RVGitMergeTreeEntry::List mergeTreeEntries() const { return mergeTreeEntries_; }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    class EntryParser;

    std::string baseTreeRevision_;
    std::string sourceTreeRevision_;
    std::string targetTreeRevision_;
    bool hasConflict_ = false;
    RVGitMergeTreeEntry::List mergeTreeEntries_;
};
