#include "app/application.h"
#include "app/k740.h"
#include "common/stopwatch.h"
#include "common/thread.h"
#include "sim/raw_sender.h"
#include "tests/app/exported_calls.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/process_state.h"
#include "tests/support/sdk_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace k740::test {
namespace {

constexpr const char* kDeinitializeLine = "-------K740_Deinitialize()";
constexpr std::chrono::milliseconds kLongestPause{2000}; // of any thread without a task; 500 ms and some leeway

bool AllThreadsEnd() {
    return WaitUntil([] { return RunningThreads() == 0; }, kLongestPause);
}

unsigned MillisecondsOfDeinitialize() {
    CQBTime watch;
    watch.TimeStart();
    EXPECT_EQ(0, K740_Deinitialize());
    return watch.TimeEnd();
}

class DeinitializeTest : public OnPrivateNetwork {};

TEST_F(DeinitializeTest, ReturnsZeroEveryTime) {
    K740_Initialize();
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_EQ(0, K740_Deinitialize());
}

TEST_F(DeinitializeTest, InitialisesFirstWhenNobodyHas) {
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_TRUE(WaitForLogLine("-------K740_Initialize()"));
    EXPECT_EQ(-1, K740_Initialize());
}

TEST_F(DeinitializeTest, ItsLineIsTheLastOfTheLog) {
    K740_Initialize();
    K740_SetNodeID(9501);
    K740_Deinitialize();
    ASSERT_TRUE(AllThreadsEnd());
    EXPECT_EQ(kDeinitializeLine, LogTexts().back());
    EXPECT_EQ(1, CountLogLines("K740_SetNodeID(9501)"));
}

TEST_F(DeinitializeTest, PortsAreFreeWhenItReturns) {
    K740_Initialize();
    K740_Deinitialize();
    EXPECT_TRUE(IsPortFree(28001));
    EXPECT_TRUE(IsPortFree(29001));
}

TEST_F(DeinitializeTest, PortsAreFreeWhenItReturnsAmidTraffic) {
    Network().AddFieldAddresses({"192.168.1.20"});
    const sim::RawSender sender(Network(), "192.168.1.20");
    const sim::Bytes report = sim::Pack(sim::MakePacket(1, 9500, 0x8126, sim::Bytes(85, 1)));
    K740_Initialize();
    std::atomic<bool> stop{false};
    std::atomic<int> sent{0};
    std::thread flood([&] {
        for (; !stop; ++sent) { sender.Send(report, sent % 2 == 0 ? 28001 : 29001); }
    });
    EXPECT_TRUE(WaitUntil([&] { return sent > 1000; }));
    K740_Deinitialize();
    EXPECT_TRUE(IsPortFree(28001));
    EXPECT_TRUE(IsPortFree(29001));
    stop = true;
    flood.join();
}

TEST_F(DeinitializeTest, AllThreadsEndWithinTheirPauses) {
    K740_Initialize();
    EXPECT_GT(RunningThreads(), 0);
    K740_Deinitialize();
    EXPECT_TRUE(AllThreadsEnd());
}

TEST_F(DeinitializeTest, ReturnsSoonWhenNobodyIsCountedActive) {
    K740_Initialize();
    EXPECT_LT(MillisecondsOfDeinitialize(), 1000U);
}

TEST_F(DeinitializeTest, WaitsFiveSecondsAtMostForActiveThreadsAndForgetsThem) {
    K740_Initialize();
    g_app->ActiveThreads() = 1;
    const unsigned waited = MillisecondsOfDeinitialize();
    EXPECT_GE(waited, 5000U);
    EXPECT_LT(waited, 6000U);
    EXPECT_EQ(0, g_app->ActiveThreads());
}

TEST_F(DeinitializeTest, WaitsNoLongerThanActiveThreadsLast) {
    K740_Initialize();
    g_app->ActiveThreads() = 1;
    std::thread active([] {
        WaitUntil([] { return g_app->Lifetime().IsExiting(); });
        g_app->ActiveThreads() = 0;
    });
    EXPECT_LT(MillisecondsOfDeinitialize(), 2000U);
    active.join();
}

TEST_F(DeinitializeTest, LeavesNoDescriptorBehind) {
    const auto before = CountDescriptors();
    K740_Initialize();
    for (int id = 1; id <= 20; ++id) { K740_AddDevice(id, 1, ("192.168.2." + std::to_string(id)).c_str()); }
    EXPECT_GE(CountDescriptors(), before + 22);
    for (int id = 1; id <= 20; ++id) { K740_RemoveDevice(id); }
    K740_Deinitialize();
    ASSERT_TRUE(AllThreadsEnd());
    EXPECT_EQ(before, CountDescriptors());
}

TEST_F(DeinitializeTest, KeepsDevicesAndSettings) {
    K740_AddDevice(1, 1, "192.168.1.20");
    K740_SetNodeID(9700);
    K740_Deinitialize();
    EXPECT_EQ(19, K740_GetDeviceList(nullptr, 0)); // "1   1 192.168.1.20;"
    EXPECT_EQ(9700U, g_app->Configuration().NodeID());
}

TEST_F(DeinitializeTest, SettersAndRegistryStillWorkAfterIt) {
    K740_Deinitialize();
    EXPECT_EQ(0, K740_SetNodeID(9999));
    EXPECT_EQ(0, K740_AddDevice(1, 1, "192.168.1.20"));
    EXPECT_EQ(0, K740_RemoveDevice(1));
}

TEST_F(DeinitializeTest, EveryFunctionMayBeCalledAfterIt) {
    K740_Deinitialize();
    for (const ExportedCall& function : ExportedCalls()) { EXPECT_LE(function.call(), 0) << function.name; }
    ASSERT_TRUE(AllThreadsEnd());
}

std::atomic<int> g_resultInCallback{1};

int DeinitializeInCallback(int, int, int, int*, int, int) {
    g_resultInCallback = K740_Deinitialize();
    return 0;
}

TEST_F(DeinitializeTest, MayBeCalledInACallback) {
    K740_SetDeviceCallback(DeinitializeInCallback, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    K740_AddDevice(1, 1, "192.168.1.20"); // whose first status is posted
    ASSERT_TRUE(WaitUntil([] { return g_resultInCallback != 1; }));
    EXPECT_EQ(0, g_resultInCallback);
    EXPECT_TRUE(IsPortFree(28001));
    EXPECT_TRUE(IsPortFree(29001));
    EXPECT_TRUE(AllThreadsEnd());
}

TEST_F(DeinitializeTest, MayBeCalledByTwoThreadsAtOnce) {
    K740_Initialize();
    int other = 1;
    std::thread second([&] { other = K740_Deinitialize(); });
    EXPECT_EQ(0, K740_Deinitialize());
    second.join();
    EXPECT_EQ(0, other);
    EXPECT_TRUE(AllThreadsEnd());
}

} // namespace
} // namespace k740::test
