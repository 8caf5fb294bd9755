#include "sim/private_network.h"
#include "sim/raw_sender.h"
#include "sim/udp_socket.h"
#include "tests/sim/station.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace k740::test {
namespace {

using sim::Bytes;
using sim::PrivateNetwork;
using sim::UdpSocket;

const Bytes kHello{'h', 'e', 'l', 'l', 'o'};
constexpr const char* kDevice = "192.168.1.33";

PrivateNetwork NetworkWith(const std::vector<std::string>& fieldAddresses) {
    PrivateNetwork::Options options;
    options.fieldAddresses = fieldAddresses;
    return PrivateNetwork(options);
}

std::vector<UdpSocket> OpenInField(const PrivateNetwork& network, const std::vector<sim::Endpoint>& locals) {
    std::vector<UdpSocket> sockets;
    network.RunInField([&] {
        for (const sim::Endpoint& local : locals) { sockets.push_back(UdpSocket::BoundTo(local)); }
    });
    return sockets;
}

std::vector<std::string> FiveHundredAddresses() {
    std::vector<std::string> addresses;
    addresses.reserve(500);
    for (int i = 0; i < 500; ++i) {
        addresses.push_back("192.168." + std::to_string(10 + i / 250) + '.' + std::to_string(1 + i % 250));
    }
    return addresses;
}

TEST(PrivateNetworkTest, FirstPacketFromStationReachesADevice) {
    const PrivateNetwork network = NetworkWith({kDevice});
    const std::vector<UdpSocket> device = OpenInField(network, {{kDevice, 28001}});
    const UdpSocket station = UdpSocket::BoundTo({PrivateNetwork::StationAddress(), 29001});
    station.Send(kHello, {kDevice, 28001});

    const auto received = WaitForDatagram(device.front());
    ASSERT_TRUE(received);
    EXPECT_EQ(kHello, received->bytes);
    EXPECT_EQ((sim::Endpoint{"192.168.1.166", 29001}), received->sender);
}

TEST(PrivateNetworkTest, RawSenderReachesTheStationFromItsAddressAndPort) {
    const PrivateNetwork network = NetworkWith({kDevice});
    const UdpSocket station = UdpSocket::BoundTo({PrivateNetwork::StationAddress(), 28001});
    sim::RawSender(network, kDevice, 4444).Send(kHello, 28001);

    const auto received = WaitForDatagram(station);
    ASSERT_TRUE(received);
    EXPECT_EQ(kHello, received->bytes);
    EXPECT_EQ((sim::Endpoint{kDevice, 4444}), received->sender);
}

TEST(PrivateNetworkTest, MulticastFromStationReachesOnlyMembersOfItsGroup) {
    const PrivateNetwork network = NetworkWith({kDevice});
    std::vector<UdpSocket> members;
    network.RunInField([&] {
        members.push_back(UdpSocket::InGroup({"225.0.0.1", 28100}, kDevice));
        members.push_back(UdpSocket::InGroup({"225.0.0.2", 28100}, kDevice));
        members.push_back(UdpSocket::InGroup({"225.0.0.1", 28100}, kDevice));
    });
    UdpSocket::BoundTo({PrivateNetwork::StationAddress(), 0}).Send(kHello, {"225.0.0.1", 28100});

    EXPECT_TRUE(WaitForDatagram(members[0]));
    EXPECT_TRUE(WaitForDatagram(members[2]));
    EXPECT_FALSE(members[1].Receive()); // delivered together with the others, if at all
}

TEST(PrivateNetworkTest, BurstToFiveHundredNewAddressesArrivesWhole) {
    const std::vector<std::string> addresses = FiveHundredAddresses();
    const PrivateNetwork network;
    network.AddFieldAddresses(addresses);
    std::vector<sim::Endpoint> endpoints;
    endpoints.reserve(addresses.size());
    for (const std::string& address : addresses) { endpoints.push_back({address, 28001}); }
    const std::vector<UdpSocket> devices = OpenInField(network, endpoints);

    const UdpSocket station = UdpSocket::BoundTo({PrivateNetwork::StationAddress(), 0});
    for (const sim::Endpoint& endpoint : endpoints) { station.Send(kHello, endpoint); }
    for (const UdpSocket& device : devices) { EXPECT_TRUE(WaitForDatagram(device)); }
}

TEST(PrivateNetworkTest, LaterThreadsAreInStation) {
    const PrivateNetwork network;
    std::thread([] { EXPECT_NO_THROW(UdpSocket::BoundTo({PrivateNetwork::StationAddress(), 29001})); }).join();
}

TEST(PrivateNetworkTest, StationHasItsExtraAddresses) {
    PrivateNetwork::Options options;
    options.extraStationAddresses = {"192.168.1.167"};
    const PrivateNetwork network(options);
    EXPECT_NO_THROW(UdpSocket::BoundTo({"192.168.1.167", 29001}));
}

TEST(PrivateNetworkTest, DevicesAddressesAreNotInStation) {
    const PrivateNetwork network = NetworkWith({kDevice});
    EXPECT_THROW(UdpSocket::BoundTo({kDevice, 28001}), std::system_error);
}

TEST(PrivateNetworkTest, ThereIsNoWayOut) {
    const PrivateNetwork network;
    const UdpSocket station = UdpSocket::BoundTo({PrivateNetwork::StationAddress(), 0});
    EXPECT_THROW(station.Send(kHello, {"10.0.0.1", 28001}), std::system_error);
}

TEST(PrivateNetworkTest, RunInFieldThrowsWhatTheWorkThrows) {
    const PrivateNetwork network;
    EXPECT_THROW(network.RunInField([] { throw std::invalid_argument("work"); }), std::invalid_argument);
}

TEST(PrivateNetworkTest, AddressTakenTwiceIsRefusedInTheWordsOfIp) {
    const PrivateNetwork network = NetworkWith({kDevice});
    try {
        network.AddFieldAddresses({kDevice});
        FAIL() << "the same address was added twice";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string::npos, std::string(error.what()).find("Command failed")) << error.what();
    }
}

TEST(PrivateNetworkTest, SecondNetworkOfAProcessIsSeparate) {
    const PrivateNetwork first = NetworkWith({kDevice});
    const std::vector<UdpSocket> device = OpenInField(first, {{kDevice, 28001}});
    const PrivateNetwork second = NetworkWith({kDevice});
    const std::vector<UdpSocket> same = OpenInField(second, {{kDevice, 28001}});
    UdpSocket::BoundTo({PrivateNetwork::StationAddress(), 0}).Send(kHello, {kDevice, 28001});
    EXPECT_TRUE(WaitForDatagram(same.front()));
    EXPECT_FALSE(device.front().Receive());
}

} // namespace
} // namespace k740::test
