#include "train/train.h"

#include "app/application.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr uint8_t kWorking = 4;
constexpr uint8_t kUnknown = 0xFF;
constexpr uint8_t kZoneIdle = 4;
constexpr uint8_t kZonePlaying = 5;
constexpr uint8_t kZoneOutOfUse = 8;
constexpr uint8_t kZoneAbsent = 0x26;
constexpr uint8_t kHealthy = 1;

bool IsKnown(int status) {
    return status >= 1 && status <= 3;
}

uint8_t FirstZoneState(int status, bool playing) {
    if (playing || status == 2) { return kZonePlaying; }
    return status == 3 ? kZoneOutOfUse : kZoneIdle;
}

_zcu_status_payload_t MakePayload(const tagTRAIN_STATUS& train, uint32_t taskWord) {
    _zcu_status_payload_t payload{};
    payload.deviceStatus = IsKnown(train.status) ? kWorking : kUnknown;
    std::fill(std::begin(payload.zoneStates), std::end(payload.zoneStates), kZoneAbsent);
    payload.zoneStates[0] = FirstZoneState(train.status, taskWord != 0);
    std::fill(std::begin(payload.amplifiers1to4), std::end(payload.amplifiers1to4), kHealthy);
    payload.deviceIDEcho = static_cast<uint32_t>(train.deviceID);
    payload.zoneTasks[0] = taskWord;
    std::fill(std::begin(payload.amplifiers5to8), std::end(payload.amplifiers5to8), kHealthy);
    payload.uninterpreted2[0] = kHealthy;
    payload.uninterpreted2[1] = kHealthy;
    return payload;
}

} // namespace

int CTRAIN::NewTrainStatus(tagTRAIN_STATUS train) {
    if (m_app.Devices().GetDeviceType(train.deviceID) != kDeviceVirtualZoneController) { return -1; }
    m_app.ZCU().PublishVirtualStatus(train.deviceID, [&train](uint32_t taskWord) {
        return tagZCU_QUERYSTATUS2{static_cast<uint32_t>(train.deviceID), MakePayload(train, taskWord), time(nullptr)};
    });
    return 0;
}
