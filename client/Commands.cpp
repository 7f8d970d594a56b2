#include "client/Commands.h"

#include <charconv>
#include <system_error>

#include "RVGit/command/RVGitCommandEnvironment.h"
#include "RVGit/command/RVGitError.h"

Failure::Failure(const std::optional<RVError>& failure)
    : error(failure.value_or(
          RVError(RVGitErrorDomain, RVGitRVGitGenericError,
                  {{RVLocalizedDescriptionErrorKey, "Nothing Found"},
                   {RVLocalizedFailureReasonErrorKey,
                    "What was asked for is not there, and git gave no reason."}}))) {}

std::optional<std::string> Arguments::next() {
    if (position_ == words_.size())
        return std::nullopt;
    return words_[position_++];
}

std::string Arguments::valueOf(std::string_view option) {
    if (auto value = next())
        return *value;
    throw UsageError(std::string(option) + " needs a value");
}

std::size_t Arguments::numberOf(std::string_view option) {
    return numberFrom(valueOf(option), option);
}

std::size_t Arguments::numberOr(std::size_t otherwise, std::string_view option) {
    const auto value = next();
    return value ? numberFrom(*value, option) : otherwise;
}

std::size_t Arguments::numberFrom(const std::string& value, std::string_view option) {
    std::size_t number = 0;
    const char* end = value.data() + value.size();
    // A number that is too large is no other number, least of all 0.
    const auto [rest, problem] = std::from_chars(value.data(), end, number);
    if (problem != std::errc() || rest != end)
        throw UsageError(std::string(option) + " needs a number");
    return number;
}

std::vector<std::string> Arguments::rest() {
    std::vector<std::string> words(words_.begin() + static_cast<std::ptrdiff_t>(position_),
                                   words_.end());
    position_ = words_.size();
    return words;
}

std::optional<std::string> Arguments::nextOperand(const std::string& command) {
    auto word = next();
    if (word == "--" && !optionsHaveEnded_) {
        optionsHaveEnded_ = true;
        word = next();
    }
    if (word && word->starts_with('-') && !optionsHaveEnded_)
        throw UsageError(command + " has no option " + *word);
    return word;
}

std::string Arguments::operandOf(const std::string& command) {
    if (auto operand = nextOperand(command))
        return *operand;
    throw UsageError(command + " needs a value");
}

std::vector<std::string> Arguments::operands(const std::string& command) {
    std::vector<std::string> operands;
    while (auto operand = nextOperand(command))
        operands.push_back(*std::move(operand));
    return operands;
}

void takePathsLiterally() {
    RVGitCommandEnvironment::sharedEnvironment().setValueForEnvironmentVariable(
        "1", "GIT_LITERAL_PATHSPECS");
}

