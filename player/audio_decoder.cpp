#include "player/audio_decoder.h"

#include <cstring>

int CAudioDecoder::Decode(std::size_t length) {
    std::memset(m_datagram + length, 0, sizeof(m_datagram) - length);
    return DecodeRecivePackage(m_datagram, m_state, m_audio);
}
