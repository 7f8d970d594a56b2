#include "RVGit/objects/RVGitTreeCommand.h"

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string hash = "0123456789abcdef0123456789abcdef01234567";
const std::string otherHash = "89abcdef0123456789abcdef0123456789abcdef";

std::string plainText(const std::vector<RVGitTreeOutputParserResultItem>& items) {
    std::string text;
    for (const auto& item : items)
        text += std::to_string(item.fileMode) + "|" + std::to_string(item.objectType) + "|" +
                item.objectHash + "|" + std::to_string(item.fileSize) + "|" + item.filePath + "\n";
    return text;
}

/// The items, and "failed" behind them where a record could not be read.
std::string parsed(std::string_view output) {
    RVGitTreeOutputParser parser(output);
    const bool succeeded = parser.parse();
    return plainText(parser.treeEntries()) + (succeeded ? "" : "failed");
}

/// The same by nothing but the regular expression.
std::string parsedByExpression(std::string_view output) {
    static const RVRegularExpression expression(
        R"(^(\d{6})\s(\w+)\s([a-f0-9]{40})((?!\t)\s+(\d+|\-))?\t(.+))",
        RVRegularExpression::DotMatchesLineSeparators);
    std::vector<RVGitTreeOutputParserResultItem> items;
    for (std::string_view bytes : componentsSeparatedByNULByte(output)) {
        if (bytes.empty())
            continue;
        const auto groups =
            componentsMatchedByRegularExpression(stringUsingBestEncoding(bytes), expression);
        if (groups.empty())
            return plainText(items) + "failed";
        const auto size = groups[5].value_or("-");
        items.push_back({
            .filePath = *groups[6],
            .objectHash = *groups[3],
            .fileMode = RVGitFileModeFromString(*groups[1]),
            .objectType = RVGitObjectTypeFromString(*groups[2]),
            .fileSize = size == "-" ? 0 : static_cast<std::uint64_t>(integerValue(size)),
        });
    }
    return plainText(items);
}

TEST(RVGitTreeOutputParserTest, ReadsEveryKindOfEntry) {
    EXPECT_EQ(parsed("100644 blob " + hash + "\tREADME\0"s +    //
                     "100755 blob " + hash + "\tdir/tool\0"s +  //
                     "040000 tree " + otherHash + "\tdir\0"s +  //
                     "120000 blob " + hash + "\ta link\0"s +    //
                     "160000 commit " + hash + "\tmodule\0"s),
              "33188|2|" + hash + "|0|README\n" +        //
                  "33277|2|" + hash + "|0|dir/tool\n" +  //
                  "16384|1|" + otherHash + "|0|dir\n" +  //
                  "40960|2|" + hash + "|0|a link\n" +    //
                  "57344|3|" + hash + "|0|module\n");
}

TEST(RVGitTreeOutputParserTest, ReadsSizes) {
    EXPECT_EQ(parsed("100644 blob " + hash + "       7\tsmall\0"s +      //
                     "100644 blob " + hash + " 12345678901\tlarge\0"s +  //
                     "040000 tree " + otherHash + "       -\tdir\0"s),
              "33188|2|" + hash + "|7|small\n" +                //
                  "33188|2|" + hash + "|12345678901|large\n" +  //
                  "16384|1|" + otherHash + "|0|dir\n");
}

TEST(RVGitTreeOutputParserTest, AnUnknownModeIsRegularAndAnUnknownTypeNone) {
    EXPECT_EQ(parsed("100600 blob " + hash + "\ta\0"s), "33188|2|" + hash + "|0|a\n");
    EXPECT_EQ(parsed("100644 thing " + hash + "\ta\0"s), "33188|0|" + hash + "|0|a\n");
}

TEST(RVGitTreeOutputParserTest, PathsWithTabsAndNewlinesStayWhole) {
    EXPECT_EQ(parsed("100644 blob " + hash + "\ta\tb\nc\r\n\0"s),
              "33188|2|" + hash + "|0|a\tb\nc\r\n\n");
    EXPECT_EQ(parsed("100644 blob " + hash + "      3\t\ta\tb\0"s),
              "33188|2|" + hash + "|3|\ta\tb\n");
}

TEST(RVGitTreeOutputParserTest, ANumberAheadOfATabIsAPartOfThePath) {
    EXPECT_EQ(parsed("100644 blob " + hash + "\t5\tname\0"s), "33188|2|" + hash + "|0|5\tname\n");
    EXPECT_EQ(parsed("100644 blob " + hash + "\t-\tname\0"s), "33188|2|" + hash + "|0|-\tname\n");
    EXPECT_EQ(parsed("100644 blob " + hash + "\t5\t\0"s), "33188|2|" + hash + "|0|5\t\n");
}

