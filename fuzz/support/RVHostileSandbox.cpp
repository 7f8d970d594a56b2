#include "fuzz/support/RVHostileSandbox.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVFileManager.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVTestProcess.h"

namespace fs = std::filesystem;

namespace {

using Arguments = std::vector<std::string>;

void fail(const char* why, const std::string& what, const Arguments& arguments = {}) {
    std::fprintf(stderr, "%s: %s\n", why, what.c_str());
    for (const std::string& argument : arguments)
        std::fprintf(stderr, "    [%s]\n", argument.c_str());
    std::abort();
}

void writeFile(const std::string& path, std::string_view bytes) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string readFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeProgram(const std::string& path, const std::string& script) {
    writeFile(path, "#!/bin/sh\n" + script);
    fs::permissions(path, fs::perms::owner_all);
}

/// Options that the library gives by itself, without a value attached.
const std::set<std::string_view> knownOptions = {
    "--abort",
    "--add",
    "--all",
    "--allow-empty",
    "--amend",
    "--assume-unchanged",
    "--autosquash",
    "--bare",
    "--binary",
    "--bool",
    "--branches",
    "--cached",
    "--check",
    "--continue",
    "--count",
    "--date-order",
    "--delete",
    "--dir-diff",
    "--exclude-standard",
    "--ff",
    "--first-parent",
    "--follow",
    "--force",
    "--full-index",
    "--get",
    "--get-all",
    "--get-regexp",
    "--git-dir",
    "--global",
    "--hard",
    "--head",
    "--heads",
    "--ignore-errors",
    "--ignore-missing",
    "--ignore-unmatch",
    "--include-untracked",
    "--includes",
    "--index",
    "--init",
    "--int",
    "--interactive",
    "--is-ancestor",
    "--is-bare-repository",
    "--is-inside-work-tree",
    "--keep",
    "--keep-empty",
    "--keep-index",
    "--list",
    "--local",
    "--mainline",
    "--merge",
    "--name-only",
    "--no-abbrev",
    "--no-assume-unchanged",
    "--no-color",
    "--no-commit",
    "--no-ext-diff",
    "--no-ff",
    "--no-messages",
    "--no-prefix",
    "--no-prompt",
    "--no-rebase",
    "--no-renames",
    "--no-single-branch",
    "--no-symlinks",
    "--no-track",
    "--no-verify",
    "--no-verify-remote",
    "--not",
    "--numbered",
    "--numstat",
    "--onto",
    "--others",
    "--parents",
    "--porcelain",
    "--progress",
    "--prune",
    "--quit",
    "--raw",
    "--rebase",
    "--rebase-merges",
    "--recent",
    "--recount",
    "--recurse-submodules",
    "--recursive",
    "--remotes",
    "--remove-section",
    "--rename-section",
    "--replace-all",
    "--reverse",
    "--root",
    "--show-object-format",
    "--show-toplevel",
    "--signoff",
    "--single-branch",
    "--skip",
    "--soft",
    "--squash",
    "--stage",
    "--staged",
    "--stdin",
    "--stdlayout",
    "--system",
    "--tags",
    "--topo-order",
    "--track",
    "--unidiff-zero",
    "--unset",
    "--unset-all",
    "--unset-upstream",
    "--unshallow",
    "--use-mailmap",
    "--verbose",
    "--verify",
    "--verify-remote",
    "--verify-signatures",
    "--version",
    "--worktree-attributes",
    "--write-tree",
    "--ours",
    "--theirs",
    "-C",
    "-D",
    "-E",
    "-F-",
    "-M",
    "-a",
    "-c",
    "-d",
    "-e",
    "-f",
    "-i",
    "-k",
    "-l",
    "-m",
    "-n",
    "-o",
    "-p",
    "-q",
    "-r",
    "-s",
    "-u",
    "-v",
    "-w",
    "-z",
};

/// Options with a value attached, which may be anything.
constexpr std::string_view attachedOptions[] = {
    "--abbrev=",
    "--author=",
    "--branches=",
    "--committer=",
    "--date=",
    "--decorate=",
    "--depth=",
    "--destination=",
    "--diff-filter=",
    "--dst-prefix=",
    "--encoding=",
    "--exclude=",
    "--file=",
    "--filter=",
    "--force-with-lease=",
    "--format=",
    "--glob=",
    "--grep=",
    "--ignore-submodules=",
    "--ignored=",
    "--max-count=",
    "--prefix=",
    "--pretty=",
    "--remotes=",
    "--shared=",
    "--since=",
    "--skip=",
    "--src-prefix=",
    "--start-number=",
    "--submodule=",
    "--tags=",
    "--tool=",
    "--trunk=",
    "--until=",
    "--untracked-files=",
    "--username=",
    "--word-diff=",
    "-G",
    "-S",
    "-U",
};

/// Commands for which the end of a range, too, could be one of their options.
const std::set<std::string_view> takesRanges = {"blame", "diff",       "format-patch", "log",
                                                "show",  "merge-base", "rev-list",     "shortlog"};

/// Whether the option in front takes the next argument for its value, whatever that begins with.
bool takesValue(const std::string& command, const std::string& subCommand,
                const std::string& option) {
    if (command == "stash" || command == "svn")
        return option == "-m";
    if (command == "archive" || command == "format-patch")
        return option == "-o";
    return command == "tag" && option == "-u" && subCommand != "-d";
}

bool isKnownOption(const std::string& argument) {
    const auto isAttached = [&](std::string_view option) { return argument.starts_with(option); };
    // "-5", "-n1", "-U3".
    const std::size_t start =
        argument.size() > 2 && std::string_view("CMUn").find(argument[1]) != std::string::npos ? 2
                                                                                               : 1;
    const bool isNumber = argument.size() > start &&
                          argument.find_first_not_of("0123456789", start) == std::string::npos;
    return isNumber || knownOptions.contains(argument) ||
           std::ranges::any_of(attachedOptions, isAttached);
}

void describe(const fs::path& path, std::map<std::string, std::string>& entries) {
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0)
        return;
    // Reading changes none of these.
    entries[path.string()] = std::to_string(status.st_mode) + ' ' + std::to_string(status.st_ino) +
                             ' ' + std::to_string(status.st_size) + ' ' +
                             std::to_string(status.st_mtim.tv_sec) + '.' +
                             std::to_string(status.st_mtim.tv_nsec);
}

}  // namespace

