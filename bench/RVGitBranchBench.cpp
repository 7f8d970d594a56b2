#include <malloc.h>

#include <cstdio>
#include <functional>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/remotes/RVGitBranch.h"
#include "RVGit/remotes/RVGitBranchTrackingState.h"
#include "RVGit/remotes/RVGitForEachRefBranchOutputParser.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"

// What lists of 10,000 branches (200 of them tracking) and of 8,000 remote branches cost beside the
// git processes that print them, run one after the other.

namespace {

constexpr int numberOfBranches = 10000;
constexpr int numberOfRemoteBranches = 8000;
constexpr int numberOfTracking = 200;
constexpr int numberOfCommits = 2000;

/// In the temporary directory, for the life of the program.
class BranchyRepository : public RVBenchDirectory {
public:
    BranchyRepository() : RVBenchDirectory("rvgit-branches") {
        (void)runBare({"git", "init", "--quiet", "--bare", "--initial-branch=main", path()});
        {
            const RVFastImport import(path());
            for (int number = 1; number <= numberOfCommits; ++number) {
                std::fprintf(import.stream(),
                             "commit refs/heads/main\nmark :%d\ncommitter A <a@b> %d +0000\n"
                             "data 18\nChange number %04d\n",
                             number, 1577934245 + number, number);
                if (number > 1)
                    std::fprintf(import.stream(), "from :%d\n", number - 1);
                std::fputs("\n", import.stream());
            }
            for (int number = 1; number < numberOfBranches; ++number)
                std::fprintf(import.stream(), "reset refs/heads/team-%d/topic-%05d\nfrom :%d\n\n",
                             number % 40, number, number % numberOfCommits + 1);
            for (int number = 0; number < numberOfRemoteBranches; ++number)
                std::fprintf(import.stream(), "reset refs/remotes/%s/topic-%05d\nfrom :%d\n\n",
                             number % 2 ? "origin" : "upstream", number,
                             number % numberOfCommits + 1);
        }
        (void)runBare({"git", "pack-refs", "--all"}, path());
        FILE* config = std::fopen((path() + "/config").c_str(), "a");
        if (!config)
            fail("cannot write the configuration");
        for (const char* remote : {"origin", "upstream"})
            std::fprintf(config,
                         "[remote \"%s\"]\n\turl = ../x\n"
                         "\tfetch = +refs/heads/*:refs/remotes/%s/*\n",
                         remote, remote);
        for (int number = 1; number <= numberOfTracking; ++number)
            std::fprintf(config,
                         "[branch \"team-%d/topic-%05d\"]\n\tremote = origin\n"
                         "\tmerge = refs/heads/topic-%05d\n",
                         number % 40, number, number * 2 - 1);
        std::fclose(config);
    }
};

std::size_t run(const std::string& path, std::vector<std::string> words) {
    words.insert(words.begin(), {"git", "--no-pager", "--git-dir=" + path});
    return runBare(words, path).outputBytes;
}

// What the objects of a list hold beyond the texts of the names, a branch.
template <typename List>
double bytesABranch(const std::function<List()>& list) {
    (void)list();
    const std::size_t before = mallinfo2().uordblks;
    const List branches = list();
    std::size_t bytes = mallinfo2().uordblks - before;
    for (const auto& branch : branches)
        bytes -= branch->fullRefName()->size();
    return static_cast<double>(bytes) / static_cast<double>(branches.size());
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    const BranchyRepository branchy;
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const auto repository = RVGitRepository::bareRepositoryWithGitDirectoryPath(branchy.path());
    const std::string format = std::string("--format=") + RVGitForEachRefBranchFormat;

    RVBenchTable branches(bench, "branches");
    branches.add("three git lines", [&] {
        return run(branchy.path(), {"branch", "--no-color", "--no-abbrev", "-v"}) +
               run(branchy.path(), {"config", "-z", "--get-regexp", "^branch.*"}) +
               run(branchy.path(), {"for-each-ref", format, "refs/heads"});
    });
    branches.add("all branches", [&] {
        const auto all = RVGitBranch::allBranchesForRepository(repository);
        if (!all || all->size() != numberOfBranches)
            fail("the list of branches is not whole");
        return all->size();
    });
    branches.add("all tracking states", [&] {
        const auto all = RVGitBranch::allBranchTrackingStatesForRepository(repository);
        if (!all || all->size() != numberOfBranches)
            fail("the list of tracking states is not whole");
        return all->size();
    });
    branches.run(21);
    branches.bound("all branches", "three git lines", 1.08);
    branches.bound("bytes a branch", bytesABranch<RVGitBranch::List>([&] {
                       return RVGitBranch::allBranchesForRepository(repository).value();
                   }),
                   400);
    branches.bound("bytes a remote branch", bytesABranch<RVGitRemoteBranch::List>([&] {
                       return RVGitRemoteBranch::allRemoteBranchesForRepository(repository).value();
                   }),
                   400);

    RVBenchTable remotes(bench, "remotes");
    remotes.add("eight git lines", [&] {
        std::size_t bytes = 0;
        for (const char* sections : {"^(svn-)?remote.*", "^svn-remote.*", "^remote.*"})
            bytes += run(branchy.path(), {"config", "-z", "--get-regexp", sections});
        for (int again = 0; again < 2; ++again)
            bytes += run(branchy.path(), {"config", "-z", "--get-regexp", "^svn-remote.*"});
        return bytes + run(branchy.path(), {"branch", "--no-color", "--no-abbrev", "-v", "-r"}) +
               run(branchy.path(), {"for-each-ref", format, "refs/remotes"}) +
               run(branchy.path(), {"remote", "-v"});
    });
    remotes.add("all remotes", [&] {
        const auto all = RVGitRemote::allRemotesForRepository(repository);
        if (!all || all->size() != 2)
            fail("the list of remotes is not whole");
        std::size_t count = 0;
        for (const auto& remote : *all)
            count += remote->branches() ? remote->branches()->size() : 0;
        if (count != numberOfRemoteBranches)
            fail("the list of remote branches is not whole");
        return count;
    });
    remotes.run(21);
    remotes.bound("all remotes", "eight git lines", 1.08);
    return bench.finish();
}
