#include "app/k740.h"
#include "tests/devices/registry_fixture.h"
#include "tests/support/status_records.h"
#include "tests/support/wait_until.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using RecordBytes = std::array<std::uint8_t, 21>;

RecordBytes BytesOf(const tagRPK_QUERYSTATUS& record) {
    RecordBytes bytes;
    std::memcpy(bytes.data(), &record, sizeof(record));
    return bytes;
}

/// An application without threads: the tests merge.
class RPKStatusTest : public OnRegistry {
protected:
    void AddStation(int id) { ASSERT_EQ(0, m_devices.AddDevice(id, 2, NextAddress())); }
    void Report(std::uint32_t id, const RPKReport& report) {
        const _vxa_cmd_packet_t packet = MakePacket(id, 9500, 0x8700, report);
        m_rpk.RPK_Response_RPKStatus(&packet);
    }
    std::vector<int> KnownIDs() const {
        std::vector<int> ids;
        for (const tagRPK_QUERYSTATUS& record : m_rpk.GetAllRPKStatus()) { ids.push_back(record.DeviceID()); }
        return ids;
    }
    /// @return the status of the only station
    tagRPK_QUERYSTATUS Status() const {
        const auto records = m_rpk.GetAllRPKStatus();
        EXPECT_EQ(1U, records.size());
        return records.at(0);
    }
    CRPK& m_rpk = m_app->RPK();
};

TEST_F(RPKStatusTest, ARecordIsTheIDTheReportAndTheTime) {
    AddStation(5000);
    const time_t before = time(nullptr);
    Report(5000, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    m_rpk.UpdateRPKStatus();
    const RecordBytes bytes = BytesOf(Status());
    const std::array<std::uint8_t, 13> expected{0x88, 0x13, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), bytes.begin()));
    std::int64_t lastUpdate = 0;
    std::memcpy(&lastUpdate, &bytes[13], sizeof(lastUpdate));
    EXPECT_GE(lastUpdate, before);
    EXPECT_LE(lastUpdate, time(nullptr));
}

TEST_F(RPKStatusTest, ReportsOfIDsFrom5000To5999AreTaken) {
    for (int id : {5000, 5999}) { AddStation(id); }
    for (int id : {4999, 6000, 1}) { ASSERT_EQ(0, m_devices.AddDevice(id, 4, NextAddress())); }
    for (std::uint32_t id : {4999U, 5000U, 5999U, 6000U, 1U, 0U, 0xFFFFFFFFU}) { Report(id, {1}); }
    m_rpk.UpdateRPKStatus();
    EXPECT_THAT(KnownIDs(), ElementsAre(5000, 5999));
}

TEST_F(RPKStatusTest, ReportsOfStationsThatAreNotRegisteredAreDropped) {
    Report(5000, {1});
    m_rpk.UpdateRPKStatus();
    AddStation(5001);
    m_rpk.UpdateRPKStatus();
    EXPECT_THAT(KnownIDs(), ElementsAre(5001));
}

