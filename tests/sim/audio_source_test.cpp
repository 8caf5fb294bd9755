#include "sim/audio_encoder.h"
#include "sim/audio_source.h"
#include "sim/tone.h"
#include "tests/sim/station.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <system_error>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::AudioStream;
using sim::Bytes;

constexpr const char* kIp = "192.168.3.1";
constexpr std::uint32_t kId = 7001;

class AudioSourceTest : public OnPrivateNetwork {
protected:
    sim::AuxInterface& AddDevice() {
        Network().AddFieldAddresses({kIp});
        return Field().AddAuxInterface(kId, kIp);
    }
    /// The datagrams of the group up to a number or until none comes for a while.
    std::vector<sim::Datagram> Hear(std::size_t count) {
        std::vector<sim::Datagram> heard;
        while (heard.size() < count) {
            auto datagram = WaitForDatagram(m_ear);
            if (!datagram) { break; }
            heard.push_back(std::move(*datagram));
        }
        return heard;
    }
    /// That many datagrams as fast as they can be sent.
    static AudioStream Short(std::size_t count) {
        AudioStream stream;
        stream.count = count;
        stream.period = 0us;
        return stream;
    }
    void WaitUntilOver(const sim::AudioSource& source) {
        EXPECT_TRUE(Field().WaitUntil([&] { return !source.IsStreaming(); }, kSoon));
    }

    sim::UdpSocket m_ear = sim::UdpSocket::InGroup(kGroup, sim::kStationAddress);
    sim::AuxInterface& m_device = AddDevice();
};

TEST_F(AudioSourceTest, StreamsItsPcmFromTheBeginningAndThenAnew) {
    AudioStream stream = Short(5);
    stream.pcm = sim::Tone(440, 3000);
    WaitUntilOver(m_device.Stream(kGroup, stream));
    const auto heard = Hear(5);
    ASSERT_EQ(5U, heard.size());
    sim::AudioEncoder encoder(kId, 1, 341);
    std::size_t position = 0;
    for (const sim::Datagram& datagram : heard) {
        std::vector<std::int16_t> samples(2048);
        for (std::int16_t& sample : samples) { sample = stream.pcm[position++ % stream.pcm.size()]; }
        EXPECT_EQ(sim::Pack(encoder.Encode(samples)), datagram.bytes);
        EXPECT_EQ((sim::Endpoint{kIp, 28001}), datagram.sender);
    }
}

TEST_F(AudioSourceTest, HeaderHasWhatTheStreamSays) {
    AudioStream stream = Short(1);
    stream.type = 345;
    stream.stream = 4;
    stream.node = 33;
    m_device.Stream(kGroup, stream);
    const auto heard = Hear(1);
    ASSERT_EQ(1U, heard.size());
    const auto audio = sim::ReadAudioDatagram(heard[0].bytes);
    ASSERT_TRUE(audio);
    EXPECT_EQ(345, audio->type);
    EXPECT_EQ(4U, audio->stream);
    EXPECT_EQ(33U, audio->node);
    EXPECT_EQ(Bytes(441), audio->payload); // no PCM: silence
}

TEST_F(AudioSourceTest, KeepsToTheGridOfItsPeriod) {
    constexpr auto kPeriod = 2300us; // rounding each wait up to whole milliseconds would make 0.7 ms more of it
    AudioStream stream;
    stream.period = kPeriod;
    stream.count = 60;
    m_device.Stream(kGroup, stream);
    const auto heard = Hear(60);
    ASSERT_EQ(60U, heard.size());
    auto leastLate = sim::Clock::duration::max(); // of the second half, when that would have added up to 21 ms
    for (std::size_t i = 30; i < heard.size(); ++i) {
        leastLate = std::min(leastLate, heard[i].arrival - heard[0].arrival - static_cast<int>(i) * kPeriod);
    }
    EXPECT_LT(leastLate, 10ms);
    EXPECT_GT(leastLate, -3ms); // the first itself may have been late
}

TEST_F(AudioSourceTest, StreamsUntilItIsStopped) {
    AudioStream stream;
    stream.period = 1ms;
    sim::AudioSource& source = m_device.Stream(kGroup, stream);
    ASSERT_TRUE(Field().WaitUntil([&] { return source.Sent() >= 3; }, kSoon));
    EXPECT_TRUE(source.IsStreaming());
    source.Stop();
    EXPECT_FALSE(source.IsStreaming());
    const std::size_t sent = source.Sent();
    EXPECT_FALSE(Field().WaitUntil([&] { return source.Sent() > sent; }, 20ms));
    EXPECT_EQ(sent, Hear(sent).size());
    EXPECT_FALSE(m_ear.Receive());
}

