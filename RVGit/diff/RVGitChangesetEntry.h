#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitDiffStatsOutputParser.h"

/// One changed file of a changeset. A snapshot, readable on any thread.
class RVGIT_EXPORT RVGitChangesetEntry {
public:
    explicit RVGitChangesetEntry(RVGitDiffStatsOutputParserResultItem item)
        : item_(std::move(item)) {}

    /// Absent only where git's output broke off.
    [[nodiscard]] const std::optional<std::string>& filePath() const { return item_.filePath; }
    /// The path before a rename or copy, else the same. git looks for copies only where its
    /// configuration says diff.renames=copies, and then in all files.
    [[nodiscard]] const std::optional<std::string>& oldFilePath() const {
        return item_.originalFilePath;
    }
    [[nodiscard]] RVGitFileStatus fileStatus() const { return item_.fileStatus; }
    /// In per cent; 0 unless renamed or copied.
    [[nodiscard]] std::uint64_t fileStatusSimilarityIndex() const {
        return item_.fileStatusSimilarityIndex;
    }
    [[nodiscard]] RVGitFileMode fileMode() const { return item_.fileMode; }
    /// As git prints them, one for each parent.
    [[nodiscard]] const std::vector<std::string>& originalFileModes() const {
        return item_.originalFileModes;
    }
    /// All zeros for a deleted file, and for one of the working tree that git has not hashed.
    [[nodiscard]] const std::string& objectHash() const { return item_.objectHash; }
    /// One for each parent.
    [[nodiscard]] const std::vector<std::string>& originalObjectHashes() const {
        return item_.originalObjectHashes;
    }
    /// In a changeset that holds binary files the counts of these and of the files behind them
    /// belong to other files: see RVGitDiffStatsOutputParser.
    [[nodiscard]] std::uint64_t linesAdded() const { return item_.linesAdded; }
    [[nodiscard]] std::uint64_t linesDeleted() const { return item_.linesDeleted; }

    /// Whether there are two parents or more.
    [[nodiscard]] bool isCombinedDiff() const { return item_.originalObjectHashes.size() > 1; }
    /// The first one; absent if there is none or it is all zeros.
    [[nodiscard]] std::optional<std::string> originalObjectHash() const;
    /// The first one; none if there is none.
    [[nodiscard]] RVGitFileMode originalFileMode() const;
    [[nodiscard]] bool isFileStatusAdded() const { return fileStatus() == RVGitFileStatusAdded; }
    [[nodiscard]] bool isFileStatusDeleted() const {
        return fileStatus() == RVGitFileStatusDeleted;
    }
    [[nodiscard]] bool isFileStatusModified() const {
        return fileStatus() == RVGitFileStatusModified;
    }
    [[nodiscard]] bool isFileStatusRenamed() const {
        return fileStatus() == RVGitFileStatusRenamed;
    }
    [[nodiscard]] bool isFileStatusCopied() const { return fileStatus() == RVGitFileStatusCopied; }

private:
    RVGitDiffStatsOutputParserResultItem item_;
};
