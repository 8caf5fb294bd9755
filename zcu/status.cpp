// Zone controller status, heartbeats and the off-line rule.
#include "app/application.h"
#include "common/ip_address.h"
#include "common/stopwatch.h"
#include "common/worker.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

#include <algorithm>

namespace {

constexpr unsigned kMergePeriodMs = 50;
constexpr unsigned kVolumeReadPeriodMs = 20;
constexpr unsigned kHandshakePauseMs = 20; // at least
constexpr unsigned kHeartbeatPeriodMs = 10'000;
constexpr unsigned kOffLinePassPeriodMs = 3'000;

/// @return milliseconds until the stopwatch shows the period
unsigned Remaining(const CQBTime& watch, unsigned periodMs) {
    const unsigned shown = watch.TimeEnd();
    return shown < periodMs ? periodMs - shown : 0;
}

} // namespace

void CZCU::Initialization() {
    m_app.StartServiceThread("k740-refresh", [this] { ThreadRefreshDeviceStatus(); });
    m_app.StartServiceThread("k740-handshake", [this] { ThreadDeviceHandshake(); });
    m_app.StartServiceThread("k740-zcuclient", [this] { ThreadSendVirutalZCUStatus(); });
}

void CZCU::ThreadRefreshDeviceStatus() {
    CQBTime sinceMerge; // not started: the first merge comes at once
    while (!m_app.Lifetime().IsExiting()) {
        ContainExceptions([&] {
            if (sinceMerge.TimeEnd() >= kMergePeriodMs) {
                sinceMerge.TimeStart();
                UpdateZCUStatus();
                m_app.RPK().UpdateRPKStatus();
            }
            SendDueVolumeRead();
        });
        m_app.Lifetime().Pause(m_volumeReads.Size() > 0 ? kVolumeReadPeriodMs : kMergePeriodMs);
    }
}

void CZCU::ThreadDeviceHandshake() {
    CQBTime sinceHeartbeat;
    CQBTime sinceOffLinePass;
    sinceHeartbeat.TimeStart();
    sinceOffLinePass.TimeStart();
    while (!m_app.Lifetime().IsExiting()) {
        ContainExceptions([&] {
            if (sinceHeartbeat.TimeEnd() >= kHeartbeatPeriodMs) {
                sinceHeartbeat.TimeStart();
                SendHeartBeat(0);
            }
            if (sinceOffLinePass.TimeEnd() >= kOffLinePassPeriodMs) {
                SetDeviceOffLine();
                sinceOffLinePass.TimeStart();
            }
        });
        const unsigned due =
            std::min(Remaining(sinceHeartbeat, kHeartbeatPeriodMs), Remaining(sinceOffLinePass, kOffLinePassPeriodMs));
        m_shutdown.Wait(std::max(due, kHandshakePauseMs));
    }
}

void CZCU::WakeThreads() {
    m_shutdown.Raise();
    m_volumesAnswered.Raise();
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
