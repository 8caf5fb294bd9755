// Absolute deadlines on the real-time clock, as sem_timedwait(3) and pthread_cond_timedwait(3) take them.
#pragma once

#include <sys/time.h>
#include <time.h>

inline constexpr unsigned kMicrosecondsPerMillisecond = 1000;
inline constexpr long kMicrosecondsPerSecond = 1'000'000;

/// @return start + us microseconds; whole seconds are carried, because a tv_nsec of a second or more is refused
inline timespec DeadlineAfter(const timeval& start, unsigned us) {
    const long microseconds = start.tv_usec + static_cast<long>(us);
    timespec deadline{};
    deadline.tv_sec = start.tv_sec + microseconds / kMicrosecondsPerSecond;
    deadline.tv_nsec = (microseconds % kMicrosecondsPerSecond) * 1000;
    return deadline;
}

/// @return now + us microseconds
inline timespec DeadlineAfter(unsigned us) {
    timeval now{};
    gettimeofday(&now, nullptr);
    return DeadlineAfter(now, us);
}
