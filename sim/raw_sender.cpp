#include "sim/raw_sender.h"

#include <optional>
#include <utility>

namespace k740::sim {
namespace {

UdpSocket OpenInField(const PrivateNetwork& network, const Endpoint& local) {
    std::optional<UdpSocket> socket;
    network.RunInField([&] { socket.emplace(UdpSocket::BoundTo(local)); });
    return std::move(*socket);
}

} // namespace

RawSender::RawSender(const PrivateNetwork& network, const std::string& address, std::uint16_t port)
    : m_socket(OpenInField(network, {address, port})) {}

void RawSender::Send(ByteView bytes, std::uint16_t stationPort) const {
    m_socket.Send(bytes, {kStationAddress, stationPort});
}

} // namespace k740::sim
