// Records of paging stations: status, task requests and their answers.
#pragma once

#include "devices/status_table.h"

#include <time.h>

#include <cstddef>
#include <cstdint>

inline constexpr int kStationSuccess = 1; // result in a station's answer
inline constexpr int kStationSilent = -2; // results of requests
inline constexpr int kStationRefused = -3;
inline constexpr std::size_t kMaxRPKZoneText = 488; // what is left of a packet behind the request's fields

#pragma pack(push, 1)
/// Payload of the status report 0x8700, 9 bytes.
struct _rpk_status_payload_t {
    uint8_t state; // kStatusOffLine or the station's
    uint8_t activity;
    uint16_t uninterpreted;
    uint16_t wordA;
    uint16_t wordB;
    uint8_t extra;
};

/// The last known status of one paging station.
struct tagRPK_QUERYSTATUS {
    uint32_t deviceID;
    _rpk_status_payload_t status;
    int64_t lastUpdate; // time(2)

    bool operator==(int id) const { return DeviceID() == id; }
    int DeviceID() const { return static_cast<int>(deviceID); }
    bool IsOffLine() const { return status.state == kStatusOffLine; }
    void SetOffLine() { status.state = kStatusOffLine; }
    time_t LastUpdate() const { return lastUpdate; }
    void Update(const tagRPK_QUERYSTATUS& newer) {
        status = newer.status;
        lastUpdate = newer.lastUpdate;
    }
};

/// Payload of the task request 0x0702. The zone text is not terminated.
struct _rpk_task_request_t {
    uint32_t taskID; // 3 or 7
    uint8_t start;   // 1 start, 0 stop
    uint8_t priority;
    uint8_t reserved[20];
    char zoneText[kMaxRPKZoneText];
};

/// Payload of the task answer 0x8702.
struct _rpk_task_answer_t {
    uint32_t echo;
    uint16_t result; // 1 success
};

/// Payload of the monitor request 0x030A.
struct _rpk_monitor_request_t {
    uint32_t zcuID;
    uint16_t zone; // 0..7
    uint8_t start; // 1 start, 0 stop
};
#pragma pack(pop)

/// A received answer to a task request.
struct tagRPK_TASK_RESULT {
    uint32_t deviceID; // sender
    uint32_t echo;
    uint16_t result;
    time_t receivedAt;
};

/// The zone that a station was last told to monitor.
struct tagRPK_MONITOR_ZONE {
    uint32_t deviceID; // station
    uint32_t zcuID;
    uint32_t zone; // 1..8
    time_t created;
};

/// A received answer to a monitor request.
struct tagMONITOR_RESPONSE {
    uint32_t deviceID; // sender
    int16_t result;    // 1 success
    time_t receivedAt;
};

/// A station whose push-to-talk audio is being received.
struct tagRPK_MONITOR_PTT {
    uint32_t deviceID;
    time_t started;
};

static_assert(sizeof(_rpk_status_payload_t) == 9 && sizeof(tagRPK_QUERYSTATUS) == 21);
static_assert(offsetof(tagRPK_QUERYSTATUS, lastUpdate) == 13);
static_assert(sizeof(_rpk_task_request_t) == 514 && offsetof(_rpk_task_request_t, zoneText) == 26);
static_assert(sizeof(_rpk_task_answer_t) == 6 && sizeof(_rpk_monitor_request_t) == 7);
