// Zone controller status, heartbeats and the off-line rule.
#include "app/application.h"
#include "common/ip_address.h"
#include "common/qbstring.h"
#include "common/stopwatch.h"
#include "common/worker.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

namespace {

constexpr unsigned kMergePeriodMs = 50;
constexpr unsigned kHandshakePauseMs = 20;
constexpr unsigned kHeartbeatPeriodMs = 10'000;
constexpr unsigned kOffLinePassPeriodMs = 3'000;

} // namespace

void CZCU::Initialization() {
    pthread_t thread{};
    createThread(thread, ThreadRefreshDeviceStatus, this, 1);
    createThread(thread, ThreadDeviceHandshake, this, 1);
}

void* CZCU::ThreadRefreshDeviceStatus(void* zcu) {
    static_cast<CZCU*>(zcu)->RunRefresh();
    return nullptr;
}

void CZCU::RunRefresh() {
    RunWorker(m_app.Lifetime(), "k740-refresh", kMergePeriodMs, [this] {
        UpdateZCUStatus();
        m_app.RPK().UpdateRPKStatus();
    });
}

void* CZCU::ThreadDeviceHandshake(void* zcu) {
    static_cast<CZCU*>(zcu)->RunHandshake();
    return nullptr;
}

void CZCU::RunHandshake() {
    CQBTime sinceHeartbeat;
    CQBTime sinceOffLinePass;
    sinceHeartbeat.TimeStart();
    sinceOffLinePass.TimeStart();
    RunWorker(m_app.Lifetime(), "k740-handshake", kHandshakePauseMs, [&] {
        if (sinceHeartbeat.TimeEnd() >= kHeartbeatPeriodMs) {
            sinceHeartbeat.TimeStart();
            SendHeartBeat(0);
        }
        if (sinceOffLinePass.TimeEnd() >= kOffLinePassPeriodMs) {
            SetDeviceOffLine();
            sinceOffLinePass.TimeStart();
        }
    });
}

void CZCU::ZCU_Response_ZCUStatusReq(const _vxa_cmd_packet_t* packet) {
    if (!IsZoneControllerID(packet->sourceID)) { return; }
    m_status.Report({packet->sourceID, ReadPayload<_zcu_status_payload_t>(*packet), time(nullptr)});
}

void CZCU::UpdateZCUStatus() {
    m_status.Merge([this](int id) { return m_app.Devices().IsDeviceIDValid(id); });
    m_status.Age(time(nullptr));
}

void CZCU::UpdateZCUStatus(const tagZCU_QUERYSTATUS2& record) {
    m_status.Put(record);
}

int CZCU::GetZCUStatus(int id, tagZCU_QUERYSTATUS2& out) const {
    const auto found = m_status.Find(id);
    out = found.value_or(tagZCU_QUERYSTATUS2{});
    return found ? 0 : -1;
}

void CZCU::SendHeartBeat(int id) {
    if (id >= 1) {
        ZCU_Request_HeartBeat(id);
        return;
    }
    for (const tagDEVICE_INFO& device : m_app.Devices().GetAllDevices()) { ZCU_Request_HeartBeat(device.deviceID); }
}

int CZCU::ZCU_Request_HeartBeat(int id) {
    const int type = GetDevTypeFromDevID(id);
    if (type < 0) { return 0; }
    const uint32_t nodeID = m_app.Configuration().NodeID();
    const uint16_t command = type == kDevicePagingStation ? kCmdRPKHeartbeat : kCmdHeartbeat;
    m_app.SendToDevice(id, MakePacket(nodeID, static_cast<uint32_t>(id), command, nodeID));
    return 1;
}

void CZCU::SetDeviceOffLine() {
    const time_t now = time(nullptr);
    for (const tagDEVICE_INFO& device : m_app.Devices().GetAllDevices()) {
        if (m_app.Lifetime().IsExiting()) { return; }
        if (IsZoneControllerType(device.deviceType) && m_status.NeedsOffLineMark(device.deviceID, now)) {
            OffLine_ZCU(device.deviceID);
        }
        if (device.deviceType == kDevicePagingStation && m_app.RPK().NeedsOffLineMark(device.deviceID, now)) {
            m_app.RPK().OffLine_RPK(device.deviceID);
        }
    }
}

void CZCU::OffLine_ZCU(int id) {
    if (!IsZoneControllerID(id)) { return; }
    tagZCU_QUERYSTATUS2 record{};
    record.deviceID = static_cast<uint32_t>(id);
    record.status.deviceStatus = kStatusOffLine;
    record.status.deviceIDEcho = record.deviceID;
    record.lastUpdate = time(nullptr);
    m_status.Report(record);
}

void CZCU::ReceiveHandshake(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    if (senderIP == "0.0.0.0" || senderIP == "127.0.0.1") { return; }
    const uint32_t clientID = packet->sourceID;
    const uint32_t virtualZCUID = packet->destinationID;
    const _zcu_heartbeat_answer_t answer{1, 0, virtualZCUID};
    m_app.SendToAddress(senderIP, kReplyPort, MakePacket(virtualZCUID, clientID, kCmdHeartbeatAnswer, answer));

    tagVIRTUAL_ZCU_CLIENT_SOCKET client{virtualZCUID, clientID, time(nullptr), ""};
    Xstrcpy(client.ip, senderIP, sizeof(client.ip) - 1);
    m_virtualClients.UpdateOrAppend([&](const auto& known) { return known == client; },
                                    [&](auto& known) { known.lastHeard = client.lastHeard; }, client);
}
