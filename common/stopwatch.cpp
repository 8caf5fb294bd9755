#include "common/stopwatch.h"

#include <sys/select.h>

namespace {

constexpr uint32_t kNeverStarted = 0xFFFFFFFF;

uint32_t Milliseconds(const timeval& time) {
    return static_cast<uint32_t>(time.tv_sec) * 1000U + static_cast<uint32_t>(time.tv_usec / 1000);
}

int64_t Microseconds(const timeval& time) {
    return static_cast<int64_t>(time.tv_sec) * 1'000'000 + time.tv_usec;
}

timeval Now() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return now;
}

} // namespace

void CQBTime::TimeStart() {
    m_start = Now();
    m_started = true;
}

uint32_t CQBTime::TimeEnd() const {
    return m_started ? GetTimePeriod(m_start) : kNeverStarted;
}

int64_t CQBTime::TimeEnd_us() const {
    return m_started ? Microseconds(Now()) - Microseconds(m_start) : int64_t{kNeverStarted};
}

uint32_t GetTimePeriod(timeval start) {
    return Milliseconds(Now()) - Milliseconds(start);
}

void usTimer(long ms) {
    if (ms <= 0) { return; }
    timeval timeout{};
    timeout.tv_sec = ms / 1000;
    timeout.tv_usec = (ms % 1000) * 1000;
    select(0, nullptr, nullptr, nullptr, &timeout);
}
