#include "player/resampler_slots.h"

#include "player/audio_packet.h"
#include "public/fa_resample/fa_fir.h"

namespace {

constexpr int kKaiserDesign = 2;

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
    m_slots[index].handle = fa_resample_filter_init(outRate, inRate, kKaiserDesign, kFrameBytes, quality);
    return m_slots[index].handle == kNone ? -1 : 0;
}

void CResamplerSlots::UnInitResample(int slot) {
    if (!IsSlot(slot)) { return; }
    const CQBSemLocker lock(&m_lock);
    FreeLocked(static_cast<std::size_t>(slot));
}

void CResamplerSlots::FreeLocked(std::size_t slot) {
    if (m_slots[slot].handle != kNone) { fa_resample_filter_uninit(m_slots[slot].handle); }
    m_slots[slot].handle = kNone;
}
