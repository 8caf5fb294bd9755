#include "codec/g711.h"
#include "player/stream_sender.h"
#include "player/task_streams.h"
#include "public/fa_resample/fa_fir.h"
#include "sim/bytes.h"
#include "tests/support/noise.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <vector>

namespace k740::test {
namespace {

using sim::Bytes;

constexpr int kTask = 7;
constexpr int kChannel = 3;
constexpr std::size_t kCapacity8K = 320'000;
constexpr std::size_t kCapacity22K = 882'000;
constexpr std::size_t kCapacity44K = 1'920'000;

Bytes ToBytes(const std::vector<std::int16_t>& samples) {
    return sim::ByteWriter().PutAll(samples).Get();
}

class TaskStreamsTest : public ::testing::Test {
protected:
    TaskStreamsTest() {
        m_streams->NewTaskStream8K(kChannel, kTask);
        m_streams->NewTaskStream22K(kChannel, kTask);
        m_streams->NewTaskStream44K(kChannel, kTask);
    }

    int Push(int format, const Bytes& data) {
        return m_streams->PushHostAudio(kChannel, kTask, format, data.data(), static_cast<unsigned short>(data.size()));
    }
    /// Runs conversion steps of a format as long as there is input. @return how many
    int ConvertAll(int format) {
        int steps = 0;
        while (m_streams->Convert(kChannel, kTask, format)) { ++steps; }
        return steps;
    }
    /// @return samples of the 44.1 kHz slot, none unless all of them are there
    std::vector<short> Take44K(int samples) {
        std::vector<short> out(static_cast<std::size_t>(samples));
        return m_streams->GetPcm44K(kChannel, kTask, out.data(), samples * 2) == 1 ? out : std::vector<short>{};
    }
    /// Pushes until the slot is full to the last byte; expects that it then refuses one more.
    template <typename PushBytes> std::size_t Fill(PushBytes push) {
        std::size_t pushed = 0;
        const Bytes chunk(4096);
        for (unsigned short length = 4096; length > 0; length = static_cast<unsigned short>(length / 2)) {
            while (push(chunk.data(), length) == 0) { pushed += length; }
        }
        return pushed;
    }

