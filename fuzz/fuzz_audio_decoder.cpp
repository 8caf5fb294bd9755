// Feeds sequences of datagrams to the audio decoder, each with the state that the one before has left.
#include "player/audio_packet.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t kLengthBytes = 2;

/// @return the next datagram's length, taken from the input
std::size_t TakeLength(const uint8_t*& data, std::size_t& size) {
    uint16_t wanted = 0;
    std::memcpy(&wanted, data, kLengthBytes);
    data += kLengthBytes;
    size -= kLengthBytes;
    return std::min<std::size_t>(wanted, std::min(size, kMaxAudioDatagramBytes));
}

void CheckDecoded(int bytes) {
    const bool possible =
        bytes == 0 || bytes == kEndOfStreamReceived || bytes == 1764 || bytes == 3528 || bytes == 4096;
    if (!possible) { std::abort(); }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    adpcm_state state{};
    std::array<short, kMaxDecodedBytes / sizeof(short)> pcm{};
    while (size > kLengthBytes) {
        const std::size_t length = TakeLength(data, size);
        std::array<unsigned char, kMaxAudioDatagramBytes> datagram{};
        std::memcpy(datagram.data(), data, length);
        data += length;
        size -= length;
        CheckDecoded(DecodeRecivePackage(datagram.data(), state, pcm.data()));
        GetMaxValue(pcm.data(), static_cast<int>(pcm.size()));
        GetMinValue(pcm.data(), static_cast<int>(pcm.size()));
    }
    return 0;
}
