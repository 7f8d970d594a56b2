#include "RVGit/history/RVGitContributionInfo.h"

#include <utility>

#include "RVGit/command/RVGitActor.h"
#include "RVGit/history/RVGitShortlogCommand.h"

RVGitContributionInfo::RVGitContributionInfo(std::shared_ptr<RVGitActor> author,
                                             std::uint64_t numberOfCommits, std::string revision,
                                             std::optional<std::vector<std::string>> filePaths)
    : author_(std::move(author)),
      numberOfCommits_(numberOfCommits),
      revision_(std::move(revision)),
      filePaths_(std::move(filePaths)) {
    requireParameter(author_ != nullptr, "author");
}

std::shared_ptr<RVGitContributionInfo> RVGitContributionInfo::contributionInfoWithAuthor(
    std::shared_ptr<RVGitActor> author, std::uint64_t numberOfCommits, std::string revision) {
    return std::make_shared<RVGitContributionInfo>(std::move(author), numberOfCommits,
                                                   std::move(revision), std::nullopt);
}

std::optional<std::vector<std::shared_ptr<RVGitContributionInfo>>>
RVGitContributionInfo::allContributionInfosForRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::string& revision,
    std::uint64_t limit, unsigned options, RVErrorPlace error) {
    return allContributionInfosForRepository(repository, revision, std::nullopt, limit, options,
                                             error);
}

std::optional<std::vector<std::shared_ptr<RVGitContributionInfo>>>
RVGitContributionInfo::allContributionInfosForRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::string& revision,
    const std::optional<std::vector<std::string>>& filePaths, std::uint64_t limit, unsigned options,
    RVErrorPlace error) {
    auto command = RVGitShortlogCommand::gitShortlogCommandWithRepository(repository, revision);
    command->setFilePaths(filePaths);
    command->setLimit(limit);
    command->setShowsCommitters((options & RVGitContributionInfoOptionCommitters) != 0);
    if (!command->run(error))
        return std::nullopt;

    std::vector<std::shared_ptr<RVGitContributionInfo>> infos;
    infos.reserve(command->result().size());
    for (const auto& item : command->result())
        infos.push_back(std::make_shared<RVGitContributionInfo>(
            RVGitActor::actorWithName(item.authorName, item.authorEmail), item.numberOfCommits,
            revision, filePaths));
    return infos;
}
