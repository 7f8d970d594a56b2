#include "bench/support/RVBenchTree.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "bench/support/RVBareProcess.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t filesInDirectory = 50;

std::string fileName(std::size_t number) {
    const std::size_t directory = number / filesInDirectory;
    return "src/module-" + std::to_string(directory / 40) + "/component-" +
           std::to_string(directory % 40) + "/SourceFile-" + std::to_string(number) + ".cpp";
}

class Tree {
public:
    explicit Tree(std::string path) : path_(std::move(path)) {}

    void git(const std::vector<std::string>& arguments) const {
        std::vector<std::string> line = {"git",
                                         "-C",
                                         path_,
                                         "-c",
                                         "user.name=Marie Curie",
                                         "-c",
                                         "user.email=marie@example.org",
                                         "-c",
                                         "gc.auto=0"};
        line.insert(line.end(), arguments.begin(), arguments.end());
        if (runBare(line).exitCode != 0)
            throw std::runtime_error("git " + arguments.front() + " failed in " + path_);
    }
    void write(const std::string& name, const std::string& contents) const {
        const fs::path file = fs::path(path_) / name;
        fs::create_directories(file.parent_path());
        std::ofstream(file) << contents;
    }
    void remove(const std::string& name) const { fs::remove(fs::path(path_) / name); }
    void move(const std::string& name, const std::string& newName) const {
        fs::rename(fs::path(path_) / name, fs::path(path_) / newName);
    }

private:
    std::string path_;
};

/// Changes that are to be staged, a fifth of all of them.
void makeStagedChanges(const Tree& tree, std::size_t step) {
    for (std::size_t change = 0; change < RVBenchTreeChanges; change += 5) {
        const std::string name = fileName(change * step);
        if (change % 10 == 0)
            tree.write(name, "staged " + name + "\n");
        else
            tree.move(name, name + ".renamed");
    }
}

void makeOtherChanges(const Tree& tree, std::size_t step) {
    for (std::size_t change = 0; change < RVBenchTreeChanges; ++change) {
        const std::string name = fileName(change * step);
        if (change % 5 == 1)
            tree.remove(name);
        else if (change % 5 == 2)
            tree.write(name + ".new", "");
        else if (change % 5 > 2)
            tree.write(name, "modified " + name + "\n");
    }
}

}  // namespace

std::string makeChangedTree() {
    const std::string path = RVGIT_BENCH_CACHE "/changed-tree";
    if (fs::exists(path))
        return path;
    std::fprintf(stderr, "Making the working tree of the benchmarks, once\n");
    const std::string partial = path + ".partial";
    fs::remove_all(partial);
    fs::create_directories(partial);
    const Tree tree(partial);
    tree.git({"init", "--quiet", "--initial-branch=main"});
    for (std::size_t number = 0; number < RVBenchTreeFiles; ++number)
        tree.write(fileName(number), "contents of file " + std::to_string(number) + "\n");
    tree.git({"add", "."});
    tree.git({"commit", "--quiet", "--message", "Everything"});
    tree.git({"gc", "--quiet"});
    constexpr std::size_t step = RVBenchTreeFiles / RVBenchTreeChanges;
    makeStagedChanges(tree, step);
    tree.git({"add", "."});
    makeOtherChanges(tree, step);
    // Git reads a file anew as long as it is no older than the index.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    tree.git({"status", "--porcelain"});
    fs::rename(partial, path);
    return path;
}
