// Pacing for senders that generate audio at their own pace.
#pragma once

#include "common/stopwatch.h"

/// Sleeps the rest of a packet's period of 46.4 ms on average: nineteen times 46 ms, then once 54 ms.
/// @param drift    milliseconds that former periods ran over; counted from -10 to 10 at the most
/// @param counter  periods since the last long one; starts at 0
/// @param timer    started by the caller at the beginning of the period
void MultiCastSleep464(int& drift, int& counter, const CQBTime& timer);
/// The same with periods of 20 ms, drift counted from -5 to 5.
void MultiCastSleep20(int& drift, const CQBTime& timer);
/// The same with periods of 10 ms.
void MultiCastSleep10(int& drift, const CQBTime& timer);

/// Counts a period of MultiCastSleep464. @return its length in milliseconds
int Period464(int& counter);

/// How long to sleep and what to carry on: the rule behind the functions above.
struct PacingStep {
    int sleepMs;
    int clampedDrift;
};
PacingStep PlanPacing(int periodMs, int drift, int maxDriftMs);
/// @param elapsedMs  what the stopwatch shows after the sleep. @return the drift to carry on
int CarryDrift(const PacingStep& step, int periodMs, int elapsedMs);
