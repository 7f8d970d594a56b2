#include "RVGit/base/RVNeverDestroyed.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

static_assert(std::is_trivially_destructible_v<RVNeverDestroyed<std::string>>);

namespace {

class Counted {
public:
    explicit Counted(int& destroyed) : destroyed_(destroyed) {}
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { ++destroyed_; }

private:
    int& destroyed_;
};

}  // namespace

TEST(RVNeverDestroyedTest, AValueIsNotDestroyedWithIt) {
    int destroyed = 0;
    { const RVNeverDestroyed<Counted> counted(destroyed); }
    EXPECT_EQ(destroyed, 0);
}

TEST(RVNeverDestroyedTest, TakesBracedListsArgumentsAndValues) {
    static const RVNeverDestroyed<std::vector<std::string>> list = {"one", "two"};
    EXPECT_EQ(*list, (std::vector<std::string>{"one", "two"}));
    static const RVNeverDestroyed<std::vector<std::string>> one = {"one"};
    EXPECT_EQ(*one, (std::vector<std::string>{"one"}));
    static const RVNeverDestroyed<std::vector<std::vector<std::string>>> row = {{"one", "two"}};
    EXPECT_EQ(row->size(), 1u);
    static const RVNeverDestroyed<std::string> repeated(std::in_place, std::size_t{3}, 'x');
    EXPECT_EQ(*repeated, "xxx");
    static const RVNeverDestroyed<std::string> literal("text");
    EXPECT_EQ(literal->size(), 4u);
    static const RVNeverDestroyed<std::string> value([] { return std::string("made"); }());
    EXPECT_EQ(*value, "made");
    static RVNeverDestroyed<std::string> empty;
    *empty += "changed";
    EXPECT_EQ(*empty, "changed");
}
