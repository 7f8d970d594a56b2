#include "RVGit/diff/RVGitComparisonLoader.h"

#include <algorithm>
#include <utility>

#include "RVGit/command/RVGitRevisionArguments.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/history/RVGitLogCommand.h"

RVGitComparisonLoader::RVGitComparisonLoader(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::optional<RVOptions> RVGitComparisonLoader::options() const {
    RVOptions options = diffOptions().value_or(RVOptions());
    if (logOptions())
        options.insert(logOptions()->begin(), logOptions()->end());
    return options;
}

RVGitComparisonLoader::Command RVGitComparisonLoader::commandWithOptions(
    const std::vector<std::string>& commandOptions,
    const std::vector<std::string>& filePaths) const {
    const auto options = this->options();
    const auto prepared = [&](auto command, std::int64_t refusalCode) -> Command {
        command->addGitCommandOptions(commandOptions);
        if (optionIsSet(options, RVGitDiffOptionMergeCommitsFirstParent))
            command->addGitCommandOptions({"-m", "--first-parent"});
        if (optionIsSet(options, RVGitDiffOptionMergeCommitsMergedFilePaths))
            command->addGitCommandOption("-c");
        command->addGitCommandRevisions(revisions(), refusalCode);
        if (!filePaths.empty()) {
            command->addGitCommandFilePaths(filePaths);
        } else if (!logOptions() &&
                   std::ranges::find(revisions(), RVGitNullFile) == revisions().end()) {
            // Beside /dev/null it is a file that is meant.
            separateRevisionsFromFiles(*command);
        }
        return command;
    };
    if (!logOptions())
        return prepared(RVGitDiffCommand::gitDiffCommandWithRepository(repository_, options),
                        RVGitRVGitGenericError);
    // The changes of one commit, without its header.
    auto command = RVGitLogCommand::gitLogCommandWithRepository(repository_, options);
    command->addGitCommandOptions({"-1", "--pretty=format:"});
    return prepared(std::move(command), RVGitLogNoSuchRevisionError);
}
