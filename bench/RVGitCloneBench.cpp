#include <cstdio>
#include <filesystem>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandProgress.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"

// What a clone of 50 MB over file:// costs beside git's own, with its progress read either way.

namespace {

constexpr int numberOfFiles = 500;
constexpr std::size_t fileSize = 100'000;

/// In the temporary directory, for the life of the program: a bare repository, and room for clones.
class LargeRepository : public RVBenchDirectory {
public:
    LargeRepository() : RVBenchDirectory("rvgit-clone") {
        (void)runBare({"git", "init", "--quiet", "--bare", repositoryPath()});
        {
            const RVFastImport import(repositoryPath());
            std::fputs("commit refs/heads/main\ncommitter A <a@b> 1577934245 +0000\ndata 1\nx\n",
                       import.stream());
            unsigned state = 1;
            std::string noise(fileSize, ' ');
            for (int number = 0; number < numberOfFiles; ++number) {
                // What no compression makes smaller.
                for (char& byte : noise) {
                    state = state * 1664525u + 1013904223u;
                    byte = static_cast<char>(state >> 24);
                }
                std::fprintf(import.stream(), "M 100644 inline %d\ndata %zu\n", number,
                             noise.size());
                std::fwrite(noise.data(), 1, noise.size(), import.stream());
                std::fputc('\n', import.stream());
            }
        }
    }
    [[nodiscard]] std::string repositoryPath() const { return path() + "/source.git"; }
    [[nodiscard]] std::string url() const { return "file://" + repositoryPath(); }
    /// A path at which nothing is.
    [[nodiscard]] std::string clonePath() const {
        const std::string unused = path() + "/clone.git";
        std::filesystem::remove_all(unused);
        return unused;
    }
};

std::size_t bytesBelow(const std::string& path) {
    std::size_t bytes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
        if (entry.is_regular_file())
            bytes += entry.file_size();
    return bytes;
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    RVBenchTable table(bench, "clone");
    const LargeRepository large;
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));

    table.add("git clone", [&] {
        const std::string path = large.clonePath();
        (void)runBare({"git", "clone", "--progress", "--bare", large.url(), path});
        return bytesBelow(path);
    });
    table.add("clone", [&] {
        const std::string path = large.clonePath();
        const auto command = RVGitCloneCommand::gitCloneCommandWithRemoteURL(
            large.url(), path, RVOptions{{RVGitCloneOptionBare, true}});
        double progress = 0;
        command->setProgressHandler(
            [&](RVGitCommandProgress& changed) { progress = changed.overallProgress(); });
        if (!command->run() || progress != 1)
            fail("the clone has failed");
        return bytesBelow(path);
    });
    table.run(21);
    table.bound("clone", "git clone", 1.03);
    return bench.finish();
}
