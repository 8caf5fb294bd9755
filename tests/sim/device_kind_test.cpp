#include "sim/device_kind.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace k740::sim {
namespace {

using ::testing::HasSubstr;

std::string Refusal(Roster& roster, DeviceKind kind, std::uint32_t id, const std::string& address) {
    try {
        roster.Add(kind, id, address);
    } catch (const std::invalid_argument& error) { return error.what(); }
    return "";
}

TEST(RosterTest, EachKindHasItsRangeOfIds) {
    struct Range {
        DeviceKind kind;
        std::uint32_t first;
        std::uint32_t last;
    };
    for (const auto& [kind, first, last] :
         {Range{DeviceKind::ZoneController, 1, 999}, Range{DeviceKind::PagingStation, 5000, 5999},
          Range{DeviceKind::AuxInterface, 7000, 7999}, Range{DeviceKind::Client, 9500, 9999}}) {
        Roster roster;
        EXPECT_THAT(Refusal(roster, kind, first - 1, "192.168.1.1"), HasSubstr("the ID is not in"));
        EXPECT_EQ("", Refusal(roster, kind, first, "192.168.1.1"));
        EXPECT_EQ("", Refusal(roster, kind, last, "192.168.1.2"));
        EXPECT_THAT(Refusal(roster, kind, last + 1, "192.168.1.3"), HasSubstr("the ID is not in"));
        EXPECT_EQ(kind, roster.KindOf(last));
    }
}

TEST(RosterTest, NoIdAndNoAddressIsThereTwice) {
    Roster roster;
    roster.Add(DeviceKind::ZoneController, 33, "192.168.1.33");
    EXPECT_EQ("zone controller 33: the ID is there twice",
              Refusal(roster, DeviceKind::ZoneController, 33, "192.168.1.34"));
    EXPECT_EQ("paging station 5000: another device has the address 192.168.1.33",
              Refusal(roster, DeviceKind::PagingStation, 5000, "192.168.1.33"));
    EXPECT_FALSE(roster.KindOf(5000));
}

TEST(RosterTest, AddressesOfDevicesAreUnicast) {
    Roster roster;
    for (const char* bad : {"", "192.168.1", "192.168.1.256", "224.0.0.1", "0.0.0.0", "host"}) {
        EXPECT_NE("", Refusal(roster, DeviceKind::ZoneController, 33, bad)) << bad;
    }
}

} // namespace
} // namespace k740::sim
