#include "RVGit/diff/RVGitDiffLoader.h"

#include <utility>

#include "RVGit/diff/RVGitComparison.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffMap.h"

namespace {

/// Runs the command and returns what `result` makes of it; absent if it failed.
template <typename Result>
auto runForFilePaths(const std::shared_ptr<RVGitRepository>& repository,
                     const RVGitDiffSettings& settings, const std::vector<std::string>& filePaths,
                     RVErrorPlace error, Result result) {
    const auto options = optionsOfComparison(settings);
    return withCommandOfComparison(repository, settings, options, [&](auto& command) {
        command.setGeneratesDiffs(true);
        // The prefixes that the parser needs, whatever the user's configuration says.
        command.addGitCommandOptions(
            {"-z", "-p", "--src-prefix=a/", "--dst-prefix=b/", "--full-index"});
        addMergeOptions(options, command);
        if (const RVValue* lines = valueForOption(options, RVGitDiffOptionContextLines))
            command.addGitCommandOption("-U" + std::to_string(lines->unsignedValue()));
        addRevisionsAndFilePaths(settings.revisions(), filePaths, command);
        return command.run(error) ? std::optional(result(command)) : std::nullopt;
    });
}

}  // namespace

RVGitDiffLoader::RVGitDiffLoader(std::shared_ptr<RVGitRepository> repository)
    : repository_(std::move(repository)) {
    requireParameter(repository_ != nullptr, "repository");
}

std::shared_ptr<RVGitDiffLoader> RVGitDiffLoader::loaderWithRepository(
    std::shared_ptr<RVGitRepository> repository) {
    return std::make_shared<RVGitDiffLoader>(std::move(repository));
}

RVGitDiffLoader::Diffs RVGitDiffLoader::loadDiffs(RVErrorPlace error) const {
    return loadDiffsForFilePaths({}, error);
}

RVGitDiffLoader::Diffs RVGitDiffLoader::loadDiffsForFilePaths(
    const std::vector<std::string>& filePaths, RVErrorPlace error) const {
    return runForFilePaths(repository_, settings_, filePaths, error, [this](auto& command) {
        std::vector<std::shared_ptr<RVGitDiff>> diffs;
        for (const RVGitDiffMap& gitDiff : command.takeLoadedDiffs())
            diffs.push_back(RVGitDiff::diffWithRepository(repository_, gitDiff));
        return diffs;
    });
}

std::optional<RVData> RVGitDiffLoader::generatePatch(RVErrorPlace error) const {
    return generatePatchForFilePaths({}, error);
}

std::optional<RVData> RVGitDiffLoader::generatePatchForFilePaths(
    const std::vector<std::string>& filePaths, RVErrorPlace error) const {
    return runForFilePaths(repository_, settings_, filePaths, error,
                           [](auto& command) { return RVData(command.standardOutputData()); });
}
