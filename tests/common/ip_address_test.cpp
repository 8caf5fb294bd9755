#include "common/ip_address.h"

#include <gtest/gtest.h>

#include <climits>

namespace k740::test {
namespace {

TEST(IsIPValidTest, OnlyTheFirstOctetCounts) {
    for (const char* ip : {"10.1.1.1", "1.2.3.4", "192.168.1.300", "1.1.1.1", "126.0.0.1", "128.0.0.1", "223.1.1.1",
                           "240.0.0.1", "255.255.255.255", "12.zones"}) {
        EXPECT_TRUE(IsIPValid(ip)) << ip;
    }
}

TEST(IsIPValidTest, FirstOctetsThatNoDeviceHas) {
    for (const char* ip :
         {"0.1.2.3", "127.0.0.1", "224.0.0.1", "239.255.255.255", "256.1.1.1", "999.1.1.1", "abcdef", "......"}) {
        EXPECT_FALSE(IsIPValid(ip)) << ip;
    }
}

TEST(IsIPValidTest, ShorterThan6CharactersIsRefused) {
    EXPECT_FALSE(IsIPValid(""));
    EXPECT_FALSE(IsIPValid("1.2."));
    EXPECT_FALSE(IsIPValid("1.2.3"));
    EXPECT_TRUE(IsIPValid("1.2.3."));
}

TEST(IsIPValidTest, FirstOctetIsReadAsAtoiReadsThreeCharacters) {
    EXPECT_TRUE(IsIPValid("-5.1.1.1"));
    EXPECT_TRUE(IsIPValid(" 10.1.1.1"));
    EXPECT_FALSE(IsIPValid("   10.1.1"));
    EXPECT_FALSE(IsIPValid("1270.1"));
}

TEST(IsMulticastIPValidTest, FirstOctet224To239) {
    EXPECT_EQ(0, IsMulticastIPValid("224.0.0.1"));
    EXPECT_EQ(0, IsMulticastIPValid("225.0.0.1"));
    EXPECT_EQ(0, IsMulticastIPValid("239.255.255.250"));
    for (const char* ip : {"223.0.0.1", "240.0.0.1", "0.0.0.0.0", "127.0.0.1", "192.168.1.1", "1.1.1.1"}) {
        EXPECT_EQ(-1, IsMulticastIPValid(ip)) << ip;
    }
}

TEST(IsMulticastIPValidTest, At9CharactersItBegins) {
    EXPECT_EQ(-1, IsMulticastIPValid(""));
    EXPECT_EQ(-1, IsMulticastIPValid("225.1.1"));
    EXPECT_EQ(-1, IsMulticastIPValid("225.1.1."));
    EXPECT_EQ(0, IsMulticastIPValid("225.1.1.1"));
    EXPECT_EQ(0, IsMulticastIPValid("225.1.1.10"));
}

TEST(IsMulticastIPValidTest, BlanksAroundItDoNotCount) {
    EXPECT_EQ(0, IsMulticastIPValid("  239.1.1.1 "));
    EXPECT_EQ(-1, IsMulticastIPValid(" 225.1.1 "));
}

TEST(ConvertIPTest, MostSignificantByteFirst) {
    EXPECT_EQ(0xC0A80102U, ConvertIPToDWORD("192.168.1.2"));
    EXPECT_EQ("192.168.1.2", ConvertIPToString(0xC0A80102U));
}

TEST(ConvertIPTest, ThereAndBackAgain) {
    for (const char* ip : {"0.0.0.0", "255.255.255.255", "225.0.0.1", "10.200.30.4"}) {
        EXPECT_EQ(ip, ConvertIPToString(ConvertIPToDWORD(ip)));
    }
}

TEST(ConvertIPTest, FewerThanThreeDotsIsZero) {
    for (const char* ip : {"", "1", "1.2", "1.2.3", "192.168.1"}) { EXPECT_EQ(0U, ConvertIPToDWORD(ip)) << ip; }
}

TEST(ConvertIPTest, PartsAreNotChecked) {
    EXPECT_EQ(0x0102032CU, ConvertIPToDWORD("1.2.3.300")); // 300 is 0x12C, whose 1 meets the 3
    EXPECT_EQ(0x01020304U, ConvertIPToDWORD("1.2.3.4.5")); // the fourth part is all the rest
    EXPECT_EQ(0x00000004U, ConvertIPToDWORD("...4"));
    EXPECT_EQ(0xFFFFFFFFU, ConvertIPToDWORD("1.2.3.-1"));
}

TEST(DeviceTypeTest, RangesOfIDs) {
    for (const int id : {1, 2, 999}) { EXPECT_EQ(1, GetDevTypeFromDevID(id)); }
    for (const int id : {5000, 5999}) { EXPECT_EQ(2, GetDevTypeFromDevID(id)); }
    for (const int id : {7000, 7999}) { EXPECT_EQ(3, GetDevTypeFromDevID(id)); }
    for (const int id : {INT_MIN, -1, 0, 1000, 4999, 6000, 6999, 8000, 9500, INT_MAX}) {
        EXPECT_EQ(-1, GetDevTypeFromDevID(id)) << id;
    }
}

} // namespace
} // namespace k740::test
