// Very many threads, and a machine that gives no more of them. Not built with sanitizers, which have limits of their
// own.
#include "tests/player/broadcast_fixture.h"

#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace k740::test {
namespace {

/// Lets the process grow by no more than a little, far less than the stack of a thread, while it lives.
class NoMoreMemory {
public:
    NoMoreMemory() {
        getrlimit(RLIMIT_AS, &m_before);
        rlim_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        const rlimit limit{pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + 1024 * 1024, m_before.rlim_max};
        setrlimit(RLIMIT_AS, &limit);
    }
    ~NoMoreMemory() { setrlimit(RLIMIT_AS, &m_before); }
    NoMoreMemory(const NoMoreMemory&) = delete;
    NoMoreMemory& operator=(const NoMoreMemory&) = delete;

private:
    rlimit m_before{};
};

/// @return the threads of this process, those on their way out too
std::ptrdiff_t CountThreads() {
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return std::distance(begin(threads), end(threads));
}

using ThreadLimitsTest = BroadcastTest;

TEST_F(ThreadLimitsTest, ATaskWhoseThreadCannotBeMadeFailsAndMayBeStartedAgain) {
    {
        const NoMoreMemory limit;
        EXPECT_EQ(0, Start());
    }
    EXPECT_EQ((std::vector<int>{1, -1}), Reports().Of(kTask));
    EXPECT_EQ(-1, K740_GetTaskStatus(kTask));
    StartAndBroadcast();
    StopAndWait();
}

TEST_F(ThreadLimitsTest, AnAUXTaskWhoseThreadCannotBeMadeFails) {
    const NoMoreMemory limit;
    EXPECT_EQ(0, StartAUX());
    EXPECT_EQ((std::vector<int>{1, -1}), Reports().Of(kTask));
}

TEST_F(ThreadLimitsTest, ATaskWithoutMemoryForItsAudioFailsAndAsksNobodyToPlay) {
    const auto before = CountThreads();
    StartAndBroadcast();
    StopAndWait();
    ASSERT_TRUE(WaitUntil([&] { return CountThreads() == before; })); // its stack is kept for the next thread
    {
        const NoMoreMemory limit;
        EXPECT_EQ(0, Start());
        EXPECT_TRUE(Reports().WaitFor(kTask, -3));
    }
    EXPECT_EQ((std::vector<int>{1, 2, 0, 1, -3}), Reports().Of(kTask));
    EXPECT_TRUE(WaitForExactLine("*****Failed to play, task ID 1001"));
    EXPECT_EQ(1U, ReceivedBy(kController, sim::command::kPlay).size());
    StartAndBroadcast();
}

TEST_F(ThreadLimitsTest, TheLongestZoneStringIsBroadcast) {
    std::string zones = kZones;
    while (zones.size() + 7 <= 102'400) { zones += ";0099FF"; } // a controller that nobody knows
    StartAndBroadcast({.recovery = 1, .zones = zones.c_str()});
    EXPECT_EQ(0, K740_StopTask(kTask));
    WaitForPacket(kController, sim::command::kCloseAudio);
}

} // namespace
} // namespace k740::test
