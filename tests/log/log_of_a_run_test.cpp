#include "app/application.h"
#include "common/thread.h"
#include "tests/log/log_fixture.h"
#include "tests/support/private_network_fixture.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace k740::test {
namespace {

constexpr const char* kVersionLine = "SDK version 1.0.4";
constexpr const char* kInitializeLine = "-------K740_Initialize()";
constexpr const char* kDeinitializeLine = "-------K740_Deinitialize()";

/// Starts a process that initialises and deinitialises the library in a directory. @return its ID
pid_t StartRun(const std::string& directory) {
    std::string path = directory;
    std::string program = K740_ONE_RUN;
    std::array<char*, 3> arguments{program.data(), path.data(), nullptr};
    pid_t process = -1;
    EXPECT_EQ(0, posix_spawn(&process, program.c_str(), nullptr, nullptr, arguments.data(), environ));
    return process;
}

void ExpectSuccess(pid_t process) {
    int status = -1;
    EXPECT_EQ(process, waitpid(process, &status, 0));
    EXPECT_EQ(0, status);
}

/// Every exported call that needs no device answers as it always does.
void ExpectWorkingInterface() {
    EXPECT_EQ(0, K740_SetNodeID(9600));
    EXPECT_EQ(-1, K740_SetNodeID(1));
    EXPECT_EQ(0, K740_AddDevice(33, 1, "192.168.1.33"));
    EXPECT_EQ(20, K740_GetDeviceList(nullptr, 0)); // "33   1 192.168.1.33;"
    EXPECT_EQ(0, K740_EnableCallbackLog(1));
    EXPECT_EQ(0, K740_RemoveDevice(33));
}

class LogOfARunTest : public OnPrivateNetwork {};

TEST_F(LogOfARunTest, BeginsWithTwoBlankLines) {
    ASSERT_EQ(0, K740_Initialize());
    ASSERT_TRUE(WaitForLogLine(kInitializeLine));
    const std::string text = ReadLog();
    EXPECT_TRUE(IsTimeStamp(TimeStampOf(text))) << text;
    EXPECT_EQ("\t\n\n\n", text.substr(text.find('\t'), 4));
    EXPECT_NE('\n', text[text.find('\t') + 4]);
}

TEST_F(LogOfARunTest, VersionAndThenTheCallEndTheInitialisation) {
    ASSERT_EQ(0, K740_Initialize());
    ASSERT_TRUE(WaitForLogLine(kInitializeLine));
    const auto texts = LogTexts();
    ASSERT_GE(texts.size(), 2U);
    EXPECT_EQ(kVersionLine, texts[texts.size() - 2]);
    EXPECT_EQ(kInitializeLine, texts.back());
    for (const char* port : {"port:28001", "port:29001"}) {
        EXPECT_EQ(1, CountLogLines(port)) << port; // the threads that bind them have 50 ms
    }
}

TEST_F(LogOfARunTest, FirstCallThatInitialisesIsLoggedBehindIt) {
    ASSERT_EQ(0, K740_SetNodeID(9501));
    ASSERT_TRUE(WaitForLogLine("K740_SetNodeID(9501)"));
    const auto texts = LogTexts();
    const auto initialised = std::find(texts.begin(), texts.end(), kInitializeLine);
    EXPECT_LT(initialised, std::find(texts.begin(), texts.end(), "K740_SetNodeID(9501)"));
}

TEST_F(LogOfARunTest, StaysInTheDirectoryOfTheInitialisation) {
    ASSERT_EQ(0, K740_Initialize());
    const std::string path = std::filesystem::absolute(LogPath()).string();
    std::filesystem::create_directory("elsewhere");
    std::filesystem::current_path("elsewhere");
    K740_SetNodeID(9502);
    EXPECT_TRUE(WaitUntil([&] { return ReadTextFile(path).find("K740_SetNodeID(9502)") != std::string::npos; }));
    EXPECT_FALSE(std::filesystem::exists("k740log"));
    std::filesystem::current_path("..");
}

TEST_F(LogOfARunTest, SecondRunIsAppendedBehindTwoBlankLines) {
    const std::string directory = std::filesystem::current_path().string();
    ExpectSuccess(StartRun(directory));
    const std::string first = ReadLog();
    ExpectSuccess(StartRun(directory));
    const std::string both = ReadLog();
    ASSERT_EQ(first, both.substr(0, first.size()));
    const std::string second = both.substr(first.size());
    EXPECT_TRUE(IsTimeStamp(TimeStampOf(second))) << second;
    EXPECT_EQ("\t\n\n\n", second.substr(second.find('\t'), 4));
}

TEST_F(LogOfARunTest, EndsWithTheShutdownIn50RunsOf50) {
    constexpr int kRuns = 50;
    constexpr int kAtOnce = 5;
    for (int run = 0; run < kRuns; run += kAtOnce) {
        std::array<pid_t, kAtOnce> processes{};
        for (int i = 0; i < kAtOnce; ++i) {
            const std::string directory = "run" + std::to_string(run + i);
            std::filesystem::create_directory(directory);
            processes[static_cast<std::size_t>(i)] = StartRun(directory);
        }
        std::for_each(processes.begin(), processes.end(), ExpectSuccess);
    }
    for (int run = 0; run < kRuns; ++run) {
        const std::string text = ReadTextFile("run" + std::to_string(run) + "/" + LogPath());
        const std::string ending = std::string("\t") + kDeinitializeLine + "\n";
        EXPECT_TRUE(text.ends_with(ending)) << "run " << run << ":\n" << text;
    }
}

TEST_F(LogOfARunTest, DirectoryThatCannotBeMadeDoesNotAffectTheInterface) {
    std::ofstream("k740log") << "a file is in the way";
    ASSERT_EQ(0, K740_Initialize());
    ExpectWorkingInterface();
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_TRUE(WaitUntil([] { return RunningThreads() == 0; }));
    EXPECT_EQ("a file is in the way", ReadTextFile("k740log"));
}

TEST_F(LogOfARunTest, FullDiskDoesNotAffectTheInterface) {
    std::filesystem::create_directory("k740log");
    std::filesystem::create_symlink("/dev/full", LogPath());
    ASSERT_EQ(0, K740_Initialize());
    ExpectWorkingInterface();
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_TRUE(WaitUntil([] { return RunningThreads() == 0; }));
}

TEST_F(LogOfARunTest, DirectoryThatVanishesDoesNotAffectTheInterface) {
    ASSERT_EQ(0, K740_Initialize());
    ASSERT_TRUE(WaitForLogLine(kInitializeLine));
    std::filesystem::remove_all("k740log");
    ExpectWorkingInterface();
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_TRUE(WaitUntil([] { return RunningThreads() == 0; }));
    EXPECT_FALSE(std::filesystem::exists("k740log"));
}

TEST_F(LogOfARunTest, CallbackLogSwitchTakes0And1AndLogsItself) {
    EXPECT_EQ(0, K740_EnableCallbackLog(1));
    EXPECT_TRUE(g_app->Callbacks().IsLogEnabled());
    EXPECT_TRUE(WaitForLogLine("\tK740_EnableCallbackLog(1)"));
    EXPECT_EQ(0, K740_EnableCallbackLog(0));
    EXPECT_FALSE(g_app->Callbacks().IsLogEnabled());
    EXPECT_TRUE(WaitForLogLine("\tK740_EnableCallbackLog(0)"));
}

TEST_F(LogOfARunTest, OtherValuesOfTheSwitchAreRefusedAndChangeNothing) {
    for (const int state : {0, 1}) {
        ASSERT_EQ(0, K740_EnableCallbackLog(state));
        for (const int value : {-1, 2, 256, 257}) { EXPECT_EQ(-1, K740_EnableCallbackLog(value)); }
        EXPECT_EQ(state == 1, g_app->Callbacks().IsLogEnabled());
    }
    K740_SetNodeID(9503);
    ASSERT_TRUE(WaitForLogLine("K740_SetNodeID(9503)"));
    EXPECT_EQ(2, CountLogLines("K740_EnableCallbackLog"));
}

TEST_F(LogOfARunTest, SwitchIsOffAtFirstAndAlsoInitialises) {
    EXPECT_EQ(-1, K740_EnableCallbackLog(2));
    EXPECT_FALSE(g_app->Callbacks().IsLogEnabled());
    EXPECT_EQ(-1, K740_Initialize()); // done already
}

int IgnoreTask(int /*taskID*/, int /*status*/) {
    return 0;
}

TEST_F(LogOfARunTest, CallbacksAreLoggedWhileTheSwitchIsOn) {
    K740_SetDeviceCallback(nullptr, nullptr, nullptr, IgnoreTask, nullptr, nullptr, nullptr);
    EXPECT_EQ(0, K740_StopTask(7)); // calls back with state 0
    ASSERT_EQ(0, K740_EnableCallbackLog(1));
    EXPECT_EQ(0, K740_StopTask(8));
    ASSERT_EQ(0, K740_EnableCallbackLog(0));
    EXPECT_EQ(0, K740_StopTask(9));
    ASSERT_TRUE(WaitForCallbackLogLine("PTASKSTATUS", "PTASKSTATUS(8, 0)")); // queued before it was switched off
    K740_Deinitialize();
    ASSERT_TRUE(WaitUntil([] { return RunningThreads() == 0; }));
    EXPECT_EQ(std::vector<std::string>{"PTASKSTATUS(8, 0)"}, LogTexts("PTASKSTATUS"));
}

TEST_F(LogOfARunTest, CallbackThatIsNotSetIsNotLogged) {
    ASSERT_EQ(0, K740_EnableCallbackLog(1));
    EXPECT_EQ(0, K740_StopTask(8));
    K740_Deinitialize();
    ASSERT_TRUE(WaitUntil([] { return RunningThreads() == 0; }));
    EXPECT_FALSE(std::filesystem::exists(LogPath("PTASKSTATUS")));
}

} // namespace
} // namespace k740::test
