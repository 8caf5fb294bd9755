#include "codec/adpcm.h"

void adpcm_coder(const short* pcm, char* code, int count, adpcm_state* state, int variant) {
    if (variant == kAdpcmTwoChannel) { Intel_adpcm_coder(pcm, code, count, state); }
    if (variant == kAdpcmMono) { Intel_DVI_HAV_adpcm_coder(pcm, code, count, state); }
}

void adpcm_decoder(const char* code, short* pcm, int count, adpcm_state* state, int variant) {
    if (variant == kAdpcmTwoChannel) { Intel_adpcm_decoder(code, pcm, count, state); }
    if (variant == kAdpcmMono) { Intel_DVI_HAV_adpcm_decoder(code, pcm, count, state); }
}
