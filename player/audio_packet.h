// The audio datagram of every stream: building, and decoding what is received.
#pragma once

#include "codec/adpcm.h"

#include <cstddef>
#include <cstdint>

inline constexpr std::size_t kAudioPayloadBytes = 1024;     // ADPCM code of kFrameSamples
inline constexpr int kFrameSamples = 2048;                  // 46.4 ms at 44.1 kHz
inline constexpr int kFrameBytes = 4096;                    // kFrameSamples as PCM
inline constexpr std::size_t kMaxAudioDatagramBytes = 4124; // the longest kind
inline constexpr int kMaxDecodedBytes = 4096;
inline constexpr int kEndOfStreamReceived = -2;

inline constexpr uint16_t kTypeEndOfStream = 0x8112;
inline constexpr uint16_t kNominalLength = 1032;     // of datagrams with kAudioPayloadBytes and the long end of stream
inline constexpr uint16_t kNominalLengthShort = 520; // of the short kinds of both

#pragma pack(push, 1)
/// State of the coder after the payload. In memory the fields of adpcm_state have another order.
struct _vxa_adpcm_block_t {
    int16_t predictedA;
    int16_t predictedB; // 0 in the mono variant
    uint8_t indexA;
    uint8_t indexB;
};

/// The audio datagram that the library sends; little-endian. Other kinds differ in the length of the payload.
struct _vxa_data_packet_t_mcast {
    uint16_t magic; // kPacketMagic, as in command packets
    uint8_t reserved[4];
    uint32_t node;   // ID of the sender
    uint32_t stream; // 1; in an end of stream the ID of the zone controller that it is meant for
    uint16_t type;
    uint16_t length; // nominal; receivers do not read it
    uint8_t payload[kAudioPayloadBytes];
    _vxa_adpcm_block_t state;
    uint8_t trailing[4];
};
#pragma pack(pop)
static_assert(sizeof(_vxa_data_packet_t_mcast) == 1052 && offsetof(_vxa_data_packet_t_mcast, node) == 6);
static_assert(offsetof(_vxa_data_packet_t_mcast, type) == 14 && offsetof(_vxa_data_packet_t_mcast, payload) == 18);
static_assert(offsetof(_vxa_data_packet_t_mcast, state) == 1042);

/// Writes magic, node, stream, type and length; touches nothing else.
/// @param codec  1 and 2 mono ADPCM of 1024 and 441 bytes, any other value two-channel ADPCM of 1024 bytes
void SetMCastPackageHeader(_vxa_data_packet_t_mcast& packet, char codec, int node, int stream);

/// Codes a frame into the packet, together with the state after it.
/// @param frame    kFrameSamples samples
/// @param state    of this stream, carried from frame to frame
/// @param variant  kAdpcmTwoChannel or kAdpcmMono
void EncodeFrame(_vxa_data_packet_t_mcast& packet, const short* frame, adpcm_state& state, int variant);

/// Decodes one received datagram. Neither magic nor length are looked at.
///
/// @param datagram  as long as its type says, at most kMaxAudioDatagramBytes; give a buffer of that size that is zero
///                  beyond what was received
/// @param state     of this stream; a datagram is decoded with the state of the one before and then leaves the state
///                  that it carries, so that a lost one spoils only the next
/// @param out       receives PCM, 44.1 kHz; at least kMaxDecodedBytes
/// @return          bytes of PCM; 0 for an unknown type; kEndOfStreamReceived
int DecodeRecivePackage(const unsigned char* datagram, adpcm_state& state, short* out);

/// @return the largest sample, 0 when none is above 0
int GetMaxValue(const short* samples, int count);
/// @return the smallest sample, 0 when none is below 0
int GetMinValue(const short* samples, int count);
