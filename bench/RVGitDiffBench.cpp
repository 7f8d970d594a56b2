#include <cstdio>
#include <random>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/diff/RVGitChangeset.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffCommand.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"

// What it costs to load a changeset of 10,000 files, and all their diffs, beside the git process
// that prints them.

namespace {

constexpr int numberOfFiles = 10000;
constexpr int linesOfFile = 120;

/// Three commits, of which the second adds the files and the third changes some lines of each. In
/// the temporary directory, for the life of the program.
class ChangedRepository : public RVBenchDirectory {
public:
    ChangedRepository() : RVBenchDirectory("rvgit-diffs") {
        (void)runBare({"git", "init", "--quiet", "--bare", "--initial-branch=main", path()});
        {
            const RVFastImport import(path());
            constexpr char commit[] =
                "commit refs/heads/main\ncommitter A <a@b> 1577934245 +0000\ndata 8\nMessage\n\n";
            std::fputs(commit, import.stream());
            std::mt19937 random(1);
            for (const bool isChanged : {false, true}) {
                std::fputs(commit, import.stream());
                for (int file = 0; file < numberOfFiles; ++file) {
                    const std::string contents = contentsOfFile(file, isChanged, random);
                    std::fprintf(import.stream(),
                                 "M 100644 inline source/folder %d/file%d.cpp\ndata %zu\n%s\n",
                                 file % 300, file, contents.size(), contents.c_str());
                }
            }
        }
    }

private:
    static std::string contentsOfFile(int file, bool isChanged, std::mt19937& random) {
        const std::string words = "int value = compute(other, 17); // what is left of it all ";
        std::string contents;
        for (int line = 0; line < linesOfFile; ++line) {
            if (isChanged && line != 60 && random() % 30 == 0)
                continue;
            if (isChanged && (line == 60 || random() % 30 == 0))
                contents += "changed ";
            contents += words.substr(static_cast<std::size_t>(line % 30)) + std::to_string(file) +
                        " " + std::to_string(line) + "\n";
        }
        return contents;
    }
};

const std::vector<std::string> changes = {"main~", "main"};
const std::vector<std::string> additions = {"main~2", "main~"};

// The library's command line for these command options, asked of the command itself.
std::vector<std::string> diffCommandLine(const std::shared_ptr<RVGitRepository>& repository,
                                         const std::vector<std::string>& options,
                                         const std::vector<std::string>& revisions) {
    const auto command = RVGitDiffCommand::gitDiffCommandWithRepository(repository, std::nullopt);
    command->addGitCommandOptions(options);
    command->addGitCommandArguments(revisions);
    if (!command->run())
        fail("git diff failed");
    std::vector<std::string> line = command->arguments();
    line.insert(line.begin(), command->launchPath());
    return line;
}

std::size_t loadChangeset(const std::shared_ptr<RVGitRepository>& repository,
                          const std::vector<std::string>& revisions) {
    const auto changeset =
        RVGitChangeset::changesetByComparingRevisions(revisions, {}, repository, std::nullopt);
    if (!changeset || changeset->totalFilesChanged() != numberOfFiles)
        fail("the changeset cannot be loaded");
    return changeset->totalLinesAdded();
}

std::size_t loadDiffs(const std::shared_ptr<RVGitRepository>& repository,
                      const std::vector<std::string>& revisions) {
    const auto diffs =
        RVGitDiff::allDiffsByComparingRevisions(revisions, {}, repository, std::nullopt);
    if (!diffs || diffs->size() != numberOfFiles)
        fail("the diffs cannot be loaded");
    std::size_t linesAdded = 0;
    for (const auto& diff : *diffs)
        linesAdded += diff->linesAdded();
    return linesAdded;
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const ChangedRepository files;
    const auto repository = RVGitRepository::bareRepositoryWithGitDirectoryPath(files.path());

    RVBenchTable changesets(bench, "changeset of 10,000 files");
    const auto statsLine =
        diffCommandLine(repository,
                        {"-z", "--no-color", "--word-diff=none", "--no-ext-diff", "--full-index",
                         "--no-abbrev", "-C", "-M", "--raw", "--numstat"},
                        changes);
    changesets.add("bare", [&] { return runBare(statsLine).outputBytes; });
    changesets.add("library", [&] { return loadChangeset(repository, changes); });
    changesets.run(11);
    changesets.bound("library", "bare", 1.10);

    const std::vector<std::string> patchOptions = {"-z", "-p", "--src-prefix=a/", "--dst-prefix=b/",
                                                   "--full-index"};
    const auto addDiffs = [&](RVBenchTable& table, const std::vector<std::string>& revisions) {
        const auto line = diffCommandLine(repository, patchOptions, revisions);
        table.add("bare", [line] { return runBare(line).outputBytes; });
        table.add("library", [=] { return loadDiffs(repository, revisions); });
    };
    RVBenchTable diffs(bench, "diffs of 10,000 changed files");
    addDiffs(diffs, changes);
    diffs.run(21);
    diffs.bound("library", "bare", 1.10);

    // Here git has next to nothing to do but to print.
    RVBenchTable additionsTable(bench, "diffs of 10,000 new files");
    addDiffs(additionsTable, additions);
    additionsTable.run(11);
    return bench.finish();
}
