#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVExport.h"
#include "RVGit/base/RVTypes.h"
#include "RVGit/command/RVGitValues.h"

class RVGitRemoteBranch;
class RVGitRemoteConfig;
class RVGitRepository;

// Configuration keys of a remote, for RVGitMakeRemoteConfigKey().
inline constexpr char RVGitRemoteURLConfigKey[] = "url";
inline constexpr char RVGitRemotePushURLConfigKey[] = "pushurl";
inline constexpr char RVGitRemoteFetchConfigKey[] = "fetch";
inline constexpr char RVGitRemotePushConfigKey[] = "push";
inline constexpr char RVGitRemoteProxyConfigKey[] = "proxy";
inline constexpr char RVGitRemoteTagOptConfigKey[] = "tagopt";
inline constexpr char RVGitRemoteSkipDefaultUpdateConfigKey[] = "skipdefaultupdate";
inline constexpr char RVGitRemoteSkipFetchAllConfigKey[] = "skipfetchall";
// Of a Subversion remote, for RVGitMakeSVNRemoteConfigKey().
inline constexpr char RVGitSVNRemoteURLConfigKey[] = "url";
inline constexpr char RVGitSVNRemoteCommitURLConfigKey[] = "commiturl";
inline constexpr char RVGitSVNRemoteFetchConfigKey[] = "fetch";
inline constexpr char RVGitSVNRemoteBranchesConfigKey[] = "branches";
inline constexpr char RVGitSVNRemoteTagsConfigKey[] = "tags";
inline constexpr char RVGitSVNRemoteUUIDConfigKey[] = "uuid";

/// A remote of a repository, plain or Subversion's: a snapshot that stays on one thread. The static
/// operations may be called on any; each blocks. A list whose commands were cancelled is absent
/// with a cleared place. So ends an operation that reads before it writes, or has several steps,
/// where all commands are cancelled meanwhile: false or null with a cleared place, and what it had
/// written by then stays.
///
/// Three addresses are kept apart: `downstreamURL` is what git fetches from and `upstreamURL` what
/// it pushes to, rewritten by the configuration's "insteadOf"; `URL` and `pushURL` are what the
/// configuration holds.
class RVGIT_EXPORT RVGitRemote {
public:
    using List = std::vector<std::shared_ptr<RVGitRemote>>;
    using Branches = std::vector<std::shared_ptr<RVGitRemoteBranch>>;
    using BranchesByRemote = std::map<std::string, Branches, std::less<>>;
    /// Sections of the configuration by the name of the remote.
    using ConfigOptionsByRemote = std::map<std::string, RVOptions, std::less<>>;

