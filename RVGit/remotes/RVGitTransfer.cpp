#include "RVGit/remotes/RVGitTransfer.h"

#include "RVGit/base/RVFileManager.h"
#include "RVGit/command/RVGitCommand.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"

std::string rvgit::nameOfRemote(const std::shared_ptr<RVGitRemote>& remote) {
    return remote ? remote->name() : RVGitLocalRemoteName;
}

RVUserInfo rvgit::userInfoOfFetch(RVUserInfo userInfo, const std::shared_ptr<RVGitRemote>& remote,
                                  const std::shared_ptr<RVGitRefSpec>& refSpec) {
    userInfo.insert_or_assign(RVGitRemoteNameErrorKey, nameOfRemote(remote));
    if (refSpec)
        userInfo.insert_or_assign(RVGitRefSpecErrorKey, refSpec->stringValue());
    if (remote && remote->downstreamURL())
        userInfo.insert_or_assign(RVGitRemoteURLErrorKey, *remote->downstreamURL());
    return userInfo;
}

void rvgit::addPlaceOfClone(RVGitCommand& command, const std::string& localPath) {
    if (RVFileManager::fileExistsAtPath(localPath)) {
        command.setWorkingDirectory(localPath);
        command.addGitCommandArgument(".");
    } else {
        command.addGitCommandFilePath(localPath);
    }
}
