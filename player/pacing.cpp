#include "player/pacing.h"

#include <algorithm>

namespace {

constexpr int kShortPeriodMs = 46;
constexpr int kLongPeriodMs = 54;
constexpr int kPeriodsPerLongOne = 20;
constexpr int kMaxDrift464Ms = 10;
constexpr int kMaxDriftMs = 5;

void SleepRestOfPeriod(int periodMs, int maxDriftMs, int& drift, const CQBTime& timer) {
    const PacingStep step = PlanPacing(periodMs, drift, maxDriftMs);
    usTimer(step.sleepMs);
    drift = CarryDrift(step, periodMs, static_cast<int>(timer.TimeEnd()));
}

} // namespace

PacingStep PlanPacing(int periodMs, int drift, int maxDriftMs) {
    const int clamped = std::clamp(drift, -maxDriftMs, maxDriftMs);
    return {periodMs - clamped, clamped};
}

int CarryDrift(const PacingStep& step, int periodMs, int elapsedMs) {
    return step.clampedDrift - periodMs + elapsedMs;
}

int Period464(int& counter) {
    ++counter;
    if (counter % kPeriodsPerLongOne != 0) { return kShortPeriodMs; }
    counter = 0;
    return kLongPeriodMs;
}

void MultiCastSleep464(int& drift, int& counter, const CQBTime& timer) {
    SleepRestOfPeriod(Period464(counter), kMaxDrift464Ms, drift, timer);
}

void MultiCastSleep20(int& drift, const CQBTime& timer) {
    SleepRestOfPeriod(20, kMaxDriftMs, drift, timer);
}

void MultiCastSleep10(int& drift, const CQBTime& timer) {
    SleepRestOfPeriod(10, kMaxDriftMs, drift, timer);
}
