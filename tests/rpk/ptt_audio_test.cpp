// Push-to-talk audio of paging stations, as the host's callback is handed it.
#include "sim/zone_controller.h"
#include "tests/monitor/udp_sockets.h"
#include "tests/rpk/ptt_fixture.h"

#include <vector>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

using PTTAudioTest = PTTTest;

TEST_F(PTTAudioTest, TheHostHearsTheStationBitForBitAsKindThree) {
    Listen(kGroup);
    const sim::AudioStream talk = NoiseTalk(10);
    TalkAndHear(kGroup, talk);
    EXPECT_EQ(DecodedAudio(talk), Heard());
    EXPECT_EQ(std::vector<int>(10, 4096), PTTAudio().Lengths(kStation, kAudioKind));
    EXPECT_EQ(10U, PTTAudio().CountAll());
}

TEST_F(PTTAudioTest, BlanksAroundTheAddressDoNotMatter) {
    EXPECT_EQ(0, K740_SetRPKPTTMulticastIP(kStation, "  225.5.0.0  "));
    EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup) == 1; }));
}

TEST_F(PTTAudioTest, TheDecoderGoesOnWithinTwoHundredMilliseconds) {
    sim::AudioStream talk = NoiseTalk(3);
    talk.period = 150ms;
    EXPECT_TRUE(HoldsOnce([&] { return HearAnew(talk) == DecodedAudio(talk); }));
}

TEST_F(PTTAudioTest, TheDecoderBeginsAnewAfterSilence) {
    sim::AudioStream talk = NoiseTalk(2);
    talk.period = 350ms; // the system counts ten waits of 20 ms in ticks of up to 10 ms
    std::vector<std::int16_t> expected;
    for (const sim::AudioDatagram& datagram : Coded(talk)) {
        const auto audio = sim::AudioDecoder().Decode(datagram);
        expected.insert(expected.end(), audio.begin(), audio.end());
    }
    EXPECT_TRUE(HoldsOnce([&] { return HearAnew(talk) == expected; }));
    EXPECT_NE(expected, DecodedAudio(talk)) << "silence makes a difference";
}

TEST_F(PTTAudioTest, WhatIsNoAudioIsDroppedSilently) {
    Listen(kGroup);
    K740_EnableCallbackLog(1);
    const sim::AudioDatagram unused{kStation, 1, 346, 520, sim::Coding::Mono, sim::Bytes(441, 0x77), {}};
    sim::AudioStream talk;
    talk.datagrams = {sim::Pack(unused), sim::EndOfStream(kStation, 1), sim::Bytes{1}, sim::Bytes(5120, 0xFF),
                      sim::Pack(sim::AudioEncoder(kStation, 1, 355).Encode(Noise(882)))};
    talk.count = talk.datagrams.size();
    talk.period = 0us;
    m_station.Talk({kGroup, sim::kAudioPort}, talk);
    ASSERT_TRUE(PTTAudio().WaitFor(kStation, kAudioKind, 1));
    EXPECT_EQ(Noise(882), Heard());
    EXPECT_TRUE(WaitForCallbackLogLine("PRPKPTTAUDIO", "PRPKPTTAUDIO(5000, 3, "));
    EXPECT_EQ(1U, LogTexts("PRPKPTTAUDIO").size());
}

TEST_F(PTTAudioTest, TheCallbackLogHasTheFirstEightSamples) {
    Listen(kGroup);
    K740_EnableCallbackLog(1);
    sim::AudioStream talk = NoiseTalk(1);
    talk.type = 353;
    talk.pcm = {1, -1, 0, 32767, -32768, 6, 7, 8, 9};
    TalkAndHear(kGroup, talk);
    EXPECT_TRUE(WaitForCallbackLogLine("PRPKPTTAUDIO",
                                       "\tPRPKPTTAUDIO(5000, 3, {1,4294967295,0,32767,4294934528,6,7,8 ...}, 3528)"));
    EXPECT_EQ(1U, LogTexts("PRPKPTTAUDIO").size());
}

