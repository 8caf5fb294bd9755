// Both ADPCM variants written down step by step, with branches, as a second opinion on the library's.
#pragma once

#include "codec/adpcm_step.h"

#include <algorithm>

struct ReferenceChannel {
    int predicted;
    int index;

    int Step() const { return adpcm::kStepSizes[static_cast<std::size_t>(index)]; }

    void Move(int code, int vpdiff) {
        predicted = (code & 8) != 0 ? predicted - vpdiff : predicted + vpdiff;
        predicted = std::clamp(predicted, -32768, 32767);
        index = std::clamp(index + adpcm::kIndexAdjustments[static_cast<std::size_t>(code & 7)], 0, 88);
    }
};

inline int ReferenceTwoChannelCode(ReferenceChannel& channel, int sample) {
    int step = channel.Step();
    int code = 0;
    int rest = sample - channel.predicted;
    if (rest < 0) {
        code = 8;
        rest = -rest;
    }
    int vpdiff = 0;
    for (const int bit : {4, 2, 1}) {
        if (rest > step) {
            code |= bit;
            rest -= step;
            vpdiff += step;
        }
        step >>= 1;
    }
    channel.Move(code, vpdiff);
    return code;
}

inline int ReferenceTwoChannelDecode(ReferenceChannel& channel, int code) {
    const int step = channel.Step();
    int sum = 0;
    if ((code & 4) != 0) { sum += 4 * step; }
    if ((code & 2) != 0) { sum += 2 * step; }
    if ((code & 1) != 0) { sum += step; }
    channel.Move(code, sum >> 2);
    return channel.predicted;
}

inline int ReferenceMonoDecode(ReferenceChannel& channel, int code) {
    const int step = channel.Step();
    int vpdiff = step >> 3;
    if ((code & 4) != 0) { vpdiff += step; }
    if ((code & 2) != 0) { vpdiff += step >> 1; }
    if ((code & 1) != 0) { vpdiff += step >> 2; }
    channel.Move(code, vpdiff);
    return channel.predicted;
}

inline int ReferenceMonoCode(ReferenceChannel& channel, int sample) {
    ReferenceChannel quantiser = channel; // its thresholds are those of the two-channel variant
    const int code = ReferenceTwoChannelCode(quantiser, sample);
    ReferenceMonoDecode(channel, code);
    return code;
}
