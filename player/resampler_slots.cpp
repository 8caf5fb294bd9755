#include "player/resampler_slots.h"

#include "player/audio_packet.h"
#include "public/fa_resample/fa_fir.h"

#include <utility>

namespace {

bool IsSlot(int slot) {
    return slot >= 0 && slot < kChannels;
}

} // namespace

CResamplerSlots::~CResamplerSlots() {
    for (int slot = 0; slot < kChannels; ++slot) { UnInitResample(slot); }
}

int CResamplerSlots::InitResample(int slot, int inRate, int outRate, float quality) {
    if (!IsSlot(slot)) { return -1; }
    const auto index = static_cast<std::size_t>(slot);
    const CQBSemLocker lock(&m_lock);
    FreeLocked(index);
    m_handles[index] = fa_resample_filter_init(outRate, inRate, kFaKaiser, kFrameBytes, quality);
    return m_handles[index] == kFaRefused ? -1 : 0;
}

void CResamplerSlots::UnInitResample(int slot) {
    if (!IsSlot(slot)) { return; }
    const CQBSemLocker lock(&m_lock);
    FreeLocked(static_cast<std::size_t>(slot));
}

void CResamplerSlots::FreeLocked(std::size_t slot) {
    fa_resample_filter_uninit(std::exchange(m_handles[slot], 0));
}
