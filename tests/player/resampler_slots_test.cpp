#include "player/resampler_slots.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace k740::test {
namespace {

TEST(ResamplerSlotsTest, TheTwoHundredSlotsTakeResamplers) {
    CResamplerSlots slots;
    EXPECT_EQ(0, slots.InitResample(0, 8000, 44100, 1.0F));
    EXPECT_EQ(0, slots.InitResample(199, 22050, 44100, 1.0F));
}

TEST(ResamplerSlotsTest, OtherSlotsDoNot) {
    CResamplerSlots slots;
    EXPECT_EQ(-1, slots.InitResample(-1, 8000, 44100, 1.0F));
    EXPECT_EQ(-1, slots.InitResample(200, 8000, 44100, 1.0F));
    slots.UnInitResample(-1);
    slots.UnInitResample(200);
}

TEST(ResamplerSlotsTest, ARefusedRatioGivesMinusOneAndLeavesTheSlotEmpty) {
    CResamplerSlots slots;
    EXPECT_EQ(0, slots.InitResample(5, 22050, 44100, 1.0F));
    EXPECT_EQ(-1, slots.InitResample(5, 1000, 17000, 1.0F)); // a ratio of 17
    EXPECT_EQ(-1, slots.InitResample(5, 0, 44100, 1.0F));
    EXPECT_EQ(-1, slots.InitResample(5, 44100, -1, 1.0F));
    slots.UnInitResample(5);
}

TEST(ResamplerSlotsTest, AnExistingResamplerIsReplaced) {
    CResamplerSlots slots;
    for (int i = 0; i < 3; ++i) { EXPECT_EQ(0, slots.InitResample(7, 22050, 44100, 1.0F)); }
    slots.UnInitResample(7);
    slots.UnInitResample(7);
}

TEST(ResamplerSlotsTest, ThreadsMayShareTheSlots) {
    CResamplerSlots slots;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round) {
                slots.InitResample(round % 2, 22050, 44100, 1.0F);
                slots.UnInitResample(round % 2);
            }
        });
    }
    for (std::thread& thread : threads) { thread.join(); }
}

} // namespace
} // namespace k740::test
