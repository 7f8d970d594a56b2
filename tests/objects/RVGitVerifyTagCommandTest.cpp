#include "RVGit/objects/RVGitVerifyTagCommand.h"

#include "RVGit/command/RVGitError.h"
#include "RVGit/objects/RVGitSignature.h"
#include "RVGit/objects/RVGitTag.h"
#include "tests/objects/RVGitSigningTestCase.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using testing::ElementsAre;
using testing::StartsWith;

const std::string goodOutput =
    "[GNUPG:] NEWSIG\n"
    "[GNUPG:] KEY_CONSIDERED 3D42B8ACFFC8CC80A5DA8BD9B8BE45D0F2F4D0A1 0\n"
    "[GNUPG:] SIG_ID 9KxoOrJxyzZ1n5m7kMzzkS2sZ2E 2020-01-02 1577934245\n"
    "[GNUPG:] GOODSIG B8BE45D0F2F4D0A1 Marie Curie (Paris) <marie@example.org>\n"
    "[GNUPG:] VALIDSIG 1111111111111111111111111111111111111111 2020-01-02 1577934245 0 4 0 22 8 "
    "00 3D42B8ACFFC8CC80A5DA8BD9B8BE45D0F2F4D0A1\n"
    "[GNUPG:] TRUST_ULTIMATE 0 pgp\n";

RVGitGPGTagSignatureOutputParserResultItem parsedGPG(std::string_view output,
                                                     bool succeeds = true) {
    RVGitGPGTagSignatureOutputParser parser(output);
    EXPECT_EQ(parser.parse(), succeeds) << output;
    return parser.result();
}

TEST(RVGitGPGTagSignatureOutputParserTest, AGoodSignatureEndsWithThePrimaryKey) {
    const auto result = parsedGPG(goodOutput);
    EXPECT_EQ(result.username, "Marie Curie (Paris)");
    EXPECT_EQ(result.email, "marie@example.org");
    EXPECT_EQ(result.fingerprint, "3D42B8ACFFC8CC80A5DA8BD9B8BE45D0F2F4D0A1");
    EXPECT_EQ(result.status, "GOODSIG");
}

TEST(RVGitGPGTagSignatureOutputParserTest, EveryStatusWordIsKept) {
    for (const std::string word :
         {"GOODSIG", "EXPSIG", "EXPKEYSIG", "REVKEYSIG", "BADSIG", "ERRSIG"}) {
        const auto result = parsedGPG("[GNUPG:] " + word + " B8BE45D0F2F4D0A1 A B <a@b>");
        EXPECT_EQ(result.status, word);
        EXPECT_EQ(result.fingerprint, "B8BE45D0F2F4D0A1");
        EXPECT_EQ(result.username, "A B");
        EXPECT_EQ(result.email, "a@b");
    }
}

TEST(RVGitGPGTagSignatureOutputParserTest, AUserWithoutAnAddressLeavesNameAndAddressAbsent) {
    const auto result = parsedGPG("[GNUPG:] GOODSIG B8BE45D0F2F4D0A1 Nobody At All\n");
    EXPECT_EQ(result.username, std::nullopt);
    EXPECT_EQ(result.email, std::nullopt);
    EXPECT_EQ(result.status, "GOODSIG");
    EXPECT_EQ(result.fingerprint, "B8BE45D0F2F4D0A1");
}

TEST(RVGitGPGTagSignatureOutputParserTest, TheNameRunsToTheLastBracket) {
    const auto result = parsedGPG("[GNUPG:] GOODSIG B8BE45D0F2F4D0A1 A <x> B <a@b>\n");
    EXPECT_EQ(result.username, "A <x> B");
    EXPECT_EQ(result.email, "a@b");
}

TEST(RVGitGPGTagSignatureOutputParserTest, AWordInAnotherPlaceIsRecognisedWithoutAName) {
    // The line must begin as GPG's do for name and address, not for the rest.
    const auto result = parsedGPG("gpg: BADSIG B8BE45D0F2F4D0A1 A <a@b>\n");
    EXPECT_EQ(result.status, "BADSIG");
    EXPECT_EQ(result.fingerprint, "B8BE45D0F2F4D0A1");
    EXPECT_EQ(result.username, std::nullopt);
}

TEST(RVGitGPGTagSignatureOutputParserTest, ANotHexadecimalKeyLeavesNameAndAddressAbsent) {
    const auto result = parsedGPG("[GNUPG:] GOODSIG XYZ A <a@b>\n");
    EXPECT_EQ(result.fingerprint, "XYZ");
    EXPECT_EQ(result.username, std::nullopt);
    EXPECT_EQ(parsedGPG("[gnupg:] GOODSIG abcdef A <a@b>\n").username, "A");
}

