// Two hundred tasks at once, and what the next one meets.
#include "tests/player/broadcast_fixture.h"

namespace k740::test {
namespace {

using sim::PlayReply;

constexpr int kLimit = 200;
constexpr int kWaiting = 200; // the task that waits for a silent controller, for 4 s, and holds its channel meanwhile

/// Tasks 1 to 199 broadcast, and one more waits.
class TaskLimitTest : public BroadcastTest {
protected:
    TaskLimitTest() {
        Reply(PlayReply::AcceptWithoutJoin);
        Reply(AddRegistered(34), PlayReply::Silent);
        for (int taskID = 1; taskID < kLimit; ++taskID) { EXPECT_EQ(0, Start({.taskID = taskID})); }
        for (int taskID = 1; taskID < kLimit; ++taskID) { EXPECT_TRUE(Reports().WaitFor(taskID, 2)) << taskID; }
        EXPECT_EQ(0, Start({.taskID = kWaiting, .zones = "0022FF"}));
    }
    static void WaitForLastChannel() {
        ASSERT_TRUE(WaitUntil([] { return g_app->Player().Channels().GetChannelID(kWaiting) >= 0; }));
    }
};

TEST_F(TaskLimitTest, TheNextTaskIsRefusedAndReported) {
    EXPECT_EQ(-3, Start({.taskID = 201}));
    EXPECT_EQ(-1, K740_GetTaskStatus(201));
    EXPECT_EQ(std::vector<int>{-1}, Reports().Of(201));
    EXPECT_TRUE(WaitForExactLine("*****No free channel."));
}

TEST_F(TaskLimitTest, ARunningTaskIsStillReportedAsRunning) {
    EXPECT_EQ(-2, Start({.taskID = kWaiting}));
}

TEST_F(TaskLimitTest, AStopMakesRoomForATask) {
    EXPECT_EQ(-3, Start({.taskID = 201}));
    EXPECT_EQ(0, K740_StopTask(7));
    EXPECT_EQ(0, Start({.taskID = 201}));
    ASSERT_TRUE(Reports().WaitFor(201, 1));
    EXPECT_EQ(-1, Reports().Of(201).at(0));
    EXPECT_EQ(1, Reports().Of(201).at(1));
}

TEST_F(TaskLimitTest, AUXTasksAreCountedButNotLimited) {
    EXPECT_EQ(0, K740_StopTask(7));
    EXPECT_EQ(0, StartAUX({.taskID = 301}));
    EXPECT_EQ(0, StartAUX({.taskID = 302}));
    EXPECT_EQ(-3, Start({.taskID = 201}));
}

TEST_F(TaskLimitTest, AllAreListed) {
    std::vector<int> ids(300, -7);
    EXPECT_EQ(-3, Start({.taskID = 201}));
    EXPECT_EQ(kLimit + 1, K740_GetRunningTasks(ids.data(), 300));
    EXPECT_EQ(1, ids[0]);
    EXPECT_EQ(kLimit, ids[kLimit - 1]);
    EXPECT_EQ(-7, ids[kLimit]);
}

TEST_F(TaskLimitTest, ATaskThatStartsBeforeAnEndingOneReleasesItsChannelFails) {
    WaitForLastChannel();
    EXPECT_EQ(0, K740_StopTask(kWaiting));
    EXPECT_EQ(0, Start({.taskID = 201}));
    ASSERT_TRUE(Reports().WaitFor(201, -1));
    EXPECT_EQ(-1, K740_GetTaskStatus(201));
    EXPECT_TRUE(WaitForExactLine("*****Failed to allocate a channel, task ID 201"));
    EXPECT_EQ((std::vector<int>{1, -1}), Reports().Of(201));
}

TEST_F(TaskLimitTest, ATaskThatIsStartedAgainWaitsForItsOwnChannel) {
    WaitForLastChannel();
    EXPECT_EQ(0, K740_StopTask(kWaiting));
    StartAndBroadcast({.taskID = kWaiting});
    EXPECT_EQ((std::vector<int>{1, 1, 0, 2}), Reports().Of(kWaiting)); // the former one gave up
}

} // namespace
} // namespace k740::test
