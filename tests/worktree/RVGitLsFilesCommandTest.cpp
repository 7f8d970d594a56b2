#include "RVGit/worktree/RVGitLsFilesCommand.h"

#include <random>
#include <set>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"
#include "RVGit/repository/RVGitRepository.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVGitRepositoryTestCase.h"
#include "tests/support/RVGitRequirement.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string hash = "0123456789abcdef0123456789abcdef01234567";

std::string plainText(const std::vector<RVGitIndexOutputParserResultItem>& items) {
    std::string text;
    for (const auto& item : items)
        text += (item.flag ? std::string(1, *item.flag) : "-") + "|" +
                std::to_string(item.fileMode) + "|" + item.objectHash.text() + "|" +
                std::to_string(item.stage) + "|" + item.filePath + "\n";
    return text;
}

struct Filters {
    std::vector<std::string> filePaths = {};
    bool assumeUnchangedFiles = false;
    bool submodules = false;
};

void setFilters(RVGitIndexOutputParser& parser, const Filters& filters) {
    parser.setFilePaths(filters.filePaths);
    parser.setFiltersAssumeUnchangedFiles(filters.assumeUnchangedFiles);
    parser.setFiltersSubmodules(filters.submodules);
}

/// The items, and "failed" behind them where a record could not be read.
std::string parsed(std::string_view output, const Filters& filters = {}) {
    RVGitIndexOutputParser parser(output);
    setFilters(parser, filters);
    const bool succeeded = parser.parse();
    return plainText(parser.indexEntries()) + (succeeded ? "" : "failed");
}

/// The same by nothing but the regular expression.
std::string parsedByExpression(std::string_view output) {
    static const RVRegularExpression expression(
        R"(^([hsmrckHSMRCK])?\s+([0-9]{6})\s([0-9a-f]{40})\s([0-9])\t(.+))",
        RVRegularExpression::DotMatchesLineSeparators);
    std::vector<RVGitIndexOutputParserResultItem> items;
    for (std::string_view bytes : componentsSeparatedByNULByte(output)) {
        if (bytes.empty())
            continue;
        const auto groups =
            componentsMatchedByRegularExpression(stringUsingBestEncoding(bytes), expression);
        if (groups.empty())
            return plainText(items) + "failed";
        items.push_back({
            .filePath = *groups[5],
            .objectHash = RVGitCompactHash::hashOfDigits(*groups[3]).value(),
            .flag = groups[1] ? std::optional(groups[1]->front()) : std::nullopt,
            .fileMode = RVGitFileModeFromString(*groups[2]),
            .stage = RVGitIndexStageFromString(*groups[4]),
        });
    }
    return plainText(items);
}

bool shouldParse(const std::string& record, const Filters& filters) {
    RVGitIndexOutputParser parser("");
    setFilters(parser, filters);
    return parser.shouldParseOutputLine(record);
}

TEST(RVGitIndexOutputParserTest, RecordsEndInNULBytes) {
    EXPECT_TRUE(RVGitIndexOutputParser("").usesNULByteAsNewlineDelimiter());
}

TEST(RVGitIndexOutputParserTest, ReadsModesStagesAndFlags) {
    EXPECT_EQ(parsed("H 100644 " + hash + " 0\tREADME\0"s +  //
                     "h 100755 " + hash + " 0\ttool\0"s +    //
                     "S 120000 " + hash + " 0\ta link\0"s +  //
                     "H 160000 " + hash + " 0\tmodule\0"s +  //
                     "M 100644 " + hash + " 1\tc\0"s +       //
                     "M 100644 " + hash + " 2\tc\0"s +       //
                     "M 100644 " + hash + " 3\tc\0"s),
              "H|33188|" + hash + "|0|README\n" +      //
                  "h|33277|" + hash + "|0|tool\n" +    //
                  "S|40960|" + hash + "|0|a link\n" +  //
                  "H|57344|" + hash + "|0|module\n" +  //
                  "M|33188|" + hash + "|1|c\n" +       //
                  "M|33188|" + hash + "|2|c\n" +       //
                  "M|33188|" + hash + "|3|c\n");
}

