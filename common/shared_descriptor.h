// A descriptor that its owner blocks on and that another thread may have to wake.
#pragma once

#include "common/sem.h"
#include "common/wake_signal.h"

/// The owner publishes its socket, blocks in recvfrom and alone closes it; anybody may wake the owner.
///
/// close(2) from another thread neither wakes a blocked reader nor frees the port, and by then the number may belong to
/// somebody else's file; shutdown(2) wakes it.
class CSharedDescriptor {
public:
    /// Whoever starts the owner: a socket will be opened soon. The owner withdraws it, opened or not.
    void Expect();
    /// Owner: makes the socket known.
    void Publish(int descriptor);
    /// Owner: calls close, which closes the socket, so that nobody can touch the number any more.
    template <typename Close> void Withdraw(Close close) {
        const CQBSemLocker lock(&m_lock);
        m_descriptor = -1;
        close();
        m_open = false;
    }

    /// Owner: sleeps ms milliseconds, less when woken.
    void Pause(unsigned ms) { m_woken.Wait(ms); }

    /// Anybody: ends the owner's blocking call, now and for good, or its pause.
    void WakeOwner();
    /// @return whether the owner holds the socket, woken or not, or may still open it
    bool IsOpen() const;

private:
    CWakeSignal m_woken;
    mutable CQBSem m_lock;
    int m_descriptor K740_GUARDED_BY(m_lock) = -1;
    bool m_open K740_GUARDED_BY(m_lock) = false;
};
