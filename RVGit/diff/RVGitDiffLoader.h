#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/diff/RVGitComparisonLoader.h"

class RVGitDiff;

/// Loads diffs with their lines. It also reads the option RVGitDiffOptionContextLines. Used by one
/// thread.
class RVGIT_EXPORT RVGitDiffLoader : public RVGitComparisonLoader {
public:
    /// The repository is required.
    explicit RVGitDiffLoader(std::shared_ptr<RVGitRepository> repository);
    [[nodiscard]] static std::shared_ptr<RVGitDiffLoader> loaderWithRepository(
        std::shared_ptr<RVGitRepository> repository);

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
    [[nodiscard]] Command commandForFilePaths(const std::vector<std::string>& filePaths) const;
};
