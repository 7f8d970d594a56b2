#include "RVGit/lfs/RVGitLFSPointer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVString.h"
#include "tests/support/RVDamagedOutput.h"

namespace {

using testing::ElementsAre;
using testing::Pair;

constexpr char text[] =
    "version https://git-lfs.github.com/spec/v1\n"
    "oid sha256:2d711642b726b04401627ca9fbac32f5c8530fb1903cc4db02258717921a4881\n"
    "size 1\n";

TEST(RVGitLFSPointerTest, IsReadFromItsText) {
    const auto pointer = RVGitLFSPointer::pointerFromData(text);
    ASSERT_TRUE(pointer);
    EXPECT_EQ(pointer->version(), "https://git-lfs.github.com/spec/v1");
    EXPECT_EQ(pointer->objectID(),
              "sha256:2d711642b726b04401627ca9fbac32f5c8530fb1903cc4db02258717921a4881");
    EXPECT_EQ(pointer->size(), "1");
    EXPECT_EQ(pointer->stringRepresentation(), text);
}

TEST(RVGitLFSPointerTest, KeepsOtherKeysAndTheLastOfARepeatedOne) {
    const auto pointer =
        RVGitLFSPointer::pointerFromData("version a\next-0-foo.x sha256:1\noid b\nsize 1\nsize 2");
    ASSERT_TRUE(pointer);
    EXPECT_THAT(pointer->allEntries(),
                ElementsAre(Pair("ext-0-foo.x", "sha256:1"), Pair("oid", "b"), Pair("size", "2"),
                            Pair("version", "a")));
}

TEST(RVGitLFSPointerTest, AValueIsTheRestOfItsLineAndIsNotChecked) {
    const auto pointer =
        RVGitLFSPointer::pointerFromData("version   any \t thing \noid  b c\nsize \t many\n");
    ASSERT_TRUE(pointer);
    EXPECT_EQ(pointer->version(), "any \t thing ");
    EXPECT_EQ(pointer->objectID(), "b c");
    EXPECT_EQ(pointer->size(), "many");
}

TEST(RVGitLFSPointerTest, AMissingKeyGivesNone) {
    EXPECT_FALSE(RVGitLFSPointer::pointerFromData("version a\nsize 1\n"));
    EXPECT_FALSE(RVGitLFSPointer::pointerFromData("version a\noid b\n"));
    EXPECT_FALSE(RVGitLFSPointer::pointerFromData("oid b\nsize 1\n"));
    EXPECT_FALSE(RVGitLFSPointer::pointerFromData("version a\nOID b\nsize 1\n"));
    EXPECT_FALSE(RVGitLFSPointer::pointerFromData("version a\n oid b\nsize 1\n"));
    EXPECT_FALSE(RVGitLFSPointer::pointerFromData("version a\noid\nsize 1\n"));
    EXPECT_FALSE(RVGitLFSPointer::pointerFromData(""));
}

TEST(RVGitLFSPointerTest, BytesThatAreNotUTF8GiveNone) {
    EXPECT_FALSE(RVGitLFSPointer::pointerFromData(std::string(text) + "name caf\xE9\n"));
    EXPECT_TRUE(RVGitLFSPointer::pointerFromData(std::string(text) + "name caf\xC3\xA9\n"));
}

TEST(RVGitLFSPointerTest, LineSeparatorsButTheNewlineBelongToTheValue) {
    const auto pointer = RVGitLFSPointer::pointerFromData("version a\r\noid b\u2028c\nsize 1\r\n");
    ASSERT_TRUE(pointer);
    EXPECT_EQ(pointer->version(), "a\r");
    EXPECT_EQ(pointer->objectID(), "b\u2028c");
}

TEST(RVGitLFSPointerTest, ValidationAsksForTheThreeKeys) {
    EXPECT_TRUE(RVGitLFSPointer::validatePointerDictionary(
        {{RVGitLFSPointerVersion, ""}, {RVGitLFSPointerOID, ""}, {RVGitLFSPointerSize, ""}}));
    EXPECT_FALSE(RVGitLFSPointer::validatePointerDictionary({{"version", "a"}, {"oid", "b"}}));
    EXPECT_FALSE(RVGitLFSPointer::validatePointerDictionary({}));
}

TEST(RVGitLFSPointerTest, ACompleteMapIsRequired) {
    const auto textFor = [](RVGitLFSPointer::Entries entries) -> std::string {
        try {
            RVGitLFSPointer pointer(std::move(entries), "");
        } catch (const RVInvalidParameterException& exception) {
            return exception.what();
        }
        return "nothing thrown";
    };
    EXPECT_EQ(textFor({}), "An LFS pointer must contain a 'version' key.");
    EXPECT_EQ(textFor({{"version", "a"}, {"size", "1"}}),
              "An LFS pointer must contain an 'oid' key.");
    EXPECT_EQ(textFor({{"version", "a"}, {"oid", "b"}}),
              "An LFS pointer must contain a 'size' key.");
    EXPECT_EQ(textFor({{"version", "a"}, {"oid", "b"}, {"size", "1"}}), "nothing thrown");
}

TEST(RVGitLFSPointerTest, DamagedTextGivesNoneOrAWholePointer) {
    for (const std::string& damaged : damagedOutputs(text)) {
        const auto pointer = RVGitLFSPointer::pointerFromData(damaged);
        if (!pointer)
            continue;
        ASSERT_TRUE(isValidUTF8(damaged));
        ASSERT_EQ(pointer->stringRepresentation(), damaged);
        ASSERT_TRUE(RVGitLFSPointer::validatePointerDictionary(pointer->allEntries()));
    }
}

}  // namespace
