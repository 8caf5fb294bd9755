// The life of the library's threads: the exit flag and the semaphore that every idle thread sleeps on.
#pragma once

#include "common/sem.h"

#include <atomic>
#include <cstdint>

/// The exit flag together with the lifetime semaphore, which is held from Begin to the first WakeOneSleeper.
///
/// Any thread may call anything. Each WakeOneSleeper ends one pause and no more: a surplus wake would cut short a
/// pause that paces the protocol.
class CLifetime {
public:
    /// Clears the exit flag and takes the semaphore, so that pauses last. Another call only clears the flag.
    void Begin();
    /// Sets the exit flag: every worker thread leaves its loop when it next looks.
    void RequestExit() { m_exiting = 1; }
    bool IsExiting() const { return m_exiting != 0; }

    /// Sleeps ms milliseconds, or until this sleeper is the one that WakeOneSleeper wakes.
    void Pause(unsigned ms) { m_semaphore.TryLock_ms(ms); }
    /// Ends one pause, at once or, when nobody sleeps, the next one.
    void WakeOneSleeper();

private:
    CQBSem m_semaphore;
    std::atomic<uint8_t> m_exiting{0};
    std::atomic<bool> m_begun{false};
};
