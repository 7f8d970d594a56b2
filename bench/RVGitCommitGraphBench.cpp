#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitCommitGraphDrawer.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"

// What the rows of a history cost beside git's own graph of it, and whether a line costs more where
// many lanes are open.

namespace {

/// All commits in the order in which they are shown.
RVGitCommit::List readHistory(const std::string& repositoryPath) {
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    std::optional<RVError> error;
    auto commits = RVGitCommit::allCommitsForRevisions(
        {}, {}, RVGitRepository::repositoryWithPath(repositoryPath),
        RVOptions{{RVGitLogOptionAllRefs, true}, {RVGitLogOptionSortByTopoOrder, true}}, &error);
    if (!commits) {
        std::fprintf(stderr, "%s\n", error->localizedFailureReason().value_or("").c_str());
        std::exit(1);
    }
    return std::move(*commits);
}

/// A history in which `laneCount` lines of descent run side by side all the time.
RVGitCommit::List makeParallelHistory(std::size_t laneCount, std::size_t commitCount) {
    const auto hashOf = [laneCount](std::size_t lane, std::size_t depth) {
        char digits[41];
        const auto scattered = (lane + depth * laneCount + 1) * 0x9E3779B97F4A7C15U;
        std::snprintf(digits, sizeof digits, "%016zx%016zx%08zx", scattered, ~scattered, depth);
        return std::string(digits);
    };
    RVGitCommit::List history;
    history.reserve(commitCount);
    for (std::size_t number = 0; number < commitCount; ++number) {
        // Not in the order of the columns, as it is in real life.
        const std::size_t lane = number * 7919 % laneCount;
        const std::size_t depth = number / laneCount;
        history.push_back(std::make_shared<RVGitCommit>());
        history.back()->setCommitHash(hashOf(lane, depth));
        history.back()->setParentCommitHashes({hashOf(lane, depth + 1)});
    }
    return history;
}

/// The number of lines in all rows.
std::size_t draw(const RVGitCommit::List& history) {
    RVGitCommitGraphDrawer drawer;
    std::size_t lineCount = 0;
    for (const auto& commit : history)
        lineCount += drawer.drawGraphForCommit(commit)->commitLines().size();
    return lineCount;
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    RVBenchTable table(bench, "graph");
    const std::string path = bench.repositoryPath();
    std::optional<RVGitCommit::List> history;
    std::optional<RVGitCommit::List> parallelHistory;
    std::size_t lineCount = 0;
    std::size_t parallelLineCount = 0;

    const auto git = [&path](const std::string& order) {
        return runBare({"git", "log", "--all", "--format=%H", order}, path).outputBytes;
    };
    table.add("git log --topo-order", [&] { return git("--topo-order"); });
    table.add("git log --graph", [&] { return git("--graph"); });
    table.add("rows of the history", [&] {
        if (!history)
            history = readHistory(path);
        return lineCount = draw(*history);
    });
    table.add("rows with 500 lanes open", [&] {
        if (!parallelHistory)
            parallelHistory = makeParallelHistory(500, 20000);
        return parallelLineCount = draw(*parallelHistory);
    });
    table.run(11);

    const double rows = table.medianSeconds("rows of the history");
    const double nanosecondsPerLine = 1e9 * rows / static_cast<double>(lineCount);
    const double parallelNanosecondsPerLine = 1e9 *
                                              table.medianSeconds("rows with 500 lanes open") /
                                              static_cast<double>(parallelLineCount);
    std::printf("a line of the history %.2f ns, with 500 lanes open %.2f ns\n", nanosecondsPerLine,
                parallelNanosecondsPerLine);
    table.bound("all rows, to git's own graph",
                rows / (table.medianSeconds("git log --graph") -
                        table.medianSeconds("git log --topo-order")),
                0.25);
    table.bound("a line with 500 lanes open, to one of the history",
                parallelNanosecondsPerLine / nanosecondsPerLine, 1.5);
    return bench.finish();
}