RVHostileSandbox::RVHostileSandbox(const Fill& fill) {
    const auto directory = RVFileManager::createTemporaryDirectory();
    if (!directory)
        fail("No temporary directory", "");
    base_ = *directory;
    root_ = base_ + "/a/b/c/d/e/f";
    for (const char* name : {"/place/out", "/tmp", "/calls", "/home", "/canary/.git", "/bin"})
        fs::create_directories(root_ + name);
    for (const char* name : {"/canary/HEAD", "/canary/config", "/canary/file", "/home/.profile",
                             "/config", "/place/config"})
        writeFile(root_ + name, "canary\n");
    writeFile(root_ + "/home/.gitconfig",
              "[user]\n\tname = Marie Curie\n\temail = marie@example.org\n[init]\n"
              "\tdefaultBranch = main\n[gc]\n\tauto = 0\n[maintenance]\n\tauto = false\n"
              "[protocol \"file\"]\n\tallow = always\n");
    for (const char* name : {"/bin/pwned", "/bin/pwnedZq7"})
        writeProgram(root_ + name, ": >'" + root_ + "/canary/PWNED'\n");

    const auto variable = [](const char* name, const std::string& value) {
        ::setenv(name, value.c_str(), 1);
    };
    realGit_ = findTestProgram("git");
    variable("HOME", root_ + "/home");
    variable("TMPDIR", root_ + "/tmp");
    variable("PATH", root_ + "/bin:/usr/bin:/bin");
    for (const char* name : {"EDITOR", "VISUAL", "PAGER", "GIT_SSH"})
        variable(name, root_ + "/bin/pwned");
    variable("GIT_CONFIG_NOSYSTEM", "1");
    variable("GIT_TERMINAL_PROMPT", "0");
    variable("GIT_ASKPASS", "/bin/true");
    variable("GIT_ALLOW_PROTOCOL", "file");

    writeProgram(root_ + "/bin/git", "[ \"$2\" != --version ] || exec '" + realGit_ +
                                         "' --version\n"
                                         "printf '%s\\0' \"$GIT_EDITOR\" \"$GIT_SEQUENCE_EDITOR\" "
                                         "\"$@\" >'" +
                                         root_ + "/calls/'$$\n[ ! -e '" + root_ +
                                         "/calls/real' ] || exec '" + realGit_ + "' \"$@\"\n");

    const std::string tree = root_ + "/template/tree";
    const std::string remote = root_ + "/template/remote.git";
    fs::create_directories(tree);
    git({"init", "--quiet", "--template=", "."}, tree);
    git({"init", "--quiet", "--bare", "--template=", remote}, tree);
    for (const char* text : {"one\n", "one\ntwo\n", "one\ntwo\nthree\n"}) {
        writeFile(tree + "/file", text);
        git({"add", "file"}, tree);
        git({"commit", "--quiet", "-m", text}, tree);
    }
    git({"branch", "other", "HEAD~1"}, tree);
    git({"remote", "add", "origin", "../remote.git"}, tree);
    git({"push", "--quiet", "origin", "main", "other"}, tree);
    // As a stranger's repository may have them.
    for (const char* name : {"refs/heads/-d", "refs/heads/+main", "refs/tags/--output=pwned",
                             "refs/tags/--upload-pack=pwned", "refs/remotes/origin/-f"})
        git({"update-ref", name, "HEAD"}, tree);
    for (const char* revision : {"HEAD", "HEAD~1", "HEAD~2"})
        hashes_.push_back(git({"rev-parse", revision}, tree));
    fill(*this, tree);

    makeFreshCopy();
    RVGitBinary::setDefaultGitBinary(RVGitBinary::gitBinaryWithPath(root_ + "/bin/git"));
    repository_ = RVGitRepository::repositoryWithWorkingTreeDirectoryPath(this->tree(),
                                                                          this->tree() + "/.git");
}

