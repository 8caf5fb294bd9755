// Counts the datagrams that come over the cable, whether a device takes them or not.
#pragma once

#include "sim/file_descriptor.h"
#include "sim/udp_socket.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <utility>

namespace k740::sim {

/// Listens to everything that reaches the network device of `field` and counts the UDP datagrams by their receiver, so
/// that what a device heard can be held against what was sent to it. Made in `field` (PrivateNetwork::RunInField); its
/// thread takes the signals that its maker takes.
class CableTap {
public:
    using Counts = std::map<std::pair<std::string, std::uint16_t>, std::size_t>; ///< by address text and port

    /// @throws std::system_error when this namespace has no device `field`
    CableTap();
    ~CableTap();
    CableTap(const CableTap&) = delete;
    CableTap& operator=(const CableTap&) = delete;

    /// The counts so far; any thread. A datagram of several fragments counts once.
    [[nodiscard]] Counts Datagrams() const;
    /// Packets, fragments included, that came while there was no room for them: as many are missing in the counts at
    /// most. One thread.
    [[nodiscard]] std::size_t Missed();

private:
    void Loop();
    bool WaitForPacket() const;
    bool TakePacket();
    void Count(std::span<const char> packet);

    FileDescriptor m_socket;
    FileDescriptor m_stop; // eventfd
    mutable std::mutex m_lock;
    Counts m_counts;          // guarded by m_lock
    std::size_t m_missed = 0; // of the thread that asks for it
    std::thread m_thread;
};

} // namespace k740::sim
