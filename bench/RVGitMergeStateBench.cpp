#include <filesystem>
#include <fstream>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/merge/RVGitMergeManager.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"

// What it costs to read all that is known of a rebase of 1,000 commits that has stopped half way,
// beside the least that a process of git costs.

namespace {

constexpr int numberOfCommits = 1000;

/// In the temporary directory, for the life of the program.
class StoppedRepository : public RVBenchDirectory {
public:
    StoppedRepository() : RVBenchDirectory("rvgit-merge") {
        (void)runBare({"git", "init", "--quiet", path()});
        std::string done;
        std::string todo;
        for (int number = 0; number < numberOfCommits; ++number) {
            const std::string digits = std::to_string(100000 + number);
            const std::string hash = std::string(40 - digits.size(), '0') + digits;
            (number < numberOfCommits / 2 ? done : todo) +=
                "pick " + hash + " The subject of a commit, as long as most of them are\n";
        }
        put("done", done);
        put("git-rebase-todo", todo);
        put("msgnum", std::to_string(numberOfCommits / 2) + "\n");
        put("end", std::to_string(numberOfCommits) + "\n");
        put("head-name", "refs/heads/topic\n");
        put("onto", std::string(40, '1') + "\n");
        put("orig-head", std::string(40, '2') + "\n");
        put("stopped-sha", std::string(40, '3') + "\n");
        put("message", "The subject\n\nand the body of the message\n");
    }

private:
    void put(const std::string& name, const std::string& contents) const {
        const std::string directory = path() + "/.git/rebase-merge";
        std::filesystem::create_directories(directory);
        std::ofstream(directory + "/" + name) << contents;
    }
};

std::size_t readEverything(const RVGitMergeManager& manager) {
    std::size_t size = manager.currentMergeMode();
    size += manager.isMerging() + manager.isEditingRevision() +
            manager.isPendingInteractiveRebase() + manager.usesRebaseApplyBackend();
    size += manager.mergeTimestamp() > 0;
    for (const auto& text : {manager.originalRevision(), manager.originalRefName(),
                             manager.mergedRevision(), manager.nextSequenceRevision(),
                             manager.lastSequenceRevision(), manager.mergeCommitMessage()}) {
        if (!text)
            fail("the state is not whole");
        size += text->size();
    }
    return size + manager.nextSequenceStep() + manager.lastSequenceStep();
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    RVBenchTable table(bench, "merge state");
    const StoppedRepository stopped;
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const auto manager = RVGitMergeManager::mergeManagerWithRepository(
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath(stopped.path(),
                                                                stopped.path() + "/.git"));

    table.add("git --version", [&] { return runBare({"git", "--version"}).outputBytes; });
    table.add("whole state", [&] { return readEverything(*manager); });
    table.run(51);
    table.bound("whole state", "git --version", 1.0);
    return bench.finish();
}