RVHostileSandbox::~RVHostileSandbox() {
    std::error_code ignored;
    fs::remove_all(base_, ignored);
}

std::string RVHostileSandbox::git(const Arguments& arguments, const std::string& directory,
                                  const std::optional<std::string>& standardInput) const {
    Arguments commandLine = {realGit_, "-c", "core.editor=:"};
    commandLine.insert(commandLine.end(), arguments.begin(), arguments.end());
    std::string output = runTestProcess(commandLine, directory, standardInput).standardOutput;
    if (output.ends_with('\n'))
        output.pop_back();
    return output;
}

void RVHostileSandbox::write(std::string_view pathInTree, std::string_view bytes) const {
    const fs::path path(pathInTree);
    if (path.empty() || path.is_absolute() || pathInTree.find('\0') != std::string_view::npos ||
        std::ranges::any_of(path, [](const fs::path& part) { return part == ".."; }))
        return;
    std::error_code error;
    const fs::path target = fs::path(tree()) / path;
    fs::create_directories(target.parent_path(), error);
    if (!error && !fs::is_directory(target, error))
        std::ofstream(target, std::ios::binary) << bytes;
}

void RVHostileSandbox::makeConflict(const std::string& path) const {
    if (!real_ || path.find('\0') != std::string::npos)
        return;
    std::string entries;
    for (const char* stage : {"1", "2", "3"})
        entries += "100644 " + git({"rev-parse", "HEAD:file"}) + ' ' + stage + '\t' + path + '\0';
    (void)git({"update-index", "-z", "--index-info"}, tree(), entries);
}

std::string RVHostileSandbox::component(std::string text) {
    std::ranges::replace(text, '/', '_');
    return text;
}

void RVHostileSandbox::makeFreshCopy() const {
    std::error_code ignored;
    for (const char* name : {"/place", "/tmp", "/calls"})
        fs::remove_all(root_ + name, ignored);
    for (const char* name : {"/place/out", "/tmp", "/calls"})
        fs::create_directories(root_ + name);
    writeFile(root_ + "/place/config", "canary\n");
    for (const char* name : {"/tree", "/remote.git"})
        fs::copy(root_ + "/template" + name, root_ + "/place" + name,
                 fs::copy_options::recursive | fs::copy_options::copy_symlinks);
}

