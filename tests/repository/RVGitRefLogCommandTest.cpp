#include "RVGit/repository/RVGitRefLogCommand.h"

#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/history/RVGitCommitOutputParser.h"
#include "RVGit/history/RVGitLogCommandOptions.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string formatOption = "--pretty=format:%H%x1f%x1d%x1f%gs%x1f%x1d%x1f%gD";
const std::string dateOption = "--date=iso-strict";

}  // namespace

class RVGitRefLogCommandTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitRefLogCommand> makeCommand(
        std::optional<std::string> refName = std::nullopt,
        const std::optional<RVOptions>& options = std::nullopt) const {
        return RVGitRefLogCommand::gitRefLogCommandWithRepository(repository(), std::move(refName),
                                                                  options);
    }
    static std::vector<std::string> messages(const RVGitRefLogCommand& command) {
        std::vector<std::string> list;
        for (const auto& entry : command.reflogEntries())
            list.push_back(entry.message().value_or("absent"));
        return list;
    }
};

TEST_F(RVGitRefLogCommandTest, ArgumentsOfEachOption) {
    makeCommit();
    auto recorder = useRecordingGit();
    auto argumentsWith = [&](const std::optional<std::string>& refName,
                             const std::optional<RVOptions>& options) {
        EXPECT_TRUE(makeCommand(refName, options)->run());
        return lastArguments(recorder);
    };
    EXPECT_THAT(argumentsWith(std::nullopt, std::nullopt),
                ElementsAre("reflog", "show", formatOption, dateOption));
    EXPECT_THAT(argumentsWith("main", std::nullopt),
                ElementsAre("reflog", "show", formatOption, dateOption, "main"));
    EXPECT_THAT(argumentsWith("main", RVOptions{{RVGitLogOptionLimit, 7}}),
                ElementsAre("reflog", "show", formatOption, dateOption, "-n7", "main"));
    EXPECT_THAT(argumentsWith("main", RVOptions{{RVGitLogOptionOffset, 3}}),
                ElementsAre("reflog", "show", formatOption, dateOption, "--skip=3", "main"));
    EXPECT_THAT(
        argumentsWith("main", RVOptions{{RVGitLogOptionLimit, 0}, {RVGitLogOptionOffset, 0}}),
        ElementsAre("reflog", "show", formatOption, dateOption, "main"));
    EXPECT_THAT(
        argumentsWith("main", RVOptions{{RVGitLogOptionSearchPatterns,
                                         std::vector<std::string>{"first", "second"}}}),
        ElementsAre("reflog", "show", formatOption, dateOption, "--grep=first", "-i", "main"));
    EXPECT_THAT(argumentsWith(
                    "main", RVOptions{{RVGitLogOptionSearchPatterns, std::vector<std::string>()}}),
                ElementsAre("reflog", "show", formatOption, dateOption, "main"));
    EXPECT_THAT(argumentsWith("main", RVOptions{{RVGitLogOptionAllRefs, true},
                                                {RVGitLogOptionReverseOrder, true},
                                                {RVGitLogOptionDecorate, true}}),
                ElementsAre("reflog", "show", formatOption, dateOption, "main"));
    EXPECT_THAT(argumentsWith(
                    "main", RVOptions{{RVGitLogOptionSearchPatterns, std::vector<std::string>{"x"}},
                                      {RVGitLogOptionOffset, 3},
                                      {RVGitLogOptionLimit, 7}}),
                ElementsAre("reflog", "show", formatOption, dateOption, "-n7", "--skip=3",
                            "--grep=x", "-i", "main"));
}

TEST_F(RVGitRefLogCommandTest, AFactoryWithoutARefName) {
    auto command = RVGitRefLogCommand::gitRefLogCommandWithRepository(
        repository(), RVOptions{{RVGitLogOptionLimit, 2}});
    EXPECT_EQ(command->refName(), std::nullopt);
    EXPECT_EQ(command->limit(), 2u);
}

