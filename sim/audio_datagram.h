// The audio datagram: its payload types, reading it, and decoding a stream of them.
#pragma once

#include "sim/adpcm_decode.h"
#include "sim/bytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace k740::sim {

inline constexpr std::uint16_t kEndOfStreamType = 0x8112;

enum class Coding { TwoChannel, Mono, Pcm, EndOfStream };

/// What a type of datagram carries.
struct AudioFormat {
    Coding coding = Coding::EndOfStream;
    std::size_t payloadSize = 0; // bytes
    std::size_t samples = 0;     // 44.1 kHz mono
    std::uint16_t length = 0;    // nominal, as the header says it
};
/// @return nothing for a type without audio
std::optional<AudioFormat> FormatOf(std::uint16_t type);

/// One datagram of a multicast group: 18 bytes of header, the payload, 6 bytes of coder state, 4 bytes reserved.
struct AudioDatagram {
    std::uint32_t node = 0;   // of the sender
    std::uint32_t stream = 0; // 1, or the controller that an end-of-stream datagram is meant for
    std::uint16_t type = 0;
    std::uint16_t length = 0; // nominal, not the payload's size
    Coding coding = Coding::EndOfStream;
    Bytes payload;    // empty at the end of a stream
    AdpcmState block; // the coder's state after this payload: A value, B value, A index, B index
};

/// @return nothing for a wrong magic, an unknown type, or a size other than the type's (1052 or 540 bytes at the end
///         of a stream)
std::optional<AudioDatagram> ReadAudioDatagram(ByteView datagram);

/// The bytes of a datagram just as its fields say, whether they fit each other or not; the coding is not looked at.
Bytes Pack(const AudioDatagram& datagram);

inline constexpr std::size_t kEndOfStreamSize = 1052;    // bytes
inline constexpr std::size_t kHalfEndOfStreamSize = 540; // bytes

/// The bytes of an end-of-stream datagram.
/// @param controller  that is to leave the group
/// @param size        kEndOfStreamSize or kHalfEndOfStreamSize
Bytes EndOfStream(std::uint32_t node, std::uint32_t controller, std::size_t size = kEndOfStreamSize);

/// Decodes one stream. After each datagram it takes over the sender's state, as every receiver does.
class AudioDecoder {
public:
    /// @return the samples, 44.1 kHz mono; none at the end of a stream
    std::vector<std::int16_t> Decode(const AudioDatagram& datagram);

    /// Takes over the sender's state without decoding.
    void Skip(const AudioDatagram& datagram);

    /// Whether the datagram's state block is what coding its payload leads to from the stream's present state. It is
    /// not when a datagram is missing in between, unless the missing one moved nothing, as silence does.
    [[nodiscard]] bool Continues(const AudioDatagram& datagram) const;

private:
    AdpcmState m_state;
};

} // namespace k740::sim
