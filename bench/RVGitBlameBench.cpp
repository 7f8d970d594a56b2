#include <git2.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/history/RVGitBlame.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"

// What annotating a file of 50,000 lines, which 2,000 of 20,000 commits have changed, costs beside
// the bare git process and a peer.

namespace {

/// A bare repository in a directory of its own, made on first use and removed at the end.
class BlamedRepository {
public:
    ~BlamedRepository() {
        if (!path_.empty())
            std::filesystem::remove_all(path_);
    }

    const std::string& path() {
        if (path_.empty())
            make();
        return path_;
    }

private:
    void make();

    std::string path_;
};

/// Twenty histories, in each of which a hundred commits add to a part of the file and nine times as
/// many change other files, and one merge of them all. So git compares small files, which leaves
/// the least to hide behind, and has to pass by most commits, as in a real history.
class HistoryWriter {
public:
    explicit HistoryWriter(std::FILE* import) : import_(import) {}

    void write() {
        std::string file;
        std::string parents;
        for (int part = 0; part < 20; ++part) {
            std::fprintf(import_, "reset refs/heads/main\n\n");
            file += writePart(part);
            parents += (part == 0 ? "from :" : "merge :") + std::to_string(mark_) + "\n";
        }
        writeCommit(parents, "file", file);
    }

private:
    std::string writePart(int part) {
        std::string contents;
        std::string parent;
        for (int number = 0; number < 1000; ++number) {
            if (number % 10 == 0) {
                for (int line = 0; line < 25; ++line)
                    contents += "part " + std::to_string(part) + ", change " +
                                std::to_string(number) + ", line " + std::to_string(line) + "\n";
                writeCommit(parent, "file", contents);
            } else {
                writeCommit(
                    parent,
                    "directory" + std::to_string(number % 20) + "/other" + std::to_string(number),
                    std::to_string(mark_));
            }
            parent = "from :" + std::to_string(mark_) + "\n";
        }
        return contents;
    }

    void writeCommit(const std::string& parents, const std::string& path,
                     const std::string& contents) {
        ++mark_;
        std::fprintf(import_,
                     "commit refs/heads/main\nmark :%d\n"
                     "author Author %d <author%d@example.org> %d +0100\n"
                     "committer Committer <committer@example.org> %d +0000\n"
                     "data <<END\nChange number %d\nEND\n%sM 100644 inline %s\ndata %zu\n",
                     mark_, mark_ % 50, mark_ % 50, 1500000000 + mark_, 1600000000 + mark_, mark_,
                     parents.c_str(), path.c_str(), contents.size());
        std::fwrite(contents.data(), 1, contents.size(), import_);
        std::fputc('\n', import_);
    }

    std::FILE* import_;
    int mark_ = 0;
};

void BlamedRepository::make() {
    std::string path = std::filesystem::temp_directory_path() / "rvgit-blame-XXXXXX";
    if (!mkdtemp(path.data()))
        std::exit(1);
    path_ = path;
    std::FILE* import = nullptr;
    if (std::system(("git init --quiet --bare --initial-branch=main '" + path + "'").c_str()) == 0)
        import = popen(("git --git-dir='" + path + "' fast-import --quiet").c_str(), "w");
    if (!import)
        std::exit(1);
    HistoryWriter(import).write();
    if (pclose(import) != 0)
        std::exit(1);
}

std::size_t annotate(const std::string& path) {
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const auto repository = RVGitRepository::bareRepositoryWithGitDirectoryPath(path);
    const auto blame = RVGitBlame::blameForFilePath("file", "main", repository);
    return blame ? blame->annotatedLines().size() : 0;
}

std::size_t annotateWithPeer(const std::string& path) {
    git_libgit2_init();
    git_repository* repository = nullptr;
    git_blame* blame = nullptr;
    std::size_t lineCount = 0;
    git_blame_options options = GIT_BLAME_OPTIONS_INIT;
    if (git_repository_open_bare(&repository, path.c_str()) == 0 &&
        git_blame_file(&blame, repository, "file", &options) == 0) {
        for (std::uint32_t index = 0; index < git_blame_get_hunk_count(blame); ++index)
            lineCount += git_blame_get_hunk_byindex(blame, index)->lines_in_hunk;
    }
    git_blame_free(blame);
    git_repository_free(repository);
    git_libgit2_shutdown();
    return lineCount;
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    BlamedRepository repository;
    RVBenchTable table(bench, "blame");
    table.add("bare", [&] {
        return runBare({"git", "blame", "--porcelain", "main", "--", "file"}, repository.path())
            .outputBytes;
    });
    table.add("library", [&] { return annotate(repository.path()); });
    table.add("libgit2", [&] { return annotateWithPeer(repository.path()); });
    table.run(3);
    table.bound("library", "bare", 1.05);
    table.bound("library", "libgit2", 0.1);
    return bench.finish();
}
