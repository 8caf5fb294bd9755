#include "common/sem.h"

#include "common/deadline.h"

#include <cerrno>

CQBSem::CQBSem() {
    sem_init(&m_semaphore, 0, 1);
}

CQBSem::~CQBSem() {
    sem_destroy(&m_semaphore);
}

void CQBSem::Lock() {
    // A signal handler ends sem_wait without the semaphore; entering then would break the lock for good.
    while (sem_wait(&m_semaphore) != 0 && errno == EINTR) {}
}

void CQBSem::UnLock() {
    sem_post(&m_semaphore);
}

int CQBSem::TryLock_ms(unsigned ms) {
    return TryLock_us(ms * kMicrosecondsPerMillisecond);
}

int CQBSem::TryLock_us(unsigned us) {
    const timespec deadline = DeadlineAfter(us);
    while (sem_timedwait(&m_semaphore, &deadline) != 0 && errno == EINTR) {}
    return 0;
}

int CQBSem::value() {
    int current = 0;
    sem_getvalue(&m_semaphore, &current);
    return current;
}

CQBSemLocker::CQBSemLocker(CQBSem* lock) : m_lock(lock) {
    m_lock->Lock();
}

CQBSemLocker::~CQBSemLocker() {
    m_lock->UnLock();
}
