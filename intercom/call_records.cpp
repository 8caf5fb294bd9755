// The records of intercom calls.
#include "app/application.h"
#include "intercom/talker.h"

int CTALKER::SetTalkerStatus(int intercomID, int stationID, int status) {
    return IsIntercom(intercomID) ? NoteStatus(intercomID, stationID, status) : -1;
}

int CTALKER::NoteStatus(int intercomID, int stationID, int status) {
    tagTALK_STATUS fresh{static_cast<uint32_t>(intercomID), static_cast<uint32_t>(stationID), time(nullptr), status, 0};
    if (status == kTalkTalking) { fresh.call = 1; }
    const bool full = m_calls.Size() >= kMaxCalls;
    const bool appended = m_calls.UpdateOrAppend([=](const tagTALK_STATUS& known) { return known == intercomID; },
                                                 [&](tagTALK_STATUS& known) {
                                                     fresh.call += known.call;
                                                     known = fresh;
                                                 },
                                                 fresh);
    m_senders.Raise(intercomID);
    return appended && full ? -1 : 0;
}

int CTALKER::GetTalkerStatus(int intercomID, tagTALK_STATUS& out) const {
    const auto found = m_calls.Find([=](const tagTALK_STATUS& known) { return known == intercomID; });
    out = found.value_or(tagTALK_STATUS{0, 0, 0, kNoCall, 0});
    return found ? 0 : -1;
}

int CTALKER::StatusOf(int intercomID) const {
    tagTALK_STATUS record;
    GetTalkerStatus(intercomID, record);
    return record.status;
}

int CTALKER::IsTalkingWithRPK(int stationID) const {
    const auto talks = [=](const tagTALK_STATUS& known) {
        return known.status == kTalkTalking && known.peerID == static_cast<uint32_t>(stationID);
    };
    return m_calls.Find(talks) ? 1 : 0;
}
