// Coding to 4-bit IMA/DVI ADPCM in the two variants that audio datagrams carry; the other side of adpcm_decode.h.
#pragma once

#include "sim/adpcm_decode.h"
#include "sim/bytes.h"

#include <cstdint>
#include <span>

namespace k740::sim {

using SampleView = std::span<const std::int16_t>;

/// Codes pairs of samples to one byte each: the first is channel A in the high nibble, the second channel B.
/// @param samples  an even number of them
/// @param state    where the coder stands; moved
Bytes EncodeTwoChannel(SampleView samples, AdpcmState& state);

/// The standard IMA/DVI step, high nibble first, all samples on channel A. Its decoder arrives where the coder does.
Bytes EncodeMono(SampleView samples, AdpcmState& state);

} // namespace k740::sim
