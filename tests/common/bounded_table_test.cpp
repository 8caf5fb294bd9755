#include "common/bounded_table.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>

namespace k740::test {
namespace {

using Erasing = CBoundedTable<int, 3>;
using Refusing = CBoundedTable<int, 3, WhenFull::RefuseNew>;
using Numbers = std::deque<int>;

template <typename Table> void Append(Table& table, std::initializer_list<int> values) {
    for (const int value : values) { EXPECT_TRUE(table.Append(value)); }
}

bool IsOdd(int value) {
    return value % 2 != 0;
}

TEST(BoundedTableTest, KeepsTheOrderOfArrival) {
    Erasing table;
    Append(table, {1, 2});
    EXPECT_EQ((Numbers{1, 2}), table.Copy());
}

TEST(BoundedTableTest, HoldsAsManyAsItsBound) {
    Erasing table;
    Append(table, {1, 2, 3});
    EXPECT_EQ((Numbers{1, 2, 3}), table.Copy());
    EXPECT_EQ(3U, table.Size());
}

TEST(BoundedTableTest, OneMoreErasesTheOldest) {
    Erasing table;
    Append(table, {1, 2, 3, 4});
    EXPECT_EQ((Numbers{2, 3, 4}), table.Copy());
}

TEST(BoundedTableTest, OneMoreIsRefusedWhereThatIsTheRule) {
    Refusing table;
    Append(table, {1, 2, 3});
    EXPECT_FALSE(table.Append(4));
    EXPECT_EQ((Numbers{1, 2, 3}), table.Copy());
}

TEST(BoundedTableTest, ThereIsRoomAgainAfterOneWasTaken) {
    Refusing table;
    Append(table, {1, 2, 3});
    EXPECT_EQ(1, table.TakeOldest());
    EXPECT_TRUE(table.Append(4));
    EXPECT_EQ((Numbers{2, 3, 4}), table.Copy());
}

TEST(BoundedTableTest, TakeAllLeavesNothing) {
    Erasing table;
    Append(table, {1, 2});
    EXPECT_EQ((Numbers{1, 2}), table.TakeAll());
    EXPECT_EQ(Numbers{}, table.TakeAll());
    EXPECT_EQ(0U, table.Size());
}

TEST(BoundedTableTest, CopyLeavesEverything) {
    Erasing table;
    Append(table, {1});
    table.Copy().clear();
    EXPECT_EQ(1U, table.Size());
}

TEST(BoundedTableTest, TakeOldestOfNothingIsNothing) {
    EXPECT_FALSE(Erasing().TakeOldest());
}

TEST(BoundedTableTest, TakeNewestTakesTheLastThatMatches) {
    Erasing table;
    Append(table, {1, 3, 4});
    EXPECT_EQ(3, table.TakeNewest(IsOdd));
    EXPECT_EQ((Numbers{1, 4}), table.Copy());
}

TEST(BoundedTableTest, TakeNewestWithoutAMatchTakesNothing) {
    Erasing table;
    Append(table, {2, 4});
    EXPECT_FALSE(table.TakeNewest(IsOdd));
    EXPECT_EQ(2U, table.Size());
}

TEST(BoundedTableTest, TakeFirstTakesTheFirstThatMatches) {
    Erasing table;
    Append(table, {2, 3, 5});
    EXPECT_EQ(3, table.TakeFirst(IsOdd));
    EXPECT_EQ((Numbers{2, 5}), table.Copy());
}

TEST(BoundedTableTest, TakeFirstWithoutAMatchTakesNothing) {
    Erasing table;
    Append(table, {2, 4});
    EXPECT_FALSE(table.TakeFirst(IsOdd));
    EXPECT_EQ(2U, table.Size());
}

TEST(BoundedTableTest, FindCopiesTheFirstThatMatches) {
    Erasing table;
    Append(table, {2, 3, 5});
    EXPECT_EQ(3, table.Find(IsOdd));
    EXPECT_EQ(3U, table.Size());
    EXPECT_FALSE(table.Find([](int value) { return value > 5; }));
}

TEST(BoundedTableTest, UpdateChangesTheFirstThatMatches) {
    Erasing table;
    Append(table, {2, 3, 5});
    EXPECT_FALSE(table.UpdateOrAppend(
        IsOdd, [](int& value) { value = 30; }, 99));
    EXPECT_EQ((Numbers{2, 30, 5}), table.Copy());
}

TEST(BoundedTableTest, UpdateWithoutAMatchAppendsWithinTheBound) {
    Erasing table;
    Append(table, {2, 4, 6});
    EXPECT_TRUE(table.UpdateOrAppend(
        IsOdd, [](int&) { FAIL(); }, 9));
    EXPECT_EQ((Numbers{4, 6, 9}), table.Copy());
}

TEST(BoundedTableTest, UpdateWithoutAMatchIsRefusedInAFullTableWhereThatIsTheRule) {
    Refusing table;
    Append(table, {2, 4, 6});
    EXPECT_FALSE(table.UpdateOrAppend(
        IsOdd, [](int&) { FAIL(); }, 9));
    EXPECT_EQ((Numbers{2, 4, 6}), table.Copy());
}

TEST(BoundedTableTest, EraseIfTellsHowMany) {
    Erasing table;
    Append(table, {1, 2, 3});
    EXPECT_EQ(2U, table.EraseIf(IsOdd));
    EXPECT_EQ(Numbers{2}, table.Copy());
    EXPECT_EQ(0U, table.EraseIf(IsOdd));
}

TEST(BoundedTableTest, NothingIsLostBetweenThreads) {
    constexpr int kEach = 2000;
    CBoundedTable<int, 3 * kEach, WhenFull::RefuseNew> table;
    std::size_t taken = 0;
    {
        const auto produce = [&table] {
            for (int i = 0; i < kEach; ++i) { table.Append(i); }
        };
        const std::array<std::jthread, 3> producers{std::jthread(produce), std::jthread(produce),
                                                    std::jthread(produce)};
        for (int i = 0; i < 100; ++i) { taken += table.TakeAll().size(); }
    }
    EXPECT_EQ(3U * kEach, taken + table.TakeAll().size());
}

} // namespace
} // namespace k740::test
