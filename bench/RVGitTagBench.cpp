#include <cstdio>
#include <string>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/objects/RVGitForEachRefTagOutputParser.h"
#include "RVGit/objects/RVGitTag.h"
#include "RVGit/repository/RVGitRepository.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"

// What a list of 20,000 annotated tags costs beside the git process that prints them.

namespace {

constexpr int numberOfTags = 20000;

/// In the temporary directory, for the life of the program.
class TaggedRepository : public RVBenchDirectory {
public:
    TaggedRepository() : RVBenchDirectory("rvgit-tags") {
        (void)runBare({"git", "init", "--quiet", "--bare", path()});
        {
            const RVFastImport import(path());
            std::fputs(
                "commit refs/heads/main\nmark :1\ncommitter A <a@b> 1577934245 +0000\n"
                "data 8\nMessage\n\n",
                import.stream());
            for (int number = 0; number < numberOfTags; ++number) {
                const std::string message =
                    "Version " + std::to_string(number) +
                    "\n\nWhat is new in this version: a littlé of everything.\n";
                std::fprintf(
                    import.stream(),
                    "tag v%d.%d\nfrom :1\ntagger Marie Curie <marie@example.org> %d +0000\n"
                    "data %zu\n%s\n",
                    number / 100, number % 100, 1577934245 + number, message.size(),
                    message.c_str());
            }
        }
        (void)runBare({"git", "pack-refs", "--all"}, path());
    }
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
