// 4-bit ADPCM of 16-bit PCM in the two variants that audio datagrams carry.
//
// Both variants adapt with the step-size and index tables of the IMA Digital Audio Focus and Technical Working Groups,
// "Recommended Practices for Enhancing Digital Audio Compatibility in Multimedia Systems" (1992). Each code byte
// holds two codes, the first sample's in the high nibble, which is the reverse of the order in WAV files.
#pragma once

#include <cstddef>
#include <cstdint>

/// Running state of one stream. Zero is the starting state. The mono variant uses channel A alone.
///
/// The index that a caller hands in may be any value, since it can come from the network: coders and decoders clamp it
/// to 0..88. What they write back is always in that range.
struct adpcm_state {
    int16_t predictedA; // last decoded sample of channel A
    int8_t indexA;      // step index of channel A, 0..88
    int16_t predictedB;
    int8_t indexB;
};
static_assert(sizeof(adpcm_state) == 8 && offsetof(adpcm_state, predictedB) == 4 && offsetof(adpcm_state, indexB) == 6);

constexpr int kAdpcmTwoChannel = 0; // variant numbers of adpcm_coder and adpcm_decoder
constexpr int kAdpcmMono = 1;

/// Codes PCM as ADPCM.
///
/// @param pcm      2 * count samples; in the two-channel variant the even ones are channel A, the odd ones channel B
/// @param code     receives count bytes
/// @param count    code bytes to produce; zero or less does nothing
/// @param state    read at the start, written at the end
/// @param variant  kAdpcmTwoChannel or kAdpcmMono; any other value does nothing
///
/// Any thread, on distinct states. Costs the same for every signal; the mono variant codes digital silence faster.
void adpcm_coder(const short* pcm, char* code, int count, adpcm_state* state, int variant);

/// Decodes ADPCM to PCM.
///
/// @param code     count bytes
/// @param pcm      receives 2 * count samples, in the order in which adpcm_coder takes them
/// @param count    code bytes; zero or less does nothing
/// @param state    read at the start, written at the end
/// @param variant  kAdpcmTwoChannel or kAdpcmMono; any other value does nothing
///
/// Any thread, on distinct states. Costs the same for every input.
void adpcm_decoder(const char* code, short* pcm, int count, adpcm_state* state, int variant);

/// Two channels, A in the high nibble and B in the low one. For a step size s and the magnitude bits 4, 2 and 1, the
/// coder moves the prediction by s, s>>1 and s>>2, the decoder by (4s, 2s and s together) >> 2, both without the
/// standard step's s>>3. So their states drift apart a little, and a stream carries the coder's state along.
void Intel_adpcm_coder(const short* pcm, char* code, int count, adpcm_state* state);
void Intel_adpcm_decoder(const char* code, short* pcm, int count, adpcm_state* state);

/// One channel with the standard IMA/DVI step, except that a difference equal to a threshold takes the lower code.
void Intel_DVI_HAV_adpcm_coder(const short* pcm, char* code, int count, adpcm_state* state);
void Intel_DVI_HAV_adpcm_decoder(const char* code, short* pcm, int count, adpcm_state* state);
