#include "RVGit/objects/RVGitSignature.h"

#include <gmock/gmock.h>

namespace {

TEST(RVGitSignatureTest, KeepsItsFields) {
    const auto signature =
        RVGitSignature::signatureWithName("Marie", "marie@example.org", "FINGER", "KEY", "G");
    EXPECT_EQ(signature->name(), "Marie");
    EXPECT_EQ(signature->email(), "marie@example.org");
    EXPECT_EQ(signature->fingerprint(), "FINGER");
    EXPECT_EQ(signature->signingKey(), "KEY");
    EXPECT_EQ(signature->status(), "G");
}

TEST(RVGitSignatureTest, KeepsAbsenceApartFromEmptiness) {
    const RVGitSignature signature(std::nullopt, "", std::nullopt, "", std::nullopt);
    EXPECT_EQ(signature.name(), std::nullopt);
    EXPECT_EQ(signature.email(), "");
    EXPECT_EQ(signature.fingerprint(), std::nullopt);
    EXPECT_EQ(signature.signingKey(), "");
    EXPECT_EQ(signature.status(), std::nullopt);
}

TEST(RVGitSignatureTest, StatusWordsOfGPGBecomeLetters) {
    const auto letter = &RVGitSignature::signatureStatusFromTagSignatureStatus;
    EXPECT_EQ(letter("GOODSIG"), "G");
    EXPECT_EQ(letter("BADSIG"), "B");
    EXPECT_EQ(letter("EXPSIG"), "X");
    EXPECT_EQ(letter("EXPKEYSIG"), "Y");
    EXPECT_EQ(letter("REVKEYSIG"), "R");
    EXPECT_EQ(letter("ERRSIG"), "E");
    EXPECT_EQ(letter("goodsig"), "E");
    EXPECT_EQ(letter("NODATA"), "E");
    EXPECT_EQ(letter(""), "E");
}

}  // namespace
