#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/diff/RVGitComparisonLoader.h"

class RVGitChangeset;

/// Loads the changed files of a comparison with the counts of their lines. It also reads the option
/// RVGitDiffOptionNoRenames. Used by one thread.
class RVGIT_EXPORT RVGitChangesetLoader : public RVGitComparisonLoader {
public:
    /// The repository is required.
    explicit RVGitChangesetLoader(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitChangesetLoader> loaderWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    /// Empty: all files are compared.
    [[nodiscard]] const std::vector<std::string>& filePaths() const { return filePaths_; }
    void setFilePaths(std::vector<std::string> filePaths) { filePaths_ = std::move(filePaths); }

    /// Null, with git's error in the place, if git failed.
    [[nodiscard]] std::shared_ptr<RVGitChangeset> loadChangeset(RVErrorPlace error = nullptr) const;

private:
    std::vector<std::string> filePaths_;
};
