// The host's side of intercom calls, and what ends them without it.
#include "app/application.h"
#include "common/format.h"
#include "intercom/talker.h"
#include "protocol/commands.h"

namespace {

constexpr double kRingSeconds = 60;
constexpr unsigned kHangUpRepeatMs = 20;

} // namespace

bool CTALKER::IsIntercom(int id) const {
    return m_app.Devices().GetDeviceType(id) == kDeviceVirtualPagingStation;
}

bool CTALKER::IsStation(int id) const {
    return m_app.Devices().GetDeviceType(id) == kDevicePagingStation;
}

bool CTALKER::HasCallback() const {
    return m_app.Callbacks().intercomMessage.Get() != nullptr;
}

bool CTALKER::BeginTalking(int intercomID, int stationID) {
    tagTALK_STATUS record;
    {
        const CQBSemLocker lock(&m_callLock);
        if (StatusOf(intercomID) != kTalkRinging) { return false; }
        if (SetTalkerStatus(intercomID, stationID, kTalkTalking) != 0) { return false; }
        GetTalkerStatus(intercomID, record);
    }
    StartSending({intercomID, stationID, record.call});
    return true;
}

int CTALKER::Invite(int intercomID, int stationID) {
    if (!HasCallback()) { return kNoCallback; }
    if (!IsIntercom(intercomID) || !IsStation(stationID)) { return kWrongDevice; }
    {
        const CQBSemLocker lock(&m_callLock);
        const int status = StatusOf(intercomID);
        if (status == kTalkRinging || status == kTalkTalking) { return kWrongState; }
        SetTalkerStatus(intercomID, stationID, kTalkRinging);
    }
    m_app.SendToDevice(stationID, MakePacket(static_cast<uint32_t>(intercomID), static_cast<uint32_t>(stationID),
                                             kCmdIntercomInvite, _talk_invite_t{}));
    return 0;
}

int CTALKER::Accept(int intercomID, int stationID) {
    if (!IsIntercom(intercomID) || !IsStation(stationID)) { return kWrongDevice; }
    if (!BeginTalking(intercomID, stationID)) { return kWrongState; }
    TalkerResponseRPK(intercomID, stationID, kAnswerAccepted);
    return 0;
}

int CTALKER::HangUp(int intercomID) {
    if (!IsIntercom(intercomID)) { return kWrongDevice; }
    tagTALK_STATUS record;
    {
        const CQBSemLocker lock(&m_callLock);
        GetTalkerStatus(intercomID, record);
        SetTalkerStatus(intercomID, static_cast<int>(record.peerID), kTalkIdle);
    }
    ReleaseStation(intercomID, static_cast<int>(record.peerID));
    return 0;
}

void CTALKER::ReleaseStation(int intercomID, int stationID) {
    TalkerResponseRPK(intercomID, stationID, kAnswerHungUp);
    m_app.Lifetime().Pause(kHangUpRepeatMs);
    TalkerResponseRPK(intercomID, stationID, kAnswerHungUp);
    RemoveTalkerAudio(intercomID);
}

void CTALKER::MaintainTalkStatus(time_t now) {
    for (const tagTALK_STATUS& call : m_calls.Copy()) {
        if (call.status != kTalkRinging || difftime(now, call.changed) < kRingSeconds) { continue; }
        if (!EndOverdueRinging(call)) { continue; }
        const auto intercomID = static_cast<int>(call.intercomID);
        ReleaseStation(intercomID, static_cast<int>(call.peerID));
        m_app.Log().PushLog("", kLogInfo, Format("Intercom %d hang up for ring is timeout.", intercomID));
    }
}

// The call may have been accepted, or have ended and another begun, since it was seen.
bool CTALKER::EndOverdueRinging(const tagTALK_STATUS& seen) {
    const auto intercomID = static_cast<int>(seen.intercomID);
    const CQBSemLocker lock(&m_callLock);
    tagTALK_STATUS record;
    GetTalkerStatus(intercomID, record);
    if (record.status != kTalkRinging || record.changed != seen.changed) { return false; }
    return SetTalkerStatus(intercomID, static_cast<int>(record.peerID), kTalkIdle) == 0;
}

// By now the intercom is not registered, so SetTalkerStatus lets no call of it begin after this one has ended.
void CTALKER::AbandonCall(int intercomID) {
    {
        const CQBSemLocker lock(&m_callLock);
        tagTALK_STATUS record;
        if (GetTalkerStatus(intercomID, record) != 0) { return; }
        NoteStatus(intercomID, static_cast<int>(record.peerID), kTalkIdle);
    }
    RemoveTalkerAudio(intercomID);
}
