// Very many threads, and a machine that gives no more of them. Not built with sanitizers, which have limits of their
// own.
#include "tests/player/broadcast_fixture.h"

#include <sys/resource.h>
#include <unistd.h>

#include <fstream>

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

TEST_F(ThreadLimitsTest, TheLongestZoneStringIsBroadcast) {
    std::string zones = kZones;
    while (zones.size() + 7 <= 102'400) { zones += ";0099FF"; } // a controller that nobody knows
    StartAndBroadcast({.recovery = 1, .zones = zones.c_str()});
    EXPECT_EQ(0, K740_StopTask(kTask));
    WaitForPacket(kController, sim::command::kCloseAudio);
}

} // namespace
} // namespace k740::test
