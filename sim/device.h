// What all simulated devices share: an ID, an address, sockets for requests, a way to answer, an audio stream.
#pragma once

#include "sim/answer_fault.h"
#include "sim/audio_source.h"
#include "sim/journal.h"
#include "sim/query_records.h"
#include "sim/reactor.h"
#include "sim/udp_socket.h"
#include "sim/wire.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace k740::sim {

/// What a device needs of its installation.
struct Surroundings {
    Reactor& reactor;
    Journal& journal;
    std::string stationAddress;
    std::uint32_t stationNode = kDefaultStationNode;
};

/// A device that listens on port 28001 of its own address and answers version queries. Made and destroyed on the
/// reactor's thread; its public functions may be called in any thread, and have taken effect when they return.
class Device {
public:
    /// @param furtherPorts  on which it takes command packets beside 28001
    /// @throws std::system_error when the address does not exist in this network namespace
    Device(const Surroundings& surroundings, std::uint32_t id, const std::string& address,
           const std::vector<std::uint16_t>& furtherPorts = {});
    virtual ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    [[nodiscard]] std::uint32_t Id() const { return m_id; }
    [[nodiscard]] const std::string& Address() const { return m_address; }

    /// Sends a command packet of this device to the station.
    void SendToStation(std::uint16_t command, ByteView payload, std::uint16_t port = kReplyPort);
    /// Sends a command packet of this device to the station, for any of the IDs that the station speaks for.
    void SendToStation(std::uint16_t command, std::uint32_t destination, ByteView payload,
                       std::uint16_t port = kReplyPort);
    /// Sends any bytes from port 28001 of this device.
    void SendRaw(ByteView bytes, const Endpoint& receiver);

    void SetVersion(const Version& version);

    /// Sends the device's report, if devices of its kind have one, as it is at the time: after the first delay and then
    /// every period. A period of 0 ends that.
    virtual void ReportEvery(std::chrono::milliseconds /*period*/, std::chrono::milliseconds /*firstDelay*/) {}

    /// A device without power hears nothing and sends nothing, and what it streamed has ended. It has power, unless
    /// set; its settings and the rhythm of its reports outlast a time without.
    void SetPower(bool on);
    [[nodiscard]] bool HasPower() const;

    /// Answers go wrong like this from now on: those to all requests, or those to requests of one code, which then
    /// keep it whatever is set for all. A play request's join report is one of its answers.
    void SetAnswerFault(const AnswerFault& fault);
    void SetAnswerFault(std::uint16_t request, const AnswerFault& fault);

    /// Streams audio from port 28001 to a group or a device; ends what this function streamed before.
    /// @return the source, with which to stop it; as long-lived as the device
    AudioSource& Stream(const Endpoint& receiver, const AudioStream& stream = {});
    /// Ends whatever audio the device streams.
    virtual void StopStreams() { m_source.Stop(); }
    /// Sends the datagram that makes a controller leave the group.
    void SendEndOfStream(const Endpoint& group, std::uint32_t controller);

protected:
    /// A command packet has come that is no version query; reactor's thread.
    virtual void Handle(const Packet& packet, const Datagram& datagram) = 0;

    /// Answers the sender of a request, on port 29001 of its address.
    void Answer(const Packet& request, const Endpoint& requester, std::uint16_t command, ByteView payload);

    /// Runs the work on the reactor's thread after the delay, unless the device is gone by then. At once for 0.
    void After(std::chrono::milliseconds delay, std::function<void()> work);

    /// Runs the work after the first delay and then every period, until the next call; a period of 0 only ends it.
    void Repeat(std::chrono::milliseconds period, const std::function<void()>& work,
                std::chrono::milliseconds firstDelay = {});

    /// The power has gone, has come back; reactor's thread.
    virtual void LosePower() {}
    virtual void RegainPower() {}

    void Note(Event event);
    /// Notes how a stream that this device sends begins and ends.
    [[nodiscard]] AudioSource::OnChange StreamNoter(std::uint16_t port);

    [[nodiscard]] Reactor& OnReactor() const { return m_surroundings.reactor; }
    /// Bound to port 28001.
    [[nodiscard]] const UdpSocket& Socket() const { return m_listeners.front().socket; }
    [[nodiscard]] const std::string& StationAddress() const { return m_surroundings.stationAddress; }

private:
    struct Listener {
        std::uint16_t port = 0;
        UdpSocket socket;
    };

    static std::vector<Listener> Listen(const std::string& address, const std::vector<std::uint16_t>& furtherPorts);
    void ReceiveAll(const Listener& listener);
    void Take(const Packet& packet, const Datagram& datagram);
    void RunRepeated(unsigned generation, std::chrono::milliseconds period, const std::function<void()>& work);

    const Surroundings m_surroundings;
    const std::uint32_t m_id;
    const std::string m_address;
    const std::vector<Listener> m_listeners; // the first is for port 28001
    AudioSource m_source;
    Version m_version;
    AnswerFaults m_faults;
    bool m_power = true;
    unsigned m_repetition = 0;                                               // which Repeat is the current one
    const std::shared_ptr<const bool> m_life = std::make_shared<bool>(true); // timers look whether it is still there
};

} // namespace k740::sim
