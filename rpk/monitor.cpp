// Zone monitoring by paging stations.
#include "app/application.h"
#include "common/device_types.h"
#include "common/format.h"
#include "protocol/commands.h"
#include "rpk/rpk.h"
#include "rpk/station_answers.h"

void CRPK::NewMonitorZone(int id, int zcuID, int zone) {
    const tagRPK_MONITOR_ZONE fresh{static_cast<uint32_t>(id), static_cast<uint32_t>(zcuID),
                                    static_cast<uint32_t>(zone), time(nullptr)};
    m_monitorZones.UpdateOrAppend(
        OfDevice(id), [&](tagRPK_MONITOR_ZONE& known) { known = fresh; }, fresh);
}

int CRPK::GetMonitorZone(int id, tagRPK_MONITOR_ZONE& out) const {
    const auto found = m_monitorZones.Find(OfDevice(id));
    if (!found) { return -1; }
    out = *found;
    return 0;
}

int CRPK::RemoveMonitorZone(int id) {
    return m_monitorZones.EraseIf(OfDevice(id)) > 0 ? 0 : -1;
}

void CRPK::ReceiveMonitorResponse(const _vxa_cmd_packet_t* packet, const std::string& /*senderIP*/) {
    if (!m_app.Devices().IsDeviceIDValid(static_cast<int>(packet->sourceID))) { return; }
    m_monitorAnswers.Append({packet->sourceID, ReadPayload<int16_t>(*packet), time(nullptr)});
}

int CRPK::StartStopRPKMonitor(int id, int zcuID, int zone, int start) {
    if (!CheckMonitor(id, zcuID, zone, start)) { return -1; }
    tagRPK_MONITOR_ZONE monitored{static_cast<uint32_t>(id), static_cast<uint32_t>(zcuID), static_cast<uint32_t>(zone),
                                  0};
    if (start == 1) {
        NewMonitorZone(id, zcuID, zone);
    } else {
        GetMonitorZone(id, monitored);
    }
    const _rpk_monitor_request_t request{monitored.zcuID, static_cast<uint16_t>(monitored.zone - 1),
                                         static_cast<uint8_t>(start == 1 ? 1 : 0)};
    if (!m_app.SendToDevice(
            id, MakePacket(m_app.Configuration().NodeID(), static_cast<uint32_t>(id), kCmdRPKMonitor, request))) {
        return -1;
    }
    return AwaitMonitorAnswer(id, start == 1 ? "start" : "stop");
}

bool CRPK::CheckMonitor(int id, int zcuID, int zone, int start) {
    if (start == 1) {
        if (!IsZoneControllerType(m_app.Devices().GetDeviceType(zcuID))) { return Reject("zcu device type is error."); }
        if (!IsZone(zone)) { return Reject("zone id is error."); }
    }
    if (m_app.Devices().GetDeviceType(id) != kDevicePagingStation) { return Reject("rpk device type is error."); }
    return true;
}

// Unlike answers to task requests, old ones are kept, deliberately: one satisfies a later request, whatever its age.
int CRPK::AwaitMonitorAnswer(int id, const char* action) {
    const int result = AwaitStation(m_app.Lifetime(), m_monitorAnswers, id);
    if (result == kStationSilent) {
        m_app.Log().PushLog("", kLogError, Format("receive rpk %s monitor response timeout.", action));
        return result;
    }
    m_app.Log().PushLog("", kLogInfo, Format("receive rpk %s monitor response, %d", action, result));
    return result;
}
