#include "player/task_status.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

using Acceptance = CTaskStatusTable::Acceptance;
using Predecessor = CTaskStatusTable::Predecessor;

class TaskStatusTest : public ::testing::Test {
protected:
    TaskInstance Accept(int taskID) {
        TaskInstance instance = 0;
        EXPECT_EQ(Acceptance::Accepted, m_table.Accept(taskID, std::nullopt, instance));
        return instance;
    }
    bool Broadcast(int taskID, TaskInstance instance) {
        tagTASK_STATUS record;
        record.taskID = taskID;
        record.status = kTaskBroadcasting;
        record.priority = 70;
        record.instance = instance;
        return m_table.BeginBroadcast(record);
    }
    /// Leaves a task that has failed.
    void Fail(int taskID, short status) {
        const TaskInstance instance = Accept(taskID);
        EXPECT_EQ(status, m_table.Conclude(taskID, instance, status));
        m_table.Forget(taskID, instance);
    }
    /// @return how many tasks have a state of 1 or 2
    int Running() {
        std::vector<int> ids(1000, -7);
        m_table.ListRunning(ids.data(), 1000);
        return static_cast<int>(std::count_if(ids.begin(), ids.end(), [](int id) { return id > 0; }));
    }

    CTaskStatusTable m_table;
};

TEST_F(TaskStatusTest, AnUnknownTaskHasStateZero) {
    EXPECT_EQ(0, m_table.GetTaskStatus(1));
    tagTASK_STATUS record;
    record.priority = 70;
    EXPECT_EQ(-1, m_table.GetTaskStatus(1, record));
    EXPECT_EQ(0, record.priority);
}

TEST_F(TaskStatusTest, AnAcceptedTaskHasStateOneAndNothingElse) {
    const TaskInstance instance = Accept(1);
    tagTASK_STATUS record;
    EXPECT_EQ(0, m_table.GetTaskStatus(1, record));
    EXPECT_EQ(1, record.taskID);
    EXPECT_EQ(1, record.status);
    EXPECT_EQ(0, record.priority);
    EXPECT_EQ(0, record.audioSource);
    EXPECT_EQ("", record.multicastIP);
    EXPECT_EQ(instance, record.instance);
}

TEST_F(TaskStatusTest, ARunningTaskIsNotAcceptedAgain) {
    TaskInstance instance = Accept(1);
    EXPECT_EQ(Acceptance::AlreadyRunning, m_table.Accept(1, std::nullopt, instance));
    EXPECT_TRUE(Broadcast(1, instance));
    EXPECT_EQ(Acceptance::AlreadyRunning, m_table.Accept(1, std::nullopt, instance));
}

TEST_F(TaskStatusTest, AFailedTaskIsAcceptedAgain) {
    for (const int failure : {-1, -2, -3}) {
        Fail(1, static_cast<short>(failure));
        Accept(1);
        EXPECT_EQ(1, m_table.GetTaskStatus(1));
        m_table.Remove(1);
    }
}

TEST_F(TaskStatusTest, TheLimitCountsAcceptedAndBroadcastingTasks) {
    TaskInstance instance = Accept(1);
    EXPECT_TRUE(Broadcast(1, instance));
    Accept(2);
    Fail(3, -3);
    EXPECT_EQ(2, Running());
    EXPECT_EQ(Acceptance::Accepted, m_table.Accept(4, 3, instance));
    EXPECT_EQ(Acceptance::LimitReached, m_table.Accept(5, 3, instance));
    EXPECT_EQ(-1, m_table.GetTaskStatus(5));
    EXPECT_EQ(Acceptance::LimitReached, m_table.Accept(3, 3, instance));
    EXPECT_EQ(-1, m_table.GetTaskStatus(3));
}

TEST_F(TaskStatusTest, ARunningTaskIsReportedAsRunningEvenAtTheLimit) {
    TaskInstance instance = Accept(1);
    EXPECT_EQ(Acceptance::AlreadyRunning, m_table.Accept(1, 1, instance));
}

