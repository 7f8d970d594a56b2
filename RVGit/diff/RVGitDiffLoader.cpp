#include "RVGit/diff/RVGitDiffLoader.h"

#include <utility>

#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/diff/RVGitDiffMap.h"
#include "RVGit/history/RVGitLogCommand.h"

RVGitDiffLoader::RVGitDiffLoader(std::shared_ptr<RVGitRepository> repository)
    : RVGitComparisonLoader(std::move(repository)) {}

std::shared_ptr<RVGitDiffLoader> RVGitDiffLoader::loaderWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitDiffLoader>(std::move(repository));
}

RVGitComparisonLoader::Command RVGitDiffLoader::commandForFilePaths(
    const std::vector<std::string>& filePaths) const {
    // The prefixes that the parser needs, whatever the user's configuration says.
    Command command = commandWithOptions(
        {"-z", "-p", "--src-prefix=a/", "--dst-prefix=b/", "--full-index"}, filePaths);
    const auto options = this->options();
    const RVValue* lines = valueForOption(options, RVGitDiffOptionContextLines);
    std::visit(
        [&](auto& prepared) {
            prepared->setGeneratesDiffs(true);
            if (lines)
                prepared->addGitCommandOption("-U" + std::to_string(lines->unsignedValue()));
        },
        command);
    return command;
}

RVGitDiffLoader::Diffs RVGitDiffLoader::loadDiffs(RVErrorPlace error) const {
    return loadDiffsForFilePaths({}, error);
}

RVGitDiffLoader::Diffs RVGitDiffLoader::loadDiffsForFilePaths(
    const std::vector<std::string>& filePaths, RVErrorPlace error) const {
    const auto load = [&](const auto& command) -> Diffs {
        if (!command->run(error))
            return std::nullopt;
        std::vector<std::shared_ptr<RVGitDiff>> diffs;
        for (const RVGitDiffMap& gitDiff : command->takeLoadedDiffs())
            diffs.push_back(RVGitDiff::diffWithRepository(repository(), gitDiff));
        return diffs;
    };
    return std::visit(load, commandForFilePaths(filePaths));
}

std::optional<RVData> RVGitDiffLoader::generatePatch(RVErrorPlace error) const {
    return generatePatchForFilePaths({}, error);
}

std::optional<RVData> RVGitDiffLoader::generatePatchForFilePaths(
    const std::vector<std::string>& filePaths, RVErrorPlace error) const {
    const auto generate = [error](const auto& command) -> std::optional<RVData> {
        if (!command->run(error))
            return std::nullopt;
        return RVData(command->standardOutputData());
    };
    return std::visit(generate, commandForFilePaths(filePaths));
}
