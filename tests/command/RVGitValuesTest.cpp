#include "RVGit/command/RVGitValues.h"

#include <random>

#include "RVGit/worktree/RVGitIndexHelper.h"
#include "RVGit/worktree/RVGitWorkingTreeHelper.h"
#include "tests/support/RVGitTestCase.h"

using testing::Eq;
using testing::Optional;
using namespace std::string_literals;

namespace {

class RVGitValuesTest : public RVGitTestCase {};

template <typename Enum>
struct Named {
    Enum value;
    std::uint64_t number;
    std::string name;
    std::string text;
};

TEST_F(RVGitValuesTest, ObjectTypesAreReadInAnyCaseAndNamed) {
    const std::vector<Named<RVGitObjectType>> types = {
        {RVGitObjectTypeNone, 0, "None", "none"}, {RVGitObjectTypeTree, 1, "Tree", "tree"},
        {RVGitObjectTypeBlob, 2, "Blob", "BLOB"}, {RVGitObjectTypeCommit, 3, "Commit", "Commit"},
        {RVGitObjectTypeTag, 4, "Tag", "tag"},
    };
    for (const auto& type : types) {
        EXPECT_EQ(type.value, type.number);
        EXPECT_EQ(RVGitObjectTypeFromString(type.text), type.value) << type.text;
        EXPECT_EQ(RVGitStringForObjectType(type.value), type.name);
    }
    EXPECT_EQ(RVGitObjectTypeFromString(""), RVGitObjectTypeNone);
    EXPECT_EQ(RVGitObjectTypeFromString("trees"), RVGitObjectTypeNone);
    EXPECT_EQ(RVGitStringForObjectType(static_cast<RVGitObjectType>(5)), "None");
}

TEST_F(RVGitValuesTest, FileModesAreReadAndNamed) {
    const std::vector<Named<RVGitFileMode>> modes = {
        {RVGitFileModeDirectory, 16384, "Directory", "040000"},
        {RVGitFileModeRegular, 33188, "Regular", "100644"},
        {RVGitFileModeExecutable, 33277, "Executable", "100755"},
        {RVGitFileModeSymbolicLink, 40960, "Symbolic Link", "120000"},
        {RVGitFileModeSubmodule, 57344, "Submodule", "160000"},
    };
    for (const auto& mode : modes) {
        EXPECT_EQ(mode.value, mode.number);
        EXPECT_EQ(RVGitFileModeFromString(mode.text), mode.value);
        EXPECT_THAT(RVGitKnownFileModeFromString(mode.text), Optional(mode.value));
        EXPECT_EQ(RVGitStringForFileMode(mode.value), mode.name);
    }
    EXPECT_EQ(RVGitStringForFileMode(RVGitFileModeNone), "None");
    EXPECT_EQ(RVGitStringForFileMode(static_cast<RVGitFileMode>(33261)), "None");
}

TEST_F(RVGitValuesTest, AnUnknownFileModeCountsAsRegular) {
    EXPECT_EQ(RVGitFileModeFromString("100664"), 33188U);
    EXPECT_EQ(RVGitFileModeFromString(""), 33188U);
    EXPECT_EQ(RVGitKnownFileModeFromString("100664"), std::nullopt);
}

TEST_F(RVGitValuesTest, FileStatusesAreReadAndNamed) {
    const std::vector<Named<RVGitFileStatus>> statuses = {
        {RVGitFileStatusUntracked, 1, "Untracked", "?"},
        {RVGitFileStatusIgnored, 2, "Ignored", "!"},
        {RVGitFileStatusUnchanged, 3, "Unchanged", " "},
        {RVGitFileStatusAdded, 4, "Added", "A"},
        {RVGitFileStatusCopied, 5, "Copied", "C"},
        {RVGitFileStatusModified, 6, "Modified", "M"},
        {RVGitFileStatusRenamed, 7, "Renamed", "R"},
        {RVGitFileStatusTypeChanged, 8, "Type Changed", "T"},
        {RVGitFileStatusDeleted, 9, "Deleted", "D"},
        {RVGitFileStatusUnmerged, 10, "Unmerged", "U"},
    };
    for (const auto& status : statuses) {
        EXPECT_EQ(status.value, status.number);
        EXPECT_EQ(RVGitFileStatusFromString(status.text), status.value) << status.text;
        EXPECT_EQ(RVGitStringForFileStatus(status.value), status.name);
        EXPECT_THAT(RVGitShortStringForFileStatus(status.value), Optional(Eq(status.text)));
        EXPECT_EQ(RVGitWorkingTreeHelper::fileStatusFromString(status.text), status.value);
        EXPECT_EQ(RVGitWorkingTreeHelper::stringRepresentationForFileStatus(status.value),
                  status.name);
        EXPECT_THAT(RVGitWorkingTreeHelper::shortStringRepresentationForFileStatus(status.value),
                    Optional(Eq(status.text)));
    }
}

TEST_F(RVGitValuesTest, ABlankAndAnyUnknownStatusLetterAreUnchanged) {
    for (const char* text : {" ", "", "X", "m", "MM"})
        EXPECT_EQ(RVGitFileStatusFromString(text), 3U) << text;
}

TEST_F(RVGitValuesTest, NoStatusHasANameButNoLetter) {
    EXPECT_EQ(RVGitStringForFileStatus(RVGitFileStatusNone), "None");
    EXPECT_EQ(RVGitShortStringForFileStatus(RVGitFileStatusNone), std::nullopt);
}

TEST_F(RVGitValuesTest, IndexStagesAreReadAndNamed) {
    const std::vector<Named<RVGitIndexStage>> stages = {
        {RVGitIndexStageDefault, 0, "Default", "0"},
        {RVGitIndexStageBase, 1, "Base", "1"},
        {RVGitIndexStageOurs, 2, "Ours", "2"},
        {RVGitIndexStageTheirs, 3, "Theirs", "3"},
    };
    for (const auto& stage : stages) {
        EXPECT_EQ(stage.value, stage.number);
        EXPECT_EQ(RVGitIndexStageFromString(stage.text), stage.value);
        EXPECT_EQ(RVGitStringForIndexStage(stage.value), stage.name);
        EXPECT_EQ(RVGitIndexHelper::indexStageFromString(stage.text), stage.value);
        EXPECT_EQ(RVGitIndexHelper::stringRepresentationForIndexStage(stage.value), stage.name);
    }
    EXPECT_EQ(RVGitIndexStageFromString("4"), RVGitIndexStageDefault);
    EXPECT_EQ(RVGitIndexStageFromString(""), RVGitIndexStageDefault);
}

TEST_F(RVGitValuesTest, RefTypesHaveTheirNumbers) {
    EXPECT_EQ(RVGitRefTypeNone, 0U);
    EXPECT_EQ(RVGitRefTypeBranch, 1U);
    EXPECT_EQ(RVGitRefTypeRemoteBranch, 2U);
    EXPECT_EQ(RVGitRefTypeTag, 3U);
    EXPECT_EQ(RVGitRefTypeStash, 4U);
}

TEST_F(RVGitValuesTest, PathsAreUnmergedWhenOneSideSaysSoOrBothWereAddedOrDeleted) {
    for (std::uint64_t left = 0; left <= 10; ++left) {
        for (std::uint64_t right = 0; right <= 10; ++right) {
            bool unmerged =
                left == 10 || right == 10 || (left == 9 && right == 9) || (left == 4 && right == 4);
            EXPECT_EQ(RVGitWorkingTreeHelper::isUnmergedPathForLeftFileStatus(
                          static_cast<RVGitFileStatus>(left), static_cast<RVGitFileStatus>(right)),
                      unmerged)
                << left << " against " << right;
        }
    }
}

TEST_F(RVGitValuesTest, ConstantsHaveTheTextsThatGitKnows) {
    EXPECT_STREQ(RVGitHEADRevision, "HEAD");
    EXPECT_EQ(std::string(RVGitNullObjectHash), std::string(40, '0'));
    EXPECT_STREQ(RVGitNullFile, "/dev/null");
    EXPECT_STREQ(RVGitOriginRemoteName, "origin");
    EXPECT_STREQ(RVGitLocalRemoteName, ".");
    EXPECT_STREQ(RVGitMainBranchName, "main");
    EXPECT_STREQ(RVGitMasterBranchName, "master");
}

TEST_F(RVGitValuesTest, AHashOfFortyDigitsInEitherCaseIsValid) {
    const std::string hash = "0123456789abcdef0123456789abcdef01234567";
    EXPECT_TRUE(isValidCommitHash(hash));
    EXPECT_TRUE(isValidCommitHash("0123456789ABCDEF0123456789ABCDEF01234567"));
    EXPECT_TRUE(RVGitValidateCommitHash(hash));
    EXPECT_TRUE(RVGitValidateCommitHash(RVGitNullObjectHash));
}

TEST_F(RVGitValuesTest, OneNewlineBehindAHashIsLetPass) {
    const std::string hash = "0123456789abcdef0123456789abcdef01234567";
    EXPECT_TRUE(isValidCommitHash(hash + "\n"));
    EXPECT_FALSE(isValidCommitHash(hash + "\n\n"));
    EXPECT_FALSE(isValidCommitHash("\n" + hash));
}

TEST_F(RVGitValuesTest, AbbreviatedLongerAndForeignHashesAreInvalid) {
    const std::string hash = "0123456789abcdef0123456789abcdef01234567";
    EXPECT_FALSE(isValidCommitHash(""));
    EXPECT_FALSE(isValidCommitHash(hash.substr(0, 39)));
    EXPECT_FALSE(isValidCommitHash(hash + "8"));
    EXPECT_FALSE(isValidCommitHash(" " + hash.substr(1)));
    EXPECT_FALSE(isValidCommitHash("g" + hash.substr(1)));
    EXPECT_FALSE(RVGitValidateCommitHash("HEAD"));
}

TEST_F(RVGitValuesTest, ShorteningTakesEightCharactersOrWhatThereIs) {
    EXPECT_THAT(RVGitShortenHash("1234567"), Optional(Eq("1234567")));
    EXPECT_THAT(RVGitShortenHash("12345678"), Optional(Eq("12345678")));
    EXPECT_THAT(RVGitShortenHash("123456789"), Optional(Eq("12345678")));
    EXPECT_THAT(RVGitShortenHash(""), Optional(Eq("")));
    EXPECT_EQ(RVGitShortenHash(std::nullopt), std::nullopt);
}

TEST_F(RVGitValuesTest, ShorteningToALengthGivesNothingForAShorterHash) {
    EXPECT_THAT(RVGitShortenHashWithLength("1234567", 7), Optional(Eq("1234567")));
    EXPECT_THAT(RVGitShortenHashWithLength("1234567", 3), Optional(Eq("123")));
    EXPECT_EQ(RVGitShortenHashWithLength("1234567", 8), std::nullopt);
    EXPECT_EQ(RVGitShortenHashWithLength(std::nullopt, 0), std::nullopt);
    EXPECT_THAT(RVGitShortenHashWithLength("", 0), Optional(Eq("")));
    // Characters, not bytes.
    EXPECT_THAT(RVGitShortenHashWithLength("aü\u20ACb", 2), Optional(Eq("aü")));
    EXPECT_THAT(RVGitShortenHashWithLength("aü\u20ACb", 4), Optional(Eq("aü\u20ACb")));
    EXPECT_EQ(RVGitShortenHashWithLength("aü\u20ACb", 5), std::nullopt);
    EXPECT_THAT(RVGitShortenHash("1234567üß"), Optional(Eq("1234567ü")));
    EXPECT_THAT(RVGitShortenHash("123456ü"), Optional(Eq("123456ü")));
}

TEST_F(RVGitValuesTest, ARevisionRangeTurnsItsArgumentsRound) {
    EXPECT_EQ(RVGitMakeRevisionRange("a", "b"), "b..a");
    EXPECT_EQ(RVGitMakeRevisionComparisonString("a", "b"), "a...b");
}

TEST_F(RVGitValuesTest, AnAbsentPartOfAnObjectReferenceIsEmpty) {
    EXPECT_EQ(RVGitMakeObjectReference("HEAD", "a/b"), "HEAD:a/b");
    EXPECT_EQ(RVGitMakeObjectReference("HEAD", std::nullopt), "HEAD:");
    EXPECT_EQ(RVGitMakeObjectReference(std::nullopt, "a"), ":a");
    EXPECT_EQ(RVGitMakeObjectReference(std::nullopt, std::nullopt), ":");
}

TEST_F(RVGitValuesTest, ConfigurationNamesArePutTogether) {
    EXPECT_EQ(RVGitMakeBranchConfigSection("b"), "branch.b");
    EXPECT_EQ(RVGitMakeBranchConfigKey("b.c", "merge"), "branch.b.c.merge");
    EXPECT_EQ(RVGitMakeRemoteConfigSection("r"), "remote.r");
    EXPECT_EQ(RVGitMakeRemoteConfigKey("r", "url"), "remote.r.url");
    EXPECT_EQ(RVGitMakeSVNRemoteConfigSection("s"), "svn-remote.s");
    EXPECT_EQ(RVGitMakeSVNRemoteConfigKey("s", "url"), "svn-remote.s.url");
    EXPECT_EQ(RVGitMakeSubmoduleConfigSection("m"), "submodule.m");
    EXPECT_EQ(RVGitMakeSubmoduleConfigKey("m", "path"), "submodule.m.path");
    EXPECT_EQ(RVGitMakeQueueName("CommandQueue"), "com.varnelsoft.Git.CommandQueue");
}

TEST_F(RVGitValuesTest, OctalEscapesAreBytesOfOneLetter) {
    EXPECT_EQ(unquotedCString(R"("caf\303\251.txt")"), "café.txt");
}

TEST_F(RVGitValuesTest, ATrailingEscapedQuoteIsKept) {
    EXPECT_EQ(unquotedCString(R"("a\"")"), "a\"");
}

TEST_F(RVGitValuesTest, TextWithoutALeadingQuoteIsReturnedAsItIs) {
    for (const char* text : {"", "a", R"(a\303\251"b")", R"( "a")", "é\""})
        EXPECT_EQ(unquotedCString(text), text);
}

TEST_F(RVGitValuesTest, LettersBehindABackslashAreResolved) {
    EXPECT_EQ(unquotedCString(R"("a\tb\rc\nd\\e\"f")"), "a\tb\rc\nd\\e\"f");
}

TEST_F(RVGitValuesTest, QuotedTextThatIsNotASCIIOnlyLosesItsFirstAndLastCharacter) {
    EXPECT_EQ(unquotedCString(R"("é\t")"), R"(é\t)");
    EXPECT_EQ(unquotedCString("\"aé"), "a");
    EXPECT_EQ(unquotedCString("\"a\xF0\x9F\x8C\x8D"), "a");
}

TEST_F(RVGitValuesTest, QuotesThatAreNotClosedAndEscapesThatAreCutOffLoseNothingElse) {
    EXPECT_EQ(unquotedCString("\""), "");
    EXPECT_EQ(unquotedCString("\"\""), "");
    EXPECT_EQ(unquotedCString("\"abc"), "abc");
    EXPECT_EQ(unquotedCString("\"abc\\"), "abc");
    EXPECT_EQ(unquotedCString("\"abc\\30"), "abc");
    EXPECT_EQ(unquotedCString("\"a\\9b8c\""), "a\0c"s);
}

TEST_F(RVGitValuesTest, BytesThatAreNotUTF8AreStillText) {
    EXPECT_EQ(unquotedCString(R"("caf\351")"), "café");
}

TEST_F(RVGitValuesTest, UnquotingUndoesTheQuotingOfGit) {
    const std::string repository = initRepository();
    const std::vector<std::string> names = {
        "tab\there", "line\nbreak", "quo\"te", "back\\slash",    "ret\rurn",    "\"",
        "\\",        "ends with\"", "ünïcødé", "\xE6\xBC\xA2/x", "mixed é\t\"", "123\\456"};
    for (const std::string& name : names)
        writeFile(repository + "/" + name, "x");
    git({"add", "."}, repository);

    std::vector<std::string> unquoted;
    std::string list = git({"-c", "core.quotePath=true", "ls-files"}, repository);
    for (std::size_t start = 0, end; (end = list.find('\n', start)) != std::string::npos;
         start = end + 1)
        unquoted.push_back(unquotedCString(list.substr(start, end - start)));
    EXPECT_THAT(unquoted, testing::UnorderedElementsAreArray(names));
}

TEST_F(RVGitValuesTest, UnquotingTakesAnyBytes) {
    std::mt19937 random(1);
    const std::string alphabet = "\"\\tn01234567a\xC3\xA9";
    for (int round = 0; round < 2000; ++round) {
        std::string text = "\"";
        for (auto length = random() % 12; length > 0; --length)
            text += alphabet[random() % alphabet.size()];
        EXPECT_LE(unquotedCString(text).size(), 3 * text.size()) << text;
    }
}

TEST_F(RVGitValuesTest, ReservedPatternCharactersGetABackslashEach) {
    EXPECT_EQ(stringByEscapingReservedGitPatternCharacters("a[b]c"), "a\\[b\\]c");
    EXPECT_EQ(stringByEscapingReservedGitPatternCharacters("![]?#*"), "\\!\\[\\]\\?\\#\\*");
    EXPECT_EQ(stringByEscapingReservedGitPatternCharacters("a/é\\ b"), "a/é\\ b");
    EXPECT_EQ(stringByEscapingReservedGitPatternCharacters(""), "");
}

TEST_F(RVGitValuesTest, AnEscapedPathIsAPathspecThatFindsOnlyThatFile) {
    const std::string repository = initRepository();
    for (const char* name : {"a*[b]?", "axxb?", "axxbz"})
        writeFile(repository + "/" + name, "x");
    git({"add", "."}, repository);
    EXPECT_EQ(
        gitLine({"ls-files", "-z", "--", stringByEscapingReservedGitPatternCharacters("a*[b]?")},
                repository),
        "a*[b]?\0"s);
}

}  // namespace
