// The lock of the library: a counting semaphore, and a scoped holder of it.
#pragma once

#include "common/thread_annotations.h"

#include <semaphore.h>

/// A process-private POSIX semaphore (sem_overview(7)) that starts free (value 1) and serves as a lock.
///
/// It counts: UnLock without Lock lets one more locker through. Waits survive signals. Any thread may call anything.
class K740_CAPABILITY("mutex") CQBSem {
public:
    CQBSem();
    virtual ~CQBSem();
    CQBSem(const CQBSem&) = delete;
    CQBSem& operator=(const CQBSem&) = delete;

    /// Takes the semaphore, blocking without limit.
    void Lock() K740_ACQUIRE();
    /// Gives the semaphore back, also when it was not taken.
    void UnLock() K740_RELEASE();

    /// Waits for the semaphore, at most ms milliseconds of the real-time clock, and takes it if it comes free.
    ///
    /// A sleep that an UnLock elsewhere cuts short; a token so taken stays taken.
    /// @param ms  milliseconds; ms * 1000 is formed in 32 bits, so values from 4294968 wrap
    /// @return    0 always: the caller does not learn whether the semaphore was taken
    int TryLock_ms(unsigned ms);
    /// The same with microseconds.
    int TryLock_us(unsigned us);

    /// @return the current value: 0 taken, 1 free, above 1 when given back more often than taken
    int value();

private:
    sem_t m_semaphore;
};

/// Holds a CQBSem from construction to destruction.
class K740_SCOPED_CAPABILITY CQBSemLocker {
public:
    explicit CQBSemLocker(CQBSem* lock) K740_ACQUIRE(lock);
    virtual ~CQBSemLocker() K740_RELEASE();
    CQBSemLocker(const CQBSemLocker&) = delete;
    CQBSemLocker& operator=(const CQBSemLocker&) = delete;

private:
    CQBSem* m_lock;
};
