#include "RVGit/remotes/RVGitPullCommand.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/merge/RVGitEditorScript.h"
#include "RVGit/merge/RVGitMergeCommand.h"
#include "RVGit/merge/RVGitRebaseCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitTransfer.h"
#include "RVGit/repository/RVGitRefSpec.h"

RVGitPullCommand::RVGitPullCommand(const std::shared_ptr<RVGitRepository>& repository,
                                   std::shared_ptr<RVGitRemote> remote,
                                   std::shared_ptr<RVGitRefSpec> refSpec,
                                   const std::optional<RVOptions>& options)
    : RVGitCommand(repository),
      remote_(std::move(remote)),
      refSpec_(std::move(refSpec)),
      usesRebase_(optionIsSet(options, RVGitPullOptionRebase)),
      preservesMergeCommits_(optionIsSet(options, RVGitPullOptionPreserveMergeCommits)),
      noVerify_(optionIsSet(options, RVGitPullOptionNoVerify)) {
    setSupportsProgressOutput(true);
    openNoEditor(*this);
}

std::shared_ptr<RVGitPullCommand> RVGitPullCommand::gitPullCommandWithRepository(
    const std::shared_ptr<RVGitRepository>& repository, std::shared_ptr<RVGitRemote> remote,
    std::shared_ptr<RVGitRefSpec> refSpec, const std::optional<RVOptions>& options) {
    return std::make_shared<RVGitPullCommand>(repository, std::move(remote), std::move(refSpec),
                                              options);
}

std::string RVGitPullCommand::remoteName() const {
    return nameOfRemote(remote_);
}

const RVGitErrorTable& RVGitPullCommand::gitErrorDefinitions() {
    static const RVNeverDestroyed<RVGitErrorTable> table([] {
        RVGitErrorTable rows = RVGitMergeCommand::gitErrorDefinitions();
        const RVGitErrorTable& rebaseRows = RVGitRebaseCommand::gitErrorDefinitions();
        rows.insert(rows.end(), rebaseRows.begin(), rebaseRows.end());
        return rows;
    }());
    return *table;
}

void RVGitPullCommand::gitCommandWillInitialize() {
    setGitCommand("pull");
    openNoEditorUnlessSet(*this);
    addGitCommandOptions({"-v", "--progress"});
    addGitCommandOptionsThatAreSet({{noVerify_, "--no-verify"},
                                    {usesRebase_, "--rebase"},
                                    {!usesRebase_, "--no-rebase"},
                                    {preservesMergeCommits_, "-p"},
                                    {verifiesSignatures_, "--verify-signatures"}});
    if (verifiesSignatures_ && allowedSignersFile_)
        addGitOptions({"-c", "gpg.ssh.allowedSignersFile=" + *allowedSignersFile_});
    addGitCommandName(remoteName());
    if (refSpec_)
        addGitCommandName(refSpec_->stringValue());
}

RVUserInfo RVGitPullCommand::gitCommandWillUseErrorUserInfo(RVUserInfo userInfo) {
    return userInfoOfFetch(std::move(userInfo), remote_, refSpec_);
}
