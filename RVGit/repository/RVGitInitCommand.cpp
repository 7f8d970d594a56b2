#include "RVGit/repository/RVGitInitCommand.h"

#include "RVGit/command/RVGitErrorKeys.h"

RVGitInitCommand::RVGitInitCommand(std::string path, const std::optional<RVOptions>& options)
    : RVGitCommand(std::optional<std::string>()), path_(std::move(path)) {
    readOption(options, RVGitInitOptionBare, bare_);
    readOption(options, RVGitInitOptionSharedMode, sharedMode_);
}

std::shared_ptr<RVGitInitCommand> RVGitInitCommand::gitInitCommandWithPath(
    const std::string& path, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitInitCommand>(path, options);
}

void RVGitInitCommand::gitCommandWillInitialize() {
    setGitCommand("init");
    if (bare_)
        addGitCommandOption("--bare");
    if (sharedMode_)
        addGitCommandOption("--shared=" + *sharedMode_);
    addGitCommandFilePath(path_);
}

RVUserInfo RVGitInitCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    userInfo.insert_or_assign(RVGitRepositoryPathErrorKey, path_);
    return userInfo;
}
