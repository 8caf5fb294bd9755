// Zone controllers that join a task which broadcasts already.
#include "tests/player/broadcast_fixture.h"
#include "tests/support/noise.h"

#include <atomic>

namespace k740::test {
namespace {

using sim::Bytes;
using sim::PlayReply;
using sim::command::kCloseAudio;
using sim::command::kPlay;

using AddZonesTest = BroadcastTest;

TEST_F(AddZonesTest, InvalidZonesAreMinus1BeforeTheTaskIsLookedAt) {
    for (const char* zones : {"", "0022FF", "002100", "zz"}) { EXPECT_EQ(-1, K740_AddZones(kTask, zones)) << zones; }
    EXPECT_EQ(-1, K740_AddZones(kTask, nullptr));
    EXPECT_TRUE(WaitForExactLine("K740_AddZones(1001, 'zz')"));
    EXPECT_TRUE(WaitForExactLine("K740_AddZones(1001, '')", 2));
    EXPECT_EQ(0, CountLogLines("Faile to add zones"));
}

TEST_F(AddZonesTest, ATaskThatIsNotBroadcastingIsMinus2) {
    Reply(PlayReply::Silent);
    EXPECT_EQ(-2, K740_AddZones(kTask, kZones));
    ASSERT_EQ(0, Start());
    EXPECT_EQ(-2, K740_AddZones(kTask, kZones));
    EXPECT_TRUE(WaitForExactLine("*****Faile to add zones, task 1001 status is not broadcasting(2).", 2));
    EXPECT_EQ(-2, K740_AddZones(-1, kZones));
    EXPECT_TRUE(WaitForExactLine("*****Faile to add zones, task -1 status is not broadcasting(2)."));
}

TEST_F(AddZonesTest, ATaskOfAnotherSourceIsMinus2) {
    CTaskStatusTable& table = g_app->Player().Status();
    for (const int source : {0, 3}) {
        tagTASK_STATUS record;
        record.taskID = kTask;
        record.status = 2;
        record.audioSource = static_cast<short>(source);
        ASSERT_EQ(CTaskStatusTable::Acceptance::Accepted, table.Accept(kTask, std::nullopt, record.instance));
        ASSERT_TRUE(table.BeginBroadcast(record));
        EXPECT_EQ(-2, K740_AddZones(kTask, kZones));
        table.Conclude(kTask, record.instance, 0);
        table.Forget(kTask, record.instance);
    }
    EXPECT_TRUE(WaitForExactLine("*****Faile to add zones, task 1001 audiosource is error.", 2));
}

TEST_F(AddZonesTest, AnAddedControllerIsAskedLikeTheFirstAndHearsTheStream) {
    sim::ZoneController& added = AddRegistered(34);
    StartAndBroadcast({.priority = 200, .recovery = 1, .dryContact = 1});
    EXPECT_EQ(0, K740_AddZones(kTask, " 0022FF "));
    sim::Packet first = WaitForPacket(kController, kPlay);
    const sim::Packet second = WaitForPacket(34, kPlay);
    first.destination = 34;
    EXPECT_EQ(first, second);
    EXPECT_TRUE(WaitForExactLine("K740_AddZones(1001, ' 0022FF ')"));

    ASSERT_TRUE(WaitUntil([&] { return added.IsListening(kTask); }));
    EXPECT_TRUE(PushAudio(kTask, Noise(2048), 4096));
    EXPECT_TRUE(m_controller.WaitForDatagrams(1, kSoon));
    EXPECT_TRUE(added.WaitForDatagrams(1, kSoon));
    EXPECT_EQ(m_controller.HeardIn(1), added.HeardIn(8));
}

TEST_F(AddZonesTest, MoreZonesOfAControllerJoinToo) {
    StartAndBroadcast({.zones = "002101"});
    EXPECT_EQ(0, K740_AddZones(kTask, "002106"));
    EXPECT_EQ(6U, sim::ReadPlayRequest(WaitForPacket(kController, kPlay, 2)).zoneMask);
}

TEST_F(AddZonesTest, EveryItemIsAsked) {
    AddRegistered(34);
    AddRegistered(35);
    StartAndBroadcast();
    EXPECT_EQ(0, K740_AddZones(kTask, "0022FF;0023FF"));
    WaitForPacket(34, kPlay);
    WaitForPacket(35, kPlay);
}

TEST_F(AddZonesTest, ZonesMayBeAddedWithinTheReportOfState2) {
    AddRegistered(34);
    std::atomic<int> result{-9};
    Reports().OnNext(kTask, 2, [&] { result = K740_AddZones(kTask, "0022FF"); });
    ASSERT_EQ(0, Start());
    WaitForPacket(34, kPlay);
    EXPECT_TRUE(WaitUntil([&] { return result == 0; }));
}

TEST_F(AddZonesTest, AControllerThatRefusesLeavesTheTaskAsItIs) {
    Reply(AddRegistered(34), PlayReply::Refuse);
    StartAndBroadcast();
    EXPECT_EQ(0, K740_AddZones(kTask, "0022FF"));
    EXPECT_TRUE(WaitForExactLine("*****Failed to trigger ZCU 34, task ID 1001"));
    EXPECT_EQ(2, K740_GetTaskStatus(kTask));
}

TEST_F(AddZonesTest, TheEndOfTheTaskIsToldOnlyToItsFirstControllers) {
    sim::ZoneController& added = AddRegistered(34);
    StartAndBroadcast();
    EXPECT_EQ(0, K740_AddZones(kTask, "0022FF"));
    ASSERT_TRUE(WaitUntil([&] { return added.IsListening(kTask); }));
    StopAndWait();
    WaitForPacket(kController, kCloseAudio);
    ASSERT_EQ(0, Start({.taskID = 2002, .zones = "0022FF"}));
    WaitForPacket(34, kPlay, 2);
    EXPECT_TRUE(ReceivedBy(34, kCloseAudio).empty());
    EXPECT_TRUE(added.Recordings().at(0).endsOfStream.empty());
    EXPECT_EQ(2U, added.Recordings().at(0).endsOfOthers);
}

TEST_F(AddZonesTest, AnAUXTaskAsksWithItsDeviceAndPort) {
    AddRegistered(34);
    ASSERT_EQ(0, StartAUX());
    ASSERT_TRUE(Reports().WaitFor(kTask, 2));
    EXPECT_EQ(0, K740_AddZones(kTask, "0022FF"));
    sim::Packet first = WaitForPacket(kController, kPlay);
    const sim::Packet second = WaitForPacket(34, kPlay);
    first.destination = 34;
    EXPECT_EQ(first, second);
    EXPECT_EQ(4U, sim::ReadPlayRequest(second).auxPort);
    EXPECT_EQ(7001U, sim::ReadPlayRequest(second).origin);
}

} // namespace
} // namespace k740::test
