#include "RVGit/diff/RVGitChangesetLoader.h"

#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/diff/RVGitDiffStatsOutputParser.h"
#include "RVGit/history/RVGitLogCommand.h"

RVGitChangesetLoader::RVGitChangesetLoader(std::shared_ptr<RVGitRepository> repository)
    : RVGitComparisonLoader(std::move(repository)) {}

std::shared_ptr<RVGitChangesetLoader> RVGitChangesetLoader::loaderWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitChangesetLoader>(std::move(repository));
}

std::shared_ptr<RVGitChangeset> RVGitChangesetLoader::loadChangeset(RVErrorPlace error) const {
    const auto load = [&](const auto& command) -> std::shared_ptr<RVGitChangeset> {
        command->setGeneratesDiffStats(true);
        if (optionIsSet(options(), RVGitDiffOptionNoRenames))
            command->addGitCommandOption("--no-renames");
        if (!command->run(error))
            return nullptr;
        RVGitChangeset::Entries entries;
        for (RVGitDiffStatsOutputParserResultItem& item : command->takeLoadedDiffStats())
            entries.push_back(std::make_shared<RVGitChangesetEntry>(std::move(item)));
        return RVGitChangeset::changesetWithRepository(repository(), diffSettings(),
                                                       std::move(entries));
    };
    return std::visit(
        load, commandWithOptions({"-z", "--no-color", "--word-diff=none", "--no-ext-diff",
                                  "--full-index", "--no-abbrev", "-C", "-M", "--raw", "--numstat"},
                                 filePaths_));
}
