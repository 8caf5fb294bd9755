// What the tests of the UDP wrapper share: a private network, and a look at the sockets that an action makes.
#pragma once

#include "common/udp.h"
#include "sim/udp_socket.h"
#include "tests/support/private_network_fixture.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace k740::test {

/// @return the numbers of the process's open descriptors
inline std::set<int> OpenDescriptors() {
    std::set<int> open;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        open.insert(std::stoi(entry.path().filename().string()));
    }
    std::erase_if(open, [](int descriptor) { return fcntl(descriptor, F_GETFD) == -1; }); // the one that listed them
    return open;
}

/// @return the lowest descriptor that is open in `after` but not in `before`; -1 when there is none
inline int NewDescriptor(const std::set<int>& before, const std::set<int>& after) {
    for (const int descriptor : after) {
        if (!before.contains(descriptor)) { return descriptor; }
    }
    return -1;
}

template <typename Value> Value SocketOption(int socket, int level, int name) {
    Value value{};
    socklen_t size = sizeof(value);
    EXPECT_EQ(0, getsockopt(socket, level, name, &value, &size));
    return value;
}

/// @return "address:port" to which the socket is bound
inline std::string BoundTo(int socket) {
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    EXPECT_EQ(0, getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size));
    return std::string(inet_ntoa(address.sin_addr)) + ":" + std::to_string(ntohs(address.sin_port));
}

inline std::string DottedText(in_addr address) {
    return inet_ntoa(address);
}

/// Tests of CQBUDP; the socket under test is in `station`.
class UdpFixture : public OnPrivateNetwork {
protected:
    static constexpr const char* kFieldIP = "192.168.1.33";
    static constexpr const char* kStationIP = sim::kStationAddress;

    UdpFixture() { Network().AddFieldAddresses({kFieldIP}); }

    /// Runs the action and finds the one socket that it leaves open; -1 when it leaves none.
    template <typename Action> static int SocketMadeBy(Action action) {
        const std::set<int> before = OpenDescriptors();
        action();
        return NewDescriptor(before, OpenDescriptors());
    }

    /// A socket of the field.
    template <typename Open> std::unique_ptr<sim::UdpSocket> InField(Open open) const {
        std::unique_ptr<sim::UdpSocket> opened;
        Network().RunInField([&] { opened = std::make_unique<sim::UdpSocket>(open()); });
        return opened;
    }

    /// @return the next datagram, nothing when none comes for a long time
    static std::optional<sim::Datagram> Next(const sim::UdpSocket& socket) {
        pollfd ready{socket.Descriptor(), POLLIN, 0};
        return poll(&ready, 1, 5000) == 1 ? socket.Receive() : std::nullopt;
    }

    CQBUDP m_udp;
};

} // namespace k740::test
