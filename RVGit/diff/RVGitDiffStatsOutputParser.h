#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/command/RVGitValues.h"

/// One changed file, as the raw record tells of it, with the counts of a numstat record.
struct RVGitDiffStatsOutputParserResultItem {
    /// Absent only where the output ends ahead of them.
    std::optional<std::string> filePath;
    /// That of the other side for a rename or copy, else the same.
    std::optional<std::string> originalFilePath;
    RVGitFileStatus fileStatus = RVGitFileStatusNone;
    /// A percentage; 0 unless git printed one.
    std::uint64_t fileStatusSimilarityIndex = 0;
    RVGitFileMode fileMode = RVGitFileModeNone;
    /// As printed, one for each parent; so are the hashes.
    std::vector<std::string> originalFileModes;
    std::string objectHash;
    std::vector<std::string> originalObjectHashes;
    std::uint64_t linesAdded = 0;
    std::uint64_t linesDeleted = 0;
};

/// Reads what git prints with "-z --raw --numstat": first all raw records, then all numstat
/// records. Never fails: what is no such record is passed over.
///
/// Counts find their files by position alone, kept for compatibility: a binary file has no counts
/// of its own and takes those of the next text file, as do all files behind it. So do those behind
/// a file whose type has changed or that is unmerged, since neither becomes an item. With "-c" git
/// prints the numstat records first, and all counts stay 0.
class RVGIT_EXPORT RVGitDiffStatsOutputParser
    : public RVGitItemOutputParser<RVGitDiffStatsOutputParserResultItem> {
public:
    explicit RVGitDiffStatsOutputParser(std::string_view outputData);
    explicit RVGitDiffStatsOutputParser(std::vector<std::string> outputLines);

    // How far it has got.
    [[nodiscard]] std::size_t numstatsFileIndex() const { return numstatsFileIndex_; }
    [[nodiscard]] bool nextLineIsFilePath() const { return nextLine_ == NextLine::FilePath; }
    [[nodiscard]] bool nextLineIsCopiedOrRenamedOldFilePath() const {
        return nextLine_ == NextLine::OldFilePath;
    }
    [[nodiscard]] bool nextLineIsCopiedOrRenamedFilePath() const {
        return nextLine_ == NextLine::NewFilePath;
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    enum class NextLine { Record, FilePath, OldFilePath, NewFilePath };

    NextLine nextLine_ = NextLine::Record;
    std::size_t numstatsFileIndex_ = 0;
};