TEST(RVGitTreeOutputParserTest, PathsAreDecodedOneByOne) {
    EXPECT_EQ(
        parsed("100644 blob " + hash + "\tcaf\xE9\0"s + "100644 blob " + hash + "\tcaf\xC3\xA9\0"s),
        "33188|2|" + hash + "|0|caf\xC3\xA9\n" + "33188|2|" + hash + "|0|caf\xC3\xA9\n");
}

TEST(RVGitTreeOutputParserTest, NoOutputIsAnEmptyTree) {
    EXPECT_EQ(parsed(""), "");
}

TEST(RVGitTreeOutputParserTest, WhatIsNoRecordFailsAndKeepsWhatWasRead) {
    const std::string output = "100644 blob " + hash + "\ta\0"s + "nonsense\0"s;
    RVGitTreeOutputParser parser(output);
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey), "RVGitTreeOutputParser");
    EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), "nonsense");
    EXPECT_THAT(parser.treeEntries(), SizeIs(1));
}

TEST(RVGitTreeOutputParserTest, RecordsInOtherShapesFail) {
    const std::string records[] = {
        "100644 blob " + hash + "\t",     "100644 blob " + hash,
        "10064 blob " + hash + "\ta",     "100644 blob " + hash.substr(1) + "\ta",
        "100644 blob " + hash + "0\ta",   "100644 blob 0123456789ABCDEF0123456789ABCDEF01234567\ta",
        "100644  " + hash + "\ta",        "100644 blob " + hash + " 1x\ta",
        "100644 blob " + hash + " --\ta", "100644 blob " + hash + "1\ta",
        " 100644 blob " + hash + "\ta"};
    for (const std::string& record : records)
        EXPECT_EQ(parsed(record + '\0'), "failed") << record;
}

TEST(RVGitTreeOutputParserTest, LinesMayBeGiven) {
    RVGitTreeOutputParser parser(
        std::vector<std::string>{"100644 blob " + hash + "\ta", "", "040000 tree " + hash + "\tb"});
    ASSERT_TRUE(parser.parse());
    EXPECT_THAT(parser.treeEntries(), SizeIs(2));
}

TEST(RVGitTreeOutputParserTest, DamagedOutputIsReadAsTheExpressionReadsIt) {
    const std::string output = "100644 blob " + hash + "     123\tsome \xC3\xA9 file\0"s +
                               "040000 tree " + otherHash + "       -\tdir\n\0"s;
    for (const std::string& damaged : damagedOutputs(output))
        EXPECT_EQ(parsed(damaged), parsedByExpression(damaged)) << testing::PrintToString(damaged);
    const std::string plain = "160000 commit " + hash + "\ta\t1\tb\0"s;
    for (const std::string& damaged : damagedOutputs(plain))
        EXPECT_EQ(parsed(damaged), parsedByExpression(damaged)) << testing::PrintToString(damaged);
}

TEST(RVGitTreeOutputParserTest, RandomRecordsAreReadAsTheExpressionReadsThem) {
    // What a record is made of, and what the expression takes for it: other digits, blanks and
    // letters than those of ASCII.
    const std::vector<std::vector<std::string>> columns = {
        {"100644", "040000", "123456", "１００６４４", "10064", "1006444", "٣٣٣٣٣٣", ""},
        {" ", " ", " ", "\t", "\u00a0", "\u2003", "\n", "  ", ""},
        {"blob", "tree", "commit", "BLOB", "blöb", "b_2", "b-b", "日本", ""},
        {" ", " ", " ", "\t", "\u00a0", "\u3000", "  ", ""},
        {hash, hash, otherHash, hash.substr(1), hash + "a", "0123456789ABCDEF" + hash, ""},
        {"", "", " 12", "      7", " -", "\t8", "\u00a09", "  \u0663", " 12 ", " --",
         " 99999999999999999999"},
        {"\t", "\t", "\t", "\t\t", " ", "\n", ""},
        {"path", "a\tb", "5\tb", "-\tb", " 5\tb", "\u06635\tb", "\u2003-\tb", "5\t", "\n", "a\nb",
         "é", "\xFF\xFE", "\xE9", "\u2028x", ""},
    };
    std::mt19937 random(20200102);
    std::size_t numberRead = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string record;
        for (const auto& column : columns) {
            // Mostly what belongs there, so that records are read as well.
            const bool isUsual = random() % 8 != 0;
            record += column[isUsual ? 0 : random() % column.size()];
        }
        const std::string result = parsed(record);
        ASSERT_EQ(result, parsedByExpression(record)) << testing::PrintToString(record);
        numberRead += result != "failed";
    }
    EXPECT_GT(numberRead, 5000u);
}

