// When the host hears of a status: after every change and every five seconds.
#include "app/application.h"
#include "app/k740.h"
#include "protocol/commands.h"
#include "tests/app/recording_host.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

/// The pause of the event thread and the refresh thread's, and some leeway for a machine that is busy.
constexpr auto kChangeDelay = 500ms + 50ms + 450ms;

auto IsStatusOf(int id, int status) {
    return [=](const ZCUStatusCall& call) { return call.deviceID == id && call.status == status; };
}

class StatusDeliveryTest : public OnPrivateNetwork {
protected:
    StatusDeliveryTest() {
        K740_SetDeviceCallback(RecordingHost::OnZCUStatus, RecordingHost::OnZoneStatus, nullptr, nullptr, nullptr,
                               RecordingHost::OnRPKStatus, nullptr);
    }
    sim::ZoneController& AddController(int id, const std::string& address) {
        sim::ZoneController& controller = AddZoneController(static_cast<std::uint32_t>(id), address);
        EXPECT_EQ(0, K740_AddDevice(id, 1, address.c_str()));
        return controller;
    }
    static void Send(sim::ZoneController& controller, std::uint8_t status, std::uint16_t port = 29001) {
        sim::StatusReport report;
        report.deviceStatus = status;
        controller.SendStatus(report, port);
    }
    RecordingHost& m_host = RecordingHost::Get();
};

TEST_F(StatusDeliveryTest, ANewControllerIsToldAsOffLineWithinHalfASecond) {
    const auto start = SteadyClock::now();
    AddController(1, "192.168.1.20");
    ASSERT_TRUE(m_host.zcuStatus.WaitFor(IsStatusOf(1, 0)));
    EXPECT_LT(SteadyClock::now() - start, kChangeDelay);
}

TEST_F(StatusDeliveryTest, AChangeIsToldWithinHalfASecondWhateverThePort) {
    auto& controller = AddController(1, "192.168.1.20");
    ASSERT_TRUE(m_host.zcuStatus.WaitFor(IsStatusOf(1, 0)));
    for (const auto port : {sim::kRequestPort, sim::kReplyPort}) {
        const auto start = SteadyClock::now();
        const std::uint8_t status = port == sim::kRequestPort ? 1 : 2;
        Send(controller, status, port);
        ASSERT_TRUE(m_host.zcuStatus.WaitFor(IsStatusOf(1, status)));
        EXPECT_LT(SteadyClock::now() - start, kChangeDelay);
    }
}

TEST_F(StatusDeliveryTest, ZonesAreToldWithTheirController) {
    auto& controller = AddController(1, "192.168.1.20");
    sim::StatusReport report = controller.QuietStatus();
    report.zoneStates = {1, 2, 3, 4, 5, 6, 7, 8};
    report.zoneValues = {10, 20, 30, 40, 50, 60, 70, 0xFFFFFFFF};
    controller.SendStatus(report);
    const ZoneStatusCall expected{1, {1, 2, 3, 4, 5, 6, 7, 8}, {10, 20, 30, 40, 50, 60, 70, 0xFFFFFFFF}};
    EXPECT_TRUE(m_host.zoneStatus.WaitFor([&](const ZoneStatusCall& call) { return call == expected; }));
}

TEST_F(StatusDeliveryTest, WithoutCallbacksNothingIsTold) {
    auto& controller = AddController(1, "192.168.1.20");
    ASSERT_TRUE(m_host.zcuStatus.WaitFor(IsStatusOf(1, 0)));
    K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    Send(controller, 1);
    // Change 1 is over for the library when it has posted change 2 to the zone callback alone.
    ASSERT_TRUE(WaitUntil([] {
        tagZCU_QUERYSTATUS2 record;
        return g_app->ZCU().GetZCUStatus(1, record) == 0 && record.status.deviceStatus == 1;
    }));
    K740_SetDeviceCallback(nullptr, RecordingHost::OnZoneStatus, nullptr, nullptr, nullptr, nullptr, nullptr);
    const auto zoneCalls = m_host.zoneStatus.All().size();
    Send(controller, 2);
    ASSERT_TRUE(WaitUntil([&] { return m_host.zoneStatus.All().size() > zoneCalls; }));
    EXPECT_EQ(1U, m_host.zcuStatus.All().size());
}

// One test for all that takes two full passes, because they take ten seconds.
TEST_F(StatusDeliveryTest, UnchangedStatusesAreToldEveryFiveSecondsAndPagingStationsOnlyThen) {
    const auto start = SteadyClock::now();
    auto& controller = AddController(1, "192.168.1.20");
    auto& station = AddPagingStation(5000, "192.168.8.99");
    ASSERT_EQ(0, K740_AddDevice(5000, 2, "192.168.8.99"));
    Send(controller, 1);
    ASSERT_TRUE(m_host.zcuStatus.WaitFor(IsStatusOf(1, 1)));
    Send(controller, 1);
    station.SendStatus({2, 7, {}, 100, 300, 5});

    const auto all = [](const RPKStatusCall&) { return true; };
    ASSERT_TRUE(m_host.rpkStatus.WaitFor(all, 2));
    const auto stationCalls = m_host.rpkStatus.All();
    EXPECT_EQ((RPKStatusCall{{5000, 2, 8, 100, 5, 300}}), stationCalls[0]);
    EXPECT_EQ(stationCalls[0], stationCalls[1]);
    EXPECT_GE(stationCalls[0].time - start, 4s); // 5 s after the event thread's start, which came before
    EXPECT_GE(stationCalls[1].time - stationCalls[0].time, 4900ms);
    EXPECT_LE(stationCalls[1].time - stationCalls[0].time, 6500ms);

    // One call for the change, one for each full pass.
    EXPECT_EQ(3U, m_host.zcuStatus.Matching(IsStatusOf(1, 1)).size());
}

