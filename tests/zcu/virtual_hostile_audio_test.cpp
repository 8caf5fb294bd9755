// Audio datagrams that nobody should send.
#include "sim/audio_encoder.h"
#include "tests/support/noise.h"
#include "tests/zcu/virtual_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace k740::test {
namespace {

using sim::Bytes;

constexpr std::size_t kLongest = 5120;
constexpr std::size_t kTypeOffset = 14;

/// A datagram of a type and any length, whose payload and state block are out of every range.
Bytes Hostile(std::uint16_t type, std::size_t length) {
    Bytes bytes(kLongest, 0xFF);
    bytes[kTypeOffset] = static_cast<std::uint8_t>(type);
    bytes[kTypeOffset + 1] = static_cast<std::uint8_t>(type >> 8);
    bytes.resize(length);
    return bytes;
}

/// All lengths about which a receiver could be wrong, and some between them.
std::vector<std::size_t> Lengths() {
    std::vector<std::size_t> lengths;
    for (std::size_t length = 1; length <= 40; ++length) { lengths.push_back(length); }
    for (const std::size_t end : {18U + 441, 28U + 441, 540U, 18U + 882, 28U + 882, 1042U, 1052U, 1472U, 18U + 1764,
                                  28U + 1764, 18U + 3528, 28U + 3528, 4096U, 18U + 4096, 28U + 4096}) {
        for (std::size_t length = end - 1; length <= end + 1; ++length) { lengths.push_back(length); }
    }
    for (std::size_t length = 64; length < kLongest; length += 397) { lengths.push_back(length); }
    lengths.insert(lengths.end(), {kLongest - 1, kLongest});
    return lengths;
}

class VirtualHostileAudioTest : public VirtualTest, public ::testing::WithParamInterface<std::uint16_t> {
protected:
    /// Audio that is known again, behind whatever was sent before it.
    void SendMarker() {
        sim::AudioEncoder encoder(kClient, 1, 353);
        m_marker = Noise(encoder.SamplesPerDatagram(), 77);
        m_client.SendRaw(sim::Pack(encoder.Encode(m_marker)), kGroup);
    }
    [[nodiscard]] bool WaitForMarker() const {
        const Bytes expected = sim::ByteWriter().PutAll(m_marker).Get();
        return RecordingHost::Get().trainAudio.WaitFor([&](const auto& call) { return call.audio == expected; });
    }

private:
    std::vector<std::int16_t> m_marker;
};

TEST_P(VirtualHostileAudioTest, EveryLengthIsAudioOfItsTypeOrNothing) {
    const auto format = sim::FormatOf(GetParam());
    std::size_t expected = 0;
    Play();
    for (const std::size_t length : Lengths()) {
        m_client.SendRaw(Hostile(GetParam(), length), kGroup);
        if (format && length >= kTypeOffset + 2) { ++expected; }
    }
    SendMarker();
    ASSERT_TRUE(WaitForMarker());
    const auto calls = RecordingHost::Get().trainAudio.All();
    EXPECT_EQ(expected + 1, calls.size());
    for (std::size_t i = 0; i + 1 < calls.size(); ++i) { EXPECT_EQ(calls[0].audio.size(), calls[i].audio.size()); }
    EXPECT_EQ(0U, CountMessages(2)) << "it goes on playing";
}

INSTANTIATE_TEST_SUITE_P(OfType, VirtualHostileAudioTest,
                         ::testing::Values(0, 340, 341, 342, 343, 344, 345, 346, 352, 353, 354, 355, 356, 357, 358, 359,
                                           360, 361, 0xFFFF),
                         ::testing::PrintToStringParamName());

TEST_F(VirtualHostileAudioTest, AnEndOfStreamOfAnyLengthIsOneFromTheTypeOn) {
    Play();
    for (const std::size_t length : {1U, 15U}) { m_client.SendRaw(Hostile(sim::kEndOfStreamType, length), kGroup); }
    SendMarker();
    ASSERT_TRUE(WaitForMarker());
    std::size_t ends = 0;
    for (const std::size_t length : {16U, 17U, 18U, 539U, 540U, 1051U, 1052U, 4124U, 5119U, 5120U}) {
        m_client.SendRaw(Hostile(sim::kEndOfStreamType, length), kGroup);
        EXPECT_TRUE(WaitForMessage(2, ++ends)) << length;
        EXPECT_TRUE(WaitUntil([] { return MembersOf(kGroup.ip) == 0; }));
        Play();
    }
}

} // namespace
} // namespace k740::test
