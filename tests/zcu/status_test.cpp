#include "app/k740.h"
#include "common/stopwatch.h"
#include "tests/devices/registry_fixture.h"
#include "tests/support/status_records.h"
#include "tests/support/wait_until.h"
#include "zcu/zcu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace k740::test {
namespace {

using RecordBytes = std::array<std::uint8_t, 97>;

constexpr time_t kAMinuteAndMore = 61;

/// A status report 0x8126 as a device sends it.
_vxa_cmd_packet_t ReportOf(std::uint32_t id, const ZCUReport& report) {
    return MakePacket(id, 9500, 0x8126, report);
}

/// An application without threads: the tests merge.
class ZCUStatusTest : public OnRegistry {
protected:
    void AddController(int id, int type = 1) { ASSERT_EQ(0, m_devices.AddDevice(id, type, NextAddress())); }
    void Report(std::uint32_t id, const ZCUReport& report) {
        const _vxa_cmd_packet_t packet = ReportOf(id, report);
        m_zcu.ZCU_Response_ZCUStatusReq(&packet);
    }
    bool HasStatus(int id) const {
        tagZCU_QUERYSTATUS2 record;
        return m_zcu.GetZCUStatus(id, record) == 0;
    }
    tagZCU_QUERYSTATUS2 Status(int id) const {
        tagZCU_QUERYSTATUS2 record;
        EXPECT_EQ(0, m_zcu.GetZCUStatus(id, record)) << id;
        return record;
    }
    RecordBytes StatusBytes(int id) const {
        const tagZCU_QUERYSTATUS2 record = Status(id);
        RecordBytes bytes;
        std::memcpy(bytes.data(), &record, sizeof(record));
        return bytes;
    }
    int DeviceStatus(int id) const { return Status(id).status.deviceStatus; }

