#include "tests/support/RVRepositorySnapshot.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string_view>

#include "tests/support/RVTestFiles.h"
#include "tests/support/RVTestProcess.h"

namespace fs = std::filesystem;

namespace {

// AUTO_MERGE is not among them: git leaves it behind an automatic stash, and it stands for nothing.
constexpr const char* namesOfStateFiles[] = {"MERGE_HEAD",   "MERGE_MSG",    "MERGE_MODE",
                                             "MERGE_RR",     "SQUASH_MSG",   "CHERRY_PICK_HEAD",
                                             "REVERT_HEAD",  "REBASE_HEAD",  "MERGE_AUTOSTASH",
                                             "rebase-apply", "rebase-merge", "sequencer"};

std::string git(const std::string& directory, std::vector<std::string> arguments) {
    static const std::string program = findTestProgram("git");
    arguments.insert(arguments.begin(), program);
    const auto result = runTestProcess(arguments, directory);
    if (result.exitCode != 0)
        throw std::runtime_error("no snapshot of " + directory + ": " + result.standardError);
    return result.standardOutput;
}

std::string gitLine(const std::string& directory, const std::vector<std::string>& arguments) {
    std::string line = git(directory, arguments);
    while (line.ends_with('\n'))
        line.pop_back();
    return line;
}

std::vector<std::string> pieces(std::string_view text, char end) {
    std::vector<std::string> list;
    while (!text.empty()) {
        const auto length = std::min(text.find(end), text.size());
        list.emplace_back(text.substr(0, length));
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return list;
}

/// The second hash of the last line of a reflog.
std::string endOfReflog(const std::string& log) {
    const auto lines = pieces(log, '\n');
    const auto words = lines.empty() ? std::vector<std::string>() : pieces(lines.back(), ' ');
    return words.size() < 2 ? "" : words[1];
}

void readReflogs(const fs::path& directory, const std::string& prefix,
                 std::map<std::string, std::string>& ends) {
    if (!fs::is_directory(directory))
        return;
    for (const auto& entry : fs::recursive_directory_iterator(directory))
        if (entry.is_regular_file())
            ends[prefix + fs::relative(entry.path(), directory).string()] =
                endOfReflog(readTestFile(entry.path()));
}

std::string fileOnDisk(const fs::directory_entry& entry) {
    if (entry.is_symlink())
        return "link to " + fs::read_symlink(entry.path()).string();
    if (!entry.is_regular_file())
        return "neither file nor link";
    const bool runs = (entry.status().permissions() & fs::perms::owner_exec) != fs::perms::none;
    return (runs ? "program " : "file ") + readTestFile(entry.path());
}

void readWorkingTree(const fs::path& directory, std::map<std::string, std::string>& files) {
    for (auto entry = fs::recursive_directory_iterator(directory);
         entry != fs::recursive_directory_iterator(); ++entry) {
        if (entry->path().filename() == ".git") {
            entry.disable_recursion_pending();
            continue;
        }
        if (entry->is_symlink() || !entry->is_directory())
            files[fs::relative(entry->path().lexically_normal(), directory).string()] =
                fileOnDisk(*entry);
    }
}

void readLocks(const fs::path& directory, std::vector<std::string>& locks) {
    for (auto entry = fs::recursive_directory_iterator(directory);
         entry != fs::recursive_directory_iterator(); ++entry) {
        if (entry->path().filename() == "objects")
            entry.disable_recursion_pending();
        else if (entry->path().extension() == ".lock")
            locks.push_back(fs::relative(entry->path(), directory).string());
    }
}

std::string shown(std::string_view text) {
    constexpr std::size_t most = 300;
    return "\"" + std::string(text.substr(0, most)) + (text.size() > most ? "\"..." : "\"");
}

void compare(const char* kind, const std::string& before, const std::string& after,
             std::string& differences) {
    if (before != after)
        differences += std::string(kind) + ": " + shown(before) + " became " + shown(after) + "\n";
}

void compare(const char* kind, const std::map<std::string, std::string>& before,
             const std::map<std::string, std::string>& after, std::string& differences) {
    std::set<std::string> names;
    for (const auto* side : {&before, &after})
        for (const auto& [name, value] : *side)
            names.insert(name);
    const auto valueOf = [](const auto& side, const std::string& name) {
        const auto found = side.find(name);
        return found == side.end() ? nullptr : &found->second;
    };
    const auto textOf = [](const std::string* value) { return value ? shown(*value) : "nothing"; };
    for (const std::string& name : names) {
        const std::string* old = valueOf(before, name);
        const std::string* now = valueOf(after, name);
        if (!old || !now || *old != *now)
            differences += std::string(kind) + " " + name + ": " + textOf(old) + " became " +
                           textOf(now) + "\n";
    }
}

void compare(const char* kind, const std::vector<std::string>& before,
             const std::vector<std::string>& after, std::string& differences) {
    for (const std::string& item : before)
        if (std::ranges::find(after, item) == after.end())
            differences += std::string(kind) + " lost: " + shown(item) + "\n";
    for (const std::string& item : after)
        if (std::ranges::find(before, item) == before.end())
            differences += std::string(kind) + " new: " + shown(item) + "\n";
}

}  // namespace

RVRepositorySnapshot::RVRepositorySnapshot(const std::string& path) {
    const fs::path gitDirectory = gitLine(path, {"rev-parse", "--absolute-git-dir"});
    fs::path common = gitLine(path, {"rev-parse", "--git-common-dir"});
    if (common.is_relative())
        common = fs::path(path) / common;
    const bool isBare = gitLine(path, {"rev-parse", "--is-inside-work-tree"}) != "true";

    head = readTestFile(gitDirectory / "HEAD");
    for (const std::string& line :
         pieces(git(path, {"for-each-ref", "--format=%(refname) %(objectname)"}), '\n'))
        refs[line.substr(0, line.find(' '))] = line.substr(line.find(' ') + 1);
    readReflogs(common / "logs" / "refs", "refs/", reflogEnds);
    if (fs::exists(gitDirectory / "logs" / "HEAD"))
        reflogEnds["HEAD"] = endOfReflog(readTestFile(gitDirectory / "logs" / "HEAD"));
    if (!isBare) {
        index = pieces(git(path, {"ls-files", "--stage", "-v", "-z"}), '\0');
        readWorkingTree(path, workingTree);
    }
    for (const char* name : namesOfStateFiles)
        if (fs::symlink_status(gitDirectory / name).type() != fs::file_type::not_found)
            stateFiles.emplace_back(name);
    readLocks(gitDirectory, locks);
    if (!fs::equivalent(common, gitDirectory))
        readLocks(common, locks);
}

std::string RVRepositorySnapshot::differencesFrom(const RVRepositorySnapshot& before) const {
    std::string differences;
    compare("HEAD", before.head, head, differences);
    compare("ref", before.refs, refs, differences);
    compare("reflog's end", before.reflogEnds, reflogEnds, differences);
    compare("index entry", before.index, index, differences);
    compare("file", before.workingTree, workingTree, differences);
    compare("state file", before.stateFiles, stateFiles, differences);
    compare("lock", before.locks, locks, differences);
    return differences;
}
