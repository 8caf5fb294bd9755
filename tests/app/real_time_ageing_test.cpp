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
    /// Makes the library take an answer of a station that nobody has asked for.
    static void TakeAnswer(std::uint32_t station) {
        const _vxa_cmd_packet_t packet = MakePacket(station, 9500, 0x8702, _rpk_task_answer_t{3, 1});
        g_app->RPK().ReceivePlayPTTAUXResponse(&packet, "");
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

TEST_F(RealTimeAgeingTest, AnAnswerThatNobodyClaimsIsForgottenAfterTwoMinutes) {
    K740_AddDevice(kStation, 2, "192.168.8.99"); // neither station is simulated
    K740_AddDevice(kOtherStation, 2, "192.168.8.98");
    m_start = SteadyClock::now();
    TakeAnswer(kStation);
    ASSERT_TRUE(WaitUntilPassed(60s));
    TakeAnswer(kOtherStation);
    ASSERT_TRUE(WaitUntilPassed(121s));
    EXPECT_EQ(0, K740_StopRPKTask(kOtherStation, 3)); // a minute old: taken for the answer to this request
    EXPECT_EQ(-2, K740_StopRPKTask(kStation, 3));
}

} // namespace
} // namespace k740::test
