#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "RVGit/remotes/RVGitRemote.h"
#include "RVGit/remotes/RVGitRemoteBranch.h"
#include "tests/support/RVCancelledCall.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVRepositorySnapshot.h"

namespace {

using Operation = std::function<bool(RVErrorPlace)>;

class RVGitRemoteThreadsTest : public RVGitRepositoryTestCase {
protected:
    RVGitRemoteThreadsTest() {
        hash_ = makeCommit();
        gitInRepository({"remote", "add", "origin", "/nowhere"});
        gitInRepository({"config", "remote.origin.pushurl", "/there"});
        gitInRepository({"update-ref", "refs/remotes/origin/main", hash_});
    }

    /// The operation is cancelled in the call, says so, and changes nothing of the repository.
    void expectNothingChanged(const RVHangingGit::Call& call, const Operation& operation) {
        const RVRepositorySnapshot before(repositoryPath());
        const std::string config = readFile("repository/.git/config");
        error = RVError("before", 1);
        {
            const RVCancelledCall cancelled(scratchPath("hanging-git"), gitPath(), call);
            EXPECT_FALSE(operation(&error)) << call.pattern << " " << call.skipped;
        }
        EXPECT_EQ(error, std::nullopt) << call.pattern << " " << call.skipped;
        EXPECT_EQ(RVRepositorySnapshot(repositoryPath()).differencesFrom(before), "");
        EXPECT_EQ(readFile("repository/.git/config"), config);
    }
    [[nodiscard]] Operation deleting(const std::string& name) const {
        return [this, name](RVErrorPlace place) {
            return RVGitRemote::deleteRemoteWithName(name, repository(), place);
        };
    }
    [[nodiscard]] Operation renaming(const std::string& name, const std::string& newName) const {
        return [this, name, newName](RVErrorPlace place) {
            return RVGitRemote::renameRemoteWithName(name, newName, repository(), place);
        };
    }

    std::string hash_;
    std::optional<RVError> error;
};

TEST_F(RVGitRemoteThreadsTest, ADeletionThatIsCancelledKeepsTheBranchesOfARemoteThatStays) {
    for (const char* pattern : {"*' config '*", "*' branch '*", "*' for-each-ref '*"})
        expectNothingChanged({pattern}, deleting("origin"));
    for (const char* pattern : {"*' remote -v '*", "*' remote rm '*"})
        expectNothingChanged({pattern}, deleting("origin"));
    EXPECT_EQ(gitInRepository({"rev-parse", "refs/remotes/origin/main"}), hash_);
    ASSERT_TRUE(RVGitRemote::deleteRemoteWithName("origin", repository()));
    EXPECT_FALSE(fileExists("repository/.git/refs/remotes/origin"));
}

TEST_F(RVGitRemoteThreadsTest, ARenamingThatIsCancelledIsNoSuccess) {
    for (const char* pattern : {"*' config '*", "*' remote rename '*"}) {
        expectNothingChanged({pattern}, renaming("origin", "new"));
        expectNothingChanged({pattern}, renaming("origin", "Origin"));
    }
    ASSERT_TRUE(RVGitRemote::renameRemoteWithName("origin", "new", repository()));
    EXPECT_EQ(gitInRepository({"rev-parse", "refs/remotes/new/main"}), hash_);
}

TEST_F(RVGitRemoteThreadsTest, AnAddressOfWhichItWasNotReadWhetherItIsSetIsNotUnset) {
    expectNothingChanged({"*' config '*pushurl*"}, [&](RVErrorPlace place) {
        return RVGitRemote::unsetPushURLForRemoteWithName("origin", repository(), place);
    });
    ASSERT_TRUE(RVGitRemote::unsetPushURLForRemoteWithName("origin", repository()));
    EXPECT_NE(runGit({"config", "remote.origin.pushurl"}, repositoryPath()).exitCode, 0);
}

TEST_F(RVGitRemoteThreadsTest, ARemoteOfWhichItWasNotReadWhetherItExistsIsNotMade) {
    for (const char* pattern : {"*' config '*", "*' remote add '*"})
        for (const bool isSVNRemote : {false, true}) {
            if (isSVNRemote && std::string(pattern).find("config") == std::string::npos)
                continue;
            expectNothingChanged({pattern}, [&](RVErrorPlace place) {
                return isSVNRemote ? RVGitRemote::createSVNRemoteWithName(
                                         "origin", "svn://host", repository(), std::nullopt,
                                         place) != nullptr
                                   : RVGitRemote::createRemoteWithName("new", "/new", repository(),
                                                                       place) != nullptr;
            });
        }
}

TEST_F(RVGitRemoteThreadsTest, BranchesWhoseRemotesWereNotReadAreNoList) {
    // The lists themselves have long been read then.
    for (const int skipped : {0, 1})
        expectNothingChanged({"*' config '*", skipped, "sleep 0.3"}, [&](RVErrorPlace place) {
            return RVGitRemoteBranch::allRemoteBranchesForRepository(repository(), place)
                .has_value();
        });
    EXPECT_EQ(RVGitRemoteBranch::allRemoteBranchesForRepository(repository())->size(), 1U);
}

}  // namespace
