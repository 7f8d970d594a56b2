#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"

class RVGitCommitOutputParserResultItem;

/// Reads or counts the entries of a reflog: git reflog show. Of the options of the log command it
/// takes RVGitLogOptionLimit, RVGitLogOptionOffset and the first of RVGitLogOptionSearchPatterns.
class RVGIT_EXPORT RVGitRefLogCommand : public RVGitCommand {
public:
    RVGitRefLogCommand(const std::shared_ptr<RVGitRepository>& repository,
                       std::optional<std::string> refName, const std::optional<RVOptions>& options);
    /// Without a ref name: of HEAD.
    [[nodiscard]] static std::shared_ptr<RVGitRefLogCommand> gitRefLogCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitRefLogCommand> gitRefLogCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::optional<std::string> refName,
        const std::optional<RVOptions>& options);
    ~RVGitRefLogCommand() override;

    /// Whether entries are counted, and not read.
    [[nodiscard]] bool countsEntries() const { return countsEntries_; }
    void setCountsEntries(bool counts) { countsEntries_ = counts; }
    [[nodiscard]] const std::optional<std::string>& refName() const { return refName_; }
    void setRefName(std::optional<std::string> refName) { refName_ = std::move(refName); }
    /// How many entries there are to be at most; 0: all.
    [[nodiscard]] std::uint64_t limit() const { return limit_; }
    void setLimit(std::uint64_t limit) { limit_ = limit; }
    /// How many of the newest entries are left out.
    [[nodiscard]] std::uint64_t offset() const { return offset_; }
    void setOffset(std::uint64_t offset) { offset_ = offset; }
    /// A pattern, without regard to case, for the messages of the commits, not for those of the
    /// entries.
    [[nodiscard]] const std::optional<std::string>& searchPattern() const { return searchPattern_; }
    void setSearchPattern(std::optional<std::string> pattern) {
        searchPattern_ = std::move(pattern);
    }

    /// The result of reading, newest first: the hash, and the entry's message and date as those of
    /// the commit and its committer.
    [[nodiscard]] const std::vector<RVGitCommitOutputParserResultItem>& reflogEntries() const {
        return reflogEntries_;
    }
    /// The result of counting.
    [[nodiscard]] std::uint64_t entryCount() const { return entryCount_; }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    bool countsEntries_ = false;
    std::optional<std::string> refName_;
    std::uint64_t limit_ = 0;
    std::uint64_t offset_ = 0;
    std::optional<std::string> searchPattern_;
    std::vector<RVGitCommitOutputParserResultItem> reflogEntries_;
    std::uint64_t entryCount_ = 0;
};
