// The kinds of devices of an installation and the ID range of each.
#pragma once

inline constexpr int kDeviceZoneControllerV2 = 0;
inline constexpr int kDeviceZoneController = 1;
inline constexpr int kDevicePagingStation = 2;
inline constexpr int kDeviceAuxInterface = 3;
inline constexpr int kDeviceVirtualZoneController = 9; // played by the library itself
inline constexpr int kDeviceVirtualPagingStation = 10; // an intercom terminal, played by the library itself
inline constexpr int kLastDeviceType = 10;

inline constexpr int kFirstZoneControllerID = 1;
inline constexpr int kLastZoneControllerID = 999;
inline constexpr int kFirstPagingStationID = 5000;
inline constexpr int kLastPagingStationID = 5999;
inline constexpr int kFirstAuxInterfaceID = 7000;
inline constexpr int kLastAuxInterfaceID = 7999;

inline constexpr int kZonesOfController = 8; // numbered from 1

constexpr bool IsZone(int zone) {
    return zone >= 1 && zone <= kZonesOfController;
}

constexpr bool IsZoneControllerID(long id) {
    return id >= kFirstZoneControllerID && id <= kLastZoneControllerID;
}

constexpr bool IsPagingStationID(long id) {
    return id >= kFirstPagingStationID && id <= kLastPagingStationID;
}

constexpr bool IsAuxInterfaceID(long id) {
    return id >= kFirstAuxInterfaceID && id <= kLastAuxInterfaceID;
}

/// Tells whether a device of this type drives zones: real controllers of both generations and the virtual one.
constexpr bool IsZoneControllerType(int type) {
    return type == kDeviceZoneControllerV2 || type == kDeviceZoneController || type == kDeviceVirtualZoneController;
}
