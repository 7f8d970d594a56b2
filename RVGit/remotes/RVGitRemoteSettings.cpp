#include "RVGit/command/RVGitCancellationWatch.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"

// The operations of RVGitRemote that write single keys of its configuration.

namespace {

using Repository = std::shared_ptr<RVGitRepository>;

}  // namespace

std::optional<std::string> RVGitRemote::configKeyForRemoteWithName(const std::string& remoteName,
                                                                   const Repository& repository,
                                                                   const char* key,
                                                                   const char* SVNKey,
                                                                   RVErrorPlace error) {
    const auto remote = remoteForName(remoteName, repository, error);
    if (!remote)
        return std::nullopt;
    if (!remote->isSVNRemote() && key)
        return RVGitMakeRemoteConfigKey(remote->name(), key);
    if (remote->isSVNRemote() && SVNKey)
        return RVGitMakeSVNRemoteConfigKey(remote->name(), SVNKey);
    clearErrorPlace(error);
    return std::nullopt;
}

bool RVGitRemote::unsetConfigKeyForRemoteWithName(const std::string& remoteName,
                                                  const Repository& repository, const char* key,
                                                  const char* SVNKey, RVErrorPlace error) {
    const auto configKey = configKeyForRemoteWithName(remoteName, repository, key, SVNKey, error);
    if (!configKey)
        return false;
    const RVGitCancellationWatch watch;
    const auto config = repository->config();
    const bool isSet = config->containsConfigKeyWithName(*configKey);
    return !watch.isCancelled(error) && (!isSet || config->unsetConfigKey(*configKey, error));
}

bool RVGitRemote::setURL(const std::string& URL, const std::string& remoteName,
                         const Repository& repository, RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(remoteName, repository, RVGitRemoteURLConfigKey,
                                                RVGitSVNRemoteURLConfigKey, error);
    return key && repository->config()->setValue(URL, *key, error);
}

bool RVGitRemote::setPushURL(const std::string& URL, const std::string& remoteName,
                             const Repository& repository, RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(remoteName, repository, RVGitRemotePushURLConfigKey,
                                                RVGitSVNRemoteCommitURLConfigKey, error);
    return key && repository->config()->setValue(URL, *key, error);
}

bool RVGitRemote::unsetPushURLForRemoteWithName(const std::string& remoteName,
                                                const Repository& repository, RVErrorPlace error) {
    return unsetConfigKeyForRemoteWithName(remoteName, repository, RVGitRemotePushURLConfigKey,
                                           RVGitSVNRemoteCommitURLConfigKey, error);
}

bool RVGitRemote::setFetchRefSpecs(const std::vector<std::string>& refSpecs,
                                   const std::string& remoteName, const Repository& repository,
                                   RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(remoteName, repository, RVGitRemoteFetchConfigKey,
                                                nullptr, error);
    return key && repository->config()->setValues(refSpecs, *key, error);
}

bool RVGitRemote::unsetFetchRefSpecsForRemoteWithName(const std::string& remoteName,
                                                      const Repository& repository,
                                                      RVErrorPlace error) {
    return unsetConfigKeyForRemoteWithName(remoteName, repository, RVGitRemoteFetchConfigKey,
                                           nullptr, error);
}

bool RVGitRemote::setPushRefSpecs(const std::vector<std::string>& refSpecs,
                                  const std::string& remoteName, const Repository& repository,
                                  RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(remoteName, repository, RVGitRemotePushConfigKey,
                                                nullptr, error);
    return key && repository->config()->setValues(refSpecs, *key, error);
}

bool RVGitRemote::unsetPushRefSpecsForRemoteWithName(const std::string& remoteName,
                                                     const Repository& repository,
                                                     RVErrorPlace error) {
    return unsetConfigKeyForRemoteWithName(remoteName, repository, RVGitRemotePushConfigKey,
                                           nullptr, error);
}

bool RVGitRemote::setProxy(const std::string& proxy, const std::string& remoteName,
                           const Repository& repository, RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(remoteName, repository, RVGitRemoteProxyConfigKey,
                                                nullptr, error);
    return key && repository->config()->setValue(proxy, *key, error);
}

bool RVGitRemote::unsetProxyForRemoteWithName(const std::string& remoteName,
                                              const Repository& repository, RVErrorPlace error) {
    return unsetConfigKeyForRemoteWithName(remoteName, repository, RVGitRemoteProxyConfigKey,
                                           nullptr, error);
}

bool RVGitRemote::setSkipsDefaultUpdate(bool skips, const std::string& remoteName,
                                        const Repository& repository, RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(
        remoteName, repository, RVGitRemoteSkipDefaultUpdateConfigKey, nullptr, error);
    return key && repository->config()->setBool(skips, *key, error);
}

bool RVGitRemote::unsetSkipsDefaultUpdateForRemoteWithName(const std::string& remoteName,
                                                           const Repository& repository,
                                                           RVErrorPlace error) {
    return unsetConfigKeyForRemoteWithName(remoteName, repository,
                                           RVGitRemoteSkipDefaultUpdateConfigKey, nullptr, error);
}

bool RVGitRemote::setSkipsFetchAll(bool skips, const std::string& remoteName,
                                   const Repository& repository, RVErrorPlace error) {
    const auto key = configKeyForRemoteWithName(remoteName, repository,
                                                RVGitRemoteSkipFetchAllConfigKey, nullptr, error);
    return key && repository->config()->setBool(skips, *key, error);
}

bool RVGitRemote::unsetSkipsFetchAllForRemoteWithName(const std::string& remoteName,
                                                      const Repository& repository,
                                                      RVErrorPlace error) {
    return unsetConfigKeyForRemoteWithName(remoteName, repository, RVGitRemoteSkipFetchAllConfigKey,
                                           nullptr, error);
}
