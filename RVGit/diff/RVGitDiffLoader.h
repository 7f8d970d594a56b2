#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/diff/RVGitDiffSettings.h"

class RVGitDiff;
class RVGitRepository;

/// Loads diffs with their lines. With log options, be they empty, it shows what one revision
/// changed, by `git log`; without them it compares whatever the revisions name, by `git diff`.
/// Beside the options of those commands it reads RVGitDiffOptionContextLines,
/// RVGitDiffOptionMergeCommitsFirstParent and RVGitDiffOptionMergeCommitsMergedFilePaths. Used by
/// one thread.
class RVGitDiffLoader {
public:
    /// The repository is required.
    explicit RVGitDiffLoader(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitDiffLoader> loaderWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::vector<std::string>& revisions() const {
        return settings_.revisions();
    }
    void setRevisions(std::vector<std::string> revisions) {
        settings_.setRevisions(std::move(revisions));
    }
    [[nodiscard]] const std::optional<RVOptions>& logOptions() const {
        return settings_.logOptions();
    }
    void setLogOptions(std::optional<RVOptions> options) {
        settings_.setLogOptions(std::move(options));
    }
    /// These win over log options of the same name.
    [[nodiscard]] const std::optional<RVOptions>& diffOptions() const {
        return settings_.diffOptions();
    }
    void setDiffOptions(std::optional<RVOptions> options) {
        settings_.setDiffOptions(std::move(options));
    }
    /// The three fields above.
    [[nodiscard]] const RVGitDiffSettings& diffSettings() const { return settings_; }
    void setDiffSettings(RVGitDiffSettings settings) { settings_ = std::move(settings); }

    using Diffs = std::optional<std::vector<std::shared_ptr<RVGitDiff>>>;

    /// The diffs of all files; absent, with git's error in the place, if git failed.
    [[nodiscard]] Diffs loadDiffs(RVErrorPlace error = nullptr) const;
    /// Without file paths all files are compared.
    [[nodiscard]] Diffs loadDiffsForFilePaths(const std::vector<std::string>& filePaths,
                                              RVErrorPlace error = nullptr) const;

    /// The same as the bytes that git prints.
    [[nodiscard]] std::optional<RVData> generatePatch(RVErrorPlace error = nullptr) const;
    [[nodiscard]] std::optional<RVData> generatePatchForFilePaths(
        const std::vector<std::string>& filePaths, RVErrorPlace error = nullptr) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
    RVGitDiffSettings settings_;
};
