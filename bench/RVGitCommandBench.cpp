#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommand.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"

// What the frame costs over the process itself: a trivial command, from a small process and from
// one that has touched 2 GiB.

namespace {

constexpr int launches = 25;
constexpr std::size_t touchedBytes = std::size_t{2} << 30;

std::size_t launchBare(const std::string& gitPath) {
    std::size_t bytes = 0;
    for (int count = 0; count < launches; ++count)
        bytes += runBare({gitPath, "--no-pager", "--version"}).outputBytes;
    return bytes;
}

std::size_t launchThroughRun(const std::shared_ptr<RVGitBinary>& gitBinary) {
    std::size_t bytes = 0;
    for (int count = 0; count < launches; ++count) {
        const auto command = RVGitCommand::gitCommandWithGitBinary(gitBinary);
        command->addGitOption("--version");
        if (!command->run())
            std::exit(1);
        bytes += command->standardOutputData().size();
    }
    return bytes;
}

void measure(RVBench& bench, const std::string& name,
             const std::shared_ptr<RVGitBinary>& gitBinary) {
    RVBenchTable table(bench, name);
    table.add("bare", [&] { return launchBare(gitBinary->path()); });
    table.add("run", [&] { return launchThroughRun(gitBinary); });
    table.run(41);
    table.bound("run", "bare", 1.10);
}

void touchMemory() {
    void* memory =
        mmap(nullptr, touchedBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        std::perror("mmap");
        std::exit(1);
    }
    // Small pages, of which a fork would have to copy a table.
    madvise(memory, touchedBytes, MADV_NOHUGEPAGE);
    for (std::size_t offset = 0; offset < touchedBytes; offset += 4096)
        static_cast<volatile char*>(memory)[offset] = 1;
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    // The same surroundings for both, since git loads what the locale names.
    for (const char* name : {"LANG", "LC_ALL"})
        setenv(name, "en_US.UTF-8", 1);
    std::string gitPath = "/usr/bin/git";
    if (const char* chosen = std::getenv("RVGIT_BENCH_GIT"))
        gitPath = chosen;
    const auto gitBinary = RVGitBinary::gitBinaryWithPath(gitPath);
    measure(bench, "launch", gitBinary);
    touchMemory();
    measure(bench, "launch-2GiB", gitBinary);
    return bench.finish();
}
