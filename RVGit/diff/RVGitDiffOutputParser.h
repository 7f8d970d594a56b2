#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/diff/RVGitDiffMap.h"

class RVDataBuffer;
class RVRegularExpression;

/// Reads the diff of one file, ordinary or combined. Code 11 for a line that is none of a diff's,
/// and for a hash of 64 digits.
/// A diff of 4 GB or more cannot be read. Empty lines are passed over: where an empty line of
/// context stands without its blank, that line is missing, the numbers behind it are too low, and
/// git refuses a patch of the chunk. Git prints it so with diff.suppressBlankEmpty, which
/// RVGitDiffCommand and RVGitLogCommand switch off.
class RVGIT_EXPORT RVGitDiffOutputParser : public RVGitOutputParser {
public:
    /// Copies the bytes.
    explicit RVGitDiffOutputParser(std::string_view outputData);
    /// Shares the bytes: `block` lies within the buffer.
    RVGitDiffOutputParser(std::shared_ptr<const RVDataBuffer> buffer, std::string_view block);
    ~RVGitDiffOutputParser() override;

    /// What was read; after a failure, what was read until then.
    [[nodiscard]] RVGitDiffMap diff() const { return RVGitDiffMap(contents_); }
    /// The same, to be finished by whoever knows where the text will stand in the end.
    [[nodiscard]] const std::shared_ptr<RVGitDiffContents>& contents() const { return contents_; }
    /// Whether that is why it failed.
    [[nodiscard]] bool meetsSHA256Hash() const { return meetsSHA256Hash_; }
    /// Whether the "+++" line has passed.
    [[nodiscard]] bool isFinishedParsingHeader() const { return isFinishedParsingHeader_; }
    /// Of the last chunk: 1 for an ordinary diff.
    [[nodiscard]] std::size_t numberOfParents() const { return numberOfParents_; }
    /// The running numbers, one for each parent and one for the new file.
    [[nodiscard]] std::vector<std::uint32_t> currentLineNumbers() const {
        return currentLineNumbers_;
    }
    /// Where they end.
    [[nodiscard]] std::vector<std::uint32_t> maxCurrentLineNumbers() const {
        return maxCurrentLineNumbers_;
    }

    [[nodiscard]] static const RVRegularExpression& diffHeaderRegex();
    [[nodiscard]] static const RVRegularExpression& combinedDiffHeaderRegex();
    [[nodiscard]] static const RVRegularExpression& indexRegex();
    [[nodiscard]] static const RVRegularExpression& chunkHeaderRegex();
    /// The two groups of diffHeaderRegex(), found at a fraction of the cost. Empty if there is no
    /// match.
    [[nodiscard]] static std::vector<std::string_view> diffHeaderComponentsOfLine(
        std::string_view line);
    /// The four groups of indexRegex(), found at a fraction of the cost, and in proportion to the
    /// length of a line that does not match; a group that took no part is empty. Empty if there is
    /// no match.
    [[nodiscard]] static std::vector<std::string_view> indexComponentsOfLine(std::string_view line);
    /// The part of a line that is a chunk header, as chunkHeaderRegex() finds it at a fraction of
    /// the cost; empty if there is none.
    [[nodiscard]] static std::string_view chunkHeaderOfLine(std::string_view line);

protected:
    [[nodiscard]] std::string_view parserName() const override { return "RVGitDiffOutputParser"; }
    bool parseOutputLine(std::string_view line) override;

private:
    explicit RVGitDiffOutputParser(std::shared_ptr<RVGitDiffContents> contents);
    bool parseDiffHeaderLine(std::string_view line);
    void finishHeader();
    bool parseDiffLine(std::string_view line);
    bool parseCombinedDiffLine(std::string_view line);
    bool parseIndexLine(std::string_view line);
    void parseChunkHeaderLine(std::string_view line, std::string_view chunkHeader);
    bool parseChunkLine(std::string_view line);
    [[nodiscard]] RVGitDiffContents::Range rangeOfLine(std::string_view line) const;
    void beginRaw(std::uint32_t start);
    void appendToRaw(RVGitDiffContents::Range line);
    void advance(std::size_t column);
    [[nodiscard]] std::optional<RVGitDiffLineType> typeOfStatus(std::string_view status);

    std::shared_ptr<RVGitDiffContents> contents_;
    std::uint32_t endOfLastLine_ = 0;
    bool meetsSHA256Hash_ = false;
    bool isFinishedParsingHeader_ = false;
    std::size_t numberOfParents_ = 0;
    std::vector<std::uint32_t> currentLineNumbers_;
    std::vector<std::uint32_t> maxCurrentLineNumbers_;
};
