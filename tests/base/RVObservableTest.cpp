#include "RVGit/base/RVObservable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Person : public RVObservable {
public:
    void setName(std::string name) {
        name_ = std::move(name);
        fieldsDidChange({"name", "greeting"});
    }
    void setAge(int age) {
        age_ = age;
        fieldsDidChange({"age"});
    }
    [[nodiscard]] std::string greeting() const { return "Hello " + name_; }

private:
    std::string name_;
    int age_ = 0;
};

class RVObservableTest : public testing::Test {
protected:
    RVObservable::Handler record(std::string mark = {}) {
        return [this, mark](std::string_view field) { calls.push_back(mark + std::string(field)); };
    }

    Person person;
    std::vector<std::string> calls;
};

TEST_F(RVObservableTest, HandlerIsToldOfItsFieldAndOfNoOther) {
    const auto observation = person.observe("name", record());
    person.setAge(3);
    person.setName("Ada");
    EXPECT_THAT(calls, ElementsAre("name"));
}

TEST_F(RVObservableTest, HandlerIsToldOfFieldsThatItsFieldDependsOnAfterTheChange) {
    std::string seen;
    const auto observation =
        person.observe("greeting", [&](std::string_view) { seen = person.greeting(); });
    person.setName("Ada");
    EXPECT_EQ(seen, "Hello Ada");
}

TEST_F(RVObservableTest, ChangeWithoutHandlersIsFine) {
    person.setName("Ada");
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(RVObservableTest, HandlersAreCalledInTheOrderInWhichTheyWereAdded) {
    const auto first = person.observe("name", record("1"));
    const auto second = person.observe("greeting", record("2"));
    const auto third = person.observe("name", record("3"));
    person.setName("Ada");
    EXPECT_THAT(calls, ElementsAre("1name", "2greeting", "3name"));
}

TEST_F(RVObservableTest, ObservationThatIsGoneIsToldNoMore) {
    auto observation = person.observe("name", record());
    observation.reset();
    person.setName("Ada");
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(RVObservableTest, ObservationMayOutliveTheObject) {
    auto other = std::make_unique<Person>();
    const auto observation = other->observe("name", record());
    other.reset();
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(RVObservableTest, HandlerMayEndItsOwnObservation) {
    std::shared_ptr<RVObservable::Observation> observation;
    observation = person.observe("name", [&](std::string_view field) {
        observation.reset();
        calls.emplace_back(field);
    });
    person.setName("Ada");
    person.setName("Eve");
    EXPECT_THAT(calls, ElementsAre("name"));
}

TEST_F(RVObservableTest, HandlerMayEndTheObservationOfALaterOne) {
    std::shared_ptr<RVObservable::Observation> second;
    const auto first = person.observe("name", [&](std::string_view) { second.reset(); });
    second = person.observe("name", record());
    person.setName("Ada");
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(RVObservableTest, HandlerAddedByAHandlerIsToldOfTheNextChange) {
    std::vector<std::shared_ptr<RVObservable::Observation>> added;
    const auto observation = person.observe("name", [&](std::string_view) {
        for (int count = 0; count < 100; ++count)
            added.push_back(person.observe("age", record()));
        added.push_back(person.observe("name", record()));
    });
    person.setName("Ada");
    EXPECT_THAT(calls, IsEmpty());
    person.setName("Eve");
    EXPECT_THAT(calls, ElementsAre("name"));
}

TEST_F(RVObservableTest, HandlerMayChangeTheFieldAgain) {
    int depth = 0;
    const auto observation = person.observe("name", [&](std::string_view) {
        if (++depth < 3)
            person.setName("again");
    });
    person.setName("Ada");
    EXPECT_EQ(depth, 3);
}

TEST_F(RVObservableTest, HandlerMayDestroyTheObject) {
    auto other = std::make_unique<Person>();
    const auto first = other->observe("name", [&](std::string_view) { other.reset(); });
    const auto second = other->observe("name", record());
    other->setName("Ada");
    EXPECT_EQ(other, nullptr);
    EXPECT_THAT(calls, ElementsAre("name"));
}

TEST_F(RVObservableTest, CopiesDoNotTakeTheHandlersAlong) {
    const auto observation = person.observe("name", record());
    Person copy = person;
    copy.setName("Ada");
    EXPECT_THAT(calls, IsEmpty());
    person = copy;
    person.setName("Eve");
    EXPECT_THAT(calls, ElementsAre("name"));
}

TEST_F(RVObservableTest, CostsOnePointer) {
    EXPECT_EQ(sizeof(RVObservable), sizeof(void*));
}

}  // namespace
