#include <functional>
#include <optional>
#include <string>

#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/svn/RVGitSVNOptions.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

class RVGitSVNRemoteThreadsTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] bool create(const std::string& name, RVErrorPlace place = nullptr) const {
        return RVGitRemote::createSVNRemoteWithName(
                   name, "svn://host", repository(),
                   RVOptions{{RVGitSVNOptionStandardDirectoryLayout, true}}, place) != nullptr;
    }
    /// A remote that has been fetched from.
    void makeFetched() {
        ASSERT_TRUE(create("svn"));
        gitInRepository({"update-ref", "refs/remotes/svn/trunk", makeCommit()});
        writeFile("repository/.git/svn/.metadata", "[svn-remote \"svn\"]\n\tuuid = 22b0\n");
    }
    /// The operation, cancelled in the call, is no success; what it has written is `written`, in
    /// the words of git config.
    void expectCancelled(const RVHangingGit::Call& call,
                         const std::function<bool(RVErrorPlace)>& operation,
                         const std::string& written) const {
        std::optional<RVError> error = RVError("before", 1);
        {
            const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), call);
            EXPECT_FALSE(operation(&error)) << call.pattern << " " << call.skipped;
        }
        EXPECT_EQ(error, std::nullopt);
        EXPECT_EQ(config(), written) << call.pattern << " " << call.skipped;
    }
    [[nodiscard]] std::string config() const {
        return runGit({"config", "--get-regexp", "^svn-remote"}, repositoryPath()).standardOutput;
    }
    [[nodiscard]] std::string refs() const {
        return gitInRepository({"for-each-ref", "--format=%(refname)", "refs/remotes"});
    }
};

TEST_F(RVGitSVNRemoteThreadsTest, OfARemoteWhoseMakingIsCancelledNothingMoreIsWritten) {
    const std::string url = "svn-remote.svn.url svn://host\n";
    const std::string trunk = "svn-remote.svn.fetch trunk:refs/remotes/svn/trunk\n";
    const std::string written[] = {"", "", url, url + trunk};
    for (int skipped = 0; skipped < 4; ++skipped) {
        expectCancelled(
            {"*' config '*", skipped}, [&](RVErrorPlace place) { return create("svn", place); },
            written[skipped]);
        if (!written[skipped].empty())
            gitInRepository({"config", "--remove-section", "svn-remote.svn"});
    }
    ASSERT_TRUE(create("svn"));
}

TEST_F(RVGitSVNRemoteThreadsTest, ADeletionThatIsCancelledKeepsTheMetadataOfARemoteThatStays) {
    makeFetched();
    const std::string before = config();
    const std::string metadata = readFile("repository/.git/svn/.metadata");
    const auto deleting = [&](RVErrorPlace place) {
        return RVGitRemote::deleteRemoteWithName("svn", repository(), place);
    };
    expectCancelled({"*' --remove-section '*"}, deleting, before);
    EXPECT_EQ(readFile("repository/.git/svn/.metadata"), metadata);
    expectCancelled({"*' --remove-section '*", 1}, deleting, "");
    EXPECT_EQ(readFile("repository/.git/svn/.metadata"), metadata);
}

TEST_F(RVGitSVNRemoteThreadsTest, ARenamingThatIsCancelledGoesNoFurther) {
    makeFetched();
    const std::string before = config();
    const std::string metadata = readFile("repository/.git/svn/.metadata");
    const auto renaming = [&](RVErrorPlace place) {
        return RVGitRemote::renameRemoteWithName("svn", "new", repository(), place);
    };
    expectCancelled({"*' --rename-section '*"}, renaming, before);
    EXPECT_EQ(readFile("repository/.git/svn/.metadata"), metadata);
    EXPECT_EQ(refs(), "refs/remotes/svn/trunk");
    ASSERT_TRUE(RVGitRemote::renameRemoteWithName("svn", "new", repository()));
    EXPECT_EQ(refs(), "refs/remotes/new/trunk");
}

TEST_F(RVGitSVNRemoteThreadsTest, RefSpecsThatWereNotReadAreNotSaidToBeUpdated) {
    makeFetched();
    gitInRepository({"config", "--rename-section", "svn-remote.svn", "svn-remote.new"});
    const std::string before = config();
    const auto updating = [&](RVErrorPlace place) {
        return RVGitRemote::updateSVNRefSpecsForConfigKey("fetch", "svn", "new", repository(),
                                                          place);
    };
    expectCancelled({"*' --get-all '*"}, updating, before);
    EXPECT_EQ(refs(), "refs/remotes/svn/trunk");
    ASSERT_TRUE(updating(nullptr));
    EXPECT_EQ(gitInRepository({"config", "svn-remote.new.fetch"}), "trunk:refs/remotes/new/trunk");
}

}  // namespace
