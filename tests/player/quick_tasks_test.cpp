// Many tasks that are started and stopped at once leave nothing behind.
#include "tests/player/broadcast_fixture.h"
#include "tests/support/leftovers.h"

namespace k740::test {
namespace {

constexpr int kRounds = 200;
constexpr std::chrono::seconds kAllEnded{30};

class QuickTasksTest : public BroadcastTest {
protected:
    /// One task has come and gone, so that what is made once and kept is there.
    QuickTasksTest() {
        StartAndBroadcast();
        StopAndWait();
        EXPECT_TRUE(WaitUntil([] { return !g_app->Player().Status().HasThreads(); }));
    }
    const Leftovers m_before;
};

TEST_F(QuickTasksTest, StoppedBeforeTheyAreTriggeredTheyLeaveNothing) {
    Reply(sim::PlayReply::Refuse); // one that joined would keep its own descriptors here
    for (int task = 1; task <= kRounds; ++task) {
        ASSERT_EQ(0, Start({.taskID = task}));
        ASSERT_EQ(0, K740_StopTask(task));
    }
    EXPECT_TRUE(WaitUntil([this] { return Leftovers() == m_before; }, kAllEnded)) << Leftovers() << "; " << m_before;
    for (int task = 1; task <= kRounds; ++task) {
        EXPECT_EQ(1, Reports().Count(task, 0) + Reports().Count(task, -3)) << task; // stopped, or refused before that
    }
}

TEST_F(QuickTasksTest, StoppedWhileTheyBroadcastTheyLeaveNothing) {
    for (int task = 1; task <= kRounds; ++task) { ASSERT_EQ(0, Start({.taskID = task})); }
    for (int task = 1; task <= kRounds; ++task) { ASSERT_TRUE(Reports().WaitFor(task, 2, 1, kAllEnded)) << task; }
    for (int task = 1; task <= kRounds; ++task) { ASSERT_EQ(0, K740_StopTask(task)); }
    EXPECT_TRUE(WaitUntil([this] { return Leftovers() == m_before; }, kAllEnded)) << Leftovers() << "; " << m_before;
    for (int task = 1; task <= kRounds; ++task) { EXPECT_EQ(1, Reports().Count(task, 0)) << task; }
}

} // namespace
} // namespace k740::test
