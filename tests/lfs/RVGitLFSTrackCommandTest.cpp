#include "RVGit/lfs/RVGitLFSTrackCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/lfs/RVGitLFSTestCase.h"
#include "tests/support/RVDamagedOutput.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Item = RVGitLFSTrackOutputParserResultItem;

std::vector<std::string> parsed(std::string_view output) {
    RVGitLFSTrackOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    std::vector<std::string> texts;
    for (const Item& item : parser.trackedFilePatterns())
        texts.push_back(item.trackedFilePattern + "|" + item.attributeFileName);
    return texts;
}

TEST(RVGitLFSTrackOutputParserTest, ReadsPatternsAndTheirFiles) {
    EXPECT_THAT(parsed("Listing tracked patterns\n    *.psd (.gitattributes)\n"
                       "    a[[:space:]]b.bin (.git/info/attributes)\nListing excluded patterns\n"),
                ElementsAre("*.psd|.gitattributes", "a[[:space:]]b.bin|.git/info/attributes"));
}

TEST(RVGitLFSTrackOutputParserTest, LinesOfAnotherNumberOfWordsAreSkipped) {
    EXPECT_THAT(parsed("one\na b c\n    *.lock [lockable] (.gitattributes)\n    a b (x)\n\n   \n"),
                IsEmpty());
    EXPECT_THAT(parsed("a  (x)\n"), IsEmpty());
}

TEST(RVGitLFSTrackOutputParserTest, ParenthesesAreTheFirstAndLastCharacter) {
    EXPECT_THAT(parsed("a xy\nb \u00e9y\u00e9\nc ()\n"), ElementsAre("a|", "b|y", "c|"));
}

TEST(RVGitLFSTrackOutputParserTest, ASecondWordWithoutRoomForParenthesesFailsWith11) {
    for (const char* line : {"a x\n", "a \u00e9\n"}) {
        RVGitLFSTrackOutputParser parser(line);
        EXPECT_THAT([&](RVErrorPlace error) { return parser.parse(error); },
                    failsWith(RVGitOutputParserError));
    }
}

TEST(RVGitLFSTrackOutputParserTest, DamagedOutputIsReadOrFailsWith11) {
    for (const std::string& damaged :
         damagedOutputs("Listing tracked patterns\n    *.psd (.gitattributes)\n")) {
        RVGitLFSTrackOutputParser parser(damaged);
        std::optional<RVError> error;
        if (!parser.parse(&error)) {
            ASSERT_EQ(error->code(), RVGitOutputParserError);
        }
        for (const Item& item : parser.trackedFilePatterns())
            ASSERT_EQ(item.trackedFilePattern.find(' '), std::string::npos);
    }
}

class RVGitLFSTrackCommandTest : public RVGitLFSTestCase {
protected:
    using Patterns = std::vector<std::string>;

    [[nodiscard]] std::shared_ptr<RVGitLFSTrackCommand> track(
        std::optional<Patterns> patterns) const {
        auto command = RVGitLFSTrackCommand::gitLFSTrackCommandWithRepository(repository());
        command->setPatterns(std::move(patterns));
        return command;
    }
    [[nodiscard]] std::shared_ptr<RVGitLFSUntrackCommand> untrack(
        std::optional<Patterns> patterns) const {
        auto command = RVGitLFSUntrackCommand::gitLFSUntrackCommandWithRepository(repository());
        command->setPatterns(std::move(patterns));
        return command;
    }
};

TEST_F(RVGitLFSTrackCommandTest, Arguments) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(argumentsOf(recorder, *track(std::nullopt)), ElementsAre("lfs", "track"));
    EXPECT_THAT(argumentsOf(recorder, *track(Patterns{"*.a", "b c"})),
                ElementsAre("lfs", "track", "*.a", "b c"));
    EXPECT_THAT(argumentsOf(recorder, *untrack(std::nullopt)), ElementsAre("lfs", "untrack"));
    EXPECT_THAT(argumentsOf(recorder, *untrack(Patterns{"*.a", "b c"})),
                ElementsAre("lfs", "untrack", "*.a", "b c"));
}

TEST_F(RVGitLFSTrackCommandTest, SupportsProgressOnceItIsPrepared) {
    const auto command = track(std::nullopt);
    EXPECT_FALSE(command->isSupportingProgressOutput());
    ASSERT_TRUE(command->run());
    EXPECT_TRUE(command->isSupportingProgressOutput());
    const auto other = untrack(Patterns{"x"});
    ASSERT_TRUE(other->run());
    EXPECT_FALSE(other->isSupportingProgressOutput());
}

TEST_F(RVGitLFSTrackCommandTest, TracksListsAndUntracks) {
    const auto tracking = track(Patterns{"*.psd", "a b.bin", "\u00e9*"});
    ASSERT_TRUE(tracking->run());
    EXPECT_FALSE(tracking->trackedFilePatterns());
    const auto patterns = [this] {
        const auto listing = track(std::nullopt);
        EXPECT_TRUE(listing->run());
        Patterns result;
        for (const Item& item : listing->trackedFilePatterns().value_or(std::vector<Item>())) {
            EXPECT_EQ(item.attributeFileName, ".gitattributes");
            result.push_back(item.trackedFilePattern);
        }
        std::sort(result.begin(), result.end());
        return result;
    };
    EXPECT_THAT(patterns(), ElementsAre("*.bin", "*.psd", "a[[:space:]]b.bin", "\u00e9*"));
    ASSERT_TRUE(untrack(Patterns{"*.psd", "a b.bin"})->run());
    EXPECT_THAT(patterns(), ElementsAre("*.bin", "\u00e9*"));
}

TEST_F(RVGitLFSTrackCommandTest, ALockablePatternIsNotListed) {
    gitInRepository({"lfs", "track", "--lockable", "*.lock"});
    const auto listing = track(std::nullopt);
    ASSERT_TRUE(listing->run());
    ASSERT_TRUE(listing->trackedFilePatterns());
    ASSERT_EQ(listing->trackedFilePatterns()->size(), 1U);
    EXPECT_EQ(listing->trackedFilePatterns()->front().trackedFilePattern, "*.bin");
}

TEST_F(RVGitLFSTrackCommandTest, APatternThatIsAnOptionNeverReachesGit) {
    const auto recorder = useRecordingGit();
    EXPECT_THAT(track(Patterns{"a", "--lockable"}), failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(untrack(Patterns{"-h"}), failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(recorder.invocations(), IsEmpty());
}

TEST_F(RVGitLFSTrackCommandTest, ALineThatCannotBeReadFailsTheListing) {
    useFakeGit().setAnswer({.standardOutput = "    *.psd x\n"});
    EXPECT_THAT(track(std::nullopt), failsWith(RVGitOutputParserError));
}

TEST(RVGitLFSTrackCommandNamesTest, TheKeysAreTheirNames) {
    EXPECT_STREQ(RVGitLFSTrackCommandPattern, "RVGitLFSTrackCommandPattern");
    EXPECT_STREQ(RVGitLFSTrackCommandAttributeFile, "RVGitLFSTrackCommandAttributeFile");
}

TEST_F(RVGitLFSTrackCommandTest, NothingTrackedIsAnEmptyList) {
    writeFile("repository/.gitattributes", "");
    const auto listing = track(std::nullopt);
    ASSERT_TRUE(listing->run());
    ASSERT_TRUE(listing->trackedFilePatterns());
    EXPECT_THAT(*listing->trackedFilePatterns(), IsEmpty());
}

}  // namespace
