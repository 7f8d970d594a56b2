#include "RVGit/base/RVDataBuffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

namespace {

TEST(RVDataBufferTest, IsEmptyAtFirst) {
    RVDataBuffer buffer;
    EXPECT_EQ(buffer.size(), 0u);
    EXPECT_TRUE(buffer.view().empty());
    buffer.shrinkToFit();
    EXPECT_TRUE(buffer.view().empty());
}

TEST(RVDataBufferTest, GrowthKeepsWhatIsThere) {
    RVDataBuffer buffer;
    std::string expected;
    for (int size = 1; size < 3'000'000; size = size * 3 + 1) {
        const std::string chunk(static_cast<std::size_t>(size), static_cast<char>('a' + size % 26));
        buffer.append(chunk);
        expected += chunk;
        ASSERT_EQ(buffer.view(), expected);
    }
    buffer.shrinkToFit();
    EXPECT_EQ(buffer.view(), expected);
}

TEST(RVDataBufferTest, CountsOnlyWhatIsCommitted) {
    RVDataBuffer buffer;
    std::memcpy(buffer.reserveTail(1000), "abcdef", 6);
    buffer.commitTail(3);
    EXPECT_EQ(buffer.view(), "abc");
    std::memcpy(buffer.reserveTail(1), "x", 1);
    buffer.commitTail(1);
    EXPECT_EQ(buffer.view(), "abcx");
}

TEST(RVDataBufferTest, MovesItsBytesAlong) {
    RVDataBuffer buffer;
    buffer.append("text");
    RVDataBuffer moved = std::move(buffer);
    EXPECT_EQ(moved.view(), "text");
    RVDataBuffer assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned.view(), "text");
}

}  // namespace
