// Records of the queries that wait for their answer: a controller's multicast groups, a device's version.
#pragma once

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)
/// The group on which the audio of a zone circulates.
struct _zone_mcast_t {
    uint32_t group;         // ConvertIPToString; 0 for none
    uint32_t uninterpreted; // carried along
};

/// A received answer to the query for the zones' groups, 0x8303.
struct tagQUERY_ZONE_MCAST_IP_RSP {
    uint8_t table[64]; // see ZoneMulticast
    uint8_t trailing;
    uint32_t zcuID;     // sender
    int64_t receivedAt; // time(2)
    uint8_t consumed;   // 0
    uint8_t spare;
};

/// Payload of the version answer 0x8132.
struct _device_version_t {
    uint8_t texts[112]; // zero-terminated texts at the three offsets below
    uint32_t uninterpreted112;
    uint16_t deviceID; // its low half
};

/// A received answer to the version query.
struct tagQUERY_DEVICE_VERSION_RSP {
    _device_version_t version;
    uint8_t unused[1030]; // 0
    uint32_t deviceID;    // sender
    int64_t receivedAt;   // time(2)
};
#pragma pack(pop)

inline constexpr std::size_t kKernelVersionOffset = 24;
inline constexpr std::size_t kApplicationVersionOffset = 36;
inline constexpr std::size_t kMCUVersionOffset = 84;
inline constexpr std::size_t kApplicationVersionBytes = 24; // as the library itself answers

static_assert(sizeof(_zone_mcast_t) == 8 && sizeof(tagQUERY_ZONE_MCAST_IP_RSP) == 79);
static_assert(sizeof(_device_version_t) == 118 && sizeof(tagQUERY_DEVICE_VERSION_RSP) == 1160);
static_assert(offsetof(tagQUERY_DEVICE_VERSION_RSP, deviceID) == 1148);
static_assert(offsetof(tagQUERY_DEVICE_VERSION_RSP, receivedAt) == 1152);