TEST_F(RVGitRefLogCommandTest, ReadsTheEntriesOfHead) {
    setDates("1700000000 +0000");
    std::string first = makeCommit("First");
    setDates("1700000100 +0200");
    std::string second = makeCommit("Second: with a colon");
    auto command = makeCommand();
    ASSERT_TRUE(command->run());
    EXPECT_THAT(messages(*command),
                ElementsAre("commit: Second: with a colon", "commit (initial): First"));
    const auto& entries = command->reflogEntries();
    EXPECT_EQ(entries[0].commitHash(), second);
    EXPECT_EQ(entries[1].commitHash(), first);
    EXPECT_EQ(entries[0].committerDate(), RVDate(std::chrono::seconds(1700000100)));
    EXPECT_EQ(entries[1].committerDate(), RVDate(std::chrono::seconds(1700000000)));
    EXPECT_EQ(command->entryCount(), 0u);
}

TEST_F(RVGitRefLogCommandTest, LimitAndOffsetChooseEntries) {
    makeCommit("First");
    makeCommit("Second");
    makeCommit("Third");
    auto command =
        makeCommand("HEAD", RVOptions{{RVGitLogOptionLimit, 1}, {RVGitLogOptionOffset, 1}});
    ASSERT_TRUE(command->run());
    EXPECT_THAT(messages(*command), ElementsAre("commit: Second"));
}

TEST_F(RVGitRefLogCommandTest, OnlyTheFirstPatternIsUsedWithoutRegardToCase) {
    makeCommit("First");
    makeCommit("Second");
    makeCommit("Third");
    auto command = makeCommand("HEAD", RVOptions{{RVGitLogOptionSearchPatterns,
                                                  std::vector<std::string>{"SECOND", "Third"}}});
    ASSERT_TRUE(command->run());
    EXPECT_THAT(messages(*command), ElementsAre("commit: Second"));
}

TEST_F(RVGitRefLogCommandTest, ThePatternIsSearchedInTheMessagesOfCommits) {
    makeCommit("First");
    gitInRepository({"commit", "-q", "--amend", "-m", "Another"});
    auto command = makeCommand(
        "HEAD", RVOptions{{RVGitLogOptionSearchPatterns, std::vector<std::string>{"amend"}}});
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->reflogEntries(), IsEmpty());
}

TEST_F(RVGitRefLogCommandTest, ReadsTheReflogsOfABranchAndOfTheStash) {
    makeCommit("First");
    gitInRepository({"checkout", "-q", "-b", "topic"});
    auto command = makeCommand("topic");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(messages(*command), ElementsAre("branch: Created from HEAD"));

    writeFile(repositoryPath() + "/file.txt", "changed");
    gitInRepository({"stash", "push", "-q", "-m", "Kept: for later"});
    command = makeCommand("refs/stash");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(messages(*command), ElementsAre("On topic: Kept: for later"));
}

TEST_F(RVGitRefLogCommandTest, AnEntryWithoutAMessageHasAnEmptyOne) {
    std::string hash = makeCommit();
    gitInRepository({"update-ref", "--create-reflog", "refs/heads/topic", hash});
    auto command = makeCommand("topic");
    ASSERT_TRUE(command->run());
    EXPECT_THAT(messages(*command), ElementsAre(""));
}

TEST_F(RVGitRefLogCommandTest, CountsWithoutReading) {
    makeCommit("First");
    makeCommit("Second");
    makeCommit("Third");
    auto command = makeCommand("HEAD");
    command->setCountsEntries(true);
    ASSERT_TRUE(command->run());
    EXPECT_EQ(command->entryCount(), 3u);
    EXPECT_THAT(command->reflogEntries(), IsEmpty());
}

TEST_F(RVGitRefLogCommandTest, AnUnbornBranchFails) {
    EXPECT_THAT(makeCommand(), failsWith(107));
}

TEST_F(RVGitRefLogCommandTest, OutputOfAnotherFormFailsWithCode11) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardOutput = "nonsense\n"});
    EXPECT_THAT(makeCommand(), failsWith(RVGitOutputParserError));
}

TEST_F(RVGitRefLogCommandTest, HasNoErrorRowsOfItsOwn) {
    EXPECT_THAT(RVGitRefLogCommand::gitErrorDefinitions(), IsEmpty());
}

TEST_F(RVGitRefLogCommandTest, NeedsARepository) {
    EXPECT_THROW(RVGitRefLogCommand(nullptr, std::nullopt, std::nullopt),
                 RVInvalidParameterException);
}
