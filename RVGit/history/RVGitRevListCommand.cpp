#include "RVGit/history/RVGitRevListCommand.h"

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitRevisionArguments.h"
#include "RVGit/history/RVGitLogCommand.h"

RVGitRevListCommand::RVGitRevListCommand(const std::shared_ptr<RVGitRepository>& repository,
                                         const std::optional<RVOptions>& options)
    : RVGitCommand(repository) {
    countsCommits_ = optionIsSet(options, RVGitRevListOptionCount);
    if (const auto* value = valueForOption(options, RVGitRevListOptionMaxCount))
        maxCount_ = static_cast<std::uint32_t>(value->unsignedValue());
    firstParentOnly_ = optionIsSet(options, RVGitRevListOptionFirstParent);
}

std::shared_ptr<RVGitRevListCommand> RVGitRevListCommand::gitRevListCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitRevListCommand>(repository, options);
}

const RVGitErrorTable& RVGitRevListCommand::gitErrorDefinitions() {
    return RVGitLogCommand::gitErrorDefinitions();
}

void RVGitRevListCommand::gitCommandWillInitialize() {
    setGitCommand("rev-list");
    addGitCommandRevisions(revisions_);
    separateRevisionsFromFiles(*this);
    if (countsCommits_)
        addGitCommandOption("--count");
    if (maxCount_ != 0)
        addGitCommandOption("-" + std::to_string(maxCount_));
    if (firstParentOnly_)
        addGitCommandOption("--first-parent");
}

bool RVGitRevListCommand::gitCommandShouldHandleError(const RVError& error) {
    if (!RVGitLogCommand::isEmptyHistoryError(error))
        return true;
    commitCount_ = 0;
    return false;
}

bool RVGitRevListCommand::gitCommandWillParseOutput(RVErrorPlace) {
    if (countsCommits_)
        commitCount_ = static_cast<std::uint64_t>(integerValue(standardOutputString()));
    return true;
}
