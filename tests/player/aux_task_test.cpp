// Net AUX tasks: what they ask of the controllers, and how they end.
#include "tests/player/broadcast_fixture.h"

#include <gmock/gmock.h>

#include <atomic>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;
using sim::PlayReply;
using sim::command::kCloseAudio;
using sim::command::kPlay;

class AUXTaskTest : public BroadcastTest {
protected:
    static void StartAndPlay(const AUXArguments& task = {}) {
        ASSERT_EQ(0, StartAUX(task));
        ASSERT_TRUE(Reports().WaitFor(task.taskID, 2));
    }
};

TEST_F(AUXTaskTest, StatesAre1Then2Then0) {
    StartAndPlay();
    EXPECT_EQ(2, K740_GetTaskStatus(kTask));
    StopAndWait();
    EXPECT_EQ((std::vector<int>{1, 2, 0}), Reports().Of(kTask));
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
}

TEST_F(AUXTaskTest, RequestsCarryTheDeviceItsPortAndTheHostsGroup) {
    StartAndPlay({.taskID = 2002, .priority = 200, .recovery = 1, .zones = "002103", .dryContact = 1});
    const sim::Packet packet = WaitForPacket(kController, kPlay);
    EXPECT_EQ(9500U, packet.source);
    EXPECT_EQ(66, packet.length);
    const Bytes expected{1, 0, 0,    0,    56,   0,    1, 1, 3,    0,    0, 0, 0,    // sequence, 256 - 200, dry contact
                         4, 0, 0,    0,    0xD2, 7,    0, 0, 3,    0,    0, 0, 1, 0, // port, task, 3, recovery
                         0, 0, 0xFF, 0xFF, 0,    0,    0, 0, 0,    0,    0, 3, 0, 0, 0, // zones
                         0, 0, 0,    0,    0,    0,    0, 0, 32,   0,    0, 0,          // 32
                         3, 2, 1,    225,  0xC4, 0x6D, 0, 0, 0x59, 0x1B, 0, 0};         // group, port, device 7001
    EXPECT_EQ(expected, Bytes(packet.payload.begin(), packet.payload.begin() + 66));
}

TEST_F(AUXTaskTest, TheStatusRecordNamesTheSource) {
    StartAndPlay({.recovery = 1, .dryContact = 1});
    const tagTASK_STATUS record = RecordOf(kTask);
    EXPECT_EQ(2, record.status);
    EXPECT_EQ(0, record.channelID);
    EXPECT_EQ("225.1.2.3", record.multicastIP);
    EXPECT_EQ(70, record.priority);
    EXPECT_EQ(1, record.dryContactOutput);
    EXPECT_EQ(1, record.sequence);
    EXPECT_EQ(1, record.recovery);
    EXPECT_EQ(2, record.audioSource);
    EXPECT_EQ(7001, record.deviceID);
    EXPECT_EQ(4, record.auxPort);
}

TEST_F(AUXTaskTest, AGroupTextIsKeptUpTo48Characters) {
    const std::string group = "225.1.2.3" + std::string(60, ' ');
    StartAndPlay({.multicastIP = group.c_str()});
    EXPECT_EQ(group.substr(0, 48), RecordOf(kTask).multicastIP);
}

TEST_F(AUXTaskTest, ItTakesNoChannelAndNoAudioOfTheHost) {
    StartAndPlay();
    EXPECT_EQ(-1, g_app->Player().Channels().GetChannelID(kTask));
    EXPECT_EQ(-2, PushBytes(kTask, Bytes(4096)));
}

TEST_F(AUXTaskTest, ItsStepsAreLoggedAndTheFirstAsAnError) {
    StartAndPlay();
    EXPECT_TRUE(WaitForExactLine("*****Prepare to play task ID 1001"));
    EXPECT_EQ(1, CountExactLines("Success to trigger task, ZCU 33, task ID 1001"));
    StopAndWait();
    EXPECT_TRUE(WaitForExactLine("Stop task, task ID 1001"));
    EXPECT_EQ(0, CountLogLines("K740_StartNetAUXTask"));
}

TEST_F(AUXTaskTest, AStopClosesTheAudioOnEveryControllerAndEndsNoStream) {
    AddRegistered(34);
    m_controller.SetKeep(sim::Keep::SamplesAndDatagrams);
    StartAndPlay({.zones = "0021FF;0022FF"});
    ASSERT_TRUE(WaitUntil([this] { return m_controller.IsListening(kTask); }));
    StopAndWait();
    const sim::Packet close = WaitForPacket(kController, kCloseAudio);
    EXPECT_EQ(static_cast<std::uint32_t>(kTask), sim::ReadCloseAudioTask(close));
    WaitForPacket(34, kCloseAudio);
    EXPECT_TRUE(m_controller.Recordings().at(0).rawDatagrams.empty());
}

