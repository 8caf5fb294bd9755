// Records of volume control: what is asked of a zone controller, and its answers, kept for the thread that tells the
// host. Levels are attenuations, 0 loudest to 19.
#pragma once

#include <sys/time.h>

#include <cstdint>

/// The first byte of an answer that carries volumes.
inline constexpr uint8_t kVolumeAnswerValid = 1;
inline constexpr uint8_t kVolumeUnchanged = 255;
inline constexpr int kVolumeChannelsV2 = 4;
inline constexpr int kVolumeChannelsV3 = 8;
inline constexpr int kQuietestLevel = 19;

#pragma pack(push, 1)
/// A request to set one channel of a version-2 controller.
struct tagADJUST_DEVICE_VOLUME_REQ_V2 {
    uint32_t zcuID;
    uint8_t channel; // 0..3
    uint8_t level;
};

/// Payload of 0x0301.
struct _zcu_adjust_volume_v3_t {
    uint8_t levels[kVolumeChannelsV3]; // kVolumeUnchanged leaves a channel as it is
    uint16_t reserved8;
    uint8_t reserved10;
};

/// A request to set the channels of a version-3 controller.
struct tagADJUST_DEVICE_VOLUME_REQ_V3 {
    uint32_t zcuID;
    _zcu_adjust_volume_v3_t volumes;
};

/// Payload of 0x0109.
struct _zcu_adjust_volume_v2_t {
    uint8_t channel;
    uint8_t level;
};

/// Payload of 0x8127, of a version-2 controller.
struct _zcu_volumes_v2_t {
    uint8_t valid; // kVolumeAnswerValid
    uint8_t levels[4];
    uint8_t uninterpreted[2];
};

/// Payload of 0x8302, of a version-3 controller.
struct _zcu_volumes_v3_t {
    uint8_t valid; // kVolumeAnswerValid
    uint8_t levels[10];
    uint8_t uninterpreted;
};

/// A received answer of a version-2 controller.
struct tagZCU_GETVOLUME_V2 {
    _zcu_volumes_v2_t volumes;
    uint32_t zcuID;
    int64_t receivedAt; // time(2)
};

/// A received answer of a version-3 controller.
struct tagZCU_GETVOLUME_V3 {
    _zcu_volumes_v3_t volumes;
    uint32_t zcuID;
    int64_t receivedAt; // time(2)
};
#pragma pack(pop)

enum class VolumeGeneration : uint8_t { V2, V3 };

/// A volume read that is to be sent a little later.
struct tagGETVOLUME_PARAM {
    uint32_t zcuID;
    VolumeGeneration generation;
    timeval queuedAt;
};

static_assert(sizeof(tagADJUST_DEVICE_VOLUME_REQ_V2) == 6 && sizeof(tagADJUST_DEVICE_VOLUME_REQ_V3) == 15);
static_assert(sizeof(_zcu_adjust_volume_v2_t) == 2 && sizeof(_zcu_adjust_volume_v3_t) == 11);
static_assert(sizeof(_zcu_volumes_v2_t) == 7 && sizeof(_zcu_volumes_v3_t) == 12);
static_assert(sizeof(tagZCU_GETVOLUME_V2) == 19 && sizeof(tagZCU_GETVOLUME_V3) == 24);
