// The requests that end a task or a zone's audio on a zone controller, and those that switch emergency mode.
#include "app/application.h"
#include "common/udp.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

#include <array>

namespace {

constexpr uint8_t kHandWrittenVersion = 0; // close audio and end of stream do not carry kPacketVersion
constexpr uint32_t kCloseAudioKind = 3;
constexpr unsigned kMaxZoneMask = 255;
constexpr int kLastEmergencyPriority = 255;
constexpr uint16_t kEndOfStream = 0x8112; // a type of audio datagram, not a command
constexpr uint16_t kEndOfStreamLength4K = 1032;
constexpr uint16_t kEndOfStreamLength2K = 520;
constexpr std::size_t kEndOfStreamBytes4K = 1052;
constexpr std::size_t kEndOfStreamBytes2K = 540;

} // namespace

int CZCU::ZCU_Request_CloseAudio(int zcuID, unsigned taskID) {
    if (!IsZoneControllerID(zcuID)) { return 0; }
    const _zcu_close_audio_t close{taskID, kCloseAudioKind};
    _vxa_cmd_packet_t packet =
        MakePacket(m_app.Configuration().NodeID(), static_cast<uint32_t>(zcuID), kCmdCloseAudio, close);
    packet.version = kHandWrittenVersion;
    return m_app.SendToDevice(zcuID, packet) ? 1 : 0;
}

int CZCU::ZCU_Request_CloseZones(int zcuID, unsigned short zoneMask) {
    if (!IsZoneControllerID(zcuID) || zoneMask < 1 || zoneMask > kMaxZoneMask) { return 0; }
    const _zcu_close_zones_t close{zoneMask, {}};
    const auto destination = static_cast<uint32_t>(zcuID);
    return m_app.SendToDevice(zcuID, MakePacket(m_app.Configuration().NodeID(), destination, kCmdCloseZones, close))
               ? 1
               : 0;
}

int CZCU::ZCU_Request_ExitMultiCast_4K(CQBUDP* udp, int zcuID) {
    return SendExitMulticast(udp, zcuID, kEndOfStreamLength4K, kEndOfStreamBytes4K);
}

int CZCU::ZCU_Request_ExitMultiCast_2K(CQBUDP* udp, int zcuID) {
    return SendExitMulticast(udp, zcuID, kEndOfStreamLength2K, kEndOfStreamBytes2K);
}

int CZCU::SendExitMulticast(CQBUDP* udp, int zcuID, uint16_t lengthField, std::size_t datagramBytes) {
    if (udp == nullptr || !udp->IsMulticastOpen()) { return 0; }
    _vxa_cmd_packet_t header;
    FillK740PackageHeader(&header, m_app.Configuration().NodeID(), static_cast<uint32_t>(zcuID), kEndOfStream,
                          lengthField);
    header.version = kHandWrittenVersion;
    std::array<char, kEndOfStreamBytes4K> datagram{};
    std::memcpy(datagram.data(), &header, offsetof(_vxa_cmd_packet_t, payload));
    udp->send_multicast_data(datagram.data(), static_cast<int>(datagramBytes));
    return 1;
}

int CZCU::ZCU_Request_EnterEmergency(int id, int priority) {
    return RequestEmergency(id, priority, kCmdEnterEmergency);
}

int CZCU::ZCU_Request_ExitEmergency(int id, int priority) {
    return RequestEmergency(id, priority, kCmdExitEmergency);
}

int CZCU::RequestEmergency(int id, int priority, uint16_t command) {
    if (!IsZoneControllerID(id) || priority < 1 || priority > kLastEmergencyPriority) { return -1; }
    const auto udp = m_app.Devices().GetDeviceUDP(id);
    if (udp == nullptr) { return -1; }
    const uint32_t nodeID = m_app.Configuration().NodeID();
    const _zcu_emergency_t emergency{nodeID, ConvertPriority(static_cast<uint16_t>(priority))};
    const _vxa_cmd_packet_t packet = MakePacket(nodeID, static_cast<uint32_t>(id), command, emergency);
    // An emergency does not queue behind other sends: the send lock is left alone.
    udp->send_udp_data(reinterpret_cast<const char*>(&packet), sizeof(packet));
    return 0;
}