    const std::unique_ptr<CTaskStreams> m_streams = std::make_unique<CTaskStreams>();
};

TEST(LargestChunkTest, IsThatOfTheFormat) {
    EXPECT_EQ(4096U, LargestChunk(0));
    EXPECT_EQ(2048U, LargestChunk(1));
    EXPECT_EQ(1024U, LargestChunk(2));
    EXPECT_EQ(1024U, LargestChunk(3));
    EXPECT_EQ(700U, LargestChunk(4));
}

TEST_F(TaskStreamsTest, TheSlotsHoldTheStatedBytes) {
    EXPECT_EQ(kCapacity8K, Fill([this](const unsigned char* data, unsigned short length) {
                  return m_streams->Push8KPcmToBuffer(kChannel, kTask, data, length);
              }));
    EXPECT_EQ(kCapacity22K, Fill([this](const unsigned char* data, unsigned short length) {
                  return m_streams->Push22KPcmToBuffer(kChannel, kTask, data, length);
              }));
    EXPECT_EQ(kCapacity44K, Fill([this](const unsigned char* data, unsigned short length) {
                  return m_streams->Push441KPcmToBuffer(kChannel, kTask, data, length);
              }));
}

TEST_F(TaskStreamsTest, AFullSlotReturns255AndKeepsItsAudio) {
    const Bytes chunk(4096, 0x11);
    for (std::size_t pushed = 0; pushed + 4096 <= kCapacity44K; pushed += 4096) { EXPECT_EQ(0, Push(0, chunk)); }
    EXPECT_EQ(255, Push(0, chunk));
    const int samples = static_cast<int>(kCapacity44K / 4096) * 2048;
    EXPECT_EQ(std::vector<short>(static_cast<std::size_t>(samples), 0x1111), Take44K(samples));
    EXPECT_EQ(0, m_streams->GetPcm44K(kChannel, kTask, nullptr, 2));
}

TEST_F(TaskStreamsTest, Format0GoesTo44KHzUnchanged) {
    EXPECT_EQ(0, Push(0, ToBytes(Noise(2048))));
    EXPECT_EQ(Noise(2048), Take44K(2048));
}

TEST_F(TaskStreamsTest, ASampleMaySpanTwoChunks) {
    Bytes all = ToBytes(Noise(4));
    EXPECT_EQ(0, Push(0, {all.begin(), all.begin() + 3}));
    EXPECT_EQ(0, Push(0, {all.begin() + 3, all.end()}));
    EXPECT_EQ(Noise(4), Take44K(4));
}

TEST_F(TaskStreamsTest, GetPcm44KTakesAllOrNothing) {
    EXPECT_EQ(0, Push(0, Bytes(4094)));
    EXPECT_TRUE(Take44K(2048).empty());
    EXPECT_EQ(0, Push(0, Bytes(2)));
    EXPECT_EQ(2048U, Take44K(2048).size());
    EXPECT_TRUE(Take44K(1).empty());
}

TEST_F(TaskStreamsTest, GetPcm44KOfNoBytesIsNothing) {
    EXPECT_EQ(0, Push(0, Bytes(8)));
    short out = 0;
    EXPECT_EQ(0, m_streams->GetPcm44K(kChannel, kTask, &out, 0));
    EXPECT_EQ(0, m_streams->GetPcm44K(kChannel, kTask, &out, -2));
}

TEST_F(TaskStreamsTest, Step22KTakes882BytesAndGives1764) {
    EXPECT_EQ(0, Push(1, ToBytes(Noise(440))));
    EXPECT_FALSE(m_streams->Convert(kChannel, kTask, 1));
    EXPECT_EQ(0, Push(1, Bytes(2)));
    EXPECT_TRUE(m_streams->Convert(kChannel, kTask, 1));
    EXPECT_FALSE(m_streams->Convert(kChannel, kTask, 1));
    EXPECT_EQ(882U, Take44K(882).size());
    EXPECT_TRUE(Take44K(1).empty());
}

TEST_F(TaskStreamsTest, Format22KIsResampledBlockByBlock) {
    const auto in = Noise(882, 5);
    EXPECT_EQ(0, Push(1, ToBytes(in)));
    EXPECT_EQ(2, ConvertAll(1));
    std::vector<short> expected(1764);
    resampleData(in.data(), 22050, 441, expected.data(), 44100, 882, 0.5F);
    resampleData(in.data() + 441, 22050, 441, expected.data() + 882, 44100, 882, 0.5F);
    EXPECT_EQ(expected, Take44K(1764));
}

TEST_F(TaskStreamsTest, Step8KTakes160BytesAndGives882) {
    EXPECT_EQ(0, Push(4, Bytes(158)));
    EXPECT_FALSE(m_streams->Convert(kChannel, kTask, 4));
    EXPECT_EQ(0, Push(4, Bytes(2)));
    EXPECT_TRUE(m_streams->Convert(kChannel, kTask, 4));
    EXPECT_FALSE(m_streams->Convert(kChannel, kTask, 4));
    EXPECT_EQ(441U, Take44K(441).size());
    EXPECT_TRUE(Take44K(1).empty());
}

TEST_F(TaskStreamsTest, Format8KIsResampledBlockByBlock) {
    const auto in = Noise(160, 5);
    EXPECT_EQ(0, Push(4, ToBytes(in)));
    EXPECT_EQ(2, ConvertAll(4));
    std::vector<short> expected(882);
    resampleData(in.data(), 8000, 80, expected.data(), 44100, 441, 0.1814059F);
    resampleData(in.data() + 80, 8000, 80, expected.data() + 441, 44100, 441, 0.1814059F);
    EXPECT_EQ(expected, Take44K(882));
}

TEST_F(TaskStreamsTest, Format0IsNotConverted) {
    EXPECT_EQ(0, Push(4, Bytes(700)));
    EXPECT_EQ(0, Push(1, Bytes(2048)));
    EXPECT_FALSE(m_streams->Convert(kChannel, kTask, 0));
}

/// The 44.1 kHz audio of 80 samples of 8 kHz.
std::vector<short> Resampled(const std::vector<short>& in) {
    std::vector<short> out(441);
    resampleData(in.data(), 8000, 80, out.data(), 44100, 441, 0.1814059F);
    return out;
}

std::vector<short> Expanded(int law, const Bytes& codes) {
    std::vector<short> samples;
    for (const std::uint8_t code : codes) {
        samples.push_back(static_cast<short>(law == 3 ? alaw2linear(code) : ulaw2linear(code)));
    }
    return samples;
}

TEST_F(TaskStreamsTest, G711IsExpandedByItsLaw) {
    Bytes codes(80);
    std::iota(codes.begin(), codes.end(), std::uint8_t{100});
    for (const int law : {2, 3}) {
        EXPECT_EQ(0, Push(law, codes));
        EXPECT_EQ(1, ConvertAll(law));
        EXPECT_EQ(Resampled(Expanded(law, codes)), Take44K(441)) << law;
    }
}

TEST_F(TaskStreamsTest, G711ThatIsAllZeroBytesIsSilence) {
    for (const int law : {2, 3}) {
        EXPECT_EQ(0, Push(law, Bytes(160)));
        EXPECT_EQ(2, ConvertAll(law)); // 320 bytes in the 8 kHz slot, no less
        EXPECT_EQ(std::vector<short>(882, 0), Take44K(882)) << law;
    }
}

TEST_F(TaskStreamsTest, OneByteThatIsNotZeroMakesItAudio) {
    Bytes codes(80);
    codes.back() = 1;
    for (const int law : {2, 3}) {
        EXPECT_EQ(0, Push(law, codes));
        EXPECT_EQ(1, ConvertAll(law));
        EXPECT_EQ(Resampled(Expanded(law, codes)), Take44K(441)) << law;
    }
}

TEST_F(TaskStreamsTest, AnyLawButThreeIsULaw) {
    const Bytes codes(80, 0x12);
    for (const int law : {0, 1, 2, 4, 255}) {
        EXPECT_EQ(0, m_streams->ConvertG711To8KPcm(kChannel, kTask, static_cast<unsigned char>(law), codes.data(), 80));
        EXPECT_EQ(1, ConvertAll(4));
        EXPECT_EQ(Resampled(Expanded(2, codes)), Take44K(441)) << law;
    }
}

TEST_F(TaskStreamsTest, G711Of1025BytesDoesNothing) {
    const Bytes codes(1025, 0x12);
    EXPECT_EQ(0, m_streams->ConvertG711To8KPcm(kChannel, kTask, 2, codes.data(), 1025));
    EXPECT_EQ(0, ConvertAll(2));
    EXPECT_EQ(0, m_streams->ConvertG711To8KPcm(kChannel, kTask, 2, codes.data(), 1024));
    EXPECT_EQ(12, ConvertAll(2)); // 2048 bytes
}

TEST_F(TaskStreamsTest, G711ThatDoesNotFitIsRefused) {
    Fill([this](const unsigned char* data, unsigned short length) {
        return m_streams->Push8KPcmToBuffer(kChannel, kTask, data, length);
    });
    EXPECT_EQ(255, Push(2, Bytes(1)));
}

TEST_F(TaskStreamsTest, AnotherTaskHasNeitherRoomNorAudio) {
    const Bytes data(4096);
    EXPECT_EQ(0, Push(0, data));
    EXPECT_EQ(255, m_streams->Push441KPcmToBuffer(kChannel, kTask + 1, data.data(), 4096));
    EXPECT_EQ(255, m_streams->Push22KPcmToBuffer(kChannel, kTask + 1, data.data(), 882));
    EXPECT_EQ(255, m_streams->Push8KPcmToBuffer(kChannel, kTask + 1, data.data(), 160));
    short out[1];
    EXPECT_EQ(0, m_streams->GetPcm44K(kChannel, kTask + 1, out, 2));
    EXPECT_EQ(0, Push(1, Bytes(882)));
    EXPECT_FALSE(m_streams->Convert(kChannel, kTask + 1, 1));
    m_streams->RemoveTaskStream44K(kChannel, kTask + 1);
    EXPECT_EQ(2048U, Take44K(2048).size());
}

TEST_F(TaskStreamsTest, ARemovedSlotHasNoRoom) {
    m_streams->RemoveTaskStream8K(kChannel, kTask);
    m_streams->RemoveTaskStream22K(kChannel, kTask);
    m_streams->RemoveTaskStream44K(kChannel, kTask);
    for (const int format : {0, 1, 2, 3, 4}) { EXPECT_EQ(255, Push(format, Bytes(2))) << format; }
}

TEST_F(TaskStreamsTest, ChannelsAreSeparate) {
    m_streams->NewTaskStream44K(kChannel + 1, kTask + 1);
    EXPECT_EQ(0, Push(0, Bytes(4096)));
    short out[1];
    EXPECT_EQ(0, m_streams->GetPcm44K(kChannel + 1, kTask + 1, out, 2));
}

TEST_F(TaskStreamsTest, ChannelsOutOfRangeHaveNoRoom) {
    const Bytes data(2);
    for (const int channel : {-1, 200, 65535}) {
        m_streams->NewTaskStream44K(channel, kTask);
        EXPECT_EQ(255, m_streams->Push441KPcmToBuffer(channel, kTask, data.data(), 2)) << channel;
        m_streams->RemoveTaskStream44K(channel, kTask);
        m_streams->Wake(channel);
        m_streams->Wait(channel, 0);
    }
    m_streams->NewTaskStream44K(199, kTask);
    EXPECT_EQ(0, m_streams->Push441KPcmToBuffer(199, kTask, data.data(), 2));
}

TEST(ScaleVolumeTest, CutsTowardsZero) {
    std::vector<short> samples{-3, 3, -1, 1, -32768, 32767};
    ScaleVolume(samples.data(), 6, 50);
    EXPECT_EQ((std::vector<short>{-1, 1, 0, 0, -16384, 16383}), samples);
}

TEST(ScaleVolumeTest, VolumeZeroIsSilence) {
    std::vector<short> samples{-32768, 32767, 1};
    ScaleVolume(samples.data(), 3, 0);
    EXPECT_EQ(std::vector<short>(3, 0), samples);
}

TEST(ScaleVolumeTest, EqualsTheProductInDoublePrecisionForEverySampleAndVolume) {
    for (int volume = 0; volume < 100; ++volume) {
        for (int sample = -32768; sample <= 32767; ++sample) {
            auto scaled = static_cast<short>(sample);
            ScaleVolume(&scaled, 1, volume);
            ASSERT_EQ(static_cast<short>((sample * volume) / 100.0), scaled) << sample << " at " << volume;
        }
    }
}

} // namespace
} // namespace k740::test
