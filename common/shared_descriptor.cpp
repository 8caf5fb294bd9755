#include "common/shared_descriptor.h"

#include <sys/socket.h>

void CSharedDescriptor::Expect() {
    const CQBSemLocker lock(&m_lock);
    m_open = true;
}

void CSharedDescriptor::Publish(int descriptor) {
    const CQBSemLocker lock(&m_lock);
    m_descriptor = descriptor;
    m_open = true;
}

void CSharedDescriptor::WakeOwner() {
    m_woken.Raise();
    const CQBSemLocker lock(&m_lock);
    // An unconnected socket answers ENOTCONN and wakes its reader all the same.
    if (m_descriptor > 0) { shutdown(m_descriptor, SHUT_RDWR); }
    m_descriptor = -1;
}

bool CSharedDescriptor::IsOpen() const {
    const CQBSemLocker lock(&m_lock);
    return m_open;
}
