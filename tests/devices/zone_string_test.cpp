#include "devices/zone_string.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace k740::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ZoneStringTest, IsSplitAtItsSeparatorsAndAFinalOneAddsNothing) {
    EXPECT_THAT(SplitZoneString("0001FF;0002FF"), ElementsAre("0001FF", "0002FF"));
    EXPECT_THAT(SplitZoneString("0001FF;0002FF;"), ElementsAre("0001FF", "0002FF"));
    EXPECT_THAT(SplitZoneString("0001FF;;0002FF"), ElementsAre("0001FF", "", "0002FF"));
    EXPECT_THAT(SplitZoneString(""), IsEmpty());
}

TEST(ZoneStringTest, ItemIsFourDigitsOfTheIDAndTwoOfTheMaskInHexadecimal) {
    const ZoneItem item = ParseZoneItem("001080");
    EXPECT_EQ(16, item.deviceID);
    EXPECT_EQ(0x80U, item.mask);
    EXPECT_EQ(65535, ParseZoneItem("FFFFFF").deviceID);
    EXPECT_EQ(0xABU, ParseZoneItem("0001ab").mask);
}

TEST(ZoneStringTest, WhatIsNoNumberIsZero) {
    EXPECT_EQ(0, ParseZoneItem("XYZWFF").deviceID);
    EXPECT_EQ(0U, ParseZoneItem("0001XY").mask);
    EXPECT_EQ(0, ParseZoneItem("").deviceID);
    EXPECT_EQ(0U, ParseZoneItem("0001").mask);
}

TEST(ZoneStringTest, NumbersAreReadAsLenientlyAsTheCLibraryDoes) {
    EXPECT_EQ(31, ParseZoneItem("0x1FFF").deviceID);
    EXPECT_EQ(1U, ParseZoneItem("00011G").mask);
    EXPECT_EQ(-1, ParseZoneItem("-001FF").deviceID);
}

TEST(ZoneStringTest, EveryZoneOfAControllerIsItsIDAndAFullMask) {
    EXPECT_EQ("00FFFF;", EveryZoneOf(255));
    EXPECT_EQ("0001FF;", EveryZoneOf(1));
    EXPECT_EQ("03E7FF;", EveryZoneOf(999));
}

} // namespace
} // namespace k740::test
