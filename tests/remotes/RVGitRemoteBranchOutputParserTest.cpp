#include "RVGit/remotes/RVGitRemoteBranchOutputParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "tests/support/RVDamagedOutput.h"
#include "tests/support/RVErrorMatchers.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

const std::string hashA(40, 'a');
const std::string hashB(40, 'b');

std::string textOf(const RVGitRemoteBranchOutputParserResultItem& item) {
    return (item.isHead ? "*" : "") + item.fullRefName + " " + item.commitHash.value_or("-");
}

Strings parsed(std::string_view output) {
    RVGitRemoteBranchOutputParser parser(output);
    EXPECT_TRUE(parser.parse());
    Strings texts;
    for (const auto& item : parser.remoteBranches())
        texts.push_back(textOf(item));
    return texts;
}

TEST(RVGitRemoteBranchOutputParserTest, MarksWhatTheRemotesHeadPointsAt) {
    const std::string head = "  origin/HEAD -> origin/main\n";
    const std::string main = "  origin/main " + hashA + " Subject\n";
    const std::string topic = "  origin/topic/x   " + hashB + " \n";
    EXPECT_THAT(parsed(head + main + topic), ElementsAre("*refs/remotes/origin/main " + hashA,
                                                         "refs/remotes/origin/topic/x " + hashB));
    EXPECT_THAT(parsed(topic + main + head), ElementsAre("refs/remotes/origin/topic/x " + hashB,
                                                         "*refs/remotes/origin/main " + hashA));
}

TEST(RVGitRemoteBranchOutputParserTest, AHeadAloneHasNoHash) {
    EXPECT_THAT(parsed("  origin/HEAD  -> origin/gone\n"),
                ElementsAre("*refs/remotes/origin/gone -"));
}

TEST(RVGitRemoteBranchOutputParserTest, AnArrowInASubjectMeansNothing) {
    EXPECT_THAT(parsed("  origin/main " + hashA + " a -> b\n"),
                ElementsAre("refs/remotes/origin/main " + hashA));
}

TEST(RVGitRemoteBranchOutputParserTest, OtherLinesAreIgnored) {
    EXPECT_THAT(parsed("warning: x\n\n  origin/x abc S\n  a b c\n"), IsEmpty());
}

TEST(RVGitRemoteBranchOutputParserTest, AHashOf64DigitsFails) {
    const std::string line = "  origin/main " + std::string(64, 'a') + " Subject\n";
    RVGitRemoteBranchOutputParser parser(line);
    EXPECT_THAT([&](RVErrorPlace error) { return parser.parse(error); }, failsWith(11));
}

TEST(RVGitRemoteBranchOutputParserTest, CuttingByHandAgreesWithTheExpressions) {
    const RVRegularExpression branchLine(R"(^\s*([^ ]+)\s+([0-9a-f]{40})\s+)");
    const RVRegularExpression symbolicLine(R"(^\s*[^ ]+\s+\-\>\s(.+))");
    const auto byExpression = [&](const std::string& line) -> std::string {
        const std::string text = stringUsingBestEncoding(line);
        if (const auto match = branchLine.firstMatch(text); !match.empty())
            return "refs/remotes/" + std::string(*match[1]) + " " + std::string(*match[2]);
        if (const auto match = symbolicLine.firstMatch(text); !match.empty())
            return "*refs/remotes/" + std::string(*match[1]) + " -";
        return "";
    };
    std::mt19937 random(20260108);
    const Strings pieces = {"*",    " ",  "  ",       "origin/main",  "(x)",     hashA,      hashB,
                            " -> ", "\t", "\xC2\xA0", "\xE2\x80\xA8", "Subject", "\xC3\xA9", "->",
                            "\r",   "0"};
    std::uniform_int_distribution<std::size_t> piece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(1, 8);
    for (int round = 0; round < 4000; ++round) {
        std::string line = round % 2 == 0 ? "  origin/x " + hashA + " " : "";
        for (int count = length(random); count > 0; --count)
            line += pieces[piece(random)];
        const auto items = parsed(line + "\n");
        ASSERT_LE(items.size(), 1U);
        EXPECT_EQ(items.empty() ? "" : items.front(), byExpression(line)) << line;
    }
}

TEST(RVGitRemoteBranchOutputParserTest, LivesWithDamagedOutput) {
    const std::string output = "  origin/HEAD -> origin/main\n  origin/main " + hashA +
                               " Subject\n  a/b/c " + hashB + " \n";
    for (const std::string& damaged : damagedOutputs(output)) {
        RVGitRemoteBranchOutputParser parser(damaged);
        (void)parser.parse();
        for (const auto& item : parser.remoteBranches()) {
            EXPECT_TRUE(item.fullRefName.starts_with("refs/remotes/"));
            EXPECT_TRUE(!item.commitHash || item.commitHash->size() == 40U);
            EXPECT_TRUE(item.commitHash || item.isHead);
        }
    }
}

}  // namespace
