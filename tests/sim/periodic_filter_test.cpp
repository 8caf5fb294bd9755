#include "sim/periodic_filter.h"

#include <gtest/gtest.h>

namespace k740::sim {
namespace {

Event PacketEvent(Event::Kind kind, std::uint32_t device, std::uint16_t command, const Bytes& payload = {1, 2}) {
    Event event;
    event.kind = kind;
    event.device = device;
    event.packet = MakePacket(device, 9500, command, payload);
    return event;
}

TEST(PeriodicFilterTest, RepeatedReportsAreHeldBackUntilTheyDiffer) {
    PeriodicFilter filter(PeriodicLines::Changes);
    EXPECT_TRUE(filter.Passes(PacketEvent(Event::Kind::Sent, 33, 0x8126)));
    EXPECT_FALSE(filter.Passes(PacketEvent(Event::Kind::Sent, 33, 0x8126)));
    EXPECT_TRUE(filter.Passes(PacketEvent(Event::Kind::Sent, 34, 0x8126)));
    EXPECT_TRUE(filter.Passes(PacketEvent(Event::Kind::Sent, 33, 0x8126, {1, 3})));
    EXPECT_TRUE(filter.Passes(PacketEvent(Event::Kind::Sent, 33, 0x8126, {1, 2})));
    EXPECT_EQ(1U, filter.Held());
}

TEST(PeriodicFilterTest, AllAndNoneLeaveNothingToTheContents) {
    PeriodicFilter all(PeriodicLines::All);
    PeriodicFilter none(PeriodicLines::None);
    for (int time = 0; time < 2; ++time) {
        EXPECT_TRUE(all.Passes(PacketEvent(Event::Kind::Received, 33, 0x0125)));
        EXPECT_FALSE(none.Passes(PacketEvent(Event::Kind::Received, 33, 0x0125)));
    }
    EXPECT_EQ(0U, all.Held());
    EXPECT_EQ(2U, none.Held());
}

TEST(PeriodicFilterTest, OtherPacketsAlwaysPass) {
    PeriodicFilter filter(PeriodicLines::None);
    EXPECT_TRUE(filter.Passes(PacketEvent(Event::Kind::Received, 33, 0x0205)));
    EXPECT_TRUE(filter.Passes(PacketEvent(Event::Kind::Sent, 5000, 0x0700))); // a handshake
    EXPECT_TRUE(filter.Passes({}));
}

} // namespace
} // namespace k740::sim
