// Queries that wait for their answer: the groups of a controller's zones, the version of a device.
#include "app/application.h"
#include "common/answer_wait.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

namespace {

constexpr AnswerTiming kQueryTiming{10, 3999};
constexpr int kNoOutput = -3;
constexpr int kZoneQueryTimeout = -9;
constexpr int kVersionNotSent = -3;
constexpr int kVersionTimeout = -2;

bool HasVersion(uint32_t id) {
    return IsZoneControllerID(id) || IsPagingStationID(id) || IsAuxInterfaceID(id);
}

} // namespace

bool CZCU::ZCU_Request_GetZoneMCastIP(int id, tagQUERY_ZONE_MCAST_IP_RSP* out, int& err) {
    err = out == nullptr ? kNoOutput : 0;
    if (out == nullptr) { return false; }
    PurgeStaleAnswers(m_zoneGroups, time(nullptr));
    const auto destination = static_cast<uint32_t>(id);
    if (!m_app.SendToDevice(id, m_app.MakeRequest(id, kCmdGetZoneMulticast))) { return false; }
    const auto answer = WaitForAnswer(m_app.Lifetime(), m_zoneGroups, kQueryTiming,
                                      [=](const auto& candidate) { return candidate.zcuID == destination; });
    if (!answer) {
        err = kZoneQueryTimeout;
        return false;
    }
    *out = *answer;
    out->consumed = 1;
    return true;
}

void CZCU::ZCU_Response_GetZoneMCastIP(const _vxa_cmd_packet_t* packet) {
    if (!IsZoneControllerID(packet->sourceID)) { return; }
    tagQUERY_ZONE_MCAST_IP_RSP record{};
    std::memcpy(record.table, packet->payload, sizeof(record.table));
    record.trailing = packet->payload[sizeof(record.table)];
    record.zcuID = packet->sourceID;
    record.receivedAt = time(nullptr);
    m_zoneGroups.Append(record);
}

int CZCU::GetDeviceVersion(int id, tagQUERY_DEVICE_VERSION_RSP* out) {
    const auto destination = static_cast<uint32_t>(id);
    if (!m_app.SendToDevice(id, m_app.MakeRequest(id, kCmdGetVersion, destination))) { return kVersionNotSent; }
    PurgeStaleAnswers(m_versions, time(nullptr));
    const auto answer = WaitForAnswer(m_app.Lifetime(), m_versions, kQueryTiming,
                                      [=](const auto& candidate) { return candidate.deviceID == destination; });
    if (!answer) { return kVersionTimeout; }
    *out = *answer;
    return 0;
}

void CZCU::DEV_Response_GetVersion(const _vxa_cmd_packet_t* packet) {
    if (!HasVersion(packet->sourceID)) { return; }
    tagQUERY_DEVICE_VERSION_RSP record{};
    record.version = ReadPayload<_device_version_t>(*packet);
    record.deviceID = packet->sourceID;
    record.receivedAt = time(nullptr);
    m_versions.Append(record);
}
