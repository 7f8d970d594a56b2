#include "bench/support/RVBenchHistory.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t refCount = 2000;

constexpr std::string_view givenNames[] = {
    "Marie", "Zoë",   "Søren", "Łukasz",  "José",   "Ana",    "Björn", "Chloé", "Dmitri",
    "Emre",  "Fatma", "Grace", "Hiroshi", "Ólafur", "Jürgen", "Кира",  "李",    "あきら"};
constexpr std::string_view familyNames[] = {"Curie",  "Müller", "Nuñez",   "Żak",    "O'Brien",
                                            "Håkan",  "Petrov", "Schäfer", "Dvořák", "Tanaka",
                                            "Иванов", "王",     "Smith",   "Yılmaz", "Garçon"};
constexpr std::string_view words[] = {
    "fix",   "the",   "parser", "of",    "lines", "that",  "naïve", "merge", "when", "a",
    "ref",   "is",    "moved",  "and",   "größe", "index", "tests", "for",   "to",   "café",
    "avoid", "reuse", "buffer", "early", "wider", "値",    "drop",  "stale", "path", "résumé"};

struct Commit {
    std::vector<std::size_t> parentDistances;
    std::size_t author = 0;
    long long authorTime = 0;
    long long committerTime = 0;
    std::size_t subjectLength = 0;
    std::size_t bodyLength = 0;
};

/// A process at the other end of a pipe, whose failure is an exception.
class PipeTo {
public:
    PipeTo(const std::string& command, const char* mode)
        : command_(command), stream_(popen(command.c_str(), mode)) {
        if (stream_ == nullptr) {
            throw std::runtime_error("cannot run " + command);
        }
    }
    PipeTo(const PipeTo&) = delete;
    PipeTo& operator=(const PipeTo&) = delete;
    ~PipeTo() {
        if (stream_ != nullptr) {
            pclose(stream_);
        }
    }
    [[nodiscard]] std::FILE* stream() const { return stream_; }
    void write(const std::string& text) const { std::fwrite(text.data(), 1, text.size(), stream_); }
    void finish() {
        std::FILE* const stream = stream_;
        stream_ = nullptr;
        if (pclose(stream) != 0) {
            throw std::runtime_error("failed: " + command_);
        }
    }

private:
    std::string command_;
    std::FILE* stream_;
};

void run(const std::string& command) {
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("failed: " + command);
    }
}

std::vector<Commit> readShape() {
    PipeTo source("gzip -dc '" RVGIT_BENCH_SHAPE "'", "r");
    std::vector<Commit> commits;
    char line[1024];
    while (std::fgets(line, sizeof line, source.stream()) != nullptr) {
        Commit commit;
        char* at = line;
        while (*at != '\t') {
            commit.parentDistances.push_back(std::strtoull(at, &at, 10));
            at += *at == ',' ? 1 : 0;
        }
        commit.author = std::strtoull(at, &at, 10);
        commit.authorTime = std::strtoll(at, &at, 10);
        commit.committerTime = std::strtoll(at, &at, 10);
        commit.subjectLength = std::strtoull(at, &at, 10);
        commit.bodyLength = std::strtoull(at, &at, 10);
        commits.push_back(std::move(commit));
    }
    source.finish();
    return commits;
}

/// Words in lines of at most `width` bytes, of exactly that length, with no blank at either end.
std::string madeUpText(std::size_t length, std::size_t width, std::minstd_rand& random) {
    std::string text;
    std::size_t lineLength = 0;
    while (true) {
        const std::string_view word = words[random() % std::size(words)];
        if (text.size() + 1 + word.size() > length) {
            break;
        }
        if (!text.empty()) {
            const bool full = lineLength + 1 + word.size() > width;
            text += full ? '\n' : ' ';
            lineLength = full ? 0 : lineLength + 1;
        }
        text += word;
        lineLength += word.size();
    }
    return text.append(length - text.size(), '.');
}

