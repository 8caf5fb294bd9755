// Datagrams of every length and kind to the group of a monitored zone.
#include "tests/monitor/zone_monitor_fixture.h"

#include <array>

namespace k740::test {
namespace {

constexpr std::size_t kLongest = 5120;
constexpr std::size_t kTypeOffset = 14;
constexpr std::array<std::uint16_t, 13> kAudioTypes{341, 342, 343, 344, 345, 352, 353, 354, 355, 356, 357, 359, 360};
constexpr std::array<std::uint16_t, 8> kOtherTypes{0, 340, 346, 351, 358, 361, 0x8112, 0xFFFF};

/// All bits set, but for the type: every value and step index of the state block is out of range.
sim::Bytes Hostile(std::size_t length, std::uint16_t type) {
    sim::Bytes datagram(length, 0xFF);
    if (length > kTypeOffset) { datagram[kTypeOffset] = static_cast<std::uint8_t>(type & 0xFF); }
    if (length > kTypeOffset + 1) { datagram[kTypeOffset + 1] = static_cast<std::uint8_t>(type >> 8); }
    return datagram;
}

class ZoneMonitorHostileTest : public ZoneMonitorTest {
protected:
    void Send(const sim::Bytes& datagram) { m_controller.SendRaw(datagram, {GroupOfZone(1), sim::kAudioPort}); }
};

TEST_F(ZoneMonitorHostileTest, EveryLengthOfEveryTypeIsOneBlockOrNone) {
    Monitor(1);
    std::vector<int> expected;
    for (std::size_t length = 1; length <= kLongest; ++length) {
        for (const std::uint16_t type : kOtherTypes) { Send(Hostile(length, type)); }
        for (const std::uint16_t type : kAudioTypes) {
            Send(Hostile(length, type));
            // A shorter datagram reads as zeros beyond its end, and so has no such type.
            if (length < kTypeOffset + 2) { continue; }
            expected.push_back(static_cast<int>(sim::FormatOf(type)->samples * sizeof(std::int16_t)));
        }
        ASSERT_TRUE(ZoneAudio().WaitFor(kController, 1, expected.size())) << length; // paces the sender, too
    }
    EXPECT_EQ(expected, ZoneAudio().Lengths(kController, 1));

    // The first datagram of a good stream is spoiled by what was before, the second is right.
    const sim::AudioStream stream = NoiseStream(2);
    StreamAndHear(1, stream);
    const auto good = DecodedAudio(stream);
    const auto heard = ZoneAudio().Samples(kController, 1);
    EXPECT_EQ(std::vector(good.end() - 2048, good.end()), std::vector(heard.end() - 2048, heard.end()));
}

TEST_F(ZoneMonitorHostileTest, AShortDatagramIsNotFilledUpFromTheOneBefore) {
    Monitor(1);
    StreamAndHear(1, NoiseStream(1, 357));
    sim::Bytes datagram = Datagrams(NoiseStream(1, 357, 2)).at(0);
    datagram.resize(18 + 100);
    Send(datagram);
    ASSERT_TRUE(ZoneAudio().WaitFor(kController, 1, 2));
    auto expected = DecodedAudio(NoiseStream(1, 357, 2));
    std::fill(expected.begin() + 50, expected.end(), std::int16_t{0});
    const auto heard = ZoneAudio().Samples(kController, 1);
    EXPECT_EQ(expected, std::vector(heard.end() - 882, heard.end()));
}

TEST_F(ZoneMonitorHostileTest, TheLongestTypeIsReceivedWhole) {
    Monitor(1);
    const sim::AudioStream stream = NoiseStream(2, 354);
    EXPECT_EQ(4124U, Datagrams(stream).at(0).size());
    StreamAndHear(1, stream);
    EXPECT_EQ(std::vector(stream.pcm.begin(), stream.pcm.begin() + 4096), ZoneAudio().Samples(kController, 1));
}

} // namespace
} // namespace k740::test
