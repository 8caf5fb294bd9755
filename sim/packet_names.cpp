#include "sim/packet_names.h"

#include "sim/wire.h"

#include <algorithm>
#include <map>

namespace k740::sim {
namespace {

const std::map<std::uint16_t, std::string>& Names() {
    static const std::map<std::uint16_t, std::string> names{{command::kCloseAudio, "close-audio"},
                                                            {command::kCloseZones, "close-zones"},
                                                            {command::kSetVolumeV2, "set-volume-v2"},
                                                            {command::kSetVolumeV2Answer, "set-volume-v2-answer"},
                                                            {command::kEnterEmergency, "enter-emergency"},
                                                            {command::kExitEmergency, "leave-emergency"},
                                                            {command::kHeartbeat, "heartbeat"},
                                                            {command::kHeartbeatAnswer, "heartbeat-answer"},
                                                            {command::kStatusReport, "status"},
                                                            {command::kGetVolumeV2, "read-volumes-v2"},
                                                            {command::kGetVolumeV2Answer, "volumes-v2"},
                                                            {command::kGetVersion, "read-version"},
                                                            {command::kVersionAnswer, "version"},
                                                            {command::kPlay, "play-request"},
                                                            {command::kPlayAnswer, "play-answer"},
                                                            {command::kJoinReport, "join-report"},
                                                            {command::kSetVolumeV3, "set-volumes"},
                                                            {command::kSetVolumeV3Answer, "set-volumes-answer"},
                                                            {command::kGetVolumeV3, "read-volumes"},
                                                            {command::kGetVolumeV3Answer, "volumes"},
                                                            {command::kGetZoneGroups, "read-zone-groups"},
                                                            {command::kZoneGroupsAnswer, "zone-groups"},
                                                            {command::kPagingMonitor, "monitor-request"},
                                                            {command::kPagingMonitorAnswer, "monitor-answer"},
                                                            {command::kAddTaskZones, "add-zones"},
                                                            {command::kAddTaskZonesAnswer, "add-zones-answer"},
                                                            {command::kRemoveTaskZones, "remove-zones"},
                                                            {command::kRemoveTaskZonesAnswer, "remove-zones-answer"},
                                                            {command::kPagingHeartbeat, "paging-heartbeat"},
                                                            {command::kPagingStatus, "paging-status"},
                                                            {command::kCallInvite, "call"},
                                                            {command::kCallAnswer, "call-answer"},
                                                            {command::kPagingTask, "task-request"},
                                                            {command::kPagingTaskAnswer, "task-answer"}};
    return names;
}

} // namespace

std::string PacketName(std::uint16_t code) {
    const auto found = Names().find(code);
    return found == Names().end() ? "unknown" : found->second;
}

std::optional<std::uint16_t> PacketCode(const std::string& name) {
    const auto found =
        std::find_if(Names().begin(), Names().end(), [&](const auto& entry) { return entry.second == name; });
    return found == Names().end() ? std::nullopt : std::optional(found->first);
}

} // namespace k740::sim