TEST(RVGitIndexOutputParserTest, EveryFlagIsReadAndNoOther) {
    for (int character = 1; character < 128; ++character) {
        const std::string flag(1, static_cast<char>(character));
        const std::string record = flag + " 100644 " + hash + " 0\ta";
        const bool isFlag = std::string("HhSsMmRrCcKk").find(flag) != std::string::npos;
        EXPECT_EQ(parsed(record),
                  isFlag ? flag + "|33188|" + hash + "|0|a\n" : parsedByExpression(record));
    }
}

TEST(RVGitIndexOutputParserTest, TheFlagMayBeAbsent) {
    EXPECT_EQ(parsed(" 100644 " + hash + " 0\ta"), "-|33188|" + hash + "|0|a\n");
    EXPECT_EQ(parsed("100644 " + hash + " 0\ta"), "failed");
}

TEST(RVGitIndexOutputParserTest, UnknownModesAreRegularAndUnknownStagesTheDefault) {
    EXPECT_EQ(parsed("H 100600 " + hash + " 7\ta"), "H|33188|" + hash + "|0|a\n");
}

TEST(RVGitIndexOutputParserTest, PathsAreKeptAsTheyStand) {
    EXPECT_EQ(parsed("H 100644 " + hash + " 0\t\ta\tb\nc\r\n\0"s),
              "H|33188|" + hash + "|0|\ta\tb\nc\r\n\n");
    EXPECT_EQ(parsed("H 100644 " + hash + " 0\t\"q\"\0"s), "H|33188|" + hash + "|0|\"q\"\n");
}

TEST(RVGitIndexOutputParserTest, PathsAreDecodedOneByOne) {
    EXPECT_EQ(
        parsed("H 100644 " + hash + " 0\tcaf\xE9\0"s + "H 100644 " + hash + " 0\tcaf\xC3\xA9\0"s),
        "H|33188|" + hash + "|0|caf\u00E9\n" + "H|33188|" + hash + "|0|caf\u00E9\n");
}

TEST(RVGitIndexOutputParserTest, NoOutputIsAnEmptyIndex) {
    EXPECT_EQ(parsed(""), "");
}

TEST(RVGitIndexOutputParserTest, WhatIsNoRecordFailsAndKeepsWhatWasRead) {
    const std::string output = "H 100644 " + hash + " 0\ta\0"s + "nonsense\0"s;
    RVGitIndexOutputParser parser(output);
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error));
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey), "RVGitIndexOutputParser");
    EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), "nonsense");
    EXPECT_THAT(parser.indexEntries(), SizeIs(1));
}

TEST(RVGitIndexOutputParserTest, LinesMayBeGiven) {
    RVGitIndexOutputParser parser(std::vector<std::string>{"H 100644 " + hash + " 0\ta", ""});
    ASSERT_TRUE(parser.parse());
    EXPECT_THAT(parser.indexEntries(), SizeIs(1));
}

TEST(RVGitIndexOutputParserTest, DamagedOutputIsReadAsTheExpressionReadsIt) {
    const std::string output =
        "H 100644 " + hash + " 0\tsome \u00E9 file\0"s + "m 160000 " + hash + " 3\tb\n\0"s;
    for (const std::string& damaged : damagedOutputs(output))
        ASSERT_EQ(parsed(damaged), parsedByExpression(damaged)) << testing::PrintToString(damaged);
}

