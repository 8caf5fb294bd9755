// Records of task triggering: the play request, its answers, and what the player asks for.
#pragma once

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)
/// What the player asks of one zone controller; owned by the trigger thread that it is given to.
struct tagZCU_PARAM {
    uint32_t taskID;
    uint16_t sequence; // the zone controller's answer repeats it
    int32_t zcuID;
    uint32_t taskIDAgain;
    uint16_t priority; // 0..255
    uint16_t recovery; // 0 or 1
    uint32_t zoneMask; // 1..255
    uint32_t multicastIP;
    uint16_t multicastPort;
    uint16_t dryContactOutput; // 1 switches the zones' contacts
    uint32_t reserved;
    uint32_t auxDeviceID; // AUX tasks only
    int16_t auxPort;      // AUX tasks only
    uint32_t sourceNodeID;
};

/// Payload of the play request 0x0205.
struct _vxa_play_task_req_t_V2 {
    uint16_t sequence;
    uint16_t reserved2;
    uint16_t priority; // 256 less the task's
    uint8_t dryContactSwitch;
    uint8_t dryContactOn;
    uint8_t dryContactZones;
    uint32_t reserved9;
    uint32_t source; // task ID, or the AUX port
    uint32_t taskID;
    uint32_t kind; // 3
    uint8_t recovery;
    uint8_t reserved26;
    uint16_t reserved27;
    uint16_t all; // 0xFFFF
    uint16_t reserved31;
    uint32_t reserved33;
    uint8_t reserved37;
    uint32_t zoneMask;
    uint8_t reserved42[8];
    uint32_t streamKind; // 32
    uint32_t multicastIP;
    uint32_t multicastPort;
    uint32_t sourceDevice; // node ID, or the AUX device
};

/// Payload of the answer 0x8205.
struct _vxa_play_task_rsp_t {
    uint8_t joinFollows; // not 0: the controller joins the group and reports it
    uint16_t result;     // 1 accepted, 255 accepted without a join report, others refused
    uint16_t sequence;
    uint32_t tokenA;
    uint32_t tokenB;
    uint8_t uninterpreted[8];
    uint32_t taskID;
    uint32_t trailing;
};

/// A received answer to a play request.
struct tagZCU_TRIGGERTASK {
    uint8_t joinFollows;
    uint16_t result;
    uint16_t sequence;
    uint32_t tokenA;
    uint32_t tokenB;
    uint8_t uninterpreted[8];
    uint32_t trailing;
    uint32_t taskID;
    int64_t receivedAt; // time(2)
    uint32_t zcuID;     // sender
    uint16_t consumed;  // 0
};

/// Payload of the join report 0x8206.
struct _vxa_join_mcast_rsp_t {
    uint16_t status; // 1 joined
    uint32_t tokenA;
    uint32_t tokenB;
    uint8_t uninterpreted10[8];
    uint32_t uninterpreted18;
    uint32_t uninterpreted22;
};

/// A received join report.
struct tagZCU_JOINMCAST {
    uint32_t tokenA;
    uint32_t tokenB;
    uint16_t status;
    uint8_t uninterpreted10[8];
    uint32_t uninterpreted22;
    uint32_t uninterpreted18;
    int64_t receivedAt; // time(2)
    uint32_t zcuID;     // sender
    uint8_t consumed;   // 0
    uint8_t spare;
};

/// Payload of close audio, 0x0101.
struct _zcu_close_audio_t {
    uint32_t taskID;
    uint32_t kind; // 3
};

/// Payload of close zones, 0x0102.
struct _zcu_close_zones_t {
    uint32_t zoneMask;
    uint8_t reserved[8];
};

/// Payload of the emergency requests 0x0123 and 0x0124.
struct _zcu_emergency_t {
    uint32_t nodeID;
    uint16_t priority; // 256 less the host's
};
#pragma pack(pop)

static_assert(sizeof(tagZCU_PARAM) == 44 && offsetof(tagZCU_PARAM, zcuID) == 6);
static_assert(offsetof(tagZCU_PARAM, auxDeviceID) == 34 && offsetof(tagZCU_PARAM, sourceNodeID) == 40);
static_assert(sizeof(_vxa_play_task_req_t_V2) == 66 && offsetof(_vxa_play_task_req_t_V2, source) == 13);
static_assert(offsetof(_vxa_play_task_req_t_V2, recovery) == 25 && offsetof(_vxa_play_task_req_t_V2, all) == 29);
static_assert(offsetof(_vxa_play_task_req_t_V2, zoneMask) == 38);
static_assert(offsetof(_vxa_play_task_req_t_V2, streamKind) == 50);
static_assert(sizeof(_vxa_play_task_rsp_t) == 29 && offsetof(_vxa_play_task_rsp_t, taskID) == 21);
static_assert(sizeof(tagZCU_TRIGGERTASK) == 43 && sizeof(_vxa_join_mcast_rsp_t) == 26);
static_assert(sizeof(tagZCU_JOINMCAST) == 40 && sizeof(_zcu_close_audio_t) == 8 && sizeof(_zcu_close_zones_t) == 12);
static_assert(sizeof(_zcu_emergency_t) == 6);
