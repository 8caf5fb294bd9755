#include "devices/status_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr time_t kThen = 1'700'000'000;

struct Status {
    int id;
    int value;
    time_t time = kThen;

    int DeviceID() const { return id; }
    bool IsOffLine() const { return value == kStatusOffLine; }
    void SetOffLine() { value = kStatusOffLine; }
    time_t LastUpdate() const { return time; }
    void Update(const Status& newer) { *this = newer; }
    bool operator==(const Status&) const = default;
};

using Table = CStatusTable<Status, 4, 3>;

bool EveryID(int) {
    return true;
}

TEST(StatusTableTest, AReportIsInTheTableAfterTheMergeAlone) {
    Table table;
    table.Report({1, 7});
    EXPECT_THAT(table.Copy(), IsEmpty());
    table.Merge(EveryID);
    EXPECT_THAT(table.Copy(), ElementsAre(Status{1, 7}));
    table.Merge(EveryID);
    EXPECT_THAT(table.Copy(), ElementsAre(Status{1, 7}));
}

TEST(StatusTableTest, ReportsAreMergedInOrderOfArrival) {
    Table table;
    for (const Status& status : {Status{2, 1}, Status{1, 2}, Status{2, 3}}) { table.Report(status); }
    table.Merge(EveryID);
    EXPECT_THAT(table.Copy(), ElementsAre(Status{2, 3}, Status{1, 2}));
}

TEST(StatusTableTest, ReportsOfUnregisteredDevicesAreDropped) {
    Table table;
    table.Report({1, 1});
    table.Report({2, 2});
    table.Merge([](int id) { return id == 2; });
    table.Merge(EveryID);
    EXPECT_THAT(table.Copy(), ElementsAre(Status{2, 2}));
}

TEST(StatusTableTest, AFullQueueDropsItsOldestReport) {
    Table table;
    for (int id : {1, 2, 2, 2}) { table.Report({id, 1}); }
    table.Report({2, 9});
    table.Merge(EveryID);
    EXPECT_THAT(table.Copy(), ElementsAre(Status{2, 9}));
}

TEST(StatusTableTest, AFullTableDropsItsOldestDeviceForANewOneOnly) {
    Table table;
    for (int id : {3, 1, 2}) { table.Put({id, 1}); }
    table.Put({3, 9});
    EXPECT_THAT(table.Copy(), ElementsAre(Status{3, 9}, Status{1, 1}, Status{2, 1}));
    table.Put({4, 1});
    EXPECT_THAT(table.Copy(), ElementsAre(Status{1, 1}, Status{2, 1}, Status{4, 1}));
}

TEST(StatusTableTest, ADeviceIsOffLineMoreThan60SecondsAfterItsReport) {
    EXPECT_FALSE(IsOverdue(kThen, kThen + 59));
    EXPECT_FALSE(IsOverdue(kThen, kThen + 60));
    EXPECT_TRUE(IsOverdue(kThen, kThen + 61));
    EXPECT_FALSE(IsOverdue(kThen, kThen - 1000)); // the clock was set back
}

TEST(StatusTableTest, TheClockMayJumpAnyDistance) {
    constexpr time_t kFarthest = std::numeric_limits<time_t>::max();
    EXPECT_TRUE(IsOverdue(kThen, kFarthest));
    EXPECT_FALSE(IsOverdue(kFarthest, kThen));
}

TEST(StatusTableTest, AgeingMarksOverdueDevicesAndKeepsTheirTime) {
    Table table;
    table.Put({1, 7, kThen});
    table.Put({2, 7, kThen + 1});
    table.Age(kThen + 60);
    EXPECT_THAT(table.Copy(), ElementsAre(Status{1, 7, kThen}, Status{2, 7, kThen + 1}));
    table.Age(kThen + 61);
    EXPECT_THAT(table.Copy(), ElementsAre(Status{1, 255, kThen}, Status{2, 7, kThen + 1}));
}

TEST(StatusTableTest, ADeviceNeedsAMarkWhenItIsUnknownOrOverdueAndNotMarkedYet) {
    Table table;
    EXPECT_TRUE(table.NeedsOffLineMark(1, kThen));
    table.Put({1, 7, kThen});
    EXPECT_FALSE(table.NeedsOffLineMark(1, kThen + 60));
    EXPECT_TRUE(table.NeedsOffLineMark(1, kThen + 61));
    table.Age(kThen + 61);
    EXPECT_FALSE(table.NeedsOffLineMark(1, kThen + 1000));
}

TEST(StatusTableTest, AReportBringsADeviceBack) {
    Table table;
    table.Put({1, 255, kThen});
    table.Report({1, 7, kThen + 100});
    table.Merge(EveryID);
    EXPECT_EQ((Status{1, 7, kThen + 100}), table.Find(1));
}

TEST(StatusTableTest, WhatIsPutInStaysWhenEarlierReportsAreMerged) {
    Table table;
    table.Report({1, 255});
    table.Report({2, 7});
    table.Put({1, 7});
    table.Merge(EveryID);
    EXPECT_THAT(table.Copy(), ElementsAre(Status{1, 7}, Status{2, 7}));
}

// A merge that has begun waits for the table, which this thread leaves and enters again at once.
TEST(StatusTableTest, WhatIsPutInDuringAMergeStays) {
    constexpr int kRounds = 200;
    for (int round = 0; round < kRounds; ++round) {
        Table table;
        table.Put({1, 1});
        table.Report({1, 255});
        std::atomic<bool> begun{false};
        std::thread merger;
        table.Change(1, [&](Status&) {
            merger = std::thread([&] {
                begun = true;
                table.Merge(EveryID);
            });
            while (!begun) { std::this_thread::yield(); }
        });
        table.Put({1, 7});
        merger.join();
        EXPECT_EQ((Status{1, 7}), table.Find(1)) << round;
    }
}

TEST(StatusTableTest, AChangeIsOverwrittenByTheReportsThatWait) {
    Table table;
    table.Put({1, 1});
    table.Report({1, 2});
    table.Change(1, [](Status& status) { status.value = 3; });
    EXPECT_EQ((Status{1, 3}), table.Find(1));
    table.Merge(EveryID);
    EXPECT_EQ((Status{1, 2}), table.Find(1));
}

TEST(StatusTableTest, AnUnknownDeviceIsNotChanged) {
    Table table;
    table.Change(1, [](Status&) { FAIL(); });
    EXPECT_THAT(table.Copy(), IsEmpty());
}

TEST(StatusTableTest, ARemovedDeviceIsForgottenWithItsWaitingReports) {
    Table table;
    for (int id : {1, 2}) {
        table.Put({id, 1});
        table.Report({id, 2});
    }
    table.Remove(1);
    table.Merge(EveryID);
    EXPECT_THAT(table.Copy(), ElementsAre(Status{2, 2}));
    EXPECT_EQ(std::nullopt, table.Find(1));
}

TEST(StatusTableTest, UnregisteredDevicesCanBeForgotten) {
    Table table;
    for (int id : {1, 2, 3}) { table.Put({id, 1}); }
    table.RemoveUnregistered([](int id) { return id == 2; });
    EXPECT_THAT(table.Copy(), ElementsAre(Status{2, 1}));
}

} // namespace
} // namespace k740::test
