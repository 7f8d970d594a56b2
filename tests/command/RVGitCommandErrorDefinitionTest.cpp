#include "RVGit/command/RVGitCommandErrorDefinition.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVRegularExpression.h"

using testing::ElementsAre;
using testing::StartsWith;

namespace {

RVGitCommandErrorDefinition definition(RVGitErrorRow row) {
    return RVGitCommandErrorDefinition(std::move(row));
}

TEST(RVGitCommandErrorDefinitionTest, KeepsItsRowAndIsNamedAfterItsCode) {
    auto row = RVGitCommandErrorDefinition::gitCommandErrorDefinitionWithDefinition(
        {.errorCode = 42,
         .commandNames = {"log", "show"},
         .subCommandNames = {"sub"},
         .commandArguments = {"argument"},
         .exitCodes = {1, 128},
         .standardErrorPatterns = {"(e)"},
         .standardErrorMatchedComponentNames = {"E"},
         .standardOutputPatterns = {"(o)"},
         .standardOutputMatchedComponentNames = {"O"}});
    EXPECT_EQ(row->errorCode(), 42);
    EXPECT_EQ(row->name(), "42");
    EXPECT_THAT(row->commandNames(), ElementsAre("log", "show"));
    EXPECT_THAT(row->subCommandNames(), ElementsAre("sub"));
    EXPECT_THAT(row->commandArguments(), ElementsAre("argument"));
    EXPECT_THAT(row->exitCodes(), ElementsAre(1, 128));
    EXPECT_THAT(row->standardErrorPatterns(), ElementsAre("(e)"));
    EXPECT_THAT(row->standardErrorMatchedComponentNames(), ElementsAre("E"));
    EXPECT_THAT(row->standardOutputPatterns(), ElementsAre("(o)"));
    EXPECT_THAT(row->standardOutputMatchedComponentNames(), ElementsAre("O"));
}

TEST(RVGitCommandErrorDefinitionTest, UsesTheSharedCacheUnlessGivenOne) {
    const auto& shared = RVGitCommandErrorDefinition::sharedRegularExpressionCache();
    auto own = std::make_shared<RVGitRegularExpressionCache>();
    EXPECT_EQ(RVGitCommandErrorDefinition("name").regularExpressionCache(), shared);
    EXPECT_EQ(RVGitCommandErrorDefinition("name", own).regularExpressionCache(), own);
    EXPECT_EQ(definition({.errorCode = 1}).regularExpressionCache(), shared);
}

TEST(RVGitCommandErrorDefinitionTest, EmptyListsMatchAnythingAlsoWhatIsAbsent) {
    RVGitCommandErrorDefinition row("any");
    EXPECT_TRUE(row.isMatchedByCommandName("log"));
    EXPECT_TRUE(row.isMatchedByCommandName(std::nullopt));
    EXPECT_TRUE(row.isMatchedBySubCommandName(std::nullopt));
    EXPECT_TRUE(row.isMatchedByExitCode(77));
    EXPECT_TRUE(row.isMatchedByStandardError(std::nullopt));
    EXPECT_TRUE(row.isMatchedByStandardOutput("text"));
}

TEST(RVGitCommandErrorDefinitionTest, NamesNeedAPresentValueThatStandsInTheList) {
    auto row =
        definition({.errorCode = 1, .commandNames = {"pull", "push"}, .subCommandNames = {"show"}});
    EXPECT_TRUE(row.isMatchedByCommandName("push"));
    EXPECT_FALSE(row.isMatchedByCommandName("Push"));
    EXPECT_FALSE(row.isMatchedByCommandName("pus"));
    EXPECT_FALSE(row.isMatchedByCommandName(std::nullopt));
    EXPECT_TRUE(row.isMatchedBySubCommandName("show"));
    EXPECT_FALSE(row.isMatchedBySubCommandName(std::nullopt));
}

TEST(RVGitCommandErrorDefinitionTest, ExitCodesNeedTheValueInTheList) {
    auto row = definition({.errorCode = 1, .exitCodes = {1, 128}});
    EXPECT_TRUE(row.isMatchedByExitCode(128));
    EXPECT_FALSE(row.isMatchedByExitCode(0));
    EXPECT_FALSE(row.isMatchedByExitCode(129));
}

TEST(RVGitCommandErrorDefinitionTest, AnyOneOfThePatternsIsEnough) {
    auto row = definition({.errorCode = 1, .standardErrorPatterns = {"first", "^sec.nd$"}});
    EXPECT_TRUE(row.isMatchedByStandardError("the FIRST one"));
    EXPECT_TRUE(row.isMatchedByStandardError("second\n"));
    EXPECT_FALSE(row.isMatchedByStandardError("a second"));
    EXPECT_FALSE(row.isMatchedByStandardError(""));
    EXPECT_FALSE(row.isMatchedByStandardError(std::nullopt));
}

TEST(RVGitCommandErrorDefinitionTest, AnAnchorMeansTheStartOfTheOutputOnly) {
    auto row = definition({.errorCode = 1, .standardOutputPatterns = {"^Usage:"}});
    EXPECT_TRUE(row.isMatchedByStandardOutput("usage: git"));
    EXPECT_FALSE(row.isMatchedByStandardOutput("error\nusage: git"));
}

TEST(RVGitCommandErrorDefinitionTest, AnEmptyPatternMatchesOnlyAbsentOrEmptyOutput) {
    auto row = definition({.errorCode = 1, .standardErrorPatterns = {""}});
    EXPECT_TRUE(row.isMatchedByStandardError(""));
    EXPECT_TRUE(row.isMatchedByStandardError(std::nullopt));
    EXPECT_FALSE(row.isMatchedByStandardError("x"));
    auto either = definition({.errorCode = 1, .standardErrorPatterns = {"", "x"}});
    EXPECT_TRUE(either.isMatchedByStandardError("x"));
    EXPECT_TRUE(either.isMatchedByStandardError(""));
    EXPECT_FALSE(either.isMatchedByStandardError("y"));
}

TEST(RVGitCommandErrorDefinitionTest, GroupsAreCapturedUnderTheNamesInOrder) {
    auto row = definition({.errorCode = 1,
                           .standardErrorPatterns = {"path '(.+)' in '(.+)'"},
                           .standardErrorMatchedComponentNames = {"Path", "Revision"},
                           .standardOutputPatterns = {"line (\\d+)"},
                           .standardOutputMatchedComponentNames = {"Line"}});
    EXPECT_EQ(row.matchedComponentsForStandardError("Path 'a b' in 'é'\n"),
              (RVUserInfo{{"Path", "a b"}, {"Revision", "é"}}));
    EXPECT_EQ(row.matchedComponentsForStandardOutput("at line 7 and line 8"),
              (RVUserInfo{{"Line", "7"}}));
    EXPECT_EQ(row.matchedComponentsForStandardError("nothing"), std::nullopt);
    EXPECT_EQ(row.matchedComponentsForStandardError(""), std::nullopt);
    EXPECT_EQ(row.matchedComponentsForStandardError(std::nullopt), std::nullopt);
}

TEST(RVGitCommandErrorDefinitionTest, TwoGroupsAgainstOneNameCaptureNothing) {
    auto row = definition({.errorCode = 1,
                           .standardErrorPatterns = {"(a)(b)", "(a)"},
                           .standardErrorMatchedComponentNames = {"A"}});
    EXPECT_EQ(row.matchedComponentsForStandardError("ab"), std::nullopt);
    EXPECT_EQ(row.matchedComponentsForStandardError("a"), (RVUserInfo{{"A", "a"}}));
}

TEST(RVGitCommandErrorDefinitionTest, GroupsWithoutNamesCaptureNothing) {
    auto row = definition({.errorCode = 107, .standardErrorPatterns = {"branch '(.+)'"}});
    EXPECT_EQ(row.matchedComponentsForStandardError("branch 'main'"), std::nullopt);
}

TEST(RVGitCommandErrorDefinitionTest, PatternsWithoutGroupsAreSkipped) {
    auto row = definition({.errorCode = 1,
                           .standardErrorPatterns = {"", "plain", "got (\\w+)"},
                           .standardErrorMatchedComponentNames = {"Word"}});
    EXPECT_EQ(row.matchedComponentsForStandardError("plain got it"), (RVUserInfo{{"Word", "it"}}));
    auto ungrouped = definition({.errorCode = 1,
                                 .standardErrorPatterns = {"unknown revision"},
                                 .standardErrorMatchedComponentNames = {"Line"}});
    EXPECT_EQ(ungrouped.matchedComponentsForStandardError("unknown revision"), std::nullopt);
}

TEST(RVGitCommandErrorDefinitionTest, AGroupThatTookNoPartHasNoEntry) {
    auto row = definition({.errorCode = 1,
                           .standardErrorPatterns = {"(a)|(b)"},
                           .standardErrorMatchedComponentNames = {"A", "B"}});
    EXPECT_EQ(row.matchedComponentsForStandardError("b"), (RVUserInfo{{"B", "b"}}));
}

TEST(RVGitCommandErrorDefinitionTest, PatternsAreCompiledOnceAndIgnoreCase) {
    RVGitCommandErrorDefinition row("name", std::make_shared<RVGitRegularExpressionCache>());
    auto expression = row.makeRegularExpressionWithPattern("a+");
    EXPECT_EQ(row.makeRegularExpressionWithPattern("a+"), expression);
    EXPECT_NE(row.makeRegularExpressionWithPattern("b+"), expression);
    EXPECT_TRUE(expression->matches("xAAx"));
}

TEST(RVGitCommandErrorDefinitionTest, APatternThatDoesNotCompileIsAnInternalInconsistency) {
    auto row = definition({.errorCode = 1, .standardErrorPatterns = {"(open"}});
    try {
        (void)row.isMatchedByStandardError("text");
        FAIL() << "nothing was thrown";
    } catch (const RVInternalInconsistencyException& exception) {
        EXPECT_THAT(exception.what(),
                    StartsWith("Could not create regular expression from pattern: '(open': "));
    }
}

}  // namespace
