// Command codes and ports of the control protocol. A reply carries its request's code with the top bit set.
#pragma once

#include <cstdint>

inline constexpr uint16_t kReplyBit = 0x8000;

inline constexpr uint16_t kCmdCloseAudio = 0x0101;
inline constexpr uint16_t kCmdCloseZones = 0x0102;
inline constexpr uint16_t kCmdAdjustVolumeV2 = 0x0109;
inline constexpr uint16_t kCmdAdjustVolumeV2Answer = kCmdAdjustVolumeV2 | kReplyBit;
inline constexpr uint16_t kCmdEnterEmergency = 0x0123;
inline constexpr uint16_t kCmdExitEmergency = 0x0124;
inline constexpr uint16_t kCmdHeartbeat = 0x0125;
inline constexpr uint16_t kCmdHeartbeatAnswer = kCmdHeartbeat | kReplyBit;
inline constexpr uint16_t kCmdZCUStatusReport = 0x8126;
inline constexpr uint16_t kCmdGetVolumeV2 = 0x0127;
inline constexpr uint16_t kCmdGetVolumeV2Answer = kCmdGetVolumeV2 | kReplyBit;
inline constexpr uint16_t kCmdGetVersion = 0x0132;
inline constexpr uint16_t kCmdGetVersionAnswer = kCmdGetVersion | kReplyBit;
inline constexpr uint16_t kCmdTriggerTask = 0x0205;
inline constexpr uint16_t kCmdTriggerTaskAnswer = kCmdTriggerTask | kReplyBit;
inline constexpr uint16_t kCmdJoinMulticastReport = 0x8206;
inline constexpr uint16_t kCmdAdjustVolumeV3 = 0x0301;
inline constexpr uint16_t kCmdAdjustVolumeV3Answer = kCmdAdjustVolumeV3 | kReplyBit;
inline constexpr uint16_t kCmdGetVolumeV3 = 0x0302;
inline constexpr uint16_t kCmdGetVolumeV3Answer = kCmdGetVolumeV3 | kReplyBit;
inline constexpr uint16_t kCmdGetZoneMulticast = 0x0303;
inline constexpr uint16_t kCmdGetZoneMulticastAnswer = kCmdGetZoneMulticast | kReplyBit;
inline constexpr uint16_t kCmdRPKMonitor = 0x030A;
inline constexpr uint16_t kCmdRPKMonitorAnswer = kCmdRPKMonitor | kReplyBit;
inline constexpr uint16_t kCmdAddTaskExtend = 0x0313;
inline constexpr uint16_t kCmdAddTaskExtendAnswer = kCmdAddTaskExtend | kReplyBit;
inline constexpr uint16_t kCmdDelTaskExtend = 0x0314;
inline constexpr uint16_t kCmdDelTaskExtendAnswer = kCmdDelTaskExtend | kReplyBit;
inline constexpr uint16_t kCmdRPKHeartbeat = 0x0700; // to an intercom: handshake
inline constexpr uint16_t kCmdRPKStatusReport = kCmdRPKHeartbeat | kReplyBit;
inline constexpr uint16_t kCmdIntercomHandshakeAnswer = kCmdRPKStatusReport; // from an intercom
inline constexpr uint16_t kCmdIntercomInvite = 0x0701;
inline constexpr uint16_t kCmdIntercomAnswer = kCmdIntercomInvite | kReplyBit;
inline constexpr uint16_t kCmdRPKTask = 0x0702;
inline constexpr uint16_t kCmdRPKTaskAnswer = kCmdRPKTask | kReplyBit;

inline constexpr int kRequestPort = 28001;  // requests: devices and the library listen
inline constexpr int kReplyPort = 29001;    // replies and reports
inline constexpr int kIntercomPort = 29002; // intercom audio
