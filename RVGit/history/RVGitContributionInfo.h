#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"

class RVGitActor;
class RVGitRepository;

// Option bits of RVGitContributionInfo.
enum RVGitContributionInfoOption : unsigned {
    /// Count who committed in place of who wrote.
    RVGitContributionInfoOptionCommitters = 1,
};

/// How many commits a person has in the history of a revision: an immutable snapshot.
class RVGIT_EXPORT RVGitContributionInfo {
public:
    /// The author is required. Absent file paths: the whole tree was counted.
    RVGitContributionInfo(std::shared_ptr<RVGitActor> author, std::uint64_t numberOfCommits,
                          std::string revision, std::optional<std::vector<std::string>> filePaths);
    [[nodiscard]] static std::shared_ptr<RVGitContributionInfo> contributionInfoWithAuthor(
        std::shared_ptr<RVGitActor> author, std::uint64_t numberOfCommits, std::string revision);

    /// The persons of a history, those with most commits first: git shortlog. Persons without an
    /// e-mail address are left out. `limit` is the number of commits looked at, 0 for all of them;
    /// `options` are RVGitContributionInfoOption bits. Absent, with the error, on failure.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<RVGitContributionInfo>>>
    allContributionInfosForRepository(const std::shared_ptr<RVGitRepository>& repository,
                                      const std::string& revision, std::uint64_t limit,
                                      unsigned options, RVErrorPlace error = nullptr);
    /// Only commits that change one of the files.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<RVGitContributionInfo>>>
    allContributionInfosForRepository(const std::shared_ptr<RVGitRepository>& repository,
                                      const std::string& revision,
                                      const std::optional<std::vector<std::string>>& filePaths,
                                      std::uint64_t limit, unsigned options,
                                      RVErrorPlace error = nullptr);

    [[nodiscard]] const std::shared_ptr<RVGitActor>& author() const { return author_; }
    [[nodiscard]] std::uint64_t numberOfCommits() const { return numberOfCommits_; }
    [[nodiscard]] const std::string& revision() const { return revision_; }
    [[nodiscard]] const std::optional<std::vector<std::string>>& filePaths() const {
        return filePaths_;
    }

private:
    std::shared_ptr<RVGitActor> author_;
    std::uint64_t numberOfCommits_;
    std::string revision_;
    std::optional<std::vector<std::string>> filePaths_;
};
