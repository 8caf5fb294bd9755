// The status record of a zone controller and the list of those who listen to a virtual one.
#pragma once

#include "devices/status_table.h"

#include <time.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

/// States of a zone of a virtual controller.
inline constexpr uint8_t kZoneIdle = 4;
inline constexpr uint8_t kZonePlaying = 5;

#pragma pack(push, 1)
/// Payload of the status report 0x8126, 85 bytes.
struct _zcu_status_payload_t {
    uint8_t deviceStatus; // kStatusOffLine is written by the library itself
    uint8_t zoneStates[8];
    uint8_t amplifiers1to4[4];
    uint32_t deviceIDEcho;
    uint8_t deviceFault;
    uint32_t zoneTasks[8];
    uint8_t uninterpreted1[7];
    uint8_t zoneFaults; // bit i belongs to zone i + 1
    uint8_t extraA;
    uint8_t extraB;
    uint8_t amplifiers5to8[4];
    uint8_t uninterpreted2[16];
    uint32_t trailingWord;
    uint8_t trailingByte;
};

/// The last known status of one zone controller.
struct tagZCU_QUERYSTATUS2 {
    uint32_t deviceID;
    _zcu_status_payload_t status;
    int64_t lastUpdate; // time(2)

    bool operator==(int id) const { return DeviceID() == id; }
    int DeviceID() const { return static_cast<int>(deviceID); }
    bool IsOffLine() const { return status.deviceStatus == kStatusOffLine; }
    void SetOffLine() { status.deviceStatus = kStatusOffLine; }
    time_t LastUpdate() const { return lastUpdate; }
    void Update(const tagZCU_QUERYSTATUS2& newer) {
        status = newer.status;
        lastUpdate = newer.lastUpdate;
    }
    bool HasSameStatus(const tagZCU_QUERYSTATUS2& other) const {
        return std::memcmp(&status, &other.status, sizeof(status)) == 0;
    }
};

/// A device that has sent a heartbeat to a virtual zone controller.
struct tagVIRTUAL_ZCU_CLIENT_SOCKET {
    uint32_t virtualZCUID; // to which the heartbeat was addressed
    uint32_t clientID;
    int64_t lastHeard; // time(2)
    char ip[50];

    bool operator==(const tagVIRTUAL_ZCU_CLIENT_SOCKET& other) const {
        return virtualZCUID == other.virtualZCUID && std::strcmp(ip, other.ip) == 0;
    }
};

/// Payload of the heartbeat answer 0x8125.
struct _zcu_heartbeat_answer_t {
    uint8_t result; // 1
    uint8_t reserved;
    uint32_t virtualZCUID;
};
#pragma pack(pop)

static_assert(sizeof(_zcu_status_payload_t) == 85 && sizeof(tagZCU_QUERYSTATUS2) == 97);
static_assert(offsetof(tagZCU_QUERYSTATUS2, status) == 4 && offsetof(tagZCU_QUERYSTATUS2, lastUpdate) == 89);
static_assert(offsetof(_zcu_status_payload_t, deviceIDEcho) == 13 &&
              offsetof(_zcu_status_payload_t, deviceFault) == 17);
static_assert(offsetof(_zcu_status_payload_t, zoneTasks) == 18 && offsetof(_zcu_status_payload_t, zoneFaults) == 57);
static_assert(offsetof(_zcu_status_payload_t, amplifiers5to8) == 60);
static_assert(offsetof(_zcu_status_payload_t, trailingWord) == 80);
static_assert(sizeof(tagVIRTUAL_ZCU_CLIENT_SOCKET) == 66 && sizeof(_zcu_heartbeat_answer_t) == 6);
