#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "client/Terminal.h"

class RVGitRepository;

/// The command line was wrong; what() says how.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The library has failed.
struct Failure {
    explicit Failure(RVError failure) : error(std::move(failure)) {}
    /// Nothing came back and no error says why: what was asked for is not there, or git was ended.
    explicit Failure(const std::optional<RVError>& failure);
    Failure(RVError failure, std::string whatToDo)
        : error(std::move(failure)), advice(std::move(whatToDo)) {}

    RVError error;
    /// What the user can do now; printed below the error.
    std::string advice = {};
};

/// The words behind a command's name, taken one after the other.
class Arguments {
public:
    explicit Arguments(std::vector<std::string> words) : words_(std::move(words)) {}

    /// The next word; absent at the end.
    [[nodiscard]] std::optional<std::string> next();
    /// The word that must follow an option.
    [[nodiscard]] std::string valueOf(std::string_view option);
    [[nodiscard]] std::size_t numberOf(std::string_view option);
    /// The number that may follow, or else the one given.
    [[nodiscard]] std::size_t numberOr(std::size_t otherwise, std::string_view option);
    /// All that is left.
    [[nodiscard]] std::vector<std::string> rest();
    /// The next word of a command whose options have all been taken; absent at the end. "--" is
    /// left out, and what stands behind it is never an option.
    [[nodiscard]] std::optional<std::string> nextOperand(const std::string& command);
    /// The operand that a command needs.
    [[nodiscard]] std::string operandOf(const std::string& command);
    /// All operands that are left.
    [[nodiscard]] std::vector<std::string> operands(const std::string& command);

private:
    [[nodiscard]] static std::size_t numberFrom(const std::string& value, std::string_view option);

    std::vector<std::string> words_;
    std::size_t position_ = 0;
    bool optionsHaveEnded_ = false;
};

/// From here on git takes a path for the file of that name, and not for a pattern that may mean
/// others. Not for a command that stashes: git stash has patterns of its own.
void takePathsLiterally();

/// Does this, too, when the user interrupts the client, on another thread, again and again until it
/// ends: for what does not run on the library's shared queue.
void whenInterrupted(std::function<void()> action);

/// From here on an interrupt ends the client at once: it waits for somebody else, and no git runs
/// that would be left behind.
void endWhenInterrupted();

/// Whether the user has interrupted the client. What git has said since then, and be it that there
/// is nothing, is not to be acted upon.
[[nodiscard]] bool wasInterrupted();

/// One command of the client: it writes to the output, or throws UsageError or Failure.
struct Command {
    std::string_view name;
    std::string_view usage;
    void (*run)(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                Output& output);
    /// Without it, the repository is null.
    bool needsRepository = true;
};

/// All commands, in the order in which help lists them.
[[nodiscard]] const std::vector<Command>& allCommands();

void runOverview(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output);
void runLog(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
            Output& output);
void runShow(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runDiff(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runTags(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runBlame(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output);
void runReflog(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runShortlog(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output);
void runStatus(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runAdd(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
            Output& output);
void runUnstage(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                Output& output);
void runDiscard(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                Output& output);
void runLines(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output);
void runAddLines(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output);
void runUnstageLines(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                     Output& output);
void runDiscardLines(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                     Output& output);
void runCommit(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runStash(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output);
void runBranch(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runRemote(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runSubmodule(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                  Output& output);
void runIgnore(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runMerge(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output);
void runRebase(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runCherryPick(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                   Output& output);
void runRevert(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runContinue(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output);
void runSkip(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runAbort(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output);
void runQuit(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runResolve(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                Output& output);
void runMove(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runDrop(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runSquash(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runFixup(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output);
void runReword(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
               Output& output);
void runEdit(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runCanMerge(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output);
void runMergeTool(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                  Output& output);
void runDiffTool(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output);
void runClone(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output);
void runFetch(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
              Output& output);
void runPull(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runPush(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
             Output& output);
void runLsRemote(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                 Output& output);
void runCredential(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                   Output& output);
void runArchive(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
                Output& output);
void runLFS(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
            Output& output);
void runSVN(const std::shared_ptr<RVGitRepository>& repository, Arguments arguments,
            Output& output);
