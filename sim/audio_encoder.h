// Building a stream of audio datagrams from PCM; the other side of AudioDecoder.
#pragma once

#include "sim/adpcm_encode.h"
#include "sim/audio_datagram.h"

#include <cstddef>
#include <cstdint>

namespace k740::sim {

/// Codes one stream. Each datagram goes on from where the coder stood after the one before.
class AudioEncoder {
public:
    /// @param node    of the sender
    /// @param stream  number of the stream, 1 as a rule
    /// @param type    one that carries audio; throws std::invalid_argument for others
    AudioEncoder(std::uint32_t node, std::uint32_t stream, std::uint16_t type);

    /// 44.1 kHz mono samples in one datagram of the type.
    [[nodiscard]] std::size_t SamplesPerDatagram() const { return m_format.samples; }

    /// @param samples  SamplesPerDatagram() of them; throws std::length_error for any other number
    AudioDatagram Encode(SampleView samples);

private:
    const AudioFormat m_format;
    AudioDatagram m_datagram; // the latest
    AdpcmState m_state;
};

} // namespace k740::sim
