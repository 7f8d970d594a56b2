#include "RVGit/command/RVGitCommandEnvironment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::Eq;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;

namespace {

TEST(RVGitCommandEnvironmentTest, IsSharedByTheProcess) {
    EXPECT_EQ(&RVGitCommandEnvironment::sharedEnvironment(),
              &RVGitCommandEnvironment::sharedEnvironment());
}

TEST(RVGitCommandEnvironmentTest, StartsEmpty) {
    RVGitCommandEnvironment environment;
    EXPECT_THAT(environment.dictionaryRepresentation(), IsEmpty());
    EXPECT_EQ(environment.valueForEnvironmentVariable("A"), std::nullopt);
}

TEST(RVGitCommandEnvironmentTest, AnAbsentValueLeavesTheVariableUnset) {
    RVGitCommandEnvironment environment;
    environment.setValueForEnvironmentVariable("1", "A");
    EXPECT_THAT(environment.valueForEnvironmentVariable("A"), Optional(Eq("1")));
    environment.setValueForEnvironmentVariable(std::nullopt, "A");
    environment.setValueForEnvironmentVariable(std::nullopt, "B");
    EXPECT_THAT(environment.dictionaryRepresentation(), IsEmpty());
}

TEST(RVGitCommandEnvironmentTest, AnEmptyValueIsAValue) {
    RVGitCommandEnvironment environment;
    environment.setValueForEnvironmentVariable("", "A");
    EXPECT_THAT(environment.valueForEnvironmentVariable("A"), Optional(Eq("")));
}

TEST(RVGitCommandEnvironmentTest, VariablesAreUnset) {
    RVGitCommandEnvironment environment;
    environment.setValuesFromDictionary({{"A", "1"}, {"B", "2"}});
    environment.unsetValueForEnvironmentVariable("A");
    environment.unsetValueForEnvironmentVariable("C");
    EXPECT_THAT(environment.dictionaryRepresentation(), ElementsAre(Pair("B", "2")));
}

TEST(RVGitCommandEnvironmentTest, MapsAreMergedOverOrReplaceAll) {
    RVGitCommandEnvironment environment;
    environment.setValuesFromDictionary({{"A", "1"}, {"B", "2"}});
    environment.setValuesFromDictionary({{"B", "3"}, {"C", "4"}});
    EXPECT_THAT(environment.dictionaryRepresentation(),
                ElementsAre(Pair("A", "1"), Pair("B", "3"), Pair("C", "4")));
    environment.replaceValuesWithDictionary({{"D", "5"}});
    EXPECT_THAT(environment.dictionaryRepresentation(), ElementsAre(Pair("D", "5")));
}

TEST(RVGitCommandEnvironmentTest, TheRepresentationIsASnapshot) {
    RVGitCommandEnvironment environment;
    environment.setValueForEnvironmentVariable("1", "A");
    RVEnvironment snapshot = environment.dictionaryRepresentation();
    environment.setValueForEnvironmentVariable("2", "A");
    EXPECT_THAT(snapshot, ElementsAre(Pair("A", "1")));
}

}  // namespace
