// How monitoring ends, and what is left then.
#include "tests/monitor/zone_monitor_fixture.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

class ZoneMonitorLifeTest : public ZoneMonitorTest {
protected:
    /// Streams to a zone without end.
    sim::AudioSource& StreamOn(int zone) {
        sim::AudioStream stream;
        stream.pcm = Noise(4096);
        stream.period = 10ms;
        return m_controller.StreamZone(zone, stream);
    }
    static void ExpectNothingLeft(const Leftovers& before) {
        EXPECT_TRUE(WaitUntil([&] { return Leftovers() == before; })) << before << "\n" << Leftovers();
    }
};

TEST_F(ZoneMonitorLifeTest, AMonitoredZoneHasTwoThreadsAndOneMembership) {
    const Leftovers before;
    Monitor(1);
    EXPECT_EQ(before.threads + 2, CountThreads());
    Monitor(2);
    EXPECT_EQ(before.threads + 4, CountThreads());
    EXPECT_EQ(before.members.size() + 2, GroupMembers().size());
    Stop(1);
    Stop(2);
    ExpectNothingLeft(before);
}

TEST_F(ZoneMonitorLifeTest, AStopEndsCallbacksAndThreadsWithinAQuarterOfASecond) {
    const Leftovers before;
    const sim::AudioSource& source = StreamOn(1);
    std::vector<HeardAudio::Clock::duration> delays;
    for (int round = 0; round < 9; ++round) {
        Monitor(1);
        ASSERT_TRUE(ZoneAudio().WaitFor(kController, 1, ZoneAudio().CountAll() + 5));
        Stop(1);
        const auto stopped = HeardAudio::Clock::now();
        ExpectNothingLeft(before); // the socket of the group included, so that nothing can come any more
        delays.push_back(HeardAudio::Clock::now() - stopped);
    }
    EXPECT_TRUE(source.IsStreaming());
    std::sort(delays.begin(), delays.end());
    EXPECT_LT(delays[4], 150ms) << "the median; a busy machine may delay one or the other";
}

TEST_F(ZoneMonitorLifeTest, AZoneThatWasStoppedIsHeardAgainAfterAStart) {
    Monitor(1);
    StreamAndHear(1, NoiseStream(2, 341, 1));
    Stop(1);
    ASSERT_TRUE(WaitUntil([] { return MembersOf(GroupOfZone(1)) == 0; }));
    Monitor(1);
    const sim::AudioStream stream = NoiseStream(2, 341, 2);
    StreamAndHear(1, stream);
    const auto heard = ZoneAudio().Samples(kController, 1);
    EXPECT_EQ(DecodedAudio(stream), std::vector(heard.end() - 4096, heard.end())) << "with a new decoder";
}

TEST_F(ZoneMonitorLifeTest, QuickStopsAndStartsLeaveNothingBehindAndNobodyTwice) {
    const Leftovers before;
    StreamOn(1);
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(0, K740_MonitorZone(kController, 1, 1));
        if (i % 10 == 0) {
            ASSERT_TRUE(WaitUntil([] { return MembersOf(GroupOfZone(1)) > 0; }));
        }
        Stop(1);
    }
    EXPECT_EQ(0, K740_MonitorZone(kController, 1, 1));
    EXPECT_TRUE(WaitUntil([&] { return CountThreads() == before.threads + 2; })) << Leftovers();
    ASSERT_TRUE(WaitUntil([] { return MembersOf(GroupOfZone(1)) == 1; }));
    // Whatever the threads of former starts asked for has been asked by now.
    const std::size_t known = CountQueries();
    EXPECT_GE(WaitForQuery(known + 1) - WaitForQuery(known), 3000ms) << "one query in 3 s";
    Stop(1);
    ExpectNothingLeft(before);
}

TEST_F(ZoneMonitorLifeTest, EachZoneIsAskedForOnceInThreeSeconds) {
    for (int zone = 1; zone <= 5; ++zone) { Monitor(zone); }
    EXPECT_EQ(5U, CountQueries());
    EXPECT_GE(WaitForQuery(6) - WaitForQuery(1), 3000ms);
    const auto tenth = WaitForQuery(10);
    EXPECT_GE(WaitForQuery(11) - WaitForQuery(6), 3000ms);
    EXPECT_GE(tenth - WaitForQuery(5), 3000ms);
}

TEST_F(ZoneMonitorLifeTest, StartsAndStopsFromManyThreadsLeaveNothingBehind) {
    const Leftovers before;
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) {
        hosts.emplace_back([host] {
            for (int i = 0; i < 50; ++i) {
                const int zone = 1 + (host + i) % 8;
                const int result = K740_MonitorZone(kController, zone, 1);
                EXPECT_TRUE(result == 0 || result == 1 || result == -2) << result;
                EXPECT_EQ(0, K740_MonitorZone(kController, zone, 0));
            }
        });
    }
    for (std::thread& host : hosts) { host.join(); }
    for (int zone = 1; zone <= 8; ++zone) { Stop(zone); }
    ExpectNothingLeft(before);
}

TEST_F(ZoneMonitorLifeTest, AStopWhileTheControllerIsSilentIsOverWhenItsQueryIs) {
    const Leftovers before;
    Silence();
    EXPECT_EQ(0, K740_MonitorZone(kController, 1, 1));
    WaitForQuery(1);
    Stop(1);
    ExpectNothingLeft(before);
}

TEST_F(ZoneMonitorLifeTest, DeinitializeEndsTheMonitoring) {
    for (int zone = 1; zone <= 5; ++zone) { Monitor(zone); }
    StreamOn(1);
    ASSERT_TRUE(ZoneAudio().WaitFor(kController, 1, 5));
    const auto isOurs = [](const auto& membership) { return membership.first.starts_with("225."); };
    EXPECT_EQ(0, K740_Deinitialize());
    EXPECT_TRUE(WaitUntil([&] {
        const auto members = GroupMembers();
        return std::none_of(members.begin(), members.end(), isOurs);
    }));
}

} // namespace
} // namespace k740::test
