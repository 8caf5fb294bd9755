// How listening to push-to-talk audio begins, changes and ends.
#include "tests/rpk/ptt_fixture.h"

#include <array>
#include <atomic>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

class PTTLifeTest : public PTTTest {
protected:
    static bool IsListening(int id = kStation) { return g_app->RPK().GetMonitorPTTFlag(id) != 0; }

    /// How long the work takes.
    template <typename Work> static HeardAudio::Clock::duration Measure(Work work) {
        const auto begin = HeardAudio::Clock::now();
        work();
        return HeardAudio::Clock::now() - begin;
    }
};

TEST_F(PTTLifeTest, OneThreadAndOneMembershipForEachStation) {
    const Leftovers before;
    Listen(kGroup);
    EXPECT_TRUE(IsListening());
    EXPECT_EQ(before.threads + 1, CountThreads());
    EXPECT_EQ(before.members.size() + 1, GroupMembers().size());
    Blank();
    EXPECT_FALSE(IsListening());
    ExpectNothingLeft(before);
}

TEST_F(PTTLifeTest, BlankingEndsTheThreadWithinATenthOfASecond) {
    TalkOn();
    EXPECT_TRUE(HoldsOnce([] {
        Listen(kGroup);
        EXPECT_TRUE(PTTAudio().WaitFor(kStation, kAudioKind, PTTAudio().CountAll() + 5));
        const auto duration = Measure([] { Blank(); });
        EXPECT_FALSE(IsListening());
        EXPECT_EQ(0, MembersOf(kGroup));
        return duration < 150ms; // the setter looks every 20 ms
    }));
}

TEST_F(PTTLifeTest, ANewGroupIsHeardAndTheFormerNoMore) {
    Listen(kGroup);
    TalkOn();
    ASSERT_TRUE(PTTAudio().WaitFor(kStation, kAudioKind, 5));
    Listen(kOtherGroup);
    EXPECT_EQ(0, MembersOf(kGroup));
    const std::size_t before = Heard().size();
    sim::PagingStation& other = AddRegistered(5001);
    const sim::AudioStream talk = NoiseTalk(3, 2);
    other.Talk({kOtherGroup, sim::kAudioPort}, talk);
    ASSERT_TRUE(WaitUntil([&] { return Heard().size() >= before + 3 * 2048; }));
    const auto heard = Heard();
    EXPECT_EQ(DecodedAudio(talk), std::vector(heard.begin() + static_cast<std::ptrdiff_t>(before), heard.end()));
}

TEST_F(PTTLifeTest, ARegistryChangeIsFollowedWithoutASetter) {
    Listen(kGroup);
    g_app->Devices().UpdateRPKMulticastIP(kStation, kOtherGroup);
    ASSERT_TRUE(WaitUntil([] { return MembersOf(kOtherGroup) == 1; }));
    EXPECT_EQ(0, MembersOf(kGroup));
    TalkAndHear(kOtherGroup, NoiseTalk(2));
}

TEST_F(PTTLifeTest, RemovalOfTheStationEndsTheThread) {
    const Leftovers before;
    Listen(kGroup);
    const sim::AudioSource& source = TalkOn();
    ASSERT_TRUE(PTTAudio().WaitFor(kStation, kAudioKind, 5));
    EXPECT_EQ(0, K740_RemoveDevice(kStation));
    const auto removed = HeardAudio::Clock::now();
    EXPECT_TRUE(WaitUntil([] { return !IsListening(); }));
    EXPECT_TRUE(WaitUntil([&] { return CountThreads() == before.threads; }));
    EXPECT_EQ(before.members, GroupMembers());
    EXPECT_TRUE(source.IsStreaming());
    EXPECT_LT(PTTAudio().Latest() - removed, 900ms);
}

TEST_F(PTTLifeTest, AStationThatComesBackIsSilentUntilItsGroupIsSetAgain) {
    Listen(kGroup);
    EXPECT_EQ(0, K740_RemoveDevice(kStation));
    EXPECT_EQ(0, K740_AddDevice(kStation, 2, "192.168.8.1"));
    EXPECT_TRUE(WaitUntil([] { return !IsListening(); }));
    Listen(kGroup);
    TalkAndHear(kGroup, NoiseTalk(2));
}

TEST_F(PTTLifeTest, TwoSettersAtATimeDeliverEveryBlockOnce) {
    const Leftovers before;
    constexpr std::size_t kDatagrams = 3;
    for (std::size_t round = 1; round <= 5; ++round) {
        std::array<std::thread, 2> hosts;
        for (std::thread& host : hosts) {
            host = std::thread([] { EXPECT_EQ(0, K740_SetRPKPTTMulticastIP(kStation, kGroup)); });
        }
        for (std::thread& host : hosts) { host.join(); }
        ASSERT_TRUE(WaitUntil([] { return MembersOf(kGroup) == 1; })) << MembersOf(kGroup);
        EXPECT_EQ(before.threads + 1, CountThreads());
        sim::AudioStream talk = NoiseTalk(kDatagrams);
        talk.period = 2ms;
        TalkAndHear(kGroup, talk);
        Blank(); // what a second thread had heard has been handed on, too
        EXPECT_EQ(round * kDatagrams, PTTAudio().CountAll());
    }
    ExpectNothingLeft(before);
}

