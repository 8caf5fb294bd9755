// What must not end or spoil the reception of push-to-talk audio: want of memory, a change of the system time.
#include "tests/rpk/ptt_fixture.h"
#include "tests/support/allocation_failure.h"

#include <pthread.h>
#include <sys/time.h>
#include <time.h>

#include <atomic>
#include <string_view>
#include <vector>

namespace {

std::atomic<time_t> g_clockAheadSeconds{0};
std::atomic<int> g_looks{0}; // of the receiving thread at the clock

bool IsReceiver() {
    char name[16]{};
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return std::string_view(name) == "k740-ptt";
}

} // namespace

// Stands before the C library's function of this name in this executable.
extern "C" int gettimeofday(timeval* now, void* /*zone*/) noexcept {
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    *now = {time.tv_sec + g_clockAheadSeconds, time.tv_nsec / 1000};
    if (IsReceiver()) { ++g_looks; }
    return 0;
}

namespace k740::test {
namespace {

class PTTDisturbanceTest : public PTTTest {
protected:
    void Send(const sim::Bytes& datagram) { m_station.SendRaw(datagram, {kGroup, sim::kAudioPort}); }
};

TEST_F(PTTDisturbanceTest, WantOfMemoryDoesNotEndTheReception) {
    static std::atomic<int> failures{0};
    EXPECT_EQ(0, K740_SetNIC("192.168.77.77")); // no interface of this machine, which is to be logged
    {
        const AllocationFailure failure([] { return IsReceiver() && ++failures > 0; });
        EXPECT_EQ(0, K740_SetRPKPTTMulticastIP(kStation, kGroup));
        EXPECT_TRUE(WaitUntil([] { return failures >= 2; }));
    }
    EXPECT_EQ(0, K740_SetNIC(sim::kStationAddress));
    ASSERT_TRUE(WaitUntil([] { return MembersOf(kGroup) == 1; }));
    TalkAndHear(kGroup, NoiseTalk(2));
}

TEST_F(PTTDisturbanceTest, AChangeOfTheSystemTimeIsNoSilence) {
    constexpr int kLooksInTwoPasses = 8; // with what follows from them, at most
    const sim::AudioStream talk = NoiseTalk(2);
    const std::vector<sim::Bytes> datagrams = Datagrams(talk);
    EXPECT_TRUE(HoldsOnce([&] { // on a busy machine there may be silence as well
        Listen(kGroup);
        const std::size_t before = Heard().size();
        Send(datagrams[0]);
        EXPECT_TRUE(WaitUntil([&] { return Heard().size() == before + 2048; }));
        ++g_clockAheadSeconds;
        EXPECT_TRUE(WaitUntil([looks = g_looks.load()] { return g_looks >= looks + kLooksInTwoPasses; }));
        Send(datagrams[1]);
        EXPECT_TRUE(WaitUntil([&] { return Heard().size() == before + 4096; }));
        --g_clockAheadSeconds;
        return HeardFrom(before) == DecodedAudio(talk);
    }));
}

} // namespace
} // namespace k740::test
