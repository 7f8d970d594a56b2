#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/merge/RVGitSequenceInstruction.h"

/// Reads the list of steps that git keeps while a rebase, a cherry-pick or a revert is under way
/// ("rebase-merge/done", "sequencer/todo"). Used on one thread.
class RVGIT_EXPORT RVGitMergeSequenceContentParser {
public:
    explicit RVGitMergeSequenceContentParser(std::optional<std::string> contents);
    /// Of a file, whose path must be absolute. There are no contents where it cannot be read or is
    /// not UTF-8; no link is followed, and nothing but a regular file is read.
    [[nodiscard]] static std::shared_ptr<RVGitMergeSequenceContentParser> initWithContentsOfFile(
        const std::string& path);

    [[nodiscard]] const std::optional<std::string>& contents() const { return contents_; }

    /// Reads all lines, and stops with parseLine()'s error at the first that is no instruction;
    /// those ahead of it stay. A second call appends all of them again, unless there are no
    /// contents, which empties the list.
    bool parse(RVErrorPlace error = nullptr);
    /// Appends one line's instruction: its first two words; the rest is left aside. Blank lines and
    /// those that begin with "#" are passed over. A line of one word ("noop", "break") fails with
    /// code 11, without user info.
    bool parseLine(std::string_view line, RVErrorPlace error = nullptr);

    /// What was read so far, in the order of the lines.
    [[nodiscard]] RVGitSequenceInstruction::List sequenceInstructions() const {
        return parsedSequenceInstructions_;
    }
    /// Every instruction's hash.
    [[nodiscard]] std::vector<std::string> allRevisions() const;
    /// The first; absent if there is none.
    [[nodiscard]] std::optional<std::string> nextRevision() const;
    [[nodiscard]] std::optional<std::string> lastRevision() const;
    [[nodiscard]] std::size_t revisionsCount() const { return parsedSequenceInstructions_.size(); }

private:
    std::optional<std::string> contents_;
    RVGitSequenceInstruction::List parsedSequenceInstructions_;
};
