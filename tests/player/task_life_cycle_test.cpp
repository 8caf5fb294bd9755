// How stream tasks begin and end: states, their order, stops at every moment, and one ID used again.
#include "tests/player/broadcast_fixture.h"
#include "tests/support/noise.h"

#include <atomic>
#include <thread>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::PlayReply;
using sim::command::kCloseAudio;
using sim::command::kPlay;

class TaskLifeCycleTest : public BroadcastTest {
protected:
    /// Plays another task to its end, so that whatever a former one still had to say has been said and heard.
    void RunAnotherTask() {
        constexpr int kOther = 2002;
        StartAndBroadcast({.taskID = kOther});
        StopAndWait(kOther);
        EXPECT_TRUE(WaitForCloseAudio(kOther));
    }
    [[nodiscard]] bool WaitForCloseAudio(std::uint32_t taskID = kTask) const {
        const auto closes = [taskID](const sim::Event& event) {
            return sim::Received(kController, kCloseAudio)(event) && sim::ReadCloseAudioTask(*event.packet) == taskID;
        };
        return Field().Events().WaitFor(closes, kSoon).has_value();
    }
    /// Commands of tasks that the controller received, in order.
    [[nodiscard]] std::vector<int> Commands() const {
        std::vector<int> commands;
        for (const sim::Event& event : Field().Events().Events([](const sim::Event& noted) {
                 return noted.kind == sim::Event::Kind::Received && noted.packet &&
                        (noted.packet->command == kPlay || noted.packet->command == kCloseAudio);
             })) {
            commands.push_back(event.packet->command);
        }
        return commands;
    }
};

TEST_F(TaskLifeCycleTest, StatesAre1Then2Then0) {
    StartAndBroadcast();
    EXPECT_EQ(2, K740_GetTaskStatus(kTask));
    StopAndWait();
    RunAnotherTask();
    EXPECT_EQ((std::vector<int>{1, 2, 0}), Reports().Of(kTask));
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
}

TEST_F(TaskLifeCycleTest, EveryStepIsLogged) {
    StartAndBroadcast();
    StopAndWait();
    EXPECT_TRUE(WaitForExactLine("Task stoped, task ID 1001"));
    EXPECT_EQ(1, CountExactLines("Allocated muliticast 225.0.0.1 for task 1001 NIC:"));
    EXPECT_EQ(1, CountExactLines("Success to trigger task, ZCU 33, task ID 1001"));
    EXPECT_EQ(1, CountExactLines("Start to send audio stream to ZCU, task ID 1001"));
}

TEST_F(TaskLifeCycleTest, TheInterfaceIsNamedInTheLogAndCarriesTheStream) {
    ASSERT_EQ(0, K740_SetNIC("192.168.1.166"));
    StartAndBroadcast();
    EXPECT_TRUE(WaitForExactLine("Allocated muliticast 225.0.0.1 for task 1001 NIC:192.168.1.166"));
    EXPECT_TRUE(PushAudio(kTask, Noise(2048), 4096));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
}

TEST_F(TaskLifeCycleTest, TheStatusRecordIsCompleteInTheReportOfState2) {
    std::atomic<int> checked{0};
    Reports().OnNext(kTask, 2, [&] {
        const tagTASK_STATUS record = RecordOf(kTask);
        if (record.status == 2 && record.channelID == 0 && record.multicastIP == "225.0.0.1" && record.priority == 70 &&
            record.dryContactOutput == 1 && record.sequence == 1 && record.recovery == 1 && record.audioSource == 1 &&
            record.deviceID == 0 && record.auxPort == 0) {
            ++checked;
        }
    });
    ASSERT_EQ(0, Start({.recovery = 1, .dryContact = 1}));
    EXPECT_TRUE(WaitUntil([&] { return checked == 1; }));
}

TEST_F(TaskLifeCycleTest, AudioMayBePushedWithinTheReportOfState2) {
    std::atomic<bool> accepted{false};
    Reports().OnNext(kTask, 2, [&] { accepted = PushAudio(kTask, Noise(2048), 4096); });
    ASSERT_EQ(0, Start());
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
    EXPECT_TRUE(accepted);
}

