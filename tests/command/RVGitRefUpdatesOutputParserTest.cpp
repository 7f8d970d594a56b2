#include "RVGit/command/RVGitRefUpdatesOutputParser.h"

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Update {
    std::int64_t type;
    std::optional<std::string> summary;
    std::optional<std::string> from;
    std::optional<std::string> to;
    friend bool operator==(const Update&, const Update&) = default;
    friend void PrintTo(const Update& update, std::ostream* stream) {
        *stream << update.type << " | " << update.summary.value_or("absent") << " | "
                << update.from.value_or("absent") << " | " << update.to.value_or("absent");
    }
};

std::vector<Update> parse(std::string_view output) {
    RVGitRefUpdatesOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    std::vector<Update> updates;
    for (const auto& item : parser.result()) {
        EXPECT_EQ(item.reason, std::nullopt);
        updates.push_back({item.type, item.summary, item.from, item.to});
    }
    return updates;
}

}  // namespace

TEST(RVGitRefUpdatesOutputParserTest, TypeOfEachFlag) {
    auto type = RVGitRefUpdatesOutputParser::refUpdateTypeFromString;
    EXPECT_EQ(type(" "), 1);
    EXPECT_EQ(type("+"), 2);
    EXPECT_EQ(type("*"), 3);
    EXPECT_EQ(type("-"), 4);
    EXPECT_EQ(type("x"), 4);
    EXPECT_EQ(type("="), 5);
    EXPECT_EQ(type("!"), 6);
    EXPECT_EQ(type("X"), 0);
    EXPECT_EQ(type("?"), 0);
    EXPECT_EQ(type(""), 0);
    EXPECT_EQ(type("  "), 0);
}

TEST(RVGitRefUpdatesOutputParserTest, ReadsTheTableOfAFetch) {
    EXPECT_THAT(parse("From /tmp/remote\n"
                      "   1a2b3c4..5d6e7f8  main       -> origin/main\n"
                      " * [new branch]      topic      -> origin/topic\n"
                      " * [new tag]         v1         -> v1\n"
                      " - [deleted]         (none)     -> origin/old\n"
                      " = [up to date]      same       -> origin/same\n"
                      " ! [rejected]        v2         -> v2  (would clobber existing tag)\n"),
                ElementsAre(Update{1, "1a2b3c4..5d6e7f8", "main", "origin/main"},
                            Update{3, "[new branch]", "topic", "origin/topic"},
                            Update{3, "[new tag]", "v1", "v1"},
                            Update{4, "[deleted]", std::nullopt, "origin/old"},
                            Update{5, "[up to date]", "same", "origin/same"},
                            // The reason stays with the name.
                            Update{6, "[rejected]", "v2", "v2  (would clobber existing tag)"}));
}

TEST(RVGitRefUpdatesOutputParserTest, BothFlagsOfADeletedRefGiveType4) {
    EXPECT_THAT(parse(" x [deleted]         (none)     -> origin/a\n"
                      " - [deleted]         (none)     -> origin/b\n"),
                ElementsAre(Update{4, "[deleted]", std::nullopt, "origin/a"},
                            Update{4, "[deleted]", std::nullopt, "origin/b"}));
}

TEST(RVGitRefUpdatesOutputParserTest, AForcedUpdateIsReadOnlyWithARangeOfTwoDots) {
    EXPECT_THAT(parse(" + 1a2b3c4...5d6e7f8 main -> origin/main  (forced update)\n"), IsEmpty());
    EXPECT_THAT(parse(" + 1a2b3c4..5d6e7f8 main -> origin/main\n"),
                ElementsAre(Update{2, "1a2b3c4..5d6e7f8", "main", "origin/main"}));
}

TEST(RVGitRefUpdatesOutputParserTest, OtherLinesAreSkipped) {
    EXPECT_THAT(parse("Everything up-to-date\nTo /tmp/remote\nremote: a -> b\n\n"
                      " * branch            main       -> FETCH_HEAD\n"
                      " - [deleted]         old\n * [new branch] a ->\n"),
                IsEmpty());
    EXPECT_THAT(parse(""), IsEmpty());
}

TEST(RVGitRefUpdatesOutputParserTest, CaseIsIgnoredButATypeNeedsTheSmallLetter) {
    EXPECT_THAT(parse(" X [gone] a -> b\n   1A2B..3C4D a -> b\n"),
                ElementsAre(Update{0, "[gone]", "a", "b"}, Update{1, "1A2B..3C4D", "a", "b"}));
}

TEST(RVGitRefUpdatesOutputParserTest, ALineIsFoundBehindOtherText) {
    EXPECT_THAT(parse("remote:  * [new branch] a -> b\r\n"),
                ElementsAre(Update{3, "[new branch]", "a", "b"}));
}

TEST(RVGitRefUpdatesOutputParserTest, DamagedOutputNeverFails) {
    const std::string output =
        "From /tmp/fünf\n   1a2b3c4..5d6e7f8  main       -> origin/main\n"
        " - [deleted]         (none)     -> origin/old\n";
    for (const auto& damaged : damagedOutputs(output))
        ASSERT_LE(parse(damaged).size(), 3u);
}
