#include "sim/audio_encoder.h"

#include <stdexcept>
#include <string>

namespace k740::sim {
namespace {

AudioFormat FormatOrThrow(std::uint16_t type) {
    const auto format = FormatOf(type);
    if (!format) { throw std::invalid_argument("no audio has the type " + std::to_string(type)); }
    return *format;
}

} // namespace

AudioEncoder::AudioEncoder(std::uint32_t node, std::uint32_t stream, std::uint16_t type)
    : m_format(FormatOrThrow(type)) {
    m_datagram.node = node;
    m_datagram.stream = stream;
    m_datagram.type = type;
    m_datagram.length = m_format.length;
    m_datagram.coding = m_format.coding;
}

AudioDatagram AudioEncoder::Encode(SampleView samples) {
    if (samples.size() != m_format.samples) { throw std::length_error("not the samples of one datagram"); }
    if (m_format.coding == Coding::Pcm) {
        m_datagram.payload = ByteWriter().PutAll(samples).Get();
        return m_datagram;
    }
    m_datagram.payload =
        m_format.coding == Coding::TwoChannel ? EncodeTwoChannel(samples, m_state) : EncodeMono(samples, m_state);
    m_datagram.block = m_state;
    return m_datagram;
}

} // namespace k740::sim
