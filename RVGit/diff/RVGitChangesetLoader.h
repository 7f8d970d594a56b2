#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/diff/RVGitDiffSettings.h"

class RVGitChangeset;
class RVGitRepository;

/// Loads the changed files of a comparison with the counts of their lines. Which command it runs
/// and which options it reads is as with RVGitDiffLoader, except that it reads
/// RVGitDiffOptionNoRenames and no lines of context. Used by one thread.
class RVGitChangesetLoader {
public:
    /// The repository is required.
    explicit RVGitChangesetLoader(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitChangesetLoader> loaderWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::vector<std::string>& revisions() const {
        return settings_.revisions();
    }
    void setRevisions(std::vector<std::string> revisions) {
        settings_.setRevisions(std::move(revisions));
    }
    /// Empty: all files are compared.
    [[nodiscard]] const std::vector<std::string>& filePaths() const { return filePaths_; }
    void setFilePaths(std::vector<std::string> filePaths) { filePaths_ = std::move(filePaths); }
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

    /// Null, with git's error in the place, if git failed.
    [[nodiscard]] std::shared_ptr<RVGitChangeset> loadChangeset(RVErrorPlace error = nullptr) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
    std::vector<std::string> filePaths_;
    RVGitDiffSettings settings_;
};
