// Capture files of UDP datagrams that tests make up.
#pragma once

#include "sim/bytes.h"
#include "sim/udp_socket.h"

#include <pcap/pcap.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace k740::test {

inline const sim::Endpoint kHost{"192.168.1.166", 40000}; // where a host sends from
inline const sim::Endpoint kDevice{"192.168.1.33", 28001};

/// Writes IPv4 packets, each one UDP datagram, into a capture file. The file is complete once this is gone.
class CaptureFile {
public:
    explicit CaptureFile(const std::string& path);

    /// @param cut  bytes of the datagram that the capture lacks, as with a snapshot length
    void Add(sim::ByteView datagram, const sim::Endpoint& from, const sim::Endpoint& to, std::size_t cut = 0);
    /// Lets time pass between datagrams.
    void Wait(std::chrono::microseconds time) { m_now += time; }

    /// A report of the receiver that its port is closed, with the datagram in it (RFC 792).
    void AddPortUnreachable(sim::ByteView datagram, const sim::Endpoint& from, const sim::Endpoint& to);

private:
    void Write(const sim::Bytes& packet, std::size_t cut);

    const std::unique_ptr<pcap_t, decltype(&pcap_close)> m_format;
    const std::unique_ptr<pcap_dumper_t, decltype(&pcap_dump_close)> m_file;
    std::chrono::microseconds m_now{std::chrono::seconds(1'000'000'000)};
};

} // namespace k740::test
