#include "RVGit/history/RVGitShortlogCommand.h"

#include "RVGit/command/RVGitErrorCodes.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Lt;

namespace {

// "3 name <email>" of each.
std::vector<std::string> texts(const std::vector<RVGitShortlogOutputItem>& items) {
    std::vector<std::string> list;
    for (const auto& item : items)
        list.push_back(std::to_string(item.numberOfCommits) + " " + item.authorName + " <" +
                       item.authorEmail + ">");
    return list;
}

std::vector<std::string> parse(std::string_view output) {
    RVGitShortlogOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    return texts(parser.result());
}

}  // namespace

TEST(RVGitShortlogOutputParserTest, ReadsCountNameAndEmail) {
    EXPECT_THAT(parse("    12\tMarie Curie <marie@example.org>\n     1\tAda <ada@example.org>\n"),
                ElementsAre("12 Marie Curie <marie@example.org>", "1 Ada <ada@example.org>"));
}

TEST(RVGitShortlogOutputParserTest, ANameThatHoldsABracketIsSplitAtTheLastOne) {
    RVGitShortlogOutputParser parser("  3\tA <B <c@example.org>\n");
    ASSERT_TRUE(parser.parse());
    ASSERT_EQ(parser.result().size(), 1u);
    EXPECT_EQ(parser.result()[0].authorName, "A <B");
    EXPECT_EQ(parser.result()[0].authorEmail, "c@example.org");
}

TEST(RVGitShortlogOutputParserTest, AnAuthorWithoutAnEmailIsLeftOut) {
    EXPECT_THAT(parse("  3\tNobody <>\n  2\tMarie <m@example.org>\n  1\tNobody\n"),
                ElementsAre("2 Marie <m@example.org>"));
}

TEST(RVGitShortlogOutputParserTest, LinesOfAnotherFormAreSkipped) {
    EXPECT_THAT(parse("nonsense\n\n<a@b>\n 1 <a@b>\n\tName <a@b>\n"), IsEmpty());
    EXPECT_THAT(parse(""), IsEmpty());
}

TEST(RVGitShortlogOutputParserTest, NamesAreComposed) {
    EXPECT_THAT(parse(" 1\tRene\u0301 <r@example.org>\n"),
                ElementsAre("1 Ren\u00E9 <r@example.org>"));
}

TEST(RVGitShortlogOutputParserTest, CRLFAndAMissingNewlineMakeNoDifference) {
    EXPECT_THAT(parse(" 2\tA <a@example.org>\r\n 1\tB <b@example.org>"),
                ElementsAre("2 A <a@example.org>", "1 B <b@example.org>"));
}

TEST(RVGitShortlogOutputParserTest, TextThatIsNotUTF8IsKept) {
    EXPECT_THAT(parse(" 2\tRen\xE9 <a@example.org>\n"), ElementsAre("2 Ren\u00E9 <a@example.org>"));
}

TEST(RVGitShortlogOutputParserTest, ACountOutOfRangeIsTheHighest) {
    EXPECT_THAT(parse(" 99999999999999999999\tA <a@example.org>\n"),
                ElementsAre("9223372036854775807 A <a@example.org>"));
}

TEST(RVGitShortlogOutputParserTest, DamagedOutputNeverFailsAndGivesWholeItems) {
    std::string output = "    12\tMarie <marie@example.org>\n     1\tAda <ada@example.org>\n";
    for (const auto& damaged : damagedOutputs(output)) {
        RVGitShortlogOutputParser parser(damaged);
        ASSERT_TRUE(parser.parse());
        ASSERT_THAT(parser.result().size(), Lt(4u));
        for (const auto& item : parser.result()) {
            ASSERT_FALSE(item.authorName.empty());
            ASSERT_FALSE(item.authorEmail.empty());
        }
    }
}

class RVGitShortlogCommandTest : public RVGitRepositoryTestCase {
protected:
    [[nodiscard]] std::shared_ptr<RVGitShortlogCommand> makeCommand(
        const std::string& revision = "main") const {
        return RVGitShortlogCommand::gitShortlogCommandWithRepository(repository(), revision);
    }
    void commitAs(const std::string& name, const std::string& email) {
        setEnvironmentVariable("GIT_AUTHOR_NAME", name);
        setEnvironmentVariable("GIT_AUTHOR_EMAIL", email);
        makeCommit();
    }
};

