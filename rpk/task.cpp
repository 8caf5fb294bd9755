// Starting and stopping tasks of paging stations.
#include "app/application.h"
#include "common/device_types.h"
#include "common/format.h"
#include "devices/zone_string.h"
#include "protocol/commands.h"
#include "rpk/rpk.h"
#include "rpk/station_answers.h"

namespace {

constexpr int kFirstPriority = 56;
constexpr int kLastPriority = 255;
constexpr int kStopPriority = 100;

bool IsStationTask(int taskID) {
    return taskID == 3 || taskID == 7;
}

/// @return each item as three digits of the controller's ID, or four, and two of its zones, without separators
std::string ZoneText(const std::string& zones) {
    std::string text;
    for (const std::string& piece : SplitZoneString(zones)) {
        const ZoneItem item = ParseZoneItem(piece);
        text += Format("%03X%02X", static_cast<unsigned>(item.deviceID), item.mask);
    }
    return text;
}

} // namespace

void CRPK::ReceivePlayPTTAUXResponse(const _vxa_cmd_packet_t* packet, const std::string& /*senderIP*/) {
    if (!m_app.Devices().IsDeviceIDValid(static_cast<int>(packet->sourceID))) { return; }
    const auto answer = ReadPayload<_rpk_task_answer_t>(*packet);
    m_taskResults.Append({packet->sourceID, answer.echo, answer.result, time(nullptr)});
}

int CRPK::StartStopRPKTask(int id, int taskID, int priority, std::string zones, int start) {
    std::string zoneText;
    if (!CheckTask(id, taskID)) { return -1; }
    if (start == 1 && !CheckStart(priority, zones, zoneText)) { return -1; }

    _rpk_task_request_t request{};
    request.taskID = static_cast<uint32_t>(taskID);
    request.start = start == 1 ? 1 : 0;
    request.priority = static_cast<uint8_t>(start == 1 ? priority : kStopPriority);
    zoneText.copy(request.zoneText, kMaxRPKZoneText);
    _vxa_cmd_packet_t packet =
        MakePacket(m_app.Configuration().NodeID(), static_cast<uint32_t>(id), kCmdRPKTask, request);
    packet.payloadLength = static_cast<uint16_t>(offsetof(_rpk_task_request_t, zoneText) + zoneText.size());

    if (!m_app.SendToDevice(id, packet)) { return -1; }
    PurgeStaleAnswers(m_taskResults, time(nullptr));
    return AwaitTaskAnswer(id, start == 1 ? "start" : "stop");
}

bool CRPK::CheckTask(int id, int taskID) {
    if (!IsPagingStationID(id)) { return Reject("rpk device id is error."); }
    if (m_app.Devices().GetDeviceType(id) != kDevicePagingStation) { return Reject("rpk device type is error."); }
    if (!IsStationTask(taskID)) { return Reject("rpk task id is error."); }
    return true;
}

// A text that does not fit is refused rather than cut: a cut one would page only a part of the zones.
bool CRPK::CheckStart(int priority, std::string& zones, std::string& zoneText) {
    if (m_app.Devices().IsZoneStringValid(zones) != 1) { return Reject("zone is error."); }
    zoneText = ZoneText(zones);
    if (zoneText.empty() || zoneText.size() > kMaxRPKZoneText) { return Reject("zone is error 2."); }
    if (priority < kFirstPriority || priority > kLastPriority) { return Reject("priority is error."); }
    return true;
}

bool CRPK::Reject(const std::string& reason) {
    m_app.Log().PushLog("", kLogError, reason);
    return false;
}

int CRPK::AwaitTaskAnswer(int id, const char* action) {
    const int result = AwaitStation(m_app.Lifetime(), m_taskResults, id);
    const bool isSilent = result == kStationSilent;
    m_app.Log().PushLog("", isSilent ? kLogError : kLogInfo,
                        Format("receive rpk %s task response%s, %d", action, isSilent ? " timeout" : "", result));
    return result;
}
