// Decoding of 4-bit IMA/DVI ADPCM in the two variants that audio datagrams carry.
#pragma once

#include "sim/bytes.h"

#include <cstdint>
#include <vector>

namespace k740::sim {

/// One channel: predicted value -32768..32767 and step index 0..88 (a block from the network may hold up to 255).
struct AdpcmChannel {
    std::int16_t value = 0;
    std::uint8_t index = 0;

    bool operator==(const AdpcmChannel&) const = default;
};

/// Both channels; the mono variant uses only a. Zero is where a stream starts.
struct AdpcmState {
    AdpcmChannel a;
    AdpcmChannel b;

    bool operator==(const AdpcmState&) const = default;
};

/// Decodes one code byte after the other into two samples each: the high nibble is channel A, the low one channel B.
/// The movement is ((4s, 2s and s for the bits set) >> 2); there is no s/8 term.
std::vector<std::int16_t> DecodeTwoChannel(ByteView codes, AdpcmState& state);

/// The standard IMA/DVI step, high nibble first, both nibbles of channel A.
std::vector<std::int16_t> DecodeMono(ByteView codes, AdpcmState& state);

/// Where a two-channel coder stands after the codes. A coder moves by s + (s >> 1) + (s >> 1 >> 1) for the bits set and
/// so drifts from its decoder; a datagram's state block is the coder's.
AdpcmState TwoChannelCoderState(ByteView codes, AdpcmState state);

} // namespace k740::sim
