// The two-channel ADPCM variant.
#include "codec/adpcm.h"
#include "codec/adpcm_decode.h"
#include "codec/adpcm_encode.h"

namespace {

constexpr int kNoRounding = 16; // shifts every step size to 0
using ChannelEncoder = adpcm::Encoder<kNoRounding>;

constexpr adpcm::DecoderSteps kSteps =
    adpcm::MakeDecoderSteps([](int size, int magnitude) { return magnitude * size >> 2; });

} // namespace

// The channels do not depend on each other, so that the processor works on both at once.
void Intel_adpcm_coder(const short* pcm, char* code, int count, adpcm_state* state) {
    ChannelEncoder a(state->predictedA, state->indexA);
    ChannelEncoder b(state->predictedB, state->indexB);
    for (int i = 0; i < count; ++i) {
        const unsigned codeA = a.Encode(pcm[0]);
        const unsigned codeB = b.Encode(pcm[1]);
        code[i] = static_cast<char>(codeA << 4 | codeB);
        pcm += 2;
    }
    if (count > 0) { *state = {a.Predicted(), a.Index(), b.Predicted(), b.Index()}; }
}

void Intel_adpcm_decoder(const char* code, short* pcm, int count, adpcm_state* state) {
    adpcm::Decoder a(state->predictedA, state->indexA);
    adpcm::Decoder b(state->predictedB, state->indexB);
    for (int i = 0; i < count; ++i) {
        pcm[0] = a.Decode(kSteps, adpcm::FirstCode(code[i]));
        pcm[1] = b.Decode(kSteps, adpcm::SecondCode(code[i]));
        pcm += 2;
    }
    if (count > 0) { *state = {a.Predicted(), a.Index(), b.Predicted(), b.Index()}; }
}
