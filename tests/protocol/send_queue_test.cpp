#include "app/application.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/wait_until.h"

#include <array>
#include <chrono>
#include <cstring>
#include <optional>
#include <thread>

namespace k740::test {
namespace {

using std::chrono::milliseconds;

constexpr int kController = 33;
constexpr int kUnknown = 34;

/// A datagram for a device. The first byte tells one from another; it is no command packet.
tagSEND_BUFFER Entry(int device, uint8_t mark, uint16_t length = 532) {
    tagSEND_BUFFER entry{};
    entry.deviceID = device;
    entry.length = length;
    std::memset(entry.data, mark, sizeof(entry.data));
    return entry;
}

/// Whether an event is the arrival of a datagram with this mark at the controller.
sim::EventFilter Arrival(uint8_t mark) {
    return [mark](const sim::Event& event) {
        return event.kind == sim::Event::Kind::Received && event.device == kController && !event.bytes.empty() &&
               event.bytes.front() == mark;
    };
}

/// The controller is registered before the library is initialised, so that entries may wait for the sender to start.
class SendQueueTest : public OnPrivateNetwork {
protected:
    SendQueueTest() {
        AddZoneController(kController, "192.168.1.33");
        EXPECT_EQ(0, g_app->Devices().AddDevice(kController, 1, "192.168.1.33"));
    }

    static void Queue(const tagSEND_BUFFER& entry) { g_app->Communication().AddSendBuffer(entry); }
    static void QueueDropped(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) { Queue(Entry(kUnknown, 0xEE)); }
    }
    std::optional<sim::Event> WaitFor(uint8_t mark, std::size_t count = 1) const {
        return Field().Events().WaitFor(Arrival(mark), kPatience, count);
    }
    std::size_t Count(uint8_t mark) const { return Field().Events().Count(Arrival(mark)); }
};

TEST_F(SendQueueTest, EntryIsSentToItsDeviceFromItsRegistrySocket) {
    ASSERT_EQ(0, K740_Initialize());
    Queue(Entry(kController, 1));
    Queue(Entry(kController, 2));
    const auto first = WaitFor(1);
    const auto second = WaitFor(2);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(sim::Bytes(532, 1), first->bytes);
    EXPECT_EQ(first->peer, second->peer);
    EXPECT_LT(first->time, second->time);
}

TEST_F(SendQueueTest, EntryMayHaveUpTo2048Bytes) {
    ASSERT_EQ(0, K740_Initialize());
    const std::array<uint16_t, 6> lengths{1, 2047, 2048, 2049, 65'535, 100};
    uint8_t mark = 0;
    for (const uint16_t length : lengths) { Queue(Entry(kController, ++mark, length)); }
    mark = 0;
    for (const std::size_t expected : {1U, 2047U, 2048U, 2048U, 2048U, 100U}) {
        const auto event = WaitFor(++mark);
        ASSERT_TRUE(event);
        EXPECT_EQ(expected, event->bytes.size());
    }
}

TEST_F(SendQueueTest, EntryOfLengthZeroIsSkipped) {
    ASSERT_EQ(0, K740_Initialize());
    Queue(Entry(kController, 1, 0));
    Queue(Entry(kController, 2));
    ASSERT_TRUE(WaitFor(2));
    const auto events = Field().Events().Events([](const sim::Event& event) { return event.bytes.empty(); });
    EXPECT_TRUE(events.empty());
}

TEST_F(SendQueueTest, EntryForAnUnknownDeviceIsDropped) {
    ASSERT_EQ(0, K740_Initialize());
    Queue(Entry(kUnknown, 1));
    Queue(Entry(kController, 2));
    ASSERT_TRUE(WaitFor(2));
    EXPECT_EQ(0U, Count(1));
}

TEST_F(SendQueueTest, The5000thEntryIsKeptAndThe5001stIsDropped) {
    QueueDropped(4998);
    Queue(Entry(kController, 1)); // the 4999th
    Queue(Entry(kController, 2));
    Queue(Entry(kController, 3));
    Queue(Entry(kController, 3));
    ASSERT_EQ(0, K740_Initialize()); // the sender takes all
    ASSERT_TRUE(WaitFor(1));
    ASSERT_TRUE(WaitFor(2));
    Queue(Entry(kController, 4)); // there is room again
    ASSERT_TRUE(WaitFor(4));
    EXPECT_EQ(0U, Count(3));
}

TEST_F(SendQueueTest, DatagramsAreAtLeastAMillisecondApart) {
    constexpr std::size_t kEntries = 50;
    ASSERT_EQ(0, K740_Initialize());
    for (std::size_t i = 0; i < kEntries; ++i) { Queue(Entry(kController, 1)); }
    const auto last = WaitFor(1, kEntries);
    const auto first = WaitFor(1);
    ASSERT_TRUE(first && last);
    // Not gap by gap: a stamp may be late, and the next gap then looks short.
    EXPECT_GE(last->time - first->time, milliseconds(kEntries - 2));
}

TEST_F(SendQueueTest, BatchesAreAtLeast5MillisecondsApart) {
    constexpr uint8_t kBatches = 10;
    ASSERT_EQ(0, K740_Initialize());
    for (uint8_t batch = 1; batch <= kBatches; ++batch) {
        Queue(Entry(kController, batch));
        ASSERT_TRUE(WaitFor(batch));
    }
    EXPECT_GE(WaitFor(kBatches)->time - WaitFor(1)->time, milliseconds(6 * (kBatches - 2)));
}

TEST_F(SendQueueTest, QueuedEntriesOfManyThreadsAllArrive) {
    ASSERT_EQ(0, K740_Initialize());
    {
        const auto queue = [](uint8_t mark) {
            for (int i = 0; i < 50; ++i) { Queue(Entry(kController, mark)); }
        };
        const std::jthread first(queue, static_cast<uint8_t>(1));
        const std::jthread second(queue, static_cast<uint8_t>(2));
    }
    EXPECT_TRUE(WaitFor(1, 50));
    EXPECT_TRUE(WaitFor(2, 50));
}

} // namespace
} // namespace k740::test
