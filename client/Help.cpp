#include "client/Help.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVString.h"
#include "client/Commands.h"

namespace {

// What stands behind a usage, parted by blanks, says in a few words what the command does.
constexpr std::string_view remarkGap = "     ";

// The usage as it is written, but for such a remark.
std::string usageWithoutRemark(const Command& command) {
    std::string usage;
    for (const std::string& line : componentsSeparatedByString(command.usage, "\n")) {
        const auto begin = line.find_first_not_of(' ');
        const auto gap = line.find(remarkGap, begin == std::string::npos ? 0 : begin);
        usage += (usage.empty() ? "" : "\n") + line.substr(0, gap);
    }
    return usage;
}

// Words of small letters and dashes, in order.
std::vector<std::string> wordsOf(const Command& command) {
    std::vector<std::string> words;
    std::string word;
    for (const char character : usageWithoutRemark(command) + " ") {
        if (character == '-' || (character >= 'a' && character <= 'z'))
            word += character;
        else if (!word.empty())
            words.push_back(std::exchange(word, ""));
    }
    return words;
}

void addOnce(std::vector<std::string>& list, const std::string& word) {
    if (std::ranges::find(list, word) == list.end())
        list.push_back(word);
}

constexpr std::pair<std::string_view, std::string_view> descriptions[] = {
    {"overview",
     "Tells where the repository lies and of what kind it is, what HEAD names and how far that is "
     "from what it tracks, what is under way, how many refs there are, and the ten newest "
     "commits."},
    {"log",
     "Lists commits, the newest first, with their graph: those of HEAD, of the revisions, or with "
     "--all of every ref. Patterns and paths choose among them, without a graph. A DATE is such as "
     "2024-01-31 or 2024-01-31T12:00:00+01:00."},
    {"show",
     "Shows what a commit has changed: its files with their counts, and the lines. Of a merge, "
     "what "
     "it brought to its first parent."},
    {"diff",
     "Shows changed lines: those that are not staged, or with --staged those that are; against a "
     "revision, or of two revisions the changes from the first to the second."},
    {"tags",
     "Lists the tags by name, each with its commit, date and the first line of its message."},
    {"blame",
     "Shows each line of a file, at HEAD or another revision, with the commit it is from."},
    {"reflog", "Lists where HEAD, or another ref, has been, the newest first."},
    {"shortlog",
     "Counts commits by author, or with --committers by committer; --limit looks at so many "
     "commits only."},
    {"status",
     "Lists the files that have changed, with git's two letters: the first for what is staged, the "
     "second for what is not. With --ignored, ignored files too."},
    {"add",
     "Stages files, removed ones as removals; --force ignored ones too, --intent-to-add the names "
     "alone."},
    {"unstage", "Takes files out of what is staged. The files themselves stay as they are."},
    {"discard",
     "Sets files and what is staged of them back to what HEAD holds. Their changes are lost."},
    {"lines",
     "Shows the changed lines of a file with the numbers by which the next three commands know "
     "them."},
    {"add-lines", "Stages single lines of a file: all of a chunk, or some, as in 1 or 2:3,5-7."},
    {"unstage-lines",
     "Takes single lines out of what is staged; their numbers are those of lines --staged."},
    {"discard-lines", "Takes single lines that are not staged back out of a file. They are lost."},
    {"commit",
     "Commits what is staged. --amend replaces the last commit, --no-verify runs no hook that "
     "could "
     "refuse."},
    {"stash",
     "Lists what was put aside, puts changes aside, puts them back (pop deletes the stash then), "
     "or "
     "deletes one. Stashes are numbered from 0, the newest."},
    {"merge",
     "Merges a revision into HEAD. At conflicts it stops: resolve them, then continue, or abort."},
    {"rebase",
     "Moves the commits of the branch onto another revision. At conflicts it stops: resolve them, "
     "then continue, skip or abort. With --onto, the commits of REV that BASE has not go onto "
     "TARGET."},
    {"cherry-pick",
     "Makes commits anew on top of HEAD; of a merge, against its parent of that number."},
    {"revert", "Commits the reverse of commits; of a merge, against its parent of that number."},
    {"resolve",
     "Ends the conflict of files: --add takes them as they are, --remove removes them. --ours, "
     "--theirs and --base write one side into the file, --markers both with the marks, and leave "
     "the conflict open."},
    {"continue", "Goes on with what has stopped; without -m, with the message that git proposes."},
    {"skip", "Goes on without the step that has stopped."},
    {"abort", "Gives up what is under way: branch, index and files are again what they were."},
    {"quit",
     "Forgets the steps that are left of a cherry-pick or revert. HEAD and files stay as they "
     "are."},
    {"move", "Moves commits of HEAD's history to right above or below another one."},
    {"drop", "Takes commits out of HEAD's history."},
    {"squash",
     "Makes one commit of several, with all messages: of those named, or with --into in another."},
    {"fixup", "The same, with the message of the commit that the others go into."},
    {"reword", "Gives a commit of HEAD's history another message."},
    {"edit",
     "Stops a rebase at a commit, whose changes then lie in the working tree, or with --amend to "
     "change the commit itself. Then: add, commit, continue."},
    {"can-merge",
     "Tells whether a merge into HEAD, or into another revision, would go through, and where it "
     "would conflict. Nothing is changed."},
    {"mergetool", "Resolves conflicts in another program, that of merge.tool unless one is named."},
    {"difftool",
     "Shows changes in another program, that of diff.tool unless one is named; --dir-diff all "
     "files "
     "at once."},
    {"branch",
     "Lists branches with what they track, makes, renames and deletes them, and sets what one "
     "tracks. --force renames over another branch, or deletes one that is not merged."},
    {"remote", "Lists remotes with their addresses, adds, renames and removes them."},
    {"submodule",
     "Lists submodules with what is wrong with each, adds, updates, moves, renames and removes "
     "them. A removal asks first whether work would be lost, unless it is forced; --keep leaves "
     "the "
     "files, --git-directory removes the clone too."},
    {"ignore",
     "Adds patterns to .gitignore, or with --local to info/exclude, which is not shared."},
    {"clone", "Clones a repository, with progress. An interrupted clone leaves nothing behind."},
    {"fetch", "Fetches from a remote, that of the branch or else origin, and lists changed refs."},
    {"pull", "Fetches, and merges or rebases."},
    {"push",
     "Pushes to a remote and lists changed refs. --force-with-lease replaces the remote's branch "
     "only where it still is what was fetched last; --delete deletes there what is named."},
    {"ls-remote", "Lists the refs of an address."},
    {"credential",
     "Asks git's helpers for the password of an http address, tells them of one that was right, or "
     "of one that was refused. approve reads a name and a password from standard input, each on a "
     "line."},
    {"archive", "Packs a revision, or some paths of it, into a zip, tar or tgz file."},
    {"lfs",
     "Sets Git LFS up, tracks patterns, lists files, transfers and cleans up. pointer prints what "
     "stands in git for a file, smudge what a pointer stands for."},
    {"svn",
     "Clones a Subversion repository, fetches, rebases, commits to it (dcommit), and makes "
     "branches "
     "and tags in it. A clone that was interrupted is completed by fetch."},
};

}  // namespace

