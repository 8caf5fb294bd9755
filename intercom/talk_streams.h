// The audio of intercoms on its way to paging stations.
#pragma once

#include "common/sem.h"
#include "common/stream_slot.h"

#include <cstddef>
#include <deque>
#include <memory>

inline constexpr std::size_t kMaxTalkStreams = 1'024;
inline constexpr std::size_t kTalkStreamBytes = 1'048'576;

/// One buffer for each intercom, at most kMaxTalkStreams; beyond that the oldest goes. A buffer exists from the first
/// push to its removal and costs only the memory that it uses. Any thread.
class CTalkStreams {
public:
    /// Appends a block to the intercom's buffer, whole or not at all.
    /// @param isAllowed  asked first, with the lock held: whoever ends the call and then removes the buffer, removes a
    ///                   block that was still allowed, too
    /// @return           what isAllowed returns unless 0; -3 when the block does not fit; 0
    template <typename IsAllowed>
    int Push(int intercomID, const unsigned char* data, std::size_t length, IsAllowed isAllowed) {
        const CQBSemLocker lock(&m_lock);
        const int refused = isAllowed();
        return refused != 0 ? refused : PushLocked(intercomID, data, length);
    }
    /// @return 0; -1, with nothing taken, when fewer bytes are waiting
    int Take(int intercomID, unsigned char* out, std::size_t length);
    /// @return 0; -1 when there is no buffer
    int Remove(int intercomID);

private:
    struct Stream {
        int intercomID;
        std::unique_ptr<CStreamSlot> slot;
    };

    int PushLocked(int intercomID, const unsigned char* data, std::size_t length) K740_REQUIRES(m_lock);
    Stream* FindLocked(int intercomID) K740_REQUIRES(m_lock);

    CQBSem m_lock;
    std::deque<Stream> m_streams K740_GUARDED_BY(m_lock);
};
