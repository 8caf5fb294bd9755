// How a status record becomes callbacks and callback-log lines.
#include "app/application.h"
#include "app/k740.h"
#include "tests/app/recording_host.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/sdk_log.h"
#include "tests/support/status_records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// An application without threads whose host hears of zone controllers and paging stations.
class PostStatusTest : public OnPrivateNetwork {
protected:
    PostStatusTest() {
        m_app->Configuration().SetDefaults();
        m_app->Callbacks().zcuStatus.Set(RecordingHost::OnZCUStatus);
        m_app->Callbacks().zoneStatus.Set(RecordingHost::OnZoneStatus);
        m_app->Callbacks().rpkStatus.Set(RecordingHost::OnRPKStatus);
        m_app->Devices().AddDevice(1, 1, "192.168.1.20");
        m_app->Devices().AddDevice(5000, 2, "192.168.8.99");
    }

    /// @return the posts' result for controller 1 with this status byte
    int PostWithStatus(std::uint8_t status) {
        ZCUReport report{};
        report[0] = status;
        return m_app->PostZCUDeviceStatus(ZCURecord(1, report));
    }
    /// @return the zone states that the host is told for these bytes
    Eight PostedZones(const std::array<std::uint8_t, 8>& states, std::uint8_t faults) {
        ZCUReport report{};
        std::copy(states.begin(), states.end(), report.begin() + 1);
        report[57] = faults;
        m_app->PostZCUDeviceStatus(ZCURecord(1, report));
        return m_host.zoneStatus.All().back().states;
    }
    int PostedRPKState(std::uint8_t state) {
        m_app->PostRPKDeviceStatus(RPKRecord(5000, {state}));
        return m_host.rpkStatus.All().back().values[1];
    }

    const std::unique_ptr<CK740ControlApp> m_app = std::make_unique<CK740ControlApp>();
    RecordingHost& m_host = RecordingHost::Get();
};

TEST_F(PostStatusTest, EveryFieldComesFromItsPlaceInTheReport) {
    m_app->PostZCUDeviceStatus(ZCURecord(1, CountingReport()));
    EXPECT_THAT(m_host.zcuStatus.All(), ElementsAre(ZCUStatusCall{1, 0, 17, {9, 10, 11, 12, 60, 61, 62, 63}, 58, 59}));
    // Byte 57 is 57: the faults of zones 1, 4, 5 and 6.
    EXPECT_THAT(m_host.zoneStatus.All(), ElementsAre(ZoneStatusCall{1,
                                                                    {1 + 64, 2, 3, 4 + 64, 5 + 64, 6 + 64, 7, 8},
                                                                    {0x15141312, 0x19181716, 0x1D1C1B1A, 0x21201F1E,
                                                                     0x25242322, 0x29282726, 0x2D2C2B2A, 0x31302F2E}}));
}

TEST_F(PostStatusTest, StatusesOneToFourAreKeptAndAllOthersAreZero) {
    for (int status = 0; status <= 255; ++status) {
        PostWithStatus(static_cast<std::uint8_t>(status));
        EXPECT_EQ(status >= 1 && status <= 4 ? status : 0, m_host.zcuStatus.All().back().status) << status;
    }
}

TEST_F(PostStatusTest, ResultIsOneForStatusesOneToThree) {
    for (int status = 0; status <= 255; ++status) {
        EXPECT_EQ(status >= 1 && status <= 3 ? 1 : 0, PostWithStatus(static_cast<std::uint8_t>(status))) << status;
    }
}

TEST_F(PostStatusTest, AFaultBitAdds64ToTheStateOfItsZone) {
    EXPECT_EQ((Eight{1, 1, 65, 1, 1, 1, 1, 1}), PostedZones({1, 1, 1, 1, 1, 1, 1, 1}, 0x04));
    EXPECT_EQ((Eight{64, 0, 0, 0, 0, 0, 0, 64}), PostedZones({}, 0x81));
    EXPECT_EQ((Eight{264, 128, 319, 64, 64, 64, 64, 64}), PostedZones({200, 64, 255}, 0xFF));
}

TEST_F(PostStatusTest, AVirtualZoneControllerIsNotPosted) {
    m_app->Devices().AddDevice(900, 9, "");
    ZCUReport report{};
    report[0] = 1;
    EXPECT_EQ(0, m_app->PostZCUDeviceStatus(ZCURecord(900, report)));
    EXPECT_THAT(m_host.zcuStatus.All(), IsEmpty());
    EXPECT_THAT(m_host.zoneStatus.All(), IsEmpty());
}

