#include "RVGit/command/RVGitCommandEnvironment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

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

TEST(RVGitCommandEnvironmentTest, MayBeChangedByManyThreads) {
    RVGitCommandEnvironment environment;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 200; ++i) {
                environment.setValueForEnvironmentVariable(std::to_string(i),
                                                           "T" + std::to_string(thread));
                EXPECT_LE(environment.dictionaryRepresentation().size(), 4U);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(
        environment.dictionaryRepresentation(),
        ElementsAre(Pair("T0", "199"), Pair("T1", "199"), Pair("T2", "199"), Pair("T3", "199")));
}

}  // namespace
