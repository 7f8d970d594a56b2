#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/diff/RVGitDiffMap.h"

class RVDataBuffer;

/// Reads the output of `git diff`, `git show` or `git log -p`: one map for each file. The maps
/// share the bytes and keep them alive. Used by one thread, once.
class RVGIT_EXPORT RVGitDiffParser {
public:
    /// Copies the bytes.
    explicit RVGitDiffParser(std::string_view outputData);
    /// Shares the buffer, which may be null and is not to be changed any more once parse() is
    /// called.
    explicit RVGitDiffParser(std::shared_ptr<const RVDataBuffer> buffer);
    ~RVGitDiffParser();

    [[nodiscard]] static std::shared_ptr<RVGitDiffParser> parserWithOutputData(
        std::string_view outputData);

    [[nodiscard]] std::string_view outputData() const { return outputData_; }
    /// Reads the files that stand in the buffer as a whole, while more of the output is still to
    /// come. parse() then reads the rest.
    void parseAhead();
    /// True, and the place is not touched: a file whose diff cannot be read is left out. But where
    /// the hashes have 64 digits, nothing is left out: false, with code 11.
    bool parse(RVErrorPlace error = nullptr);
    /// The files, in git's order.
    [[nodiscard]] const std::vector<RVGitDiffMap>& result() const& { return result_; }
    [[nodiscard]] std::vector<RVGitDiffMap> takeResult() { return std::move(result_); }

    /// The bytes of each file's diff, as views, cut in front of lines that begin with "diff --git",
    /// "diff --cc " or "diff --com". A lone carriage return ends a line here. What git tells of a
    /// submodule, from a line "Submodule ..." on, stands apart, and parse() leaves it out.
    [[nodiscard]] static std::vector<std::string_view> diffDataComponentsFromMultipleDiffOutput(
        std::string_view outputData);
    /// Absent if the bytes cannot be read as the diff of one file. Copies them.
    [[nodiscard]] static std::optional<RVGitDiffMap> diffFromGitDiffOutputData(
        std::string_view block);

private:
    void parseBlockUntil(std::size_t end);

    std::shared_ptr<const RVDataBuffer> buffer_;
    std::string_view outputData_;
    std::size_t blockStart_ = 0;
    std::size_t searchStart_ = 0;
    /// The files with where their texts begin. Texts move as the buffer grows.
    std::vector<std::pair<std::size_t, std::shared_ptr<RVGitDiffContents>>> files_;
    std::optional<RVError> failure_;
    std::vector<RVGitDiffMap> result_;
};
