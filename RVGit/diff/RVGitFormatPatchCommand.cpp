#include "RVGit/diff/RVGitFormatPatchCommand.h"

#include "RVGit/command/RVGitFilePathsOutputParser.h"
#include "RVGit/command/RVGitRevisionArguments.h"

RVGitFormatPatchCommand::RVGitFormatPatchCommand(const std::shared_ptr<RVGitRepository>& repository,
                                                 std::string revision,
                                                 const std::optional<RVOptions>&)
    : RVGitCommand(repository), revision_(std::move(revision)) {}

std::shared_ptr<RVGitFormatPatchCommand>
RVGitFormatPatchCommand::gitFormatPatchCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::string revision,
    const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitFormatPatchCommand>(repository, std::move(revision), options);
}

void RVGitFormatPatchCommand::gitCommandWillInitialize() {
    setGitCommand("format-patch");
    if (startingNumber_ != 0)
        addGitCommandOptions({"--start-number", std::to_string(startingNumber_)});
    if (numbersPatches_)
        addGitCommandOption("--numbered");
    if (destinationURL_)
        addGitCommandOptions({"-o", destinationURL_->path()});
    if (noPrefix_)
        addGitCommandOption("--no-prefix");
    if (limit_ != 0)
        addGitCommandOption("-" + std::to_string(limit_));
    addGitCommandRevision(revision_);
    separateRevisionsFromFiles(*this);
}

bool RVGitFormatPatchCommand::gitCommandWillParseOutput(RVErrorPlace error) {
    RVGitFilePathsOutputParser parser(standardOutputData(), false);
    const bool parsed = parser.parse(error);
    createdPatchFilePaths_ = parser.takeIndexedResults();
    return parsed;
}
