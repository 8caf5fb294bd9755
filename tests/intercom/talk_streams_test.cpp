// The buffers of outgoing audio.
#include "intercom/talk_streams.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <vector>

namespace k740::test {
namespace {

using Block = std::vector<unsigned char>;

Block Counting(std::size_t length) {
    Block block(length);
    std::iota(block.begin(), block.end(), static_cast<unsigned char>(0));
    return block;
}

class TalkStreamsTest : public ::testing::Test {
protected:
    int Push(int intercomID, const Block& block) {
        return m_streams.Push(intercomID, block.data(), block.size(), [] { return 0; });
    }
    int Push(int intercomID, std::size_t length) { return Push(intercomID, Block(length, 1)); }
    int Take(std::size_t length) {
        Block out(length);
        return m_streams.Take(1, out.data(), length);
    }

    CTalkStreams m_streams;
};

TEST_F(TalkStreamsTest, FirstBlockMustBeSmallerThanTheBuffer) {
    EXPECT_EQ(-3, Push(1, 1'048'577));
    EXPECT_EQ(-3, Push(1, 1'048'576));
    EXPECT_EQ(-1, m_streams.Remove(1)) << "a refused block makes no buffer";
    EXPECT_EQ(0, Push(1, 1'048'575));
}

TEST_F(TalkStreamsTest, BufferThatIsThereMayBeFilledToTheBrim) {
    EXPECT_EQ(0, Push(1, 1'048'575));
    EXPECT_EQ(-3, Push(1, 2));
    EXPECT_EQ(0, Push(1, 1));
    EXPECT_EQ(-3, Push(1, 1));
}

TEST_F(TalkStreamsTest, EmptyBufferTakesAWholeOneAtOnce) {
    EXPECT_EQ(0, Push(1, 1));
    EXPECT_EQ(0, Take(1));
    EXPECT_EQ(-3, Push(1, 1'048'577));
    EXPECT_EQ(0, Push(1, 1'048'576));
    EXPECT_EQ(0, Take(1'048'576));
}

TEST_F(TalkStreamsTest, HugeLengthDoesNotWrap) {
    EXPECT_EQ(0, Push(1, 100));
    const Block block(1);
    EXPECT_EQ(-3, m_streams.Push(1, block.data(), 0xFFFFFFFF, [] { return 0; }));
    EXPECT_EQ(-3, m_streams.Push(2, block.data(), 0x7FFFFFFF, [] { return 0; }));
}

TEST_F(TalkStreamsTest, RefusedBlockLeavesTheBufferUnchanged) {
    EXPECT_EQ(0, Push(1, Counting(10)));
    EXPECT_EQ(-3, Push(1, 1'048'576));
    EXPECT_EQ(0, Take(10));
    EXPECT_EQ(-1, Take(1));
}

TEST_F(TalkStreamsTest, AudioComesOutInItsOrder) {
    EXPECT_EQ(0, Push(1, Counting(100)));
    EXPECT_EQ(0, Push(1, Counting(50)));
    Block first(120);
    EXPECT_EQ(0, m_streams.Take(1, first.data(), first.size()));
    Block expected = Counting(100);
    const Block more = Counting(20);
    expected.insert(expected.end(), more.begin(), more.end());
    EXPECT_EQ(expected, first);
    EXPECT_EQ(-1, Take(31));
    EXPECT_EQ(0, Take(30));
}

TEST_F(TalkStreamsTest, NothingIsTakenWhenThereIsTooLittle) {
    EXPECT_EQ(-1, Take(1)) << "no buffer";
    EXPECT_EQ(0, Push(1, 4'095));
    Block out(4'096, 0xEE);
    EXPECT_EQ(-1, m_streams.Take(1, out.data(), out.size()));
    EXPECT_EQ(Block(4'096, 0xEE), out);
    EXPECT_EQ(0, Push(1, 1));
    EXPECT_EQ(0, m_streams.Take(1, out.data(), out.size()));
    EXPECT_EQ(Block(4'096, 1), out);
}

TEST_F(TalkStreamsTest, WhatIsNotAllowedIsNotQueued) {
    const Block block(10);
    EXPECT_EQ(-2, m_streams.Push(1, block.data(), block.size(), [] { return -2; }));
    EXPECT_EQ(-1, m_streams.Remove(1));
}

TEST_F(TalkStreamsTest, RemovingForgetsTheAudioOfThatIntercom) {
    EXPECT_EQ(-1, m_streams.Remove(1));
    EXPECT_EQ(0, Push(1, 10));
    EXPECT_EQ(0, Push(2, 10));
    EXPECT_EQ(0, m_streams.Remove(2));
    EXPECT_EQ(-1, m_streams.Remove(2));
    EXPECT_EQ(0, Take(10));
}

TEST_F(TalkStreamsTest, The1025thBufferTakesThePlaceOfTheOldest) {
    for (int intercomID = 1; intercomID <= 1'024; ++intercomID) { ASSERT_EQ(0, Push(intercomID, 1)); }
    EXPECT_EQ(0, Take(1)) << "the first is still there";
    EXPECT_EQ(0, Push(1, 1));
    EXPECT_EQ(0, Push(1'025, 1));
    EXPECT_EQ(-1, m_streams.Remove(1));
    EXPECT_EQ(0, m_streams.Remove(2));
    EXPECT_EQ(0, m_streams.Remove(1'025));
}

} // namespace
} // namespace k740::test
