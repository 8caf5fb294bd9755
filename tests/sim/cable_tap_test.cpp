// Counts of what came over the cable.
#include "sim/cable_tap.h"
#include "sim/udp_socket.h"
#include "tests/support/private_network_fixture.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

namespace k740::test {
namespace {

constexpr std::size_t kFragmentedBytes = 4124; // more than the cable carries in one piece

class CableTapTest : public OnPrivateNetwork {
protected:
    /// Waits until so many datagrams were counted for a receiver, 5 s at most. @return the count
    std::size_t Counted(const sim::CableTap& tap, const sim::Endpoint& receiver, std::size_t expected) {
        const auto end = sim::Clock::now() + std::chrono::seconds(5);
        std::size_t count = 0;
        while (count < expected && sim::Clock::now() < end) {
            count = tap.Datagrams()[{receiver.ip, receiver.port}];
            std::this_thread::yield();
        }
        return count;
    }
};

TEST_F(CableTapTest, CountsDatagramsThatNobodyTakesByReceiver) {
    std::unique_ptr<sim::CableTap> tap;
    Network().RunInField([&] { tap = std::make_unique<sim::CableTap>(); });
    const sim::UdpSocket socket = sim::UdpSocket::BoundTo({sim::kStationAddress, 0});
    const sim::Endpoint group{"225.0.0.1", 28100};
    const sim::Endpoint otherPort{"225.0.0.1", 28101};
    const sim::Bytes datagram(kFragmentedBytes);
    for (int i = 0; i < 3; ++i) { socket.Send(datagram, group); }
    socket.Send(datagram, otherPort);
    EXPECT_EQ(1U, Counted(*tap, otherPort, 1));
    EXPECT_EQ(3U, Counted(*tap, group, 3));
    EXPECT_EQ(2U, tap->Datagrams().size());
}

TEST_F(CableTapTest, WhatItMissesIsTold) {
    constexpr std::size_t kFlood = 30'000;
    std::unique_ptr<sim::CableTap> tap;
    Network().RunInField([&] { tap = std::make_unique<sim::CableTap>(); });
    const sim::UdpSocket socket = sim::UdpSocket::BoundTo({sim::kStationAddress, 0});
    const sim::Endpoint group{"225.0.0.1", 28100};
    const sim::Bytes datagram(1);
    for (std::size_t i = 0; i < kFlood; ++i) { socket.Send(datagram, group); }
    EXPECT_TRUE(WaitUntil([&] { return tap->Datagrams()[{group.ip, group.port}] + tap->Missed() == kFlood; }));
}

TEST_F(CableTapTest, DoesNotCountWhatTheFieldSends) {
    std::unique_ptr<sim::CableTap> tap;
    std::unique_ptr<sim::UdpSocket> fieldSocket;
    const sim::Endpoint station{sim::kStationAddress, 28100};
    Network().AddFieldAddresses({"192.168.1.33"});
    Network().RunInField([&] {
        tap = std::make_unique<sim::CableTap>();
        fieldSocket = std::make_unique<sim::UdpSocket>(sim::UdpSocket::BoundTo({"192.168.1.33", 0}));
    });
    const sim::UdpSocket socket = sim::UdpSocket::BoundTo(station);
    const sim::Bytes datagram(1);
    fieldSocket->Send(datagram, station);
    socket.Send(datagram, {"192.168.1.33", 28100});
    EXPECT_EQ(1U, Counted(*tap, {"192.168.1.33", 28100}, 1));
    EXPECT_EQ(1U, tap->Datagrams().size());
}

} // namespace
} // namespace k740::test
