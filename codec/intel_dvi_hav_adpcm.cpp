// The mono ADPCM variant.
#include "codec/adpcm.h"
#include "codec/adpcm_decode.h"
#include "codec/adpcm_encode.h"

namespace {

constexpr int kRoundingShift = 3; // both directions move the prediction by an eighth of the step more
using MonoEncoder = adpcm::Encoder<kRoundingShift>;

constexpr adpcm::DecoderSteps kSteps = adpcm::MakeDecoderSteps([](int size, int magnitude) {
    return (size >> kRoundingShift) + ((magnitude & 4) != 0 ? size : 0) + ((magnitude & 2) != 0 ? size >> 1 : 0) +
           ((magnitude & 1) != 0 ? size >> 2 : 0);
});

char CodePair(MonoEncoder& encoder, const short* pcm) {
    const unsigned first = encoder.Encode(pcm[0]);
    const unsigned second = encoder.Encode(pcm[1]);
    return static_cast<char>(first << 4 | second);
}

} // namespace

void Intel_DVI_HAV_adpcm_coder(const short* pcm, char* code, int count, adpcm_state* state) {
    MonoEncoder encoder(state->predictedA, state->indexA);
    for (int i = 0; i < count; ++i) {
        code[i] = encoder.IsAtRest() && (pcm[0] | pcm[1]) == 0 ? char{0} : CodePair(encoder, pcm);
        pcm += 2;
    }
    if (count > 0) {
        state->predictedA = encoder.Predicted();
        state->indexA = encoder.Index();
    }
}

void Intel_DVI_HAV_adpcm_decoder(const char* code, short* pcm, int count, adpcm_state* state) {
    adpcm::Decoder decoder(state->predictedA, state->indexA);
    for (int i = 0; i < count; ++i) {
        pcm[0] = decoder.Decode(kSteps, adpcm::FirstCode(code[i]));
        pcm[1] = decoder.Decode(kSteps, adpcm::SecondCode(code[i]));
        pcm += 2;
    }
    if (count > 0) {
        state->predictedA = decoder.Predicted();
        state->indexA = decoder.Index();
    }
}
