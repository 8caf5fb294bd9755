// The exported pacing of host threads that generate audio.
#include "app/k740.h"
#include "common/stopwatch.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {
constexpr int32_t kMaxCorrectionMs = 5;
static_assert(sizeof(K740_PACING) == 40);
} // namespace

// The record is the host's memory and may lie at any address, so it is read and written by copy.

extern "C" K740_API void K740_SleepStart(K740_PACING* pacing) {
    if (pacing == nullptr) { return; }
    timeval now{};
    gettimeofday(&now, nullptr);
    const int64_t start[2] = {now.tv_sec, now.tv_usec};
    std::memcpy(pacing, start, sizeof(start));
}

extern "C" K740_API int K740_SleepEnd(unsigned periodMs, K740_PACING* pacing) {
    if (pacing == nullptr) { return 0; }
    K740_PACING record;
    std::memcpy(&record, pacing, sizeof(record));
    const int32_t correction = std::clamp(record.correction, -kMaxCorrectionMs, kMaxCorrectionMs);
    usTimer(static_cast<long>(periodMs) - correction);
    const uint32_t elapsed =
        GetTimePeriod({static_cast<time_t>(record.seconds), static_cast<suseconds_t>(record.microseconds)});
    record.correction = static_cast<int32_t>(elapsed + static_cast<uint32_t>(correction) - periodMs);
    // The rest of the record is the host's alone.
    std::memcpy(reinterpret_cast<unsigned char*>(pacing) + offsetof(K740_PACING, correction), &record.correction,
                sizeof(record.correction));
    return static_cast<int>(elapsed);
}
