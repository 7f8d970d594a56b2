#include "client/Commands.h"

#include <charconv>

#include "RVGit/command/RVGitCommandEnvironment.h"

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
    if (std::from_chars(value.data(), end, number).ptr != end || value.empty())
        throw UsageError(std::string(option) + " needs a number");
    return number;
}

std::vector<std::string> Arguments::rest() {
    std::vector<std::string> words(words_.begin() + static_cast<std::ptrdiff_t>(position_),
                                   words_.end());
    position_ = words_.size();
    return words;
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
        {"commit", "commit -m MESSAGE [--amend] [--signoff] [--allow-empty] [--no-verify]",
         runCommit},
        {"stash",
         "stash [list | save [-m MESSAGE] [--keep-index] [--include-untracked]\n"
         "        | apply [N] | pop [N] | drop [N]]",
         runStash},
        {"submodule",
         "submodule [list | add [--force] URL PATH | init [PATH...]\n"
         "           | update [--init] [--recursive] [--force] [PATH...] | sync [PATH]\n"
         "           | remove [--force] [--keep] [--git-directory] PATH\n"
         "           | move PATH NEW-PATH | rename NAME NEW-NAME]",
         runSubmodule},
        {"ignore", "ignore [--local] [PATTERN...]     without one, lists them", runIgnore},
    };
    return commands;
}