std::string_view descriptionOf(const Command& command) {
    for (const auto& [name, description] : descriptions)
        if (name == command.name)
            return description;
    return {};
}

std::string usageInOneLine(const Command& command) {
    std::string line;
    for (const std::string& word : componentsSeparatedByString(
             stringByReplacingOccurrences(usageWithoutRemark(command), "\n", " "), " "))
        if (!word.empty())
            line += (line.empty() ? "" : " ") + word;
    return line;
}

std::vector<std::string> optionsOf(const Command& command) {
    std::vector<std::string> options;
    for (const std::string& word : wordsOf(command))
        if (word.starts_with("--") && word.size() > 2)
            addOnce(options, word);
    return options;
}

std::vector<std::string> actionsOf(const Command& command) {
    std::vector<std::string> actions;
    for (const std::string& word : wordsOf(command))
        if (!word.starts_with('-') && word != command.name)
            addOnce(actions, word);
    return actions;
}

std::string helpText(const Command& command) {
    std::string text = "usage: rvgit " + usageWithoutRemark(command) + "\n";
    const std::string_view description = descriptionOf(command);
    if (description.empty())
        return text;
    // Filled up to the width of a terminal.
    constexpr std::size_t width = 80;
    text += "\n";
    std::size_t column = 0;
    for (const std::string& word : componentsSeparatedByString(description, " ")) {
        if (column > 0 && column + 1 + word.size() > width) {
            text += "\n";
            column = 0;
        }
        text += (column > 0 ? " " : "") + word;
        column += (column > 0 ? 1 : 0) + word.size();
    }
    return text + "\n";
}
