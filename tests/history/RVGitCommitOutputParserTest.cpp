#include "RVGit/history/RVGitCommitOutputParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVDateFormatter.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"
#include "RVGit/history/RVGitCommitRecords.h"
#include "tests/support/RVDamagedOutput.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using Item = RVGitCommitOutputParserResultItem;
using Text = std::optional<std::string>;

const std::string firstHash = "1111111111111111111111111111111111111111";
const std::string secondHash = "2222222222222222222222222222222222222222";
const std::string treeHash = "3333333333333333333333333333333333333333";

std::string joined(const std::vector<std::string>& fields) {
    return stringByJoiningComponents(fields, "\x1f\x1d\x1f");
}

std::vector<std::string> logFields(const std::string& message = "Subject\n\nBody\n") {
    return {firstHash,
            treeHash,
            secondHash,
            "Ada",
            "1577934245",
            "ada@example.org",
            "Grace",
            "1577934246",
            "grace@example.org",
            " (HEAD -> refs/heads/main, tag: refs/tags/v1)",
            message};
}

RVDate seconds(std::int64_t count) {
    return RVDate(std::chrono::seconds(count));
}

// The only item of a record; fails the test if there is another number of them.
Item onlyItem(const std::string& record, const std::vector<std::string>& format) {
    RVGitCommitOutputParser parser(std::string_view(record), format);
    std::optional<RVError> error;
    EXPECT_TRUE(parser.parse(&error));
    EXPECT_FALSE(error);
    EXPECT_EQ(parser.commits().size(), 1U);
    return parser.commits().empty() ? Item() : parser.commits().front();
}

Item itemWithField(const std::string& placeholder, const std::string& value) {
    return onlyItem(joined({firstHash, value}), {"%H", placeholder});
}

// The same rules, written the slow and obvious way.
struct PlainItem {
    Text commitHash, treeHash, authorName, authorEmail, committerName, committerEmail, message,
        GPGStatus, GPGUsername, GPGEmail, GPGKeyIdentifier, GPGSigningKey;
    std::optional<RVDate> authorDate, committerDate;
    std::vector<std::string> parentCommitHashes, refs;

    friend bool operator==(const PlainItem&, const PlainItem&) = default;
};

PlainItem plain(const Item& item) {
    PlainItem copy;
    copy.commitHash = item.commitHash();
    copy.treeHash = item.treeHash();
    copy.parentCommitHashes = item.parentCommitHashes();
    copy.authorName = item.authorName();
    copy.authorEmail = item.authorEmail();
    copy.authorDate = item.authorDate();
    copy.committerName = item.committerName();
    copy.committerEmail = item.committerEmail();
    copy.committerDate = item.committerDate();
    copy.refs = item.refs();
    copy.message = item.message();
    copy.GPGStatus = item.GPGStatus();
    copy.GPGUsername = item.GPGUsername();
    copy.GPGEmail = item.GPGEmail();
    copy.GPGKeyIdentifier = item.GPGKeyIdentifier();
    copy.GPGSigningKey = item.GPGSigningKey();
    return copy;
}

std::vector<PlainItem> plain(const std::vector<Item>& items) {
    std::vector<PlainItem> copies;
    for (const Item& item : items)
        copies.push_back(plain(item));
    return copies;
}

std::vector<std::string> plainRefs(const std::string& value) {
    std::string text = stringByTrimmingWhitespaceAndNewline(value);
    if (text.empty())
        return {};
    text = stringByReplacingOccurrences(text, " -> ", ", ");
    // Characters, not bytes.
    static const RVRegularExpression inner("^.(.*).$|^.$",
                                           RVRegularExpression::DotMatchesLineSeparators);
    const auto match = inner.firstMatch(text);
    std::vector<std::string> refs;
    for (std::string piece :
         componentsSeparatedByString(match.at(1).value_or(std::string_view()), ", ")) {
        if (piece.starts_with("tag: "))
            piece.erase(0, 5);
        refs.push_back(stringByTrimmingWhitespaceAndNewline(piece));
    }
    return refs;
}

