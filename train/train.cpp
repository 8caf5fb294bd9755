#include "train/train.h"

#include "app/application.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr uint8_t kFirstZoneStates[]{kZoneIdle, kZonePlaying, 8}; // for train status 1, 2 and 3
constexpr uint8_t kKnown = 4; // the device status of all three; any other train status is told as off line
constexpr uint8_t kOtherZones = 0x26;
constexpr uint8_t kPartState = 1; // of amplifiers and what follows them

bool IsKnown(int status) {
    return status >= 1 && status <= std::ssize(kFirstZoneStates);
}

uint8_t FirstZoneState(int status, bool playing) {
    if (playing) { return kZonePlaying; }
    return IsKnown(status) ? kFirstZoneStates[status - 1] : kZoneIdle;
}

_zcu_status_payload_t MakePayload(const tagTRAIN_STATUS& train, uint32_t taskWord) {
    _zcu_status_payload_t payload{};
    payload.deviceStatus = IsKnown(train.status) ? kKnown : kStatusOffLine;
    std::fill(std::begin(payload.zoneStates), std::end(payload.zoneStates), kOtherZones);
    payload.zoneStates[0] = FirstZoneState(train.status, taskWord != 0);
    std::fill(std::begin(payload.amplifiers1to4), std::end(payload.amplifiers1to4), kPartState);
    payload.deviceIDEcho = static_cast<uint32_t>(train.deviceID);
    payload.zoneTasks[0] = taskWord;
    std::fill(std::begin(payload.amplifiers5to8), std::end(payload.amplifiers5to8), kPartState);
    payload.uninterpreted2[0] = kPartState;
    payload.uninterpreted2[1] = kPartState;
    return payload;
}

} // namespace

int CTRAIN::NewTrainStatus(tagTRAIN_STATUS train) {
    const auto make = [&train](uint32_t taskWord) {
        return tagZCU_QUERYSTATUS2{static_cast<uint32_t>(train.deviceID), MakePayload(train, taskWord), time(nullptr)};
    };
    return m_app.ZCU().PublishVirtualStatus(train.deviceID, make) ? 0 : -1;
}
