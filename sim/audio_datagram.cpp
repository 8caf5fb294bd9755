#include "sim/audio_datagram.h"

#include "sim/wire.h"

#include <algorithm>
#include <array>

namespace k740::sim {
namespace {

constexpr std::size_t kHeaderSize = 18;  // bytes
constexpr std::size_t kTrailerSize = 10; // bytes: state block and reserved

struct Kind {
    std::uint16_t type;
    AudioFormat format;
};
constexpr AudioFormat kTwoChannel{Coding::TwoChannel, 1024, 2048, 1032};
constexpr AudioFormat kMono{Coding::Mono, 1024, 2048, 1032};
constexpr AudioFormat kShortMono{Coding::Mono, 441, 882, 520};
constexpr AudioFormat kDoubleMono{Coding::Mono, 882, 1764, 890};
constexpr AudioFormat kPcm{Coding::Pcm, 4096, 2048, 4104};
constexpr AudioFormat kShortPcm{Coding::Pcm, 1764, 882, 1772};
constexpr AudioFormat kDoublePcm{Coding::Pcm, 3528, 1764, 3536};
constexpr std::array<Kind, 13> kKinds{{{341, kTwoChannel},
                                       {342, kTwoChannel},
                                       {343, kMono},
                                       {344, kMono},
                                       {345, kShortMono},
                                       {352, kShortMono},
                                       {353, kDoublePcm},
                                       {354, kPcm},
                                       {356, kPcm},
                                       {355, kShortPcm},
                                       {357, kShortPcm},
                                       {359, kDoubleMono},
                                       {360, kDoubleMono}}};
constexpr std::uint16_t kEndOfStreamLength = 1032; // nominal
constexpr std::uint16_t kHalfEndOfStreamLength = 520;

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
    if (audio.type == kEndOfStreamType) {
        return datagram.size() == kEndOfStreamSize || datagram.size() == kHalfEndOfStreamSize;
    }
    const auto format = FormatOf(audio.type);
    if (!format || datagram.size() != kHeaderSize + format->payloadSize + kTrailerSize) { return false; }
    const ByteView payload = datagram.subspan(kHeaderSize, format->payloadSize);
    audio.coding = format->coding;
    audio.payload.assign(payload.begin(), payload.end());
    audio.block = ReadBlock(datagram.last(kTrailerSize));
    return true;
}

} // namespace

std::optional<AudioFormat> FormatOf(std::uint16_t type) {
    const auto* kind = std::ranges::find(kKinds, type, &Kind::type);
    return kind == kKinds.end() ? std::nullopt : std::optional(kind->format);
}

Bytes Pack(const AudioDatagram& datagram) {
    ByteWriter writer;
    writer.Put(kMagic).Fill(4, 0).Put(datagram.node).Put(datagram.stream).Put(datagram.type).Put(datagram.length);
    writer.PutAll(datagram.payload).Put(datagram.block.a.value).Put(datagram.block.b.value);
    return writer.Put(datagram.block.a.index).Put(datagram.block.b.index).Fill(4, 0).Get();
}

Bytes EndOfStream(std::uint32_t node, std::uint32_t controller, std::size_t size) {
    AudioDatagram end;
    end.node = node;
    end.stream = controller;
    end.type = kEndOfStreamType;
    end.length = size == kHalfEndOfStreamSize ? kHalfEndOfStreamLength : kEndOfStreamLength;
    end.payload.resize(size - kHeaderSize - kTrailerSize);
    return Pack(end);
}

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
