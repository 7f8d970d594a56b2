#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/repository/RVGitShowRefCommand.h"

// Options of RVGitLsRemoteCommand, each a boolean. Without one, all refs are listed, HEAD too.
inline constexpr char RVGitLsRemoteOptionHeads[] = "heads";
inline constexpr char RVGitLsRemoteOptionTags[] = "tags";

/// Lists the refs at an address: git ls-remote, with no repository and without progress. A
/// repository without refs gives an empty list.
///
/// Failure: the codes of RVGitCloneCommand, and 11 for output that cannot be read. A failure holds
/// the address under RVGitRemoteURLErrorKey.
class RVGIT_EXPORT RVGitLsRemoteCommand : public RVGitCommand {
public:
    RVGitLsRemoteCommand(std::string remoteURL, const std::optional<RVOptions>& options);
    [[nodiscard]] static std::shared_ptr<RVGitLsRemoteCommand> gitLsRemoteCommandWithRemoteURL(
        std::string remoteURL, const std::optional<RVOptions>& options);

    /// Whether the branches at the address can be listed, be it that there are none. Runs the
    /// command.
    [[nodiscard]] static bool canConnectToRemoteAtURL(const std::string& remoteURL,
                                                      RVErrorPlace error = nullptr);

    [[nodiscard]] const std::string& remoteURL() const { return remoteURL_; }
    void setRemoteURL(std::string remoteURL) { remoteURL_ = std::move(remoteURL); }
    /// Branches; with showsTags, both.
    [[nodiscard]] bool showsHeads() const { return showsHeads_; }
    void setShowsHeads(bool shows) { showsHeads_ = shows; }
    [[nodiscard]] bool showsTags() const { return showsTags_; }
    void setShowsTags(bool shows) { showsTags_ = shows; }

    /// The result, in git's order. An annotated tag has the commit that it points to, and its own
    /// hash beside it.
    [[nodiscard]] const std::vector<RVGitRefOutputParserResultItem>& refs() const { return refs_; }

protected:
    void gitCommandWillInitialize() override;
    bool gitCommandShouldHandleError(const RVError& error) override;
    RVUserInfo gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) override;
    bool gitCommandWillParseOutput(RVErrorPlace error) override;

private:
    std::string remoteURL_;
    bool showsHeads_ = false;
    bool showsTags_ = false;
    std::vector<RVGitRefOutputParserResultItem> refs_;
};
