#include "common/wake_signal.h"

// The semaphore carries a token from one thread to another here; it is not a lock.

CWakeSignal::CWakeSignal() K740_NO_THREAD_SAFETY_ANALYSIS {
    m_semaphore.Lock();
}

void CWakeSignal::Raise() K740_NO_THREAD_SAFETY_ANALYSIS {
    if (!m_raised.exchange(true)) { m_semaphore.UnLock(); }
}

void CWakeSignal::Wait(unsigned ms) {
    m_semaphore.TryLock_ms(ms);
    m_raised.exchange(false);
}
