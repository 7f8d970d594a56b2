// Branches, remotes, transfers and credentials are given names that nobody chose well.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVURL.h"
#include "RVGit/remotes/RVGitBranch.h"
#include "RVGit/remotes/RVGitBranchTrackingState.h"
#include "RVGit/remotes/RVGitCloneCommand.h"
#include "RVGit/remotes/RVGitCredentialCommand.h"
#include "RVGit/remotes/RVGitFetchCommand.h"
#include "RVGit/remotes/RVGitLsRemoteCommand.h"
#include "RVGit/remotes/RVGitPullCommand.h"
#include "RVGit/remotes/RVGitPushCommand.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRef.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "RVGit/repository/RVGitRepository.h"
#include "fuzz/support/RVHostileSandbox.h"

namespace {

using Sandbox = RVHostileSandbox;
using Text = std::string;
using Operation = Sandbox::Operation;
using Repository = std::shared_ptr<RVGitRepository>;

Operation plain(void (*run)(const Repository&, const Text& a, const Text& b), unsigned flags = 0) {
    return {[run](const Sandbox& sandbox, const Text& a, const Text& b) {
                run(sandbox.repository(), a, b);
            },
            flags};
}

/// Of a branch that is there, as far as git allows the name.
Operation withBranch(void (*run)(const Repository&, const Text& a, const Text& b)) {
    return {[run](const Sandbox& sandbox, const Text& a, const Text& b) {
                if (a.find('\0') == Text::npos)
                    (void)sandbox.git({"update-ref", "refs/heads/" + a, "HEAD"});
                run(sandbox.repository(), a, b);
            },
            Sandbox::RealOnly};
}

std::shared_ptr<RVGitRemote> remoteNamed(const Repository& repository, const Text& name) {
    return RVGitRemote::remoteWithRepository(repository, name, std::nullopt, std::nullopt,
                                             std::nullopt);
}

/// Of a remote that the configuration names so, whatever it is.
Operation withRemote(void (*run)(const Repository&, const Text& a, const Text& b),
                     const char* section = "remote") {
    return {[run, section](const Sandbox& sandbox, const Text& a, const Text& b) {
                if (a.find('\0') == Text::npos && a.find('\n') == Text::npos) {
                    Text quoted;
                    for (const char c : a) {
                        if (c == '"' || c == '\\')
                            quoted += '\\';
                        quoted += c;
                    }
                    const Text name = '[' + Text(section) + " \"" + quoted + "\"]\n";
                    (void)sandbox.write(".git/config", "[core]\n\trepositoryformatversion = 0\n" +
                                                           name +
                                                           "\turl = ../remote.git\n\tfetch = "
                                                           "+refs/heads/*:refs/remotes/origin/*\n");
                }
                run(sandbox.repository(), a, b);
            },
            Sandbox::RealOnly};
}

Operation transfer(std::shared_ptr<RVGitCommand> (*make)(const Sandbox&, const Text& a,
                                                         const Text& b),
                   unsigned flags = 0) {
    return {[make](const Sandbox& sandbox, const Text& a, const Text& b) {
                use(make(sandbox, a, b)->run());
            },
            flags};
}

const std::vector<Operation>& operations() {
    static const RVNeverDestroyed<std::vector<Operation>> list = {
        // Branches.
        plain(
            [](auto& r, auto& a, auto& b) { use(RVGitBranch::createBranchWithRefName(a, b, r)); }),
        plain([](auto& r, auto& a, auto&) {
            use(RVGitBranch::createBranchWithRefName("new", a, r));
        }),
        plain([](auto& r, auto& a, auto&) {
            use(RVGitBranch::createBranchWithRefName(a, std::nullopt, r));
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(RVGitBranch::createTrackingBranchWithRefName(a, b, r));
        }),
        plain([](auto& r, auto& a, auto&) {
            use(RVGitBranch::createTrackingBranchWithRefName(a, "origin/main", r));
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(RVGitBranch::renameBranchWithRefName("other", a, r, false));
            use(RVGitBranch::renameBranchWithRefName(a, b, r, true));
        }),
        withBranch([](auto& r, auto& a, auto& b) {
            use(RVGitBranch::allBranchesForRepository(r));
            use(RVGitBranch::renameBranchWithRefName(a, b, r, true));
        }),
        withBranch([](auto& r, auto& a, auto& b) {
            use(RVGitBranch::deleteBranchesWithRefNames({a, b}, r, true));
        }),
        withBranch([](auto& r, auto& a, auto&) {
            use(RVGitBranch::deleteBranchWithRefName(a, r, false));
        }),
        withBranch([](auto& r, auto& a, auto& b) {
            use(RVGitBranch::addTrackingForBranchWithRefName(a, "origin/main", r));
            use(RVGitBranch::setRebaseOption(true, a, r));
            use(RVGitBranch::setMergeOptions(b, a, r));
            use(RVGitBranch::unsetRebaseOptionForBranchWithRefName(a, r));
            use(RVGitBranch::unsetMergeOptionsForBranchWithRefName(a, r));
            use(RVGitBranch::removeTrackingForBranchWithRefName(a, r));
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(RVGitBranch::addTrackingForBranchWithRefName("main", a, r));
            use(RVGitBranch::setMergeOptions(a, b, r));
            use(RVGitBranch::removeTrackingForBranchWithRefName(b, r));
        }),
        withBranch([](auto& r, auto& a, auto&) {
            if (const auto branch = RVGitBranch::branchForRefName(a, r)) {
                use(branch->trackedRefs());
                use(branch->trackedRemote());
                use(branch->isTrackingSVNBranch());
                use(branch->commit());
            }
            use(RVGitBranch::trackingStateForBranchWithRefName(a, r));
        }),
        // Remotes.
        plain([](auto& r, auto& a, auto& b) { use(RVGitRemote::createRemoteWithName(a, b, r)); }),
        plain([](auto& r, auto& a, auto&) {
            use(RVGitRemote::createRemoteWithName("new", a, r));
            use(RVGitRemote::renameRemoteWithName("origin", a, r));
        }),
        withRemote([](auto& r, auto& a, auto&) {
            use(RVGitRemote::allRemotesForRepository(r));
            use(RVGitRemote::deleteRemoteWithName(a, r));
        }),
        withRemote(
            [](auto& r, auto& a, auto& b) { use(RVGitRemote::renameRemoteWithName(a, b, r)); }),
        withRemote([](auto& r, auto& a, auto& b) {
            use(RVGitRemote::existsRemoteWithName(a, r));
            use(RVGitRemote::setURL(b, a, r));
            use(RVGitRemote::setPushURL(b, a, r));
            use(RVGitRemote::setFetchRefSpecs({b, a}, a, r));
            use(RVGitRemote::setPushRefSpecs({b}, a, r));
            use(RVGitRemote::setProxy(b, a, r));
            use(RVGitRemote::unsetPushRefSpecsForRemoteWithName(a, r));
        }),
        plain([](auto& r, auto& a, auto& b) {
            use(RVGitRemote::setURL(a, "origin", r));
            use(RVGitRemote::setFetchRefSpecs({a, b}, "origin", r));
            use(RVGitRemote::setSkipsFetchAll(true, a, r));
            use(RVGitRemote::remoteForName(a, r));
        }),
        withBranch([](auto& r, auto& a, auto& b) {
            use(RVGitRemoteBranch::allRemoteBranchesForRepository(r));
            use(RVGitRemoteBranch::remoteBranchForRefName(a, r));
            use(RVGitRemoteBranch::remoteBranchForRefName("origin/" + b, r));
        }),
        // Transfers.
        transfer([](auto& s, auto& a, auto&) -> std::shared_ptr<RVGitCommand> {
            return RVGitFetchCommand::gitFetchCommandWithRepository(
                s.repository(), a, RVGitRefSpec::refSpecFromString("main"));
        }),
        transfer([](auto& s, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
            return RVGitFetchCommand::gitFetchCommandWithRepository(
                s.repository(), remoteNamed(s.repository(), a), RVGitRefSpec::refSpecFromString(b),
                RVOptions{{RVGitFetchOptionForceTagsDownload, true}});
        }),
        transfer([](auto& s, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
            return RVGitFetchCommand::gitFetchCommandWithRepository(
                s.repository(), remoteNamed(s.repository(), "origin"),
                RVGitRefSpec::refSpecWithLocalRefName(a, b), std::nullopt);
        }),
        transfer([](auto& s, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
            return RVGitPullCommand::gitPullCommandWithRepository(
                s.repository(), remoteNamed(s.repository(), a), RVGitRefSpec::refSpecFromString(b),
                std::nullopt);
        }),
        transfer([](auto& s, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
            auto command = RVGitPullCommand::gitPullCommandWithRepository(
                s.repository(), remoteNamed(s.repository(), "origin"),
                RVGitRefSpec::refSpecFromString(a), RVOptions{{RVGitPullOptionRebase, true}});
            command->setVerifiesSignatures(true);
            command->setAllowedSignersFile(b);
            return command;
        }),
        transfer(
            [](auto& s, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
                return RVGitPushCommand::gitPushCommandWithRepository(
                    s.repository(), remoteNamed(s.repository(), a),
                    RVGitRefSpec::refSpecFromString(b), std::nullopt);
            },
            Sandbox::Pushes),
        transfer(
            [](auto& s, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
                return RVGitPushCommand::gitPushCommandWithRepository(
                    s.repository(), remoteNamed(s.repository(), "origin"),
                    RVGitRefSpec::refSpecWithLocalRefName(a, b), std::nullopt);
            },
            Sandbox::Pushes),
        transfer(
            [](auto& s, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
                auto command = RVGitPushCommand::gitPushCommandWithRepository(
                    s.repository(), remoteNamed(s.repository(), "origin"),
                    RVGitRefSpec::refSpecWithLocalRefName("main", a),
                    RVOptions{{RVGitPushOptionForcePushWithLease, true}});
                command->setLeaseValueCommitHash(b);
                return command;
            },
            Sandbox::Pushes),
        transfer(
            [](auto& s, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
                const auto command = RVGitPushCommand::gitPushCommandWithRepositoryDeletingTag(
                    s.repository(), remoteNamed(s.repository(), "origin"), b);
                use(command->run());
                return RVGitPushCommand::gitPushCommandWithRepositoryDeletingBranch(
                    s.repository(), remoteNamed(s.repository(), "origin"), a);
            },
            Sandbox::Pushes),
        transfer([](auto&, auto& a, auto&) -> std::shared_ptr<RVGitCommand> {
            use(RVGitLsRemoteCommand::canConnectToRemoteAtURL(a));
            return RVGitLsRemoteCommand::gitLsRemoteCommandWithRemoteURL(
                a, RVOptions{{RVGitLsRemoteOptionHeads, true}});
        }),
        transfer(
            [](auto& s, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
                return RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                    a, s.out() + "/" + Sandbox::component(b), std::nullopt);
            },
            Sandbox::Makes),
        transfer(
            [](auto& s, auto& a, auto&) -> std::shared_ptr<RVGitCommand> {
                return RVGitCloneCommand::gitCloneCommandWithRemoteURL(
                    s.tree() + "/../remote.git", s.out() + "/" + Sandbox::component(a),
                    RVOptions{{RVGitCloneOptionFilter, a},
                              {RVGitCloneOptionInitializeSubmodules, true}});
            },
            Sandbox::Makes),
        // The working directory of this process is nobody's: nothing may come to be there.
        transfer(
            [](auto& s, auto& a, auto&) -> std::shared_ptr<RVGitCommand> {
                return RVGitCloneCommand::gitCloneCommandWithRemoteURL(s.tree() + "/../remote.git",
                                                                       a, std::nullopt);
            },
            Sandbox::IdleOnly),
        // Credentials. The real helpers are those of the user's configuration: there are none.
        transfer([](auto&, auto& a, auto& b) -> std::shared_ptr<RVGitCommand> {
            use(RVGitCredentialCommand::gitFillCredentialCommandWithHTTPURL(RVURL(a))->run());
            use(RVGitCredentialCommand::gitRejectCredentialCommandWithHTTPURL(
                    RVURL("https://host/" + a))
                    ->run());
            return RVGitCredentialCommand::gitApproveCredentialCommandWithHTTPURL(
                RVURL("https://host"), a, b);
        }),
    };
    return *list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return runInSandbox(operations(), data, size);
}
