// The queue of received audio datagrams.
#include "app/application.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace k740::test {
namespace {

constexpr int kBound = 10'000;

/// An application whose threads do not run, so that nobody takes what is queued.
class ReceivedQueueTest : public ::testing::Test {
protected:
    void Queue(const std::vector<unsigned char>& datagram) {
        EXPECT_EQ(0, m_app->Talker().NewIntercomRPKAudio(datagram.data(), datagram.size()));
    }
    /// Queues datagrams that begin with their numbers, from 1 on.
    void QueueNumbers(int count) {
        for (int number = 1; number <= count; ++number) {
            unsigned char datagram[sizeof(number)];
            std::memcpy(datagram, &number, sizeof(number));
            m_app->Talker().NewIntercomRPKAudio(datagram, sizeof(datagram));
        }
    }
    tagINTERCOM_RPK_AUDIO Take(int expectedResult = 0) {
        tagINTERCOM_RPK_AUDIO datagram;
        std::memset(&datagram, 0xEE, sizeof(datagram));
        EXPECT_EQ(expectedResult, m_app->Talker().GetFirstIntercomRPKAudio(datagram));
        return datagram;
    }
    int TakeNumber() {
        int number = 0;
        std::memcpy(&number, Take().data, sizeof(number));
        return number;
    }

    const std::unique_ptr<CK740ControlApp> m_app = std::make_unique<CK740ControlApp>();
};

TEST_F(ReceivedQueueTest, EmptyQueueGivesZeros) {
    const tagINTERCOM_RPK_AUDIO datagram = Take(-1);
    EXPECT_TRUE(std::all_of(std::begin(datagram.data), std::end(datagram.data), [](int byte) { return byte == 0; }));
}

TEST_F(ReceivedQueueTest, DatagramsAreZeroBeyondTheirEndAndCutAt1300Bytes) {
    for (const std::size_t length : {1U, 1'052U, 1'299U, 1'300U, 1'301U, 5'120U}) {
        Queue(std::vector<unsigned char>(length, 7));
        const tagINTERCOM_RPK_AUDIO datagram = Take();
        static_assert(sizeof(datagram.data) == 1'300);
        EXPECT_EQ(std::min<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(length), 1'300),
                  std::count(std::begin(datagram.data), std::end(datagram.data), 7));
        EXPECT_EQ(length < 1'300 ? 0 : 7, datagram.data[1'299]);
    }
}

TEST_F(ReceivedQueueTest, OldestComesFirst) {
    QueueNumbers(3);
    EXPECT_EQ(1, TakeNumber());
    EXPECT_EQ(2, TakeNumber());
    EXPECT_EQ(3, TakeNumber());
    Take(-1);
}

TEST_F(ReceivedQueueTest, HoldsTenThousand) {
    QueueNumbers(kBound);
    for (int number = 1; number <= kBound; ++number) { ASSERT_EQ(number, TakeNumber()); }
    Take(-1);
}

TEST_F(ReceivedQueueTest, OneMoreDropsTheOldest) {
    QueueNumbers(kBound + 1);
    for (int number = 2; number <= kBound + 1; ++number) { ASSERT_EQ(number, TakeNumber()); }
    Take(-1);
}

} // namespace
} // namespace k740::test
