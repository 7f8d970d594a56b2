#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"

class RVRegularExpression;

/// What a running command has printed so far, with lines rewritten by carriage returns as a
/// terminal would show them, and how far it has come, from 0 to 1. Any thread.
class RVGIT_EXPORT RVGitCommandProgress {
public:
    /// The git command selects the stages that are counted.
    explicit RVGitCommandProgress(std::optional<std::string> command);
    RVGitCommandProgress(const RVGitCommandProgress&) = delete;
    RVGitCommandProgress& operator=(const RVGitCommandProgress&) = delete;

    /// Whether a ref really changed; known once the command has finished.
    [[nodiscard]] bool isUpdated() const { return updated_; }
    /// True until the first output arrives.
    [[nodiscard]] bool isIndeterminate() const { return indeterminate_; }
    [[nodiscard]] const std::optional<std::string>& command() const { return command_; }
    /// The stages weigh the same, so one that git skips keeps this below 1 until the end.
    [[nodiscard]] double overallProgress() const { return overallProgress_; }
    void setOverallProgress(double progress) { overallProgress_ = progress; }

    /// A copy of the lines, the last being the line in progress.
    [[nodiscard]] std::vector<std::string> outputBuffer() const;
    /// The lines joined with newlines.
    [[nodiscard]] std::string currentProgressOutput() const;
    [[nodiscard]] std::string lastProgressOutputLine() const;
    /// At least 1: the last line may be empty.
    [[nodiscard]] std::size_t lineCount() const;
    [[nodiscard]] std::size_t lastIndexOfOutputBuffer() const;

    /// Takes in a chunk of output. Each chunk begins a new current line, so that one that
    /// continues an unfinished line overwrites it: a chunk usually brings a whole refreshed line.
    void updateProgressWithOutputData(std::string_view bytes);
    /// The same of text that is decoded already.
    void updateProgressWithOutputString(std::string_view text);
    /// Computes overallProgress() anew.
    void updateProgress();
    /// The command has ended: progress is 1, and isUpdated() tells whether the output shows a ref
    /// that is not up to date.
    void finishProgress();
    /// Forgets the output; progress and flags stay.
    void reset();

    /// The stages of a command; those of most commands for one that is not named below.
    [[nodiscard]] static const std::vector<RVRegularExpression>& regularExpressionsForCommand(
        const std::optional<std::string>& command);
    /// The mean of the percentages that the expressions find first, from 0 to 1.
    [[nodiscard]] static double overallProgressFromProgressOutput(
        std::string_view output, const std::vector<RVRegularExpression>& regularExpressions);

    // The stages of each command.
    [[nodiscard]] static const std::vector<RVRegularExpression>&
    defaultRegularExpressionsForCommandProgress();
    [[nodiscard]] static const std::vector<RVRegularExpression>&
    regularExpressionsForFetchCommandProgress();
    [[nodiscard]] static const std::vector<RVRegularExpression>&
    regularExpressionsForPullCommandProgress();
    [[nodiscard]] static const std::vector<RVRegularExpression>&
    regularExpressionsForPushCommandProgress();
    [[nodiscard]] static const std::vector<RVRegularExpression>&
    regularExpressionsForCloneCommandProgress();

private:
    /// What was found of a stage in the lines that are done: a first match stays the first.
    using Stage = std::optional<std::int64_t>;
    void searchLine(std::string_view line, std::vector<Stage>& stages) const;

    mutable std::recursive_mutex mutex_;
    std::optional<std::string> command_;
    /// The last is the line in progress.
    std::vector<std::string> outputBuffer_ = {""};
    std::vector<Stage> stages_;
    /// Of the buffer, from its first line on.
    std::size_t numberOfSearchedLines_ = 0;
    std::atomic<double> overallProgress_ = 0;
    std::atomic<bool> updated_ = false;
    std::atomic<bool> indeterminate_ = true;
};