TEST_F(TaskLifeCycleTest, ARefusedTaskFailsWithMinus3) {
    Reply(PlayReply::Refuse);
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, -3));
    EXPECT_EQ(-3, K740_GetTaskStatus(kTask));
    EXPECT_TRUE(WaitForExactLine("*****Failed to trigger all ZCU, task ID 1001"));
    EXPECT_EQ(1, CountExactLines("*****Failed to trigger ZCU 33, task ID 1001"));
    EXPECT_EQ(-1, g_app->Player().Channels().GetChannelID(kTask));
    EXPECT_EQ((std::vector<int>{1, -3}), Reports().Of(kTask));
}

TEST_F(TaskLifeCycleTest, OneControllerThatJoinsIsEnough) {
    Reply(AddRegistered(34), PlayReply::Refuse);
    Reply(AddRegistered(35), PlayReply::Silent);
    StartAndBroadcast({.zones = "0022FF;0023FF;0021FF"});
}

TEST_F(TaskLifeCycleTest, AControllerThatIsNotRegisteredFailsAlone) {
    StartAndBroadcast({.zones = "0099FF;0021FF"});
    StopAndWait();
    EXPECT_TRUE(WaitForCloseAudio());
}

TEST_F(TaskLifeCycleTest, AControllerThatNeverAnswersFailsTheTaskAfterFourSeconds) {
    Reply(PlayReply::Silent);
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, -3));
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, 3990ms);
    EXPECT_LT(took, 4900ms); // before the trigger itself gives up
}

TEST_F(TaskLifeCycleTest, AnInterfaceThatIsNotOursFailsTheTaskWithMinus2) {
    ASSERT_EQ(0, K740_SetNIC("192.168.1.222"));
    ::testing::internal::CaptureStdout();
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, -2));
    EXPECT_EQ("********failed to bind mcast: 192.168.1.222\n", ::testing::internal::GetCapturedStdout());
    EXPECT_TRUE(WaitForExactLine("*****Failed to join into multi-cast group, task ID 1001"));
    EXPECT_EQ(-2, K740_GetTaskStatus(kTask));
    EXPECT_EQ(-1, g_app->Player().Channels().GetChannelID(kTask));
}

TEST_F(TaskLifeCycleTest, AFailedTaskMayBeStartedAgain) {
    ASSERT_EQ(0, K740_SetNIC("192.168.1.222"));
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, -2));
    ASSERT_EQ(0, K740_SetNIC("192.168.1.166"));
    StartAndBroadcast();
    EXPECT_EQ((std::vector<int>{1, -2, 1, 2}), Reports().Of(kTask));
}

TEST_F(TaskLifeCycleTest, StoppingAFailedTaskReportsStateZeroAtOnce) {
    Reply(PlayReply::Refuse);
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, -3));
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_EQ((std::vector<int>{1, -3, 0}), Reports().Of(kTask));
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
}

TEST_F(TaskLifeCycleTest, AStoppedTaskIsGoneAtOnceForTheHost) {
    StartAndBroadcast();
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
}

TEST_F(TaskLifeCycleTest, AStopIsNoticedAtOnce) {
    StartAndBroadcast({.recovery = 1});
    const auto stopped = std::chrono::steady_clock::now();
    EXPECT_EQ(0, K740_StopTask(kTask));
    const auto close = Field().Events().WaitFor(sim::Received(kController, kCloseAudio), kSoon);
    ASSERT_TRUE(close);
    EXPECT_LT(close->time - stopped, 100ms);
}

