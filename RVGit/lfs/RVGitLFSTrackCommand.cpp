#include "RVGit/lfs/RVGitLFSTrackCommand.h"

#include "RVGit/base/RVString.h"

RVGitLFSTrackOutputParser::RVGitLFSTrackOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

std::string_view RVGitLFSTrackOutputParser::parserName() const {
    return "RVGitLFSTrackOutputParser";
}

bool RVGitLFSTrackOutputParser::parseOutputLine(std::string_view line) {
    const std::string trimmed = stringByTrimmingWhitespaceAndNewline(line);
    const std::size_t blank = trimmed.find(' ');
    if (blank == std::string::npos || trimmed.find(' ', blank + 1) != std::string::npos)
        return true;
    // The parentheses are the first and the last character, whatever they are.
    const auto isContinuation = [](char byte) { return (byte & 0xC0) == 0x80; };
    std::string_view file(trimmed);
    file.remove_prefix(blank + 1);
    if (file.empty())
        return false;
    do
        file.remove_prefix(1);
    while (!file.empty() && isContinuation(file.front()));
    if (file.empty())
        return false;
    while (isContinuation(file.back()) && file.size() > 1)
        file.remove_suffix(1);
    file.remove_suffix(1);
    addResult({trimmed.substr(0, blank), std::string(file)});
    return true;
}

std::shared_ptr<RVGitLFSTrackCommand> RVGitLFSTrackCommand::gitLFSTrackCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSTrackCommand>(repository);
}

void RVGitLFSTrackCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("track");
    setSupportsProgressOutput(true);
    if (patterns_)
        addGitCommandNames(*patterns_);
}

bool RVGitLFSTrackCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    if (patterns_)
        return true;
    RVGitLFSTrackOutputParser parser(standardOutputData());
    if (!parser.parse(error))
        return false;
    trackedFilePatterns_ = parser.takeIndexedResults();
    return true;
}

std::shared_ptr<RVGitLFSUntrackCommand> RVGitLFSUntrackCommand::gitLFSUntrackCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSUntrackCommand>(repository);
}

void RVGitLFSUntrackCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("untrack");
    if (patterns_)
        addGitCommandNames(*patterns_);
}
