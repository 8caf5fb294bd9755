// A simulated device that makes requests of the station's virtual zone controllers.
#pragma once

#include "sim/device.h"
#include "sim/records.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace k740::sim {

/// Listens on ports 28001 and 29001 of its address; what comes there is in the journal, with its port. Audio for a task
/// is sent with Stream and SendEndOfStream. All public functions are safe in every thread.
class Client : public Device {
public:
    Client(const Surroundings& surroundings, std::uint32_t id, const std::string& address);

    /// Each sends one request to the station, for one of its virtual zone controllers.
    void SendHeartbeat(std::uint32_t controller, std::uint16_t port = kReplyPort);
    void RequestPlay(std::uint32_t controller, const PlayRequest& request, std::uint16_t port = kReplyPort);
    void CloseAudio(std::uint32_t controller, std::uint32_t taskId, std::uint16_t port = kReplyPort);
    void CloseZones(std::uint32_t controller, std::uint32_t zoneMask, std::uint16_t port = kReplyPort);
    void QueryVersion(std::uint32_t controller, std::uint16_t port = kReplyPort);
    void QueryZoneGroups(std::uint32_t controller, std::uint16_t port = kReplyPort);
    /// @param extension  28 bytes, of which the first 16 tell one extension from another; others are sent as they are
    void AddTaskZones(std::uint32_t controller, ByteView extension, std::uint16_t port = kReplyPort);
    void RemoveTaskZones(std::uint32_t controller, ByteView extension, std::uint16_t port = kReplyPort);

    /// Sends a heartbeat now and then every period; a period of 0 ends that.
    void RepeatHeartbeat(std::uint32_t controller, std::chrono::milliseconds period = std::chrono::seconds(2));

protected:
    void Handle(const Packet&, const Datagram&) override {} // noted in the journal already
};

} // namespace k740::sim