TEST_F(PostStatusTest, ADeviceThatIsNotRegisteredIsNotPosted) {
    m_app->PostZCUDeviceStatus(ZCURecord(2, CountingReport()));
    m_app->PostRPKDeviceStatus(RPKRecord(5001, {1}));
    EXPECT_THAT(m_host.zcuStatus.All(), IsEmpty());
    EXPECT_THAT(m_host.zoneStatus.All(), IsEmpty());
    EXPECT_THAT(m_host.rpkStatus.All(), IsEmpty());
}

TEST_F(PostStatusTest, EveryOtherTypeOfDeviceIsPosted) {
    m_app->Devices().AddDevice(2, 0, "192.168.1.2");
    m_app->Devices().AddDevice(4, 4, "192.168.1.4");
    m_app->Devices().AddDevice(8, 8, "192.168.1.8");
    for (int id : {2, 4, 8}) { m_app->PostZCUDeviceStatus(ZCURecord(id, CountingReport())); }
    EXPECT_EQ(3U, m_host.zcuStatus.All().size());
}

TEST_F(PostStatusTest, EachCallbackIsCalledWithoutTheOther) {
    m_app->Callbacks().zoneStatus.Set(nullptr);
    PostWithStatus(1);
    m_app->Callbacks().zoneStatus.Set(RecordingHost::OnZoneStatus);
    m_app->Callbacks().zcuStatus.Set(nullptr);
    PostWithStatus(1);
    m_app->Callbacks().zoneStatus.Set(nullptr);
    EXPECT_EQ(1, PostWithStatus(1));
    EXPECT_EQ(1U, m_host.zcuStatus.All().size());
    EXPECT_EQ(1U, m_host.zoneStatus.All().size());
}

TEST_F(PostStatusTest, PagingStationStateIsZeroOffLineTwoAsItStandsAndOneOtherwise) {
    for (int state = 0; state <= 255; ++state) {
        EXPECT_EQ(state == 255 ? 0 : state == 2 ? 2 : 1, PostedRPKState(static_cast<std::uint8_t>(state))) << state;
    }
}

TEST_F(PostStatusTest, PagingStationValuesComeInTheirOrder) {
    m_app->PostRPKDeviceStatus(RPKRecord(5000, {2, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}));
    m_app->PostRPKDeviceStatus(RPKRecord(5000, {1, 255, 0, 0, 255, 255, 255, 255, 255}));
    EXPECT_THAT(m_host.rpkStatus.All(), ElementsAre(RPKStatusCall{{5000, 2, 0x12, 0x5544, 0x88, 0x7766}},
                                                    RPKStatusCall{{5000, 1, 256, 65535, 255, 65535}}));
}

TEST_F(PostStatusTest, WithoutItsCallbackAPagingStationIsNotPosted) {
    m_app->Callbacks().rpkStatus.Set(nullptr);
    m_app->PostRPKDeviceStatus(RPKRecord(5000, {1}));
    EXPECT_THAT(m_host.rpkStatus.All(), IsEmpty());
}

std::vector<std::string>& Order() {
    static auto* const order = new std::vector<std::string>;
    return *order;
}

TEST_F(PostStatusTest, TheDeviceIsPostedBeforeItsZones) {
    m_app->Callbacks().zcuStatus.Set([](int, int, int, int*, int, int) {
        Order().emplace_back("device");
        return 0;
    });
    m_app->Callbacks().zoneStatus.Set([](int, int*, unsigned*) {
        Order().emplace_back("zones");
        return 0;
    });
    PostWithStatus(1);
    EXPECT_THAT(Order(), ElementsAre("device", "zones"));
}

/// The initialised library, whose log writer is needed. Nobody but the test posts a status of device 5999.
class PostedStatusLogTest : public OnPrivateNetwork {
protected:
    PostedStatusLogTest() { K740_AddDevice(5999, 8, "192.168.1.9"); }
    static void SetCallbacks(PZCUSTATUS zcuStatus, PZONESTATUS zoneStatus, PRPKSTATUS rpkStatus) {
        K740_SetDeviceCallback(zcuStatus, zoneStatus, nullptr, nullptr, nullptr, rpkStatus, nullptr);
    }
    /// @return what the log of the type holds once the marker, which was posted last, is there
    static std::vector<std::string> TextsUpTo(const std::string& type, const std::string& marker) {
        EXPECT_TRUE(WaitForCallbackLogLine(type, marker));
        return LogTexts(type);
    }
};

