#include "RVGit/merge/RVGitMergeSequenceContentParser.h"

#include <algorithm>
#include <utility>

#include "RVGit/base/RVContainedFiles.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVPath.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"

namespace {

/// Some hundred thousand steps; anything longer is nothing that git has written.
constexpr std::size_t maximumFileSize = std::size_t{64} * 1024 * 1024;

/// The first two words of a line, between white space of any kind; empty views where there are
/// fewer.
std::pair<std::string_view, std::string_view> firstTwoWords(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> words(
        R"(^([^\t\p{Zs}]+)[\t\p{Zs}]+([^\t\p{Zs}]+))");
    // What git itself writes is plain: "pick HASH subject".
    const auto end = line.find(' ');
    if (end != std::string_view::npos && isASCII(line.substr(0, end))) {
        const std::string_view command = line.substr(0, end);
        const std::string_view others = line.substr(end + 1);
        const std::string_view hash = others.substr(0, others.find(' '));
        if (!hash.empty() && isASCII(hash) && command.find('\t') == std::string_view::npos &&
            hash.find('\t') == std::string_view::npos)
            return {command, hash};
    }
    const auto components = words->firstMatch(line);
    if (components.empty())
        return {};
    return {*components[1], *components[2]};
}

}  // namespace

RVGitMergeSequenceContentParser::RVGitMergeSequenceContentParser(
    std::optional<std::string> contents)
    : contents_(std::move(contents)) {}

std::shared_ptr<RVGitMergeSequenceContentParser>
RVGitMergeSequenceContentParser::initWithContentsOfFile(const std::string& path) {
    requireParameter(isAbsolutePath(path), "path.isAbsolutePath");
    return std::make_shared<RVGitMergeSequenceContentParser>(
        RVContainedFiles(pathByDeletingLastComponent(path))
            .UTF8Contents(lastPathComponent(path), maximumFileSize));
}

bool RVGitMergeSequenceContentParser::parse(RVErrorPlace error) {
    if (RVStringIsEmpty(contents_)) {
        parsedSequenceInstructions_.clear();
        return true;
    }
    std::string_view rest = trimmedWhitespaceAndNewline(*contents_);
    for (;;) {
        const auto end = rest.find('\n');
        if (!parseLine(rest.substr(0, end), error))
            return false;
        if (end == std::string_view::npos)
            return true;
        rest.remove_prefix(end + 1);
    }
}

bool RVGitMergeSequenceContentParser::parseLine(std::string_view line, RVErrorPlace error) {
    line = trimmedWhitespaceAndNewline(line);
    if (line.empty() || line.front() == '#')
        return true;
    const auto [command, hash] = firstTwoWords(line);
    if (hash.empty()) {
        fillErrorPlace(error, gitErrorWithCode(RVGitOutputParserError));
        return false;
    }
    parsedSequenceInstructions_.push_back(RVGitSequenceInstruction::sequenceInstructionWithCommand(
        std::string(command), std::string(hash)));
    return true;
}

std::vector<std::string> RVGitMergeSequenceContentParser::allRevisions() const {
    std::vector<std::string> revisions;
    revisions.reserve(parsedSequenceInstructions_.size());
    for (const auto& instruction : parsedSequenceInstructions_)
        revisions.push_back(instruction->commitHash());
    return revisions;
}

std::optional<std::string> RVGitMergeSequenceContentParser::nextRevision() const {
    if (parsedSequenceInstructions_.empty())
        return std::nullopt;
    return parsedSequenceInstructions_.front()->commitHash();
}

std::optional<std::string> RVGitMergeSequenceContentParser::lastRevision() const {
    if (parsedSequenceInstructions_.empty())
        return std::nullopt;
    return parsedSequenceInstructions_.back()->commitHash();
}
