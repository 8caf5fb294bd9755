#include "tests/devices/registry_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace k740::test {
namespace {

/// Controllers 1 (type 1), 16 (type 0) and 900 (type 9), in the order 16, 900, 1, and devices that are none.
class ZoneValidityTest : public OnRegistry {
protected:
    ZoneValidityTest() {
        m_devices.AddDevice(16, 0, "10.0.0.16");
        m_devices.AddDevice(5000, 2, "10.0.0.50");
        m_devices.AddDevice(900, 9, "");
        m_devices.AddDevice(5, 5, "10.0.0.5");
        m_devices.AddDevice(1, 1, "10.0.0.1");
    }
    int IsValid(const std::string& zones) {
        m_zones = zones;
        return m_devices.IsZoneStringValid(m_zones);
    }
    std::string m_zones; // as the last check has left it
};

TEST_F(ZoneValidityTest, AllZonesNamesZoneControllersOfEveryKindInTableOrder) {
    EXPECT_EQ("0010FF;0384FF;0001FF;", m_devices.GetAllZones());
    m_devices.GetDeviceList();
    EXPECT_EQ("0001FF;0010FF;0384FF;", m_devices.GetAllZones());
}

TEST_F(ZoneValidityTest, AnItemOfARegisteredControllerIsValid) {
    for (const char* zones : {"0001FF", "000101", "000180;", "001003", "038401", "0001FF;001003;"}) {
        EXPECT_EQ(1, IsValid(zones)) << zones;
        EXPECT_EQ(zones, m_zones);
    }
}

TEST_F(ZoneValidityTest, UnknownControllersAreAllowedBesideAKnownOne) {
    EXPECT_EQ(1, IsValid("0001FF;9999FF"));
    EXPECT_EQ(1, IsValid("9999FF;0001FF"));
    EXPECT_EQ(1, IsValid("9999FF;FFFFFF;0001FF")); // as one of several it is controller 65535
    EXPECT_EQ(0, IsValid("9999FF"));
    EXPECT_EQ(0, IsValid("9999FF;0002FF"));
}

TEST_F(ZoneValidityTest, DevicesThatAreNoZoneControllersDoNotCount) {
    EXPECT_EQ(0, IsValid("1388FF")); // 5000
    EXPECT_EQ(0, IsValid("0005FF"));
}

TEST_F(ZoneValidityTest, EveryItemHasSixCharacters) {
    for (const char* zones : {"0001FF;0002", "0001F", "0001FF1", "0001FF;0002FFF", "0001FF;;0010FF", ";0001FF",
                              "0001FF; 0010FF", "0001FF;;", ";", "\t0001FF", "0001FF\n"}) {
        EXPECT_EQ(0, IsValid(zones)) << zones;
    }
}

TEST_F(ZoneValidityTest, EveryMaskIsANumberOtherThanZero) {
    for (const char* zones : {"000100", "0001FF;000200", "0001XY", "0001FF;9999GG"}) {
        EXPECT_EQ(0, IsValid(zones)) << zones;
    }
}

TEST_F(ZoneValidityTest, LenientNumbersAreAllowed) {
    EXPECT_EQ(1, IsValid("00011G"));
    EXPECT_EQ(1, IsValid("0x10FF"));
    EXPECT_EQ(1, IsValid("0001FF;-001FF"));
}

TEST_F(ZoneValidityTest, BlanksAroundAreDroppedForGood) {
    EXPECT_EQ(1, IsValid("   0001FF;  "));
    EXPECT_EQ("0001FF;", m_zones);
    EXPECT_EQ(0, IsValid("  9999FF "));
    EXPECT_EQ("9999FF", m_zones);
}

TEST_F(ZoneValidityTest, EveryZoneOfEveryControllerIsExpanded) {
    for (const char* zones : {"FFFFFF", "FFFFFF;", "  FFFFFF; "}) {
        EXPECT_EQ(1, IsValid(zones)) << zones;
        EXPECT_EQ("0010FF;0384FF;0001FF;", m_zones);
    }
}

TEST_F(ZoneValidityTest, LowerCaseIsNotExpanded) {
    EXPECT_EQ(0, IsValid("ffffff"));
}

TEST_F(ZoneValidityTest, WithoutControllersEveryZoneIsNoZone) {
    for (int id : {1, 16, 900}) { m_devices.RemoveDevice(id); }
    EXPECT_EQ(0, IsValid("FFFFFF"));
    EXPECT_EQ("", m_zones);
}

TEST_F(ZoneValidityTest, EmptyTextsAreInvalid) {
    EXPECT_EQ(0, IsValid(""));
    EXPECT_EQ(0, IsValid("    "));
}

TEST_F(ZoneValidityTest, TextsHave102400CharactersAtMost) {
    std::string longest;
    while (longest.size() < 102'400 - 7) { longest += "0001FF;"; }
    EXPECT_EQ(102'396U, longest.size());
    EXPECT_EQ(1, IsValid(longest));
    EXPECT_EQ(1, IsValid(longest + "    "));
    // No valid text ends exactly at the bound, so the text is told from an over-long one by its items alone.
    EXPECT_EQ(0, IsValid(longest + "0001"));
    EXPECT_EQ(0, IsValid(longest + "0001F"));
    EXPECT_EQ(0, IsValid(longest + "0001FF"));
    EXPECT_EQ(0, IsValid(longest + "0001FF;"));
}

} // namespace
} // namespace k740::test
