#include "intercom/talk_streams.h"

#include <algorithm>

namespace {
constexpr int kDoesNotFit = -3;
}

CTalkStreams::Stream* CTalkStreams::FindLocked(int intercomID) {
    const auto found = std::find_if(m_streams.begin(), m_streams.end(),
                                    [=](const Stream& stream) { return stream.intercomID == intercomID; });
    return found == m_streams.end() ? nullptr : &*found;
}

int CTalkStreams::PushLocked(int intercomID, const unsigned char* data, std::size_t length) {
    Stream* stream = FindLocked(intercomID);
    if (stream == nullptr) {
        if (length >= kTalkStreamBytes) { return kDoesNotFit; } // a first block must leave room
        auto slot = std::make_unique<CStreamSlot>();
        if (!slot->New(intercomID, kTalkStreamBytes)) { return kDoesNotFit; }
        if (m_streams.size() == kMaxTalkStreams) { m_streams.pop_front(); }
        m_streams.push_back({intercomID, std::move(slot)});
        stream = &m_streams.back();
    }
    return stream->slot->Push(intercomID, data, length) ? 0 : kDoesNotFit;
}

int CTalkStreams::Take(int intercomID, unsigned char* out, std::size_t length) {
    const CQBSemLocker lock(&m_lock);
    Stream* stream = FindLocked(intercomID);
    return stream != nullptr && stream->slot->Take(intercomID, out, length) ? 0 : -1;
}

int CTalkStreams::Remove(int intercomID) {
    const CQBSemLocker lock(&m_lock);
    return std::erase_if(m_streams, [=](const Stream& stream) { return stream.intercomID == intercomID; }) > 0 ? 0 : -1;
}
