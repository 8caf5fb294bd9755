#include "player/audio_packet.h"

#include "protocol/cmd_packet.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <numeric>

namespace {

constexpr uint16_t kTypeTwoChannel = 341;
constexpr uint16_t kTypeMono = 343;
constexpr uint16_t kTypeMonoShort = 345;

enum class Coding { TwoChannel, Mono, Pcm };

struct AudioType {
    uint16_t type;
    Coding coding;
    int payloadBytes;
};

constexpr AudioType kAudioTypes[] = {
    {kTypeTwoChannel, Coding::TwoChannel, 1024},
    {342, Coding::TwoChannel, 1024},
    {kTypeMono, Coding::Mono, 1024},
    {344, Coding::Mono, 1024},
    {kTypeMonoShort, Coding::Mono, 441},
    {352, Coding::Mono, 441}, // not 346
    {353, Coding::Pcm, 3528},
    {354, Coding::Pcm, 4096},
    {356, Coding::Pcm, 4096},
    {355, Coding::Pcm, 1764},
    {357, Coding::Pcm, 1764},
    {359, Coding::Mono, 882},
    {360, Coding::Mono, 882},
};

template <typename Value> Value ReadAt(const unsigned char* datagram, std::size_t offset) {
    Value value;
    std::memcpy(&value, datagram + offset, sizeof(value));
    return value;
}

const AudioType* FindType(uint16_t type) {
    const auto* found = std::find_if(std::begin(kAudioTypes), std::end(kAudioTypes),
                                     [type](const AudioType& known) { return known.type == type; });
    return found == std::end(kAudioTypes) ? nullptr : found;
}

} // namespace

void SetMCastPackageHeader(_vxa_data_packet_t_mcast& packet, char codec, int node, int stream) {
    packet.magic = kPacketMagic;
    packet.node = static_cast<uint32_t>(node);
    packet.stream = static_cast<uint32_t>(stream);
    packet.type = codec == 1 ? kTypeMono : codec == 2 ? kTypeMonoShort : kTypeTwoChannel;
    packet.length = codec == 2 ? kNominalLengthShort : kNominalLength;
}

void EncodeFrame(_vxa_data_packet_t_mcast& packet, const short* frame, adpcm_state& state, int variant) {
    adpcm_coder(frame, reinterpret_cast<char*>(packet.payload), static_cast<int>(kAudioPayloadBytes), &state, variant);
    packet.state = {state.predictedA, state.predictedB, static_cast<uint8_t>(state.indexA),
                    static_cast<uint8_t>(state.indexB)};
}

int DecodeRecivePackage(const unsigned char* datagram, adpcm_state& state, short* out) {
    const auto type = ReadAt<uint16_t>(datagram, offsetof(_vxa_data_packet_t_mcast, type));
    if (type == kTypeEndOfStream) { return kEndOfStreamReceived; }
    const AudioType* known = FindType(type);
    if (known == nullptr) { return 0; }

    const std::size_t payloadOffset = offsetof(_vxa_data_packet_t_mcast, payload);
    const unsigned char* payload = datagram + payloadOffset;
    const auto payloadBytes = static_cast<std::size_t>(known->payloadBytes);
    if (known->coding == Coding::Pcm) {
        std::memcpy(out, payload, payloadBytes);
        return known->payloadBytes;
    }
    adpcm_decoder(reinterpret_cast<const char*>(payload), out, known->payloadBytes, &state,
                  known->coding == Coding::TwoChannel ? kAdpcmTwoChannel : kAdpcmMono);
    const auto block = ReadAt<_vxa_adpcm_block_t>(datagram, payloadOffset + payloadBytes);
    state.predictedA = block.predictedA;
    state.indexA = static_cast<int8_t>(block.indexA);
    state.predictedB = block.predictedB;
    state.indexB = static_cast<int8_t>(block.indexB);
    return known->payloadBytes * 4;
}

int GetMaxValue(const short* samples, int count) {
    return std::accumulate(samples, samples + std::max(count, 0), 0, [](int a, int b) { return std::max(a, b); });
}

int GetMinValue(const short* samples, int count) {
    return std::accumulate(samples, samples + std::max(count, 0), 0, [](int a, int b) { return std::min(a, b); });
}
