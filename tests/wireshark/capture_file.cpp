#include "tests/wireshark/capture_file.h"

#include "sim/address.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/ip_icmp.h>

#include <stdexcept>

namespace k740::test {
namespace {

constexpr int kSnapshotBytes = 262'144;
constexpr std::size_t kIPHeaderBytes = 20;
constexpr std::size_t kUDPHeaderBytes = 8;
constexpr std::uint8_t kVersionAndLength = 0x45; // IPv4, five words
constexpr std::uint8_t kTimeToLive = 64;

/// Appends a number as networks write it.
void PutNetwork(sim::ByteWriter& writer, std::uint16_t value) {
    writer.Put(htons(value));
}

/// RFC 791; no checksum, which readers do not look at unless told to.
void PutIPHeader(sim::ByteWriter& writer, std::size_t payloadBytes, std::uint8_t protocol, const std::string& from,
                 const std::string& to) {
    writer.Put(kVersionAndLength).Put<std::uint8_t>(0);
    PutNetwork(writer, static_cast<std::uint16_t>(kIPHeaderBytes + payloadBytes));
    writer.Fill(4, 0).Put(kTimeToLive).Put(protocol).Fill(2, 0);
    writer.Put(htonl(sim::AddressNumber(from))).Put(htonl(sim::AddressNumber(to)));
}

sim::Bytes MakePacket(sim::ByteView datagram, const sim::Endpoint& from, const sim::Endpoint& to) {
    sim::ByteWriter writer;
    PutIPHeader(writer, kUDPHeaderBytes + datagram.size(), IPPROTO_UDP, from.ip, to.ip);
    PutNetwork(writer, from.port);
    PutNetwork(writer, to.port);
    PutNetwork(writer, static_cast<std::uint16_t>(kUDPHeaderBytes + datagram.size()));
    return writer.Fill(2, 0).PutAll(datagram).Get();
}

} // namespace

CaptureFile::CaptureFile(const std::string& path)
    : m_format(pcap_open_dead(DLT_RAW, kSnapshotBytes), pcap_close),
      m_file(pcap_dump_open(m_format.get(), path.c_str()), pcap_dump_close) {
    if (m_file == nullptr) { throw std::runtime_error("The capture file " + path + " cannot be written."); }
}

void CaptureFile::Add(sim::ByteView datagram, const sim::Endpoint& from, const sim::Endpoint& to, std::size_t cut) {
    Write(MakePacket(datagram, from, to), cut);
}

void CaptureFile::AddPortUnreachable(sim::ByteView datagram, const sim::Endpoint& from, const sim::Endpoint& to) {
    const sim::Bytes packet = MakePacket(datagram, from, to);
    sim::ByteWriter writer;
    PutIPHeader(writer, sizeof(icmphdr) + packet.size(), IPPROTO_ICMP, to.ip, from.ip);
    writer.Put<std::uint8_t>(ICMP_DEST_UNREACH).Put<std::uint8_t>(ICMP_PORT_UNREACH).Fill(6, 0).PutAll(packet);
    Write(writer.Get(), 0);
}

void CaptureFile::Write(const sim::Bytes& packet, std::size_t cut) {
    pcap_pkthdr header{};
    header.ts.tv_sec = static_cast<time_t>(m_now / std::chrono::seconds(1));
    header.ts.tv_usec = static_cast<suseconds_t>((m_now % std::chrono::seconds(1)).count());
    header.len = static_cast<bpf_u_int32>(packet.size());
    header.caplen = static_cast<bpf_u_int32>(packet.size() - cut);
    pcap_dump(reinterpret_cast<unsigned char*>(m_file.get()), &header, packet.data());
    m_now += std::chrono::milliseconds(1);
}

} // namespace k740::test
