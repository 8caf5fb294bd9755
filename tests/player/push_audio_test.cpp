// K740_SendAudioStreamProc: what is accepted when, and the codes of what is not, in their order.
#include "tests/player/broadcast_fixture.h"

#include <atomic>
#include <chrono>
#include <limits>
#include <thread>

namespace k740::test {
namespace {

using sim::Bytes;
using sim::PlayReply;

class PushAudioTest : public BroadcastTest {
protected:
    /// A task that holds its channel and waits for its controller, for some 4 s.
    void StartAndWaitForController() {
        Reply(PlayReply::Silent);
        ASSERT_EQ(0, Start());
        ASSERT_TRUE(WaitUntil([] { return g_app->Player().Channels().GetChannelID(kTask) >= 0; }));
    }
};

TEST_F(PushAudioTest, NoAudioIsRefusedBeforeTheTaskIsLookedAt) {
    Bytes data(2);
    EXPECT_EQ(-1, K740_SendAudioStreamProc(kTask, nullptr, 2));
    EXPECT_EQ(-1, K740_SendAudioStreamProc(kTask, data.data(), 0));
    EXPECT_EQ(-1, K740_SendAudioStreamProc(kTask, data.data(), -1));
    EXPECT_EQ(-1, K740_SendAudioStreamProc(kTask, data.data(), std::numeric_limits<int>::min()));
}

TEST_F(PushAudioTest, ATaskWithoutAChannelIsMinus2WhateverTheLength) {
    Bytes data(2);
    EXPECT_EQ(-2, PushBytes(kTask, Bytes(4096)));
    EXPECT_EQ(-2, PushBytes(kTask, Bytes(4097)));
    EXPECT_EQ(-2, K740_SendAudioStreamProc(kTask, data.data(), std::numeric_limits<int>::max()));
    for (const int taskID : {0, -1, 50001}) { EXPECT_EQ(-2, PushBytes(taskID, Bytes(2))) << taskID; }
}

TEST_F(PushAudioTest, AFreeChannelIsNoTasks) {
    StartAndBroadcast();
    StopAndWait();
    for (const int taskID : {0, -1}) { EXPECT_EQ(-2, PushBytes(taskID, Bytes(2))) << taskID; }
}

TEST_F(PushAudioTest, AWaitingTaskIsMinus1ForTheLengthAndThenMinus3) {
    StartAndWaitForController();
    EXPECT_EQ(-1, PushBytes(kTask, Bytes(4097)));
    EXPECT_EQ(-3, PushBytes(kTask, Bytes(4096)));
}

TEST_F(PushAudioTest, AStoppedTaskIsMinus3WhileItHoldsItsChannel) {
    StartAndWaitForController();
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_EQ(-3, PushBytes(kTask, Bytes(2)));
    EXPECT_EQ(-1, PushBytes(kTask, Bytes(4097)));
}

TEST_F(PushAudioTest, AnEndedTaskIsMinus2WithinTheReportOfItsEnd) {
    std::atomic<int> result{0};
    Reports().OnNext(kTask, 0, [&] { result = PushBytes(kTask, Bytes(2)); });
    StartAndBroadcast();
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_TRUE(WaitUntil([&] { return result == -2; }));
}

TEST_F(PushAudioTest, AFailedTaskIsMinus2) {
    Reply(PlayReply::Refuse);
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, -3));
    EXPECT_EQ(-2, PushBytes(kTask, Bytes(2)));
}

TEST_F(PushAudioTest, ChunksAreAsLongAsTheFormatAllows) {
    struct Bound {
        int format;
        std::size_t longest;
    };
    for (const Bound bound : {Bound{0, 4096}, Bound{1, 2048}, Bound{2, 1024}, Bound{3, 1024}, Bound{4, 700}}) {
        g_app->Configuration().SetAudioStreamFormat(bound.format);
        StartAndBroadcast();
        EXPECT_EQ(0, PushBytes(kTask, Bytes(1))) << bound.format;
        EXPECT_EQ(0, PushBytes(kTask, Bytes(bound.longest))) << bound.format;
        EXPECT_EQ(-1, PushBytes(kTask, Bytes(bound.longest + 1))) << bound.format;
        StopAndWait();
    }
}

TEST_F(PushAudioTest, TheFormatMayChangeUntilTheTaskBroadcasts) {
    sim::PlayBehaviour late;
    late.answerDelay = std::chrono::milliseconds(200);
    m_controller.SetBehaviour(late);
    ASSERT_EQ(0, Start());
    WaitForPacket(kController, sim::command::kPlay);
    ASSERT_EQ(0, K740_SetAudioStreamFormat(1));
    ASSERT_TRUE(Reports().WaitFor(kTask, 2));
    EXPECT_EQ(0, PushBytes(kTask, Bytes(2048)));
    EXPECT_EQ(0, PushBytes(kTask, Bytes(2048)));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
}

TEST_F(PushAudioTest, AFormatThatTheTaskDoesNotBroadcastWithHasNoRoom) {
    StartAndBroadcast();
    ASSERT_EQ(0, K740_SetAudioStreamFormat(1));
    EXPECT_EQ(-1, PushBytes(kTask, Bytes(882)));
    ASSERT_EQ(0, K740_SetAudioStreamFormat(0));
    EXPECT_EQ(0, PushBytes(kTask, Bytes(4096)));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
}

TEST_F(PushAudioTest, AFullSlotRefusesWholeChunks) {
    std::atomic<int> full{1};
    // Within the report the sender has not begun, so nothing is taken out.
    Reports().OnNext(kTask, 2, [&] {
        int accepted = 0;
        while (PushBytes(kTask, Bytes(4096)) == 0) { ++accepted; }
        const bool rest = PushBytes(kTask, Bytes(1920000 % 4096)) == 0 && PushBytes(kTask, Bytes(1)) == -1;
        full = accepted == 1920000 / 4096 && rest ? -1 : 0;
    });
    ASSERT_EQ(0, Start());
    EXPECT_TRUE(WaitUntil([&] { return full != 1; }));
    EXPECT_EQ(-1, full);
    EXPECT_TRUE(m_controller.WaitForDatagrams(1920000 / 4096, kSoon));
}

TEST_F(PushAudioTest, OneTaskMayBeFedByManyThreads) {
    StartAndBroadcast();
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) {
        hosts.emplace_back([] {
            for (int i = 0; i < 50; ++i) { EXPECT_EQ(0, PushBytes(kTask, Bytes(2048))); }
        });
    }
    for (std::thread& host : hosts) { host.join(); }
    EXPECT_TRUE(m_controller.WaitForDatagrams(100, kSoon));
}

} // namespace
} // namespace k740::test