TEST_F(AudioSourceTest, CountIsKeptToTheDatagram) {
    for (const std::size_t count : {0U, 1U, 2U}) {
        const sim::AudioSource& source = m_device.Stream(kGroup, Short(count));
        WaitUntilOver(source);
        EXPECT_EQ(count, source.Sent());
    }
    EXPECT_EQ(3U, Hear(3).size());
    EXPECT_FALSE(m_ear.Receive());
}

TEST_F(AudioSourceTest, LosesEveryNthAfterItHasCodedIt) {
    AudioStream stream = Short(7);
    stream.pcm = sim::Tone(440, 44'100);
    stream.loseEvery = 3;
    const sim::AudioSource& source = m_device.Stream(kGroup, stream);
    WaitUntilOver(source);
    EXPECT_EQ(5U, source.Sent());
    sim::Recorder recorder(kId, {}, sim::Keep::Counts);
    for (const sim::Datagram& datagram : Hear(5)) { recorder.Take(datagram); }
    EXPECT_EQ(5U, recorder.Get().datagrams);
    EXPECT_EQ(2U, recorder.Get().gaps); // the third and the sixth are missing
}

TEST_F(AudioSourceTest, WholeDatagramsAreSentInTurnAsTheyAre) {
    AudioStream stream = Short(3);
    stream.datagrams = {sim::EndOfStream(9500, 33), {1, 2, 3}};
    m_device.Stream(kGroup, stream);
    const auto heard = Hear(3);
    ASSERT_EQ(3U, heard.size());
    EXPECT_EQ(stream.datagrams[0], heard[0].bytes);
    EXPECT_EQ(stream.datagrams[1], heard[1].bytes);
    EXPECT_EQ(stream.datagrams[0], heard[2].bytes);
}

TEST_F(AudioSourceTest, NewStreamEndsTheOneBefore) {
    AudioStream endless;
    endless.period = 1ms;
    m_device.Stream({"225.0.0.9", 28100}, endless);
    const sim::AudioSource& source = m_device.Stream(kGroup, Short(2));
    WaitUntilOver(source);
    EXPECT_EQ(2U, source.Sent());
    EXPECT_FALSE(Field().WaitUntil([&] { return source.Sent() > 2; }, 20ms));
}

TEST_F(AudioSourceTest, StreamOfNoDatagramsEndsTheOneBeforeToo) {
    EXPECT_TRUE(m_device.Stream(kGroup).IsStreaming());
    EXPECT_FALSE(m_device.Stream(kGroup, Short(0)).IsStreaming());
}

TEST_F(AudioSourceTest, DeviceThatIsRemovedStreamsNoMore) {
    AudioStream stream;
    stream.period = 1ms;
    m_device.Stream(kGroup, stream);
    ASSERT_EQ(1U, Hear(1).size());
    Field().Remove(kId);
    while (m_ear.Receive()) {}
    EXPECT_FALSE(WaitForDatagram(m_ear, 20ms));
}

TEST_F(AudioSourceTest, TypeWithoutAudioAndHastyEndlessStreamAreRefused) {
    AudioStream wrongType = Short(1);
    wrongType.type = 346;
    EXPECT_THROW(m_device.Stream(kGroup, wrongType), std::invalid_argument);
    AudioStream hasty;
    hasty.period = 999us;
    EXPECT_THROW(m_device.Stream(kGroup, hasty), std::invalid_argument);
}

TEST_F(AudioSourceTest, ReceiverThatCannotBeReachedIsReported) {
    EXPECT_THROW(m_device.Stream({"10.0.0.1", 28100}), std::system_error);
}

TEST_F(AudioSourceTest, EndOfStreamNamesItsController) {
    m_device.SendEndOfStream(kGroup, 33);
    const auto heard = Hear(1);
    ASSERT_EQ(1U, heard.size());
    EXPECT_EQ(sim::EndOfStream(kId, 33), heard[0].bytes);
}

} // namespace
} // namespace k740::test
