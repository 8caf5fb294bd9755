#include "sim/audio_datagram.h"

#include "sim/wire.h"

#include <algorithm>
#include <array>

namespace k740::sim {
namespace {

constexpr std::size_t kHeaderSize = 18;  // bytes
constexpr std::size_t kTrailerSize = 10; // bytes: state block and reserved
constexpr std::array<std::size_t, 2> kEndOfStreamSizes{1052, 540};

struct Kind {
    std::uint16_t type;
    Coding coding;
    std::size_t payloadSize; // bytes
};
constexpr std::array<Kind, 13> kKinds{{{341, Coding::TwoChannel, 1024},
                                       {342, Coding::TwoChannel, 1024},
                                       {343, Coding::Mono, 1024},
                                       {344, Coding::Mono, 1024},
                                       {345, Coding::Mono, 441},
                                       {352, Coding::Mono, 441},
                                       {353, Coding::Pcm, 3528},
                                       {354, Coding::Pcm, 4096},
                                       {356, Coding::Pcm, 4096},
                                       {355, Coding::Pcm, 1764},
                                       {357, Coding::Pcm, 1764},
                                       {359, Coding::Mono, 882},
                                       {360, Coding::Mono, 882}}};

AdpcmState ReadBlock(ByteView block) {
    return {{ReadAt<std::int16_t>(block, 0), block[4]}, {ReadAt<std::int16_t>(block, 2), block[5]}};
}

std::vector<std::int16_t> SamplesOf(ByteView pcm) {
    std::vector<std::int16_t> samples(pcm.size() / 2);
    for (std::size_t i = 0; i < samples.size(); ++i) { samples[i] = ReadAt<std::int16_t>(pcm, 2 * i); }
    return samples;
}

/// Fills in what the type decides.
bool ReadBody(ByteView datagram, AudioDatagram& audio) {
    if (audio.type == kEndOfStreamType) { return std::ranges::count(kEndOfStreamSizes, datagram.size()) > 0; }
    const auto* kind = std::ranges::find(kKinds, audio.type, &Kind::type);
    if (kind == kKinds.end() || datagram.size() != kHeaderSize + kind->payloadSize + kTrailerSize) { return false; }
    const ByteView payload = datagram.subspan(kHeaderSize, kind->payloadSize);
    audio.coding = kind->coding;
    audio.payload.assign(payload.begin(), payload.end());
    audio.block = ReadBlock(datagram.last(kTrailerSize));
    return true;
}

} // namespace

std::optional<AudioDatagram> ReadAudioDatagram(ByteView datagram) {
    if (datagram.size() < kHeaderSize || ReadAt<std::uint16_t>(datagram, 0) != kMagic) { return std::nullopt; }
    AudioDatagram audio;
    audio.node = ReadAt<std::uint32_t>(datagram, 6);
    audio.stream = ReadAt<std::uint32_t>(datagram, 10);
    audio.type = ReadAt<std::uint16_t>(datagram, 14);
    audio.length = ReadAt<std::uint16_t>(datagram, 16);
    return ReadBody(datagram, audio) ? std::optional(std::move(audio)) : std::nullopt;
}

std::vector<std::int16_t> AudioDecoder::Decode(const AudioDatagram& datagram) {
    std::vector<std::int16_t> samples;
    switch (datagram.coding) {
    case Coding::TwoChannel:
        samples = DecodeTwoChannel(datagram.payload, m_state);
        break;
    case Coding::Mono:
        samples = DecodeMono(datagram.payload, m_state);
        break;
    case Coding::Pcm:
        samples = SamplesOf(datagram.payload);
        break;
    case Coding::EndOfStream:
        break;
    }
    Skip(datagram);
    return samples;
}

void AudioDecoder::Skip(const AudioDatagram& datagram) {
    if (datagram.coding == Coding::TwoChannel || datagram.coding == Coding::Mono) { m_state = datagram.block; }
}

bool AudioDecoder::Continues(const AudioDatagram& datagram) const {
    AdpcmState state = m_state;
    switch (datagram.coding) {
    case Coding::TwoChannel:
        return TwoChannelCoderState(datagram.payload, state) == datagram.block;
    case Coding::Mono:
        DecodeMono(datagram.payload, state);
        return state == datagram.block;
    case Coding::Pcm:
    case Coding::EndOfStream:
        break;
    }
    return true;
}

} // namespace k740::sim
