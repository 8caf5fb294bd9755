// A stopwatch, time differences and the millisecond sleep of the audio pacing.
#pragma once

#include <sys/time.h>

#include <cstdint>

/// Stopwatch on the real-time clock (gettimeofday(2)): a change of the system time changes what it shows.
///
/// Not locked: it belongs to one thread or is guarded by its owner's lock.
class CQBTime {
public:
    virtual ~CQBTime() = default;

    /// Starts or restarts the measurement.
    void TimeStart();
    /// @return milliseconds since TimeStart modulo 2^32; 0xFFFFFFFF when never started. Goes on running.
    uint32_t TimeEnd() const;
    /// @return microseconds since TimeStart; 0xFFFFFFFF when never started. Goes on running.
    int64_t TimeEnd_us() const;

private:
    timeval m_start{};
    bool m_started = false;
};

/// @return milliseconds from start to now modulo 2^32; both ends are cut to milliseconds before they are subtracted
uint32_t GetTimePeriod(timeval start);

/// Sleeps ms milliseconds (not microseconds, despite the name); a signal may cut it short; 0 and below do not sleep.
void usTimer(long ms);

/// Looks for a condition every millisecond, for about ms milliseconds at most. @return whether it held
template <typename Condition> bool AwaitCondition(Condition condition, unsigned ms) {
    CQBTime waited;
    waited.TimeStart();
    while (!condition()) {
        if (waited.TimeEnd() >= ms) { return false; }
        usTimer(1);
    }
    return true;
}
