// Five seconds of audio at the pace of a host, with every datagram accounted for.
#include "codec/adpcm.h"
#include "tests/player/broadcast_fixture.h"
#include "tests/support/noise.h"

#include <algorithm>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using sim::Bytes;

constexpr std::size_t kSamples = 5 * 44100;
constexpr std::size_t kChunkBytes = 1764; // 20 ms
constexpr std::size_t kFrame = 2048;      // samples of one datagram
constexpr unsigned kPeriodMs = 20;

/// What the station must send for this audio: whole frames, each coded from where the one before ended.
std::vector<Bytes> ExpectedDatagrams(const std::vector<std::int16_t>& audio) {
    std::vector<Bytes> datagrams;
    adpcm_state state{};
    for (std::size_t at = 0; at + kFrame <= audio.size(); at += kFrame) {
        std::vector<char> code(kFrame / 2);
        adpcm_coder(audio.data() + at, code.data(), static_cast<int>(code.size()), &state, kAdpcmTwoChannel);
        sim::ByteWriter writer;
        writer.Put<std::uint16_t>(0x4A79).Fill(4, 0).Put<std::uint32_t>(9500).Put<std::uint32_t>(1);
        writer.Put<std::uint16_t>(341).Put<std::uint16_t>(1032).PutAll(code);
        writer.Put(state.predictedA).Put(state.predictedB).Put(state.indexA).Put(state.indexB).Fill(4, 0);
        datagrams.push_back(writer.Get());
    }
    return datagrams;
}

/// Pushes audio as a host does that makes it in real time.
void PlayInRealTime(const std::vector<std::int16_t>& audio) {
    Bytes bytes = sim::ByteWriter().PutAll(audio).Get();
    K740_PACING pacing{};
    for (std::size_t at = 0; at < bytes.size(); at += kChunkBytes) {
        K740_SleepStart(&pacing);
        ASSERT_EQ(0, K740_SendAudioStreamProc(kTask, bytes.data() + at, kChunkBytes));
        K740_SleepEnd(kPeriodMs, &pacing);
    }
}

using RealTimeBroadcastTest = BroadcastTest;

TEST_F(RealTimeBroadcastTest, FiveSecondsInRealTimeArriveWholeInOrderAndOnce) {
    m_controller.SetKeep(sim::Keep::SamplesAndDatagrams);
    const auto audio = Noise(kSamples);
    const std::vector<Bytes> expected = ExpectedDatagrams(audio);
    StartAndBroadcast();
    PlayInRealTime(audio);
    ASSERT_TRUE(m_controller.WaitForDatagrams(expected.size(), kSoon));
    StopAndWait();
    WaitForPacket(kController, sim::command::kCloseAudio);

    const sim::Recording heard = m_controller.Recordings().at(0);
    ASSERT_EQ(expected.size() + 2, heard.rawDatagrams.size()); // and the end of the stream, twice
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), heard.rawDatagrams.begin()));
    EXPECT_EQ(expected.size(), heard.datagrams);
    EXPECT_EQ(0U, heard.gaps);
    EXPECT_EQ(0U, heard.repeats);
    EXPECT_EQ(0U, heard.foreign);
    EXPECT_EQ(0U, heard.afterEnd);
    EXPECT_EQ(2U, heard.endsOfStream.size());
    EXPECT_EQ(expected.size() * kFrame, heard.samples.size());
    EXPECT_GE(*heard.lastAudio - *heard.firstAudio, 4800ms);
    EXPECT_EQ((std::vector<int>{1, 2, 0}), Reports().Of(kTask));
}

} // namespace
} // namespace k740::test
