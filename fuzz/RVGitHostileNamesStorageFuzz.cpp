// Large files, Subversion remotes and archives are given names that nobody chose well.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/archive/RVGitArchiveCommand.h"
#include "RVGit/archive/RVGitArchiver.h"
#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVOperationQueue.h"
#include "RVGit/lfs/RVGitLFSCleanCommand.h"
#include "RVGit/lfs/RVGitLFSManager.h"
#include "RVGit/lfs/RVGitLFSPointer.h"
#include "RVGit/lfs/RVGitLFSSmudgeCommand.h"
#include "RVGit/lfs/RVGitLFSTrackCommand.h"
#include "RVGit/lfs/RVGitLFSTransferCommands.h"
#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/repository/RVGitRefSpec.h"
#include "RVGit/repository/RVGitRepository.h"
#include "RVGit/svn/RVGitSVNCommand.h"
#include "RVGit/svn/RVGitSVNOptions.h"
#include "fuzz/support/RVHostileSandbox.h"

namespace {

using Sandbox = RVHostileSandbox;
using Text = std::string;
using Texts = std::vector<std::string>;
using Operation = Sandbox::Operation;
using Repository = std::shared_ptr<RVGitRepository>;

std::shared_ptr<RVGitRemote> remoteNamed(const Repository& repository, const Text& name) {
    return RVGitRemote::remoteWithRepository(repository, name, std::nullopt, std::nullopt,
                                             std::nullopt);
}
std::shared_ptr<RVGitRemote> SVNRemoteNamed(const Repository& repository, const Text& name,
                                            const Text& URL) {
    return RVGitRemote::SVNRemoteWithRepository(repository, name, URL, URL, std::nullopt);
}

Operation plain(void (*run)(const Sandbox&, const Text& a, const Text& b), unsigned flags = 0) {
    return {run, flags};
}

/// Of a Subversion remote that is there, as far as git allows the name.
Operation bridged(void (*run)(const Repository&, const Text& a, const Text& b)) {
    return {[run](const Sandbox& sandbox, const Text& a, const Text& b) {
                if (a.find('\0') == Text::npos) {
                    const Text key = "svn-remote." + a + '.';
                    for (const char* path : {"trunk:refs/remotes/", "branches/*:refs/remotes/"})
                        (void)sandbox.git({"config", "--add", key + "fetch", path + a + "/trunk"});
                    (void)sandbox.git({"config", key + "url", "svn://127.0.0.1/none"});
                    (void)sandbox.git({"update-ref", "refs/remotes/" + a + "/trunk", "HEAD"});
                }
                run(sandbox.repository(), a, b);
            },
            Sandbox::RealOnly};
}

void archive(const Sandbox& sandbox, const Text& revision, const std::optional<Texts>& filePaths,
             const Text& destination) {
    const auto archiver =
        std::make_shared<RVGitArchiver>(sandbox.repository(), revision, filePaths, destination);
    use(archiver->run());
}

const std::vector<Operation>& operations() {
    static const RVNeverDestroyed<std::vector<Operation>> list = {
        // Large files.
        plain([](auto& s, auto& a, auto& b) {
            RVGitLFSManager manager(s.repository());
            use(manager.addTrackedFilePatterns({a, b}));
            use(manager.allTrackingEntries());
            use(manager.removeTrackedFilePatterns({b, a}));
        }),
        plain([](auto& s, auto& a, auto& b) {
            RVGitLFSManager manager(s.repository());
            use(manager.track({a}));
            use(manager.untrack({b}));
        }),
        plain([](auto& s, auto& a, auto& b) {
            RVGitLFSManager manager(s.repository());
            use(manager.allTrackedFilesForRevision(a));
            use(manager.allTrackedFilesForRevision(b));
        }),
        plain(
            [](auto& s, auto& a, auto& b) {
                RVGitLFSManager manager(s.repository());
                s.write(Sandbox::component(a), b);
                use(manager.createPointerFromFileAtPath(s.tree() + '/' + Sandbox::component(a)));
            },
            Sandbox::RealOnly),
        plain([](auto& s, auto& a, auto& b) {
            RVGitLFSManager manager(s.repository());
            if (const auto pointer = manager.pointerFromData(a + '\n' + b))
                use(manager.createFileFromPointer(pointer, s.tree() + "/smudged"));
            const auto named = std::make_shared<RVGitLFSPointer>(
                RVGitLFSPointer::Entries{
                    {"version", "https://git-lfs.github.com/spec/v1"}, {"oid", a}, {"size", b}},
                "version https://git-lfs.github.com/spec/v1\noid " + a + "\nsize " + b + "\n");
            use(manager.createFileFromPointer(named, s.tree() + '/' + Sandbox::component(b)));
        }),
        plain(
            [](auto& s, auto& a, auto&) {
                RVGitLFSManager manager(s.repository());
                const auto remote = remoteNamed(s.repository(), a);
                use(manager.fetchRemote(remote));
                use(manager.pullRemote(remote));
                use(manager.pushRemote(remote));
            },
            Sandbox::IdleOnly),
        plain(
            [](auto& s, auto& a, auto& b) {
                RVGitLFSManager manager(s.repository());
                const auto remote = remoteNamed(s.repository(), a);
                use(manager.pushRemote(remote, {RVGitRefSpec::refSpecFromString(b),
                                                RVGitRefSpec::refSpecFromString(a)}));
                const auto fetch =
                    RVGitLFSFetchCommand::gitLFSFetchCommandWithRepository(s.repository());
                fetch->setRemote(remote);
                fetch->setRefSpec(RVGitRefSpec::refSpecFromString(b));
                use(fetch->run());
            },
            Sandbox::IdleOnly),
        plain(
            [](auto& s, auto& a, auto& b) {
                RVGitLFSManager manager;
                manager.cloneRepositoryAtURL(a, s.out() + '/' + Sandbox::component(b), std::nullopt,
                                             {}, nullptr, nullptr);
                manager.cloneRepositoryAtURL("url", b, std::nullopt, {{"GIT_EXAMPLE", a}}, nullptr,
                                             nullptr);
                manager.commandQueue().waitUntilAllOperationsAreFinished();
            },
            Sandbox::IdleOnly | Sandbox::Makes),
        // Subversion.
        plain([](auto& s, auto& a, auto& b) {
            use(RVGitRemote::createSVNRemoteWithName(
                a, b, s.repository(), RVOptions{{RVGitSVNOptionStandardDirectoryLayout, true}}));
            use(RVGitRemote::createSVNRemoteWithName(
                b, "svn://127.0.0.1/none", s.repository(),
                RVOptions{{RVGitSVNOptionTrunkDirectories, Texts{a}},
                          {RVGitSVNOptionBranchesDirectories, Texts{b}},
                          {RVGitSVNOptionTagsDirectories, Texts{a, b}}}));
        }),
        bridged([](auto& r, auto& a, auto& b) {
            use(RVGitRemote::allRemotesForRepository(r));
            use(RVGitRemote::renameRemoteWithName(a, b, r));
            use(RVGitRemote::deleteRemoteWithName(b, r));
        }),
        bridged([](auto& r, auto& a, auto&) { use(RVGitRemote::deleteRemoteWithName(a, r)); }),
        bridged([](auto& r, auto& a, auto& b) {
            use(RVGitRemote::setURL(b, a, r));
            use(RVGitRemote::setSVNTrunkRefSpecs({b}, a, r));
            use(RVGitRemote::setSVNBranchRefSpecs({b, a}, a, r));
            use(RVGitRemote::setSVNTagRefSpecs({b}, a, r));
            use(RVGitRemote::unsetSVNTagRefSpecsForRemoteWithName(a, r));
            use(RVGitRemote::updateSVNRefSpecsForConfigKey("fetch", a, b, r));
            use(RVGitRemote::updateSVNRefSpecsForConfigKey("fetch", b, a, r));
        }),
        bridged([](auto& r, auto& a, auto& b) {
            use(RVGitRemote::renameRemoteWithName(a, "svn", r));
            use(RVGitRemote::renameRemoteWithName("svn", b, r));
        }),
        plain(
            [](auto& s, auto& a, auto& b) {
                const auto remote = SVNRemoteNamed(s.repository(), a, b);
                use(std::make_shared<RVGitSVNFetchCommand>(s.repository(), remote)->run());
                use(std::make_shared<RVGitSVNRebaseCommand>(s.repository(), remote)->run());
                use(RVGitSVNDCommitCommand::gitSVNDCommitCommandWithRepository(s.repository(),
                                                                               remote, a)
                        ->run());
            },
            Sandbox::IdleOnly),
        plain(
            [](auto& s, auto& a, auto& b) {
                const auto remote = SVNRemoteNamed(s.repository(), a, b);
                const auto branch = RVGitSVNBranchCommand::gitSVNBranchCommandWithRepository(
                    s.repository(), remote, a, b);
                branch->setMessage(b);
                branch->setDestination(a);
                use(branch->run());
                use(RVGitSVNTagCommand::gitSVNTagCommandWithRepository(s.repository(), nullptr, b,
                                                                       a)
                        ->run());
            },
            Sandbox::IdleOnly),
        plain(
            [](auto& s, auto& a, auto& b) {
                use(RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
                        a, s.out() + '/' + Sandbox::component(b), std::nullopt)
                        ->run());
                const auto clone = RVGitSVNCloneCommand::gitSVNCloneCommandWithRemoteURL(
                    "svn://127.0.0.1/none", b, std::nullopt);
                clone->setTrunkDirectories({a});
                clone->setBranchDirectories({a, b});
                clone->setTagDirectories({b});
                use(clone->run());
            },
            Sandbox::IdleOnly | Sandbox::Makes),
        // Archives.
        plain([](auto& s, auto& a, auto& b) { archive(s, a, Texts{b}, s.out() + "/a.zip"); },
              Sandbox::Makes),
        plain(
            [](auto& s, auto& a, auto& b) {
                archive(s, "HEAD", Texts{a, b}, s.out() + "/a");
            },
            Sandbox::Makes),
        plain(
            [](auto& s, auto& a, auto& b) {
                archive(s, "HEAD", std::nullopt, s.out() + '/' + Sandbox::component(a));
                archive(s, b, std::nullopt, Sandbox::component(a));
            },
            Sandbox::Makes),
    };
    return *list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return runInSandbox(operations(), data, size);
}
