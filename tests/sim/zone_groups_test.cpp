#include "sim/address.h"
#include "sim/zone_groups.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace k740::sim {
namespace {

Bytes Part(const Bytes& bytes, std::ptrdiff_t from, std::ptrdiff_t size) {
    return {bytes.begin() + from, bytes.begin() + from + size};
}

TEST(ZoneGroupsTest, HardwareBeginsWithEightEntriesFirstOctetOnTop) {
    ZoneGroups groups;
    groups.Set(1, "225.1.2.3", 28100);
    groups.Set(8, "239.0.0.255", 0x01020304);
    const Bytes payload = groups.Payload();
    ASSERT_EQ(65U, payload.size());
    EXPECT_EQ((Bytes{3, 2, 1, 225, 0xC4, 0x6D, 0, 0}), Part(payload, 0, 8));
    EXPECT_EQ(Bytes(48), Part(payload, 8, 48));
    EXPECT_EQ((Bytes{255, 0, 0, 239, 4, 3, 2, 1, 0}), Part(payload, 56, 9));
}

TEST(ZoneGroupsTest, VirtualControllersPutAOneBefore) {
    ZoneGroups groups;
    groups.SetLayout(ZoneGroupLayout::Virtual);
    groups.Set(1, "225.1.2.3", 28100);
    const Bytes payload = groups.Payload();
    ASSERT_EQ(65U, payload.size());
    EXPECT_EQ((Bytes{1, 3, 2, 1, 225, 0xC4, 0x6D, 0, 0}), Part(payload, 0, 9));
    EXPECT_EQ(Bytes(56), Part(payload, 9, 56));
}

TEST(ZoneGroupsTest, GroupIsClearedByAnEmptyTextOrZero) {
    ZoneGroups groups;
    for (const std::string none : {"", "0.0.0.0"}) {
        groups.Set(2, "225.1.2.3", 28100);
        EXPECT_EQ("225.1.2.3", groups.GroupOf(2));
        groups.Set(2, none, 0);
        EXPECT_EQ("0.0.0.0", groups.GroupOf(2));
        EXPECT_EQ(Bytes(65), groups.Payload());
    }
}

TEST(ZoneGroupsTest, OnlyZonesOneToEightHaveAGroup) {
    ZoneGroups groups;
    EXPECT_THROW(groups.Set(0, "225.1.2.3", 0), std::out_of_range);
    EXPECT_NO_THROW(groups.Set(8, "225.1.2.3", 0));
    EXPECT_THROW(groups.Set(9, "225.1.2.3", 0), std::out_of_range);
    EXPECT_THROW(groups.Set(1, "225.1.2", 0), std::invalid_argument);
}

TEST(AddressTest, TextAndNumberAreEachOthersInverse) {
    EXPECT_EQ(0xE1010203U, AddressNumber("225.1.2.3"));
    EXPECT_EQ("225.1.2.3", AddressText(0xE1010203));
    EXPECT_EQ("255.255.255.255", AddressText(AddressNumber("255.255.255.255")));
}

} // namespace
} // namespace k740::sim
