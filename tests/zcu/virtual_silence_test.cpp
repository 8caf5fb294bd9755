// A virtual zone controller that hears nothing.
#include "tests/zcu/virtual_fixture.h"

#include <gtest/gtest.h>

#include <chrono>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

// From the request on: 2 ms, 80 ms, and more than 4999 ms of silence.
constexpr auto kUntilTheEnd = 5081ms;

class VirtualSilenceTest : public VirtualTest {
protected:
    /// From the first play request to the host's message that the controller has ended.
    [[nodiscard]] auto TimeToEnd() const {
        const auto ends = RecordingHost::Get().trainMessages.Matching(
            [](const TrainMessageCall& call) { return call.message == 2 && call.deviceID == kVirtual; });
        return ends.at(0).time - Field().Events().Events(sim::Sent(kClient, 0x0205)).at(0).time;
    }
};

TEST_F(VirtualSilenceTest, FiveSecondsWithoutADatagramEndPlayingAndAnyDatagramCounts) {
    Play();
    Play(PlayRequestOf(kTask, kOtherGroup), kOtherVirtual);
    sim::AudioStream nonsense;
    nonsense.period = 500ms;
    nonsense.datagrams = {{0x00}};
    m_client.Stream(kOtherGroup, nonsense);

    ASSERT_TRUE(WaitForMessage(2));
    EXPECT_GE(TimeToEnd(), kUntilTheEnd);
    EXPECT_LT(TimeToEnd(), 6000ms);
    EXPECT_TRUE(WaitForExactLine("Exit player for receive multicast audio timeout over 5s, virtual ZCU 900"));
    EXPECT_TRUE(g_app->ZCU().GetTaskZCU(kClient, kTask) == std::vector<int>{kOtherVirtual});
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 0; }));

    m_client.SendEndOfStream(kOtherGroup, kOtherVirtual);
    EXPECT_TRUE(WaitForMessage(2, 1, kOtherVirtual));
    EXPECT_TRUE(WaitForExactLine("Exit player for receive multicast exit, virtual ZCU 901"));
    EXPECT_EQ(0, CountLogLines("timeout over 5s, virtual ZCU 901"));
}

TEST_F(VirtualSilenceTest, AGroupThatCannotBeJoinedEndsTheSameWay) {
    m_client.RequestPlay(kVirtual, PlayRequestOf(kTask, {"192.168.4.1", 28100})); // no group
    ASSERT_TRUE(WaitForMessage(1));
    ASSERT_TRUE(WaitForMessage(2));
    EXPECT_GE(TimeToEnd(), kUntilTheEnd);
    EXPECT_TRUE(WaitForExactLine("Exit player for receive multicast audio timeout over 5s, virtual ZCU 900"));
}

} // namespace
} // namespace k740::test
