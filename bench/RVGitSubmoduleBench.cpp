#include <fstream>
#include <string>
#include <vector>

#include "RVGit/command/RVGitBinary.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/submodules/RVGitSubmodule.h"
#include "bench/support/RVBareProcess.h"
#include "bench/support/RVBench.h"
#include "bench/support/RVBenchDirectory.h"

// What a list of 200 clean submodules costs beside the five git processes that it is made of.

namespace {

constexpr int numberOfSubmodules = 200;

void run(const std::vector<std::string>& commandLine, const std::string& directory = {}) {
    if (runBare(commandLine, directory).exitCode != 0)
        fail(commandLine[1] + " failed");
}

/// In the temporary directory, for the life of the program.
class Superproject {
public:
    Superproject() {
        const std::string library = directory_.path() + "/library";
        run({"git", "init", "-q", library});
        std::ofstream(library + "/lib.c") << "int one;\n";
        run({"git", "add", "lib.c"}, library);
        run({"git", "-c", "user.name=A", "-c", "user.email=a@b", "commit", "-q", "-m", "One"},
            library);
        run({"git", "init", "-q", path_});
        std::ofstream submodules(path_ + "/.gitmodules");
        for (const std::string& path : paths()) {
            submodules << "[submodule \"" << path << "\"]\n\tpath = " << path
                       << "\n\turl = " << library << "\n";
            // Sharing the objects, so that it costs little.
            run({"git", "clone", "-q", "--shared", library, path_ + "/" + path});
        }
        submodules.close();
        run({"git", "add", "."}, path_);
        run({"git", "submodule", "--quiet", "init"}, path_);
        run({"git", "submodule", "--quiet", "absorbgitdirs"}, path_);
        run({"git", "status"}, path_);
    }

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] static std::vector<std::string> paths() {
        std::vector<std::string> paths;
        for (int number = 0; number < numberOfSubmodules; ++number)
            paths.push_back("libs/lib" + std::to_string(1000 + number));
        return paths;
    }

private:
    const RVBenchDirectory directory_{"rvgit-subs"};
    const std::string path_ = directory_.path() + "/superproject";
};

}  // namespace

int main(int argc, char** argv) {
    // Git starts two processes for each submodule, and reading the locale's files is a tenth of
    // what such a process does: all have the locale of the library's commands.
    ::setenv("LC_ALL", "en_US.UTF-8", 1);
    RVBench bench(argc, argv);
    RVBenchTable table(bench, "submodules");
    const Superproject superproject;
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath("/usr/bin/git"));
    const auto repository = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(
        superproject.path(), superproject.path() + "/.git");

    table.add("five bare processes", [&] {
        const auto configuration = [&](const std::string& file) {
            run({"git", "config", "-z", "--file=" + superproject.path() + "/" + file,
                 "--get-regexp", "^submodule.*"},
                superproject.path());
        };
        run({"git", "ls-files", "-z", "-v", "--stage"}, superproject.path());
        configuration(".gitmodules");
        configuration(".git/config");
        run({"git", "submodule", "status"}, superproject.path());
        std::vector<std::string> diff = {"git", "diff",         "-z",
                                         "-p",  "--full-index", "--no-color",
                                         "-C",  "-M",           "--submodule=short",
                                         "--"};
        for (const std::string& path : Superproject::paths())
            diff.push_back(path);
        run(diff, superproject.path());
        return std::size_t{numberOfSubmodules};
    });
    table.add("all submodules", [&] {
        const auto submodules = repository->allSubmodules();
        if (!submodules || submodules->size() != numberOfSubmodules)
            fail("the list of submodules is not whole");
        for (const auto& submodule : *submodules)
            if (submodule->status() != RVGitSubmoduleStatusClean || submodule->isDirty())
                fail("a submodule is not clean");
        return submodules->size();
    });
    table.run(11);
    table.bound("all submodules", "five bare processes", 1.05);
    return bench.finish();
}
