#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/lfs/RVGitLFSCommand.h"

/// Exported for callers; the library reads neither.
inline constexpr char RVGitLFSTrackCommandPattern[] = "RVGitLFSTrackCommandPattern";
inline constexpr char RVGitLFSTrackCommandAttributeFile[] = "RVGitLFSTrackCommandAttributeFile";

/// A pattern that files are tracked by, and the attributes file that holds it.
struct RVGitLFSTrackOutputParserResultItem {
    std::string trackedFilePattern;
    /// Relative to the working tree.
    std::string attributeFileName;
};

/// Reads the list that `git lfs track` prints. Lines that are not of two words are skipped, the
/// headings above all. Kept for compatibility: a pattern or a file name with a blank, and one that
/// is lockable, is skipped with them. A second word too short for its parentheses cannot be read:
/// code 11.
class RVGIT_EXPORT RVGitLFSTrackOutputParser
    : public RVGitItemOutputParser<RVGitLFSTrackOutputParserResultItem> {
public:
    explicit RVGitLFSTrackOutputParser(std::string_view outputData);

    [[nodiscard]] const std::vector<RVGitLFSTrackOutputParserResultItem>& trackedFilePatterns()
        const& {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};

/// Runs `git lfs track`: with patterns it tracks the files that match them, without any it lists
/// the patterns of the repository. A pattern that begins with "-" is refused with code 1.
class RVGIT_EXPORT RVGitLFSTrackCommand : public RVGitLFSCommand {
public:
    using RVGitLFSCommand::RVGitLFSCommand;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSTrackCommand> gitLFSTrackCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    [[nodiscard]] const std::optional<std::vector<std::string>>& patterns() const {
        return patterns_;
    }
    void setPatterns(std::optional<std::vector<std::string>> patterns) {
        patterns_ = std::move(patterns);
    }
    /// The list; absent where patterns were given, even none, and before the run.
    [[nodiscard]] const std::optional<std::vector<RVGitLFSTrackOutputParserResultItem>>&
    trackedFilePatterns() const {
        return trackedFilePatterns_;
    }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::optional<std::vector<std::string>> patterns_;
    std::optional<std::vector<RVGitLFSTrackOutputParserResultItem>> trackedFilePatterns_;
};

/// Runs `git lfs untrack`: the files that match the patterns are no longer tracked. A pattern that
/// begins with "-" is refused with code 1.
class RVGIT_EXPORT RVGitLFSUntrackCommand : public RVGitLFSCommand {
public:
    using RVGitLFSCommand::RVGitLFSCommand;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSUntrackCommand> gitLFSUntrackCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    [[nodiscard]] const std::optional<std::vector<std::string>>& patterns() const {
        return patterns_;
    }
    void setPatterns(std::optional<std::vector<std::string>> patterns) {
        patterns_ = std::move(patterns);
    }

protected:
    void gitCommandWillInitialize() override;

private:
    std::optional<std::vector<std::string>> patterns_;
};
