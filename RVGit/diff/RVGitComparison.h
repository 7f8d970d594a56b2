#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/diff/RVGitDiffSettings.h"
#include "RVGit/history/RVGitLogCommand.h"

// What the loaders of diffs and of changesets have in common; for them alone.

/// The log options with the diff options over them.
[[nodiscard]] inline std::optional<RVOptions> optionsOfComparison(
    const RVGitDiffSettings& settings) {
    RVOptions options = settings.diffOptions().value_or(RVOptions());
    if (settings.logOptions())
        options.insert(settings.logOptions()->begin(), settings.logOptions()->end());
    return options;
}

/// Gives `use` the command that makes the comparison: RVGitLogCommand, set to print the changes of
/// one commit without its header, or RVGitDiffCommand.
template <typename Use>
auto withCommandOfComparison(const std::shared_ptr<RVGitRepository>& repository,
                             const RVGitDiffSettings& settings,
                             const std::optional<RVOptions>& options, Use use) {
    if (!settings.logOptions())
        return use(*RVGitDiffCommand::gitDiffCommandWithRepository(repository, options));
    const auto command = RVGitLogCommand::gitLogCommandWithRepository(repository, options);
    command->addGitCommandOptions({"-1", "--pretty=format:"});
    return use(*command);
}

/// How the parents of a merge are compared.
inline void addMergeOptions(const std::optional<RVOptions>& options, RVGitCommand& command) {
    if (optionIsSet(options, RVGitDiffOptionMergeCommitsFirstParent))
        command.addGitCommandOptions({"-m", "--first-parent"});
    if (optionIsSet(options, RVGitDiffOptionMergeCommitsMergedFilePaths))
        command.addGitCommandOption("-c");
}

inline void addRevisionsAndFilePaths(const std::vector<std::string>& revisions,
                                     const std::vector<std::string>& filePaths,
                                     RVGitCommand& command) {
    command.addGitCommandArguments(revisions);
    if (filePaths.empty())
        return;
    command.addGitCommandArgument("--");
    command.addGitCommandArguments(filePaths);
}
