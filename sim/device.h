// What all simulated devices share: an ID, an address, a socket for requests, a way to answer.
#pragma once

#include "sim/journal.h"
#include "sim/reactor.h"
#include "sim/udp_socket.h"
#include "sim/wire.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace k740::sim {

/// What a device needs of its installation.
struct Surroundings {
    Reactor& reactor;
    Journal& journal;
    std::string stationAddress;
    std::uint32_t stationNode = kDefaultStationNode;
};

/// A device that listens on port 28001 of its own address. Made and destroyed on the reactor's thread; its public
/// functions may be called in any thread, and have taken effect when they return.
class Device {
public:
    /// @throws std::system_error when the address does not exist in this network namespace
    Device(const Surroundings& surroundings, std::uint32_t id, const std::string& address);
    virtual ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    [[nodiscard]] std::uint32_t Id() const { return m_id; }
    [[nodiscard]] const std::string& Address() const { return m_address; }

    /// Sends a command packet of this device to the station.
    void SendToStation(std::uint16_t command, ByteView payload, std::uint16_t port = kReplyPort);
    /// Sends any bytes from port 28001 of this device.
    void SendRaw(ByteView bytes, const Endpoint& receiver);

protected:
    /// A command packet has come; reactor's thread.
    virtual void Handle(const Packet& packet, const Datagram& datagram) = 0;

    /// Answers the sender of a request, on port 29001 of its address.
    void Answer(const Packet& request, const Endpoint& requester, std::uint16_t command, ByteView payload);

    /// Runs the work on the reactor's thread after the delay, unless the device is gone by then. At once for 0.
    void After(std::chrono::milliseconds delay, std::function<void()> work);

    /// Runs the work now and then every period, until the next call; a period of 0 only ends it.
    void Repeat(std::chrono::milliseconds period, const std::function<void()>& work);

    void Note(Event event);

    [[nodiscard]] Reactor& OnReactor() const { return m_surroundings.reactor; }

private:
    void ReceiveAll();
    void RunRepeated(unsigned generation, std::chrono::milliseconds period, const std::function<void()>& work);

    const Surroundings m_surroundings;
    const std::uint32_t m_id;
    const std::string m_address;
    const UdpSocket m_socket;
    unsigned m_repetition = 0;                                               // which Repeat is the current one
    const std::shared_ptr<const bool> m_life = std::make_shared<bool>(true); // timers look whether it is still there
};

} // namespace k740::sim
