#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"
#include "RVGit/command/RVGitValues.h"

/// One record of `git ls-tree -z`.
struct RVGitTreeOutputParserResultItem {
    /// As git prints it: relative to the listed tree.
    std::string filePath;
    std::string objectHash;
    RVGitFileMode fileMode = RVGitFileModeNone;
    RVGitObjectType objectType = RVGitObjectTypeNone;
    /// In bytes; 0 for what is no blob, and where sizes were not asked for.
    std::uint64_t fileSize = 0;
};

/// Reads what `git ls-tree -z` prints, with or without "-l".
class RVGIT_EXPORT RVGitTreeOutputParser
    : public RVGitItemOutputParser<RVGitTreeOutputParserResultItem> {
public:
    explicit RVGitTreeOutputParser(std::string_view outputData);
    explicit RVGitTreeOutputParser(std::vector<std::string> outputLines);

    [[nodiscard]] const std::vector<RVGitTreeOutputParserResultItem>& treeEntries() const& {
        return indexedResultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};

/// Runs `git ls-tree`: for one reference, whose tree is listed, or for a revision and a path, of
/// which the one entry is listed. Failure: code 2900 if the object is no tree, 2901 if its name
/// is unknown, 11 if the output cannot be read.
class RVGIT_EXPORT RVGitTreeCommand : public RVGitCommand {
public:
    /// The repository is required. The options are not read.
    explicit RVGitTreeCommand(const std::shared_ptr<RVGitRepository>& repository,
                              const std::optional<RVOptions>& options = std::nullopt);

    [[nodiscard]] static std::shared_ptr<RVGitTreeCommand> gitTreeCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, const std::string& treeHash);
    /// Lists the contents of the directory: the reference is "revision:directoryPath".
    [[nodiscard]] static std::shared_ptr<RVGitTreeCommand>
    gitTreeCommandWithRepositoryDirectoryPath(const std::shared_ptr<RVGitRepository>& repository,
                                              const std::optional<std::string>& revision,
                                              const std::optional<std::string>& directoryPath);
    /// Lists the one entry at the path: revision and path stay apart.
    [[nodiscard]] static std::shared_ptr<RVGitTreeCommand> gitTreeCommandWithRepositoryFilePath(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<std::string>& revision, const std::optional<std::string>& filePath);

    /// Where present, the one argument; revision and path are then left aside.
    [[nodiscard]] const std::optional<std::string>& objectReference() const {
        return objectReference_;
    }
    void setObjectReference(std::optional<std::string> reference) {
        objectReference_ = std::move(reference);
    }
    [[nodiscard]] const std::optional<std::string>& revision() const { return revision_; }
    void setRevision(std::optional<std::string> revision) { revision_ = std::move(revision); }
    [[nodiscard]] const std::optional<std::string>& filePath() const { return filePath_; }
    void setFilePath(std::optional<std::string> filePath) { filePath_ = std::move(filePath); }
    [[nodiscard]] bool recursesDirectories() const { return recursesDirectories_; }
    void setRecursesDirectories(bool recurses) { recursesDirectories_ = recurses; }
    [[nodiscard]] bool includesFileSize() const { return includesFileSize_; }
    void setIncludesFileSize(bool includes) { includesFileSize_ = includes; }

    /// The records in git's order, after the run.
    [[nodiscard]] const std::vector<RVGitTreeOutputParserResultItem>& treeEntries() const {
        return treeEntries_;
    }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::optional<std::string> objectReference_;
    std::optional<std::string> revision_;
    std::optional<std::string> filePath_;
    bool recursesDirectories_ = false;
    bool includesFileSize_ = false;
    std::vector<RVGitTreeOutputParserResultItem> treeEntries_;
};
