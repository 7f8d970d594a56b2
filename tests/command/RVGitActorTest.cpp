#include "RVGit/command/RVGitActor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::Eq;
using testing::Optional;

namespace {

TEST(RVGitActorTest, IsShownWithNameAndAddress) {
    auto actor = RVGitActor::actorWithName("Ada", "ada@example.org");
    EXPECT_THAT(actor->name(), Optional(Eq("Ada")));
    EXPECT_THAT(actor->email(), Optional(Eq("ada@example.org")));
    EXPECT_THAT(actor->displayName(), Optional(Eq("Ada <ada@example.org>")));
    EXPECT_THAT(actor->identifier(), Optional(Eq("Ada <ada@example.org>")));
}

TEST(RVGitActorTest, WithOneOfTheTwoIsShownAsThatOne) {
    EXPECT_THAT(RVGitActor("Ada", std::nullopt).displayName(), Optional(Eq("Ada")));
    EXPECT_THAT(RVGitActor(std::nullopt, "ada@example.org").displayName(),
                Optional(Eq("ada@example.org")));
    EXPECT_THAT(RVGitActor::identifierWithName(std::nullopt, "a@b"), Optional(Eq("a@b")));
}

TEST(RVGitActorTest, AnEmptyNameIsNotAnAbsentOne) {
    EXPECT_THAT(RVGitActor::displayNameWithName("", "a@b"), Optional(Eq(" <a@b>")));
}

TEST(RVGitActorTest, WithNeitherHasNoName) {
    auto actor = RVGitActor::actor();
    EXPECT_EQ(actor->displayName(), std::nullopt);
    EXPECT_EQ(actor->identifier(), std::nullopt);
}

TEST(RVGitActorTest, FieldsCanBeSet) {
    RVGitActor actor;
    actor.setName("Ada");
    actor.setEmail("a@b");
    EXPECT_THAT(actor.identifier(), Optional(Eq("Ada <a@b>")));
}

TEST(RVGitActorTest, ActorsAreEqualWhenTheirIdentifiersAre) {
    RVGitActor ada("Ada", "a@b");
    EXPECT_TRUE(ada.isEqual(ada));
    EXPECT_TRUE(ada.isEqual(RVGitActor("Ada", "a@b")));
    EXPECT_TRUE(ada.isEqualToGitActor(RVGitActor("Ada <a@b>", std::nullopt)));
    EXPECT_FALSE(ada.isEqualToGitActor(RVGitActor("Ada", "a@c")));
    EXPECT_FALSE(ada == RVGitActor());
    EXPECT_TRUE(RVGitActor() == RVGitActor());
}

}  // namespace
