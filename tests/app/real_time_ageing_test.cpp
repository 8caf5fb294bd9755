// The rules that take a minute or two, in real time. Elsewhere they are tested on times that tests make up.
#include "app/application.h"
#include "app/k740.h"
#include "sim/records.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr int kController = 33;
constexpr int kOtherController = 34;
constexpr int kStation = 5000;
constexpr int kOtherStation = 5001;
constexpr auto kPatience = 100s;

class RealTimeAgeingTest : public OnPrivateNetwork {
protected:
    static int ControllerStatus() {
        tagZCU_QUERYSTATUS2 record;
        return g_app->ZCU().GetZCUStatus(kController, record) == 0 ? record.status.deviceStatus : -1;
    }
    static int StationState() {
        const auto all = g_app->RPK().GetAllRPKStatus();
        return all.empty() ? -1 : all.front().status.state;
    }
    /// Makes the library take answers that nobody has asked for.
    static void TakeAnswers(std::uint32_t controller, std::uint32_t station) {
        const _vxa_cmd_packet_t taskAnswer = MakePacket(station, 9500, 0x8702, _rpk_task_answer_t{3, 1});
        g_app->RPK().ReceivePlayPTTAUXResponse(&taskAnswer, "");
        const _vxa_cmd_packet_t version = MakePacket(station, 9500, 0x8132);
        g_app->ZCU().DEV_Response_GetVersion(&version);
        const _vxa_cmd_packet_t zoneGroups = MakePacket(controller, 9500, 0x8303);
        g_app->ZCU().ZCU_Response_GetZoneMCastIP(&zoneGroups);
    }
    /// @return 0, or the code of a failure
    static int ZoneGroupsOf(int controller) {
        tagQUERY_ZONE_MCAST_IP_RSP groups;
        int error = 0;
        return g_app->ZCU().ZCU_Request_GetZoneMCastIP(controller, &groups, error) ? 0 : error;
    }
    [[nodiscard]] bool WaitUntilPassed(std::chrono::seconds time) const {
        return WaitUntil([&] { return SteadyClock::now() - m_start > time; }, time + 10s);
    }
    [[nodiscard]] auto Passed() const { return SteadyClock::now() - m_start; }

    SteadyClock::time_point m_start = SteadyClock::now();
};

TEST_F(RealTimeAgeingTest, DevicesThatFallSilentAreOffLineAfterAMinute) {
    auto& controller = AddZoneController(kController, "192.168.1.33");
    auto& station = AddPagingStation(kStation, "192.168.8.99");
    K740_AddDevice(kController, 1, "192.168.1.33");
    K740_AddDevice(kStation, 2, "192.168.8.99");
    m_start = SteadyClock::now();
    controller.SendStatus(controller.QuietStatus());
    station.SendStatus(sim::PagingStatus{});
    ASSERT_TRUE(WaitUntil([] { return ControllerStatus() == 1 && StationState() == 1; }));

    EXPECT_TRUE(WaitUntil([] { return ControllerStatus() == 255 && StationState() == 255; }, kPatience));
    EXPECT_GT(Passed(), 60s);
    EXPECT_LT(Passed(), 70s);
    const auto heartbeats = Field().Events().Count(sim::Received(kController, 0x0125));
    EXPECT_GE(heartbeats, 6U); // the greeting, and one every 10 s
    EXPECT_LE(heartbeats, 8U);
}

TEST_F(RealTimeAgeingTest, AnswersThatNobodyClaimsAreForgottenAfterTwoMinutes) {
    K740_AddDevice(kController, 1, "192.168.1.33"); // none of the four is simulated
    K740_AddDevice(kOtherController, 1, "192.168.1.34");
    K740_AddDevice(kStation, 2, "192.168.8.99");
    K740_AddDevice(kOtherStation, 2, "192.168.8.98");
    m_start = SteadyClock::now();
    TakeAnswers(kController, kStation);
    ASSERT_TRUE(WaitUntilPassed(60s));
    TakeAnswers(kOtherController, kOtherStation);
    ASSERT_TRUE(WaitUntilPassed(121s));
    // A minute old: taken for the answers to these requests.
    EXPECT_EQ(0, K740_StopRPKTask(kOtherStation, 3));
    EXPECT_GT(K740_GetDeviceVersion(kOtherStation, nullptr, 0), 0);
    EXPECT_EQ(0, ZoneGroupsOf(kOtherController));

    EXPECT_EQ(-2, K740_StopRPKTask(kStation, 3));
    EXPECT_EQ(-2, K740_GetDeviceVersion(kStation, nullptr, 0));
    EXPECT_EQ(-9, ZoneGroupsOf(kController));
}

} // namespace
} // namespace k740::test
