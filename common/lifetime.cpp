#include "common/lifetime.h"

// The semaphore is a gate here, not a lock: it is taken by one thread for all and given back by another.

void CLifetime::Begin() K740_NO_THREAD_SAFETY_ANALYSIS {
    m_exiting = 0;
    if (!m_begun.exchange(true)) { m_semaphore.Lock(); }
}

void CLifetime::WakeOneSleeper() K740_NO_THREAD_SAFETY_ANALYSIS {
    m_semaphore.UnLock();
}
