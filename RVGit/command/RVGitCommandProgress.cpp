#include "RVGit/command/RVGitCommandProgress.h"

#include <algorithm>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitRefUpdatesOutputParser.h"

namespace {

using Expressions = std::vector<RVRegularExpression>;

constexpr std::string_view compressing = "Compressing objects: +(\\d+)%";
constexpr std::string_view receiving = "Receiving objects: +(\\d+)%";
constexpr std::string_view resolving = "Resolving deltas: +(\\d+)%";
constexpr std::string_view unpacking = "Unpacking objects: +(\\d+)%";
constexpr std::string_view writing = "Writing objects: +(\\d+)%";

Expressions compiled(std::initializer_list<std::string_view> patterns) {
    Expressions expressions;
    for (std::string_view pattern : patterns)
        expressions.emplace_back(pattern);
    return expressions;
}

}  // namespace

RVGitCommandProgress::RVGitCommandProgress(std::optional<std::string> command)
    : command_(std::move(command)) {}

std::vector<std::string> RVGitCommandProgress::outputBuffer() const {
    std::lock_guard lock(mutex_);
    return outputBuffer_;
}

std::string RVGitCommandProgress::currentProgressOutput() const {
    std::lock_guard lock(mutex_);
    return stringByJoiningComponents(outputBuffer_, "\n");
}

std::string RVGitCommandProgress::lastProgressOutputLine() const {
    std::lock_guard lock(mutex_);
    return outputBuffer_.back();
}

std::size_t RVGitCommandProgress::lineCount() const {
    std::lock_guard lock(mutex_);
    return outputBuffer_.size();
}

std::size_t RVGitCommandProgress::lastIndexOfOutputBuffer() const {
    return lineCount() - 1;
}

void RVGitCommandProgress::updateProgressWithOutputData(std::string_view bytes) {
    updateProgressWithOutputString(stringUsingUTF8Encoding(bytes));
}

void RVGitCommandProgress::updateProgressWithOutputString(std::string_view text) {
    std::lock_guard lock(mutex_);
    std::string line;
    char previous = 0;
    for (char c : text) {
        if (c == '\n') {
            outputBuffer_.back() = std::move(line);
            outputBuffer_.emplace_back();
            line.clear();
        } else if (c != '\r') {
            if (previous == '\r') {
                line.clear();
                outputBuffer_.back().clear();
            }
            line += c;
        }
        previous = c;
    }
    if (!line.empty())
        outputBuffer_.back() = std::move(line);
    updateProgress();
    indeterminate_ = false;
}

void RVGitCommandProgress::updateProgress() {
    // Every stage shows a percentage, so the other lines, of which a transfer may print very
    // many, need not be searched again for each chunk.
    std::string percentages;
    {
        std::lock_guard lock(mutex_);
        for (const std::string& line : outputBuffer_) {
            if (line.find('%') != std::string::npos)
                percentages.append(line).append(1, '\n');
        }
    }
    overallProgress_ =
        overallProgressFromProgressOutput(percentages, regularExpressionsForCommand(command_));
}

void RVGitCommandProgress::finishProgress() {
    overallProgress_ = 1;
    std::string output = currentProgressOutput();
    RVGitRefUpdatesOutputParser parser(output);
    if (!parser.parse())
        return;
    const auto& updates = parser.result();
    if (std::any_of(updates.begin(), updates.end(),
                    [](const auto& update) { return update.type != RVGitRefUpdateTypeUpToDate; }))
        updated_ = true;
}

void RVGitCommandProgress::reset() {
    std::lock_guard lock(mutex_);
    outputBuffer_ = {""};
}

const Expressions& RVGitCommandProgress::regularExpressionsForCommand(
    const std::optional<std::string>& command) {
    if (command == "fetch")
        return regularExpressionsForFetchCommandProgress();
    if (command == "pull")
        return regularExpressionsForPullCommandProgress();
    if (command == "push")
        return regularExpressionsForPushCommandProgress();
    if (command == "clone")
        return regularExpressionsForCloneCommandProgress();
    return defaultRegularExpressionsForCommandProgress();
}

double RVGitCommandProgress::overallProgressFromProgressOutput(
    std::string_view output, const Expressions& regularExpressions) {
    if (regularExpressions.empty())
        return 0;
    double sum = 0;
    for (const RVRegularExpression& expression : regularExpressions) {
        auto components = expression.firstMatch(output);
        if (components.size() > 1 && components[1])
            sum += static_cast<double>(integerValue(*components[1]));
    }
    return std::min(sum / static_cast<double>(regularExpressions.size()), 100.0) / 100;
}

const Expressions& RVGitCommandProgress::defaultRegularExpressionsForCommandProgress() {
    static const auto& expressions =
        *new Expressions(compiled({compressing, receiving, resolving, unpacking}));
    return expressions;
}

const Expressions& RVGitCommandProgress::regularExpressionsForFetchCommandProgress() {
    return defaultRegularExpressionsForCommandProgress();
}

const Expressions& RVGitCommandProgress::regularExpressionsForPullCommandProgress() {
    return defaultRegularExpressionsForCommandProgress();
}

const Expressions& RVGitCommandProgress::regularExpressionsForPushCommandProgress() {
    static const auto& expressions = *new Expressions(compiled({compressing, writing, unpacking}));
    return expressions;
}

const Expressions& RVGitCommandProgress::regularExpressionsForCloneCommandProgress() {
    static const auto& expressions =
        *new Expressions(compiled({compressing, receiving, resolving}));
    return expressions;
}
