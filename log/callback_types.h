// Names of the callback types: each begins a line of the callback log and names the file that the line goes to.
#pragma once

#include <array>

inline constexpr const char* kZCUStatusType = "PZCUSTATUS";
inline constexpr const char* kZoneStatusType = "PZONESTATUS";
inline constexpr const char* kZCUVolumeType = "PZCUVOLUME";
inline constexpr const char* kTaskStatusType = "PTASKSTATUS";
inline constexpr const char* kMonitorZoneType = "PMONITORZONE";
inline constexpr const char* kRPKStatusType = "PRPKSTATUS";
inline constexpr const char* kRPKPTTAudioType = "PRPKPTTAUDIO";
inline constexpr const char* kTrainMessageType = "PTRAINMESSAGE";
inline constexpr const char* kTrainAudioType = "PTRAINAUDIO";
inline constexpr const char* kIntercomMessageType = "PINTERCOMMESSAGE";
inline constexpr const char* kIntercomAudioType = "PINTERCOMAUDIO";

/// All of them, in the order in which their files are written.
inline constexpr std::array kCallbackTypes{kZCUStatusType,   kZoneStatusType,      kZCUVolumeType,    kTaskStatusType,
                                           kMonitorZoneType, kRPKStatusType,       kRPKPTTAudioType,  kTrainMessageType,
                                           kTrainAudioType,  kIntercomMessageType, kIntercomAudioType};
