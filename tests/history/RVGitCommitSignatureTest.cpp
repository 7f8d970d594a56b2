#include "RVGit/command/RVGitError.h"
#include "RVGit/history/RVGitCommit.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "RVGit/objects/RVGitSignature.h"
#include "RVGit/repository/RVGitConfig.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/objects/RVGitSigningTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

class RVGitCommitSignatureTest : public RVGitSigningTestCase {
protected:
    RVGitCommitSignatureTest() {
        // The temporary file of allowed signers goes with the test.
        setEnvironmentVariable("TMPDIR", makeDirectory("temporary"));
        RVGitRepository::setTemporaryFilePath(std::nullopt);
    }
    ~RVGitCommitSignatureTest() override { RVGitRepository::setTemporaryFilePath(std::nullopt); }

    static void expectFingerprint(const RVGitSignature& signature, const std::string& fingerprint) {
        // Older gits do not tell it.
        if (isTestedGitAtLeast("2.20")) {
            EXPECT_EQ(signature.fingerprint(), fingerprint);
        } else {
            EXPECT_EQ(signature.fingerprint(), std::nullopt);
        }
    }

    // What the verification of a commit makes of it. A signature is there whatever git finds.
    RVGitSignature signatureOf(const std::string& revision,
                               const std::optional<std::string>& allowedSigners = std::nullopt) {
        RVOptions options = {{RVGitLogOptionVerifiesSignatures, true}, {RVGitLogOptionLimit, 1}};
        if (allowedSigners)
            options.emplace(RVGitLogOptionAllowedSignersFile, *allowedSigners);
        std::optional<RVError> error;
        const auto commits =
            RVGitCommit::allCommitsForRevisions({revision}, {}, repository(), options, &error);
        EXPECT_FALSE(error);
        EXPECT_TRUE(commits && commits->size() == 1);
        return commits && commits->size() == 1
                   ? *commits->front()->signature()
                   : RVGitSignature(std::nullopt, std::nullopt, std::nullopt, std::nullopt,
                                    std::nullopt);
    }
};

TEST_F(RVGitCommitSignatureTest, AGoodSignatureOfATrustedKey) {
    const std::string hash = signCommit(keys().good);
    const auto signature = signatureOf(hash);
    EXPECT_EQ(signature.status(), "G");
    EXPECT_EQ(signature.name(), "Marie Curie");
    EXPECT_EQ(signature.email(), "marie@example.org");
    expectFingerprint(signature, keys().good);
    EXPECT_EQ(signature.signingKey(), keys().good.substr(24));

    const auto commit = RVGitCommit::commitForCommitHash(hash, repository(), true);
    ASSERT_NE(commit, nullptr);
    EXPECT_EQ(commit->signature()->status(), "G");
    const auto unverified = RVGitCommit::commitForCommitHash(hash, repository());
    ASSERT_NE(unverified, nullptr);
    EXPECT_EQ(unverified->signature()->status(), std::nullopt);
}

TEST_F(RVGitCommitSignatureTest, AGoodSignatureOfAKeyThatNobodyTrusts) {
    const auto signature = signatureOf(signCommit(keys().nameless));
    EXPECT_EQ(signature.status(), "U");
    // A user without an address is no signer in the form "Name <address>".
    EXPECT_EQ(signature.name(), std::nullopt);
    EXPECT_EQ(signature.email(), std::nullopt);
    expectFingerprint(signature, keys().nameless);
}

TEST_F(RVGitCommitSignatureTest, AnExpiredSignature) {
    const auto signature = signatureOf(signCommit(keys().good, "20200102", true));
    EXPECT_EQ(signature.status(), "X");
    expectFingerprint(signature, keys().good);
}

TEST_F(RVGitCommitSignatureTest, AnExpiredKey) {
    const auto signature = signatureOf(signCommit(keys().expired, "20200102"));
    EXPECT_EQ(signature.status(), "Y");
    EXPECT_EQ(signature.name(), "Old Key");
}

TEST_F(RVGitCommitSignatureTest, ARevokedKey) {
    const auto signature = signatureOf(signCommit(keys().revoked));
    // 2.23 goes by the trust in the key, 2.13 and 2.34 do not.
    if (isTestedGitAtLeast("2.34")) {
        EXPECT_EQ(signature.status(), "R");
    } else {
        EXPECT_THAT(signature.status(), testing::AnyOf(testing::Eq("R"), testing::Eq("U")));
    }
    EXPECT_EQ(signature.email(), "lost@example.org");
}

TEST_F(RVGitCommitSignatureTest, ASignatureOfAnotherCommit) {
    const auto signature =
        signatureOf(alteredCommit(signCommit(keys().good), "\n\nSigned\n", "\n\nForged\n"));
    EXPECT_EQ(signature.status(), "B");
    EXPECT_EQ(signature.name(), "Marie Curie");
    EXPECT_EQ(signature.signingKey(), keys().good.substr(24));
}

TEST_F(RVGitCommitSignatureTest, AMissingKey) {
    const auto signature = signatureOf(signCommit(keys().missing));
    EXPECT_EQ(signature.status(), "E");
    EXPECT_EQ(signature.name(), std::nullopt);
    EXPECT_EQ(signature.signingKey(), keys().missing.substr(24));
}

TEST_F(RVGitCommitSignatureTest, AnSSHKeyIsGoodWhereItIsAllowedAndUnknownElsewhere) {
    RVGIT_TEST_NEEDS_GIT("2.34", "it knows no signatures by SSH");
    const std::string key = makeSSHKey("key");
    const std::string hash = signCommitWithSSH(key);
    EXPECT_EQ(signatureOf(hash, writeAllowedSigners({key})).status(), "G");
    EXPECT_EQ(signatureOf(hash, writeAllowedSigners({key})).signingKey(), fingerprintOfSSHKey(key));
    const auto unknown = signatureOf(hash, writeAllowedSigners({makeSSHKey("other")}));
    EXPECT_EQ(unknown.status(), "U");
    EXPECT_EQ(unknown.signingKey(), fingerprintOfSSHKey(key));
    EXPECT_EQ(
        signatureOf(alteredCommit(hash, "\n\nSigned\n", "\n\nForged\n"), writeAllowedSigners({key}))
            .status(),
        "B");
}

TEST_F(RVGitCommitSignatureTest, TheAllowedSignersAreFoundWhicheverWayTheyAreNamed) {
    RVGIT_TEST_NEEDS_GIT("2.34", "it knows no signatures by SSH");
    const std::string key = makeSSHKey("key");
    const std::string hash = signCommitWithSSH(key);
    const std::string file = writeAllowedSigners({key});
    writeFile(repositoryPath() + "/local-signers", readFile(file));
    const auto status = [&] {
        return signatureOf(hash, repository()->allowedSignersFileFullPath()).status();
    };
    // The temporary file allows nobody, and spares git a failure.
    EXPECT_EQ(status(), "U");
    setEnvironmentVariable("HOME", scratchDirectory());
    for (const std::string& name :
         {file, " " + file, std::string("local-signers"), std::string("~/allowed-signers")}) {
        EXPECT_TRUE(repository()->config()->setAllowedSignersFile(name));
        EXPECT_EQ(status(), "G") << name;
    }
    EXPECT_TRUE(repository()->config()->setAllowedSignersFile(scratchPath("missing")));
    EXPECT_EQ(status(), "U");
}

}  // namespace
