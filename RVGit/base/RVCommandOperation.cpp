#include "RVGit/base/RVCommandOperation.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVFirstException.h"

namespace {

bool isPlainInShell(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') ||
           std::string_view("-_./=:,@%+^").find(character) != std::string_view::npos;
}

void appendQuotedForShell(std::string& text, std::string_view word) {
    if (!word.empty() && std::all_of(word.begin(), word.end(), isPlainInShell)) {
        text += word;
        return;
    }
    text += '\'';
    for (const char character : word) {
        if (character == '\'')
            text += "'\\''";
        else
            text += character;
    }
    text += '\'';
}

}  // namespace

RVCommandOperation::RVCommandOperation(std::string launchPath,
                                       std::optional<std::string> workingDirectory,
                                       std::vector<std::string> arguments,
                                       RVCommandOperationDelegate* delegate)
    : launch_{std::move(launchPath), std::move(arguments), {}, std::move(workingDirectory), {}},
      delegate_(delegate) {
    setValueForEnvironmentVariable(std::nullopt, "LANGUAGE");
}

RVCommandOperation::~RVCommandOperation() = default;

std::string RVCommandOperation::commandCall() const {
    std::string call;
    appendQuotedForShell(call, launch_.path);
    for (const std::string& argument : launch_.arguments) {
        call += ' ';
        appendQuotedForShell(call, argument);
    }
    return call;
}

void RVCommandOperation::cancel() {
    RVOperation::cancel();
    process_.terminate();
}

void RVCommandOperation::main() {
    commandWillExecute();
    if (isCancelled() || error_)
        return;
    launchErrorNumber_ = process_.run(
        launch_, [this](std::string_view bytes) { commandDidReceiveStandardOutput(bytes); },
        [this](std::string_view bytes) { commandDidReceiveStandardError(bytes); });
    launch_.standardInput = {};
    if (launchErrorNumber_ != 0) {
        commandDidFailToLaunch(launchErrorNumber_);
        if (delegate_)
            delegate_->commandDidFailToLaunch(*this);
        return;
    }
    RVFirstException exception(process_.handlerException());
    exception.keepFrom([&] { commandDidTerminate(); });
    if (delegate_)
        exception.keepFrom([&] { delegate_->commandDidTerminate(*this); });
    exception.rethrow();
}

void RVCommandOperation::commandDidFailToLaunch(int errorNumber) {
    finishWithError(posixError(errorNumber, launch_.path));
}

void RVCommandOperation::commandDidReceiveStandardOutput(std::string_view bytes) {
    if (delegate_)
        delegate_->commandDidReceiveStandardOutputData(*this, bytes);
}

void RVCommandOperation::commandDidReceiveStandardError(std::string_view bytes) {
    if (delegate_)
        delegate_->commandDidReceiveStandardErrorData(*this, bytes);
}
