#include "RVGit/command/RVGitCommandProgress.h"

#include <algorithm>

#include "RVGit/base/RVNeverDestroyed.h"
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

double progressFromSum(double sum, std::size_t numberOfStages) {
    return std::min(sum / static_cast<double>(std::max<std::size_t>(numberOfStages, 1)), 100.0) /
           100;
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

void RVGitCommandProgress::searchLine(std::string_view line, std::vector<Stage>& stages) const {
    // Every stage shows a percentage.
    if (line.find('%') == std::string_view::npos)
        return;
    const Expressions& expressions = regularExpressionsForCommand(command_);
    for (std::size_t index = 0; index < stages.size(); ++index) {
        if (stages[index] || line.find(expressions[index].requiredText()) == std::string_view::npos)
            continue;
        const auto components = expressions[index].firstMatch(line);
        if (components.size() > 1 && components[1])
            stages[index] = integerValue(*components[1]);
    }
}

void RVGitCommandProgress::updateProgress() {
    std::lock_guard lock(mutex_);
    // No match reaches beyond its line, and only the last line still changes: so each line is
    // searched once when it is done, however many chunks a transfer prints.
    stages_.resize(regularExpressionsForCommand(command_).size());
    for (; numberOfSearchedLines_ + 1 < outputBuffer_.size(); ++numberOfSearchedLines_)
        searchLine(outputBuffer_[numberOfSearchedLines_], stages_);
    std::vector<Stage> stages = stages_;
    searchLine(outputBuffer_.back(), stages);
    double sum = 0;
    for (const Stage& stage : stages)
        sum += static_cast<double>(stage.value_or(0));
    overallProgress_ = progressFromSum(sum, stages.size());
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
    stages_.clear();
    numberOfSearchedLines_ = 0;
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
    return progressFromSum(sum, regularExpressions.size());
}

const Expressions& RVGitCommandProgress::defaultRegularExpressionsForCommandProgress() {
    static const RVNeverDestroyed<Expressions> expressions(
        compiled({compressing, receiving, resolving, unpacking}));
    return *expressions;
}

const Expressions& RVGitCommandProgress::regularExpressionsForFetchCommandProgress() {
    return defaultRegularExpressionsForCommandProgress();
}

const Expressions& RVGitCommandProgress::regularExpressionsForPullCommandProgress() {
    return defaultRegularExpressionsForCommandProgress();
}

const Expressions& RVGitCommandProgress::regularExpressionsForPushCommandProgress() {
    static const RVNeverDestroyed<Expressions> expressions(
        compiled({compressing, writing, unpacking}));
    return *expressions;
}

const Expressions& RVGitCommandProgress::regularExpressionsForCloneCommandProgress() {
    static const RVNeverDestroyed<Expressions> expressions(
        compiled({compressing, receiving, resolving}));
    return *expressions;
}
