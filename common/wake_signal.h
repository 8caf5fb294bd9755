// Lets a thread sleep until another one has something for it.
#pragma once

#include "common/sem.h"

#include <atomic>

/// How long a thread sleeps at a time, in milliseconds, for which every reason to look up raises its signal.
inline constexpr unsigned kIdleWaitMs = 10'000;

/// One thread waits, any thread raises. Raising what is raised already costs one atomic step and no system call.
class CWakeSignal {
public:
    CWakeSignal();

    /// Ends the wait in progress or, when there is none, the next one. What the waiter shall find comes before Raise.
    void Raise();
    /// Sleeps until raised, at most ms milliseconds. The waiter looks for its work after it, whatever the reason.
    void Wait(unsigned ms);

private:
    CQBSem m_semaphore;
    std::atomic<bool> m_raised{false};
};