TEST(RVGitIndexOutputParserTest, RandomRecordsAreReadAsTheExpressionReadsThem) {
    // What a record is made of, and what the expression takes for it: other blanks than those of
    // ASCII, but no other digits.
    const std::vector<std::vector<std::string>> columns = {
        {"H", "h", "K", "M", "?", "HH", "\u00E9", ""},
        {" ", "\t", "\u00a0", "\u2003", "\n", "  ", ""},
        {"100644", "160000", "123456", "\uFF11\uFF10\uFF10\uFF16\uFF14\uFF14", "10064", "1006444",
         ""},
        {" ", "\t", "\u00a0", "\u2003", "  ", ""},
        {hash, hash.substr(1), hash + "a", "0123456789ABCDEF" + hash.substr(16), hash + hash, ""},
        {" ", "\t", "\u00a0", "\u3000", "  ", ""},
        {"0", "1", "2", "3", "9", "10", "\u0663", "x", ""},
        {"\t", "\t\t", " ", "\n", ""},
        {"path", "a\tb", "\n", "a\nb", "\u00E9", "\xFF\xFE", "\xE9", "\u2028x", ""},
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

TEST(RVGitIndexOutputParserTest, WithoutFiltersEverythingIsKept) {
    EXPECT_TRUE(shouldParse("nonsense", {}));
    EXPECT_TRUE(shouldParse("", {}));
}

TEST(RVGitIndexOutputParserTest, PathsAloneKeepWhatBeginsWithOneOrEqualsOne) {
    const auto isKept = [](const std::string& path, const std::vector<std::string>& filePaths) {
        return shouldParse("H 100644 " + hash + " 0\t" + path, {.filePaths = filePaths});
    };
    EXPECT_TRUE(isKept("dir/a", {"dir"}));
    EXPECT_TRUE(isKept("directory", {"dir"}));
    EXPECT_TRUE(isKept("dir", {"x", "dir"}));
    EXPECT_TRUE(isKept("caf\u00E9", {"cafe\u0301"}));
    EXPECT_FALSE(isKept("caf\u00E9/a", {"cafe\u0301"}));
    EXPECT_FALSE(isKept("other/dir", {"dir"}));
    EXPECT_FALSE(isKept("a", {"*"}));
}

TEST(RVGitIndexOutputParserTest, AFilterKeepsItsOwnAlone) {
    const std::string plain = "H 100644 " + hash + " 0\ta";
    const std::string flagged = "h 100644 " + hash + " 0\ta";
    const std::string submodule = "H 160000 " + hash + " 0\ta";
    const Filters assumeUnchanged{.assumeUnchangedFiles = true};
    EXPECT_FALSE(shouldParse(plain, assumeUnchanged));
    EXPECT_TRUE(shouldParse(flagged, assumeUnchanged));
    EXPECT_FALSE(shouldParse(submodule, assumeUnchanged));
    const Filters submodules{.submodules = true};
    EXPECT_FALSE(shouldParse(plain, submodules));
    EXPECT_FALSE(shouldParse(flagged, submodules));
    EXPECT_TRUE(shouldParse(submodule, submodules));
    const Filters both{.assumeUnchangedFiles = true, .submodules = true};
    EXPECT_FALSE(shouldParse(plain, both));
    EXPECT_TRUE(shouldParse(flagged, both));
    EXPECT_TRUE(shouldParse(submodule, both));
}

TEST(RVGitIndexOutputParserTest, AFilterAndPathsBothCount) {
    const Filters filters{.filePaths = {"dir"}, .assumeUnchangedFiles = true, .submodules = true};
    EXPECT_TRUE(shouldParse("H 100644 " + hash + " 0\tdir/a", filters));
    EXPECT_TRUE(shouldParse("h 100644 " + hash + " 0\ta", filters));
    EXPECT_TRUE(shouldParse("H 160000 " + hash + " 0\ta", filters));
    EXPECT_FALSE(shouldParse("H 100644 " + hash + " 0\ta", filters));
}

TEST(RVGitIndexOutputParserTest, FiltersJudgeByColumnsWhateverTheShape) {
    EXPECT_TRUE(shouldParse("h", {.assumeUnchangedFiles = true}));
    EXPECT_TRUE(shouldParse("xx160000", {.submodules = true}));
    EXPECT_TRUE(shouldParse("\u00E9\U0001F389160000", {.submodules = true}));
    EXPECT_FALSE(shouldParse("xx16000", {.submodules = true}));
    EXPECT_FALSE(shouldParse("x160000", {.submodules = true}));
    const std::string fiftyTwo(52, 'x');
    EXPECT_TRUE(shouldParse(fiftyTwo + "dir", {.filePaths = {"dir"}}));
    EXPECT_TRUE(shouldParse(std::string(51, 'x') + "\u00E9" + "dir", {.filePaths = {"dir"}}));
    EXPECT_FALSE(shouldParse(std::string(51, 'x') + "dir", {.filePaths = {"dir"}}));
    EXPECT_FALSE(shouldParse(fiftyTwo, {.filePaths = {"dir"}}));
    EXPECT_FALSE(shouldParse(std::string(51, 'x'), {.filePaths = {""}}));
    EXPECT_TRUE(shouldParse(fiftyTwo, {.filePaths = {""}}));
}

TEST(RVGitIndexOutputParserTest, ARejectedRecordIsNotRead) {
    EXPECT_EQ(parsed("nonsense\0h 100644 "s + hash + " 0\ta\0"s, {.assumeUnchangedFiles = true}),
              "h|33188|" + hash + "|0|a\n");
    EXPECT_EQ(parsed("h nonsense", {.assumeUnchangedFiles = true}), "failed");
}

class RVGitLsFilesCommandTest : public RVGitRepositoryTestCase {};

class RVGitLsFilesCommandLineTest : public RVGitRepositoryTestCase {
protected:
    std::vector<std::string> argumentsWith(
        unsigned options, std::optional<std::vector<std::string>> filePaths = std::nullopt) {
        const auto command = RVGitLsFilesCommand::gitLsFilesCommandWithRepository(
            repository(), std::move(filePaths), options);
        (void)command->run();
        return lastArguments(recorder_);
    }

private:
    RVRecordingGit recorder_ = useRecordingGit();
};

TEST_F(RVGitLsFilesCommandLineTest, EachOptionHasItsArguments) {
    EXPECT_THAT(argumentsWith(0), ElementsAre("ls-files", "-z"));
    EXPECT_THAT(argumentsWith(1), ElementsAre("ls-files", "-z", "-v", "--stage"));
    EXPECT_THAT(argumentsWith(2), ElementsAre("ls-files", "-z", "--exclude-standard"));
    EXPECT_THAT(argumentsWith(4), ElementsAre("ls-files", "-z", "--ignored"));
    EXPECT_THAT(argumentsWith(8), ElementsAre("ls-files", "-z", "--others"));
    EXPECT_THAT(argumentsWith(16), ElementsAre("ls-files", "-z"));
    EXPECT_THAT(argumentsWith(32), ElementsAre("ls-files", "-z"));
}

TEST_F(RVGitLsFilesCommandLineTest, OptionsStandInAFixedOrder) {
    EXPECT_THAT(argumentsWith(63, {{"b", "-a"}}),
                ElementsAre("ls-files", "-z", "-v", "--stage", "--ignored", "--others",
                            "--exclude-standard", "--", "b", "-a"));
    EXPECT_THAT(argumentsWith(0, std::vector<std::string>()), ElementsAre("ls-files", "-z", "--"));
}

TEST_F(RVGitLsFilesCommandTest, EachBitSetsItsProperty) {
    const auto properties = [&](unsigned options) {
        const RVGitLsFilesCommand command(repository(), std::nullopt, options);
        return std::vector<bool>{command.showsIndexInfo(),
                                 command.usesStandardExcludes(),
                                 command.showsIgnoredFiles(),
                                 command.showsOtherFiles(),
                                 command.showsAssumeUnchangedFiles(),
                                 command.showsSubmodules()};
    };
    EXPECT_EQ(properties(0), std::vector<bool>(6, false));
    for (std::size_t bit = 0; bit < 6; ++bit) {
        std::vector<bool> expected(6, false);
        expected[bit] = true;
        EXPECT_EQ(properties(1u << bit), expected);
    }
    EXPECT_EQ(RVGitLsFilesCommand::gitLsFilesCommandWithRepository(repository())->filePaths(),
              std::nullopt);
}

TEST_F(RVGitLsFilesCommandTest, ListsPaths) {
    commitFile("repository", "a b", "", "Message");
    commitFile("repository", "new\nline", "", "Message");
    writeFile("repository/other", "");
    const auto tracked = RVGitLsFilesCommand::gitLsFilesCommandWithRepository(repository());
    ASSERT_TRUE(tracked->run());
    EXPECT_THAT(tracked->filePathEntries(), ElementsAre("a b", "new\nline"));
    EXPECT_THAT(tracked->entries(), IsEmpty());
    const auto others = RVGitLsFilesCommand::gitLsFilesCommandWithRepository(
        repository(), std::nullopt, RVGitLsFilesCommandOptionShowsOtherFiles);
    ASSERT_TRUE(others->run());
    EXPECT_THAT(others->filePathEntries(), ElementsAre("other"));
}

TEST_F(RVGitLsFilesCommandTest, ListsEntriesWithTheirFlags) {
    for (const char* file : {"assumed", "both", "plain", "skipped"})
        commitFile("repository", file, file, "Message");
    gitInRepository({"update-index", "--assume-unchanged", "assumed", "both"});
    gitInRepository({"update-index", "--skip-worktree", "skipped", "both"});
    const auto entries = [&](unsigned options) {
        const auto command = RVGitLsFilesCommand::gitLsFilesCommandWithRepository(
            repository(), std::nullopt, options);
        EXPECT_TRUE(command->run());
        std::string text;
        for (const auto& entry : command->takeEntries())
            text += std::string(1, entry.flag.value_or('-')) + " " + entry.filePath + " " +
                    std::to_string(entry.objectHash.text() ==
                                   gitInRepository({"rev-parse", ":" + entry.filePath})) +
                    "\n";
        return text;
    };
    EXPECT_EQ(entries(1), "h assumed 1\ns both 1\nH plain 1\nS skipped 1\n");
    EXPECT_EQ(entries(1 | 16), "h assumed 1\ns both 1\n");
    EXPECT_EQ(entries(1 | 32), "");
}

TEST_F(RVGitLsFilesCommandTest, WhatGitPrintsIsReadByItsColumnsAlone) {
    const std::string blob = gitLine({"hash-object", "-w", "--stdin"}, repositoryPath());
    const std::string commit = makeCommit();
    std::string entries = "160000 " + commit + " 0\tmodule\n";
    for (const char* mode : {"100644", "100755", "120000"}) {
        for (const char* stage : {"1", "2", "3"})
            entries += mode + (" " + blob) + " " + stage + "\tconflict " + mode + "\n";
        for (const char* name : {"plain", "assumed", "skipped", "both"})
            entries += mode + (" " + blob) + " 0\t" + name + mode + "\n";
    }
    entries += "100644 " + blob + " 0\t\"tab\\tnewline\\n\\377\"\n";
    git({"update-index", "--add", "--index-info"}, repositoryPath(), entries);
    for (const std::string mode : {"100644", "100755", "120000"}) {
        git({"update-index", "--assume-unchanged", "assumed" + mode, "both" + mode},
            repositoryPath());
        git({"update-index", "--skip-worktree", "skipped" + mode, "both" + mode}, repositoryPath());
    }
    writeFile(repositoryPath() + "/intended", "x");
    git({"add", "--intent-to-add", "intended"}, repositoryPath());

    const std::string output = git({"ls-files", "-z", "-v", "--stage"}, repositoryPath());
    EXPECT_EQ(parsed(output), parsedByExpression(output));
    RVGitIndexOutputParser parser(output);
    ASSERT_TRUE(parser.parse());
    EXPECT_THAT(parser.indexEntries(), SizeIs(25));
    std::set<std::string> kinds;
    for (const auto& item : parser.indexEntries())
        kinds.insert(std::string(1, item.flag.value_or('-')) + std::to_string(item.stage));
    EXPECT_THAT(kinds, ElementsAre("H0", "M1", "M2", "M3", "S0", "h0", "s0"));
    EXPECT_EQ(parser.numberOfRecordsOutsideColumns(), 0u);
}

TEST(RVGitIndexOutputParserTest, WhatStandsOutsideTheColumnsIsCounted) {
    const std::string output = "H 100644 " + hash + " 0\ta\0"s +   //
                               "H  100644 " + hash + " 0\tb\0"s +  //
                               "H 100600 " + hash + " 0\tc\0"s;
    RVGitIndexOutputParser parser(output);
    ASSERT_TRUE(parser.parse());
    EXPECT_THAT(parser.indexEntries(), SizeIs(3));
    EXPECT_EQ(parser.numberOfRecordsOutsideColumns(), 2u);
}

TEST_F(RVGitLsFilesCommandTest, GitFailsOutsideARepository) {
    const auto command = std::make_shared<RVGitLsFilesCommand>(repository());
    command->setGitDirectoryPath(makeDirectory("nothing"));
    std::optional<RVError> error;
    EXPECT_FALSE(command->run(&error));
    ASSERT_TRUE(error.has_value());
}

TEST_F(RVGitLsFilesCommandTest, AHashOf64DigitsCannotBeRead) {
    RVGIT_TEST_NEEDS_GIT("2.29", "it knows no other object format");
    const std::string path = scratchPath("sha256");
    git({"init", "-q", "--object-format=sha256", path});
    writeFile("sha256/a", "");
    git({"add", "a"}, path);
    const auto command = std::make_shared<RVGitLsFilesCommand>(
        RVGitRepository::repositoryWithWorkingTreeDirectoryPath(path, path + "/.git"), std::nullopt,
        1);
    EXPECT_THAT(command, failsWith(RVGitOutputParserError));
}

}  // namespace