TEST_F(AUXTaskTest, ARefusedTaskFailsWithMinus3) {
    Reply(PlayReply::Refuse);
    ASSERT_EQ(0, StartAUX());
    ASSERT_TRUE(Reports().WaitFor(kTask, -3));
    EXPECT_EQ(-3, K740_GetTaskStatus(kTask));
    EXPECT_TRUE(WaitForExactLine("*****Failed to trigger AUX task devices, task ID 1001"));
    EXPECT_EQ(1, CountExactLines("*****Failed to trigger ZCU 33, task ID 1001"));
}

TEST_F(AUXTaskTest, AControllerThatNeverAnswersFailsTheTaskAndIsClosedLater) {
    Reply(PlayReply::Silent);
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(0, StartAUX());
    ASSERT_TRUE(Reports().WaitFor(kTask, -3));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 3990ms);
    EXPECT_TRUE(ReceivedBy(kController, kCloseAudio).empty());
    WaitForPacket(kController, kCloseAudio); // the trigger gives up after 5 s
    EXPECT_TRUE(WaitForExactLine("*****Trigger ZCU task timeout."));
}

TEST_F(AUXTaskTest, ATriggerThatGivesUpDoesNotCloseALaterTaskOfTheSameID) {
    Reply(PlayReply::Silent);
    ASSERT_EQ(0, StartAUX());
    ASSERT_TRUE(Reports().WaitFor(kTask, -3));
    Reply(PlayReply::AcceptWithJoin);
    ASSERT_EQ(0, StartAUX());
    ASSERT_TRUE(Reports().WaitFor(kTask, 2));
    ASSERT_TRUE(WaitForExactLine("*****Trigger ZCU task timeout."));
    EXPECT_TRUE(ReceivedBy(kController, kCloseAudio).empty());
    StopAndWait();
    WaitForPacket(kController, kCloseAudio); // the only one, that of the stop
    EXPECT_EQ(1U, ReceivedBy(kController, kCloseAudio).size());
}

TEST_F(AUXTaskTest, StoppedWhileItIsTriggeredItNeverPlaysAndClosesNothing) {
    sim::PlayBehaviour late;
    late.answerDelay = 200ms;
    m_controller.SetBehaviour(late);
    ASSERT_EQ(0, StartAUX());
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kController, kPlay), kSoon));
    EXPECT_EQ(0, K740_StopTask(kTask));
    ASSERT_TRUE(Reports().WaitFor(kTask, 0));
    EXPECT_TRUE(WaitForExactLine("Stop task, task ID 1001"));
    ASSERT_EQ(0, StartAUX({.taskID = 2002}));
    WaitForPacket(kController, kPlay, 2);
    EXPECT_TRUE(ReceivedBy(kController, kCloseAudio).empty());
    EXPECT_EQ((std::vector<int>{1, 0}), Reports().Of(kTask));
    EXPECT_EQ(0, CountExactLines("*****Prepare to play task ID 1001"));
}

TEST_F(AUXTaskTest, StoppedWithinTheReportOfState2ItEndsLikeAnyOther) {
    Reports().OnNext(kTask, 2, [] { K740_StopTask(kTask); });
    ASSERT_EQ(0, StartAUX());
    ASSERT_TRUE(Reports().WaitFor(kTask, 0));
    EXPECT_EQ((std::vector<int>{1, 2, 0}), Reports().Of(kTask));
    WaitForPacket(kController, kCloseAudio);
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
}

TEST_F(AUXTaskTest, StartedAgainWhileItEndsTheOldTaskClosesBeforeTheNewOneBegins) {
    StartAndPlay();
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_EQ(0, StartAUX());
    ASSERT_TRUE(Reports().WaitFor(kTask, 2, 2));
    // The stop is noticed at once, so that the former end may come before or after the new acceptance.
    EXPECT_THAT(Reports().Of(kTask),
                ::testing::AnyOf(std::vector<int>{1, 2, 0, 1, 2}, std::vector<int>{1, 2, 1, 0, 2}));
    WaitForPacket(kController, kPlay, 2);
    EXPECT_EQ(1U, ReceivedBy(kController, kCloseAudio).size());
    EXPECT_LT(ReceivedBy(kController, kCloseAudio)[0].time, ReceivedBy(kController, kPlay)[1].time);
}

TEST_F(AUXTaskTest, AStreamMayFollowAnAUXTaskOfTheSameID) {
    StartAndPlay();
    StopAndWait();
    StartAndBroadcast();
    EXPECT_EQ(1, RecordOf(kTask).audioSource);
}

TEST_F(AUXTaskTest, AStopIsNoticedWithin150Milliseconds) {
    StartAndPlay();
    const auto stopped = std::chrono::steady_clock::now();
    EXPECT_EQ(0, K740_StopTask(kTask));
    const auto close = Field().Events().WaitFor(sim::Received(kController, kCloseAudio), kSoon);
    ASSERT_TRUE(close);
    EXPECT_LT(close->time - stopped, 150ms);
}

TEST_F(AUXTaskTest, ShutdownClosesTheAudio) {
    StartAndPlay();
    EXPECT_EQ(0, K740_Deinitialize());
    WaitForPacket(kController, kCloseAudio);
    EXPECT_TRUE(Reports().WaitFor(kTask, 0));
}

} // namespace
} // namespace k740::test
