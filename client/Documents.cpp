#include "client/Documents.h"

#include <vector>

#include "RVGit/base/RVString.h"
#include "client/Commands.h"
#include "client/Help.h"

namespace {

std::string roff(std::string_view text) {
    return stringByReplacingOccurrences(stringByReplacingOccurrences(text, "\\", "\\e"), "-",
                                        "\\-");
}

std::string namesOfCommands() {
    std::string names = "help";
    for (const Command& command : allCommands())
        names += " " + std::string(command.name);
    return names;
}

// The beginning of a description, without marks that a shell or its completions would read.
std::string summaryOf(const Command& command) {
    const std::string_view description = descriptionOf(command);
    return stringByReplacingOccurrences(description.substr(0, description.find_first_of(".,:;")),
                                        "'", "");
}

std::string joined(const std::vector<std::string>& words) {
    return stringByJoiningComponents(words, " ");
}

// Each script finds the command behind the options that may stand in front of it. Words that choose
// an action are offered directly behind the command, its options anywhere, and files.

std::string bashScript() {
    std::string script = R"(_rvgit() {
    local word=${COMP_WORDS[COMP_CWORD]} index=1 actions='' options=''
    COMPREPLY=()
    while [ "$index" -lt "$COMP_CWORD" ]; do
        case ${COMP_WORDS[index]} in
        -C) index=$((index + 2)) ;;
        -*) index=$((index + 1)) ;;
        *) break ;;
        esac
    done
    if [ "$index" -gt "$COMP_CWORD" ]; then
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
        return
    fi
    if [ "$index" -eq "$COMP_CWORD" ]; then
        options='-C --verbose --help --version )" +
                         namesOfCommands() + R"('
    else
        case ${COMP_WORDS[index]} in
        help) [ "$COMP_CWORD" -ne $((index + 1)) ] || options=')" +
                         namesOfCommands() + "' ;;\n";
    for (const Command& command : allCommands()) {
        script += "        " + std::string(command.name) + ")";
        if (const auto actions = joined(actionsOf(command)); !actions.empty())
            script += " actions='" + actions + "'";
        script += " options='" + joined(optionsOf(command)) + "' ;;\n";
    }
    return script + R"(        esac
        [ "$COMP_CWORD" -ne $((index + 1)) ] || options="$actions $options"
    fi
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    [ ${#COMPREPLY[@]} -gt 0 ] || mapfile -t COMPREPLY < <(compgen -f -- "$word")
}
complete -F _rvgit rvgit
)";
}

std::string zshScript() {
    std::string script = R"(#compdef rvgit
local index=2
local -a commands
commands=(
    'help:Tells how a command is called')";
    for (const Command& command : allCommands())
        script += "\n    '" + std::string(command.name) + ":" + summaryOf(command) + "'";
    script += R"(
)
while (( index < CURRENT )); do
    case $words[index] in
    -C) (( index += 2 )) ;;
    -*) (( index += 1 )) ;;
    *) break ;;
    esac
done
if (( index > CURRENT )); then
    _directories
elif (( index == CURRENT )); then
    _describe command commands
    compadd -- -C --verbose --help --version
    _directories
else
    case $words[index] in
    help) (( CURRENT == index + 1 )) && _describe command commands ;;
)";
    for (const Command& command : allCommands()) {
        script += "    " + std::string(command.name) + ")";
        if (const auto actions = joined(actionsOf(command)); !actions.empty())
            script += " (( CURRENT == index + 1 )) && compadd -- " + actions + ";";
        script += " compadd -- " + joined(optionsOf(command)) + " ;;\n";
    }
    return script + R"(    esac
    _files
fi
)";
}

std::string fishScript() {
    std::string script = R"(function __rvgit_command
    set -l words (commandline -opc)
    set -e words[1]
    while set -q words[1]
        switch $words[1]
            case -C
                set -e words[1]
            case '-*'
            case '*'
                echo $words[1]
                return 0
        end
        set -q words[1]; and set -e words[1]
    end
    return 1
end
function __rvgit_command_is
    set -l name (__rvgit_command)
    and test "$name" = $argv[1]
end
function __rvgit_no_command
    not __rvgit_command >/dev/null
end
complete -c rvgit -n __rvgit_no_command -s C -r -d 'the repository to work in'
complete -c rvgit -n __rvgit_no_command -l verbose -d 'all that is known of an error'
complete -c rvgit -n __rvgit_no_command -l help -d 'print the commands'
complete -c rvgit -n __rvgit_no_command -l version -d 'print the version'
complete -c rvgit -n __rvgit_no_command -a help -d 'Tells how a command is called'
)";
    script += "complete -c rvgit -n '__rvgit_command_is help' -a '" + namesOfCommands() + "'\n";
    for (const Command& command : allCommands()) {
        const std::string name(command.name);
        const std::string behind = "complete -c rvgit -n '__rvgit_command_is " + name + "' ";
        script += "complete -c rvgit -n __rvgit_no_command -a " + name + " -d '" +
                  summaryOf(command) + "'\n";
        if (const auto actions = joined(actionsOf(command)); !actions.empty())
            script += behind + "-a '" + actions + "'\n";
        for (const std::string& option : optionsOf(command))
            script += behind + "-l " + option.substr(2) + "\n";
    }
    return script;
}

}  // namespace

std::string manualPage(std::string_view version) {
    std::string page = ".TH RVGIT 1 \"\" \"rvgit " + std::string(version) +
                       "\"\n.SH NAME\nrvgit \\- a terminal client over the library RVGit\n"
                       ".SH SYNOPSIS\n.B rvgit\n[\\-\\-verbose] [\\-C PATH] "
                       "[PATH | COMMAND [ARGUMENTS]]\n.SH DESCRIPTION\n"
                       "Shows and changes git repositories by the operations of the library. "
                       "Without a command, an overview of the repository at PATH, or of the one "
                       "that the working directory lies in, is printed. Paths of files are "
                       "relative to the root of the repository. rvgit help COMMAND prints what "
                       "is said here of one command.\n.SH COMMANDS\n";
    for (const Command& command : allCommands())
        page += ".TP\n\\fB" + roff(command.name) + "\\fR" +
                roff(usageInOneLine(command).substr(command.name.size())) + "\n" +
                roff(descriptionOf(command)) + "\n";
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
