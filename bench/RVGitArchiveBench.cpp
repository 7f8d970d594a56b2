#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "RVGit/archive/RVGitArchiver.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"

// What an archive of 20,000 files costs beside the git process that writes it.

namespace {

constexpr int numberOfFiles = 20000;

/// In the temporary directory, for the life of the program.
class RepositoryOfManyFiles : public RVBenchDirectory {
public:
    RepositoryOfManyFiles() : RVBenchDirectory("rvgit-archive") {
        (void)runBare({"git", "init", "--quiet", "--bare", path() + "/repository"});
        {
            const RVFastImport import(path() + "/repository");
            std::fputs(
                "commit refs/heads/main\ncommitter A <a@b> 1577934245 +0000\ndata 8\nMessage\n\n",
                import.stream());
            for (int number = 0; number < numberOfFiles; ++number) {
                const std::string contents(static_cast<std::size_t>(200 + number % 400), 'x');
                std::fprintf(import.stream(),
                             "M 644 inline directory %d/file %d.txt\ndata %zu\n%s\n", number / 100,
                             number, contents.size(), contents.c_str());
            }
        }
    }
    [[nodiscard]] std::string repositoryPath() const { return path() + "/repository"; }
    [[nodiscard]] std::string archivePath(const char* name) const { return path() + "/" + name; }
};

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    RVBenchTable table(bench, "archive");
    const RepositoryOfManyFiles files;
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const auto repository =
        RVGitRepository::bareRepositoryWithGitDirectoryPath(files.repositoryPath());

    table.add("git archive", [&] {
        const std::string path = files.archivePath("bare.tar");
        if (runBare({"git", "archive", "--verbose", "--worktree-attributes", "-o", path, "main"},
                    files.repositoryPath())
                .exitCode != 0)
            fail("git archive failed");
        return static_cast<std::size_t>(std::filesystem::file_size(path));
    });
    table.add("archiver", [&] {
        const std::string path = files.archivePath("library.tar");
        const auto archiver =
            std::make_shared<RVGitArchiver>(repository, "main", std::nullopt, path);
        if (!archiver->run() || archiver->archivedFilePaths().size() < numberOfFiles)
            fail("the archive is not whole");
        return static_cast<std::size_t>(std::filesystem::file_size(path));
    });
    table.run(21);
    table.bound("archiver", "git archive", 1.05);
    return bench.finish();
}
