// The requests that end a task or a zone's audio on a zone controller.
#include "app/application.h"
#include "common/udp.h"
#include "devices/zone_string.h"
#include "player/audio_packet.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

#include <array>

namespace {

constexpr uint8_t kHandWrittenVersion = 0; // close audio and end of stream do not carry kPacketVersion
constexpr uint32_t kCloseAudioKind = 3;
constexpr std::size_t kEndOfStreamBytes4K = sizeof(_vxa_data_packet_t_mcast);
constexpr std::size_t kEndOfStreamBytes2K = 540;

} // namespace

int CZCU::ZCU_Request_CloseAudio(int zcuID, unsigned taskID) {
    if (!IsZoneControllerID(zcuID)) { return 0; }
    const _zcu_close_audio_t close{taskID, kCloseAudioKind};
    _vxa_cmd_packet_t packet = m_app.MakeRequest(zcuID, kCmdCloseAudio, close);
    packet.version = kHandWrittenVersion;
    return m_app.TrySendToDevice(zcuID, packet) == SendResult::Sent ? 1 : 0;
}

int CZCU::ZCU_Request_CloseZones(int zcuID, unsigned short zoneMask) {
    if (!IsZoneControllerID(zcuID) || zoneMask < 1 || zoneMask > kEveryZoneMask) { return 0; }
    const _zcu_close_zones_t close{zoneMask, {}};
    const _vxa_cmd_packet_t packet = m_app.MakeRequest(zcuID, kCmdCloseZones, close);
    return m_app.TrySendToDevice(zcuID, packet) == SendResult::Sent ? 1 : 0;
}

int CZCU::ZCU_Request_ExitMultiCast_4K(CQBUDP* udp, int zcuID) {
    return SendExitMulticast(udp, zcuID, kNominalLength, kEndOfStreamBytes4K);
}

int CZCU::ZCU_Request_ExitMultiCast_2K(CQBUDP* udp, int zcuID) {
    return SendExitMulticast(udp, zcuID, kNominalLengthShort, kEndOfStreamBytes2K);
}

int CZCU::SendExitMulticast(CQBUDP* udp, int zcuID, uint16_t lengthField, std::size_t datagramBytes) {
    if (udp == nullptr || !udp->IsMulticastOpen()) { return 0; }
    _vxa_cmd_packet_t header;
    FillK740PackageHeader(&header, m_app.Configuration().NodeID(), static_cast<uint32_t>(zcuID), kTypeEndOfStream,
                          lengthField);
    header.version = kHandWrittenVersion;
    std::array<char, kEndOfStreamBytes4K> datagram{};
    std::memcpy(datagram.data(), &header, offsetof(_vxa_cmd_packet_t, payload));
    udp->send_multicast_data(datagram.data(), static_cast<int>(datagramBytes));
    return 1;
}