TEST_F(TaskLifeCycleTest, AStopWhileTheSlotIsFullEndsTheTask) {
    m_controller.SetKeep(sim::Keep::Counts);
    StartAndBroadcast({.recovery = 1});
    std::atomic<int> pushes{0};
    std::thread host([&] {
        std::vector<std::uint8_t> chunk(4096);
        int result = 0;
        while (result == 0 || result == -1) { // accepted, or no room for the moment
            result = K740_SendAudioStreamProc(kTask, chunk.data(), 4096);
            ++pushes;
        }
    });
    EXPECT_TRUE(WaitUntil([&] { return pushes > 500; })); // more than the slot holds
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_TRUE(Reports().WaitFor(kTask, 0, 1, 2s));
    host.join();
}

TEST_F(TaskLifeCycleTest, WhatWasPushedBeforeAStopIsSentAlsoAfterSilence) {
    constexpr std::size_t kFrames = 1;
    StartAndBroadcast();
    const auto silent = std::chrono::steady_clock::now();
    ASSERT_TRUE(WaitUntil([&] { return std::chrono::steady_clock::now() - silent > 110ms; }));
    EXPECT_TRUE(PushAudio(kTask, Noise(kFrames * 2048), 4096));
    StopAndWait();
    EXPECT_TRUE(m_controller.WaitForDatagrams(kFrames, kSoon));
}

TEST_F(TaskLifeCycleTest, StoppedWithinTheReportOfState1ItEndsWithoutBroadcasting) {
    Reports().OnNext(kTask, 1, [] { K740_StopTask(kTask); });
    EXPECT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, 0));
    EXPECT_TRUE(WaitForExactLine("Prepare to play task, but task was stoped, task ID 1001"));
    RunAnotherTask();
    EXPECT_EQ((std::vector<int>{1, 0}), Reports().Of(kTask));
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
    EXPECT_EQ((std::vector<int>{kPlay, kPlay, kCloseAudio}), Commands()); // the close is the other task's
}

TEST_F(TaskLifeCycleTest, StoppedWithinTheReportOfState2ItEndsLikeAnyOther) {
    Reports().OnNext(kTask, 2, [] { K740_StopTask(kTask); });
    EXPECT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, 0));
    EXPECT_EQ((std::vector<int>{1, 2, 0}), Reports().Of(kTask));
    EXPECT_TRUE(WaitForCloseAudio());
    EXPECT_EQ(2U, m_controller.Recordings().at(0).endsOfStream.size());
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
}

TEST_F(TaskLifeCycleTest, StartedAgainWithinTheReportOfState0ItBroadcastsAgain) {
    std::atomic<int> restart{-9};
    Reports().OnNext(kTask, 0, [&] { restart = Start(); });
    StartAndBroadcast();
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_TRUE(Reports().WaitFor(kTask, 2, 2));
    EXPECT_EQ(0, restart);
    EXPECT_EQ((std::vector<int>{1, 2, 0, 1, 2}), Reports().Of(kTask));
    EXPECT_EQ((std::vector<int>{kPlay, kCloseAudio, kPlay}), Commands());
}

TEST_F(TaskLifeCycleTest, StoppedWhileItIsTriggeredItEndsWhenAControllerJoins) {
    sim::PlayBehaviour late;
    late.answerDelay = 200ms;
    m_controller.SetBehaviour(late);
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kController, kPlay), kSoon));
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_EQ(std::vector<int>{1}, Reports().Of(kTask));
    ASSERT_TRUE(Reports().WaitFor(kTask, 0));
    EXPECT_TRUE(WaitForExactLine("Prepare to play task, but task was stoped, task ID 1001"));
    RunAnotherTask();
    EXPECT_EQ((std::vector<int>{1, 0}), Reports().Of(kTask));
    EXPECT_EQ((std::vector<int>{kPlay, kPlay, kCloseAudio}), Commands());
}

TEST_F(TaskLifeCycleTest, StoppedWhileItIsTriggeredAndThenRefusedItFails) {
    sim::PlayBehaviour late;
    late.answerDelay = 200ms;
    late.reply = PlayReply::Refuse;
    m_controller.SetBehaviour(late);
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kController, kPlay), kSoon));
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
    ASSERT_TRUE(Reports().WaitFor(kTask, -3));
    EXPECT_EQ(-3, K740_GetTaskStatus(kTask));
    EXPECT_EQ((std::vector<int>{1, -3}), Reports().Of(kTask));
}

