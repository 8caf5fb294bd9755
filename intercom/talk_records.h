// Records of intercom calls.
#pragma once

#include <time.h>

#include <cstddef>
#include <cstdint>

/// States of a call.
enum TalkStatus : int { kNoCall = -1, kTalkRinging = 0, kTalkTalking = 1, kTalkIdle = 2 };

/// Call answer codes, both ways.
inline constexpr uint8_t kAnswerRinging = 0;
inline constexpr uint8_t kAnswerAccepted = 1;
inline constexpr uint8_t kAnswerHungUp = 2; // also busy

/// Results of what may be refused to a call; 0 is done.
inline constexpr int kNoCallback = -1; // of the host
inline constexpr int kWrongDevice = -2;
inline constexpr int kWrongState = -3;

inline constexpr std::size_t kMaxCalls = 1'024;

/// Distinguishes a call of an intercom from its later ones.
using CallInstance = uint32_t;

/// The current or last call of one intercom.
struct tagTALK_STATUS {
    uint32_t intercomID;
    uint32_t peerID; // paging station, 0 for none
    time_t changed;  // time(2) of the last change of the status
    int status;      // TalkStatus
    CallInstance call;

    bool operator==(int id) const { return intercomID == static_cast<uint32_t>(id); }
};

#pragma pack(push, 1)
/// Payload of the handshake answer 0x8700.
struct _talk_handshake_answer_t {
    uint8_t reserved0;
    uint8_t status;
    uint8_t reserved[7];
};

/// Payload of the invite 0x0701.
struct _talk_invite_t {
    uint8_t reserved[8];
};

/// Payload of the call answer 0x8701.
struct _talk_answer_t {
    uint8_t code;
    uint8_t reserved[8];
};
#pragma pack(pop)

inline constexpr std::size_t kRPKAudioBytes = 1300;
inline constexpr std::size_t kMaxReceivedAudio = 10'000;

/// A received audio datagram: cut when it is longer, zero beyond its end.
struct tagINTERCOM_RPK_AUDIO {
    unsigned char data[kRPKAudioBytes];
};

static_assert(sizeof(_talk_handshake_answer_t) == 9 && sizeof(_talk_invite_t) == 8 && sizeof(_talk_answer_t) == 9);