const std::vector<Command>& allCommands() {
    static const std::vector<Command> commands = {
        {"overview", "overview", runOverview},
        {"log",
         "log [--limit N] [--offset N] [--all] [--first-parent] [--signatures] [--author TEXT]\n"
         "      [--message TEXT] [--content TEXT] [--since DATE] [--until DATE] [REV...] "
         "[-- PATH...]",
         runLog},
        {"show", "show REV", runShow},
        {"diff", "diff [--staged] [REV [REV]] [-- PATH...]", runDiff},
        {"tags", "tags", runTags},
        {"blame", "blame FILE [REV]", runBlame},
        {"reflog", "reflog [--limit N] [REF]", runReflog},
        {"shortlog", "shortlog [--limit N] [--committers] [REV]", runShortlog},
        {"status", "status [--ignored]", runStatus},
        {"add", "add --all | [--force] [--intent-to-add] PATH...", runAdd},
        {"unstage", "unstage --all | PATH...", runUnstage},
        {"discard", "discard PATH...     back to what HEAD holds", runDiscard},
        {"lines", "lines [--staged] PATH     changed lines with their numbers", runLines},
        {"add-lines", "add-lines PATH CHUNK[:LINE,FIRST-LAST]...", runAddLines},
        {"unstage-lines", "unstage-lines PATH CHUNK[:LINE,FIRST-LAST]...", runUnstageLines},
        {"discard-lines", "discard-lines PATH CHUNK[:LINE,FIRST-LAST]...", runDiscardLines},
        {"commit", "commit -m MESSAGE [--amend] [--signoff] [--allow-empty] [--no-verify]",
         runCommit},
        {"stash",
         "stash [list | save [-m MESSAGE] [--keep-index] [--include-untracked]\n"
         "        | apply [N] | pop [N] | drop [N]]",
         runStash},
        {"merge",
         "merge [--no-commit] [--no-ff] [--squash] [--verify-signatures] [--no-verify] REV",
         runMerge},
        {"rebase",
         "rebase [--keep-empty] [--rebase-merges] [--autosquash] [--no-verify]\n"
         "         [--onto TARGET [BASE]] REV",
         runRebase},
        {"cherry-pick", "cherry-pick [--no-commit] [--ff] [-m PARENT] REV...", runCherryPick},
        {"revert", "revert [--no-commit] [-m PARENT] REV...", runRevert},
        {"resolve", "resolve (--add | --remove | --ours | --theirs | --base | --markers) PATH...",
         runResolve},
        {"continue", "continue [-m MESSAGE] [--empty]     --empty: commits a step without changes",
         runContinue},
        {"skip", "skip      goes on without the step that has stopped", runSkip},
        {"abort", "abort     back to where it began", runAbort},
        {"quit", "quit      forgets what is left of a cherry-pick or revert", runQuit},
        {"move", "move REV... (--above | --below) REV", runMove},
        {"drop", "drop REV...", runDrop},
        {"squash", "squash REV... [--into REV]     keeps all messages; into the oldest of several",
         runSquash},
        {"fixup", "fixup REV... [--into REV]      keeps one message", runFixup},
        {"reword", "reword REV -m MESSAGE", runReword},
        {"edit", "edit [--amend] REV     stops there, with the commit taken apart or to amend",
         runEdit},
        {"can-merge", "can-merge REV [INTO]     lists the files that would conflict", runCanMerge},
        {"mergetool", "mergetool [--tool NAME] [--keep-backup] PATH...", runMergeTool},
        {"difftool", "difftool [--tool NAME] [--dir-diff] [--staged] [REV...] [-- PATH...]",
         runDiffTool},
        {"branch",
         "branch [list | create NAME [REV] | rename [--force] NAME NEW | delete [--force] NAME...\n"
         "        | track NAME UPSTREAM | untrack NAME]",
         runBranch},
        {"remote",
         "remote [list | add NAME URL | rename NAME NEW | remove NAME | set-url [--push] NAME URL]",
         runRemote},
        {"submodule",
         "submodule [list | add [--force] URL PATH | init [PATH...]\n"
         "           | update [--init] [--recursive] [--force] [PATH...] | sync [PATH]\n"
         "           | remove [--force] [--keep] [--git-directory] PATH\n"
         "           | move PATH NEW-PATH | rename NAME NEW-NAME]",
         runSubmodule},
        {"ignore", "ignore [--local] [PATTERN...]     without one, lists them", runIgnore},
        {"clone",
         "clone [--bare] [--recursive] [--depth N] [--filter FILTER] [--single-branch] URL [PATH]",
         runClone, false},
        {"fetch",
         "fetch [--prune] [--tags] [--recurse-submodules] [--depth N | --unshallow]\n"
         "        [REMOTE [REFSPEC]]",
         runFetch},
        {"pull", "pull [--rebase | --no-rebase] [--no-verify] [REMOTE [REFSPEC]]", runPull},
        {"push",
         "push [--force | --force-with-lease | --delete] [--tags] [--no-verify] [REMOTE "
         "[REFSPEC...]]",
         runPush},
        {"ls-remote", "ls-remote [--heads] [--tags] URL", runLsRemote, false},
        {"credential",
         "credential fill | approve | reject URL     approve reads a name and a password, each "
         "on a line",
         runCredential, false},
        {"archive", "archive REV FILE [PATH...]     the extension of FILE says which format",
         runArchive},
        {"lfs",
         "lfs install [--local | --system] | track [PATTERN...] | untrack PATTERN...\n"
         "        | ls-files [REV] | fetch | pull [REMOTE] | push [REMOTE [REF...]] | checkout | "
         "prune\n"
         "        | pointer FILE | smudge FILE     what the pointer in FILE stands for",
         runLFS},
        {"svn",
         "svn clone [--stdlayout] [--trunk DIR]... [--branches DIR]... [--tags DIR]... URL [PATH]\n"
         "        | fetch [REMOTE] | rebase | dcommit [REV]\n"
         "        | branch | tag [-m MESSAGE] [--destination DIR] [--parents] NAME [REV]",
         runSVN, false},
    };
    return commands;
}