TEST(RVGitGPGTagSignatureOutputParserTest, AStatusWithoutAKeyHasNoFingerprint) {
    const auto result = parsedGPG("[GNUPG:] GOODSIG\n");
    EXPECT_EQ(result.status, "GOODSIG");
    EXPECT_EQ(result.fingerprint, std::nullopt);
}

TEST(RVGitGPGTagSignatureOutputParserTest, AShortValidationFails) {
    const auto result = parsedGPG(
        "[GNUPG:] GOODSIG B8BE45D0F2F4D0A1 A <a@b>\n[GNUPG:] VALIDSIG 2 3 4 5 6 7 8 9 10\n", false);
    EXPECT_EQ(result.fingerprint, "B8BE45D0F2F4D0A1");
    EXPECT_EQ(parsedGPG("[GNUPG:] VALIDSIG 3 4 5 6 7 8 9 10 11 12\n").fingerprint, "12");
}

TEST(RVGitGPGTagSignatureOutputParserTest, ALineOfOneWordFails) {
    EXPECT_EQ(parsedGPG("word\n" + goodOutput, false).fingerprint, std::nullopt);
}

TEST(RVGitGPGTagSignatureOutputParserTest, OtherLinesAreIgnored) {
    const auto result = parsedGPG("error: no signature found\n");
    EXPECT_EQ(result.fingerprint, std::nullopt);
    EXPECT_EQ(result.status, std::nullopt);
}

TEST(RVGitGPGTagSignatureOutputParserTest, DamagedOutputDoesNoHarm) {
    for (const std::string& damaged : damagedOutputs(goodOutput)) {
        RVGitGPGTagSignatureOutputParser parser(damaged);
        (void)parser.parse();
        if (parser.result().username) {
            EXPECT_TRUE(parser.result().status.has_value());
        }
    }
}

RVGitSSHTagSignatureOutputParserResultItem parsedSSH(std::string_view output,
                                                     bool succeeds = true) {
    RVGitSSHTagSignatureOutputParser parser(output);
    EXPECT_EQ(parser.parse(), succeeds) << output;
    return parser.result();
}

TEST(RVGitSSHTagSignatureOutputParserTest, TheLastWordIsTheFingerprint) {
    EXPECT_EQ(parsedSSH("Good \"git\" signature for marie@example.org with ED25519 key "
                        "SHA256:abc/def+0\n")
                  .fingerprint,
              "SHA256:abc/def+0");
    EXPECT_EQ(parsedSSH("Good \"git\" signature with RSA key SHA256:abc\nNo principal matched.\n")
                  .fingerprint,
              "SHA256:abc");
}

TEST(RVGitSSHTagSignatureOutputParserTest, OnlyTheFirstSentenceCounts) {
    EXPECT_EQ(parsedSSH("a \"git\" signature one\nb \"git\" signature two\n").fingerprint, "one");
}

TEST(RVGitSSHTagSignatureOutputParserTest, AnotherLineAheadOfTheSentenceFails) {
    EXPECT_EQ(
        parsedSSH("warning: something\nGood \"git\" signature with RSA key SHA256:abc\n", false)
            .fingerprint,
        std::nullopt);
}

TEST(RVGitSSHTagSignatureOutputParserTest, NothingIsFoundInNothing) {
    EXPECT_EQ(parsedSSH("").fingerprint, std::nullopt);
    EXPECT_EQ(parsedSSH("\n\n").fingerprint, std::nullopt);
}

TEST(RVGitSSHTagSignatureOutputParserTest, DamagedOutputDoesNoHarm) {
    for (const std::string& damaged :
         damagedOutputs("Good \"git\" signature for m with ED25519 key SHA256:abc\n")) {
        RVGitSSHTagSignatureOutputParser parser(damaged);
        const bool succeeded = parser.parse();
        EXPECT_TRUE(succeeded || !parser.result().fingerprint);
    }
}

/// Tells which error the hook was asked about, declined or not.
class VerifyTagCommandWithErrorCode : public RVGitVerifyTagCommand {
public:
    using RVGitVerifyTagCommand::RVGitVerifyTagCommand;
    std::optional<RVError> mappedError;

protected:
    bool gitCommandShouldHandleError(const RVError& error) override {
        mappedError = error;
        return RVGitVerifyTagCommand::gitCommandShouldHandleError(error);
    }
};

class RVGitVerifyTagCommandTest : public RVGitSigningTestCase {
protected:
    RVGitVerifyTagCommandTest() { makeCommit(); }