TEST_F(PTTLifeTest, StartedAgainItListensOnce) {
    const Leftovers before;
    Listen(kGroup);
    for (int i = 0; i < 10; ++i) { g_app->RPK().StartMonitorPTT(kStation); }
    EXPECT_EQ(before.threads + 1, CountThreads());
    TalkAndHear(kGroup, NoiseTalk(2));
    Blank();
    EXPECT_EQ(2U, PTTAudio().CountAll());
    ExpectNothingLeft(before);
}

TEST_F(PTTLifeTest, ASetterWithinTheCallbackIsMinusThreeAndClears) {
    static std::atomic<int> result{0};
    static std::atomic<HeardAudio::Clock::duration> duration{};
    Listen(kGroup);
    PTTAudio().OnNext([] { duration = Measure([] { result = K740_SetRPKPTTMulticastIP(kStation, kOtherGroup); }); });
    TalkOn();
    EXPECT_TRUE(WaitUntil([] { return result != 0; }));
    EXPECT_EQ(-3, result);
    EXPECT_GT(duration.load(), 2999ms);
    EXPECT_LT(duration.load(), 4500ms);
    EXPECT_TRUE(WaitUntil([] { return !IsListening(); })) << "the address is blank";
    EXPECT_EQ("", g_app->Devices().GetRPKPTTMulticastIP(kStation));
    EXPECT_TRUE(WaitForExactLine("K740_SetRPKPTTMulticastIP(5000, '225.5.1.0')"));
    Listen(kOtherGroup);
}

TEST_F(PTTLifeTest, GoesOnAfterDeinitializeUntilTheGroupIsBlanked) {
    Listen(kGroup);
    EXPECT_EQ(0, K740_Deinitialize());
    const sim::AudioStream talk = NoiseTalk(3);
    TalkAndHear(kGroup, talk);
    EXPECT_EQ(DecodedAudio(talk), Heard());
    Blank();
    EXPECT_FALSE(IsListening());
    EXPECT_EQ(0, MembersOf(kGroup));
}

TEST_F(PTTLifeTest, GoesOnAfterDeinitializeUntilTheStationIsRemoved) {
    Listen(kGroup);
    EXPECT_EQ(0, K740_Deinitialize());
    TalkAndHear(kGroup, NoiseTalk(1));
    EXPECT_EQ(0, K740_RemoveDevice(kStation));
    EXPECT_TRUE(WaitUntil([] { return !IsListening() && MembersOf(kGroup) == 0; }));
}

TEST_F(PTTLifeTest, AGroupThatCannotBeJoinedIsTriedAgain) {
    const std::string address = sim::kStationAddress;
    EXPECT_EQ(0, K740_SetNIC("192.168.77.77")); // no interface of this machine
    EXPECT_EQ(0, K740_SetRPKPTTMulticastIP(kStation, kGroup));
    EXPECT_TRUE(IsListening());
    EXPECT_TRUE(WaitForExactLine("*****Failed to join into multi-cast group 225.5.0.0"));
    EXPECT_EQ(0, K740_SetNIC(address.c_str()));
    ASSERT_TRUE(WaitUntil([] { return MembersOf(kGroup) == 1; }));
    TalkAndHear(kGroup, NoiseTalk(1));
}

TEST_F(PTTLifeTest, TwoHundredQuickChangesLeaveNothingBehind) {
    constexpr int kStations = 10;
    constexpr int kChanges = 20;
    for (int id = kStation + 1; id < kStation + kStations; ++id) { AddRegistered(id); }
    const Leftovers before;
    std::vector<std::thread> hosts;
    for (int id = kStation; id < kStation + kStations; ++id) {
        hosts.emplace_back([id] {
            for (int i = 0; i < kChanges; ++i) {
                EXPECT_EQ(0, K740_SetRPKPTTMulticastIP(id, i % 2 == 0 ? kGroup : kOtherGroup));
            }
            Blank(id);
        });
    }
    for (std::thread& host : hosts) { host.join(); }
    ExpectNothingLeft(before);
    Listen(kGroup);
    TalkAndHear(kGroup, NoiseTalk(2));
    EXPECT_EQ(2U, PTTAudio().CountAll());
}

TEST_F(PTTLifeTest, AHostileDatagramOfEveryLengthIsOneBlockOrNone) {
    Listen(kGroup);
    std::size_t expected = 0;
    for (std::size_t length = 1; length <= 5120; ++length) {
        for (const std::uint8_t lowByte : {std::uint8_t{0x55}, std::uint8_t{0x57}, std::uint8_t{0x62}}) {
            sim::Bytes datagram(length, 0xFF);
            if (length > 14) { datagram[14] = lowByte; }
            if (length > 15) { datagram[15] = 1; }
            m_station.SendRaw(datagram, {kGroup, sim::kAudioPort});
            expected += length > 15 ? 1 : 0;
        }
        ASSERT_TRUE(PTTAudio().WaitFor(kStation, kAudioKind, expected)) << length; // paces the sender, too
    }
    TalkAndHear(kGroup, NoiseTalk(2));
    EXPECT_EQ(expected + 2, PTTAudio().CountAll());
}

} // namespace
} // namespace k740::test