ZCUReport LoggedReport() {
    ZCUReport report = CountingReport();
    report[0] = 3;
    report[57] = 0x80;
    return report;
}

TEST_F(PostedStatusLogTest, EveryCallIsLoggedInTheFileOfItsType) {
    SetCallbacks(RecordingHost::OnZCUStatus, RecordingHost::OnZoneStatus, RecordingHost::OnRPKStatus);
    K740_EnableCallbackLog(1);
    g_app->PostZCUDeviceStatus(ZCURecord(5999, LoggedReport()));
    g_app->PostRPKDeviceStatus(RPKRecord(5999, {2, 255, 0, 0, 3, 0, 255, 255, 4}));
    EXPECT_THAT(TextsUpTo("PZCUSTATUS", "(5999"),
                ElementsAre("PZCUSTATUS(5999, 3, 17, {9,10,11,12,60,61,62,63}, 58, 59)"));
    EXPECT_THAT(TextsUpTo("PZONESTATUS", "(5999"),
                ElementsAre("PZONESTATUS(5999,  {1,2,3,4,5,6,7,72}, {353637138,421009174,488381210,555753246,623125282,"
                            "690497318,757869354,825241390})"));
    EXPECT_THAT(TextsUpTo("PRPKSTATUS", "(5999"), ElementsAre("PRPKSTATUS(5999, 2, 256, 3, 4, 65535)"));
}

TEST_F(PostedStatusLogTest, NegativeValuesAreLoggedUnsigned) {
    K740_SetDeviceCallback(
        nullptr, nullptr, nullptr, [](int, int) { return 0; }, nullptr, nullptr, nullptr);
    K740_EnableCallbackLog(1);
    g_app->Callbacks().TaskStatus(50000, 2);
    g_app->Callbacks().TaskStatus(1, -3);
    EXPECT_THAT(TextsUpTo("PTASKSTATUS", "(1,"), ElementsAre("PTASKSTATUS(50000, 2)", "PTASKSTATUS(1, 4294967293)"));
}

TEST_F(PostedStatusLogTest, CallsAreLoggedOnlyWhileTheLogIsOn) {
    SetCallbacks(RecordingHost::OnZCUStatus, nullptr, nullptr);
    ZCUReport report{};
    const auto post = [&](std::uint8_t fault) {
        report[17] = fault;
        g_app->PostZCUDeviceStatus(ZCURecord(5999, report));
    };
    post(1);
    K740_EnableCallbackLog(1);
    post(2);
    K740_EnableCallbackLog(0);
    post(3);
    K740_EnableCallbackLog(1);
    post(4);
    EXPECT_THAT(TextsUpTo("PZCUSTATUS", "(5999, 0, 4,"),
                ElementsAre("PZCUSTATUS(5999, 0, 2, {0,0,0,0,0,0,0,0}, 0, 0)",
                            "PZCUSTATUS(5999, 0, 4, {0,0,0,0,0,0,0,0}, 0, 0)"));
}

TEST_F(PostedStatusLogTest, TheSwitchIsReadAfterTheHostHasReturned) {
    SetCallbacks(
        [](int, int, int fault, int*, int, int) {
            K740_EnableCallbackLog(fault); // 0 or 1
            return 0;
        },
        nullptr, nullptr);
    K740_EnableCallbackLog(1);
    ZCUReport report{};
    g_app->PostZCUDeviceStatus(ZCURecord(5999, report));
    report[17] = 1;
    g_app->PostZCUDeviceStatus(ZCURecord(5999, report));
    EXPECT_THAT(TextsUpTo("PZCUSTATUS", "(5999"), ElementsAre("PZCUSTATUS(5999, 0, 1, {0,0,0,0,0,0,0,0}, 0, 0)"));
}

TEST_F(PostedStatusLogTest, ACallbackThatIsNotSetIsNotLogged) {
    SetCallbacks(nullptr, RecordingHost::OnZoneStatus, nullptr);
    K740_EnableCallbackLog(1);
    g_app->PostZCUDeviceStatus(ZCURecord(5999, {}));
    EXPECT_TRUE(WaitForCallbackLogLine("PZONESTATUS", "(5999"));
    EXPECT_THAT(LogLines("PZCUSTATUS"), IsEmpty());
}

} // namespace
} // namespace k740::test
