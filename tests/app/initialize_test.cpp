#include "app/application.h"
#include "app/k740.h"
#include "common/thread.h"
#include "tests/app/exported_calls.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/process_state.h"
#include "tests/support/sdk_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

constexpr const char* kInitializeLine = "-------K740_Initialize()";
constexpr rlim_t kOpenFiles = 50000;

rlimit OpenFileLimit() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    return limit;
}

bool IgnoresBrokenPipes() {
    struct sigaction action {};
    sigaction(SIGPIPE, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

/// Position of the line, or the number of lines when there is none.
std::ptrdiff_t PositionOf(const std::vector<std::string>& texts, const std::string& text) {
    return std::distance(texts.begin(), std::find(texts.begin(), texts.end(), text));
}

/// Runs the work on several threads that begin together. @return how often the work returned the result
int CountResults(int threads, int result, int (*work)(int thread)) {
    std::atomic<int> ready{0};
    std::atomic<int> count{0};
    std::vector<std::thread> hosts;
    for (int i = 0; i < threads; ++i) {
        hosts.emplace_back([&, i] {
            ++ready;
            while (ready < threads) {} // a thread that slept until now would be late
            count += work(i) == result ? 1 : 0;
        });
    }
    std::for_each(hosts.begin(), hosts.end(), [](std::thread& host) { host.join(); });
    return count;
}

class InitializeTest : public OnPrivateNetwork {};

TEST_F(InitializeTest, ReturnsZeroOnceAndThenMinusOne) {
    EXPECT_EQ(0, K740_Initialize());
    EXPECT_EQ(-1, K740_Initialize());
}

TEST_F(InitializeTest, AfterDeinitializeReturnsMinusOne) {
    EXPECT_EQ(0, K740_Initialize());
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_EQ(-1, K740_Initialize());
}

TEST_F(InitializeTest, LogBeginsWithAStampAndTwoBlankLines) {
    K740_Initialize();
    ASSERT_TRUE(WaitForLogLine(kInitializeLine));
    EXPECT_THAT(ReadLog(), ::testing::ContainsRegex("^[0-9]{2}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3}"
                                                    "\t\n\n\n[0-9]{2}-"));
}

TEST_F(InitializeTest, LogsBothPortsTheVersionAndThenItself) {
    K740_Initialize();
    ASSERT_TRUE(WaitForLogLine(kInitializeLine));
    const auto texts = LogTexts();
    const std::vector<std::string> before(texts.begin(), texts.begin() + PositionOf(texts, "SDK version 1.0.4"));
    EXPECT_THAT(before, ::testing::Contains(::testing::MatchesRegex("Bind socket:[0-9]+, port:28001")));
    EXPECT_THAT(before, ::testing::Contains(::testing::MatchesRegex("Bind socket:[0-9]+, port:29001")));
    EXPECT_LT(PositionOf(texts, "SDK version 1.0.4"), PositionOf(texts, kInitializeLine));
    EXPECT_LT(PositionOf(texts, kInitializeLine), std::ssize(texts));
}

TEST_F(InitializeTest, HoldsBothPortsWhenItReturns) {
    K740_Initialize();
    EXPECT_FALSE(IsPortFree(28001));
    EXPECT_FALSE(IsPortFree(29001));
}

TEST_F(InitializeTest, CreatesTheLogDirectory) {
    K740_Initialize();
    EXPECT_TRUE(std::filesystem::is_directory("k740log"));
}

TEST_F(InitializeTest, AcceptsAnExistingLogDirectoryAndAppendsToItsLog) {
    std::filesystem::create_directory("k740log");
    std::ofstream(LogPath()) << "from an earlier run\n";
    EXPECT_EQ(0, K740_Initialize());
    ASSERT_TRUE(WaitForLogLine(kInitializeLine));
    EXPECT_EQ("from an earlier run", LogLines().front());
}

TEST_F(InitializeTest, SucceedsWhereTheLogDirectoryCannotBeMade) {
    std::ofstream("k740log") << "a file that is in the way";
    EXPECT_EQ(0, K740_Initialize());
    EXPECT_EQ(0, K740_SetNodeID(9600));
    EXPECT_EQ(0, K740_Deinitialize());
}

TEST_F(InitializeTest, KeepsItsLogWhereItWasWhenTheHostChangesItsDirectory) {
    const std::filesystem::path before = std::filesystem::current_path();
    K740_Initialize();
    std::filesystem::current_path("/");
    K740_SetNodeID(9777);
    const std::string path = (before / LogPath()).string();
    EXPECT_TRUE(WaitUntil([&] { return ReadTextFile(path).find("K740_SetNodeID(9777)") != std::string::npos; }));
    EXPECT_FALSE(std::filesystem::exists("/k740log"));
}

TEST_F(InitializeTest, IgnoresBrokenPipesAlsoWhenItIsRefused) {
    K740_Initialize();
    EXPECT_TRUE(IgnoresBrokenPipes());
    std::signal(SIGPIPE, SIG_DFL);
    EXPECT_EQ(-1, K740_Initialize());
    EXPECT_TRUE(IgnoresBrokenPipes());
}

TEST_F(InitializeTest, SetsTheLimitOfOpenFilesWhereThatIsAllowed) {
    const rlimit before = OpenFileLimit();
    K740_Initialize();
    const rlimit after = OpenFileLimit();
    const rlimit wanted{kOpenFiles, kOpenFiles};
    const bool allowed = setrlimit(RLIMIT_NOFILE, &wanted) == 0;
    EXPECT_EQ(allowed ? kOpenFiles : before.rlim_cur, after.rlim_cur);
    EXPECT_EQ(allowed ? kOpenFiles : before.rlim_max, after.rlim_max);
}

TEST_F(InitializeTest, SetsTheDefaults) {
    K740_Initialize();
    const CConfiguration& configuration = g_app->Configuration();
    EXPECT_EQ(9500U, configuration.NodeID());
    EXPECT_EQ(0, configuration.StreamParameter());
    EXPECT_EQ(0, configuration.AudioStreamFormat());
    EXPECT_EQ(200, configuration.MaxRunningTasks());
    EXPECT_EQ("225.0.0.1", configuration.FirstMulticastIP());
    EXPECT_EQ(28100, configuration.MulticastPort());
    EXPECT_EQ("", configuration.NIC());
    EXPECT_FALSE(g_app->Callbacks().IsLogEnabled());
    EXPECT_EQ(0, g_app->ActiveThreads());
}

TEST_F(InitializeTest, SucceedsWhenAPortIsTakenAndLogsTheFailure) {
    const auto taken = sim::UdpSocket::BoundTo({"0.0.0.0", 29001});
    EXPECT_EQ(0, K740_Initialize());
    EXPECT_TRUE(WaitForLogLine("\t*****Failed to bind udp port 29001"));
    EXPECT_FALSE(IsPortFree(28001));
}

/// A process initialises once, so each try to make threads meet is a process of its own.
class InitializeAtOnceTest : public OnPrivateNetwork, public ::testing::WithParamInterface<int> {};

TEST_P(InitializeAtOnceTest, OneOfSeveralThreadsSucceeds) {
    EXPECT_EQ(1, CountResults(8, 0, [](int) { return K740_Initialize(); }));
}

TEST_P(InitializeAtOnceTest, FirstCallsOfSeveralThreadsAllSucceedAndInitialiseOnce) {
    EXPECT_EQ(8, CountResults(8, 0, [](int thread) { return K740_SetNodeID(9500 + thread); }));
    ASSERT_TRUE(WaitForLogLine("K740_SetNodeID(", 8));
    EXPECT_EQ(1, CountLogLines(kInitializeLine));
    EXPECT_EQ(1, CountLogLines("port:28001"));
}

INSTANTIATE_TEST_SUITE_P(Try, InitializeAtOnceTest, ::testing::Range(1, 9));

class AutoInitialiseTest : public OnPrivateNetwork, public ::testing::WithParamInterface<ExportedCall> {};

TEST_P(AutoInitialiseTest, FirstCallInitialisesTheLibraryEvenWhenItIsRefused) {
    GetParam().call();
    EXPECT_EQ(-1, K740_Initialize());
    EXPECT_TRUE(WaitForLogLine(kInitializeLine));
}

INSTANTIATE_TEST_SUITE_P(EveryFunction, AutoInitialiseTest, ::testing::ValuesIn(ExportedCalls()),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(InitializeTest, PacingDoesNotInitialise) {
    K740_PACING pacing{};
    K740_SleepStart(&pacing);
    K740_SleepEnd(1, &pacing);
    EXPECT_EQ(0, RunningThreads());
    EXPECT_EQ(0, K740_Initialize());
}

} // namespace
} // namespace k740::test
