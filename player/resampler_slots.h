// Rational resamplers, one for each channel at the most.
#pragma once

#include "common/sem.h"
#include "player/channel_table.h"

#include <array>
#include <cstdint>

/// Any thread may create and free. The stream paths convert by linear interpolation and use none of these.
class CResamplerSlots {
public:
    CResamplerSlots() = default;
    ~CResamplerSlots();
    CResamplerSlots(const CResamplerSlots&) = delete;
    CResamplerSlots& operator=(const CResamplerSlots&) = delete;

    /// Creates a resampler for frames of 4096 bytes; one that the slot holds is freed first.
    /// @param slot     0..199
    /// @param quality  gain of the resampler
    /// @return         0; -1 when the slot does not exist or the resampler cannot be created
    int InitResample(int slot, int inRate, int outRate, float quality);
    /// Frees the slot's resampler, if it holds one.
    void UnInitResample(int slot);

private:
    void FreeLocked(std::size_t slot) K740_REQUIRES(m_lock);

    CQBSem m_lock;
    std::array<uintptr_t, kChannels> m_handles K740_GUARDED_BY(m_lock){}; // 0 or refused for none
};
