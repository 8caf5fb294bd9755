// Reading the group of a zone out of a controller's answer.
#include "monitor/zone_multicast.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace k740::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kAnswerBytes = 65;

/// An answer that is zero but for the bytes at an offset.
tagQUERY_ZONE_MCAST_IP_RSP Answer(std::size_t offset, const Bytes& bytes, std::uint8_t first = 0) {
    Bytes payload(kAnswerBytes);
    payload[0] = first;
    std::copy(bytes.begin(), bytes.end(), payload.begin() + static_cast<std::ptrdiff_t>(offset));
    tagQUERY_ZONE_MCAST_IP_RSP answer{};
    std::memcpy(&answer, payload.data(), payload.size());
    return answer;
}

const Bytes kEntry{5, 4, 3, 225, 0xC4, 0x6D, 1, 2}; // 225.3.4.5 and a word

TEST(ZoneMulticastTest, TheTableHasAnEntryOfEightBytesForEachZone) {
    for (std::uint32_t zone = 1; zone <= 8; ++zone) {
        const _zone_mcast_t multicast = ZoneMulticast(Answer(8 * (zone - 1), kEntry), zone);
        EXPECT_EQ(0xE1030405U, multicast.group) << zone;
        EXPECT_EQ(0x02016DC4U, multicast.uninterpreted) << zone;
    }
}

TEST(ZoneMulticastTest, BehindALeadingOneTheTableBeginsAByteLater) {
    for (std::uint32_t zone = 1; zone <= 8; ++zone) {
        const _zone_mcast_t multicast = ZoneMulticast(Answer(8 * (zone - 1) + 1, kEntry, 1), zone);
        EXPECT_EQ(0xE1030405U, multicast.group) << zone;
        EXPECT_EQ(0x02016DC4U, multicast.uninterpreted) << zone;
    }
}

TEST(ZoneMulticastTest, WithoutALeadingOneNoEntryIsReadAByteLater) {
    for (const std::uint8_t first : Bytes{0, 2, 255}) {
        EXPECT_EQ(0U, ZoneMulticast(Answer(1, kEntry, first), 1).group);
        EXPECT_EQ(0U, ZoneMulticast(Answer(57, kEntry, first), 8).group);
    }
}

TEST(ZoneMulticastTest, ATableWithoutALeadingOneIsPreferred) {
    EXPECT_EQ(0xE1030401U, ZoneMulticast(Answer(0, {1, 4, 3, 225, 226, 0, 0, 0}), 1).group);
}

TEST(ZoneMulticastTest, OnlyMulticastAddressesAreGroups) {
    for (const std::uint8_t octet : Bytes{0, 192, 223, 240, 255}) {
        EXPECT_EQ(0U, ZoneMulticast(Answer(0, {5, 4, 3, octet, 9, 9, 9, 9}), 1).group) << int(octet);
        EXPECT_EQ(0U, ZoneMulticast(Answer(1, {5, 4, 3, octet, 9, 9, 9, 9}, 1), 1).uninterpreted) << int(octet);
    }
    EXPECT_EQ(0xE0030405U, ZoneMulticast(Answer(0, {5, 4, 3, 224, 0, 0, 0, 0}), 1).group);
    EXPECT_EQ(0xEF030405U, ZoneMulticast(Answer(0, {5, 4, 3, 239, 0, 0, 0, 0}), 1).group);
}

} // namespace
} // namespace k740::test
