#include "RVGit/base/RVChildEnvironment.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> textsOf(const RVChildEnvironment& environment) {
    const RVChildEnvironment::Pointers pointers(environment);
    std::vector<std::string> texts;
    for (char* const* text = pointers.data(); *text; ++text)
        texts.emplace_back(*text);
    return texts;
}

// Replaces what this process has, as a program that starts it may have made it.
class Inherited {
public:
    explicit Inherited(std::vector<const char*> texts) : texts_(std::move(texts)) {
        texts_.push_back(nullptr);
        environ = const_cast<char**>(texts_.data());
    }
    ~Inherited() { environ = previous_; }
    Inherited(const Inherited&) = delete;
    Inherited& operator=(const Inherited&) = delete;

private:
    std::vector<const char*> texts_;
    char** previous_ = environ;
};

}  // namespace

TEST(RVChildEnvironmentTest, ChangesLieOverWhatTheProcessHasAtThatTime) {
    RVChildEnvironment environment;
    environment.setValue("B", "changed");
    environment.setValue("C", std::nullopt);
    environment.setValue("NEW", "");
    const Inherited inherited({"A=1", "B=2", "C=3", "CC=a=b", "D="});
    EXPECT_THAT(textsOf(environment), ElementsAre("A=1", "CC=a=b", "D=", "B=changed", "NEW="));
    EXPECT_EQ(environment.variables(),
              (RVEnvironment{{"A", "1"}, {"B", "changed"}, {"CC", "a=b"}, {"D", ""}, {"NEW", ""}}));
    EXPECT_EQ(environment.value("A"), "1");
    EXPECT_EQ(environment.value("B"), "changed");
    EXPECT_EQ(environment.value("C"), std::nullopt);
    EXPECT_EQ(environment.value("D"), "");
    EXPECT_EQ(environment.value("E"), std::nullopt);
}

TEST(RVChildEnvironmentTest, AChangeReplacesEveryVariableOfThatName) {
    const Inherited inherited({"A=first", "A=second", "B=1", "B=2", "no variable"});
    RVChildEnvironment environment;
    EXPECT_EQ(environment.value("A"), "first");
    EXPECT_EQ(environment.variables(), (RVEnvironment{{"A", "first"}, {"B", "1"}}));
    environment.setValue("A", std::nullopt);
    environment.setValue("B", "3");
    EXPECT_THAT(textsOf(environment), ElementsAre("B=3"));
    environment.setValue("A", "4");
    EXPECT_THAT(textsOf(environment), ElementsAre("A=4", "B=3"));
}

TEST(RVChildEnvironmentTest, AnEnvironmentOfItsOwnTakesNothingFromTheProcess) {
    const Inherited inherited({"A=1", "B=2"});
    RVChildEnvironment environment(RVEnvironment{{"B", "own"}, {"C", "gone"}});
    environment.setValue("C", std::nullopt);
    environment.setValue("D", "4");
    EXPECT_THAT(textsOf(environment), ElementsAre("B=own", "D=4"));
    EXPECT_EQ(environment.value("A"), std::nullopt);
    EXPECT_EQ(environment.value("B"), "own");
    EXPECT_EQ(environment.variables(), (RVEnvironment{{"B", "own"}, {"D", "4"}}));
    EXPECT_THAT(textsOf(RVChildEnvironment(RVEnvironment())), IsEmpty());
}

TEST(RVChildEnvironmentTest, TellsWhetherAnythingHoldsNUL) {
    using namespace std::string_literals;
    RVChildEnvironment environment;
    environment.setValue("A", std::nullopt);
    environment.setValue("B", "1");
    EXPECT_FALSE(environment.holdsNUL());
    environment.setValue("C", "1\0"s);
    EXPECT_TRUE(environment.holdsNUL());
    environment.setValue("C", std::nullopt);
    EXPECT_FALSE(environment.holdsNUL());
    environment.setValue("C\0"s, std::nullopt);
    EXPECT_FALSE(environment.holdsNUL()) << "which nobody is given";
    EXPECT_TRUE(RVChildEnvironment(RVEnvironment{{"A\0"s, "1"}}).holdsNUL());
    EXPECT_FALSE(RVChildEnvironment(RVEnvironment{{"A", "1"}}).holdsNUL());
}