struct PlainResult {
    bool succeeded = true;
    std::vector<PlainItem> items;
};

PlainResult parsePlainly(const std::string& output, const std::vector<std::string>& format,
                         bool usesNULByte = true) {
    PlainResult result;
    std::vector<std::string> records;
    if (usesNULByte) {
        for (const std::string_view piece : componentsSeparatedByNULByte(output))
            records.push_back(stringUsingBestEncoding(piece));
    } else {
        records = componentsSeparatedByString(stringUsingBestEncoding(output), "\n");
    }
    for (const std::string& record : records) {
        if (record.empty())
            continue;
        const auto pieces = componentsSeparatedByString(record, "\x1f\x1d\x1f");
        if (pieces.size() != format.size()) {
            result.succeeded = false;
            return result;
        }
        std::optional<PlainItem> item = PlainItem();
        for (std::size_t index = 0; index < pieces.size() && item; ++index) {
            const std::string& placeholder = format[index];
            const std::string& value = pieces[index];
            const auto date = [&] { return RVDate(std::chrono::seconds(int32Value(value))); };
            if (placeholder == "%H")
                item->commitHash = value;
            else if (placeholder == "%T")
                item->treeHash = value;
            else if (placeholder == "%P")
                item->parentCommitHashes = value.empty() ? std::vector<std::string>()
                                                         : componentsSeparatedByString(value, " ");
            else if (placeholder == "%an")
                item->authorName = value;
            else if (placeholder == "%at")
                item->authorDate = date();
            else if (placeholder == "%ae")
                item->authorEmail = value;
            else if (placeholder == "%cn")
                item->committerName = value;
            else if (placeholder == "%ct")
                item->committerDate = date();
            else if (placeholder == "%ce")
                item->committerEmail = value;
            else if (placeholder == "%d")
                item->refs = plainRefs(value);
            else if (placeholder == "%B")
                item->message = stringByTrimmingWhitespaceAndNewline(value);
            else if (placeholder == "%gs")
                item->message = value;
            else if (placeholder == "%gD") {
                const auto brace = value.rfind('{');
                if (brace == std::string::npos) {
                    item.reset();
                } else {
                    std::string text = value.substr(brace + 1);
                    if (!text.empty())
                        text.pop_back();
                    item->committerDate = dateFromISO8601String(text);
                }
            } else if (placeholder == "%G?")
                item->GPGStatus = value;
            else if (placeholder == "%GS") {
                const auto match = RVGitCommitOutputParser::gpgIdentityRegex().allMatches(value);
                if (!match.empty()) {
                    item->GPGUsername = std::string(*match.back()[1]);
                    item->GPGEmail = std::string(*match.back()[2]);
                }
            } else if (placeholder == "%GP") {
                if (value != "%GP")
                    item->GPGKeyIdentifier = value;
            } else if (placeholder == "%GK")
                item->GPGSigningKey = value;
        }
        if (item)
            result.items.push_back(*item);
    }
    return result;
}

void expectSameAsPlain(const std::string& output, const std::vector<std::string>& format,
                       bool usesNULByte = true) {
    const PlainResult expected = parsePlainly(output, format, usesNULByte);
    RVGitCommitOutputParser parser(std::string_view(output), format, usesNULByte);
    std::optional<RVError> error;
    ASSERT_EQ(parser.parse(&error), expected.succeeded) << testing::PrintToString(output);
    EXPECT_EQ(error.has_value(), !expected.succeeded);
    ASSERT_TRUE(plain(parser.commits()) == expected.items) << testing::PrintToString(output);
    for (const Item& item : parser.commits())
        ASSERT_TRUE(isValidUTF8(item.description())) << testing::PrintToString(output);
}

std::string someOutput() {
    auto second = logFields("Größe\n");
    second[2] = "";
    second[9] = "";
    return joined(logFields()) + '\0' + joined(second) + '\0' + joined(logFields(""));
}

