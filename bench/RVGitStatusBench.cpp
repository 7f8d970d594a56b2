#include <git2.h>

#include <memory>
#include <string>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/worktree/RVGitIndex.h"
#include "RVGit/worktree/RVGitLsFilesCommand.h"
#include "RVGit/worktree/RVGitStatusCommand.h"
#include "RVGit/worktree/RVGitWorkingTreeEntry.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"
#include "bench/support/RVBenchTree.h"

// The state of a large working tree: the library against the git processes that it runs, and
// against a library that reads index and files itself.

namespace {

std::size_t checkedCount(std::size_t count, std::size_t expected) {
    if (count != expected)
        fail("not as many entries as the tree has, but " + std::to_string(count));
    return count;
}

std::shared_ptr<RVGitRepository> openTree(const std::string& path) {
    return RVGitRepository::repositoryWithWorkingTreeDirectoryPath(path, path + "/.git");
}

std::size_t countOf(const std::optional<RVGitWorkingTreeEntry::Entries>& entries,
                    std::size_t expected) {
    if (!entries)
        fail("the tree cannot be listed");
    return checkedCount(entries->size(), expected);
}

/// A fifth of the changes are new files.
constexpr std::size_t numberOfEntries = RVBenchTreeFiles + RVBenchTreeChanges / 5;

/// The command line of the library, asked of the command itself.
std::vector<std::string> commandLine(RVGitCommand& command) {
    if (!command.run())
        fail("git failed");
    std::vector<std::string> line = command.arguments();
    line.insert(line.begin(), command.launchPath());
    return line;
}

std::vector<std::string> statusCommandLine(const std::string& path, RVGitUntrackedFilesMode mode) {
    const auto command =
        RVGitStatusCommand::gitStatusCommandWithRepository(openTree(path), std::nullopt);
    command->setUntrackedFilesMode(mode);
    return commandLine(*command);
}

std::vector<std::string> indexCommandLine(const std::string& path) {
    const auto command = RVGitLsFilesCommand::gitLsFilesCommandWithRepository(
        openTree(path), std::nullopt, RVGitLsFilesCommandOptionShowsIndexInfo);
    return commandLine(*command);
}

// The peer.

void check(int result) {
    if (result < 0)
        fail(std::string("libgit2: ") + git_error_last()->message);
}

struct PeerEntry {
    std::string path, originalPath;
    git_status_t status = GIT_STATUS_CURRENT;
    git_oid headHash = {}, indexHash = {};
};

std::size_t listWithPeer(const std::string& path, unsigned flags, std::size_t expected) {
    static const int initialized = git_libgit2_init();
    check(initialized);
    git_repository* repository = nullptr;
    check(git_repository_open(&repository, path.c_str()));
    git_status_options options = GIT_STATUS_OPTIONS_INIT;
    options.flags = flags | GIT_STATUS_OPT_INCLUDE_UNTRACKED | GIT_STATUS_OPT_RENAMES_HEAD_TO_INDEX;
    git_status_list* list = nullptr;
    check(git_status_list_new(&list, repository, &options));
    std::vector<PeerEntry> entries;
    for (std::size_t index = 0; index < git_status_list_entrycount(list); ++index) {
        const git_status_entry* status = git_status_byindex(list, index);
        const git_diff_delta* staged = status->head_to_index;
        const git_diff_delta* current = status->index_to_workdir;
        PeerEntry entry;
        entry.status = status->status;
        entry.path = current ? current->new_file.path : staged->new_file.path;
        if (staged) {
            entry.originalPath = staged->old_file.path;
            entry.headHash = staged->old_file.id;
            entry.indexHash = staged->new_file.id;
        } else {
            entry.indexHash = current->old_file.id;
        }
        entries.push_back(std::move(entry));
    }
    git_status_list_free(list);
    git_repository_free(repository);
    return checkedCount(entries.size(), expected);
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const std::string path = makeChangedTree();

    RVBenchTable changes(bench, "changed files");
    changes.add("git status", [&] {
        static const auto line = statusCommandLine(path, RVGitUntrackedFilesModeDefault);
        return runBare(line, path).outputBytes;
    });
    changes.add("changed entries", [&] {
        return countOf(
            RVGitWorkingTreeEntry::changedWorkingTreeEntriesForRepository(openTree(path)),
            RVBenchTreeChanges);
    });
    changes.add("libgit2", [&] { return listWithPeer(path, 0, RVBenchTreeChanges); });
    changes.run(15);
    changes.bound("changed entries", "git status", 1.05);
    changes.bound("changed entries", "libgit2", 0.55);

    RVBenchTable all(bench, "all files");
    all.add("git status and git ls-files", [&] {
        static const auto status = statusCommandLine(path, RVGitUntrackedFilesModeAll);
        static const auto index = indexCommandLine(path);
        return runBare(status, path).outputBytes + runBare(index, path).outputBytes;
    });
    all.add("all entries", [&] {
        return countOf(RVGitWorkingTreeEntry::allWorkingTreeEntriesForRepository(openTree(path)),
                       numberOfEntries);
    });
    all.add("libgit2", [&] {
        return listWithPeer(
            path, GIT_STATUS_OPT_INCLUDE_UNMODIFIED | GIT_STATUS_OPT_RECURSE_UNTRACKED_DIRS,
            numberOfEntries);
    });
    all.run(15);
    all.bound("all entries", "git status and git ls-files", 1.25);
    all.bound("all entries", "libgit2", 0.75);
    all.boundPeakMemory("all entries", 600.0 * static_cast<double>(numberOfEntries));

    RVBenchTable index(bench, "the index");
    index.add("git ls-files", [&] {
        static const auto line = indexCommandLine(path);
        return runBare(line, path).outputBytes;
    });
    index.add("records", [&] {
        const auto records = openTree(path)->index()->indexRecordsForFilePaths(std::nullopt, 0);
        return checkedCount(records ? records->size() : 0, RVBenchTreeFiles);
    });
    index.run(15);
    constexpr double numberOfRecords = RVBenchTreeFiles;
    if (const auto instructions = index.instructions("records"))
        index.bound("instructions to read a record",
                    static_cast<double>(*instructions) / numberOfRecords, 900);
    // A record, the entry that is made of it, and the entry's end.
    if (const auto instructions = all.instructions("all entries"))
        all.bound("instructions for an entry, from end to end",
                  static_cast<double>(*instructions) / numberOfRecords, 2400);
    return bench.finish();
}
