// Volumes: setting them, reading them, and reading them back after every change.
#include "app/application.h"
#include "common/stopwatch.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

namespace {
constexpr unsigned kReadBackMs = 199; // a read goes out once it has waited for more than this
} // namespace

int CZCU::ZCU_Request_AdjustVolume(const tagADJUST_DEVICE_VOLUME_REQ_V2* request) {
    if (request == nullptr || request->channel >= kVolumeChannelsV2 || request->level > kQuietestLevel) { return -1; }
    return SendVolumeRequest(request->zcuID, kCmdAdjustVolumeV2,
                             _zcu_adjust_volume_v2_t{request->channel, request->level});
}

int CZCU::ZCU_Request_AdjustVolume(const tagADJUST_DEVICE_VOLUME_REQ_V3* request) {
    if (request == nullptr) { return -1; }
    return SendVolumeRequest(request->zcuID, kCmdAdjustVolumeV3, request->volumes);
}

template <typename Record> int CZCU::SendVolumeRequest(uint32_t id, uint16_t command, const Record& record) {
    if (!IsZoneControllerID(id)) { return -1; }
    const auto deviceID = static_cast<int>(id);
    return m_app.TrySendToDevice(deviceID, m_app.MakeRequest(deviceID, command, record)) == SendResult::Sent ? 0 : -1;
}

int CZCU::ZCU_Request_GetVolume_V2(int id) {
    return SendVolumeRead(id, kCmdGetVolumeV2);
}

int CZCU::ZCU_Request_GetVolume_V3(int id) {
    return SendVolumeRead(id, kCmdGetVolumeV3);
}

int CZCU::SendVolumeRead(int id, uint16_t command) {
    if (!IsZoneControllerID(id)) { return -1; }
    return m_app.TrySendToDevice(id, m_app.MakeRequest(id, command)) == SendResult::Sent ? 0 : -1;
}

void CZCU::ZCU_Response_AdjustVolume_V2(const _vxa_cmd_packet_t* packet) {
    QueueVolumeRead(packet->sourceID, VolumeGeneration::V2);
}

void CZCU::ZCU_Response_AdjustVolume_V3(const _vxa_cmd_packet_t* packet) {
    QueueVolumeRead(packet->sourceID, VolumeGeneration::V3);
}

// The host is to learn the volumes that the device really took, so every change is followed by a read.
void CZCU::QueueVolumeRead(uint32_t id, VolumeGeneration generation) {
    if (!IsZoneControllerID(id)) { return; }
    timeval now{};
    gettimeofday(&now, nullptr);
    m_volumeReads.Append({id, generation, now});
}

// One for each call, so that many changes at once do not become a burst of reads.
void CZCU::SendDueVolumeRead() {
    const auto due = m_volumeReads.TakeFirst(
        [](const tagGETVOLUME_PARAM& read) { return GetTimePeriod(read.queuedAt) > kReadBackMs; });
    if (!due) { return; }
    SendVolumeRead(static_cast<int>(due->zcuID),
                   due->generation == VolumeGeneration::V2 ? kCmdGetVolumeV2 : kCmdGetVolumeV3);
}

void CZCU::ZCU_Response_GetVolume_V2(const _vxa_cmd_packet_t* packet) {
    if (!IsZoneControllerID(packet->sourceID)) { return; }
    m_volumesV2.Append({ReadPayload<_zcu_volumes_v2_t>(*packet), packet->sourceID, time(nullptr)});
    m_volumesAnswered.Raise();
}

void CZCU::ZCU_Response_GetVolume_V3(const _vxa_cmd_packet_t* packet) {
    if (!IsZoneControllerID(packet->sourceID)) { return; }
    m_volumesV3.Append({ReadPayload<_zcu_volumes_v3_t>(*packet), packet->sourceID, time(nullptr)});
    m_volumesAnswered.Raise();
}
