#include "client/Documents.h"

#include <algorithm>
#include <vector>

#include "RVGit/base/RVString.h"
#include "client/Commands.h"

namespace {

// A usage without the blanks that align it on a terminal.
std::string usageInOneLine(const Command& command) {
    std::string line;
    for (const std::string& word :
         componentsSeparatedByString(stringByReplacingOccurrences(command.usage, "\n", " "), " "))
        if (!word.empty())
            line += (line.empty() ? "" : " ") + word;
    return line;
}

std::string roff(std::string_view text) {
    return stringByReplacingOccurrences(stringByReplacingOccurrences(text, "\\", "\\e"), "-",
                                        "\\-");
}

// The options that a usage names, and those of git's options that all commands share.
std::vector<std::string> optionsOf(const Command& command) {
    std::vector<std::string> options;
    std::string word;
    const auto take = [&] {
        if (word.starts_with("--") && word.size() > 2 &&
            std::ranges::find(options, word) == options.end())
            options.push_back(word);
        word.clear();
    };
    for (const char character : command.usage) {
        const bool belongs = character == '-' || (character >= 'a' && character <= 'z');
        if (belongs)
            word += character;
        else
            take();
    }
    take();
    return options;
}

std::string joinedOptions(const Command& command) {
    return stringByJoiningComponents(optionsOf(command), " ");
}

std::string namesOfCommands() {
    std::string names;
    for (const Command& command : allCommands())
        names += (names.empty() ? "" : " ") + std::string(command.name);
    return names;
}

std::string bashScript() {
    std::string script =
        "_rvgit() {\n    local word=${COMP_WORDS[COMP_CWORD]} options=\n"
        "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n        options='" +
        namesOfCommands() + "'\n    else\n        case ${COMP_WORDS[1]} in\n";
    for (const Command& command : allCommands())
        script += "        " + std::string(command.name) + ") options='" + joinedOptions(command) +
                  "' ;;\n";
    return script +
           "        esac\n    fi\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n"
           "    [ ${#COMPREPLY[@]} -gt 0 ] || mapfile -t COMPREPLY < <(compgen -f -- "
           "\"$word\")\n}\ncomplete -F _rvgit rvgit\n";
}

std::string zshScript() {
    std::string script = "#compdef rvgit\nif (( CURRENT == 2 )); then\n    compadd -- " +
                         namesOfCommands() + "\nelse\n    case $words[2] in\n";
    for (const Command& command : allCommands())
        script +=
            "    " + std::string(command.name) + ") compadd -- " + joinedOptions(command) + " ;;\n";
    return script + "    esac\n    _files\nfi\n";
}

std::string fishScript() {
    std::string script;
    for (const Command& command : allCommands()) {
        script +=
            "complete -c rvgit -n __fish_use_subcommand -a " + std::string(command.name) + "\n";
        for (const std::string& option : optionsOf(command))
            script += "complete -c rvgit -n '__fish_seen_subcommand_from " +
                      std::string(command.name) + "' -l " + option.substr(2) + "\n";
    }
    return script;
}

}  // namespace

std::string manualPage(std::string_view version) {
    std::string page = ".TH RVGIT 1 \"\" \"rvgit " + std::string(version) +
                       "\"\n.SH NAME\nrvgit \\- a terminal client over the library RVGit\n"
                       ".SH SYNOPSIS\n.B rvgit\n[\\-C PATH] [\\-\\-verbose] [COMMAND [ARGS...]] | "
                       "PATH\n.SH DESCRIPTION\n"
                       "Shows and changes git repositories by the operations of the library. "
                       "Without a command, an overview of the repository at PATH, or of the one "
                       "that the working directory lies in, is printed. Paths of files are "
                       "relative to the root of the repository.\n.SH COMMANDS\n";
    for (const Command& command : allCommands())
        page += ".TP\n.B " + roff(command.name) + "\n" + roff(usageInOneLine(command)) + "\n";
    return page +
           ".SH OPTIONS\n.TP\n.B \\-C PATH\nthe repository to work in\n"
           ".TP\n.B \\-\\-verbose\nall that is known of an error\n"
           ".TP\n.B \\-\\-help, \\-\\-version\nprint the commands, or the version\n"
           ".SH EXIT STATUS\n0 after a success, 1 after a failure, 2 where the command "
           "line is wrong, 130 after Ctrl\\-C.\n.SH SEE ALSO\n.BR git (1)\n";
}

std::optional<std::string> completionScript(std::string_view shell) {
    if (shell == "bash")
        return bashScript();
    if (shell == "zsh")
        return zshScript();
    if (shell == "fish")
        return fishScript();
    return std::nullopt;
}
