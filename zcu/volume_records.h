// Volume answers of zone controllers, kept for the thread that reports them to the host.
#pragma once

#include <cstdint>

/// The first byte of an answer that carries volumes.
inline constexpr uint8_t kVolumeAnswerValid = 1;

#pragma pack(push, 1)
/// Answer of a version-2 controller: kVolumeAnswerValid, then four raw levels.
struct tagZCU_GETVOLUME_V2 {
    uint8_t valid;
    uint8_t levels[4];
    uint8_t uninterpreted[2];
    uint32_t zcuID;
    int64_t receivedAt; // time(2)
};

/// Answer of a version-3 controller: kVolumeAnswerValid, then ten raw levels.
struct tagZCU_GETVOLUME_V3 {
    uint8_t valid;
    uint8_t levels[10];
    uint8_t uninterpreted;
    uint32_t zcuID;
    int64_t receivedAt; // time(2)
};
#pragma pack(pop)
static_assert(sizeof(tagZCU_GETVOLUME_V2) == 19 && sizeof(tagZCU_GETVOLUME_V3) == 24);
