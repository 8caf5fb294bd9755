// Records of the virtual zone controllers that the library plays.
#pragma once

#include "zcu/trigger_records.h"

#include <cstdint>
#include <vector>

/// Distinguishes a play request from every later one for the same virtual controller and task.
using PlayInstance = uint32_t;

/// One virtual controller that takes part in a task.
struct tagDEVICE_ZONE {
    uint32_t virtualZCUID;
    PlayInstance instance;
    uint32_t zoneMask;

    bool operator==(int id) const { return virtualZCUID == static_cast<uint32_t>(id); }
};

/// One task that virtual controllers play.
struct tagVIRTUAL_TASK_ZONES {
    uint32_t taskID;
    uint32_t sourceID; // who asked
    std::vector<tagDEVICE_ZONE> zones;
    _vxa_play_task_req_t_V2 request; // of the controller that came first
    int64_t created;                 // time(2)

    bool IsOf(int source, int task) const {
        return taskID == static_cast<uint32_t>(task) && sourceID == static_cast<uint32_t>(source);
    }
};

#pragma pack(push, 1)
/// Payload of 0x0313 and 0x0314: zones that join a task later.
struct tagPLAY_TASK_EXTEND {
    uint8_t key[16]; // equal keys, equal records
    uint8_t value[12];
};

/// Payload of the zone multicast answer 0x8303 of a virtual controller, which plays one thing in all its zones.
struct _virtual_zone_mcast_t {
    uint8_t valid; // 1
    uint32_t group;
    uint32_t port;
    uint8_t reserved[56];
};
#pragma pack(pop)
static_assert(sizeof(tagPLAY_TASK_EXTEND) == 28 && sizeof(_virtual_zone_mcast_t) == 65);
