#include "RVGit/objects/RVGitForEachRefCommand.h"

#include <utility>

#include "RVGit/base/RVString.h"

bool rvgit::fieldsOfForEachRefRecord(std::string_view record, std::span<std::string_view> fields) {
    for (std::size_t index = 0; index < fields.size(); ++index) {
        const auto end = record.find(RVGitForEachRefBoundary);
        const bool isLast = index + 1 == fields.size();
        if (isLast != (end == std::string_view::npos))
            return false;
        fields[index] = trimmedNewlines(record.substr(0, end));
        if (!isLast)
            record.remove_prefix(end + RVGitForEachRefBoundary.size());
    }
    return true;
}

RVGitForEachRefCommand::RVGitForEachRefCommand(const std::shared_ptr<RVGitRepository>& repository,
                                               const std::optional<RVOptions>&)
    : RVGitCommand(repository) {}

std::shared_ptr<RVGitForEachRefCommand> RVGitForEachRefCommand::gitForEachRefCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitForEachRefCommand>(repository, options);
}

void RVGitForEachRefCommand::gitCommandWillInitialize() {
    setGitCommand("for-each-ref");
    if (format_) {
        requireParameter(outputParserClass_ != nullptr, "outputParserClass");
        addGitCommandOption("--format=" + *format_);
    }
    if (pattern_)
        addGitCommandName(*pattern_);
}

bool RVGitForEachRefCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (!outputParserClass_)
        return false;
    outputParser_ = outputParserClass_(standardOutputData());
    return outputParser_ && outputParser_->parse(error);
}