TEST(RVGitCommitOutputParserTest, ReadsEveryFieldOfTheLogFormat) {
    const Item item =
        onlyItem(joined(logFields()), RVGitCommitOutputParser::gitCommitLogPrettyFormat());
    EXPECT_EQ(item.commitHash(), firstHash);
    EXPECT_EQ(item.treeHash(), treeHash);
    EXPECT_THAT(item.parentCommitHashes(), ElementsAre(secondHash));
    EXPECT_EQ(item.authorName(), "Ada");
    EXPECT_EQ(item.authorEmail(), "ada@example.org");
    EXPECT_EQ(item.authorDate(), seconds(1577934245));
    EXPECT_EQ(item.committerName(), "Grace");
    EXPECT_EQ(item.committerEmail(), "grace@example.org");
    EXPECT_EQ(item.committerDate(), seconds(1577934246));
    EXPECT_THAT(item.refs(), ElementsAre("HEAD", "refs/heads/main", "refs/tags/v1"));
    EXPECT_EQ(item.message(), "Subject\n\nBody");
    EXPECT_EQ(item.GPGStatus(), std::nullopt);
    EXPECT_EQ(item.GPGUsername(), std::nullopt);
    EXPECT_EQ(item.GPGEmail(), std::nullopt);
    EXPECT_EQ(item.GPGKeyIdentifier(), std::nullopt);
    EXPECT_EQ(item.GPGSigningKey(), std::nullopt);
}

TEST(RVGitCommitOutputParserTest, ReadsTheFieldsOfASignature) {
    auto fields = logFields();
    fields.insert(fields.end(), {"G", "Ada Lovelace  <ada@example.org>", "FINGERPRINT", "KEY"});
    const Item item =
        onlyItem(joined(fields), RVGitCommitOutputParser::gitCommitLogPrettyFormatGPG());
    EXPECT_EQ(item.GPGStatus(), "G");
    EXPECT_EQ(item.GPGUsername(), "Ada Lovelace ");
    EXPECT_EQ(item.GPGEmail(), "ada@example.org");
    EXPECT_EQ(item.GPGKeyIdentifier(), "FINGERPRINT");
    EXPECT_EQ(item.GPGSigningKey(), "KEY");
}

TEST(RVGitCommitOutputParserTest, HashesAloneLeaveTheOtherFieldsAbsent) {
    RVGitCommitOutputParser parser(firstHash + '\0' + secondHash,
                                   RVGitCommitOutputParser::gitCommitHashLogPrettyFormat());
    ASSERT_TRUE(parser.parse());
    ASSERT_EQ(parser.commits().size(), 2U);
    EXPECT_EQ(parser.commits()[1].commitHash(), secondHash);
    EXPECT_EQ(parser.commits()[1].treeHash(), std::nullopt);
    EXPECT_EQ(parser.commits()[1].authorDate(), std::nullopt);
    EXPECT_EQ(parser.commits()[1].committerDate(), std::nullopt);
    EXPECT_EQ(parser.commits()[1].message(), std::nullopt);
    EXPECT_THAT(parser.commits()[1].refs(), IsEmpty());
}

TEST(RVGitCommitOutputParserTest, ABlankItemHasNoField) {
    EXPECT_TRUE(plain(Item()) == PlainItem());
    EXPECT_EQ(Item().parentCount(), 0U);
}