class RVGitTreeCommandTest : public RVGitRepositoryTestCase {};

class RVGitTreeCommandLineTest : public RVGitTreeCommandTest {
protected:
    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitTreeCommandLineTest, ListsATreeHash) {
    const auto command = RVGitTreeCommand::gitTreeCommandWithRepository(repository(), hash);
    EXPECT_EQ(command->objectReference(), hash);
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("ls-tree", "-z", hash));
}

TEST_F(RVGitTreeCommandLineTest, ListsADirectoryByReference) {
    const auto command =
        RVGitTreeCommand::gitTreeCommandWithRepositoryDirectoryPath(repository(), "HEAD", "dir");
    EXPECT_EQ(command->objectReference(), "HEAD:dir");
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("ls-tree", "-z", "HEAD:dir"));
}

TEST_F(RVGitTreeCommandLineTest, ListsTheRootWithoutADirectory) {
    const auto command = RVGitTreeCommand::gitTreeCommandWithRepositoryDirectoryPath(
        repository(), "HEAD", std::nullopt);
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("ls-tree", "-z", "HEAD:"));
}

TEST_F(RVGitTreeCommandLineTest, ListsOnePathApartFromTheRevision) {
    const auto command =
        RVGitTreeCommand::gitTreeCommandWithRepositoryFilePath(repository(), "HEAD", "dir");
    EXPECT_EQ(command->objectReference(), std::nullopt);
    EXPECT_EQ(command->revision(), "HEAD");
    EXPECT_EQ(command->filePath(), "dir");
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("ls-tree", "-z", "HEAD", "--", "dir"));
}

TEST_F(RVGitTreeCommandLineTest, RecursesIntoDirectories) {
    const auto command = RVGitTreeCommand::gitTreeCommandWithRepository(repository(), hash);
    command->setRecursesDirectories(true);
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("ls-tree", "-z", "-r", hash));
}

TEST_F(RVGitTreeCommandLineTest, AsksForSizes) {
    const auto command = RVGitTreeCommand::gitTreeCommandWithRepository(repository(), hash);
    command->setIncludesFileSize(true);
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("ls-tree", "-z", "-l", hash));
}

TEST_F(RVGitTreeCommandLineTest, OptionsStandInAFixedOrder) {
    const auto command =
        RVGitTreeCommand::gitTreeCommandWithRepositoryFilePath(repository(), "HEAD", "-f");
    command->setIncludesFileSize(true);
    command->setRecursesDirectories(true);
    EXPECT_THAT(argumentsOf(recorder_, *command),
                ElementsAre("ls-tree", "-z", "-r", "-l", "HEAD", "--", "-f"));
}

TEST_F(RVGitTreeCommandLineTest, AReferenceComesAheadOfRevisionAndPath) {
    const auto command =
        RVGitTreeCommand::gitTreeCommandWithRepositoryFilePath(repository(), "HEAD", "dir");
    command->setObjectReference(hash);
    EXPECT_THAT(argumentsOf(recorder_, *command), ElementsAre("ls-tree", "-z", hash));
}

TEST_F(RVGitTreeCommandLineTest, HalfOfRevisionAndPathIsNotPassed) {
    const auto withoutPath =
        RVGitTreeCommand::gitTreeCommandWithRepositoryFilePath(repository(), "HEAD", std::nullopt);
    EXPECT_THAT(argumentsOf(recorder_, *withoutPath), ElementsAre("ls-tree", "-z"));
}

TEST_F(RVGitTreeCommandTest, ReadsWhatGitPrints) {
    const std::string path = "tab\tand\nnewline \"quoted\" é";
    commitFile("repository", path, "four", "Message");
    commitFile("repository", "dir/empty", "", "Message");
    auto command = RVGitTreeCommand::gitTreeCommandWithRepositoryDirectoryPath(repository(), "HEAD",
                                                                               std::nullopt);
    command->setIncludesFileSize(true);
    ASSERT_TRUE(command->run());
    const auto& entries = command->treeEntries();
    ASSERT_THAT(entries, SizeIs(2));
    EXPECT_EQ(entries[0].filePath, "dir");
    EXPECT_EQ(entries[0].fileSize, 0u);
    EXPECT_EQ(entries[0].objectType, RVGitObjectTypeTree);
    EXPECT_EQ(entries[1].filePath, path);
    EXPECT_EQ(entries[1].fileSize, 4u);
    EXPECT_EQ(entries[1].objectHash, gitInRepository({"rev-parse", "HEAD:" + path}));
}

