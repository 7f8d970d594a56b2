#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/objects/RVGitForEachRefTagOutputParser.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"

// What a list of 20,000 annotated tags costs beside the git process that prints them.

namespace {

constexpr int numberOfTags = 20000;

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::exit(1);
}

/// In the temporary directory, for the life of the program.
class TaggedRepository {
public:
    TaggedRepository() {
        std::string path = std::filesystem::temp_directory_path() / "rvgit-tags.XXXXXX";
        if (!mkdtemp(path.data()))
            fail("cannot make " + path);
        path_ = path;
        (void)runBare({"git", "init", "--quiet", "--bare", path_});
        FILE* import = popen(("git -C '" + path_ + "' fast-import --quiet").c_str(), "w");
        if (!import)
            fail("cannot run git fast-import");
        std::fputs(
            "commit refs/heads/main\nmark :1\ncommitter A <a@b> 1577934245 +0000\n"
            "data 8\nMessage\n\n",
            import);
        for (int number = 0; number < numberOfTags; ++number) {
            const std::string message =
                "Version " + std::to_string(number) +
                "\n\nWhat is new in this version: a littlé of everything.\n";
            std::fprintf(import,
                         "tag v%d.%d\nfrom :1\ntagger Marie Curie <marie@example.org> %d +0000\n"
                         "data %zu\n%s\n",
                         number / 100, number % 100, 1577934245 + number, message.size(),
                         message.c_str());
        }
        if (pclose(import) != 0)
            fail("git fast-import failed");
        (void)runBare({"git", "pack-refs", "--all"}, path_);
    }
    TaggedRepository(const TaggedRepository&) = delete;
    TaggedRepository& operator=(const TaggedRepository&) = delete;
    ~TaggedRepository() { std::filesystem::remove_all(path_); }

    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    RVBenchTable table(bench, "tags");
    const TaggedRepository tagged;
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const auto repository = RVGitRepository::bareRepositoryWithGitDirectoryPath(tagged.path());

    table.add("git for-each-ref", [&] {
        return runBare({"git", "for-each-ref",
                        "--format=" + RVGitForEachRefTagOutputParser::format(), "refs/tags"},
                       tagged.path())
            .outputBytes;
    });
    table.add("all tags", [&] {
        const auto tags = RVGitTag::allTagsForRepository(repository);
        if (!tags || tags->size() != numberOfTags)
            fail("the list of tags is not whole");
        return tags->size();
    });
    table.run(21);
    table.bound("all tags", "git for-each-ref", 1.15);
    return bench.finish();
}