TEST_F(TaskStatusTest, RunningTasksAreListedInOrderAndAllEntriesAreCounted) {
    Accept(30);
    Fail(20, -3);
    Accept(10);
    std::array<int, 4> ids{-7, -7, -7, -7};
    EXPECT_EQ(3, m_table.ListRunning(ids.data(), 4));
    EXPECT_EQ((std::array<int, 4>{30, 10, -7, -7}), ids);
}

TEST_F(TaskStatusTest, NoMoreAreListedThanThereIsRoomFor) {
    Accept(30);
    Accept(10);
    std::array<int, 2> ids{-7, -7};
    EXPECT_EQ(2, m_table.ListRunning(ids.data(), 1));
    EXPECT_EQ((std::array<int, 2>{30, -7}), ids);
}

TEST_F(TaskStatusTest, RemoveTellsTheStateThatWas) {
    EXPECT_EQ(0, m_table.Remove(1));
    Accept(1);
    EXPECT_EQ(1, m_table.Remove(1));
    Fail(1, -2);
    EXPECT_EQ(-2, m_table.Remove(1));
    EXPECT_EQ(0, m_table.GetTaskStatus(1));
}

TEST_F(TaskStatusTest, AStoppedTaskIsNotBroughtBackByItsThread) {
    const TaskInstance instance = Accept(1);
    m_table.Remove(1);
    EXPECT_TRUE(m_table.IsTaskStoped(1, instance));
    EXPECT_FALSE(Broadcast(1, instance));
    EXPECT_EQ(0, m_table.GetTaskStatus(1));
}

TEST_F(TaskStatusTest, ALaterAcceptanceStopsTheEarlierThread) {
    const TaskInstance first = Accept(1);
    EXPECT_TRUE(Broadcast(1, first));
    m_table.Remove(1);
    const TaskInstance second = Accept(1);
    EXPECT_TRUE(m_table.IsTaskStoped(1, first));
    EXPECT_TRUE(m_table.IsSuperseded(1, first));
    EXPECT_FALSE(m_table.IsSuperseded(1, second));
    EXPECT_FALSE(m_table.IsTaskStoped(1, second));
    EXPECT_FALSE(Broadcast(1, first));
    EXPECT_EQ(1, m_table.GetTaskStatus(1));
}

TEST_F(TaskStatusTest, TheEarlierThreadsEndLeavesTheLaterTaskAlone) {
    const TaskInstance first = Accept(1);
    m_table.Remove(1);
    const TaskInstance second = Accept(1);
    EXPECT_EQ(Predecessor::Working, m_table.FindPredecessor(1, second));
    EXPECT_EQ(0, m_table.Conclude(1, first, 0));
    EXPECT_EQ(Predecessor::TellingTheHost, m_table.FindPredecessor(1, second));
    m_table.Forget(1, first);
    EXPECT_EQ(Predecessor::None, m_table.FindPredecessor(1, second));
    EXPECT_EQ(1, m_table.GetTaskStatus(1));
}

TEST_F(TaskStatusTest, AFailureOfTheEarlierThreadIsReportedAsStopped) {
    const TaskInstance first = Accept(1);
    m_table.Remove(1);
    Accept(1);
    EXPECT_EQ(0, m_table.Conclude(1, first, -3));
    EXPECT_EQ(1, m_table.GetTaskStatus(1));
}

TEST_F(TaskStatusTest, AFailureStaysToBeSeenAlsoWhenTheTaskWasStopped) {
    const TaskInstance instance = Accept(1);
    m_table.Remove(1);
    EXPECT_EQ(-3, m_table.Conclude(1, instance, -3));
    EXPECT_EQ(-3, m_table.GetTaskStatus(1));
}

