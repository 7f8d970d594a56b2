#include "RVGit/objects/RVGitObject.h"

#include "RVGit/base/RVError.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

const std::string hash = "0123456789abcdef0123456789abcdef01234567";

class RVGitObjectTest : public RVGitRepositoryTestCase {};

TEST_F(RVGitObjectTest, KeepsRepositoryTypeAndHash) {
    const RVGitObject object(repository(), RVGitObjectTypeCommit, hash);
    EXPECT_EQ(object.repository(), repository());
    EXPECT_EQ(object.objectType(), RVGitObjectTypeCommit);
    EXPECT_EQ(object.objectHash(), hash);
    EXPECT_EQ(object.shortObjectHash(), "01234567");
}

TEST_F(RVGitObjectTest, HasNoShortHashWithoutAHash) {
    const RVGitObject object(repository(), RVGitObjectTypeNone, std::nullopt);
    EXPECT_EQ(object.shortObjectHash(), std::nullopt);
}

TEST_F(RVGitObjectTest, RequiresARepository) {
    try {
        const RVGitObject object(nullptr, RVGitObjectTypeBlob, hash);
        FAIL() << "no exception";
    } catch (const RVInvalidParameterException& exception) {
        EXPECT_STREQ(exception.what(), "Invalid parameter not satisfying: repository");
    }
}

TEST_F(RVGitObjectTest, IsOfExactlyOneType) {
    for (auto type : {RVGitObjectTypeNone, RVGitObjectTypeTree, RVGitObjectTypeBlob,
                      RVGitObjectTypeCommit, RVGitObjectTypeTag}) {
        const RVGitObject object(repository(), type, hash);
        EXPECT_EQ(object.isTreeObject(), type == RVGitObjectTypeTree);
        EXPECT_EQ(object.isBlobObject(), type == RVGitObjectTypeBlob);
        EXPECT_EQ(object.isCommitObject(), type == RVGitObjectTypeCommit);
        EXPECT_EQ(object.isTagObject(), type == RVGitObjectTypeTag);
    }
}

TEST(RVGitObjectValuesTest, TypesComeFromTextInAnyCase) {
    EXPECT_EQ(RVGitObject::objectTypeFromString("tree"), 1u);
    EXPECT_EQ(RVGitObject::objectTypeFromString("Blob"), 2u);
    EXPECT_EQ(RVGitObject::objectTypeFromString("COMMIT"), 3u);
    EXPECT_EQ(RVGitObject::objectTypeFromString("tag"), 4u);
    EXPECT_EQ(RVGitObject::objectTypeFromString("trees"), 0u);
    EXPECT_EQ(RVGitObject::objectTypeFromString(""), 0u);
}

TEST(RVGitObjectValuesTest, TypesHaveTexts) {
    EXPECT_EQ(RVGitObject::stringRepresentationForObjectType(RVGitObjectTypeNone), "None");
    EXPECT_EQ(RVGitObject::stringRepresentationForObjectType(RVGitObjectTypeTree), "Tree");
    EXPECT_EQ(RVGitObject::stringRepresentationForObjectType(RVGitObjectTypeBlob), "Blob");
    EXPECT_EQ(RVGitObject::stringRepresentationForObjectType(RVGitObjectTypeCommit), "Commit");
    EXPECT_EQ(RVGitObject::stringRepresentationForObjectType(RVGitObjectTypeTag), "Tag");
}

TEST(RVGitObjectValuesTest, AnUnknownModeIsNone) {
    EXPECT_EQ(RVGitObject::fileModeFromString("040000"), 16384u);
    EXPECT_EQ(RVGitObject::fileModeFromString("100644"), 33188u);
    EXPECT_EQ(RVGitObject::fileModeFromString("100755"), 33277u);
    EXPECT_EQ(RVGitObject::fileModeFromString("120000"), 40960u);
    EXPECT_EQ(RVGitObject::fileModeFromString("160000"), 57344u);
    EXPECT_EQ(RVGitObject::fileModeFromString("100664"), 0u);
    EXPECT_EQ(RVGitObject::fileModeFromString(""), 0u);
}

TEST(RVGitObjectValuesTest, ReferencesCountAbsentPartsAsEmpty) {
    EXPECT_EQ(RVGitObject::objectReferenceWithRevision("HEAD", "a/b"), "HEAD:a/b");
    EXPECT_EQ(RVGitObject::objectReferenceWithRevision("HEAD", std::nullopt), "HEAD:");
    EXPECT_EQ(RVGitObject::objectReferenceWithRevision(std::nullopt, "a"), ":a");
    EXPECT_EQ(RVGitObject::objectReferenceWithRevision(std::nullopt, std::nullopt), ":");
}

TEST(RVGitObjectValuesTest, ShorteningWithALengthGivesNothingForAShorterHash) {
    EXPECT_EQ(RVGitObject::shortenObjectHash(hash, 10), "0123456789");
    EXPECT_EQ(RVGitObject::shortenObjectHash("0123456", 7), "0123456");
    EXPECT_EQ(RVGitObject::shortenObjectHash("0123456", 8), std::nullopt);
    EXPECT_EQ(RVGitObject::shortenObjectHash(std::nullopt, 0), std::nullopt);
}

TEST(RVGitObjectValuesTest, ShorteningWithoutALengthKeepsAShorterHash) {
    EXPECT_EQ(RVGitObject::shortenObjectHash(hash), "01234567");
    EXPECT_EQ(RVGitObject::shortenObjectHash("01234567"), "01234567");
    EXPECT_EQ(RVGitObject::shortenObjectHash("0123456"), "0123456");
    EXPECT_EQ(RVGitObject::shortenObjectHash(std::nullopt), std::nullopt);
    EXPECT_EQ(RVGitObject::abbreviateObjectHash(hash), "01234567");
    EXPECT_EQ(RVGitObject::abbreviateObjectHash("0123456"), "0123456");
}

TEST(RVGitObjectValuesTest, OnlyFortyZerosAreTheNullHash) {
    EXPECT_TRUE(RVGitObject::isNullObjectHash(std::string(40, '0')));
    EXPECT_FALSE(RVGitObject::isNullObjectHash(std::string(39, '0')));
    EXPECT_FALSE(RVGitObject::isNullObjectHash(std::string(41, '0')));
    EXPECT_FALSE(RVGitObject::isNullObjectHash("00000000"));
    EXPECT_FALSE(RVGitObject::isNullObjectHash(hash));
    EXPECT_FALSE(RVGitObject::isNullObjectHash(std::nullopt));
}

}  // namespace
