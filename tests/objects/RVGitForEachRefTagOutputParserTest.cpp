#include "RVGit/objects/RVGitForEachRefTagOutputParser.h"

#include <gmock/gmock.h>

#include "tests/support/RVDamagedOutput.h"

namespace {

using namespace std::string_literals;
using Item = RVGitForEachRefTagOutputParserResultItem;
using testing::IsEmpty;
using testing::SizeIs;

const std::string tagHash = "0123456789abcdef0123456789abcdef01234567";
const std::string commitHash = "89abcdef0123456789abcdef0123456789abcdef";

std::string record(const std::vector<std::string>& fields) {
    std::string text;
    for (const std::string& field : fields)
        text += (&field == &fields.front() ? "" : "\x1f\x1d\x1f") + field;
    return text + "\0\n"s;
}

std::vector<Item> parsed(const std::string& output) {
    RVGitForEachRefTagOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    return parser.takeIndexedResults();
}

RVDate date(std::int64_t seconds) {
    return RVDate(std::chrono::seconds(seconds));
}

const std::string annotated =
    record({"refs/tags/v1", "tag", tagHash, commitHash, "1577934245", "Message\n\nMore\n"});
const std::string lightweight =
    record({"refs/tags/v2", "commit", commitHash, "", "1577934246", "The commit's message\n"});

TEST(RVGitForEachRefTagOutputParserTest, TheFormatHasSixFieldsAndEndsInNUL) {
    EXPECT_EQ(RVGitForEachRefTagOutputParser::format(),
              "%(refname)%1f%1d%1f%(objecttype)%1f%1d%1f%(objectname)%1f%1d%1f%(*objectname)"
              "%1f%1d%1f%(creatordate:unix)%1f%1d%1f%(contents)%00");
    EXPECT_EQ(RVGitForEachRefTagOutputParser::commitBoundaryString(), "\x1f\x1d\x1f");
}

TEST(RVGitForEachRefTagOutputParserTest, ReadsAnAnnotatedTag) {
    const auto items = parsed(annotated);
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(items[0].fullRefName, "refs/tags/v1");
    EXPECT_EQ(items[0].commitHash, commitHash);
    EXPECT_EQ(items[0].tagObjectHash, tagHash);
    EXPECT_EQ(items[0].message, "Message\n\nMore");
    EXPECT_EQ(items[0].creatorDate, date(1577934245));
}

TEST(RVGitForEachRefTagOutputParserTest, ALightweightTagHasNeitherObjectNorMessage) {
    const auto items = parsed(lightweight);
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(items[0].fullRefName, "refs/tags/v2");
    EXPECT_EQ(items[0].commitHash, commitHash);
    EXPECT_EQ(items[0].tagObjectHash, std::nullopt);
    EXPECT_EQ(items[0].message, std::nullopt);
    EXPECT_EQ(items[0].creatorDate, date(1577934246));
}

TEST(RVGitForEachRefTagOutputParserTest, KeepsGitsOrder) {
    const auto items = parsed(lightweight + annotated);
    ASSERT_THAT(items, SizeIs(2));
    EXPECT_EQ(items[0].fullRefName, "refs/tags/v2");
    EXPECT_EQ(items[1].fullRefName, "refs/tags/v1");
}

TEST(RVGitForEachRefTagOutputParserTest, AMessageWithTheBoundaryDropsTheTagSilently) {
    const auto items = parsed(record({"refs/tags/v0", "tag", tagHash, commitHash, "1",
                                      "a\x1f\x1d\x1f"
                                      "b\n"}) +
                              annotated);
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(items[0].fullRefName, "refs/tags/v1");
}

TEST(RVGitForEachRefTagOutputParserTest, OtherShapesAreSkipped) {
    EXPECT_THAT(parsed("nonsense\0"s), IsEmpty());
    EXPECT_THAT(parsed(""), IsEmpty());
    EXPECT_THAT(parsed("\n"), IsEmpty());
    EXPECT_THAT(parsed(record({"refs/tags/v0", "tag", tagHash, commitHash, "1"})), IsEmpty());
}

TEST(RVGitForEachRefTagOutputParserTest, AMessageMayBeEmpty) {
    const auto items = parsed(record({"refs/tags/v1", "tag", tagHash, commitHash, "1", ""}));
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(items[0].message, "");
}

TEST(RVGitForEachRefTagOutputParserTest, DatesAreSigned32BitNumbers) {
    const auto dateOf = [](const std::string& text) {
        return parsed(record({"refs/tags/v", "commit", commitHash, "", text, ""}))
            .at(0)
            .creatorDate;
    };
    EXPECT_EQ(dateOf(""), date(0));
    EXPECT_EQ(dateOf("x"), date(0));
    EXPECT_EQ(dateOf("-5"), date(-5));
    EXPECT_EQ(dateOf("2147483647"), date(2147483647));
    EXPECT_EQ(dateOf("4102444800"), date(2147483647));
}

TEST(RVGitForEachRefTagOutputParserTest, RecordsAreDecodedOneByOne) {
    const auto items =
        parsed(record({"refs/tags/latin", "tag", tagHash, commitHash, "1", "caf\xE9"}) +
               record({"refs/tags/utf8", "tag", tagHash, commitHash, "1", "caf\xC3\xA9"}));
    ASSERT_THAT(items, SizeIs(2));
    EXPECT_EQ(items[0].message, "caf\xC3\xA9");
    EXPECT_EQ(items[1].message, "caf\xC3\xA9");
}

TEST(RVGitForEachRefTagOutputParserTest, AMessageMayHoldParts0fTheBoundary) {
    const std::string message = "\x1f\x1d a \x1d\x1f b \x1f\x1f\x1d";
    const auto items = parsed(record({"refs/tags/v1", "tag", tagHash, commitHash, "1", message}));
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(items[0].message, message);
}

TEST(RVGitForEachRefTagOutputParserTest, DamagedOutputNeverFails) {
    for (const std::string& damaged : damagedOutputs(annotated + lightweight)) {
        RVGitForEachRefTagOutputParser parser(damaged);
        EXPECT_TRUE(parser.parse());
        EXPECT_LE(parser.indexedResultCache().size(), 2u);
    }
}

TEST(RVGitForEachRefTagOutputParserTest, LinesMayBeGiven) {
    RVGitForEachRefTagOutputParser parser(
        std::vector<std::string>{annotated.substr(0, annotated.size() - 2), ""});
    EXPECT_TRUE(parser.parse());
    EXPECT_THAT(parser.indexedResultCache(), SizeIs(1));
}

}  // namespace
