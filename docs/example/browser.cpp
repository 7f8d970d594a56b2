// A client in one file: the history with its graph, the changes of a file that are not staged, each
// line with its numbers, staging of single lines, and who wrote each line.
//
//     browser history|changes|stage|blame REPOSITORY [FILE [CHUNK LINE...]]
#include <filesystem>
#include <iostream>

#include "RVGit/RVGit.h"

namespace {

bool showHistory(const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error) {
    const RVOptions options{{RVGitLogOptionAllRefs, true}, {RVGitLogOptionSortByTopoOrder, true}};
    const auto commits = RVGitCommit::allCommitsForRevisions({}, {}, repository, options, error);
    RVGitCommitGraphDrawer drawer;
    for (const auto& commit : commits.value_or(RVGitCommit::List())) {
        const auto row = drawer.drawGraphForCommit(commit);
        std::string lanes(row->commitIndex() + 1, ' ');
        for (const RVGitCommitGraphLine& line : row->commitLines()) {
            if (lanes.size() <= line.endIndex())
                lanes.resize(line.endIndex() + 1, ' ');
            lanes[line.endIndex()] = '|';
        }
        lanes[row->commitIndex()] = '*';
        std::cout << lanes << " " << commit->subject().value_or("") << "\n";
    }
    return commits.has_value();
}

// Stages the lines, by their indexes in the chunk, or shows all if there are none to stage.
bool stageLines(const std::shared_ptr<RVGitRepository>& repository, const std::string& file,
                const std::vector<std::size_t>& chunkAndLines, RVErrorPlace error) {
    const auto diffs = RVGitDiff::allDiffsByComparingWorkingTreeWithIndexWithForFilePaths(
        {":(literal)" + file}, repository, std::nullopt, error);
    const auto diff = RVGitDiff::diffOfFile(diffs, file);
    if (!diff)
        return diffs.has_value();
    if (!chunkAndLines.empty()) {
        const auto patch = diff->locatedIndexPatchForLinesWithIndexes(
            {{chunkAndLines[0], {chunkAndLines.begin() + 1, chunkAndLines.end()}}});
        const auto tree = RVGitWorkingTreeManager::workingTreeManagerWithRepository(repository);
        return patch && tree->applyPatch(patch, RVOptions{{RVGitApplyOptionCached, true}}, error);
    }
    for (std::size_t chunk = 0; chunk < diff->chunks().size(); ++chunk)
        for (std::size_t number = 0; const auto& line : diff->chunks()[chunk]->lines())
            std::cout << chunk << " " << number++ << " " << line.contentWithStatusView() << "\n";
    return true;
}

bool showBlame(const std::shared_ptr<RVGitRepository>& repository, const std::string& file,
               RVErrorPlace error) {
    const auto blame = RVGitBlame::blameForFilePath(file, "HEAD", repository, error);
    if (blame)
        for (const auto& line : blame->annotatedLines())
            std::cout << RVGitShortenHash(line->commit()->commitHash()).value_or("") << " "
                      << line->lineContents().value_or("") << "\n";
    return blame != nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryInPath());
    if (words.size() < 2 || !RVGitBinary::defaultGitBinary())
        return 2;
    installEnglishTexts();
    const auto repository =
        RVGitRepository::repositoryWithPath(std::filesystem::absolute(words[1]).string());
    const std::string file = words.size() > 2 ? words[2] : "";
    std::vector<std::size_t> numbers;
    for (std::size_t index = 3; words[0] == "stage" && index < words.size(); ++index)
        numbers.push_back(std::stoul(words[index]));
    std::optional<RVError> error;
    if (words[0] == "history" ? showHistory(repository, &error)
        : words[0] == "blame" ? showBlame(repository, file, &error)
                              : stageLines(repository, file, numbers, &error))
        return 0;
    std::cerr << (error ? error->localizedDescription().value_or("") : "Nothing to stage") << "\n"
              << (error ? error->localizedFailureReason().value_or("") : "") << "\n";
    return 1;
}
