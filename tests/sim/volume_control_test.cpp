#include "sim/volume_control.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace k740::sim {
namespace {

Packet Request(std::uint16_t command, const Bytes& payload = {}) {
    return MakePacket(9500, 33, command, payload);
}

VolumeControl V2With(const Bytes& levels) {
    VolumeControl volumes;
    volumes.SetGeneration(Generation::V2);
    volumes.SetLevels(levels);
    return volumes;
}

TEST(VolumeControlTest, VersionTwoTellsFourLevelsInSevenBytes) {
    const auto answer = V2With({0, 19, 255, 5}).Meet(Request(0x0127));
    ASSERT_TRUE(answer);
    EXPECT_EQ(0x8127, answer->command);
    EXPECT_EQ((Bytes{1, 0, 19, 255, 5, 0xEE, 0xEE}), answer->payload);
}

TEST(VolumeControlTest, VersionThreeTellsTenLevelsInTwelveBytes) {
    VolumeControl volumes;
    volumes.SetLevels({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    const auto answer = volumes.Meet(Request(0x0302));
    ASSERT_TRUE(answer);
    EXPECT_EQ(0x8302, answer->command);
    EXPECT_EQ((Bytes{1, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0xEE}), answer->payload);
}

TEST(VolumeControlTest, VersionTwoTakesOneLevelAndEchoesTheRequest) {
    VolumeControl volumes = V2With({1, 2, 3, 4});
    const auto answer = volumes.Meet(Request(0x0109, {3, 19}));
    ASSERT_TRUE(answer);
    EXPECT_EQ(0x8109, answer->command);
    EXPECT_EQ((Bytes{3, 19}), answer->payload);
    EXPECT_EQ((Bytes{1, 2, 3, 19}), volumes.Levels());
}

TEST(VolumeControlTest, VersionThreeTakesEightLevelsOf255LeavesThemAndEchoesTheRequest) {
    VolumeControl volumes;
    const Bytes payload{19, 255, 3, 255, 255, 255, 255, 8, 0xFF, 0xFF, 0xFF};
    const auto answer = volumes.Meet(Request(0x0301, payload));
    ASSERT_TRUE(answer);
    EXPECT_EQ(0x8301, answer->command);
    EXPECT_EQ(payload, answer->payload);
    EXPECT_EQ((Bytes{19, 0, 3, 0, 0, 0, 0, 8, 255, 255}), volumes.Levels());
}

TEST(VolumeControlTest, ChannelThatDoesNotExistStaysSo) {
    VolumeControl volumes = V2With({255, 2, 3, 4});
    EXPECT_TRUE(volumes.Meet(Request(0x0109, {0, 5})));
    EXPECT_TRUE(volumes.Meet(Request(0x0109, {4, 5})));
    EXPECT_EQ((Bytes{255, 2, 3, 4}), volumes.Levels());
}

TEST(VolumeControlTest, CodesOfTheOtherGenerationAreIgnored) {
    VolumeControl v2 = V2With({1, 2, 3, 4});
    EXPECT_FALSE(v2.Meet(Request(0x0301, Bytes(11, 7))));
    EXPECT_FALSE(v2.Meet(Request(0x0302)));
    EXPECT_EQ((Bytes{1, 2, 3, 4}), v2.Levels());
    VolumeControl v3;
    const Bytes before = v3.Levels();
    EXPECT_FALSE(v3.Meet(Request(0x0109, {0, 7})));
    EXPECT_FALSE(v3.Meet(Request(0x0127)));
    EXPECT_EQ(before, v3.Levels());
    EXPECT_FALSE(v3.Meet(Request(0x0125)));
}

TEST(VolumeControlTest, NumberOfLevelsFollowsTheGeneration) {
    VolumeControl volumes;
    EXPECT_THROW(volumes.SetLevels(Bytes(9)), std::invalid_argument);
    EXPECT_THROW(volumes.SetLevels(Bytes(11)), std::invalid_argument);
    volumes.SetGeneration(Generation::V2);
    EXPECT_EQ(Bytes(4), volumes.Levels());
    EXPECT_THROW(volumes.SetLevels(Bytes(10)), std::invalid_argument);
}

} // namespace
} // namespace k740::sim
