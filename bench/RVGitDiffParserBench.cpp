#include <git2.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/diff/RVGitDiff.h"
#include "RVGit/diff/RVGitDiffParser.h"
#include "bench/support/RVBench.h"

// What it costs to read diffs, beside a peer that reads the same text.

namespace {

constexpr std::size_t textSize = std::size_t{30} << 20;

using Buffer = std::shared_ptr<RVDataBuffer>;

// Lines as source files have them; `columns` is 1 for an ordinary diff.
Buffer makeDiff(std::size_t columns) {
    std::mt19937 random(1);
    const auto buffer = std::make_shared<RVDataBuffer>();
    const std::string blank(columns, ' ');
    const std::string words = "int value = compute(other, 17); // what is left of it all";
    for (int file = 0; buffer->size() < textSize; ++file) {
        const std::string path = "source/folder/file" + std::to_string(file) + ".cpp";
        std::string text = columns == 1 ? "diff --git a/" + path + " b/" + path + "\n"
                                        : "diff --cc " + path + "\n";
        text += "index " + std::string(40, 'a');
        for (std::size_t parent = 1; parent < columns; ++parent)
            text += "," + std::string(40, 'b');
        text += ".." + std::string(40, 'c') + (columns == 1 ? " 100644\n" : "\n");
        text += "--- a/" + path + "\n+++ b/" + path + "\n";
        std::size_t location = 1;
        for (int chunk = 0; chunk < 12; ++chunk) {
            const std::size_t added = 1 + random() % 6;
            const std::size_t deleted = random() % 6;
            const std::string signs(columns + 1, '@');
            text += signs;
            for (std::size_t parent = 0; parent < columns; ++parent) {
                const std::size_t own = parent == 0 ? deleted : 0;
                text += " -" + std::to_string(location) + "," + std::to_string(6 + own);
            }
            text += " +" + std::to_string(location) + "," + std::to_string(6 + added) + " " +
                    signs + " void work()\n";
            const auto addLines = [&](std::size_t count, const std::string& status) {
                for (; count > 0; --count)
                    text += status + words.substr(random() % 30) + "\n";
            };
            addLines(3, blank);
            addLines(deleted, "-" + blank.substr(1));
            addLines(added, std::string(columns, '+'));
            addLines(3, blank);
            location += 40;
        }
        buffer->append(text);
    }
    return buffer;
}

std::size_t parse(const Buffer& buffer) {
    RVGitDiffParser parser(buffer);
    parser.parse();
    return parser.result().size();
}

std::size_t parseIntoModels(const Buffer& buffer) {
    RVGitDiffParser parser(buffer);
    parser.parse();
    std::size_t lines = 0;
    for (const RVGitDiffMap& map : parser.result())
        lines += RVGitDiff::diffWithRepository(nullptr, map)->linesAdded();
    return lines;
}

std::size_t parseByPeer(const Buffer& buffer) {
    git_diff* diff = nullptr;
    if (git_diff_from_buffer(&diff, buffer->view().data(), buffer->size()) != 0) {
        std::fprintf(stderr, "libgit2 cannot read the diff\n");
        std::exit(1);
    }
    const std::size_t files = git_diff_num_deltas(diff);
    git_diff_free(diff);
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    RVBench bench(argc, argv);
    git_libgit2_init();
    // Made in the process that runs the one case, and once for all of them in the other.
    const Buffer plain = makeDiff(1);
    const Buffer combined = makeDiff(2);

    RVBenchTable table(bench, "30 MB of diffs");
    table.add("text", [&] { return plain->size(); });
    table.add("libgit2", [&] { return parseByPeer(plain); });
    table.add("parser", [&] { return parse(plain); });
    table.add("parser, combined", [&] { return parse(combined); });
    table.add("parser and models", [&] { return parseIntoModels(plain); });
    table.run(11);

    table.bound("parser", "libgit2", 0.8);
    const auto size = static_cast<double>(plain->size());
    table.bound(
        "speed of plain diffs over combined",
        table.ratio("parser, combined", "parser") * size / static_cast<double>(combined->size()),
        1 / 0.6);
    const auto base = static_cast<double>(table.peakMemory("text"));
    table.bound("memory beyond the text, in texts",
                (static_cast<double>(table.peakMemory("parser")) - base) / size, 2);
    const auto instructions = table.instructions("parser");
    const auto instructionsOfText = table.instructions("text");
    if (instructions && instructionsOfText)
        table.bound("instructions a byte",
                    static_cast<double>(*instructions - *instructionsOfText) / size, 12);
    else
        std::puts("instructions a byte: not measured, as valgrind is not installed");
    git_libgit2_shutdown();
    return bench.finish();
}
