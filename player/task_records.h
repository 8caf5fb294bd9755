// Records of the task engine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

inline constexpr int kFirstTaskID = 1;
inline constexpr int kLastTaskID = 50'000;
inline constexpr std::size_t kMaxTaskMulticastText = 48; // characters
inline constexpr int kFullVolume = 100;                  // percent

/// States of a task.
inline constexpr short kTaskNone = 0;
inline constexpr short kTaskAccepted = 1;
inline constexpr short kTaskBroadcasting = 2;
inline constexpr short kTaskNoFreeChannel = -1;
inline constexpr short kTaskGroupNotJoined = -2;
inline constexpr short kTaskNotTriggered = -3;

inline constexpr uint16_t kTaskTypeNetAUX = 2;
inline constexpr uint16_t kTaskTypeAudioStream = 3;

inline constexpr short kAudioSourceStream = 1;
inline constexpr short kAudioSourceNetAUX = 2;

/// Tells one acceptance of a task ID from the next: a host may start an ID again while its former thread still ends.
using TaskInstance = uint64_t;

constexpr bool IsTaskID(long taskID) {
    return taskID >= kFirstTaskID && taskID <= kLastTaskID;
}

constexpr bool IsRunning(short status) {
    return status == kTaskAccepted || status == kTaskBroadcasting;
}

/// One accepted task.
struct tagTASK_QUEUE {
    int taskID = 0;
    uint16_t sequence = 0; // 1..255, drawn at acceptance
    uint16_t type = 0;
    std::string zones; // trimmed and expanded
    short priority = 0;
    short recovery = 0;
    short dryContactOutput = 0;
    short volume = 0; // audio stream tasks
    int deviceID = 0; // net AUX tasks, as the next two
    int auxPort = 0;
    std::string multicastIP;
    TaskInstance instance = 0;
};

/// What is known of one task.
struct tagTASK_STATUS {
    int taskID = 0;
    short status = kTaskNone;
    short channelID = 0;
    std::string multicastIP;
    int priority = 0;
    int dryContactOutput = 0;
    int sequence = 0;
    short recovery = 0;
    short audioSource = 0;
    int deviceID = 0; // net AUX tasks, as the next
    int auxPort = 0;
    TaskInstance instance = 0; // the acceptance that owns it
};
