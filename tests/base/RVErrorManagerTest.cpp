#include "RVGit/base/RVErrorManager.h"

#include <gtest/gtest.h>

namespace {

class RVErrorManagerTest : public testing::Test {
protected:
    RVErrorManagerTest() {
        manager.addErrorDefinitions(
            {
                {1, "PlainError", "Plain Title", "Plain reason.", {}},
                {2, "PathError", "Path Title", "From “%@” to “%@”.", {"From", "To"}},
                {3, "KeylessError", "Keyless Title", "Nothing “%@” here.", {}},
                {4, "EmptyError", "", "", {}},
            },
            "Domain");
    }

    RVErrorManager manager;
};

TEST_F(RVErrorManagerTest, ComposesTitleAndReason) {
    const auto error = manager.errorWithDomain("Domain", 2, {{"From", "a"}, {"To", "b"}});
    EXPECT_EQ(error.domain(), "Domain");
    EXPECT_EQ(error.code(), 2);
    EXPECT_EQ(error.localizedDescription(), "Path Title");
    EXPECT_EQ(error.localizedFailureReason(), "From “a” to “b”.");
    EXPECT_EQ(error.userInfoString("From"), "a");
}

TEST_F(RVErrorManagerTest, PlaceholderInAValueIsNotFilledAgain) {
    const auto error = manager.errorWithDomain("Domain", 2, {{"From", "%@"}, {"To", "b"}});
    EXPECT_EQ(error.localizedFailureReason(), "From “%@” to “b”.");
}

TEST_F(RVErrorManagerTest, MissingValueLeavesItsPlaceEmpty) {
    EXPECT_EQ(manager.errorWithDomain("Domain", 2, {{"To", "b"}}).localizedFailureReason(),
              "From “” to “b”.");
    EXPECT_EQ(manager.errorWithDomain("Domain", 3, {}).localizedFailureReason(),
              "Nothing “” here.");
}

TEST_F(RVErrorManagerTest, ValuesThatAreNoTextAreShown) {
    const auto error =
        manager.errorWithDomain("Domain", 2, {{"From", RVValue::StringList{"a", "b"}}, {"To", 3}});
    EXPECT_EQ(error.localizedFailureReason(), "From “a, b” to “3”.");
}

TEST_F(RVErrorManagerTest, ComposedTextsReplaceOlderOnes) {
    const auto error =
        manager.errorWithDomain("Domain", 1, {{RVLocalizedDescriptionErrorKey, "Old"}});
    EXPECT_EQ(error.localizedDescription(), "Plain Title");
}

TEST_F(RVErrorManagerTest, EmptyTextsAreThereAndEmpty) {
    const auto error = manager.errorWithDomain("Domain", 4, {});
    EXPECT_EQ(error.localizedDescription(), "");
    EXPECT_EQ(error.localizedFailureReason(), "");
}

TEST_F(RVErrorManagerTest, UnknownCodeOrDomainHasNoTexts) {
    EXPECT_EQ(manager.errorWithDomain("Domain", 107, {}), RVError("Domain", 107));
    EXPECT_EQ(manager.errorWithDomain("Other", 1, {{"a", "b"}}), RVError("Other", 1, {{"a", "b"}}));
    EXPECT_EQ(manager.definition("Other", 1), nullptr);
    EXPECT_EQ(manager.definition("Domain", 107), nullptr);
}

TEST_F(RVErrorManagerTest, KnownCodeKeepsItsDefinition) {
    const auto* definition = manager.definition("Domain", 1);
    ASSERT_NE(definition, nullptr);
    manager.addErrorDefinitions({{1, "Other", "Other", "", {}}, {9, "New", "New", "", {}}},
                                "Domain");
    EXPECT_EQ(manager.definition("Domain", 1), definition);
    EXPECT_EQ(definition->name, "PlainError");
    EXPECT_NE(manager.definition("Domain", 9), nullptr);
}

TEST_F(RVErrorManagerTest, TextsPassThroughTheirTranslation) {
    setLocalizedString("Path Title", "Titel");
    setLocalizedString("From “%@” to “%@”.", "Von „%@“ nach „%@“.");
    const auto error = manager.errorWithDomain("Domain", 2, {{"From", "a"}, {"To", "b"}});
    EXPECT_EQ(error.localizedDescription(), "Titel");
    EXPECT_EQ(error.localizedFailureReason(), "Von „a“ nach „b“.");
    setLocalizedString("Path Title", "Path Title");
    setLocalizedString("From “%@” to “%@”.", "From “%@” to “%@”.");
}

TEST_F(RVErrorManagerTest, KeyWithoutTranslationGivesTheFallback) {
    EXPECT_EQ(localizedString("no such key", "fallback"), "fallback");
    setLocalizedString("some key", "text");
    EXPECT_EQ(localizedString("some key", "fallback"), "text");
}

TEST_F(RVErrorManagerTest, SharedManagerIsOneObject) {
    EXPECT_EQ(&RVErrorManager::sharedManager(), &RVErrorManager::sharedManager());
}

}  // namespace
