#include "tests/wireshark/live_capture.h"

#include "sim/private_network.h"
#include "sim/udp_socket.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <stdexcept>

namespace k740::test {
namespace {

constexpr const char* kDevice = "station"; // an end of the private network's cable
constexpr int kSnapshotBytes = 65'535;
constexpr int kBufferBytes = 16 << 20;
const sim::Endpoint kNobody{"192.168.255.254", 9};
constexpr char kMarker[] = "the capture ends here";

pcap_t* Check(pcap_t* device, int result) {
    if (result == 0) { return device; }
    const std::string reason = pcap_statustostr(result);
    pcap_close(device);
    throw std::runtime_error("Cannot capture on " + std::string(kDevice) + ": " + reason + ".");
}

pcap_t* Open() {
    std::array<char, PCAP_ERRBUF_SIZE> error{};
    pcap_t* device = pcap_create(kDevice, error.data());
    if (device == nullptr) { throw std::runtime_error(error.data()); }
    pcap_set_snaplen(device, kSnapshotBytes);
    pcap_set_buffer_size(device, kBufferBytes);
    pcap_set_immediate_mode(device, 1);
    return Check(device, pcap_activate(device));
}

bool IsMarker(const pcap_pkthdr& header, const unsigned char* packet) {
    return header.caplen >= sizeof(kMarker) &&
           std::memcmp(packet + header.caplen - sizeof(kMarker), kMarker, sizeof(kMarker)) == 0;
}

} // namespace

LiveCapture::LiveCapture(const std::string& path)
    : m_device(Open(), pcap_close), m_file(pcap_dump_open(m_device.get(), path.c_str()), pcap_dump_close) {
    if (m_file == nullptr) { throw std::runtime_error(pcap_geterr(m_device.get())); }
    m_writer = std::thread([this] { WriteUntilMarker(); });
}

LiveCapture::~LiveCapture() {
    if (m_writer.joinable()) { Finish(); }
}

void LiveCapture::Finish() {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(kMarker);
    sim::UdpSocket::BoundTo({sim::PrivateNetwork::StationAddress(), 0}).Send({bytes, sizeof(kMarker)}, kNobody);
    m_writer.join();
    m_file.reset();
}

void LiveCapture::WriteUntilMarker() {
    pcap_pkthdr* header = nullptr;
    const unsigned char* packet = nullptr;
    for (int result = 0; result >= 0; result = pcap_next_ex(m_device.get(), &header, &packet)) {
        if (result == 0) { continue; }
        if (IsMarker(*header, packet)) { return; }
        pcap_dump(reinterpret_cast<unsigned char*>(m_file.get()), header, packet);
    }
}

} // namespace k740::test