std::string person(std::size_t number, long long time) {
    static constexpr const char* zones[] = {"+0000", "+0100", "-0800", "+0530", "+0900", "-0330"};
    const std::string_view given = givenNames[number % std::size(givenNames)];
    const std::string_view family =
        familyNames[number / std::size(givenNames) % std::size(familyNames)];
    return std::string(given) + " " + std::string(family) + " <author" + std::to_string(number) +
           "@example.org> " + std::to_string(time) + " " + zones[number % std::size(zones)];
}

std::string dataOf(const std::string& text) {
    return "data " + std::to_string(text.size()) + "\n" + text + "\n";
}

std::string importedCommit(const std::vector<Commit>& commits, std::size_t index,
                           std::minstd_rand& random) {
    const Commit& commit = commits[index];
    // Who commits what somebody else has written some time before is one of a few.
    const std::size_t committer =
        commit.authorTime == commit.committerTime ? commit.author : commit.author % 7;
    std::string message = madeUpText(commit.subjectLength, SIZE_MAX, random) + "\n";
    if (commit.bodyLength > 0) {
        message += "\n" + madeUpText(commit.bodyLength, 72, random) + "\n";
    }
    std::string text = commit.parentDistances.empty() ? "reset refs/heads/main\n\n" : "";
    text += "commit refs/heads/main\nmark :" + std::to_string(index + 1) + "\nauthor " +
            person(commit.author, commit.authorTime) + "\ncommitter " +
            person(committer, commit.committerTime) + "\n" + dataOf(message);
    const char* word = "from :";
    for (const std::size_t distance : commit.parentDistances) {
        text += word + std::to_string(index + 1 - distance) + "\n";
        word = "merge :";
    }
    return text + "\n";
}

/// Branches first at every commit that nothing else leads to; the other refs lie evenly over the
/// whole history, tags of both kinds and branches of a remote among them.
std::string importedRefs(const std::vector<Commit>& commits) {
    std::vector<bool> isParent(commits.size());
    for (std::size_t index = 0; index < commits.size(); ++index) {
        for (const std::size_t distance : commits[index].parentDistances) {
            isParent[index - distance] = true;
        }
    }
    std::string text;
    std::size_t count = 1;
    const auto add = [&](const std::string& name, std::size_t index) {
        text += "reset refs/" + name + "\nfrom :" + std::to_string(index + 1) + "\n\n";
        ++count;
    };
    for (std::size_t index = 0; index + 1 < commits.size(); ++index) {
        if (!isParent[index]) {
            add("heads/tip/" + std::to_string(index), index);
        }
    }
    for (std::size_t step = 0; count < refCount; ++step) {
        const std::size_t index = step * commits.size() / refCount;
        const std::string number = std::to_string(step);
        switch (step % 5) {
            case 0:
                add("heads/feature/größe-" + number, index);
                break;
            case 1:
                add("remotes/origin/topic/" + number, index);
                break;
            case 2:
                add("tags/light-" + number, index);
                break;
            default:
                text += "tag v" + number + "\nfrom :" + std::to_string(index + 1) + "\ntagger " +
                        person(step % 7, commits[index].committerTime) + "\n" +
                        dataOf("Version " + number + "\n");
                ++count;
        }
    }
    return text;
}

}  // namespace

std::string makeHistoryRepository() {
    const std::string path = RVGIT_BENCH_CACHE "/history.git";
    if (fs::exists(path)) {
        return path;
    }
    std::fprintf(stderr, "Making the repository of the benchmarks, once\n");
    const std::string partial = path + ".partial";
    const std::string git = "git --git-dir='" + partial + "' ";
    fs::remove_all(partial);
    run("git init --quiet --bare --initial-branch=main '" + partial + "'");
    const std::vector<Commit> commits = readShape();
    PipeTo import(git + "fast-import --quiet", "w");
    std::minstd_rand random(1);
    for (std::size_t index = 0; index < commits.size(); ++index) {
        import.write(importedCommit(commits, index, random));
    }
    import.write("reset refs/heads/main\nfrom :" + std::to_string(commits.size()) + "\n\n" +
                 importedRefs(commits) + "done\n");
    import.finish();
    run(git + "gc --quiet");
    fs::rename(partial, path);
    return path;
}
