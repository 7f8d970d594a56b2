#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/lfs/RVGitLFSManager.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"

// What clean and smudge of 100 MB cost beside the bare lines, and what memory they hold.

namespace {

constexpr std::size_t numberOfBytes = 100'000'000;

/// In the temporary directory, for the life of the program.
class RepositoryOfALargeFile : public RVBenchDirectory {
public:
    RepositoryOfALargeFile() : RVBenchDirectory("rvgit-lfs") {
        (void)runBare({"git", "init", "--quiet", path()});
        std::string block(1'000'000, '\0');
        std::ofstream file(filePath(), std::ios::binary);
        for (std::size_t written = 0; written < numberOfBytes; written += block.size()) {
            for (std::size_t index = 0; index < block.size(); ++index)
                block[index] = static_cast<char>((written + index) * 2654435761U >> 13);
            file << block;
        }
        file.close();
        if (runBare(shell("git lfs clean < file > pointer")).exitCode != 0)
            fail("git lfs clean failed");
    }
    [[nodiscard]] std::string filePath() const { return path() + "/file"; }
    [[nodiscard]] std::shared_ptr<RVGitLFSPointer> pointer() const {
        std::ifstream file(path() + "/pointer");
        return RVGitLFSPointer::pointerFromData(
            std::string(std::istreambuf_iterator<char>(file), {}));
    }
    [[nodiscard]] std::vector<std::string> shell(const std::string& line) const {
        return {"sh", "-c", "cd '" + path() + "' && exec " + line};
    }
};

/// Reads what the line prints into memory, and keeps it until all is there: what it costs to have
/// the bytes at all, most of which is the first touch of so much memory. The line is to begin with
/// "setsid": every child of the library has a session of its own, and where the system schedules by
/// sessions, a busy machine has a pipe between two of them wait for longer.
std::size_t runAndKeep(const std::string& line) {
    FILE* output = popen(line.c_str(), "r");
    if (!output)
        fail("cannot run " + line);
    fcntl(fileno(output), F_SETPIPE_SZ, 1 << 20);
    const std::unique_ptr<char, void (*)(void*)> bytes(
        static_cast<char*>(std::malloc(numberOfBytes + 1)), std::free);
    std::size_t size = 0;
    for (ssize_t count = 1; count > 0 && size < numberOfBytes + 1;) {
        count = read(fileno(output), bytes.get() + size, numberOfBytes + 1 - size);
        size += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    if (pclose(output) != 0)
        fail("failed: " + line);
    return size;
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    // A process that runs one case exits within run(): static, so that it is removed then, too.
    static const RepositoryOfALargeFile large;
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const auto repository = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
        large.path(), large.path() + "/.git");
    RVGitLFSManager manager(repository);
    const auto pointer = large.pointer();
    if (!pointer)
        fail("git lfs clean has printed no pointer");

    RVBenchTable clean(bench, "clean");
    clean.add("git lfs clean",
              [&] { return runBare(large.shell("git lfs clean < file")).outputBytes; });
    clean.add("pointer", [&] {
        return manager.createPointerFromFileAtPath(large.filePath())->stringRepresentation().size();
    });
    clean.run(9);
    clean.bound("pointer", "git lfs clean", 1.10);
    clean.boundPeakMemory("pointer", 0.5 * numberOfBytes);

    RVBenchTable smudge(bench, "smudge");
    smudge.add("git lfs smudge",
               [&] { return runBare(large.shell("git lfs smudge < pointer")).outputBytes; });
    smudge.add("git lfs smudge, kept",
               [&] { return runAndKeep(large.shell("setsid git lfs smudge < pointer").back()); });
    smudge.add("data", [&] { return manager.createFileDataFromPointer(pointer)->size(); });
    smudge.add("to a file", [&] {
        const std::string path = large.path() + "/output";
        if (!manager.createFileFromPointer(pointer, path))
            fail("the file was not made");
        return static_cast<std::size_t>(std::filesystem::file_size(path));
    });
    smudge.run(9);
    smudge.bound("data", "git lfs smudge, kept", 1.10);
    smudge.boundPeakMemory("data", 1.3 * numberOfBytes);
    smudge.boundPeakMemory("to a file", 1.3 * numberOfBytes);
    return bench.finish();
}
