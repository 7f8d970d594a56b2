#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"

/// One common ancestor.
struct RVGitMergeBaseOutputParserResultItem {
    std::string commitHash;
};

/// Reads one hash a line; any other line fails with code 11.
class RVGIT_EXPORT RVGitMergeBaseOutputParser
    : public RVGitItemOutputParser<RVGitMergeBaseOutputParserResultItem> {
public:
    explicit RVGitMergeBaseOutputParser(std::string_view outputData);

    /// The first; null if there is none. It lives as long as the parser.
    [[nodiscard]] const RVGitMergeBaseOutputParserResultItem* result() const;

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};

/// Finds the best common ancestor of revisions, or tells whether the first is an ancestor of the
/// second: git merge-base. "No common ancestor" and "is no ancestor" are exit code 1, with which
/// run() is false and the error generic: read exitCode() to tell them from a failure.
class RVGIT_EXPORT RVGitMergeBaseCommand : public RVGitCommand {
public:
    explicit RVGitMergeBaseCommand(const std::shared_ptr<RVGitRepository>& repository);
    [[nodiscard]] static std::shared_ptr<RVGitMergeBaseCommand> gitMergeBaseCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    /// Two or more.
    [[nodiscard]] const std::vector<std::string>& revisions() const { return revisions_; }
    void setRevisions(std::vector<std::string> revisions) { revisions_ = std::move(revisions); }
    [[nodiscard]] bool checksAncestor() const { return checksAncestor_; }
    void setChecksAncestor(bool checks) { checksAncestor_ = checks; }

    /// The common ancestor; absent if there is none, where ancestry was asked for, and if any line
    /// of the output cannot be read.
    [[nodiscard]] const std::optional<std::string>& mergeBaseCommitHash() const {
        return mergeBaseCommitHash_;
    }
    [[nodiscard]] bool isAncestor() const { return isAncestor_; }

protected:
    void gitCommandWillInitialize() override;
    void gitCommandDidTerminate() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::vector<std::string> revisions_;
    bool checksAncestor_ = false;
    std::optional<std::string> mergeBaseCommitHash_;
    bool isAncestor_ = false;
};