TEST_F(PTTAudioTest, WithoutACallbackAudioIsDecoded) {
    const sim::AudioStream talk = NoiseTalk(2);
    const std::vector<sim::Bytes> datagrams = Datagrams(talk);
    const auto decoded = DecodedAudio(talk);
    EXPECT_TRUE(HoldsOnce([&] { // after silence the decoder would begin anew
        Listen(kGroup);
        const std::size_t before = Heard().size();
        RegisterCallback(nullptr);
        m_station.SendRaw(datagrams[0], {kGroup, sim::kAudioPort});
        m_station.SendRaw(sim::EndOfStream(kStation, 1), {kGroup, sim::kAudioPort});
        EXPECT_TRUE(WaitUntilRead(kGroup));
        RegisterCallback(NotePTTAudio);
        m_station.SendRaw(datagrams[1], {kGroup, sim::kAudioPort});
        EXPECT_TRUE(WaitUntil([&] { return Heard().size() > before; }));
        return HeardFrom(before) == std::vector(decoded.begin() + 2048, decoded.end());
    }));
}

TEST_F(PTTAudioTest, WithoutACallbackNothingIsLogged) {
    Listen(kGroup);
    K740_EnableCallbackLog(1);
    RegisterCallback(nullptr);
    const std::vector<sim::Bytes> datagrams = Datagrams(NoiseTalk(2));
    m_station.SendRaw(datagrams[0], {kGroup, sim::kAudioPort});
    m_station.SendRaw(sim::EndOfStream(kStation, 1), {kGroup, sim::kAudioPort});
    ASSERT_TRUE(WaitUntilRead(kGroup));
    RegisterCallback(NotePTTAudio);
    m_station.SendRaw(datagrams[1], {kGroup, sim::kAudioPort});
    EXPECT_TRUE(WaitForCallbackLogLine("PRPKPTTAUDIO", "PRPKPTTAUDIO(5000, 3, "));
    EXPECT_EQ(1U, LogTexts("PRPKPTTAUDIO").size());
}

TEST_F(PTTAudioTest, FiveStationsAndFiveZonesAreHeardAtOnceWithoutALoss) {
    constexpr std::size_t kDatagrams = 40;
    constexpr int kEach = 5;
    const auto talkOf = [](int number) {
        sim::AudioStream talk = NoiseTalk(kDatagrams, static_cast<std::uint32_t>(number));
        talk.period = 20ms;
        return talk;
    };
    const auto groupOf = [](int number) { return sim::AddressText(0xE1060000 + static_cast<std::uint32_t>(number)); };
    sim::ZoneController& controller = AddZoneController(33, "192.168.1.33");
    EXPECT_EQ(0, K740_AddDevice(33, 1, "192.168.1.33"));
    EXPECT_EQ(0, K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, NoteZoneAudio, nullptr, NotePTTAudio));
    std::vector<sim::PagingStation*> stations{&m_station};
    for (int id = kStation + 1; id < kStation + kEach; ++id) { stations.push_back(&AddRegistered(id)); }
    for (int i = 1; i <= kEach; ++i) { controller.SetZoneGroup(i, groupOf(i)); }
    for (int i = 1; i <= kEach; ++i) {
        EXPECT_EQ(0, K740_MonitorZone(33, i, 1));
        Listen(groupOf(kEach + i), kStation + i - 1);
    }
    for (int i = 1; i <= kEach; ++i) {
        ASSERT_TRUE(WaitUntil([&] { return MembersOf(groupOf(i)) == 1; }));
        controller.StreamZone(i, talkOf(i));
        stations[static_cast<std::size_t>(i - 1)]->Talk({groupOf(kEach + i), sim::kAudioPort}, talkOf(kEach + i));
    }
    for (int i = 1; i <= kEach; ++i) {
        ASSERT_TRUE(ZoneAudio().WaitFor(33, i, kDatagrams)) << i;
        ASSERT_TRUE(PTTAudio().WaitFor(kStation + i - 1, kAudioKind, kDatagrams)) << i;
        EXPECT_EQ(DecodedAudio(talkOf(i)), ZoneAudio().Samples(33, i)) << i;
        EXPECT_EQ(DecodedAudio(talkOf(kEach + i)), PTTAudio().Samples(kStation + i - 1, kAudioKind)) << i;
    }
    EXPECT_EQ(kEach * kDatagrams, ZoneAudio().CountAll());
    EXPECT_EQ(kEach * kDatagrams, PTTAudio().CountAll());
}

} // namespace
} // namespace k740::test
