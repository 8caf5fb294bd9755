#include "sim/journal.h"

#include <gtest/gtest.h>

#include <thread>

namespace k740::sim {
namespace {

using namespace std::chrono_literals;

Event PacketEvent(Event::Kind kind, std::uint32_t device, std::uint16_t command) {
    Event event;
    event.kind = kind;
    event.device = device;
    event.bytes = Pack(MakePacket(9500, device, command, {}));
    return event;
}

TEST(JournalTest, FiltersByDeviceDirectionAndCommand) {
    Journal journal;
    journal.Note(PacketEvent(Event::Kind::Received, 33, 0x0205));
    journal.Note(PacketEvent(Event::Kind::Received, 34, 0x0205));
    journal.Note(PacketEvent(Event::Kind::Sent, 33, 0x8205));
    EXPECT_EQ(2U, journal.Count(Received(0x0205)));
    EXPECT_EQ(1U, journal.Count(Received(33, 0x0205)));
    EXPECT_EQ(0U, journal.Count(Sent(33, 0x0205)));
    EXPECT_EQ(1U, journal.Events(Sent(33, 0x8205)).size());
    EXPECT_EQ(3U, journal.Events().size());
}

TEST(JournalTest, WaitForGivesTheEventThatCompletesTheCount) {
    Journal journal;
    for (const std::uint32_t device : {1U, 2U, 3U}) {
        journal.Note(PacketEvent(Event::Kind::Received, device, 0x0125));
    }
    const auto second = journal.WaitFor(Received(0x0125), 0ms, 2);
    ASSERT_TRUE(second);
    EXPECT_EQ(2U, second->device);
    EXPECT_FALSE(journal.WaitFor(Received(0x0125), 1ms, 4));
}

TEST(JournalTest, WaitForIsWokenByTheEvent) {
    Journal journal;
    std::thread device([&] { journal.Note(PacketEvent(Event::Kind::Received, 33, 0x0205)); });
    EXPECT_TRUE(journal.WaitFor(Received(33, 0x0205), 10s));
    device.join();
}

TEST(JournalTest, TakeEmptiesTheJournal) {
    Journal journal;
    journal.Note(PacketEvent(Event::Kind::Received, 1, 0x0125));
    journal.Note(PacketEvent(Event::Kind::Received, 2, 0x0125));
    const auto batch = journal.Take(0ms);
    ASSERT_EQ(2U, batch.events.size());
    EXPECT_EQ(2U, batch.events[1].device);
    EXPECT_EQ(0U, batch.dropped);
    EXPECT_TRUE(journal.Events().empty());
    EXPECT_TRUE(journal.Take(1ms).events.empty());
}

TEST(JournalTest, BeyondItsBoundItOnlyCounts) {
    Journal journal;
    journal.SetBound(2);
    for (const std::uint32_t device : {1U, 2U, 3U, 4U}) {
        journal.Note(PacketEvent(Event::Kind::Received, device, 0x0125));
    }
    const auto batch = journal.Take(0ms);
    ASSERT_EQ(2U, batch.events.size());
    EXPECT_EQ(2U, batch.events[1].device);
    EXPECT_EQ(2U, batch.dropped);
    journal.Note(PacketEvent(Event::Kind::Received, 5, 0x0125));
    EXPECT_EQ(0U, journal.Take(0ms).dropped);
}

TEST(JournalTest, BytesThatAreNoPacketAreKeptAsTheyAre) {
    Journal journal;
    Event event;
    event.bytes = {1, 2, 3};
    journal.Note(event);
    EXPECT_EQ((Bytes{1, 2, 3}), journal.Events()[0].bytes);
    EXPECT_FALSE(journal.Events()[0].packet);
}

} // namespace
} // namespace k740::sim
