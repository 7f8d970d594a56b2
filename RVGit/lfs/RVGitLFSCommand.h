#pragma once

#include <cstdint>
#include <memory>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"

/// Base of the commands that run `git lfs`. Failure, of all of them: code 100 outside a repository,
/// as far as git-lfs says so on standard error; code 1 for everything else.
class RVGIT_EXPORT RVGitLFSCommand : public RVGitCommand {
public:
    using RVGitCommand::RVGitCommand;

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();
};

/// Where the filters are written to.
enum RVGitLFSInstallationMode : std::int64_t {
    /// The user's configuration.
    RVGitLFSInstallationModeGlobal = 0,
    RVGitLFSInstallationModeLocal = 1,
    RVGitLFSInstallationModeSystem = 2
};

/// Runs `git lfs install`, which configures the filters, and the hooks of the repository.
class RVGIT_EXPORT RVGitLFSInstallCommand : public RVGitLFSCommand {
public:
    using RVGitLFSCommand::RVGitLFSCommand;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSInstallCommand> gitLFSInstallCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    /// One of RVGitLFSInstallationMode; any other number is the user's configuration.
    [[nodiscard]] std::int64_t installationMode() const { return installationMode_; }
    void setInstallationMode(std::int64_t mode) { installationMode_ = mode; }

protected:
    void gitCommandWillInitialize() override;

private:
    std::int64_t installationMode_ = RVGitLFSInstallationModeGlobal;
};

/// Runs `git lfs uninstall`, which takes the filters out of the user's configuration, and the
/// repository's hooks away.
class RVGIT_EXPORT RVGitLFSUninstallCommand : public RVGitLFSCommand {
public:
    using RVGitLFSCommand::RVGitLFSCommand;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSUninstallCommand>
    gitLFSUninstallCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository);

protected:
    void gitCommandWillInitialize() override;
};

/// Runs `git lfs update`, which writes the repository's hooks. What git-lfs says is written to
/// standard error, the library's only log.
class RVGIT_EXPORT RVGitLFSUpdateCommand : public RVGitLFSCommand {
public:
    using RVGitLFSCommand::RVGitLFSCommand;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSUpdateCommand> gitLFSUpdateCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;
};

/// Runs `git lfs checkout`, which puts contents that are here in the place of pointers.
class RVGIT_EXPORT RVGitLFSCheckoutCommand : public RVGitLFSCommand {
public:
    using RVGitLFSCommand::RVGitLFSCommand;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSCheckoutCommand>
    gitLFSCheckoutCommandWithRepository(const std::shared_ptr<RVGitRepository>& repository);

protected:
    void gitCommandWillInitialize() override;
};

/// Whether a prune asks the remote for each object first.
enum RVGitLFSPruneVerificationMode : std::int64_t {
    /// As the configuration says.
    RVGitLFSPruneVerificationModeDefault = 0,
    RVGitLFSPruneVerificationModeVerify = 1,
    RVGitLFSPruneVerificationModeDoNotVerify = 2
};

/// Runs `git lfs prune`, which removes local copies of old objects.
class RVGIT_EXPORT RVGitLFSPruneCommand : public RVGitCommand {
public:
    using RVGitCommand::RVGitCommand;
    /// The repository is required.
    [[nodiscard]] static std::shared_ptr<RVGitLFSPruneCommand> gitLFSPruneCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);

    /// One of RVGitLFSPruneVerificationMode; any other number counts as the default.
    [[nodiscard]] std::int64_t verificationMode() const { return verificationMode_; }
    void setVerificationMode(std::int64_t mode) { verificationMode_ = mode; }

protected:
    void gitCommandWillInitialize() override;

private:
    std::int64_t verificationMode_ = RVGitLFSPruneVerificationModeDefault;
};
