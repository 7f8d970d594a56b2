#include "RVGit/history/RVGitBlame.h"

#include <unordered_map>

#include "RVGit/command/RVGitActor.h"
#include "RVGit/history/RVGitBlameCommand.h"
#include "RVGit/history/RVGitCommit.h"

namespace {

std::shared_ptr<RVGitActor> actorWithName(std::optional<std::string> name,
                                          std::optional<std::string> email) {
    return name ? RVGitActor::actorWithName(std::move(name), std::move(email)) : nullptr;
}

/// The commit of its first line, whose texts are moved out.
std::shared_ptr<RVGitCommit> commitOfItem(const std::shared_ptr<RVGitRepository>& repository,
                                          RVGitBlameOutputParserResultItem& item) {
    return RVGitCommit::commitWithRepository(
        repository, item.commitHash, item.commitHash, std::move(item.parentCommitHashes),
        actorWithName(std::move(item.authorName), std::move(item.authorEmail)), item.authorDate(),
        actorWithName(std::move(item.committerName), std::move(item.committerEmail)),
        item.committerDate(), std::move(item.summary));
}

}  // namespace

RVGitAnnotatedLine::RVGitAnnotatedLine(std::string filePath,
                                       std::optional<std::string> lineContents,
                                       std::uint64_t originalLineNumber,
                                       std::uint64_t finalLineNumber, std::uint64_t lineGroup,
                                       std::shared_ptr<RVGitCommit> commit)
    : filePath_(std::move(filePath)),
      lineContents_(std::move(lineContents)),
      originalLineNumber_(originalLineNumber),
      finalLineNumber_(finalLineNumber),
      lineGroup_(lineGroup),
      commit_(std::move(commit)) {
    requireParameter(commit_ != nullptr, "commit");
}

std::shared_ptr<RVGitAnnotatedLine> RVGitAnnotatedLine::annotatedLineWithFilePath(
    std::string filePath, std::optional<std::string> lineContents, std::uint64_t originalLineNumber,
    std::uint64_t finalLineNumber, std::uint64_t lineGroup, std::shared_ptr<RVGitCommit> commit) {
    return std::make_shared<RVGitAnnotatedLine>(std::move(filePath), std::move(lineContents),
                                                originalLineNumber, finalLineNumber, lineGroup,
                                                std::move(commit));
}

RVGitBlame::RVGitBlame(std::shared_ptr<RVGitRepository> repository, std::string filePath,
                       std::string revision,
                       std::vector<std::shared_ptr<RVGitAnnotatedLine>> annotatedLines)
    : repository_(std::move(repository)),
      filePath_(std::move(filePath)),
      revision_(std::move(revision)),
      annotatedLines_(std::move(annotatedLines)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitBlame> RVGitBlame::blameWithRepository(
    std::shared_ptr<RVGitRepository> repository, std::string filePath, std::string revision,
    std::vector<std::shared_ptr<RVGitAnnotatedLine>> annotatedLines) {
    return std::make_shared<RVGitBlame>(std::move(repository), std::move(filePath),
                                        std::move(revision), std::move(annotatedLines));
}

std::shared_ptr<RVGitBlame> RVGitBlame::blameForFilePath(
    const std::string& filePath, const std::string& revision,
    const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    requireParameter(repository != nullptr, "repository");
    auto command = RVGitBlameCommand::gitBlameCommandWithRepository(repository, revision, filePath);
    if (!command->run(error))
        return nullptr;

    std::vector<std::shared_ptr<RVGitAnnotatedLine>> lines;
    std::unordered_map<std::string, std::shared_ptr<RVGitCommit>> commits;
    auto items = command->takeAnnotatedLines();
    lines.reserve(items.size());
    for (RVGitBlameOutputParserResultItem& item : items) {
        auto& commit = commits[item.commitHash.value_or("")];
        if (!commit)
            commit = commitOfItem(repository, item);
        lines.push_back(std::make_shared<RVGitAnnotatedLine>(
            filePath, std::move(item.lineContents), item.originalLineNumber, item.finalLineNumber,
            item.lineGroup, commit));
    }
    return blameWithRepository(repository, filePath, revision, std::move(lines));
}