TEST_F(RPKStatusTest, ANewReportReplacesAllNineBytes) {
    AddStation(5000);
    Report(5000, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    Report(5000, {9, 8, 7, 6, 5, 4, 3, 2, 1});
    m_rpk.UpdateRPKStatus();
    EXPECT_EQ(BytesOf(RPKRecord(5000, {9, 8, 7, 6, 5, 4, 3, 2, 1}, Status().lastUpdate)), BytesOf(Status()));
}

TEST_F(RPKStatusTest, TheQueueHolds4096ReportsAndDropsTheOldest) {
    AddStation(5000);
    AddStation(5001);
    m_rpk.UpdateRPKStatus(); // the marks of the registration
    Report(5000, {7});
    for (int i = 0; i < 4095; ++i) { Report(5001, {1}); }
    m_rpk.UpdateRPKStatus();
    EXPECT_EQ(7, m_rpk.GetAllRPKStatus().at(0).status.state);
    Report(5000, {8});
    for (int i = 0; i < 4096; ++i) { Report(5001, {1}); }
    m_rpk.UpdateRPKStatus();
    EXPECT_EQ(7, m_rpk.GetAllRPKStatus().at(0).status.state);
}

TEST_F(RPKStatusTest, AnOffLineMarkHasState255AndActivity2) {
    AddStation(5000);
    Report(5000, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    m_rpk.OffLine_RPK(5000);
    m_rpk.UpdateRPKStatus();
    EXPECT_EQ(BytesOf(RPKRecord(5000, {255, 2, 0, 0, 0, 0, 0, 0, 0}, Status().lastUpdate)), BytesOf(Status()));
    EXPECT_LE(time(nullptr) - Status().lastUpdate, 5);
}

TEST_F(RPKStatusTest, OffLineMarksAreMadeForIDsFrom5000To5999Only) {
    for (int id : {4999, 6000}) {
        ASSERT_EQ(0, m_devices.AddDevice(id, 4, NextAddress()));
        m_rpk.OffLine_RPK(id);
    }
    m_rpk.UpdateRPKStatus();
    EXPECT_THAT(KnownIDs(), IsEmpty());
}

TEST_F(RPKStatusTest, AReportEndsAnOffLineMark) {
    AddStation(5000);
    m_rpk.UpdateRPKStatus();
    EXPECT_TRUE(Status().IsOffLine());
    Report(5000, {1});
    m_rpk.UpdateRPKStatus();
    EXPECT_FALSE(Status().IsOffLine());
}

TEST_F(RPKStatusTest, AMarkIsNeededMoreThan60SecondsAfterTheReport) {
    AddStation(5000);
    EXPECT_TRUE(m_rpk.NeedsOffLineMark(5000, time(nullptr))); // no entry yet
    Report(5000, {1});
    m_rpk.UpdateRPKStatus();
    const time_t reported = Status().LastUpdate();
    EXPECT_FALSE(m_rpk.NeedsOffLineMark(5000, reported + 60));
    EXPECT_TRUE(m_rpk.NeedsOffLineMark(5000, reported + 61));
    m_rpk.OffLine_RPK(5000);
    m_rpk.UpdateRPKStatus();
    EXPECT_FALSE(m_rpk.NeedsOffLineMark(5000, reported + 1000));
}

TEST_F(RPKStatusTest, AStationThatIsSilentForMoreThan60SecondsIsOffLineAndElseStaysAsItWas) {
    AddStation(5000);
    Report(5000, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    m_rpk.UpdateRPKStatus();
    const time_t reported = Status().LastUpdate();
    m_rpk.UpdateRPKStatus(reported + 60);
    EXPECT_EQ(BytesOf(RPKRecord(5000, {1, 2, 3, 4, 5, 6, 7, 8, 9}, reported)), BytesOf(Status()));
    m_rpk.UpdateRPKStatus(reported + 61);
    EXPECT_EQ(BytesOf(RPKRecord(5000, {255, 2, 3, 4, 5, 6, 7, 8, 9}, reported)), BytesOf(Status()));
}

TEST_F(RPKStatusTest, StationsThatAreNoLongerRegisteredAreForgotten) {
    for (int id : {5000, 5001, 5002, 5003}) { AddStation(id); }
    m_rpk.UpdateRPKStatus();
    for (int id : {5000, 5001, 5003}) { m_devices.RemoveDevice(id); }
    m_rpk.UpdateRPKStatus();
    EXPECT_THAT(KnownIDs(), ElementsAre(5002));
}

class RPKStatusThreadTest : public OnPrivateNetwork {};

TEST_F(RPKStatusThreadTest, ReportsAreMergedSoonWhateverThePort) {
    auto& station = AddPagingStation(5000, "192.168.8.99");
    K740_AddDevice(5000, 2, "192.168.8.99");
    const auto hasState = [](int state) {
        const auto records = g_app->RPK().GetAllRPKStatus();
        return records.size() == 1 && records[0].status.state == state;
    };
    EXPECT_TRUE(WaitUntil([&] { return hasState(255); }));
    station.SendStatus({7, 0, {}, 0, 0, 0}, sim::kRequestPort);
    EXPECT_TRUE(WaitUntil([&] { return hasState(7); }));
    station.SendStatus({2, 0, {}, 0, 0, 0}, sim::kReplyPort);
    EXPECT_TRUE(WaitUntil([&] { return hasState(2); }));
    station.SendStatus({255, 0, {}, 0, 0, 0});
    EXPECT_TRUE(WaitUntil([&] { return hasState(255); }));
}

} // namespace
} // namespace k740::test
