// A virtual zone controller is removed while it plays, while it is asked to, and while the host tells the train's
// state.
#include "common/thread.h"
#include "sim/audio_encoder.h"
#include "tests/support/noise.h"
#include "tests/support/status_records.h"
#include "tests/zcu/virtual_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VirtualRemovalTest : public VirtualTest {
protected:
    static bool HasStatus() {
        tagZCU_QUERYSTATUS2 record;
        return g_app->ZCU().GetZCUStatus(kVirtual, record) == 0;
    }
    static bool IsRegistered() { return g_app->Devices().IsDeviceIDValid(kVirtual); }
};

TEST_F(VirtualRemovalTest, ARemovedControllerEndsWhatItPlays) {
    sim::AudioEncoder encoder(kClient, 1, 341);
    Play();
    Play(PlayRequestOf(), kOtherVirtual);
    ASSERT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 2; }));
    ASSERT_EQ(0, K740_RemoveDevice(kVirtual));
    EXPECT_THAT(g_app->ZCU().GetTaskZCU(kClient, kTask), ElementsAre(kOtherVirtual));
    EXPECT_TRUE(WaitForMessage(2));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 1; }));
    m_client.SendRaw(sim::Pack(encoder.Encode(Noise(encoder.SamplesPerDatagram()))), kGroup);
    m_client.SendEndOfStream(kGroup, kOtherVirtual);
    EXPECT_TRUE(WaitForMessage(2, 1, kOtherVirtual));
    EXPECT_EQ(1U, RecordingHost::Get().trainAudio.All().size()) << "the other one's alone";
    EXPECT_EQ(1U, CountMessages(2));
}

// Both answers to the request go out whatever happens; 2 ms lie between them, and after the second it plays.
TEST_F(VirtualRemovalTest, ARequestIsDroppedWhenItsControllerIsRemovedBeforeItPlays) {
    ASSERT_TRUE(WaitForLogLine("PTRAINAUDIO")); // the library's threads run
    const int threads = RunningThreads();
    _vxa_play_task_req_t_V2 play{};
    play.taskID = kTask;
    play.multicastIP = 0xE1010203;
    play.multicastPort = kGroup.port;
    const auto request = MakePacket(kClient, kVirtual, 0x0205, play);
    std::size_t rounds = 0;
    const auto isDropped = [&] {
        const std::size_t played = CountMessages(1);
        g_app->ZCU().ReceivePlayTaskResponse(&request, kClientIP);
        EXPECT_EQ(0, K740_RemoveDevice(kVirtual));
        EXPECT_TRUE(WaitForAnswer(0x8206, ++rounds));
        EXPECT_TRUE(WaitUntil([=] { return CountMessages(1) == CountMessages(2) && RunningThreads() == threads; }));
        EXPECT_EQ(0, K740_AddDevice(kVirtual, 9, ""));
        return CountMessages(1) == played; // else this thread was held up
    };
    EXPECT_TRUE(WaitUntil(isDropped));
    EXPECT_THAT(g_app->ZCU().GetTaskZCU(kClient, kTask), IsEmpty());
}

TEST_F(VirtualRemovalTest, AStatusThatIsPutInDuringARemovalDoesNotStay) {
    constexpr int kRounds = 50;
    for (int round = 0; round < kRounds; ++round) {
        std::thread remover;
        EXPECT_TRUE(g_app->ZCU().PublishVirtualStatus(kVirtual, [&](std::uint32_t) {
            remover = std::thread([] { EXPECT_EQ(0, K740_RemoveDevice(kVirtual)); });
            EXPECT_TRUE(WaitUntil([] { return !IsRegistered(); }));
            return ZCURecord(kVirtual, CountingReport());
        }));
        remover.join();
        EXPECT_FALSE(HasStatus()) << round;
        EXPECT_EQ(-1, K740_SetTrainStatus(kVirtual, 1));
        EXPECT_FALSE(HasStatus()) << round;
        EXPECT_EQ(0, K740_AddDevice(kVirtual, 9, ""));
    }
}

} // namespace
} // namespace k740::test
