#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitOutputParser.h"

/// One remote, as `git remote -v` tells it.
struct RVGIT_EXPORT RVGitRemoteOutputParserResultItem {
    std::string name;
    /// Where it is fetched from. Absent for a partial clone from git 2.37 on, which puts the filter
    /// behind the address.
    std::optional<std::string> downstreamURL;
    /// Where it is pushed to.
    std::optional<std::string> upstreamURL;
};

/// Reads what `git remote -v` prints: a name, a tab, an address and what it serves. The lines of
/// one name become one item.
class RVGIT_EXPORT RVGitRemoteOutputParser
    : public RVGitItemOutputParser<RVGitRemoteOutputParserResultItem> {
public:
    explicit RVGitRemoteOutputParser(std::string_view outputData);

    /// In the order in which the names first appeared.
    [[nodiscard]] const std::vector<RVGitRemoteOutputParserResultItem>& remotes() const {
        return resultCache();
    }

protected:
    [[nodiscard]] std::string_view parserName() const override;
    bool parseOutputLine(std::string_view line) override;
};

/// Lists, adds, renames and removes remotes: git remote. Without names and an address, and with
/// nothing to do, it lists.
class RVGIT_EXPORT RVGitRemoteCommand : public RVGitCommand {
public:
    /// The repository is required.
    explicit RVGitRemoteCommand(const std::shared_ptr<RVGitRepository>& repository);
    /// Lists the remotes.
    [[nodiscard]] static std::shared_ptr<RVGitRemoteCommand> gitRemoteCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository);
    /// Codes 2300 for a name that exists, 2301 for an invalid one.
    [[nodiscard]] static std::shared_ptr<RVGitRemoteCommand> gitCreateRemoteCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::string remoteName,
        std::optional<std::string> URL);
    /// Codes 2302 for a new name that exists, 2303 for an invalid one.
    [[nodiscard]] static std::shared_ptr<RVGitRemoteCommand> gitRenameRemoteCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::string remoteName,
        std::string newRemoteName);
    [[nodiscard]] static std::shared_ptr<RVGitRemoteCommand> gitDeleteRemoteCommandWithRepository(
        const std::shared_ptr<RVGitRepository>& repository, std::string remoteName);

    [[nodiscard]] const std::optional<std::vector<std::string>>& remoteNames() const {
        return remoteNames_;
    }
    void setRemoteNames(std::optional<std::vector<std::string>> names) {
        remoteNames_ = std::move(names);
    }
    [[nodiscard]] const std::optional<std::string>& URL() const { return URL_; }
    void setURL(std::optional<std::string> URL) { URL_ = std::move(URL); }
    [[nodiscard]] bool createsRemote() const { return createsRemote_; }
    void setCreatesRemote(bool creates) { createsRemote_ = creates; }
    [[nodiscard]] bool renamesRemote() const { return renamesRemote_; }
    void setRenamesRemote(bool renames) { renamesRemote_ = renames; }
    [[nodiscard]] bool deletesRemote() const { return deletesRemote_; }
    void setDeletesRemote(bool deletes) { deletesRemote_ = deletes; }

    /// The result of a listing.
    [[nodiscard]] const std::vector<RVGitRemoteOutputParserResultItem>& remotes() const {
        return remotes_;
    }

    [[nodiscard]] static const RVGitErrorTable& gitErrorDefinitions();

protected:
    void gitCommandWillInitialize() override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::optional<std::vector<std::string>> remoteNames_;
    std::optional<std::string> URL_;
    bool createsRemote_ = false;
    bool renamesRemote_ = false;
    bool deletesRemote_ = false;
    std::vector<RVGitRemoteOutputParserResultItem> remotes_;
};
