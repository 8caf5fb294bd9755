// Which calls of the host are accepted, and what the others return and log.
#include "tests/player/broadcast_fixture.h"

#include <array>
#include <limits>

namespace k740::test {
namespace {

using TaskAcceptanceTest = BroadcastTest;

constexpr int kIntMax = std::numeric_limits<int>::max();
constexpr int kIntMin = std::numeric_limits<int>::min();

/// Expects that every call returns -1 and leaves nothing but the line, in the log at level 4.
template <typename Arguments, typename StartTask>
void ExpectRefused(const std::vector<Arguments>& calls, const std::string& line, StartTask start) {
    for (const Arguments& call : calls) {
        EXPECT_EQ(-1, start(call)) << line;
        EXPECT_EQ(0, g_app->Player().Status().GetTaskStatus(call.taskID)) << line;
        EXPECT_TRUE(Reports().Of(call.taskID).empty()) << line;
    }
    EXPECT_TRUE(WaitForExactLine("*****" + line, static_cast<std::ptrdiff_t>(calls.size()))) << line;
}

void ExpectStreamRefused(const std::vector<StreamArguments>& calls, const std::string& line) {
    ExpectRefused(calls, line, Start);
}

void ExpectAUXRefused(const std::vector<AUXArguments>& calls, const std::string& line) {
    ExpectRefused(calls, line, StartAUX);
}

TEST_F(TaskAcceptanceTest, StreamTaskIDsAre1To50000) {
    EXPECT_EQ(0, Start({.taskID = 1}));
    EXPECT_EQ(0, Start({.taskID = 50000}));
    ExpectStreamRefused({{.taskID = 0}, {.taskID = 50001}, {.taskID = -1}, {.taskID = kIntMax}, {.taskID = kIntMin}},
                        "Task ID is invalid.");
}

TEST_F(TaskAcceptanceTest, StreamPrioritiesAre56To255) {
    EXPECT_EQ(0, Start({.taskID = 1, .priority = 56}));
    EXPECT_EQ(0, Start({.taskID = 2, .priority = 255}));
    ExpectStreamRefused({{.priority = 55}, {.priority = 256}, {.priority = -1}, {.priority = kIntMax}},
                        "Priority is invalid.");
}

TEST_F(TaskAcceptanceTest, StreamZonesMustNameAKnownController) {
    EXPECT_EQ(0, Start({.taskID = 1, .zones = "  0021FF  "}));
    EXPECT_EQ(0, Start({.taskID = 2, .zones = "FFFFFF"}));
    ExpectStreamRefused({{.zones = ""},
                         {.zones = nullptr},
                         {.zones = "   "},
                         {.zones = "0022FF"},
                         {.zones = "002100"},
                         {.zones = "0021F"},
                         {.zones = "\t0021FF"},
                         {.zones = "%n%s%n"}},
                        "Zones is error.");
}

TEST_F(TaskAcceptanceTest, VolumesAre0To100) {
    EXPECT_EQ(0, Start({.taskID = 1, .volume = 0}));
    EXPECT_EQ(0, Start({.taskID = 2, .volume = 100}));
    ExpectStreamRefused({{.volume = -1}, {.volume = 101}, {.volume = kIntMax}}, "Volume is invalid.");
}

TEST_F(TaskAcceptanceTest, StreamRecoveryIs0Or1) {
    EXPECT_EQ(0, Start({.taskID = 1, .recovery = 1}));
    ExpectStreamRefused({{.recovery = -1}, {.recovery = 2}, {.recovery = kIntMax}}, "Recovery is invalid.");
}

TEST_F(TaskAcceptanceTest, StreamDryContactOutputIs0Or1) {
    EXPECT_EQ(0, Start({.taskID = 1, .dryContact = 1}));
    ExpectStreamRefused({{.dryContact = -1}, {.dryContact = 2}, {.dryContact = kIntMax}},
                        "DryContactOutput is invalid.");
}

TEST_F(TaskAcceptanceTest, StreamChecksRunInTheirOrder) {
    StreamArguments call{.taskID = 0, .volume = 101, .priority = 55, .recovery = 2, .zones = "", .dryContact = 2};
    ExpectStreamRefused({call}, "Task ID is invalid.");
    call.taskID = kTask;
    ExpectStreamRefused({call}, "Priority is invalid.");
    call.priority = 70;
    ExpectStreamRefused({call}, "Zones is error.");
    call.zones = kZones;
    ExpectStreamRefused({call}, "Volume is invalid.");
    call.volume = 100;
    ExpectStreamRefused({call}, "Recovery is invalid.");
    call.recovery = 0;
    ExpectStreamRefused({call}, "DryContactOutput is invalid.");
}

TEST_F(TaskAcceptanceTest, StreamStartIsLoggedWhateverItsArguments) {
    EXPECT_EQ(0,
              Start({.taskID = 7, .volume = 50, .priority = 200, .recovery = 1, .zones = " 0021FF", .dryContact = 1}));
    EXPECT_TRUE(WaitForExactLine("=====K740_StartAudioStreamTask(7, 50, 200, 1, ' 0021FF', 1)"));
    EXPECT_EQ(-1, Start({.taskID = -7, .zones = nullptr}));
    EXPECT_TRUE(WaitForExactLine("=====K740_StartAudioStreamTask(-7, 100, 70, 0, '', 0)"));
}

TEST_F(TaskAcceptanceTest, ALineHoldsZonesOfAnyLength) {
    const std::string zones(200'000, 'A');
    EXPECT_EQ(-1, Start({.zones = zones.c_str()}));
    EXPECT_TRUE(WaitForExactLine("=====K740_StartAudioStreamTask(1001, 100, 70, 0, '" + zones + "', 0)"));
}

TEST_F(TaskAcceptanceTest, AWaitingTaskIsNotStartedAgain) {
    Reply(sim::PlayReply::Silent);
    EXPECT_EQ(0, Start());
    EXPECT_EQ(-2, Start());
    EXPECT_TRUE(WaitForExactLine("*****Task 1001 is running."));
    EXPECT_EQ(std::vector<int>{1}, Reports().Of(kTask));
}

TEST_F(TaskAcceptanceTest, ABroadcastingTaskIsNotStartedAgain) {
    StartAndBroadcast();
    EXPECT_EQ(-2, Start());
    EXPECT_TRUE(WaitForExactLine("*****Task 1001 is running."));
    EXPECT_EQ(-2, StartAUX());
    EXPECT_EQ((std::vector<int>{1, 2}), Reports().Of(kTask));
}

TEST_F(TaskAcceptanceTest, ABadArgumentCountsBeforeARunningTask) {
    StartAndBroadcast();
    for (const StreamArguments& call :
         {StreamArguments{.priority = 55}, StreamArguments{.zones = ""}, StreamArguments{.volume = 101},
          StreamArguments{.recovery = 2}, StreamArguments{.dryContact = 2}}) {
        EXPECT_EQ(-1, Start(call));
    }
    for (const AUXArguments& call :
         {AUXArguments{.priority = 55}, AUXArguments{.deviceID = 0}, AUXArguments{.multicastIP = ""},
          AUXArguments{.zones = ""}, AUXArguments{.recovery = 2}, AUXArguments{.dryContact = 2}}) {
        EXPECT_EQ(-1, StartAUX(call));
    }
    EXPECT_EQ(2, K740_GetTaskStatus(kTask));
}

TEST_F(TaskAcceptanceTest, AUXTaskIDsAre1To50000) {
    EXPECT_EQ(0, StartAUX({.taskID = 1}));
    EXPECT_EQ(0, StartAUX({.taskID = 50000}));
    ExpectAUXRefused({{.taskID = 0}, {.taskID = 50001}}, "Task ID is error.");
}

TEST_F(TaskAcceptanceTest, AUXPrioritiesAre56To255) {
    EXPECT_EQ(0, StartAUX({.taskID = 1, .priority = 56}));
    EXPECT_EQ(0, StartAUX({.taskID = 2, .priority = 255}));
    ExpectAUXRefused({{.priority = 55}, {.priority = 256}}, "Priority is error.");
}

TEST_F(TaskAcceptanceTest, AnAUXInterfaceHasPorts0To4) {
    EXPECT_EQ(0, StartAUX({.taskID = 1, .deviceID = 7000, .auxPort = 0}));
    EXPECT_EQ(0, StartAUX({.taskID = 2, .deviceID = 7999, .auxPort = 4}));
    ExpectAUXRefused({{.deviceID = 7000, .auxPort = -1}, {.deviceID = 7999, .auxPort = 5}}, "Q-LBX AUX Port is error.");
}

TEST_F(TaskAcceptanceTest, AZoneControllerHasAUXPorts0To2) {
    EXPECT_EQ(0, StartAUX({.taskID = 1, .deviceID = 1, .auxPort = 0}));
    EXPECT_EQ(0, StartAUX({.taskID = 2, .deviceID = 999, .auxPort = 2}));
    ExpectAUXRefused({{.deviceID = 1, .auxPort = -1}, {.deviceID = 999, .auxPort = 3}}, "Q-ZCU2400 AUX Port is error.");
}

TEST_F(TaskAcceptanceTest, OtherDevicesHaveNoAUXInput) {
    ExpectAUXRefused({{.deviceID = 0},
                      {.deviceID = 1000},
                      {.deviceID = 6999},
                      {.deviceID = 8000},
                      {.deviceID = -1},
                      {.deviceID = kIntMin}},
                     "Device ID is error.");
}

TEST_F(TaskAcceptanceTest, AUXTaskNeedsAGroup) {
    ExpectAUXRefused({{.multicastIP = ""}, {.multicastIP = nullptr}}, "Multicast IP can not be null.");
}

TEST_F(TaskAcceptanceTest, AUXZonesMustNameAKnownController) {
    EXPECT_EQ(0, StartAUX({.taskID = 1, .zones = " 0021FF "}));
    ExpectAUXRefused({{.zones = ""}, {.zones = nullptr}, {.zones = "0022FF"}}, "Zones is error.");
}

TEST_F(TaskAcceptanceTest, AUXRecoveryAndDryContactOutputAre0Or1) {
    EXPECT_EQ(0, StartAUX({.taskID = 1, .recovery = 1, .dryContact = 1}));
    ExpectAUXRefused({{.recovery = -1}, {.recovery = 2}}, "Recovery is error.");
    ExpectAUXRefused({{.dryContact = -1}, {.dryContact = 2}}, "DryContactOutput is error.");
}

TEST_F(TaskAcceptanceTest, AUXChecksRunInTheirOrder) {
    AUXArguments call{0, 55, 8000, "", 9, 2, "", 2};
    ExpectAUXRefused({call}, "Task ID is error.");
    call.taskID = kTask;
    ExpectAUXRefused({call}, "Priority is error.");
    call.priority = 70;
    ExpectAUXRefused({call}, "Device ID is error.");
    call.deviceID = 7001;
    ExpectAUXRefused({call}, "Q-LBX AUX Port is error.");
    call.auxPort = 0;
    ExpectAUXRefused({call}, "Multicast IP can not be null.");
    call.multicastIP = "225.1.2.3";
    ExpectAUXRefused({call}, "Zones is error.");
    call.zones = kZones;
    ExpectAUXRefused({call}, "Recovery is error.");
    call.recovery = 0;
    ExpectAUXRefused({call}, "DryContactOutput is error.");
}

TEST_F(TaskAcceptanceTest, ARunningAUXTaskIsNotStartedAgain) {
    EXPECT_EQ(0, StartAUX());
    EXPECT_EQ(-2, StartAUX());
    EXPECT_TRUE(WaitForExactLine("*****Failed to K740_StartNetAUXTask(), task 1001 status is broadcasting(2)."));
    EXPECT_EQ(-2, Start());
}

TEST_F(TaskAcceptanceTest, SequencesAreDrawnOnAcceptanceOnly) {
    EXPECT_EQ(-1, Start({.priority = 1}));
    EXPECT_EQ(0, Start({.taskID = 1}));
    EXPECT_EQ(-2, Start({.taskID = 1}));
    EXPECT_EQ(0, StartAUX({.taskID = 2}));
    ASSERT_TRUE(Reports().WaitFor(1, 2));
    ASSERT_TRUE(Reports().WaitFor(2, 2));
    EXPECT_EQ(1, RecordOf(1).sequence);
    EXPECT_EQ(2, RecordOf(2).sequence);
}

TEST_F(TaskAcceptanceTest, The256thSequenceIsOneAgain) {
    for (int expected = 1; expected <= 255; ++expected) { EXPECT_EQ(expected, g_app->Player().GetZCUTaskSequence()); }
    EXPECT_EQ(1, g_app->Player().GetZCUTaskSequence());
    EXPECT_EQ(2, g_app->Player().GetZCUTaskSequence());
}

TEST_F(TaskAcceptanceTest, StoppingAnUnknownTaskReportsStateZeroAtOnce) {
    EXPECT_EQ(0, K740_StopTask(1));
    EXPECT_EQ(std::vector<int>{0}, Reports().Of(1));
    EXPECT_EQ(0, K740_StopTask(50000));
    EXPECT_EQ(std::vector<int>{0}, Reports().Of(50000));
    EXPECT_TRUE(WaitForExactLine("K740_StopTask(50000)"));
}

TEST_F(TaskAcceptanceTest, StoppingAnIDOutOfRangeIsRefusedWithoutATrace) {
    for (const int taskID : {0, -1, 50001, kIntMin, kIntMax}) {
        EXPECT_EQ(-1, K740_StopTask(taskID));
        EXPECT_TRUE(Reports().Of(taskID).empty());
    }
    EXPECT_EQ(0, K740_StopTask(1));
    EXPECT_TRUE(WaitForExactLine("K740_StopTask(1)"));
    EXPECT_EQ(0, CountExactLines("K740_StopTask(0)"));
    EXPECT_EQ(0, CountExactLines("K740_StopTask(50001)"));
}

TEST_F(TaskAcceptanceTest, StateQueriesTakeIDs1To50000) {
    EXPECT_EQ(0, K740_GetTaskStatus(1));
    EXPECT_EQ(0, K740_GetTaskStatus(50000));
    EXPECT_EQ(-1, K740_GetTaskStatus(0));
    EXPECT_EQ(-1, K740_GetTaskStatus(50001));
}

TEST_F(TaskAcceptanceTest, RunningTasksAreListedAndAllAreCounted) {
    Reply(sim::PlayReply::Refuse);
    ASSERT_EQ(0, Start({.taskID = 3}));
    ASSERT_TRUE(Reports().WaitFor(3, -3));
    Reply(sim::PlayReply::AcceptWithJoin);
    StartAndBroadcast({.taskID = 2});
    StartAndBroadcast({.taskID = 1});
    std::array<int, 5> ids{-7, -7, -7, -7, -7};
    EXPECT_EQ(3, K740_GetRunningTasks(ids.data(), 5));
    EXPECT_EQ((std::array<int, 5>{2, 1, -7, -7, -7}), ids);
    EXPECT_EQ(-3, K740_GetTaskStatus(3));
    EXPECT_EQ(2, K740_GetTaskStatus(1));
}

TEST_F(TaskAcceptanceTest, RunningTasksNeedAPlaceForThem) {
    std::array<int, 1> ids{-7};
    EXPECT_EQ(-1, K740_GetRunningTasks(nullptr, 1));
    EXPECT_EQ(-1, K740_GetRunningTasks(ids.data(), 0));
    EXPECT_EQ(-1, K740_GetRunningTasks(ids.data(), -1));
    EXPECT_EQ(0, K740_GetRunningTasks(ids.data(), 1));
    EXPECT_EQ(-7, ids[0]);
}

} // namespace
} // namespace k740::test
