#include "app/application.h"
#include "player/zone_triggers.h"
#include "tests/support/wait_until.h"
#include "zcu/trigger_job.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

std::mutex g_lock;
std::vector<tagZCU_PARAM> g_given; // what the threads were given, guarded by g_lock

/// A trigger thread whose end is in the mask of its item: after so many times 10 ms, and with bit 7 it fails.
void* ScriptedTrigger(void* param) {
    const std::unique_ptr<TriggerJob> job(static_cast<TriggerJob*>(param));
    usleep((job->param.zoneMask & 0x7F) * 10'000);
    return job->param.zoneMask > 0x7F ? kTriggerThreadFailed : kTriggerThreadSucceeded;
}

/// A trigger thread that succeeds at once.
void* NotingTrigger(void* param) {
    const std::unique_ptr<TriggerJob> job(static_cast<TriggerJob*>(param));
    const std::lock_guard lock(g_lock);
    g_given.push_back(job->param);
    return kTriggerThreadSucceeded;
}

std::atomic<int> g_released{0}; // threads that have seen themselves released

/// A trigger thread that ends when nobody can join it any more; the one with mask 1 succeeds at once.
void* LingeringTrigger(void* param) {
    const std::unique_ptr<TriggerJob> job(static_cast<TriggerJob*>(param));
    if (job->param.zoneMask == 1) { return kTriggerThreadSucceeded; }
    const bool released = WaitUntil([] {
        pthread_attr_t attributes;
        pthread_getattr_np(pthread_self(), &attributes);
        int state = PTHREAD_CREATE_JOINABLE;
        pthread_attr_getdetachstate(&attributes, &state);
        pthread_attr_destroy(&attributes);
        return state == PTHREAD_CREATE_DETACHED;
    });
    g_released += released ? 1 : 0;
    return kTriggerThreadFailed;
}

std::atomic<bool> g_askedInTime{false};
std::atomic<bool> g_askedTooLate{false};

/// A trigger thread that would have asked its controller to play as long as the task was not over.
void* LateTrigger(void* param) {
    const std::unique_ptr<TriggerJob> job(static_cast<TriggerJob*>(param));
    g_askedInTime = !job->isOver();
    g_askedTooLate = !WaitUntil([&] { return job->isOver(); });
    return kTriggerThreadFailed;
}

void* FailingTrigger(void* param) {
    delete static_cast<TriggerJob*>(param);
    return kTriggerThreadFailed;
}

class ZoneTriggersTest : public ::testing::Test {
protected:
    ZoneTriggersTest() {
        m_app.Configuration().SetDefaults();
        m_app.Lifetime().Begin();
    }
    void Start(const std::string& zones, void* (*thread)(void*)) {
        m_start = std::chrono::steady_clock::now();
        m_triggers.Start(zones, thread);
    }
    int Wait() {
        const auto start = std::chrono::steady_clock::now();
        const int result = m_triggers.WaitForTriggerZCU([] { return false; });
        m_took = std::chrono::steady_clock::now() - start;
        m_tookWithStart = std::chrono::steady_clock::now() - m_start;
        return result;
    }
    /// What the noting threads were given.
    std::vector<tagZCU_PARAM> Given() {
        const std::lock_guard lock(g_lock);
        return g_given;
    }

    CK740ControlApp m_app;
    CZoneTriggers m_triggers{m_app, tagTASK_STATUS{}};
    std::chrono::steady_clock::time_point m_start{};
    std::chrono::steady_clock::duration m_took{};
    std::chrono::steady_clock::duration m_tookWithStart{}; // the first thread works while the others are started
};

TEST_F(ZoneTriggersTest, WithoutThreadsTheWaitIsMinusThree) {
    EXPECT_EQ(-3, Wait());
    m_triggers.Start("", ScriptedTrigger);
    EXPECT_EQ(-3, Wait());
}

TEST_F(ZoneTriggersTest, TheFirstSuccessEndsTheWait) {
    Start("000102;00027F;00030A", ScriptedTrigger); // 20 ms, 1270 ms, 100 ms
    EXPECT_EQ(0, Wait());
    EXPECT_GE(m_tookWithStart, 20ms);
    EXPECT_LT(m_took, 90ms);
}

TEST_F(ZoneTriggersTest, AfterTheWaitTheOtherThreadsAreReleased) {
    m_triggers.Start("000102;000201;000302", LingeringTrigger);
    EXPECT_EQ(0, Wait());
    EXPECT_TRUE(WaitUntil([] { return g_released == 2; }));
}

TEST_F(ZoneTriggersTest, EarlierFailuresDoNotEndTheWait) {
    Start("000180;00020A;000381", ScriptedTrigger); // fails at once, 100 ms, fails after 10 ms
    EXPECT_EQ(0, Wait());
    EXPECT_GE(m_tookWithStart, 100ms);
}

TEST_F(ZoneTriggersTest, TheWaitEndsWithMinusTwoOnceAllHaveFailedWhenever) {
    Start("000180;00028F;00039E", ScriptedTrigger); // at once, after 150 ms, after 300 ms
    EXPECT_EQ(-2, Wait());
    EXPECT_GE(m_tookWithStart, 300ms);
    EXPECT_LT(m_took, 1500ms);
}

TEST_F(ZoneTriggersTest, ManyThatFailAtOnceEndTheWait) {
    std::string zones;
    for (int i = 0; i < 100; ++i) { zones += "0021FF;"; }
    m_triggers.Start(zones, FailingTrigger);
    EXPECT_EQ(-2, Wait());
    EXPECT_LT(m_took, 2s);
}

TEST_F(ZoneTriggersTest, ThreadsThatDoNotEndAreGivenUpAfterFourSeconds) {
    void* (*endless)(void*) = [](void* param) -> void* {
        delete static_cast<TriggerJob*>(param);
        sleep(60);
        return nullptr;
    };
    m_triggers.Start("0021FF", endless);
    EXPECT_EQ(-1, Wait());
    EXPECT_GE(m_took, 3990ms);
    EXPECT_LT(m_took, 5s);
}

TEST_F(ZoneTriggersTest, GivingUpEndsTheWaitAsASuccess) {
    m_triggers.Start("00017F", ScriptedTrigger);
    EXPECT_EQ(0, m_triggers.WaitForTriggerZCU([] { return true; }));
}

TEST_F(ZoneTriggersTest, AThreadThatComesAfterTheCloseRequestsDoesNotAsk) {
    tagTASK_STATUS task;
    task.taskID = 7;
    m_app.Player().Status().Accept(task.taskID, std::nullopt, task.instance);
    CZoneTriggers triggers(m_app, task);
    triggers.Start("000101", LateTrigger);
    ASSERT_TRUE(WaitUntil([] { return g_askedInTime.load(); }));
    triggers.CloseAudio();
    EXPECT_EQ(-2, triggers.WaitForTriggerZCU([] { return false; }));
    EXPECT_FALSE(g_askedTooLate);
}

TEST_F(ZoneTriggersTest, ItemsAreReadAsHexadecimalIDAndMask) {
    m_triggers.Start("002102;03E781", ScriptedTrigger);
    EXPECT_EQ(0, Wait());
    EXPECT_EQ((std::vector<int>{33, 999}), m_triggers.ControllerIDs());
}

TEST_F(ZoneTriggersTest, RepeatedItemsAreRepeated) {
    m_triggers.Start("002100;002101;002100;", ScriptedTrigger);
    EXPECT_EQ(0, Wait());
    EXPECT_EQ((std::vector<int>{33, 33, 33}), m_triggers.ControllerIDs());
}

TEST_F(ZoneTriggersTest, TheMaskIsCappedAt255) {
    m_triggers.Start("0021-1", NotingTrigger); // read as 0xFFFFFFFF
    EXPECT_EQ(0, Wait());
    ASSERT_EQ(1U, Given().size());
    EXPECT_EQ(255U, uint32_t{Given()[0].zoneMask});
}

TEST_F(ZoneTriggersTest, TheRecordCarriesTheTaskAndTheSettings) {
    tagTASK_STATUS task;
    task.taskID = 1001;
    task.multicastIP = "225.0.0.1";
    task.priority = 70;
    task.dryContactOutput = 1;
    task.sequence = 200;
    task.recovery = 1;
    task.deviceID = 7001;
    task.auxPort = 4;
    CZoneTriggers triggers(m_app, task);
    triggers.Start("002101", NotingTrigger);
    EXPECT_EQ(0, triggers.WaitForTriggerZCU([] { return false; }));
    ASSERT_EQ(1U, Given().size());
    const tagZCU_PARAM given = Given()[0];
    EXPECT_EQ(1001U, uint32_t{given.taskID});
    EXPECT_EQ(200, uint16_t{given.sequence});
    EXPECT_EQ(33, int32_t{given.zcuID});
    EXPECT_EQ(1001U, uint32_t{given.taskIDAgain});
    EXPECT_EQ(70, uint16_t{given.priority});
    EXPECT_EQ(1, uint16_t{given.recovery});
    EXPECT_EQ(1U, uint32_t{given.zoneMask});
    EXPECT_EQ(0xE1000001U, uint32_t{given.multicastIP});
    EXPECT_EQ(28100, uint16_t{given.multicastPort});
    EXPECT_EQ(1, uint16_t{given.dryContactOutput});
    EXPECT_EQ(0U, uint32_t{given.reserved});
    EXPECT_EQ(7001U, uint32_t{given.auxDeviceID});
    EXPECT_EQ(4, int16_t{given.auxPort});
    EXPECT_EQ(9500U, uint32_t{given.sourceNodeID});
}

} // namespace
} // namespace k740::test
