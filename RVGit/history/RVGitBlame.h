#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitCommit;
class RVGitRepository;

/// One line of an annotated file, immutable.
class RVGIT_EXPORT RVGitAnnotatedLine {
public:
    /// The commit is required.
    RVGitAnnotatedLine(std::string filePath, std::optional<std::string> lineContents,
                       std::uint64_t originalLineNumber, std::uint64_t finalLineNumber,
                       std::uint64_t lineGroup, std::shared_ptr<RVGitCommit> commit);

    [[nodiscard]] static std::shared_ptr<RVGitAnnotatedLine> annotatedLineWithFilePath(
        std::string filePath, std::optional<std::string> lineContents,
        std::uint64_t originalLineNumber, std::uint64_t finalLineNumber, std::uint64_t lineGroup,
        std::shared_ptr<RVGitCommit> commit);

    /// The path that was asked for, even where the line stood in a file of another name.
    [[nodiscard]] const std::string& filePath() const { return filePath_; }
    /// Without the newline at the end; a carriage return stays.
    [[nodiscard]] const std::optional<std::string>& lineContents() const { return lineContents_; }
    /// Counted from 1, in the file of the commit.
    [[nodiscard]] std::uint64_t originalLineNumber() const { return originalLineNumber_; }
    /// Counted from 1, in the annotated file.
    [[nodiscard]] std::uint64_t finalLineNumber() const { return finalLineNumber_; }
    /// How many lines of one commit follow each other from here; 0 within such a group.
    [[nodiscard]] std::uint64_t lineGroup() const { return lineGroup_; }
    /// The commit that the line comes from, one object for all of its lines. It holds what git
    /// prints beside the lines and no more: its message is the subject, its tree hash is the
    /// commit's own (kept for compatibility), and its parents are those of
    /// RVGitBlameOutputParserResultItem.
    [[nodiscard]] const std::shared_ptr<RVGitCommit>& commit() const { return commit_; }

private:
    std::string filePath_;
    std::optional<std::string> lineContents_;
    std::uint64_t originalLineNumber_;
    std::uint64_t finalLineNumber_;
    std::uint64_t lineGroup_;
    std::shared_ptr<RVGitCommit> commit_;
};

/// A file with the commit that each of its lines comes from, immutable.
class RVGIT_EXPORT RVGitBlame {
public:
    /// The repository is required.
    RVGitBlame(std::shared_ptr<RVGitRepository> repository, std::string filePath,
               std::string revision,
               std::vector<std::shared_ptr<RVGitAnnotatedLine>> annotatedLines);

    [[nodiscard]] static std::shared_ptr<RVGitBlame> blameWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string filePath, std::string revision,
        std::vector<std::shared_ptr<RVGitAnnotatedLine>> annotatedLines);

    /// Runs `git blame --porcelain`; null on failure. The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitBlame> blameForFilePath(
        const std::string& filePath, const std::string& revision,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::string& filePath() const { return filePath_; }
    [[nodiscard]] const std::string& revision() const { return revision_; }
    /// In the order of the file; none for an empty file.
    [[nodiscard]] const std::vector<std::shared_ptr<RVGitAnnotatedLine>>& annotatedLines() const {
        return annotatedLines_;
    }

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::string filePath_;
    std::string revision_;
    std::vector<std::shared_ptr<RVGitAnnotatedLine>> annotatedLines_;
};