TEST(RVGitCommitOutputParserTest, FormatsAndTheirStringsBelongTogether) {
    EXPECT_THAT(
        RVGitCommitOutputParser::gitCommitLogPrettyFormat(),
        ElementsAre("%H", "%T", "%P", "%an", "%at", "%ae", "%cn", "%ct", "%ce", "%d", "%B"));
    EXPECT_EQ(RVGitCommitOutputParser::gitCommitLogPrettyFormatString(),
              "%H%x1f%x1d%x1f%T%x1f%x1d%x1f%P%x1f%x1d%x1f%an%x1f%x1d%x1f%at%x1f%x1d%x1f%ae"
              "%x1f%x1d%x1f%cn%x1f%x1d%x1f%ct%x1f%x1d%x1f%ce%x1f%x1d%x1f%d%x1f%x1d%x1f%B");
    EXPECT_THAT(RVGitCommitOutputParser::gitCommitLogPrettyFormatGPG(),
                ElementsAre("%H", "%T", "%P", "%an", "%at", "%ae", "%cn", "%ct", "%ce", "%d", "%B",
                            "%G?", "%GS", "%GP", "%GK"));
    EXPECT_EQ(RVGitCommitOutputParser::gitCommitLogPrettyFormatGPGString(),
              RVGitCommitOutputParser::gitCommitLogPrettyFormatString() +
                  "%x1f%x1d%x1f%G?%x1f%x1d%x1f%GS%x1f%x1d%x1f%GP%x1f%x1d%x1f%GK");
    EXPECT_THAT(RVGitCommitOutputParser::gitCommitHashLogPrettyFormat(), ElementsAre("%H"));
    EXPECT_EQ(RVGitCommitOutputParser::gitCommitHashLogPrettyFormatString(), "%H");
    EXPECT_EQ(RVGitCommitOutputParser::gitStashListPrettyFormat(),
              RVGitCommitOutputParser::gitCommitLogPrettyFormat());
    EXPECT_EQ(RVGitCommitOutputParser::gitStashListPrettyFormatString(),
              RVGitCommitOutputParser::gitCommitLogPrettyFormatString());
    EXPECT_THAT(RVGitCommitOutputParser::gitRefLogPrettyFormat(), ElementsAre("%H", "%gs", "%gD"));
    EXPECT_EQ(RVGitCommitOutputParser::gitRefLogPrettyFormatString(),
              "%H%x1f%x1d%x1f%gs%x1f%x1d%x1f%gD");
    EXPECT_EQ(RVGitCommitOutputParser::commitBoundaryString(), "\x1f\x1d\x1f");
}

TEST(RVGitCommitOutputParserTest, FactoriesUseNULUnlessToldOtherwise) {
    const std::string output = joined({firstHash, "one\ntwo"});
    const auto parser = RVGitCommitOutputParser::commitParserWithData(output, {"%H", "%B"});
    EXPECT_TRUE(parser->usesNULByteAsNewLineDelimiter());
    EXPECT_THAT(parser->prettyFormat(), ElementsAre("%H", "%B"));
    ASSERT_TRUE(parser->parse());
    ASSERT_EQ(parser->commits().size(), 1U);
    EXPECT_EQ(parser->commits()[0].message(), "one\ntwo");

    const auto lines = RVGitCommitOutputParser::commitParserWithData(output, {"%H", "%B"}, false);
    EXPECT_FALSE(lines->usesNULByteAsNewLineDelimiter());
    EXPECT_FALSE(lines->parse());
    ASSERT_EQ(lines->commits().size(), 1U);
    EXPECT_EQ(lines->commits()[0].message(), "one");
}

TEST(RVGitCommitOutputParserTest, ItemsOutliveTheParserAndItsBytes) {
    std::vector<Item> items;
    {
        std::string output = someOutput();
        RVGitCommitOutputParser parser(std::string_view(output),
                                       RVGitCommitOutputParser::gitCommitLogPrettyFormat());
        ASSERT_TRUE(parser.parse());
        items = parser.takeIndexedResults();
        output.assign(output.size(), 'x');
    }
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[1].message(), "Größe");
    EXPECT_EQ(items[1].commitHashView(), std::optional<std::string_view>(firstHash));
    EXPECT_THAT(items[0].parentCommitHashViews(), ElementsAre(secondHash));
}

