#include "common/stream_slot.h"
#include "sim/bytes.h"
#include "tests/support/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <string>
#include <thread>

namespace k740::test {
namespace {

using sim::Bytes;

constexpr int kOwner = 7;
constexpr std::size_t kCapacity = 10'000;

Bytes Some(std::size_t count, std::uint32_t seed = 1) {
    Bytes bytes;
    for (const std::int16_t sample : Noise(count, seed)) { bytes.push_back(static_cast<std::uint8_t>(sample)); }
    return bytes;
}

class StreamSlotTest : public ::testing::Test {
protected:
    StreamSlotTest() { EXPECT_TRUE(m_slot.New(kOwner, kCapacity)); }

    bool Push(const Bytes& bytes) { return m_slot.Push(kOwner, bytes.data(), bytes.size()); }
    Bytes Take(std::size_t count) {
        Bytes out(count);
        return m_slot.Take(kOwner, out.data(), count) ? out : Bytes{};
    }

    CStreamSlot m_slot;
};

TEST_F(StreamSlotTest, FirstInIsFirstOut) {
    EXPECT_TRUE(Push({1, 2, 3}));
    EXPECT_TRUE(Push({4, 5}));
    EXPECT_EQ((Bytes{1, 2}), Take(2));
    EXPECT_EQ((Bytes{3, 4, 5}), Take(3));
    EXPECT_EQ(0U, m_slot.Fill(kOwner));
}

TEST_F(StreamSlotTest, TakesAllThatWasAskedForOrNothing) {
    EXPECT_TRUE(Push({1, 2, 3}));
    EXPECT_EQ(Bytes{}, Take(4));
    EXPECT_EQ(3U, m_slot.Fill(kOwner));
    EXPECT_EQ((Bytes{1, 2, 3}), Take(3));
}

TEST_F(StreamSlotTest, IsFullAtItsCapacity) {
    EXPECT_TRUE(Push(Some(kCapacity - 1)));
    EXPECT_FALSE(Push(Some(2)));
    EXPECT_EQ(kCapacity - 1, m_slot.Fill(kOwner));
    EXPECT_TRUE(Push(Some(1)));
    EXPECT_EQ(kCapacity, m_slot.Fill(kOwner));
    EXPECT_FALSE(Push(Some(1)));
    EXPECT_EQ(kCapacity, m_slot.Fill(kOwner));
}

TEST_F(StreamSlotTest, ARefusedChunkLeavesWhatIsWaiting) {
    const Bytes waiting = Some(kCapacity - 5);
    EXPECT_TRUE(Push(waiting));
    EXPECT_FALSE(Push(Some(6, 2)));
    EXPECT_EQ(waiting, Take(waiting.size()));
}

TEST_F(StreamSlotTest, AWholeCapacityWrapsAroundItsEnd) {
    EXPECT_TRUE(Push(Some(9'000)));
    EXPECT_EQ(3'000U, Take(3'000).size()); // 6000 wait, more than is moved to the front
    const Bytes next = Some(4'000, 2);
    EXPECT_TRUE(Push(next));
    EXPECT_FALSE(Push({1}));
    EXPECT_EQ(6'000U, Take(6'000).size());
    EXPECT_EQ(next, Take(4'000));
}

TEST_F(StreamSlotTest, ItsOrderIsThatOfAQueueWhateverTheLengths) {
    std::deque<std::uint8_t> model;
    const std::vector<std::int16_t> lengths = Noise(4'000, 3);
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        const auto length = static_cast<std::size_t>(static_cast<std::uint16_t>(lengths[i])) % 4'097;
        if (i % 2 == 0) {
            const Bytes chunk = Some(length, static_cast<std::uint32_t>(i));
            ASSERT_EQ(model.size() + length <= kCapacity, Push(chunk)) << i;
            if (model.size() + length <= kCapacity) { model.insert(model.end(), chunk.begin(), chunk.end()); }
        } else if (length > 0) {
            const Bytes taken = Take(length);
            ASSERT_EQ(model.size() >= length, !taken.empty()) << i;
            ASSERT_TRUE(std::equal(taken.begin(), taken.end(), model.begin())) << i;
            model.erase(model.begin(), model.begin() + static_cast<std::ptrdiff_t>(taken.size()));
        }
        ASSERT_EQ(model.size(), m_slot.Fill(kOwner)) << i;
    }
}

TEST_F(StreamSlotTest, DoesNothingForAnotherOwner) {
    const Bytes chunk{1, 2};
    EXPECT_TRUE(Push(chunk));
    EXPECT_FALSE(m_slot.Push(kOwner + 1, chunk.data(), chunk.size()));
    Bytes out(2);
    EXPECT_FALSE(m_slot.Take(kOwner + 1, out.data(), 2));
    EXPECT_EQ(0U, m_slot.Fill(kOwner + 1));
    m_slot.Remove(kOwner + 1);
    EXPECT_EQ(chunk, Take(2));
}

TEST_F(StreamSlotTest, AnewItIsEmptyAndTheNewOwners) {
    EXPECT_TRUE(Push(Some(100)));
    EXPECT_TRUE(m_slot.New(kOwner + 1, 50));
    EXPECT_EQ(0U, m_slot.Fill(kOwner + 1));
    EXPECT_FALSE(Push({1}));
    EXPECT_FALSE(m_slot.Push(kOwner + 1, Some(51).data(), 51));
    EXPECT_TRUE(m_slot.Push(kOwner + 1, Some(50).data(), 50));
}

TEST_F(StreamSlotTest, OnceRemovedItHasNoRoomAndNoAudio) {
    EXPECT_TRUE(Push({1, 2}));
    m_slot.Remove(kOwner);
    EXPECT_FALSE(Push({1}));
    EXPECT_EQ(Bytes{}, Take(1));
    m_slot.Remove(kOwner);
}

TEST_F(StreamSlotTest, AChunkBeyondEveryCapacityIsRefused) {
    EXPECT_FALSE(m_slot.Push(kOwner, Some(1).data(), SIZE_MAX));
    EXPECT_TRUE(Push({1}));
    EXPECT_FALSE(m_slot.Push(kOwner, Some(1).data(), SIZE_MAX));
}

TEST_F(StreamSlotTest, WhatIsTakenUnderTheLockIsHandedOn) {
    EXPECT_TRUE(Push({1, 2, 3}));
    Bytes out(2);
    bool used = false;
    EXPECT_TRUE(m_slot.TakeAndUse(kOwner, out.data(), 2, [&] { used = out == Bytes{1, 2}; }));
    EXPECT_TRUE(used);
    EXPECT_FALSE(m_slot.TakeAndUse(kOwner, out.data(), 2, [] { FAIL(); }));
}

TEST_F(StreamSlotTest, ProducerAndConsumerMeetOnlyInTheLock) {
    const Bytes all = Some(500'000);
    std::thread producer([&] {
        for (std::size_t at = 0; at < all.size(); at += 1'000) {
            while (!m_slot.Push(kOwner, all.data() + at, 1'000)) { std::this_thread::yield(); }
        }
    });
    Bytes heard;
    while (heard.size() < all.size()) {
        const Bytes part = Take(std::min<std::size_t>(777, all.size() - heard.size()));
        heard.insert(heard.end(), part.begin(), part.end());
    }
    producer.join();
    EXPECT_EQ(all, heard);
}

} // namespace
} // namespace k740::test
