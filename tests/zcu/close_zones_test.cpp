// Silencing zones, as a host asks for it.
#include "tests/zcu/controller_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace k740::test {
namespace {

using sim::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Bytes CloseZones(int id, std::uint8_t mask) {
    return RequestBytes(id, 0x0102, {mask, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
}

using CloseZonesTest = ControllerTest;

TEST_F(CloseZonesTest, EveryItemIsARequestToItsController) {
    EXPECT_EQ(0, K740_CloseZones("0021FF;002203;002101"));
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0102), ElementsAre(CloseZones(kV3, 0xFF), CloseZones(kV3, 1)));
    EXPECT_THAT(RequestsUntilNow(kV2, 0x0102), ElementsAre(CloseZones(kV2, 3)));
}

TEST_F(CloseZonesTest, AFinalSeparatorAndBlanksAroundAreDropped) {
    EXPECT_EQ(0, K740_CloseZones("  002180; "));
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0102), ElementsAre(CloseZones(kV3, 0x80)));
}

TEST_F(CloseZonesTest, EveryZoneIsEveryZoneOfEveryController) {
    EXPECT_EQ(0, K740_CloseZones("FFFFFF"));
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0102), ElementsAre(CloseZones(kV3, 0xFF)));
    EXPECT_THAT(RequestsUntilNow(kV2, 0x0102), ElementsAre(CloseZones(kV2, 0xFF)));
}

TEST_F(CloseZonesTest, ItemsOfUnknownControllersAreSkipped) {
    EXPECT_EQ(0, K740_CloseZones("03E7FF;0021FF;1388FF;FFFF01"));
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0102), ElementsAre(CloseZones(kV3, 0xFF)));
}

TEST_F(CloseZonesTest, MasksThatReadAsMoreThan255AreSkipped) {
    EXPECT_EQ(0, K740_CloseZones("0021-1;0021FF")); // "-1" reads as the largest number
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0102), ElementsAre(CloseZones(kV3, 0xFF)));
}

TEST_F(CloseZonesTest, BadZonesAreRefusedAndNothingIsSentOrLogged) {
    EXPECT_EQ(-1, K740_CloseZones(nullptr));
    for (const char* zones : {"", " ", ";", "0021F", "0021FFF", "002100", "0021FF;0", "03E7FF", "0021FF;;002101"}) {
        EXPECT_EQ(-1, K740_CloseZones(zones)) << zones;
    }
    EXPECT_EQ(-1, K740_CloseZones(std::string(200'000, 'F').c_str()));
    EXPECT_EQ(0, K740_CloseZones("002101"));
    EXPECT_THAT(RequestsUntilNow(kV3, 0x0102), ElementsAre(CloseZones(kV3, 1)));
    EXPECT_TRUE(WaitForExactLine("K740_CloseZones('002101')"));
    EXPECT_EQ(1, CountLogLines("CloseZones"));
}

TEST_F(CloseZonesTest, TheLogHasTheTextOfTheHost) {
    EXPECT_EQ(0, K740_CloseZones(" FFFFFF;"));
    EXPECT_TRUE(WaitForExactLine("K740_CloseZones(' FFFFFF;')"));
}

} // namespace
} // namespace k740::test