    /// Verification of a tag that must not report an error.
    std::shared_ptr<RVGitSignature> signatureOf(
        const std::string& name, const std::optional<std::string>& allowedSigners = std::nullopt) {
        std::optional<RVError> error = RVError("left over", 1);
        auto signature = RVGitTag::verifyTagWithRefName(name, allowedSigners, repository(), &error);
        if (signature) {
            EXPECT_EQ(signature->signingKey(), signature->fingerprint());
        }
        return signature;
    }
    void expectNothingWithoutError(
        const std::string& name, const std::optional<std::string>& allowedSigners = std::nullopt) {
        std::optional<RVError> error;
        EXPECT_EQ(RVGitTag::verifyTagWithRefName(name, allowedSigners, repository(), &error),
                  nullptr);
        EXPECT_FALSE(error.has_value());
    }
    std::shared_ptr<VerifyTagCommandWithErrorCode> runCommandWithErrorCode(
        const std::string& name) {
        auto command = std::make_shared<VerifyTagCommandWithErrorCode>(repository());
        command->setRefName(name);
        EXPECT_TRUE(command->run());
        return command;
    }
};

TEST_F(RVGitVerifyTagCommandTest, AsksForGPGsStatusLines) {
    const auto recorder = useRecordingGit();
    const auto command =
        RVGitVerifyTagCommand::gitVerifyTagCommandWithRepository(repository(), "v1");
    EXPECT_EQ(command->refName(), "v1");
    EXPECT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("verify-tag", "--raw", "v1"));
}

TEST_F(RVGitVerifyTagCommandTest, WithoutANameNoneIsPassed) {
    const auto recorder = useRecordingGit();
    const auto command =
        RVGitVerifyTagCommand::gitVerifyTagCommandWithRepository(repository(), std::nullopt);
    EXPECT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("verify-tag", "--raw"));
}

TEST_F(RVGitVerifyTagCommandTest, TheAllowedSignersAreGivenAsConfiguration) {
    const auto recorder = useRecordingGit();
    const auto command =
        RVGitVerifyTagCommand::gitVerifyTagCommandWithRepository(repository(), "v1");
    command->setAllowedSignersFilePath("/a b");
    EXPECT_TRUE(command->run());
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("-c", "gpg.ssh.allowedSignersFile=/a b", "verify-tag", "--raw", "v1"));
}

TEST_F(RVGitVerifyTagCommandTest, AGoodSignature) {
    signTag("v1", keys().good);
    const auto signature = signatureOf("v1");
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->status(), "G");
    EXPECT_EQ(signature->name(), "Marie Curie");
    EXPECT_EQ(signature->email(), "marie@example.org");
    EXPECT_EQ(signature->fingerprint(), keys().good);
}

TEST_F(RVGitVerifyTagCommandTest, AKeyWithoutAnAddress) {
    signTag("v1", keys().nameless);
    const auto signature = signatureOf("v1");
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->status(), "G");
    EXPECT_EQ(signature->name(), std::nullopt);
    EXPECT_EQ(signature->email(), std::nullopt);
    EXPECT_EQ(signature->fingerprint(), keys().nameless);
}

TEST_F(RVGitVerifyTagCommandTest, AnExpiredKey) {
    signTag("v1", keys().expired, "20200102");
    const auto signature = signatureOf("v1");
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->status(), "Y");
    EXPECT_EQ(signature->name(), "Old Key");
    EXPECT_EQ(signature->fingerprint(), keys().expired);
}

TEST_F(RVGitVerifyTagCommandTest, AnExpiredSignature) {
    signTag("v1", keys().good, "20200102", true);
    const auto signature = signatureOf("v1");
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->status(), "X");
    EXPECT_EQ(signature->fingerprint(), keys().good);
}

TEST_F(RVGitVerifyTagCommandTest, ARevokedKey) {
    signTag("v1", keys().revoked);
    const auto signature = signatureOf("v1");
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->status(), "R");
    EXPECT_EQ(signature->email(), "lost@example.org");
    EXPECT_EQ(signature->fingerprint(), keys().revoked);
}

TEST_F(RVGitVerifyTagCommandTest, ASignatureOfAnotherObject) {
    signTag("v1", keys().good);
    alterTag("v1", "\n\nSigned\n", "\n\nForged\n");
    const auto signature = signatureOf("v1");
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->status(), "B");
    EXPECT_EQ(signature->name(), "Marie Curie");
    // GPG validates nothing here, so only the ID of the key is known.
    EXPECT_EQ(signature->fingerprint(), keys().good.substr(24));
}

TEST_F(RVGitVerifyTagCommandTest, AMissingKey) {
    signTag("v1", keys().missing);
    const auto signature = signatureOf("v1");
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->status(), "E");
    EXPECT_EQ(signature->name(), std::nullopt);
    EXPECT_EQ(signature->fingerprint(), keys().missing.substr(24));
}

