// Decoding what one receiver of audio datagrams receives.
#pragma once

#include "player/audio_packet.h"

#include <cstddef>

inline constexpr std::size_t kDatagramRoomBytes = 5120;

/// Holds the datagram, the coder's state that goes from one to the next, and the decoded audio. Belongs to one thread.
class CAudioDecoder {
public:
    /// @return where to put a datagram, kDatagramRoomBytes
    unsigned char* Room() { return m_datagram; }
    /// Decodes the datagram in the room.
    /// @param length  of the datagram; what is beyond it reads as zeros, not as the one before
    /// @return        as DecodeRecivePackage
    int Decode(std::size_t length);
    /// @return the audio that was decoded last
    short* Audio() { return m_audio; }
    /// Forgets the state, as at the start of a stream.
    void Reset() { m_state = {}; }

private:
    adpcm_state m_state{};
    alignas(16) unsigned char m_datagram[kDatagramRoomBytes]{};
    alignas(16) short m_audio[kMaxDecodedBytes / sizeof(short)]{};
};
static_assert(kDatagramRoomBytes >= kMaxAudioDatagramBytes);
