#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitOutputParser.h"

/// One line of an annotated file as `git blame --porcelain` printed it. Git prints what it knows
/// of a commit with the commit's first line only: on its other lines these fields are absent.
struct RVGIT_EXPORT RVGitBlameOutputParserResultItem {
    std::optional<std::string> commitHash;
    std::optional<std::string> authorName;
    /// Without the angle brackets.
    std::optional<std::string> authorEmail;
    double authorTimestamp = 0;
    std::optional<std::string> authorTimeZone;
    std::optional<std::string> committerName;
    std::optional<std::string> committerEmail;
    double committerTimestamp = 0;
    std::optional<std::string> committerTimeZone;
    std::optional<std::string> summary;
    /// Kept for compatibility: the word "previous" and then the hash of the commit in which the
    /// line stood before; empty if git names none.
    std::vector<std::string> parentCommitHashes;
    /// Where the line stood in that commit.
    std::optional<std::string> filePath;
    std::uint64_t originalLineNumber = 0;
    std::uint64_t finalLineNumber = 0;
    /// How many lines of one commit follow each other from here; 0 within such a group.
    std::uint64_t lineGroup = 0;
    /// Without the newline at the end; a carriage return stays.
    std::optional<std::string> lineContents;

    /// Made from the timestamps on first use, and then kept: not to be asked for by two threads at
    /// once.
    [[nodiscard]] RVDate authorDate() const;
    [[nodiscard]] RVDate committerDate() const;

private:
    mutable std::optional<RVDate> authorDate_;
    mutable std::optional<RVDate> committerDate_;
};

/// Reads what `git blame --porcelain` prints. Every line can be read: one that it does not know is
/// skipped.
class RVGIT_EXPORT RVGitBlameOutputParser
    : public RVGitItemOutputParser<RVGitBlameOutputParserResultItem> {
public:
    explicit RVGitBlameOutputParser(std::string_view outputData);
    explicit RVGitBlameOutputParser(std::vector<std::string> outputLines);

    /// The number of lines that have been read to their end.
    [[nodiscard]] std::uint64_t currentLineNumber() const { return currentLineNumber_; }
    /// The items in the order of the lines.
    [[nodiscard]] const std::vector<RVGitBlameOutputParserResultItem>& annotatedLines() const& {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override { return "RVGitBlameOutputParser"; }
    bool parseOutputLine(std::string_view line) override;

private:
    std::uint64_t currentLineNumber_ = 0;
};