TEST_F(RVGitVerifyTagCommandTest, ASignatureOfAKnownSSHKey) {
    RVGIT_TEST_NEEDS_GIT("2.34", "it knows no signatures by SSH");
    const std::string key = makeSSHKey("key");
    signTagWithSSH("v1", key);
    gitInRepository({"config", "gpg.ssh.allowedSignersFile", writeAllowedSigners({key})});
    const auto signature = signatureOf("v1");
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->status(), "G");
    EXPECT_EQ(signature->name(), std::nullopt);
    EXPECT_EQ(signature->email(), std::nullopt);
    EXPECT_EQ(signature->fingerprint(), fingerprintOfSSHKey(key));
}

TEST_F(RVGitVerifyTagCommandTest, ASignatureOfAnUnknownSSHKeyIsAnAnswerAndNoError) {
    RVGIT_TEST_NEEDS_GIT("2.34", "it knows no signatures by SSH");
    const std::string key = makeSSHKey("key");
    signTagWithSSH("v1", key);
    gitInRepository(
        {"config", "gpg.ssh.allowedSignersFile", writeAllowedSigners({makeSSHKey("other")})});
    std::optional<RVError> error;
    const auto signature = RVGitTag::verifyTagWithRefName("v1", repository(), &error);
    ASSERT_NE(signature, nullptr);
    EXPECT_FALSE(error.has_value());
    EXPECT_EQ(signature->status(), "U");
    EXPECT_EQ(signature->fingerprint(), fingerprintOfSSHKey(key));

    const auto command =
        RVGitVerifyTagCommand::gitVerifyTagCommandWithRepository(repository(), "v1");
    EXPECT_FALSE(command->run(&error));
    EXPECT_TRUE(error.has_value());
    EXPECT_NE(command->signature(), nullptr);
}

TEST_F(RVGitVerifyTagCommandTest, WithoutAllowedSignersNothingIsSaidOfAnSSHSignature) {
    RVGIT_TEST_NEEDS_GIT("2.34", "it knows no signatures by SSH");
    const std::string key = makeSSHKey("key");
    signTagWithSSH("v1", key);
    expectNothingWithoutError("v1");
    const auto signature = signatureOf("v1", writeAllowedSigners({key}));
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->status(), "G");
    EXPECT_EQ(signatureOf("v1", writeAllowedSigners({}))->status(), "U");
}

TEST_F(RVGitVerifyTagCommandTest, AnSSHSignatureOfAnotherObjectIsNone) {
    RVGIT_TEST_NEEDS_GIT("2.34", "it knows no signatures by SSH");
    const std::string key = makeSSHKey("key");
    signTagWithSSH("v1", key);
    alterTag("v1", "\n\nSigned\n", "\n\nForged\n");
    expectNothingWithoutError("v1", writeAllowedSigners({key}));
}

TEST_F(RVGitVerifyTagCommandTest, ATagWithoutSignatureGivesNothingWithoutError) {
    gitInRepository({"tag", "--annotate", "--message=Message", "v1"});
    expectNothingWithoutError("v1");
    const auto command = runCommandWithErrorCode("v1");
    ASSERT_TRUE(command->mappedError.has_value());
    EXPECT_EQ(command->mappedError->code(), 1704);
    EXPECT_EQ(command->mappedError->userInfoString(RVGitRefNameErrorKey), "v1");
}

TEST_F(RVGitVerifyTagCommandTest, ALightweightTagGivesNothingWithoutError) {
    gitInRepository({"tag", "v1"});
    expectNothingWithoutError("v1");
    const auto command = runCommandWithErrorCode("v1");
    ASSERT_TRUE(command->mappedError.has_value());
    EXPECT_EQ(command->mappedError->code(), 1703);
    EXPECT_EQ(command->mappedError->userInfoString(RVGitRefNameErrorKey), "v1");
}

TEST_F(RVGitVerifyTagCommandTest, AnUnknownTagGivesNothingWithoutError) {
    expectNothingWithoutError("missing");
}

TEST_F(RVGitVerifyTagCommandTest, SilenceGivesNoSignature) {
    auto fake = useFakeGit();
    auto command = RVGitVerifyTagCommand::gitVerifyTagCommandWithRepository(repository(), "v1");
    EXPECT_TRUE(command->run());
    EXPECT_EQ(command->signature(), nullptr);
    // A failure that nobody explains stays one.
    fake.setAnswer({.exitCode = 1});
    EXPECT_THAT(
        [&](RVErrorPlace error) {
            return RVGitTag::verifyTagWithRefName("v1", repository(), error);
        },
        failsWith(RVGitRVGitGenericError));
}

}  // namespace
