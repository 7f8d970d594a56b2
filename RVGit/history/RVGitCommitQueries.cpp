// The queries of RVGitCommit: git log, and commits made of what it prints.

#include "RVGit/command/RVGitValues.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommand.h"
#include "RVGit/repository/RVGitRef.h"

namespace {

std::shared_ptr<RVGitLogCommand> logCommand(const std::vector<std::string>& revisions,
                                            const std::vector<std::string>& filePaths,
                                            const std::shared_ptr<RVGitRepository>& repository,
                                            const std::optional<RVOptions>& options) {
    requireParameter(repository != nullptr, "repository");
    auto command = RVGitLogCommand::gitLogCommandWithRepository(repository, options);
    command->setRevisions(revisions);
    command->setFilePaths(filePaths);
    return command;
}

std::uint32_t offsetOf(const std::optional<RVOptions>& options) {
    std::uint64_t offset = 0;
    readOption(options, RVGitLogOptionOffset, offset);
    return static_cast<std::uint32_t>(offset);
}

}  // namespace

std::shared_ptr<RVGitCommit> RVGitCommit::commitForCommitHash(
    const std::string& commitHash, const std::shared_ptr<RVGitRepository>& repository,
    RVErrorPlace error) {
    return commitForCommitHash(commitHash, repository, false, error);
}

std::shared_ptr<RVGitCommit> RVGitCommit::commitForCommitHash(
    const std::string& commitHash, const std::shared_ptr<RVGitRepository>& repository,
    bool verifySignature, RVErrorPlace error) {
    RVOptions options = {{RVGitLogOptionLimit, 1}};
    if (verifySignature)
        options.insert_or_assign(RVGitLogOptionVerifiesSignatures, true);
    const auto commits = allCommitsForRevisions({commitHash}, {}, repository, options, error);
    return commits && !commits->empty() ? commits->back() : nullptr;
}

std::optional<RVGitCommit::List> RVGitCommit::allCommitsFromRevision(
    const std::string& startRevision, const std::string& endRevision,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return allCommitsForRevisions({RVGitMakeRevisionRange(startRevision, endRevision)}, {},
                                  repository, options, error);
}

std::optional<RVGitCommit::List> RVGitCommit::allCommitsByComparingRevision(
    const std::string& revision, const std::string& otherRevision,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return allCommitsForRevisions({RVGitMakeRevisionComparisonString(revision, otherRevision)}, {},
                                  repository, options, error);
}

std::optional<RVGitCommit::List> RVGitCommit::allCommitsForRevisions(
    const std::vector<std::string>& revisions, const std::vector<std::string>& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    const auto command = logCommand(revisions, filePaths, repository, options);
    command->setDecoratesCommits(true);
    command->setLoadsFullCommitInfo(true);
    if (!command->run(error))
        return std::nullopt;

    std::uint64_t topoOrder = offsetOf(options);
    List commits;
    if (!command->commits())
        return commits;
    commits.reserve(command->commits()->size());
    for (const auto& item : *command->commits()) {
        auto commit = std::make_shared<RVGitCommit>(repository, item);
        commit->topoOrder_ = topoOrder++;
        if (item.hasRefs()) {
            Refs refs;
            for (auto& fullRefName : item.refs())
                refs.push_back(RVGitRef::refWithRepository(repository, std::move(fullRefName),
                                                           item.commitHash()));
            commit->refs_ = std::make_unique<const std::optional<Refs>>(std::move(refs));
        }
        commits.push_back(std::move(commit));
    }
    return commits;
}

std::optional<std::vector<std::string>> RVGitCommit::allCommitHashesFromRevision(
    const std::string& startRevision, const std::string& endRevision,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return allCommitHashesForRevisions({RVGitMakeRevisionRange(startRevision, endRevision)}, {},
                                       repository, options, error);
}

std::optional<std::vector<std::string>> RVGitCommit::allCommitHashesByComparingRevision(
    const std::string& revision, const std::string& otherRevision,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    return allCommitHashesForRevisions({RVGitMakeRevisionComparisonString(revision, otherRevision)},
                                       {}, repository, options, error);
}

std::optional<std::vector<std::string>> RVGitCommit::allCommitHashesForRevisions(
    const std::vector<std::string>& revisions, const std::vector<std::string>& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    const auto command = logCommand(revisions, filePaths, repository, options);
    command->setLoadsFullCommitInfo(false);
    if (!command->run(error))
        return std::nullopt;
    std::vector<std::string> hashes;
    if (!command->commits())
        return hashes;
    hashes.reserve(command->commits()->size());
    for (const auto& item : *command->commits())
        hashes.emplace_back(item.commitHashView().value_or(""));
    return hashes;
}

std::int64_t RVGitCommit::countAllCommitsForRevisions(
    const std::vector<std::string>& revisions, const std::vector<std::string>& filePaths,
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
    RVErrorPlace error) {
    const auto command = logCommand(revisions, filePaths, repository, options);
    command->setCountsCommits(true);
    return command->run(error) ? command->commitCount() : RVNotFound;
}
