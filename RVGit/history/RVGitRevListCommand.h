#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"

// Options of RVGitRevListCommand: two booleans and a number.
inline constexpr char RVGitRevListOptionCount[] = "RVGitRevListOptionCount";
inline constexpr char RVGitRevListOptionMaxCount[] = "RVGitRevListOptionMaxCount";
inline constexpr char RVGitRevListOptionFirstParent[] = "RVGitRevListOptionFirstParent";

/// Counts revisions, or tells whether they can be listed: git rev-list. Only the count is read.
/// An unborn branch that git reports as codes 105 or 107 is a success with a count of 0; one that
/// is named ("HEAD") fails as a bad revision, since that is how git reports it.
class RVGIT_EXPORT RVGitRevListCommand : public RVGitCommand {
public:
    RVGitRevListCommand(const std::shared_ptr<RVGitRepository>& repository,
                        const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitRevListCommand> gitRevListCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository,
        const std::optional<RVOptions>& options);

    [[nodiscard]] const std::vector<std::string>& revisions() const { return revisions_; }
    void setRevisions(std::vector<std::string> revisions) { revisions_ = std::move(revisions); }
    [[nodiscard]] bool countsCommits() const { return countsCommits_; }
    void setCountsCommits(bool counts) { countsCommits_ = counts; }
    [[nodiscard]] bool firstParentOnly() const { return firstParentOnly_; }
    void setFirstParentOnly(bool firstParentOnly) { firstParentOnly_ = firstParentOnly; }
    /// 0: no limit.
    [[nodiscard]] std::uint64_t maxCount() const { return maxCount_; }
    void setMaxCount(std::uint64_t maxCount) { maxCount_ = maxCount; }

    /// The result, if commits were to be counted; 0 otherwise.
    [[nodiscard]] std::uint64_t commitCount() const { return commitCount_; }

    /// Code 1900 for revisions that git does not know. Kept for compatibility: the rows name the
    /// command "log", so that they never match this one, whose failure is the generic error.
    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandShouldHandleError(const RVError& error) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::vector<std::string> revisions_;
    bool countsCommits_ = false;
    bool firstParentOnly_ = false;
    std::uint64_t maxCount_ = 0;
    std::uint64_t commitCount_ = 0;
};