TEST_F(RVGitTreeCommandTest, ReadsATreeOfManyEntries) {
    constexpr int count = 10000;
    std::string index;
    for (int number = 0; number < count; ++number)
        index += "100644 blob e69de29bb2d1d6434b8b29ae775ad8c2e48c5391\tfile " +
                 std::to_string(number) + "\n";
    git({"update-index", "--index-info"}, repositoryPath(), index);
    const std::string tree = gitInRepository({"write-tree", "--missing-ok"});
    auto command = RVGitTreeCommand::gitTreeCommandWithRepository(repository(), tree);
    ASSERT_TRUE(command->run());
    EXPECT_THAT(command->treeEntries(), SizeIs(count));
}

TEST_F(RVGitTreeCommandTest, ABlobIsNoTree) {
    makeCommit();
    const std::string blob = gitInRepository({"rev-parse", "HEAD:file.txt"});
    const auto error = errorOf(*RVGitTreeCommand::gitTreeCommandWithRepository(repository(), blob));
    EXPECT_EQ(error.code(), RVGitTreeNotATreeObjectError);
    EXPECT_EQ(error.userInfoString(RVGitObjectReferenceErrorKey), blob);
    EXPECT_EQ(error.userInfoString(RVGitObjectHashErrorKey), blob);
    EXPECT_EQ(error.localizedFailureReason(), "Could not load Git tree for “" + blob +
                                                  "”. The specified object is not a tree object.");
}

TEST_F(RVGitTreeCommandTest, AnUnknownNameIsNotFound) {
    makeCommit();
    const auto error = errorOf(*RVGitTreeCommand::gitTreeCommandWithRepositoryDirectoryPath(
        repository(), "missing", "dir"));
    EXPECT_EQ(error.code(), RVGitTreeNotFoundError);
    EXPECT_EQ(error.userInfoString(RVGitObjectReferenceErrorKey), "missing:dir");
    EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), "missing");
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "dir");
    EXPECT_FALSE(error.userInfo().contains(RVGitObjectHashErrorKey));
}

TEST_F(RVGitTreeCommandTest, WithoutAReferenceTheErrorTellsRevisionAndPath) {
    makeCommit();
    const auto error = errorOf(
        *RVGitTreeCommand::gitTreeCommandWithRepositoryFilePath(repository(), "missing", "file"));
    EXPECT_EQ(error.code(), RVGitTreeNotFoundError);
    EXPECT_EQ(error.userInfoString(RVGitRevisionErrorKey), "missing");
    EXPECT_EQ(error.userInfoString(RVGitFilePathErrorKey), "file");
    EXPECT_FALSE(error.userInfo().contains(RVGitObjectReferenceErrorKey));
}

TEST_F(RVGitTreeCommandTest, AReferenceWithTwoColonsGivesNoRevisionOrPath) {
    makeCommit();
    const auto error = errorOf(
        *RVGitTreeCommand::gitTreeCommandWithRepositoryDirectoryPath(repository(), "HEAD", "a:b"));
    EXPECT_EQ(error.userInfoString(RVGitObjectReferenceErrorKey), "HEAD:a:b");
    EXPECT_FALSE(error.userInfo().contains(RVGitRevisionErrorKey));
    EXPECT_FALSE(error.userInfo().contains(RVGitFilePathErrorKey));
    EXPECT_FALSE(error.userInfo().contains(RVGitObjectHashErrorKey));
}

TEST_F(RVGitTreeCommandTest, OutputThatIsNoTreeFailsWith11) {
    useFakeGit().setAnswer({.standardOutput = "nonsense"});
    const auto error = errorOf(*RVGitTreeCommand::gitTreeCommandWithRepository(repository(), hash));
    EXPECT_EQ(error.code(), RVGitOutputParserError);
}

TEST_F(RVGitTreeCommandTest, RowsHoldWithTheirExitCodeOnly) {
    auto fake = useFakeGit();
    fake.setAnswer({.standardError = "fatal: Not a valid object name x", .exitCode = 1});
    EXPECT_THAT(RVGitTreeCommand::gitTreeCommandWithRepository(repository(), hash),
                failsWith(RVGitRVGitGenericError));
}

}  // namespace