TEST_F(TaskStatusTest, TheFirstThreadHasNoPredecessor) {
    const TaskInstance first = Accept(1);
    EXPECT_EQ(Predecessor::None, m_table.FindPredecessor(1, first));
    m_table.Remove(1);
    const TaskInstance second = Accept(1);
    m_table.Remove(1);
    const TaskInstance third = Accept(1);
    m_table.Conclude(1, first, 0);
    m_table.Forget(1, first);
    EXPECT_EQ(Predecessor::Working, m_table.FindPredecessor(1, third)); // the second
    EXPECT_EQ(Predecessor::None, m_table.FindPredecessor(1, second));
}

TEST_F(TaskStatusTest, AnEarlierThreadsFailureIsNotSeenWhenTheLaterTaskWasStoppedToo) {
    const TaskInstance first = Accept(1);
    m_table.Remove(1);
    const TaskInstance second = Accept(1);
    m_table.Remove(1);
    EXPECT_TRUE(m_table.IsSuperseded(1, first));
    EXPECT_FALSE(m_table.IsSuperseded(1, second));
    EXPECT_EQ(0, m_table.Conclude(1, first, -3));
    EXPECT_EQ(0, m_table.GetTaskStatus(1));
    EXPECT_EQ(0, m_table.Conclude(1, second, 0));
    EXPECT_EQ(0, m_table.GetTaskStatus(1));
}

TEST_F(TaskStatusTest, ARefusalForWantOfChannelsOutlivesTheEarlierThread) {
    const TaskInstance first = Accept(1);
    m_table.Remove(1);
    TaskInstance refused = 0;
    EXPECT_EQ(CTaskStatusTable::Acceptance::LimitReached, m_table.Accept(1, 0, refused));
    EXPECT_EQ(0, m_table.Conclude(1, first, 0));
    EXPECT_EQ(-1, m_table.GetTaskStatus(1));
}

TEST_F(TaskStatusTest, AnAcceptanceIsOverOnceItClosesItsAudio) {
    const TaskInstance first = Accept(1);
    EXPECT_FALSE(m_table.IsOver(1, first));
    m_table.Remove(1);
    EXPECT_FALSE(m_table.IsOver(1, first)); // it still has to close what plays
    const TaskInstance second = Accept(1);
    m_table.BeginClosing(1, first);
    EXPECT_TRUE(m_table.IsOver(1, first));
    EXPECT_FALSE(m_table.IsOver(1, second));
    EXPECT_EQ(Predecessor::Working, m_table.FindPredecessor(1, second)); // its requests may not have been sent yet
}

TEST_F(TaskStatusTest, AnAcceptanceIsOverOnceItIsConcluded) {
    const TaskInstance first = Accept(1);
    m_table.Conclude(1, first, 0);
    EXPECT_TRUE(m_table.IsOver(1, first));
    EXPECT_TRUE(m_table.HasThreads());
    m_table.Forget(1, first);
    EXPECT_FALSE(m_table.HasThreads());
}

TEST_F(TaskStatusTest, OneOfManyConcurrentStartsOfAnIDIsAccepted) {
    for (int taskID = 1; taskID <= 50; ++taskID) {
        std::atomic<int> accepted{0};
        std::vector<std::thread> hosts;
        for (int i = 0; i < 4; ++i) {
            hosts.emplace_back([&] {
                TaskInstance instance = 0;
                if (m_table.Accept(taskID, 200, instance) == Acceptance::Accepted) { ++accepted; }
            });
        }
        for (std::thread& host : hosts) { host.join(); }
        EXPECT_EQ(1, accepted);
    }
}

TEST_F(TaskStatusTest, ConcurrentStartsDoNotPassTheLimit) {
    std::atomic<int> accepted{0};
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) {
        hosts.emplace_back([&, host] {
            for (int i = 0; i < 100; ++i) {
                TaskInstance instance = 0;
                if (m_table.Accept(1 + host * 100 + i, 200, instance) == Acceptance::Accepted) { ++accepted; }
            }
        });
    }
    for (std::thread& host : hosts) { host.join(); }
    EXPECT_EQ(200, accepted);
    EXPECT_EQ(200, Running());
}

} // namespace
} // namespace k740::test
