// What the library answers when it plays a zone controller itself.
#include "app/application.h"
#include "common/format.h"
#include "common/qbstring.h"
#include "common/sdk_version.h"
#include "common/worker.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

namespace {

constexpr const char* kNoAddress = "0.0.0.0";
constexpr const char* kLoopbackAddress = "127.0.0.1";
constexpr uint8_t kHandWrittenVersion = 0; // the answer to a deletion does not carry kPacketVersion
constexpr uint8_t kDone = 1;
constexpr uint8_t kNotFound = 0;

auto HasKeyOf(const tagPLAY_TASK_EXTEND& extension) {
    return [&extension](const tagPLAY_TASK_EXTEND& known) {
        return std::memcmp(known.key, extension.key, sizeof(known.key)) == 0;
    };
}

} // namespace

void CZCU::SendAnswer(const std::string& ip, const _vxa_cmd_packet_t& packet) {
    m_app.SendToAddress(ip, kReplyPort, packet);
}

bool CZCU::IsVirtual(uint32_t id) const {
    return m_app.Devices().GetDeviceType(static_cast<int>(id)) == kDeviceVirtualZoneController;
}

void CZCU::ReceiveHandshake(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    if (senderIP == kNoAddress || senderIP == kLoopbackAddress) { return; }
    const uint32_t clientID = packet->sourceID;
    const uint32_t virtualZCUID = packet->destinationID;
    const _zcu_heartbeat_answer_t answer{1, 0, virtualZCUID};
    AnswerAsVirtual(*packet, senderIP, kCmdHeartbeatAnswer, answer);

    tagVIRTUAL_ZCU_CLIENT_SOCKET client{virtualZCUID, clientID, time(nullptr), ""};
    Xstrcpy(client.ip, senderIP, sizeof(client.ip) - 1);
    m_virtualClients.UpdateOrAppend([&](const auto& known) { return known == client; },
                                    [&](auto& known) { known.lastHeard = client.lastHeard; }, client);
}

void CZCU::ReceivePlayTaskResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    if (!IsVirtual(packet->destinationID)) { return; }
    if (!StartThread("k740-vzcu-play",
                     [this, request = *packet, senderIP] { ThreadResponsePlayTask(request, senderIP); })) {
        m_app.Log().PushLog("", kLogError, "No thread for a play request.");
    }
}

void CZCU::ReceiveCloseAudioResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    if (!IsVirtual(packet->destinationID)) { return; }
    const auto virtualZCU = static_cast<int>(packet->destinationID);
    const auto source = static_cast<int>(packet->sourceID);
    const auto task = static_cast<int>(ReadPayload<uint32_t>(*packet));
    m_app.Log().PushLog("", kLogInfo,
                        Format("-----Virutla ZCU receive a close audio request, ZCU %d, source device %d, task %d, %s",
                               virtualZCU, source, task, senderIP.c_str()));
    StopPlaying(virtualZCU, [=, this] { return RemoveTaskZones(source, task, virtualZCU, RemoveZones::OfTask) == 1; });
}

void CZCU::ReceiveCloseZoneResponse(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    if (!IsVirtual(packet->destinationID)) { return; }
    const auto virtualZCU = static_cast<int>(packet->destinationID);
    const auto source = static_cast<int>(packet->sourceID);
    m_app.Log().PushLog("", kLogInfo,
                        Format("-----Virutla ZCU receive a close zone request, ZCU %d, source device %d, %s",
                               virtualZCU, source, senderIP.c_str()));
    StopPlaying(virtualZCU, [=, this] {
        RemoveTaskZones(source, -1, virtualZCU, RemoveZones::OfEveryTask);
        return true;
    });
}

void CZCU::ReceiveGetVersion(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    if (!IsVirtual(packet->destinationID) || senderIP == kNoAddress) { return; }
    _device_version_t version{};
    Xstrcpy(reinterpret_cast<char*>(version.texts + kApplicationVersionOffset), kSDKVersion,
            kApplicationVersionBytes - 1);
    version.deviceID = static_cast<uint16_t>(packet->destinationID);
    AnswerAsVirtual(*packet, senderIP, kCmdGetVersionAnswer, version);
}

void CZCU::ReceiveGetMulticastIP(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    if (!IsVirtual(packet->destinationID) || senderIP == kNoAddress) { return; }
    const auto played = m_taskZones.FindTask(static_cast<int>(packet->destinationID));
    _virtual_zone_mcast_t answer{1, 0, 0, {}};
    if (played) {
        answer.group = played->multicastIP;
        answer.port = played->multicastPort;
    }
    AnswerAsVirtual(*packet, senderIP, kCmdGetZoneMulticastAnswer, answer);
}

void CZCU::ReceiveAddTaskExtend(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    const auto extension = ReadPayload<tagPLAY_TASK_EXTEND>(*packet);
    m_taskExtensions.UpdateOrAppend(
        HasKeyOf(extension), [&](tagPLAY_TASK_EXTEND& known) { known = extension; }, extension);
    const uint32_t nodeID = m_app.Configuration().NodeID();
    m_app.SendToAddress(senderIP, kRequestPort, MakePacket(nodeID, packet->sourceID, kCmdAddTaskExtendAnswer, kDone));
}

void CZCU::ReceiveDelTaskExtend(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    const auto extension = ReadPayload<tagPLAY_TASK_EXTEND>(*packet);
    const uint8_t result = m_taskExtensions.EraseIf(HasKeyOf(extension)) > 0 ? kDone : kNotFound;
    const uint32_t nodeID = m_app.Configuration().NodeID();
    _vxa_cmd_packet_t answer = MakePacket(nodeID, packet->sourceID, kCmdDelTaskExtendAnswer, result);
    answer.version = kHandWrittenVersion;
    m_app.SendToAddress(senderIP, kRequestPort, answer);
}
