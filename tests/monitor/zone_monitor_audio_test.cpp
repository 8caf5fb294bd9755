// The audio of monitored zones, as the host's callback is handed it.
#include "tests/monitor/udp_sockets.h"
#include "tests/monitor/zone_monitor_fixture.h"

#include <initializer_list>
#include <vector>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

using ZoneMonitorAudioTest = ZoneMonitorTest;

const sim::Endpoint kGroupOfZone1{GroupOfZone(1), sim::kAudioPort};

TEST_F(ZoneMonitorAudioTest, TheHostHearsWhatTheZonePlaysBitForBit) {
    Monitor(3);
    const sim::AudioStream stream = NoiseStream(10);
    StreamAndHear(3, stream);
    EXPECT_EQ(DecodedAudio(stream), ZoneAudio().Samples(kController, 3));
    EXPECT_EQ(std::vector<int>(10, 4096), ZoneAudio().Lengths(kController, 3));
    EXPECT_EQ(10U, ZoneAudio().CountAll());
}

TEST_F(ZoneMonitorAudioTest, EveryTypeOfAudioIsDecoded) {
    sim::AudioDecoder decoder; // goes on from type to type, as the receiver does
    std::vector<std::int16_t> expected;
    std::vector<int> lengths;
    sim::AudioStream stream;
    for (const std::uint16_t type :
         std::initializer_list<std::uint16_t>{353, 354, 355, 356, 357, 345, 352, 359, 360, 343, 344, 341, 342}) {
        const std::size_t samples = sim::FormatOf(type)->samples;
        const sim::AudioDatagram datagram = sim::AudioEncoder(33, 1, type).Encode(Noise(samples, type));
        const std::vector<std::int16_t> audio = decoder.Decode(datagram);
        expected.insert(expected.end(), audio.begin(), audio.end());
        lengths.push_back(static_cast<int>(samples * sizeof(std::int16_t)));
        stream.datagrams.push_back(sim::Pack(datagram));
    }
    stream.count = stream.datagrams.size();
    stream.period = 0us;
    Monitor(1);
    StreamAndHear(1, stream);
    EXPECT_EQ(lengths, ZoneAudio().Lengths(kController, 1));
    EXPECT_EQ(expected, ZoneAudio().Samples(kController, 1));
}

TEST_F(ZoneMonitorAudioTest, TheDecoderIsNeverReset) {
    Monitor(1);
    sim::AudioStream stream = NoiseStream(2);
    stream.period = 700ms; // far beyond the silence after which push-to-talk audio counts as new
    StreamAndHear(1, stream);
    EXPECT_EQ(DecodedAudio(stream), ZoneAudio().Samples(kController, 1));
}

TEST_F(ZoneMonitorAudioTest, WhatIsNoAudioIsDroppedSilently) {
    Monitor(1);
    K740_EnableCallbackLog(1);
    const sim::AudioDatagram unused{33, 1, 346, 520, sim::Coding::Mono, sim::Bytes(441, 0x77), {}};
    const sim::Bytes audio = sim::Pack(sim::AudioEncoder(33, 1, 357).Encode(Noise(882)));
    sim::AudioStream stream;
    stream.datagrams = {sim::Pack(unused),
                        sim::EndOfStream(33, 1),
                        sim::EndOfStream(33, 1, 540),
                        sim::Bytes{1},
                        sim::Bytes(15, 0xFF),
                        sim::Bytes{},
                        sim::Bytes(5120, 0xFF),
                        audio};
    stream.count = stream.datagrams.size();
    stream.period = 0us;
    m_controller.StreamZone(1, stream);
    ASSERT_TRUE(ZoneAudio().WaitFor(kController, 1, 1));
    EXPECT_EQ(1U, ZoneAudio().CountAll());
    EXPECT_TRUE(WaitForCallbackLogLine("PMONITORZONE", "PMONITORZONE(33, 1, "));
    EXPECT_EQ(1U, LogTexts("PMONITORZONE").size());
}

TEST_F(ZoneMonitorAudioTest, TheCallbackLogHasTheFirstEightSamples) {
    Monitor(5);
    K740_EnableCallbackLog(1);
    sim::AudioStream stream = NoiseStream(1, 357);
    stream.pcm = {1, -1, 0, 32767, -32768, 6, 7, 8, 9};
    StreamAndHear(5, stream);
    EXPECT_TRUE(WaitForCallbackLogLine("PMONITORZONE",
                                       "\tPMONITORZONE(33, 5, {1,4294967295,0,32767,4294934528,6,7,8 ...}, 1764)"));
    EXPECT_EQ(1U, LogTexts("PMONITORZONE").size());
}

TEST_F(ZoneMonitorAudioTest, WithoutACallbackAudioIsDecodedAndNotLogged) {
    Monitor(1);
    K740_EnableCallbackLog(1);
    K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    const sim::AudioStream stream = NoiseStream(3);
    const std::vector<sim::Bytes> datagrams = Datagrams(stream);
    m_controller.SendRaw(datagrams[0], kGroupOfZone1);
    m_controller.SendRaw(sim::EndOfStream(33, 1), kGroupOfZone1);
    ASSERT_TRUE(WaitUntilRead(kGroupOfZone1.ip));

    K740_SetDeviceCallback(nullptr, nullptr, nullptr, nullptr, NoteZoneAudio, nullptr, nullptr);
    m_controller.SendRaw(datagrams[1], kGroupOfZone1);
    ASSERT_TRUE(ZoneAudio().WaitFor(kController, 1, 1));
    const std::vector<std::int16_t> audio = DecodedAudio(stream);
    EXPECT_EQ(std::vector(audio.begin() + 2048, audio.begin() + 4096), ZoneAudio().Samples(kController, 1));
    EXPECT_TRUE(WaitForCallbackLogLine("PMONITORZONE", "PMONITORZONE(33, 1, "));
    EXPECT_EQ(1U, LogTexts("PMONITORZONE").size());
}

TEST_F(ZoneMonitorAudioTest, FiveZonesAreHeardAtOnceWithoutALoss) {
    constexpr std::size_t kDatagrams = 40;
    for (int zone = 1; zone <= 5; ++zone) { Monitor(zone); }
    for (int zone = 1; zone <= 5; ++zone) {
        sim::AudioStream stream = NoiseStream(kDatagrams, 341, static_cast<std::uint32_t>(zone));
        stream.period = 20ms;
        m_controller.StreamZone(zone, stream);
    }
    for (int zone = 1; zone <= 5; ++zone) {
        ASSERT_TRUE(ZoneAudio().WaitFor(kController, zone, kDatagrams)) << zone;
        EXPECT_EQ(DecodedAudio(NoiseStream(kDatagrams, 341, static_cast<std::uint32_t>(zone))),
                  ZoneAudio().Samples(kController, zone))
            << zone;
    }
    EXPECT_EQ(5 * kDatagrams, ZoneAudio().CountAll());
}

} // namespace
} // namespace k740::test