TEST(RVGitCommitOutputParserTest, ACommandsOutputIsNotCopied) {
    const auto buffer = std::make_shared<RVDataBuffer>();
    buffer->append(someOutput());
    RVGitCommitOutputParser parser(std::shared_ptr<const RVDataBuffer>(buffer),
                                   RVGitCommitOutputParser::gitCommitLogPrettyFormat());
    ASSERT_TRUE(parser.parse());
    EXPECT_EQ(parser.commits()[0].commitHashView()->data(), buffer->view().data());
}

TEST(RVGitCommitOutputParserTest, NoOutputHasNoCommits) {
    RVGitCommitOutputParser parser("", RVGitCommitOutputParser::gitCommitLogPrettyFormat());
    std::optional<RVError> error;
    EXPECT_TRUE(parser.parse(&error));
    EXPECT_FALSE(error);
    EXPECT_THAT(parser.commits(), IsEmpty());
}

TEST(RVGitCommitOutputParserTest, ARootCommitHasNoParents) {
    EXPECT_THAT(itemWithField("%P", "").parentCommitHashes(), IsEmpty());
    EXPECT_EQ(itemWithField("%P", "").parentCount(), 0U);
    EXPECT_THAT(itemWithField("%P", "a b c").parentCommitHashes(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(itemWithField("%P", "a b c").parentCount(), 3U);
}

TEST(RVGitCommitOutputParserTest, DatesSaturateAtThe32BitRange) {
    for (const char* placeholder : {"%at", "%ct"}) {
        const auto date = [&](const std::string& value) {
            const Item item = itemWithField(placeholder, value);
            return placeholder == "%at"s ? item.authorDate() : item.committerDate();
        };
        EXPECT_EQ(date("2147483647"), seconds(2147483647));
        EXPECT_EQ(date("2147483648"), seconds(2147483647));
        EXPECT_EQ(date("99999999999999999999"), seconds(2147483647));
        EXPECT_EQ(date("-2147483649"), seconds(-2147483648LL));
        EXPECT_EQ(date("-1"), seconds(-1));
        EXPECT_EQ(date(""), seconds(0));
        EXPECT_EQ(date("x"), seconds(0));
        EXPECT_EQ(date("12x"), seconds(12));
    }
}

TEST(RVGitCommitOutputParserTest, DecorationsBecomeFullRefNames) {
    const auto refs = [](const std::string& value) { return itemWithField("%d", value).refs(); };
    EXPECT_THAT(refs(""), IsEmpty());
    EXPECT_THAT(refs(" \n"), IsEmpty());
    EXPECT_FALSE(itemWithField("%d", " ").hasRefs());
    EXPECT_TRUE(itemWithField("%d", " (HEAD)").hasRefs());
    EXPECT_THAT(refs(" (HEAD)"), ElementsAre("HEAD"));
    EXPECT_THAT(refs("(HEAD -> refs/heads/main)"), ElementsAre("HEAD", "refs/heads/main"));
    EXPECT_THAT(refs(" (tag: refs/tags/v1, refs/heads/a,b, grafted)"),
                ElementsAre("refs/tags/v1", "refs/heads/a,b", "grafted"));
    EXPECT_THAT(refs("()"), ElementsAre(""));
    EXPECT_THAT(refs("("), ElementsAre(""));
    EXPECT_THAT(refs("\u00e9a, b\u00e9"), ElementsAre("a", "b"));
}

TEST(RVGitCommitOutputParserTest, MessagesAreTrimmedAndReflogMessagesAreNot) {
    EXPECT_EQ(itemWithField("%B", "\n \u00a0Text\n\nmore\t\u2028\n").message(), "Text\n\nmore");
    EXPECT_EQ(itemWithField("%B", " \n").message(), "");
    EXPECT_EQ(itemWithField("%gs", " Text ").message(), " Text ");
}

TEST(RVGitCommitOutputParserTest, ReflogDatesStandInTheLastBraces) {
    const auto date = [](const std::string& value) {
        return itemWithField("%gD", value).committerDate();
    };
    EXPECT_EQ(date("refs/stash@{2024-01-01T10:00:00+01:00}"), seconds(1704099600));
    EXPECT_EQ(date("refs/stash@{2024-01-01T10:00:00Z}"), seconds(1704103200));
    EXPECT_EQ(date("refs/stash@{2024-01-01T10:00:00+00:00}"), seconds(1704103200));
    EXPECT_EQ(date("refs/heads/{a}@{2024-01-01T10:00:00-02:30}"), seconds(1704112200));
    EXPECT_EQ(date("HEAD@{2050-01-01T00:00:00Z}"), seconds(2524608000));
}

TEST(RVGitCommitOutputParserTest, AnUnreadableReflogDateIsAbsent) {
    for (const char* value : {"HEAD@{0}", "HEAD@{", "HEAD@{}", "HEAD@{2024-01-01}"}) {
        const Item item = itemWithField("%gD", value);
        EXPECT_EQ(item.commitHash(), firstHash);
        EXPECT_EQ(item.committerDate(), std::nullopt) << value;
    }
}

TEST(RVGitCommitOutputParserTest, AReflogEntryWithoutBraceIsDroppedAlone) {
    const std::string output = joined({firstHash, "one", "HEAD"}) + "\n" +
                               joined({secondHash, "two", "HEAD@{2024-01-01T10:00:00Z}"}) + "\n";
    RVGitCommitOutputParser parser(output, RVGitCommitOutputParser::gitRefLogPrettyFormat(), false);
    ASSERT_TRUE(parser.parse());
    ASSERT_EQ(parser.commits().size(), 1U);
    EXPECT_EQ(parser.commits()[0].commitHash(), secondHash);
    EXPECT_EQ(parser.commits()[0].message(), "two");
    EXPECT_EQ(parser.commits()[0].committerDate(), seconds(1704103200));
}

TEST(RVGitCommitOutputParserTest, ADroppedRecordMayBeOneThatWasDecoded) {
    const std::string output = joined({firstHash, "caf\xe9", "HEAD"}) + '\0' +
                               joined({secondHash, "caf\xe9", "HEAD@{2024-01-01T10:00:00Z}"});
    RVGitCommitOutputParser parser(output, RVGitCommitOutputParser::gitRefLogPrettyFormat());
    ASSERT_TRUE(parser.parse());
    ASSERT_EQ(parser.commits().size(), 1U);
    EXPECT_EQ(parser.commits()[0].commitHash(), secondHash);
    EXPECT_EQ(parser.commits()[0].message(), "café");
}

TEST(RVGitCommitOutputParserTest, ASignerOfAnotherFormIsAbsent) {
    for (const char* value :
         {"", "ada@example.org", "<ada@example.org>", "Ada <ada", "Ada<a>", "Ada\n<a> "}) {
        const Item item = itemWithField("%GS", value);
        EXPECT_EQ(item.GPGUsername(), std::nullopt) << value;
        EXPECT_EQ(item.GPGEmail(), std::nullopt) << value;
    }
    EXPECT_EQ(itemWithField("%GS", "A <b> <c>").GPGUsername(), "A <b>");
    EXPECT_EQ(itemWithField("%GS", "A <b> <c>").GPGEmail(), "c");
    EXPECT_EQ(itemWithField("%GS", " <c>").GPGUsername(), "");
}

TEST(RVGitCommitOutputParserTest, AFingerprintThatGitDidNotExpandIsAbsent) {
    EXPECT_EQ(itemWithField("%GP", "%GP").GPGKeyIdentifier(), std::nullopt);
    EXPECT_EQ(itemWithField("%GP", "").GPGKeyIdentifier(), "");
}

TEST(RVGitCommitOutputParserTest, UnknownPlaceholdersAreIgnored) {
    const Item item = onlyItem(joined({"x", firstHash, "y"}), {"%zz", "%H", "%N"});
    EXPECT_EQ(item.commitHash(), firstHash);
}

TEST(RVGitCommitOutputParserTest, TheLaterOfTwoPlaceholdersForOneFieldCounts) {
    EXPECT_EQ(onlyItem(joined({" a ", " b "}), {"%B", "%gs"}).message(), " b ");
    EXPECT_EQ(onlyItem(joined({" a ", " b "}), {"%gs", "%B"}).message(), "b");
    EXPECT_EQ(onlyItem(joined({"@{2024-01-01T10:00:00Z}", "7"}), {"%gD", "%ct"}).committerDate(),
              seconds(7));
    EXPECT_EQ(onlyItem(joined({"7", "@{2024-01-01T10:00:00Z}"}), {"%ct", "%gD"}).committerDate(),
              seconds(1704103200));
}

TEST(RVGitCommitOutputParserTest, AMessageWithBoundaryBytesFailsTheParse) {
    const std::string bad =
        joined(logFields("before\x1f\x1d\x1f"
                         "after"));
    const std::string output = joined(logFields()) + '\0' + bad + '\0' + joined(logFields());
    RVGitCommitOutputParser parser(output, RVGitCommitOutputParser::gitCommitLogPrettyFormat());
    std::optional<RVError> error;
    EXPECT_FALSE(parser.parse(&error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), RVGitOutputParserError);
    EXPECT_EQ(error->userInfoString(RVGitOutputParserNameErrorKey), "RVGitCommitOutputParser");
    EXPECT_EQ(error->userInfoString(RVGitOutputParserLineErrorKey), bad);
    EXPECT_EQ(parser.commits().size(), 1U);
}

TEST(RVGitCommitOutputParserTest, PartsOfABoundaryAreText) {
    const std::string message = "\x1f \x1d\x1f \x1f\x1d \x1f\x1f\x1d";
    EXPECT_EQ(itemWithField("%gs", message).message(), message);
}

TEST(RVGitCommitOutputParserTest, OnlyARecordThatIsNoUTF8IsDecoded) {
    const std::string output = joined(logFields("Größe\n")) + '\0' +
                               joined(logFields("Gr\xf6\xdf"
                                                "e \x80\n")) +
                               '\0' + joined(logFields("Größe\n"));
    RVGitCommitOutputParser parser(output, RVGitCommitOutputParser::gitCommitLogPrettyFormat());
    ASSERT_TRUE(parser.parse());
    ASSERT_EQ(parser.commits().size(), 3U);
    EXPECT_EQ(parser.commits()[0].message(), "Größe");
    EXPECT_EQ(parser.commits()[1].message(), "Größe €");
    EXPECT_EQ(parser.commits()[1].authorEmail(), "ada@example.org");
    EXPECT_EQ(parser.commits()[2].message(), "Größe");
}

TEST(RVGitCommitOutputParserTest, WithNewlinesEachLineIsDecodedByItself) {
    const std::string output = joined({firstHash, "Größe"}) + '\n' + joined({secondHash, "\xf6"});
    RVGitCommitOutputParser parser(output, {"%H", "%gs"}, false);
    ASSERT_TRUE(parser.parse());
    ASSERT_EQ(parser.commits().size(), 2U);
    EXPECT_EQ(parser.commits()[0].message(), "Größe");
    EXPECT_EQ(parser.commits()[1].message(), "ö");
}

TEST(RVGitCommitOutputParserTest, DescriptionListsTheFirstElevenFields) {
    auto fields = logFields();
    fields.insert(fields.end(), {"G", "Ada <ada@example.org>", "FINGERPRINT", "KEY"});
    const std::string text =
        onlyItem(joined(fields), RVGitCommitOutputParser::gitCommitLogPrettyFormatGPG())
            .description();
    for (const char* name :
         {"commitHash", "treeHash", "parentCommitHashes", "authorName", "authorEmail", "authorDate",
          "committerName", "committerEmail", "committerDate", "refs", "message"})
        EXPECT_THAT(text, testing::HasSubstr(name));
    EXPECT_THAT(text, testing::Not(testing::HasSubstr("GPG")));
    EXPECT_THAT(text, testing::Not(testing::HasSubstr("FINGERPRINT")));
}

TEST(RVGitCommitOutputParserTest, SharedObjectsAreMadeOnce) {
    EXPECT_EQ(&RVGitCommitOutputParser::gpgIdentityRegex(),
              &RVGitCommitOutputParser::gpgIdentityRegex());
    EXPECT_EQ(RVGitCommitOutputParser::reflogDateFormatter()("2024-01-01T10:00:00+01:00"),
              seconds(1704099600));
}

TEST(RVGitCommitOutputParserTest, DamagedOutputIsReadLikeThePlainParserReadsIt) {
    for (const std::string& output : damagedOutputs(someOutput()))
        expectSameAsPlain(output, RVGitCommitOutputParser::gitCommitLogPrettyFormat());
    const std::string signedRecord =
        joined({"abc", "U", "Ada <a@b>", "%GP", "K"}) + '\0' + joined({"def", "N", "", "", ""});
    for (const std::string& output : damagedOutputs(signedRecord))
        expectSameAsPlain(output, {"%H", "%G?", "%GS", "%GP", "%GK"});
    const std::string reflog = joined({"abc", "é", "HEAD@{2024-01-01T10:00:00Z}"}) + '\n' +
                               joined({"def", "", "HEAD"}) + '\n';
    for (const std::string& output : damagedOutputs(reflog))
        expectSameAsPlain(output, RVGitCommitOutputParser::gitRefLogPrettyFormat(), false);
}

TEST(RVGitCommitOutputParserTest, RandomOutputIsReadLikeThePlainParserReadsIt) {
    std::mt19937 random(20200102);
    const std::string pieces[] = {"\x1f\x1d\x1f", "\x1f", "\x1d", "\0"s, "\n", " ", "a",  "é",
                                  "\xff",         "-> ",  "(",    ")",   ", ", "7", "@{", "}"};
    const std::vector<std::string> formats[] = {
        {"%H"}, {"%H", "%d"}, {"%B", "%at", "%P"}, {"%gD", "%gs"}, {"%GS", "%GP", "%zz"}};
    for (int round = 0; round < 20000; ++round) {
        std::string output;
        for (std::size_t count = random() % 24; count > 0; --count)
            output += pieces[random() % std::size(pieces)];
        expectSameAsPlain(output, formats[random() % std::size(formats)], round % 2 == 0);
    }
}

TEST(RVGitCommitOutputParserTest, PiecesOfAnOutputGiveWhatTheWholeGives) {
    std::string output;
    for (int count = 0; count < 50; ++count) {
        auto fields = logFields(count % 7 == 0 ? "caf\xe9" : "Message " + std::to_string(count));
        fields[0] = std::to_string(count);
        output += joined(fields) + '\0';
    }
    const auto& format = RVGitCommitOutputParser::gitCommitLogPrettyFormat();
    const PlainResult expected = parsePlainly(output, format);
    std::mt19937 random(20200102);
    for (int round = 0; round < 100; ++round) {
        const auto buffer = std::make_shared<RVDataBuffer>();
        const auto records = std::make_shared<RVGitCommitRecords>(buffer, format);
        std::vector<Item> items;
        std::size_t parsed = 0;
        while (buffer->size() < output.size()) {
            buffer->append(std::string_view(output).substr(buffer->size(), random() % 500));
            const std::size_t end = buffer->view().rfind('\0');
            if (end == std::string_view::npos || end < parsed)
                continue;
            RVGitCommitOutputParser parser(records, buffer->view().substr(parsed, end - parsed));
            ASSERT_TRUE(parser.parse());
            for (const Item& item : parser.commits())
                items.push_back(item);
            parsed = end;
        }
        ASSERT_TRUE(plain(items) == expected.items);
    }
}

}  // namespace
