#include "RVGit/diff/RVGitChangesetLoader.h"

#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitComparison.h"
#include "RVGit/diff/RVGitDiffStatsOutputParser.h"

RVGitChangesetLoader::RVGitChangesetLoader(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitChangesetLoader> RVGitChangesetLoader::loaderWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitChangesetLoader>(std::move(repository));
}

std::shared_ptr<RVGitChangeset> RVGitChangesetLoader::loadChangeset(RVErrorPlace error) const {
    const auto options = optionsOfComparison(settings_);
    const auto load = [&](auto& command) -> std::shared_ptr<RVGitChangeset> {
        command.setGeneratesDiffStats(true);
        command.addGitCommandOptions({"-z", "--no-color", "--word-diff=none", "--no-ext-diff",
                                      "--full-index", "--no-abbrev", "-C", "-M", "--raw",
                                      "--numstat"});
        addMergeOptions(options, command);
        if (optionIsSet(options, RVGitDiffOptionNoRenames))
            command.addGitCommandOption("--no-renames");
        addRevisionsAndFilePaths(settings_.revisions(), filePaths_, command);
        if (!command.run(error))
            return nullptr;
        RVGitChangeset::Entries entries;
        for (RVGitDiffStatsOutputParserResultItem& item : command.takeLoadedDiffStats())
            entries.push_back(std::make_shared<RVGitChangesetEntry>(std::move(item)));
        return RVGitChangeset::changesetWithRepository(repository_, settings_, std::move(entries));
    };
    return withCommandOfComparison(repository_, settings_, options, load);
}
