#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/lfs/RVGitLFSCommand.h"
#include "RVGit/lfs/RVGitLFSPointer.h"

/// The lines of a pointer as `git lfs clean` prints it.
class RVGIT_EXPORT RVGitLFSCleanOutputParserResultItem {
public:
    /// Throws RVInvalidParameterException, as RVGitLFSPointer does, for a key that is missing.
    explicit RVGitLFSCleanOutputParserResultItem(RVGitLFSPointer::Entries entries);

    [[nodiscard]] const RVGitLFSPointer::Entries& allEntries() const { return entries_; }
    [[nodiscard]] const std::string& version() const { return entries_.at(RVGitLFSPointerVersion); }
    [[nodiscard]] const std::string& objectID() const { return entries_.at(RVGitLFSPointerOID); }
    [[nodiscard]] const std::string& size() const { return entries_.at(RVGitLFSPointerSize); }

private:
    RVGitLFSPointer::Entries entries_;
};

/// Reads what `git lfs clean` prints, which is a pointer. Never fails; lines of another form are
/// skipped.
class RVGIT_EXPORT RVGitLFSCleanOutputParser : public RVGitOutputParser {
public:
    explicit RVGitLFSCleanOutputParser(std::string_view outputData);

    /// Values by key.
    [[nodiscard]] const RVGitLFSPointer::Entries& resultCache() const& { return resultCache_; }
    /// Throws RVInvalidParameterException if there was no pointer in the output.
    [[nodiscard]] RVGitLFSCleanOutputParserResultItem pointer() const;

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;

private:
    RVGitLFSPointer::Entries resultCache_;
};

/// Runs `git lfs clean` on a file: it keeps the contents among the repository's objects and makes
/// the pointer that stands for them.
///
/// Failure: code 100 for a file that cannot be opened for reading or is not regular; a link in its
/// place is not followed. Kept for compatibility: an empty file has no pointer, and makes the run
/// throw RVInvalidParameterException.
class RVGIT_EXPORT RVGitLFSCleanCommand : public RVGitLFSCommand {
public:
    using RVGitLFSCommand::RVGitLFSCommand;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSCleanCommand> gitLFSCleanCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    /// Absolute, or relative to where this process runs. git-lfs reads it itself: its bytes never
    /// come into this process.
    [[nodiscard]] const std::optional<std::string>& filePath() const { return filePath_; }
    void setFilePath(std::optional<std::string> filePath) { filePath_ = std::move(filePath); }

    // Results; absent before the run and after a failure.

    [[nodiscard]] const std::optional<RVGitLFSCleanOutputParserResultItem>& pointer() const {
        return pointer_;
    }
    /// The pointer's text.
    [[nodiscard]] const std::optional<std::string>& pointerContents() const {
        return pointerContents_;
    }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::optional<std::string> filePath_;
    std::optional<RVGitLFSCleanOutputParserResultItem> pointer_;
    std::optional<std::string> pointerContents_;
};
