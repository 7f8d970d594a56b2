#include "RVGit/objects/RVGitForEachRefCommand.h"

#include <array>

#include "RVGit/command/RVGitError.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Keeps every line, and refuses "bad" ones.
class LineParser : public RVGitItemOutputParser<std::string> {
public:
    explicit LineParser(std::string_view outputData)
        : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

protected:
    std::string_view parserName() const override { return "LineParser"; }
    bool parseOutputLine(std::string_view line) override {
        addResult(std::string(line));
        return line != "bad";
    }
};

class RVGitForEachRefCommandTest : public RVGitRepositoryTestCase {
protected:
    RVGitForEachRefCommandTest()
        : command_(RVGitForEachRefCommand::gitForEachRefCommandWithRepository(repository())) {}
    [[nodiscard]] RVGitForEachRefCommand& command() const { return *command_; }

private:
    std::shared_ptr<RVGitForEachRefCommand> command_;
};

TEST_F(RVGitForEachRefCommandTest, ListsAllRefsUnlessTold) {
    const auto recorder = useRecordingGit();
    const auto plain = RVGitForEachRefCommand::gitForEachRefCommandWithRepository(repository());
    ASSERT_TRUE(plain->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("for-each-ref"));
}

TEST_F(RVGitForEachRefCommandTest, ListsAPatternInAFormat) {
    const auto recorder = useRecordingGit();
    const auto listing = RVGitForEachRefCommand::gitForEachRefCommandWithRepository(repository());
    listing->setFormat("%(refname)");
    listing->setPattern("refs/heads");
    listing->setOutputParserClass<LineParser>();
    EXPECT_EQ(listing->format(), "%(refname)");
    EXPECT_EQ(listing->pattern(), "refs/heads");
    ASSERT_TRUE(listing->run());
    EXPECT_THAT(lastArguments(recorder),
                ElementsAre("for-each-ref", "--format=%(refname)", "refs/heads"));
}

TEST_F(RVGitForEachRefCommandTest, OptionsAreNotRead) {
    const auto recorder = useRecordingGit();
    ASSERT_TRUE(RVGitForEachRefCommand::gitForEachRefCommandWithRepository(
                    repository(), RVOptions{{"sort", "refname"}})
                    ->run());
    EXPECT_THAT(lastArguments(recorder), ElementsAre("for-each-ref"));
}

TEST_F(RVGitForEachRefCommandTest, AFormatNeedsAParser) {
    command().setFormat("%(refname)");
    EXPECT_THROW((void)command().run(), RVInvalidParameterException);
}

TEST_F(RVGitForEachRefCommandTest, KeepsTheParserAndItsResults) {
    makeCommit();
    gitInRepository({"tag", "v1"});
    command().setFormat("%(refname)");
    command().setOutputParserClass<LineParser>();
    EXPECT_EQ(command().outputParser(), nullptr);
    EXPECT_THAT(command().result<std::string>(), IsEmpty());
    EXPECT_THAT(command().takeResult<std::string>(), IsEmpty());
    ASSERT_TRUE(command().run());
    EXPECT_NE(dynamic_cast<LineParser*>(command().outputParser()), nullptr);
    EXPECT_THAT(command().result<std::string>(), ElementsAre("refs/heads/main", "refs/tags/v1"));
    EXPECT_THAT(command().result<int>(), IsEmpty());
    EXPECT_THAT(command().takeResult<std::string>(),
                ElementsAre("refs/heads/main", "refs/tags/v1"));
}

TEST_F(RVGitForEachRefCommandTest, AClassThatMakesNoParserLeavesNoResult) {
    makeCommit();
    command().setOutputParserClass(
        [](std::string_view) { return std::unique_ptr<RVGitOutputParser>(); });
    std::optional<RVError> error;
    EXPECT_TRUE(command().run(&error));
    EXPECT_FALSE(error.has_value());
    EXPECT_EQ(command().outputParser(), nullptr);
}

TEST_F(RVGitForEachRefCommandTest, AFailingParserFailsTheCommand) {
    useFakeGit().setAnswer({.standardOutput = "good\nbad\n"});
    const auto failing = RVGitForEachRefCommand::gitForEachRefCommandWithRepository(repository());
    failing->setOutputParserClass<LineParser>();
    EXPECT_THAT(failing, failsWith(RVGitOutputParserError));
}

TEST(RVGitForEachRefRecordTest, FieldsComeWithoutNewlinesAtTheirEnds) {
    std::array<std::string_view, 3> fields;
    EXPECT_TRUE(fieldsOfForEachRefRecord(
        "\n\r\na\x1f\x1d\x1f\u2028\u0085 b \v\f\u2029\x1f\x1d\x1f\n\n", fields));
    EXPECT_THAT(fields, ElementsAre("a", " b ", ""));
}

TEST(RVGitForEachRefRecordTest, AnotherNumberOfFieldsIsNoRecord) {
    std::array<std::string_view, 2> fields;
    EXPECT_FALSE(fieldsOfForEachRefRecord("a", fields));
    EXPECT_FALSE(
        fieldsOfForEachRefRecord("a\x1f\x1d\x1f"
                                 "b\x1f\x1d\x1f"
                                 "c",
                                 fields));
    EXPECT_FALSE(
        fieldsOfForEachRefRecord("a\x1f\x1d"
                                 "b",
                                 fields));
    EXPECT_FALSE(fieldsOfForEachRefRecord("", fields));
}

}  // namespace