    /// The repository is required.
    RVGitRemote(std::shared_ptr<RVGitRepository> repository, std::string name,
                std::optional<std::string> downstreamURL, std::optional<std::string> upstreamURL,
                std::optional<Branches> branches, bool isSVNRemote);
    [[nodiscard]] static std::shared_ptr<RVGitRemote> remoteWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string name,
        std::optional<std::string> downstreamURL, std::optional<std::string> upstreamURL,
        std::optional<Branches> branches);
    [[nodiscard]] static std::shared_ptr<RVGitRemote> SVNRemoteWithRepository(
        std::shared_ptr<RVGitRepository> repository, std::string name,
        std::optional<std::string> downstreamURL, std::optional<std::string> upstreamURL,
        std::optional<Branches> branches);
    /// The remote ".", which stands for the repository itself. It has no branches.
    [[nodiscard]] static std::shared_ptr<RVGitRemote> localRemoteWithRepository(
        std::shared_ptr<RVGitRepository> repository);

    // Lookup.

    /// Whether git accepts the name for a ref. Costs a child process.
    [[nodiscard]] static bool isValidRemoteName(const std::optional<std::string>& name);
    /// Whether the configuration has a section of a plain remote of that name. Kept for
    /// compatibility: the name is an unanchored regular expression, so that "ori" is found in
    /// "origin", and "a" in the Subversion remote "ab".
    [[nodiscard]] static bool existsRemoteWithName(
        const std::string& name, const std::shared_ptr<RVGitRepository>& repository);
    /// Plain remotes in git's order, then Subversion ones, with their branches. Runs three git
    /// commands side by side, and `git config` five times. Absent, with the error of the first
    /// command that failed, on failure.
    [[nodiscard]] static std::optional<List> allRemotesForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Kept for compatibility: the names of Subversion remotes alone. Ask
    /// allRemotesForRepository() for plain ones. Throws RVInternalInconsistencyException if a plain
    /// remote is called "name".
    [[nodiscard]] static std::optional<std::vector<std::string>> allRemoteNamesForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// Null with a cleared place if there is none of that name. Lists all remotes, but for the name
    /// ".", for which nothing is run.
    [[nodiscard]] static std::shared_ptr<RVGitRemote> remoteForName(
        const std::string& name, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitRemote> originRemoteForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[nodiscard]] static std::shared_ptr<RVGitRemote> SVNRemoteForUUID(
        const std::string& uuid, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    /// The remote branches of each remote, in git's order.
    [[nodiscard]] static std::optional<BranchesByRemote> remoteBranchesByRemoteForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// The sections of Subversion remotes; what the bridge's metadata says goes over the
    /// repository's configuration, and its absence is no error.
    [[nodiscard]] static std::optional<ConfigOptionsByRemote> SVNRemoteConfigOptionsForRepository(
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    // Making, removing and renaming.

    /// A Subversion remote, of the options of RVGitSVNOptions.h. Null with code 2300 if
    /// existsRemoteWithName(), which does not see a Subversion remote of that name. Kept for
    /// compatibility: the standard layout is written where the option is there, be it false. What a
    /// failure leaves written stays. Nothing is fetched.
    [[nodiscard]] static std::shared_ptr<RVGitRemote> createSVNRemoteWithName(
        const std::string& name, const std::string& URL,
        const std::shared_ptr<RVGitRepository>& repository, const std::optional<RVOptions>& options,
        RVErrorPlace error = nullptr);

    /// Null with code 2300 if existsRemoteWithName(), without running git remote; 2301 for an
    /// invalid name. Nothing is fetched.
    [[nodiscard]] static std::shared_ptr<RVGitRemote> createRemoteWithName(
        const std::string& name, const std::string& URL,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    /// With its configuration and its remote branches; of a Subversion remote, the sections of the
    /// configuration alone. False with a cleared place if there is none of that name. The branches
    /// of another remote whose name goes on with a slash ("a/b" beside "a") are left as they are.
    [[nodiscard]] static bool deleteRemoteWithName(
        const std::string& name, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    /// With its configuration and its remote branches, also where only the case of letters changes
    /// and the file system ignores that. Codes 2302 and 2303. False with a cleared place if there
    /// is no such remote.
    [[nodiscard]] static bool renameRemoteWithName(
        const std::string& name, const std::string& newName,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);

    // Setters. Each writes the repository's configuration, and lists all remotes to do so. False
    // with a cleared place if there is no remote of that name. Unsetting what is not set succeeds.

    [[nodiscard]] static bool setURL(const std::string& URL, const std::string& remoteName,
                                     const std::shared_ptr<RVGitRepository>& repository,
                                     RVErrorPlace error = nullptr);
    /// Of a Subversion remote, where it commits to.
    [[nodiscard]] static bool setPushURL(const std::string& URL, const std::string& remoteName,
                                         const std::shared_ptr<RVGitRepository>& repository,
                                         RVErrorPlace error = nullptr);
    [[nodiscard]] static bool unsetPushURLForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    // These know plain remotes only: false with a cleared place for a Subversion one.
    [[nodiscard]] static bool setFetchRefSpecs(const std::vector<std::string>& refSpecs,
                                               const std::string& remoteName,
                                               const std::shared_ptr<RVGitRepository>& repository,
                                               RVErrorPlace error = nullptr);
    [[nodiscard]] static bool unsetFetchRefSpecsForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static bool setPushRefSpecs(const std::vector<std::string>& refSpecs,
                                              const std::string& remoteName,
                                              const std::shared_ptr<RVGitRepository>& repository,
                                              RVErrorPlace error = nullptr);
    [[nodiscard]] static bool unsetPushRefSpecsForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static bool setProxy(const std::string& proxy, const std::string& remoteName,
                                       const std::shared_ptr<RVGitRepository>& repository,
                                       RVErrorPlace error = nullptr);
    [[nodiscard]] static bool unsetProxyForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static bool setSkipsDefaultUpdate(
        bool skips, const std::string& remoteName,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[nodiscard]] static bool unsetSkipsDefaultUpdateForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static bool setSkipsFetchAll(bool skips, const std::string& remoteName,
                                               const std::shared_ptr<RVGitRepository>& repository,
                                               RVErrorPlace error = nullptr);
    [[nodiscard]] static bool unsetSkipsFetchAllForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    // These know Subversion remotes only: false with a cleared place for a plain one. Texts are
    // those of RVGitSVNRefSpec.
    [[nodiscard]] static bool setSVNTrunkRefSpecs(
        const std::vector<std::string>& refSpecs, const std::string& remoteName,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[nodiscard]] static bool unsetSVNTrunkRefSpecsForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static bool setSVNBranchRefSpecs(
        const std::vector<std::string>& refSpecs, const std::string& remoteName,
        const std::shared_ptr<RVGitRepository>& repository, RVErrorPlace error = nullptr);
    [[nodiscard]] static bool unsetSVNBranchRefSpecsForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    [[nodiscard]] static bool setSVNTagRefSpecs(const std::vector<std::string>& refSpecs,
                                                const std::string& remoteName,
                                                const std::shared_ptr<RVGitRepository>& repository,
                                                RVErrorPlace error = nullptr);
    [[nodiscard]] static bool unsetSVNTagRefSpecsForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);
    /// One step of renameRemoteWithName() for a Subversion remote whose section has the new name:
    /// moves the directories of refs, in the git directory and in that of the bridge, and rewrites
    /// the ref specs under the key ("fetch", "branches" or "tags") whose local ref begins with
    /// "refs/remotes/" and the old name. Refs that git has packed or keeps in tables move along;
    /// EEXIST where one stands under the new name.
    [[nodiscard]] static bool updateSVNRefSpecsForConfigKey(
        const std::string& configKey, const std::string& oldRemoteName,
        const std::string& newRemoteName, const std::shared_ptr<RVGitRepository>& repository,
        RVErrorPlace error = nullptr);

    // Fields.

    [[nodiscard]] const std::shared_ptr<RVGitRepository>& repository() const { return repository_; }
    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] const std::optional<std::string>& downstreamURL() const { return downstreamURL_; }
    [[nodiscard]] const std::optional<std::string>& upstreamURL() const { return upstreamURL_; }
    /// Absent for a remote without any.
    [[nodiscard]] const std::optional<Branches>& branches() const { return branches_; }
    [[nodiscard]] const std::optional<std::string>& URL() const { return URL_; }
    void setURL(std::optional<std::string> URL) { URL_ = std::move(URL); }
    [[nodiscard]] const std::optional<std::string>& pushURL() const { return pushURL_; }
    void setPushURL(std::optional<std::string> URL) { pushURL_ = std::move(URL); }
    /// Never filled when a remote is loaded: kept for compatibility. The key of that name is in the
    /// config.
    [[nodiscard]] const std::optional<std::string>& proxy() const { return proxy_; }
    void setProxy(std::optional<std::string> proxy) { proxy_ = std::move(proxy); }
    [[nodiscard]] const std::optional<std::vector<std::string>>& fetchRefSpecs() const {
        return fetchRefSpecs_;
    }
    void setFetchRefSpecs(std::optional<std::vector<std::string>> refSpecs) {
        fetchRefSpecs_ = std::move(refSpecs);
    }
    [[nodiscard]] const std::optional<std::vector<std::string>>& pushRefSpecs() const {
        return pushRefSpecs_;
    }
    void setPushRefSpecs(std::optional<std::vector<std::string>> refSpecs) {
        pushRefSpecs_ = std::move(refSpecs);
    }
    [[nodiscard]] bool skipsDefaultUpdate() const { return skipsDefaultUpdate_; }
    void setSkipsDefaultUpdate(bool skips) { skipsDefaultUpdate_ = skips; }
    [[nodiscard]] bool skipsFetchAll() const { return skipsFetchAll_; }
    void setSkipsFetchAll(bool skips) { skipsFetchAll_ = skips; }
    [[nodiscard]] bool isSVNRemote() const { return isSVNRemote_; }
    [[nodiscard]] const std::optional<std::string>& SVNUUID() const { return SVNUUID_; }
    [[nodiscard]] const std::optional<std::vector<std::string>>& SVNTrunkRefSpecs() const {
        return SVNTrunkRefSpecs_;
    }
    [[nodiscard]] const std::optional<std::vector<std::string>>& SVNBranchRefSpecs() const {
        return SVNBranchRefSpecs_;
    }
    [[nodiscard]] const std::optional<std::vector<std::string>>& SVNTagRefSpecs() const {
        return SVNTagRefSpecs_;
    }
    /// What the local refs of the trunks have behind "refs/remotes/", if that is the same for all;
    /// computed on first access.
    [[nodiscard]] const std::optional<std::string>& SVNPrefix() const;
    /// Null if the configuration has no section of that name.
    [[nodiscard]] const std::shared_ptr<RVGitRemoteConfig>& config() const { return config_; }
    void setConfig(std::shared_ptr<RVGitRemoteConfig> config) { config_ = std::move(config); }

    /// The branch of that name, in full ("refs/remotes/origin/main"), with the remote's name or
    /// without it. Null if there is none.
    [[nodiscard]] std::shared_ptr<RVGitRemoteBranch> remoteBranchForRefName(
        const std::string& refName) const;

    /// Keeps the record and copies its fields; does nothing for a null one.
    void setValuesWithRemoteConfig(const std::shared_ptr<RVGitRemoteConfig>& config);
    /// Takes the fields from a section of a Subversion remote; does nothing for an absent one.
    void setValuesWithSVNRemoteConfigOptions(const std::optional<RVOptions>& configOptions);

private:
    /// The full key in the section of that remote, which is looked up for its kind; null where a
    /// remote of the kind has none. Absent with a cleared place if there is no such remote or key.
    [[nodiscard]] static std::optional<std::string> configKeyForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        const char* key, const char* SVNKey, RVErrorPlace error);
    /// Takes a key that is not set for unset.
    [[nodiscard]] static bool unsetConfigKeyForRemoteWithName(
        const std::string& remoteName, const std::shared_ptr<RVGitRepository>& repository,
        const char* key, const char* SVNKey, RVErrorPlace error);
    [[nodiscard]] static bool deleteSVNRemote(const RVGitRemote& remote, RVErrorPlace error);
    [[nodiscard]] static bool renameSVNRemote(const RVGitRemote& remote, const std::string& newName,
                                              RVErrorPlace error);

    std::shared_ptr<RVGitRepository> repository_;
    std::string name_;
    std::optional<std::string> downstreamURL_;
    std::optional<std::string> upstreamURL_;
    std::optional<Branches> branches_;
    std::optional<std::string> URL_;
    std::optional<std::string> pushURL_;
    std::optional<std::string> proxy_;
    std::optional<std::vector<std::string>> fetchRefSpecs_;
    std::optional<std::vector<std::string>> pushRefSpecs_;
    bool skipsDefaultUpdate_ = false;
    bool skipsFetchAll_ = false;
    bool isSVNRemote_;
    std::optional<std::string> SVNUUID_;
    mutable std::optional<std::string> SVNPrefix_;
    std::optional<std::vector<std::string>> SVNTrunkRefSpecs_;
    std::optional<std::vector<std::string>> SVNBranchRefSpecs_;
    std::optional<std::vector<std::string>> SVNTagRefSpecs_;
    std::shared_ptr<RVGitRemoteConfig> config_;
};