    CZCU& m_zcu = m_app->ZCU();
};

RecordBytes BytesOf(const tagZCU_QUERYSTATUS2& record) {
    RecordBytes bytes;
    std::memcpy(bytes.data(), &record, sizeof(record));
    return bytes;
}

TEST_F(ZCUStatusTest, ARecordIsTheIDTheReportAndTheTime) {
    AddController(258);
    const time_t before = time(nullptr);
    Report(258, CountingReport());
    m_zcu.UpdateZCUStatus();
    const RecordBytes bytes = StatusBytes(258);
    EXPECT_EQ((std::array<std::uint8_t, 4>{2, 1, 0, 0}), (std::array{bytes[0], bytes[1], bytes[2], bytes[3]}));
    for (std::size_t i = 0; i < 85; ++i) { EXPECT_EQ(i, bytes[i + 4]) << i; }
    std::int64_t lastUpdate = 0;
    std::memcpy(&lastUpdate, &bytes[89], sizeof(lastUpdate));
    EXPECT_GE(lastUpdate, before);
    EXPECT_LE(lastUpdate, time(nullptr));
}

TEST_F(ZCUStatusTest, ReportsOfIDsBeyond1To999AreDropped) {
    // A device of another type may have any ID, so it is not the registry that drops these.
    for (int id : {0, 1000, -1}) { ASSERT_EQ(0, m_devices.AddDevice(id, 4, NextAddress())); }
    for (std::uint32_t id : {0U, 1000U, 0xFFFFFFFFU}) { Report(id, CountingReport()); }
    m_zcu.UpdateZCUStatus();
    EXPECT_TRUE(m_zcu.GetAllZCUStatus().empty());
}

TEST_F(ZCUStatusTest, ReportsOfTheFirstAndTheLastIDAreTaken) {
    for (int id : {1, 999}) {
        AddController(id);
        Report(static_cast<std::uint32_t>(id), CountingReport());
    }
    m_zcu.UpdateZCUStatus();
    EXPECT_EQ(1, StatusBytes(1)[5]);
    EXPECT_EQ(1, StatusBytes(999)[5]);
}

TEST_F(ZCUStatusTest, ReportsOfDevicesThatAreNotRegisteredAreDropped) {
    Report(1, CountingReport());
    m_zcu.UpdateZCUStatus();
    EXPECT_FALSE(HasStatus(1));
    AddController(1); // too late for the report
    m_zcu.UpdateZCUStatus();
    EXPECT_EQ(255, DeviceStatus(1));
}

TEST_F(ZCUStatusTest, TheNewestReportReplacesTheWholeStatus) {
    AddController(1);
    Report(1, CountingReport());
    ZCUReport newer{};
    newer[0] = 7;
    newer[84] = 9;
    Report(1, newer);
    m_zcu.UpdateZCUStatus();
    EXPECT_EQ(BytesOf(ZCURecord(1, newer, Status(1).lastUpdate)), StatusBytes(1));
    EXPECT_EQ(1U, m_zcu.GetAllZCUStatus().size());
}

TEST_F(ZCUStatusTest, AnUnknownStatusIsMinusOneAndClearsTheRecord) {
    tagZCU_QUERYSTATUS2 record = ZCURecord(1, CountingReport());
    EXPECT_EQ(-1, m_zcu.GetZCUStatus(1, record));
    EXPECT_EQ(RecordBytes{}, BytesOf(record));
}

TEST_F(ZCUStatusTest, AnAddedControllerIsOffLineUntilItReports) {
    AddController(1);
    m_zcu.UpdateZCUStatus();
    EXPECT_EQ(255, DeviceStatus(1));
    Report(1, CountingReport());
    m_zcu.UpdateZCUStatus();
    EXPECT_EQ(0, DeviceStatus(1));
}

TEST_F(ZCUStatusTest, AnOffLineRecordNamesTheIDTwiceAndIsZeroElse) {
    AddController(258);
    Report(258, CountingReport());
    const time_t before = time(nullptr);
    m_zcu.OffLine_ZCU(258);
    m_zcu.UpdateZCUStatus();
    ZCUReport offLine{};
    offLine[0] = 255;
    offLine[13] = 2;
    offLine[14] = 1;
    EXPECT_EQ(BytesOf(ZCURecord(258, offLine, Status(258).lastUpdate)), StatusBytes(258));
    EXPECT_GE(Status(258).LastUpdate(), before);
}

TEST_F(ZCUStatusTest, OffLineRecordsAreMadeForIDs1To999Only) {
    for (int id : {0, 1000, -1}) {
        ASSERT_EQ(0, m_devices.AddDevice(id, 4, NextAddress()));
        m_zcu.OffLine_ZCU(id);
    }
    m_zcu.UpdateZCUStatus();
    EXPECT_TRUE(m_zcu.GetAllZCUStatus().empty());
}

TEST_F(ZCUStatusTest, ADirectRecordNeedsNoRegistrationAndIsThereAtOnce) {
    m_zcu.UpdateZCUStatus(ZCURecord(7, CountingReport(), 1234));
    EXPECT_EQ(BytesOf(ZCURecord(7, CountingReport(), 1234)), StatusBytes(7));
    m_zcu.UpdateZCUStatus(ZCURecord(7, {}, 5678));
    EXPECT_EQ(BytesOf(ZCURecord(7, {}, 5678)), StatusBytes(7));
}

TEST_F(ZCUStatusTest, TheTableHolds500ControllersAndDropsTheOldestForTheNext) {
    for (int id = 500; id >= 1; --id) { m_zcu.UpdateZCUStatus(ZCURecord(id, {})); }
    EXPECT_EQ(500U, m_zcu.GetAllZCUStatus().size());
    EXPECT_TRUE(HasStatus(500));
    m_zcu.UpdateZCUStatus(ZCURecord(500, CountingReport())); // no new one
    EXPECT_EQ(500U, m_zcu.GetAllZCUStatus().size());
    m_zcu.UpdateZCUStatus(ZCURecord(501, {}));
    EXPECT_EQ(500U, m_zcu.GetAllZCUStatus().size());
    EXPECT_FALSE(HasStatus(500));
    EXPECT_TRUE(HasStatus(499));
    EXPECT_TRUE(HasStatus(501));
}

TEST_F(ZCUStatusTest, TheMergeMarksOverdueControllersAndKeepsTheRest) {
    const time_t overdue = time(nullptr) - kAMinuteAndMore;
    m_zcu.UpdateZCUStatus(ZCURecord(1, CountingReport(), overdue));
    m_zcu.UpdateZCUStatus(ZCURecord(2, CountingReport(), time(nullptr)));
    m_zcu.UpdateZCUStatus();
    ZCUReport marked = CountingReport();
    marked[0] = 255;
    EXPECT_EQ(BytesOf(ZCURecord(1, marked, overdue)), StatusBytes(1));
    EXPECT_EQ(0, DeviceStatus(2));
}

// The pass of the handshake thread that looks for devices which have gone silent.

TEST_F(ZCUStatusTest, TheOffLinePassMarksControllersWithoutAStatus) {
    for (int type : {0, 1, 9}) {
        AddController(10 + type, type);
        m_zcu.RemoveController(10 + type); // the mark of the registration
    }
    m_zcu.SetDeviceOffLine();
    m_zcu.UpdateZCUStatus();
    for (int type : {0, 1, 9}) { EXPECT_EQ(255, DeviceStatus(10 + type)) << type; }
}

TEST_F(ZCUStatusTest, TheOffLinePassSkipsOtherTypes) {
    for (int type = 4; type <= 8; ++type) {
        AddController(10 + type, type);
        m_zcu.RemoveController(10 + type);
    }
    AddController(7000, 3);
    AddController(5000, 10);
    m_zcu.SetDeviceOffLine();
    m_zcu.UpdateZCUStatus();
    m_app->RPK().UpdateRPKStatus();
    EXPECT_TRUE(m_zcu.GetAllZCUStatus().empty());
    EXPECT_TRUE(m_app->RPK().GetAllRPKStatus().empty());
}

TEST_F(ZCUStatusTest, TheOffLinePassMarksPagingStationsWithoutAStatus) {
    CRPK& rpk = m_app->RPK();
    AddController(5000, 2);
    AddController(5001, 2);
    const _vxa_cmd_packet_t report = MakePacket(5001, 9500, 0x8700, RPKReport{1});
    for (int i = 0; i < 4096; ++i) { rpk.RPK_Response_RPKStatus(&report); } // push the marks of the registration out
    rpk.UpdateRPKStatus();
    ASSERT_EQ(1U, rpk.GetAllRPKStatus().size());
    m_zcu.SetDeviceOffLine();
    rpk.UpdateRPKStatus();
    const auto records = rpk.GetAllRPKStatus();
    ASSERT_EQ(2U, records.size());
    EXPECT_FALSE(records[0].IsOffLine());
    EXPECT_EQ(5000, records[1].DeviceID());
    EXPECT_TRUE(records[1].IsOffLine());
}

TEST_F(ZCUStatusTest, TheOffLinePassReplacesAnOverdueStatus) {
    AddController(1);
    m_zcu.UpdateZCUStatus();
    m_zcu.UpdateZCUStatus(ZCURecord(1, CountingReport(), time(nullptr) - kAMinuteAndMore));
    m_zcu.SetDeviceOffLine();
    m_zcu.UpdateZCUStatus();
    EXPECT_EQ(255, DeviceStatus(1));
    EXPECT_EQ(0, StatusBytes(1)[5]); // the off-line record, not only the mark
    EXPECT_LT(time(nullptr) - Status(1).lastUpdate, kAMinuteAndMore);
}

TEST_F(ZCUStatusTest, TheOffLinePassLeavesMarkedAndFreshOnesAlone) {
    AddController(1);
    AddController(2);
    m_zcu.UpdateZCUStatus();
    ZCUReport marked = CountingReport();
    marked[0] = 255;
    m_zcu.UpdateZCUStatus(ZCURecord(1, marked, 1234));
    m_zcu.UpdateZCUStatus(ZCURecord(2, CountingReport()));
    m_zcu.SetDeviceOffLine();
    m_zcu.UpdateZCUStatus();
    EXPECT_EQ(BytesOf(ZCURecord(1, marked, 1234)), StatusBytes(1));
    EXPECT_EQ(0, DeviceStatus(2));
}

TEST_F(ZCUStatusTest, TheOffLinePassDoesNothingOnceTheLibraryEnds) {
    AddController(1);
    m_zcu.RemoveController(1);
    m_app->Lifetime().RequestExit();
    m_zcu.SetDeviceOffLine();
    m_zcu.UpdateZCUStatus();
    EXPECT_FALSE(HasStatus(1));
}

// The threads.

class ZCUStatusThreadTest : public OnPrivateNetwork {
protected:
    static bool HasStatus(int id, int status) {
        tagZCU_QUERYSTATUS2 record;
        return g_app->ZCU().GetZCUStatus(id, record) == 0 && record.status.deviceStatus == status;
    }
};

// Each report but the first is sent right after a merge, so it waits for a whole period.
TEST_F(ZCUStatusThreadTest, ReportsAreMergedWithin50Milliseconds) {
    constexpr int kReports = 20;
    constexpr unsigned kOnePeriodMs = 50 + 20; // and leeway; a busy machine is not late every time
    auto& controller = AddZoneController(1, "192.168.1.20");
    K740_AddDevice(1, 1, "192.168.1.20");
    ASSERT_TRUE(WaitUntil([] { return HasStatus(1, 255); }));
    sim::StatusReport report;
    std::vector<unsigned> waits;
    for (int i = 0; i < kReports; ++i) {
        report.deviceStatus = static_cast<std::uint8_t>(1 + i);
        CQBTime sinceReport;
        sinceReport.TimeStart();
        controller.SendStatus(report, i % 2 == 0 ? sim::kRequestPort : sim::kReplyPort);
        ASSERT_TRUE(WaitUntil([&] { return HasStatus(1, report.deviceStatus); }));
        waits.push_back(sinceReport.TimeEnd());
    }
    EXPECT_LE(*std::min_element(waits.begin() + 1, waits.end()), kOnePeriodMs);
}

TEST_F(ZCUStatusThreadTest, AnOffLinePassComesEveryThreeSeconds) {
    CQBTime sinceStart;
    sinceStart.TimeStart();
    K740_AddDevice(1, 1, "192.168.1.20");
    ASSERT_TRUE(WaitUntil([] { return HasStatus(1, 255); }));
    for (const unsigned pass : {1U, 2U}) {
        g_app->ZCU().RemoveController(1);
        ASSERT_TRUE(WaitUntil([] { return HasStatus(1, 255); }));
        EXPECT_GE(sinceStart.TimeEnd(), pass * 3000 - 1);
        EXPECT_LT(sinceStart.TimeEnd(), pass * 3000 + 1000);
    }
}

} // namespace
} // namespace k740::test
