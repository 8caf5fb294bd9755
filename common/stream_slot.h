// A bounded byte queue for audio on its way.
#pragma once

#include "common/sem.h"

#include <cstddef>

/// FIFO of bytes that belongs to one owner at a time, known by an ID that its user chooses. A chunk goes in whole or
/// not at all.
///
/// A ring in memory that the system hands out page by page as it is first touched (mmap(2)): capacity that is not used
/// costs nothing, and a push costs the same however much is waiting. What little is left after a take moves to the
/// front, so that a stream that keeps up stays on the same few pages; those of a backlog go back to the system then
/// (madvise(2)).
///
/// Push and Take do nothing for an owner that is not the slot's.
class CStreamSlot {
public:
    CStreamSlot() = default;
    ~CStreamSlot();
    CStreamSlot(const CStreamSlot&) = delete;
    CStreamSlot& operator=(const CStreamSlot&) = delete;

    /// Gives the slot to an owner, empty. @return false when there is no memory; nothing fits in then
    bool New(int ownerID, std::size_t capacity);
    /// Frees the memory if the slot is the owner's.
    void Remove(int ownerID);

    /// @return false when the chunk does not fit
    bool Push(int ownerID, const unsigned char* data, std::size_t length);
    /// @return false, with nothing taken, when fewer bytes are waiting
    bool Take(int ownerID, unsigned char* out, std::size_t length);
    /// Takes bytes and hands them to use while the slot is locked, so that what use makes of them keeps its order.
    template <typename Use> bool TakeAndUse(int ownerID, unsigned char* out, std::size_t length, Use use) {
        const CQBSemLocker lock(&m_lock);
        if (!TakeLocked(ownerID, out, length)) { return false; }
        use();
        return true;
    }
    /// @return bytes waiting for the owner
    std::size_t Fill(int ownerID) const;

private:
    bool TakeLocked(int ownerID, unsigned char* out, std::size_t length) K740_REQUIRES(m_lock);
    void CopyIn(const unsigned char* data, std::size_t length) K740_REQUIRES(m_lock);
    void CopyOut(unsigned char* out, std::size_t length) const K740_REQUIRES(m_lock);
    void MoveToFront() K740_REQUIRES(m_lock);
    void GiveBackBacklog() K740_REQUIRES(m_lock);
    void FreeLocked() K740_REQUIRES(m_lock);

    mutable CQBSem m_lock;
    int m_ownerID K740_GUARDED_BY(m_lock) = 0;
    unsigned char* m_data K740_GUARDED_BY(m_lock) = nullptr;
    std::size_t m_capacity K740_GUARDED_BY(m_lock) = 0;
    std::size_t m_head K740_GUARDED_BY(m_lock) = 0;
    std::size_t m_fill K740_GUARDED_BY(m_lock) = 0;
    std::size_t m_touched K740_GUARDED_BY(m_lock) = 0; // bytes from the front that have been written to
};