TEST_F(TaskLifeCycleTest, StartedAgainWhileItEndsTheOldTaskClosesBeforeTheNewOneBegins) {
    StartAndBroadcast();
    ASSERT_EQ(0, K740_StopTask(kTask));
    ASSERT_EQ(0, Start()); // its old thread still has to send the end of the stream
    ASSERT_TRUE(Reports().WaitFor(kTask, 2, 2));
    EXPECT_EQ((std::vector<int>{1, 2, 1, 0, 2}), Reports().Of(kTask));
    EXPECT_EQ((std::vector<int>{kPlay, kCloseAudio, kPlay}), Commands());
    EXPECT_EQ(2, K740_GetTaskStatus(kTask));
    EXPECT_TRUE(PushAudio(kTask, Noise(2048), 4096));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));

    StopAndWait();
    RunAnotherTask();
    EXPECT_EQ((std::vector<int>{1, 2, 1, 0, 2, 0}), Reports().Of(kTask));
}

TEST_F(TaskLifeCycleTest, StartedAgainManyTimesEveryStartHasItsEnd) {
    constexpr int kStarts = 10;
    for (int i = 1; i <= kStarts; ++i) {
        ASSERT_EQ(0, Start({.recovery = 1}));
        ASSERT_EQ(0, K740_StopTask(kTask));
    }
    ASSERT_TRUE(Reports().WaitFor(kTask, 0, kStarts));
    ASSERT_TRUE(WaitUntil([] { return g_app->Player().Channels().GetChannelID(kTask) == -1; }));
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
    StartAndBroadcast();
    EXPECT_EQ(0, g_app->Player().Channels().GetChannelID(kTask));
}

TEST_F(TaskLifeCycleTest, StartedAgainWhileItIsTriggeredTheOldTaskGivesUpAtOnce) {
    Reply(PlayReply::Silent);
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kController, kPlay), kSoon));
    ASSERT_EQ(0, K740_StopTask(kTask));
    Reply(PlayReply::AcceptWithJoin);
    const auto restarted = std::chrono::steady_clock::now();
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, 2));
    EXPECT_LT(std::chrono::steady_clock::now() - restarted, 2s);
    EXPECT_EQ((std::vector<int>{1, 1, 0, 2}), Reports().Of(kTask));
    EXPECT_TRUE(WaitForExactLine("Prepare to play task, but task was stoped, task ID 1001"));
    EXPECT_EQ((std::vector<int>{kPlay, kPlay}), Commands());
}

TEST_F(TaskLifeCycleTest, StoppedTwiceWhileItIsTriggeredNoFailureOfTheFirstIsLeft) {
    sim::PlayBehaviour refusal;
    refusal.reply = PlayReply::Refuse;
    refusal.answerDelay = 300ms;
    m_controller.SetBehaviour(refusal);
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Field().Events().WaitFor(sim::Received(kController, kPlay), kSoon));
    ASSERT_EQ(0, K740_StopTask(kTask));
    ASSERT_EQ(0, Start());
    ASSERT_EQ(0, K740_StopTask(kTask));
    ASSERT_TRUE(WaitUntil([] { return !g_app->Player().Status().HasThreads(); }, kSoon));
    EXPECT_EQ(Reports().Of(kTask).back(), K740_GetTaskStatus(kTask));
    EXPECT_EQ(0, Reports().Of(kTask)[2]); // the first task, which was overtaken
}

TEST_F(TaskLifeCycleTest, AShutdownEndsATaskThatWaitsForItsFormerRun) {
    std::atomic<bool> goOn{false};
    Reports().OnNext(kTask, 2, [&] { WaitUntil([&] { return goOn.load(); }); });
    StartAndBroadcast();
    ASSERT_EQ(0, K740_StopTask(kTask));
    ASSERT_EQ(0, Start());
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_TRUE(Reports().WaitFor(kTask, 0, 1, kSoon)); // while the former one is still in its report
    goOn = true;
    EXPECT_TRUE(Reports().WaitFor(kTask, 0, 2));
    EXPECT_EQ(1U, ReceivedBy(kController, kPlay).size());
}