TEST_F(RVGitShortlogCommandTest, ArgumentsOfEachField) {
    makeCommit();
    auto recorder = useRecordingGit();
    auto argumentsAfter = [&](auto fill) {
        auto command = makeCommand();
        fill(*command);
        EXPECT_TRUE(command->run());
        return lastArguments(recorder);
    };
    auto expect = [](std::vector<std::string> tail) {
        std::vector<std::string> arguments = {
            "-c", "i18n.logOutputEncoding=UTF-8", "-c", "log.date=default", "shortlog", "-n", "-s",
            "-e"};
        arguments.insert(arguments.end(), tail.begin(), tail.end());
        return arguments;
    };
    EXPECT_EQ(argumentsAfter([](auto&) {}), expect({"main"}));
    EXPECT_EQ(argumentsAfter([](auto& command) { command.setShowsCommitters(true); }),
              expect({"-c", "main"}));
    EXPECT_EQ(argumentsAfter([](auto& command) { command.setLimit(5); }), expect({"-5", "main"}));
    EXPECT_EQ(argumentsAfter([](auto& command) { command.setLimit(0); }), expect({"main"}));
    EXPECT_EQ(argumentsAfter([](auto& command) {
                  command.setFilePaths(std::vector<std::string>{"a", "b"});
              }),
              expect({"main", "--", "a", "b"}));
    EXPECT_EQ(
        argumentsAfter([](auto& command) { command.setFilePaths(std::vector<std::string>()); }),
        expect({"main", "--"}));
    EXPECT_EQ(argumentsAfter([](auto& command) {
                  command.setFilePaths(std::vector<std::string>{"a"});
                  command.setLimit(5);
                  command.setShowsCommitters(true);
              }),
              expect({"-c", "-5", "main", "--", "a"}));
}

TEST_F(RVGitShortlogCommandTest, CountsCommitsOfEachAuthor) {
    commitAs("Ada", "ada@example.org");
    commitAs("René <x", "rene@example.org");
    commitAs("Ada", "ada@example.org");
    auto command = makeCommand();
    ASSERT_TRUE(command->run());
    EXPECT_THAT(texts(command->result()),
                ElementsAre("2 Ada <ada@example.org>", "1 René x <rene@example.org>"));
}

TEST_F(RVGitShortlogCommandTest, CountsCommitters) {
    commitAs("Ada", "ada@example.org");
    auto command = makeCommand();
    command->setShowsCommitters(true);
    ASSERT_TRUE(command->run());
    EXPECT_THAT(texts(command->result()),
                ElementsAre("1 " + std::string(userName) + " <" + userEmail + ">"));
}

TEST_F(RVGitShortlogCommandTest, TheLimitIsANumberOfCommits) {
    commitAs("Ada", "ada@example.org");
    commitAs("Bob", "bob@example.org");
    commitAs("Bob", "bob@example.org");
    auto command = makeCommand();
    command->setLimit(2);
    ASSERT_TRUE(command->run());
    EXPECT_THAT(texts(command->result()), ElementsAre("2 Bob <bob@example.org>"));
}

TEST_F(RVGitShortlogCommandTest, AnAuthorWithoutAnEmailIsLeftOut) {
    commitAs("Ada", "ada@example.org");
    commitAs("Nobody", "");
    auto command = makeCommand();
    ASSERT_TRUE(command->run());
    EXPECT_THAT(texts(command->result()), ElementsAre("1 Ada <ada@example.org>"));
}

TEST_F(RVGitShortlogCommandTest, AnUnknownRevisionFails) {
    auto command = makeCommand("nonsense");
    EXPECT_THAT(command, failsWith(RVGitRVGitGenericError));
    EXPECT_THAT(command->result(), IsEmpty());
}

TEST_F(RVGitShortlogCommandTest, NeedsARepository) {
    EXPECT_THROW(RVGitShortlogCommand(nullptr, "main"), RVInvalidParameterException);
}