RVHostileSandbox::Snapshot RVHostileSandbox::snapshot(unsigned flags) const {
    const std::set<std::string> open = {
        root_ + "/place/tree", root_ + "/tmp", root_ + "/calls",
        flags & Pushes ? root_ + "/place/remote.git" : std::string(),
        flags & Makes ? root_ + "/place/out" : std::string()};
    Snapshot entries;
    for (fs::recursive_directory_iterator entry(base_), end; entry != end; ++entry) {
        if (open.contains(entry->path().string()))
            entry.disable_recursion_pending();
        else
            describe(entry->path(), entries);
    }
    return entries;
}

void RVHostileSandbox::checkCall(const Arguments& arguments, const Texts& texts) const {
    // The two editors stand in front.
    for (std::size_t index = 0; index < 2; ++index)
        if (arguments[index].find(mark) != std::string::npos)
            fail("Data is part of a shell's command", arguments[index], arguments);
    std::size_t word = 2;
    while (word < arguments.size() && arguments[word].starts_with('-'))
        word += arguments[word] == "-c" ? 2 : 1;
    if (word >= arguments.size())
        fail("No command", "", arguments);
    const std::string& command = arguments[word];
    const std::string subCommand = word + 1 < arguments.size() ? arguments[word + 1] : "";
    std::size_t positionals = 0;
    for (std::size_t index = word + 1; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (argument == "--")
            return;
        if (takesValue(command, subCommand, arguments[index - 1]))
            continue;
        for (const std::string& text : texts)
            if (takesRanges.contains(command) && text.starts_with('-') &&
                (argument.ends_with(".." + text) || argument.starts_with("^" + text)))
                fail("The end of a range is an option", argument, arguments);
        if (!argument.starts_with('-')) {
            ++positionals;
            continue;
        }
        // Behind a key, and behind the word that asks for a stash to be made, git looks for no
        // options.
        if ((command == "config" && positionals > 0) ||
            (command == "stash" && subCommand == "create" && positionals > 0))
            continue;
        if (std::ranges::find(texts, argument) != texts.end())
            fail("Data is an option", argument, arguments);
        if (!isKnownOption(argument))
            fail("An option that the library does not know", argument, arguments);
    }
}

void RVHostileSandbox::checkCalls(const Texts& texts) const {
    for (const auto& entry : fs::directory_iterator(root_ + "/calls")) {
        if (entry.path().filename() == "real")
            continue;
        const std::string bytes = readFile(entry.path());
        Arguments arguments;
        for (std::size_t begin = 0, end; (end = bytes.find('\0', begin)) != std::string::npos;
             begin = end + 1)
            arguments.push_back(bytes.substr(begin, end - begin));
        if (arguments.size() > 2)
            checkCall(arguments, texts);
    }
}

void RVHostileSandbox::runOne(const std::vector<Operation>& operations, const std::uint8_t* data,
                              std::size_t size) {
    if (size < 2)
        return;
    const Operation& operation = operations[data[0] % operations.size()];
    const std::string input(reinterpret_cast<const char*>(data + 2), size - 2);
    const std::size_t newline = input.find('\n');
    const Texts texts = {
        input.substr(0, newline) + std::string(mark),
        (newline == std::string::npos ? input : input.substr(newline + 1)) + std::string(mark)};

    makeFreshCopy();
    real_ = (operation.flags & RealOnly) != 0 ||
            ((operation.flags & IdleOnly) == 0 && (data[1] & 1) != 0);
    if (real_)
        writeFile(root_ + "/calls/real", "");
    const Snapshot before = snapshot(operation.flags);
    try {
        operation.run(*this, texts[0], texts[1]);
    } catch (const RVInvalidParameterException&) {
        // A precondition that the text breaks, and says so.
    } catch (const RVInternalInconsistencyException&) {
    }
    const Snapshot after = snapshot(operation.flags);
    for (const auto& [path, description] : before)
        if (const auto found = after.find(path); found == after.end())
            fail("Something outside the repository was removed", path);
        else if (found->second != description)
            fail("Something outside the repository was changed", path);
    for (const auto& [path, description] : after)
        if (!before.contains(path))
            fail("Something outside the repository was made", path);
    checkCalls(texts);
}
