#include "RVGit/lfs/RVGitLFSCommand.h"

#include <cstdio>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/command/RVGitErrorCodes.h"

const RVGitErrorTable& RVGitLFSCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table = {
        gitErrorRow(RVGitNoGitRepoError)
            .command("lfs")
            .exitCode(128)
            .standardError("Not a git repository")};
    return *table;
}

std::shared_ptr<RVGitLFSInstallCommand> RVGitLFSInstallCommand::gitLFSInstallCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSInstallCommand>(repository);
}

void RVGitLFSInstallCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("install");
    if (installationMode_ == RVGitLFSInstallationModeLocal)
        addGitCommandOption("--local");
    else if (installationMode_ == RVGitLFSInstallationModeSystem)
        addGitCommandOption("--system");
}

std::shared_ptr<RVGitLFSUninstallCommand>
RVGitLFSUninstallCommand::gitLFSUninstallCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSUninstallCommand>(repository);
}

void RVGitLFSUninstallCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("uninstall");
}

std::shared_ptr<RVGitLFSUpdateCommand> RVGitLFSUpdateCommand::gitLFSUpdateCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSUpdateCommand>(repository);
}

void RVGitLFSUpdateCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("update");
}

bool RVGitLFSUpdateCommand::gitCommandWillParseOutput(RVErrorPlace) {
    std::fprintf(stderr, "%s\n", standardOutputString().c_str());
    return true;
}

std::shared_ptr<RVGitLFSCheckoutCommand>
RVGitLFSCheckoutCommand::gitLFSCheckoutCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSCheckoutCommand>(repository);
}

void RVGitLFSCheckoutCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("checkout");
}

std::shared_ptr<RVGitLFSPruneCommand> RVGitLFSPruneCommand::gitLFSPruneCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository) {
    return std::make_shared<RVGitLFSPruneCommand>(repository);
}

void RVGitLFSPruneCommand::gitCommandWillInitialize() {
    setGitCommand("lfs");
    setGitSubCommand("prune");
    if (verificationMode_ == RVGitLFSPruneVerificationModeVerify)
        addGitCommandOption("--verify-remote");
    else if (verificationMode_ == RVGitLFSPruneVerificationModeDoNotVerify)
        addGitCommandOption("--no-verify-remote");
}
