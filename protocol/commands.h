// Command codes and ports of the control protocol. A reply carries its request's code with the top bit set.
#pragma once

#include <cstdint>

inline constexpr uint16_t kReplyBit = 0x8000;

inline constexpr uint16_t kCmdCloseAudio = 0x0101;
inline constexpr uint16_t kCmdCloseZones = 0x0102;
inline constexpr uint16_t kCmdEnterEmergency = 0x0123;
inline constexpr uint16_t kCmdExitEmergency = 0x0124;
inline constexpr uint16_t kCmdHeartbeat = 0x0125;
inline constexpr uint16_t kCmdHeartbeatAnswer = kCmdHeartbeat | kReplyBit;
inline constexpr uint16_t kCmdZCUStatusReport = 0x8126;
inline constexpr uint16_t kCmdTriggerTask = 0x0205;
inline constexpr uint16_t kCmdTriggerTaskAnswer = kCmdTriggerTask | kReplyBit;
inline constexpr uint16_t kCmdJoinMulticastReport = 0x8206;
inline constexpr uint16_t kCmdRPKHeartbeat = 0x0700;
inline constexpr uint16_t kCmdRPKStatusReport = kCmdRPKHeartbeat | kReplyBit;
inline constexpr uint16_t kCmdRPKTask = 0x0702;
inline constexpr uint16_t kCmdRPKTaskAnswer = kCmdRPKTask | kReplyBit;

inline constexpr int kRequestPort = 28001; // requests: devices and the library listen
inline constexpr int kReplyPort = 29001;   // replies and reports
