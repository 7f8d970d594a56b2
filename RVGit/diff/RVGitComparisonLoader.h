#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/diff/RVGitDiffSettings.h"

class RVGitDiffCommand;
class RVGitLogCommand;
class RVGitRepository;

/// What the loaders of diffs and of changesets have in common. With log options, be they empty,
/// they show what one revision changed, by `git log`; without them they compare whatever the
/// revisions name, by `git diff`. Beside the options of those commands they read
/// RVGitDiffOptionMergeCommitsFirstParent and RVGitDiffOptionMergeCommitsMergedFilePaths.
///
/// Of what git log prints no diff is read if a NUL byte stands in it, as where an attribute calls
/// UTF-16 text: the result is then empty, and no failure. git diff is read all the same.
class RVGIT_EXPORT RVGitComparisonLoader : public RVGitDiffSettings {
public:
    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    /// The revisions and options.
    [[nodiscard]] const RVGitDiffSettings& diffSettings() const { return *this; }
    void setDiffSettings(const RVGitDiffSettings& settings) {
        RVGitDiffSettings::operator=(settings);
    }

protected:
    using Command =
        std::variant<std::shared_ptr<RVGitLogCommand>, std::shared_ptr<RVGitDiffCommand>>;

    /// The repository is required.
    explicit RVGitComparisonLoader(std::shared_ptr<RVGitRepository> repository);
    ~RVGitComparisonLoader() = default;
    RVGitComparisonLoader(const RVGitComparisonLoader&) = default;
    RVGitComparisonLoader& operator=(const RVGitComparisonLoader&) = default;

    /// The log options with the diff options over them.
    [[nodiscard]] std::optional<RVOptions> options() const;
    /// The command that makes the comparison and prints it as those command options say.
    [[nodiscard]] Command commandWithOptions(const std::vector<std::string>& commandOptions,
                                             const std::vector<std::string>& filePaths) const;

private:
    std::shared_ptr<RVGitRepository> repository_;
};
