#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>

#include "RVGit/base/RVErrorManager.h"
#include "RVGit/base/RVFileManager.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitBinary.h"
#include "RVGit/command/RVGitCommandQueue.h"
#include "RVGit/command/RVGitConfiguration.h"
#include "RVGit/command/RVGitEnglishTexts.h"
#include "RVGit/repository/RVGitRepository.h"
#include "client/Commands.h"
#include "client/Documents.h"
#include "client/Help.h"

namespace {

constexpr int exitInterrupted = 130;
std::atomic<bool> interrupted = false;
std::mutex interruptMutex;
std::function<void()> interruptAction;

void printUsage(std::FILE* stream) {
    std::fputs(
        "usage: rvgit [--verbose] [-C PATH] [PATH | COMMAND [ARGUMENTS]]\n\n"
        "Without a command, an overview of the repository at PATH (or here) is printed.\n"
        "Paths of files are relative to the root of the repository, as status prints them.\n\n",
        stream);
    for (const Command& command : allCommands())
        std::fprintf(stream, "  %s\n", std::string(command.usage).c_str());
    std::fputs("\n  help COMMAND     tells more of one; so does COMMAND --help\n", stream);
}

// Waits for Ctrl-C on a thread of its own and ends what git is doing. The main thread then comes
// back from the library and ends, so that nothing is left behind.
void cancelCommandsWhenInterrupted() {
    static sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    // Of a terminal that goes away, which git, in a session of its own, does not hear; but not
    // where somebody wants it to go on.
    struct sigaction hangUp;
    if (sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN)
        sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([] {
        int signal = 0;
        sigwait(&signals, &signal);
        interrupted = true;
        while (true) {
            RVGitCommandQueue::sharedQueue().cancelAllCommands();
            if (const std::lock_guard lock(interruptMutex); interruptAction)
                interruptAction();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }).detach();
}

const Command* commandNamed(std::string_view name) {
    for (const Command& command : allCommands())
        if (command.name == name)
            return &command;
    return nullptr;
}

bool showsColours() {
    const auto valueOf = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string_view(value ? value : "");
    };
    return isatty(STDOUT_FILENO) == 1 && valueOf("NO_COLOR").empty() && valueOf("TERM") != "dumb";
}

bool asksForHelp(std::string_view word) {
    return word == "--help" || word == "-h";
}

int complain(const std::string& message, int exitCode) {
    std::fprintf(stderr, "rvgit: %s\n", message.c_str());
    return exitCode;
}

// The process ends without the flush that returning from main() would bring.
int finishOutput() {
    return std::fflush(stdout) == 0 && !std::ferror(stdout)
               ? 0
               : complain("cannot write the output", 1);
}

int write(const Output& output) {
    // A reader may take its time.
    endWhenInterrupted();
    std::fwrite(output.text().data(), 1, output.text().size(), stdout);
    return finishOutput();
}

int printHelp(const std::string& name) {
    const Command* command = commandNamed(name);
    if (!command)
        return complain("there is no command " + printable(name), 2);
    std::fputs(helpText(*command).c_str(), stdout);
    return finishOutput();
}

int run(std::vector<std::string> words) {
    bool verbose = false;
    std::string path = ".";
    std::size_t position = 0;
    for (; position < words.size() && words[position].starts_with('-'); ++position) {
        const std::string& word = words[position];
        if (asksForHelp(word))
            return printUsage(stdout), finishOutput();
        if (word == "--version")
            return std::puts("rvgit " RVGIT_VERSION), finishOutput();
        // For the build, which installs them.
        if (word == "--man")
            return std::fputs(manualPage(RVGIT_VERSION).c_str(), stdout), finishOutput();
        if (word == "--completion" && position + 1 < words.size()) {
            const auto script = completionScript(words[position + 1]);
            if (!script)
                return complain("there are completions for bash, zsh and fish", 2);
            return std::fputs(script->c_str(), stdout), finishOutput();
        }
        if (word == "--verbose")
            verbose = true;
        else if (word == "-C" && position + 1 < words.size())
            path = words[++position];
        else
            return printUsage(stderr), 2;
    }
    if (position < words.size() && words[position] == "help") {
        if (position + 1 == words.size())
            return printUsage(stdout), finishOutput();
        return printHelp(words[position + 1]);
    }
    if (position + 1 < words.size() && commandNamed(words[position]) &&
        asksForHelp(words[position + 1]))
        return printHelp(words[position]);
    const Command* command = &allCommands().front();
    if (position < words.size()) {
        if (const Command* named = commandNamed(words[position]))
            command = named;
        else
            path = words[position];
        ++position;
    }
    words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(position));

    // Started from a hook or an alias, it would otherwise show, and stage into, the repository that
    // the variables name, and not the one that its user names.
    RVGitConfiguration::sharedConfiguration().setSanitizesInheritedEnvironment(true);
    const auto gitBinary = RVGitBinary::gitBinaryInPath();
    if (interrupted)
        return exitInterrupted;
    if (!gitBinary || !gitBinary->isValid())
        return complain("there is no git in PATH, or it is older than " +
                            RVGitBinary::minimumVersionRequirement(),
                        1);
    RVGitBinary::setDefaultGitBinary(gitBinary);

    // A repository knows its paths from the root on.
    std::error_code ignored;
    path = standardizedPath(std::filesystem::absolute(path, ignored).string());
    std::shared_ptr<RVGitRepository> repository;
    if (command->needsRepository) {
        repository = RVGitRepository::repositoryWithPath(path);
        if (interrupted)
            return exitInterrupted;
        if (!repository->isValid()) {
            std::string message = "there is no repository at " + printable(path);
            const auto reason =
                RVGitRepository::reasonForInvalidRepositoryAtPath(path).value_or("");
            for (const std::string& line : componentsSeparatedByString(reason, "\n"))
                message += "\n" + printable(line);
            return complain(message, 1);
        }
    } else {
        // What it names is named from there.
        std::filesystem::current_path(path, ignored);
        if (ignored)
            return complain("there is no directory " + printable(path), 1);
    }

    Output output(showsColours());
    try {
        command->run(repository, Arguments(std::move(words)), output);
    } catch (const UsageError& error) {
        return complain(printable(error.what()), 2);
    } catch (const Failure& failure) {
        if (!interrupted)
            printError(failure.error, verbose);
        if (!interrupted && !failure.advice.empty())
            std::fprintf(stderr, "%s\n", failure.advice.c_str());
        return interrupted ? exitInterrupted : 1;
    }
    return interrupted ? exitInterrupted : write(output);
}

}  // namespace

void whenInterrupted(std::function<void()> action) {
    const std::lock_guard lock(interruptMutex);
    interruptAction = std::move(action);
}

void endWhenInterrupted() {
    whenInterrupted([] { std::_Exit(exitInterrupted); });
}

bool wasInterrupted() {
    return interrupted;
}

int main(int argc, char** argv) {
    cancelCommandsWhenInterrupted();
    installEnglishTexts();
    const int exitCode = run({argv + 1, argv + argc});
    // The waiting thread must not see the statics go.
    std::_Exit(exitCode);
}
