// Tasks for which the memory runs out: whatever fails is reported, and nothing stays behind.
#include "player/zone_triggers.h"
#include "tests/player/broadcast_fixture.h"
#include "tests/player/failing_memory.h"
#include "zcu/trigger_job.h"

#include <pthread.h>

#include <atomic>
#include <memory>
#include <optional>

namespace k740::test {
namespace {

using sim::command::kCloseAudio;

constexpr int kMoreThanEnough = 100; // allocations
const std::string kLongZones = "0021FF;0021FF;0021FF;0021FF";

std::atomic<int> g_granted{kMoreThanEnough};
std::atomic<int> g_lastState{0};

/// A callback after whose report of g_lastState the calling thread has no more than g_granted allocations, until the
/// next report.
int NoteAndRunOutOfMemory(int taskID, int status) {
    GrantAllocations(-1);
    NoteTaskReport(taskID, status);
    if (status == g_lastState) { GrantAllocations(g_granted); }
    return 0;
}

class OutOfMemoryTest : public BroadcastTest {
protected:
    OutOfMemoryTest() {
        K740_SetDeviceCallback(nullptr, nullptr, nullptr, NoteAndRunOutOfMemory, nullptr, nullptr, nullptr);
    }
    ~OutOfMemoryTest() override { GrantAllocations(-1); }

    static void RunOutOfMemoryAfter(int state, int granted) {
        g_granted = granted;
        g_lastState = state;
    }
    static bool NothingRuns() {
        return WaitUntil([] { return !g_app->Player().Status().HasThreads(); }, kSoon);
    }
};

TEST_F(OutOfMemoryTest, AnAcceptedTaskIsStartedOrReportedAsFailed) {
    for (int granted = 0; Reports().Count(kTask, 2) == 0; ++granted) {
        ASSERT_LT(granted, kMoreThanEnough);
        const std::ptrdiff_t failures = Reports().Count(kTask, -1);
        RunOutOfMemoryAfter(1, granted);
        Start({.zones = kLongZones.c_str()});
        GrantAllocations(-1);
        ASSERT_TRUE(WaitUntil([&] { return Reports().Count(kTask, 2) + Reports().Count(kTask, -1) > failures; }));
    }
    EXPECT_GT(Reports().Count(kTask, -1), 0);
    StopAndWait();
    EXPECT_TRUE(NothingRuns());
}

TEST_F(OutOfMemoryTest, AStoppedTaskWhoseFailureCannotBeNotedHasEnded) {
    Reports().OnNext(kTask, 1, [] { K740_StopTask(kTask); });
    RunOutOfMemoryAfter(1, 0);
    Start();
    GrantAllocations(-1);
    EXPECT_TRUE(NothingRuns());
    EXPECT_EQ((std::vector<int>{1, 0}), Reports().Of(kTask));
    EXPECT_EQ(0, K740_GetTaskStatus(kTask));
}

TEST_F(OutOfMemoryTest, ATaskThatFailsWhileItBroadcastsIsClosed) {
    RunOutOfMemoryAfter(2, 0);
    ASSERT_EQ(0, StartAUX());
    WaitForPacket(kController, kCloseAudio);
    EXPECT_TRUE(Reports().WaitFor(kTask, -3));
    EXPECT_TRUE(NothingRuns());
}

class StatusOutOfMemoryTest : public ::testing::Test {
protected:
    CTaskStatusTable m_table;
    TaskInstance m_instance = 0;
};

TEST_F(StatusOutOfMemoryTest, ATaskIsAcceptedWhollyOrNotAtAll) {
    const auto accept = [this] { m_table.Accept(kTask, std::nullopt, m_instance); };
    int granted = 0;
    while (!SucceedsWith(granted, accept)) {
        ASSERT_LT(++granted, kMoreThanEnough);
        int id = 0;
        EXPECT_EQ(0, m_table.ListRunning(&id, 1));
        EXPECT_FALSE(m_table.HasThreads());
    }
    EXPECT_GT(granted, 1);
    EXPECT_TRUE(m_table.HasThreads());
}

std::atomic<int> g_given{0};    // jobs that trigger threads have got
std::atomic<int> g_detached{0}; // of them, those whose threads were let go

/// A trigger thread that lasts until nobody can join it any more.
void* LingeringTrigger(void* param) {
    const std::unique_ptr<TriggerJob> job(static_cast<TriggerJob*>(param));
    ++g_given;
    const bool detached = WaitUntil([] {
        pthread_attr_t attributes;
        pthread_getattr_np(pthread_self(), &attributes);
        int state = PTHREAD_CREATE_JOINABLE;
        pthread_attr_getdetachstate(&attributes, &state);
        pthread_attr_destroy(&attributes);
        return state == PTHREAD_CREATE_DETACHED;
    });
    g_detached += detached ? 1 : 0;
    return kTriggerThreadFailed;
}

TEST(ZoneTriggersOutOfMemoryTest, NoThreadIsLeftThatNobodyReleases) {
    CK740ControlApp app;
    app.Configuration().SetDefaults();
    app.Lifetime().Begin();
    bool started = false;
    for (int granted = 0; !started; ++granted) {
        ASSERT_LT(granted, kMoreThanEnough);
        CZoneTriggers triggers(app, tagTASK_STATUS{});
        started = SucceedsWith(granted, [&] { triggers.Start("000101;000201;000301", LingeringTrigger); });
    }
    EXPECT_TRUE(WaitUntil([] { return g_given > 3 && g_detached == g_given; }));
}

} // namespace
} // namespace k740::test
