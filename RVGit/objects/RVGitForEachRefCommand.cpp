#include "RVGit/objects/RVGitForEachRefCommand.h"

#include <utility>

namespace {

/// Newlines as Unicode counts them: U+000A to U+000D, U+0085, U+2028 and U+2029.
std::string_view trimmedNewlines(std::string_view text) {
    static constexpr std::string_view newlines[] = {
        "\n", "\v", "\f", "\r", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9",
    };
    for (bool found = true; found;) {
        found = false;
        for (std::string_view newline : newlines) {
            if (text.starts_with(newline)) {
                text.remove_prefix(newline.size());
                found = true;
            } else if (text.ends_with(newline)) {
                text.remove_suffix(newline.size());
                found = true;
            }
        }
    }
    return text;
}

}  // namespace

bool fieldsOfForEachRefRecord(std::string_view record, std::span<std::string_view> fields) {
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
        addGitCommandArgument(*pattern_);
}

bool RVGitForEachRefCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (!outputParserClass_)
        return false;
    outputParser_ = outputParserClass_(standardOutputData());
    return outputParser_ && outputParser_->parse(error);
}