TEST_F(TaskLifeCycleTest, TwoHostThreadsThatStartOneTaskStartItOnce) {
    for (int taskID = 1; taskID <= 20; ++taskID) {
        std::atomic<int> accepted{0};
        std::atomic<int> running{0};
        const auto start = [&] {
            const int result = Start({.taskID = taskID});
            if (result == 0) { ++accepted; }
            if (result == -2) { ++running; }
        };
        std::thread first(start);
        std::thread second(start);
        first.join();
        second.join();
        EXPECT_EQ(1, accepted);
        EXPECT_EQ(1, running);
        EXPECT_TRUE(Reports().WaitFor(taskID, 2));
        EXPECT_EQ((std::vector<int>{1, 2}), Reports().Of(taskID));
    }
}

TEST_F(TaskLifeCycleTest, StartsAndStopsFromTwoThreadsLeaveNothingBehind) {
    constexpr int kRounds = 100;
    std::atomic<int> accepted{0};
    std::thread starter([&] {
        for (int i = 0; i < kRounds; ++i) { accepted += Start({.recovery = 1}) == 0 ? 1 : 0; }
    });
    std::thread stopper([] {
        for (int i = 0; i < kRounds; ++i) { K740_StopTask(kTask); }
    });
    starter.join();
    stopper.join();
    K740_StopTask(kTask);
    EXPECT_TRUE(WaitUntil([] { return g_app->Player().Channels().GetChannelID(kTask) == -1; }));
    EXPECT_EQ(accepted, Reports().Count(kTask, 1));
    EXPECT_GE(accepted, 1);

    ASSERT_TRUE(Reports().WaitFor(kTask, 0, accepted));
    StartAndBroadcast();
    EXPECT_TRUE(PushAudio(kTask, Noise(2048), 4096));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
}

TEST_F(TaskLifeCycleTest, EveryReportIsInTheCallbackLog) {
    EXPECT_EQ(0, K740_EnableCallbackLog(1));
    Reply(PlayReply::Refuse);
    ASSERT_EQ(0, Start());
    ASSERT_TRUE(Reports().WaitFor(kTask, -3));
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_TRUE(WaitForCallbackLogLine("PTASKSTATUS", "PTASKSTATUS(1001, 1)"));
    EXPECT_TRUE(WaitForCallbackLogLine("PTASKSTATUS", "PTASKSTATUS(1001, 4294967293)"));
    EXPECT_TRUE(WaitForCallbackLogLine("PTASKSTATUS", "PTASKSTATUS(1001, 0)"));
}

TEST_F(TaskLifeCycleTest, ACallbackThatIsSwitchedOffIsNotCalled) {
    StartAndBroadcast({.recovery = 1});
    EXPECT_EQ(0, K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(0, K740_StopTask(kTask));
    EXPECT_TRUE(WaitForCloseAudio());
    EXPECT_TRUE(WaitUntil([] { return g_app->Player().Channels().GetChannelID(kTask) == -1; }));
    EXPECT_EQ((std::vector<int>{1, 2}), Reports().Of(kTask));
}

TEST_F(TaskLifeCycleTest, ShutdownDuringABroadcastEndsTheStreamAndClosesTheAudio) {
    StartAndBroadcast();
    EXPECT_TRUE(PushAudio(kTask, Noise(2048), 4096));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_TRUE(WaitForCloseAudio());
    EXPECT_EQ(2U, m_controller.Recordings().at(0).endsOfStream.size());
    EXPECT_TRUE(Reports().WaitFor(kTask, 0));
    EXPECT_EQ(-1, PushBytes(kTask, {0, 0}));
}

} // namespace
} // namespace k740::test