TEST_F(StatusDeliveryTest, AFullPassTellsControllersBeforeStationsWithPausesBetween) {
    for (const int id : {1, 2}) { AddController(id, "192.168.1.2" + std::to_string(id)); }
    for (const int id : {5000, 5001}) {
        ASSERT_EQ(0, K740_AddDevice(id, 2, ("192.168.8.9" + std::to_string(id % 10)).c_str()));
    }
    ASSERT_TRUE(m_host.rpkStatus.WaitFor([](const RPKStatusCall& call) { return call.values[0] == 5001; }));
    const auto stations = m_host.rpkStatus.All();
    auto controllers = m_host.zcuStatus.All();
    std::erase_if(controllers, [&](const ZCUStatusCall& call) { return call.time > stations[0].time; });
    ASSERT_EQ(2U, stations.size());
    ASSERT_EQ(4U, controllers.size()) << "each when it was new, then in the pass";
    EXPECT_EQ(1, controllers[2].deviceID);
    EXPECT_EQ(2, controllers[3].deviceID);
    EXPECT_GE(controllers[3].time - controllers[2].time, 1900us);
    EXPECT_GE(stations[0].time - controllers[3].time, 1900us);
    EXPECT_GE(stations[1].time - stations[0].time, 1900us);
}

TEST_F(StatusDeliveryTest, ThereIsAPauseAfterEachChange) {
    auto& first = AddController(1, "192.168.1.20");
    auto& second = AddController(2, "192.168.1.21");
    ASSERT_TRUE(m_host.zcuStatus.WaitFor(IsStatusOf(2, 0)));
    for (std::uint8_t status = 1; status <= 3; ++status) {
        Send(first, status);
        Send(second, status);
        ASSERT_TRUE(m_host.zcuStatus.WaitFor(IsStatusOf(1, status)));
        ASSERT_TRUE(m_host.zcuStatus.WaitFor(IsStatusOf(2, status)));
        const auto gap = m_host.zcuStatus.Matching(IsStatusOf(2, status))[0].time -
                         m_host.zcuStatus.Matching(IsStatusOf(1, status))[0].time;
        EXPECT_GE(gap < gap.zero() ? -gap : gap, 900us);
    }
}

// A callback that uses the whole interface: it would hang if a lock were held over it.
std::atomic<int> g_callsBack{0};
std::atomic<int> g_volumesCallBack{0};

void CallBack() {
    K740_GetDeviceList(nullptr, 0);
    K740_AddDevice(50, 5, "192.168.5.50");
    K740_RemoveDevice(50);
    K740_SetRPKPTTMulticastIP(5000, "");
    K740_SetNodeID(9600);
    K740_EnterVAMode(1, 255);
    K740_StartAudioStreamTask(1, 100, 100, 1, "FFFFFF", 0);
    K740_StopTask(1);
    K740_SetTrainCallback(nullptr, nullptr);
    ++g_callsBack;
}

TEST_F(StatusDeliveryTest, CallbacksMayCallTheInterface) {
    K740_SetDeviceCallback(
        [](int id, int, int, int*, int, int) {
            if (id == 1) { CallBack(); }
            return 0;
        },
        [](int id, int*, unsigned*) {
            if (id == 1) { CallBack(); }
            return 0;
        },
        [](int, int*) {
            CallBack();
            ++g_volumesCallBack;
            return 0;
        },
        nullptr, nullptr,
        [](int, int, int, int, int, int) {
            CallBack();
            return 0;
        },
        nullptr);
    AddController(1, "192.168.1.20");
    ASSERT_EQ(0, K740_AddDevice(5000, 2, "192.168.8.99"));
    const auto volumes = MakePacket(1, 9500, kCmdGetVolumeV2Answer, _zcu_volumes_v2_t{1, {}, {}});
    g_app->ZCU().ZCU_Response_GetVolume_V2(&volumes);
    EXPECT_TRUE(WaitUntil([] { return g_volumesCallBack == 1 && g_callsBack >= 3; })); // status and zones, too
    g_app->PostRPKDeviceStatus(g_app->RPK().GetAllRPKStatus().at(0));
    EXPECT_TRUE(WaitUntil([] { return g_callsBack >= 4; }));
}

TEST_F(StatusDeliveryTest, CallbacksMayBeSwitchedWhileTheyAreCalled) {
    auto& controller = AddController(1, "192.168.1.20");
    std::atomic<bool> stop{false};
    std::thread setter([&] {
        while (!stop) {
            K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
            K740_SetDeviceCallback(RecordingHost::OnZCUStatus, RecordingHost::OnZoneStatus, nullptr, nullptr, nullptr,
                                   nullptr, nullptr);
        }
    });
    for (int i = 0; i < 2000; ++i) { g_app->PostZCUDeviceStatus({1, {}, 0}); }
    stop = true;
    setter.join();
    Send(controller, 3);
    EXPECT_TRUE(m_host.zcuStatus.WaitFor(IsStatusOf(1, 3)));
}

} // namespace
} // namespace k740::test
