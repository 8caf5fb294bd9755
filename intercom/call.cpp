// Intercom calls: what stations signal and what the host asks for.
#include "app/application.h"
#include "common/format.h"
#include "intercom/talker.h"
#include "protocol/commands.h"

namespace {

constexpr int kWrongDevice = -2;
constexpr int kWrongState = -3;
constexpr int kNoCallback = -1;
constexpr int kStationInvites = 1; // messages to the host
constexpr int kStationHungUp = 2;
constexpr int kStationAccepted = 3;
constexpr double kRingSeconds = 60;
constexpr unsigned kHangUpRepeatMs = 20;
constexpr std::size_t kMaxCalls = 1024;

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

int CTALKER::SetTalkerStatus(int intercomID, int stationID, int status) {
    if (!IsIntercom(intercomID)) { return -1; }
    tagTALK_STATUS fresh{static_cast<uint32_t>(intercomID), static_cast<uint32_t>(stationID), time(nullptr), status, 0};
    if (status == kTalkTalking) { fresh.call = 1; }
    const bool full = m_calls.Size() >= kMaxCalls;
    const bool appended = m_calls.UpdateOrAppend([=](const tagTALK_STATUS& known) { return known == intercomID; },
                                                 [&](tagTALK_STATUS& known) {
                                                     fresh.call += known.call;
                                                     known = fresh;
                                                 },
                                                 fresh);
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

void CTALKER::TalkerResponseRPK(int intercomID, int stationID, uint8_t code) {
    const _talk_answer_t answer{code, {}};
    m_app.SendToAddress(
        m_app.Devices().GetDeviceIP(stationID), kReplyPort,
        MakePacket(static_cast<uint32_t>(intercomID), static_cast<uint32_t>(stationID), kCmdIntercomAnswer, answer));
}

void CTALKER::ReceiveTalkerHandshake(const _vxa_cmd_packet_t* packet, const std::string& senderIP) {
    const auto intercomID = static_cast<int>(packet->destinationID);
    if (!IsIntercom(intercomID) || !IsStation(static_cast<int>(packet->sourceID))) { return; }
    tagTALK_STATUS record;
    const int status = GetTalkerStatus(intercomID, record) == 0 ? record.status : kTalkIdle;
    const _talk_handshake_answer_t answer{0, static_cast<uint8_t>(status), {}};
    m_app.SendToAddress(senderIP, kReplyPort,
                        MakePacket(packet->destinationID, packet->sourceID, kCmdIntercomHandshakeAnswer, answer));
}

void CTALKER::LogTalk(uint8_t level, const char* event, int stationID, int intercomID, const char* rest) {
    m_app.Log().PushLog("", level, Format("Receive Q-RPK %d %s intercom %d%s", stationID, event, intercomID, rest));
}

bool CTALKER::CheckPacket(const char* event, int stationID, int intercomID) {
    const char* error = !HasCallback()            ? ", but has not set SDK callback PINTERCOMMESSAGE."
                        : !IsIntercom(intercomID) ? ", but intercom device id is invalid."
                        : !IsStation(stationID)   ? ", but Q-RPK device id is invalid."
                                                  : nullptr;
    if (error != nullptr) { LogTalk(kLogError, event, stationID, intercomID, error); }
    return error == nullptr;
}

void CTALKER::ReceiveRPKInviteTalker(const _vxa_cmd_packet_t* packet, const std::string& /*senderIP*/) {
    const auto stationID = static_cast<int>(packet->sourceID);
    const auto intercomID = static_cast<int>(packet->destinationID);
    if (!CheckPacket("invite", stationID, intercomID) || !BeginRinging(intercomID, stationID)) { return; }
    TalkerResponseRPK(intercomID, stationID, kAnswerRinging);
    m_app.Callbacks().IntercomMessage(stationID, intercomID, kStationInvites);
    m_app.Log().PushLog("", kLogInfo, Format("=====Receive Q-RPK %d invite intercom %d.", stationID, intercomID));
}

bool CTALKER::BeginRinging(int intercomID, int stationID) {
    tagTALK_STATUS before;
    {
        const CQBSemLocker lock(&m_callLock);
        GetTalkerStatus(intercomID, before);
        if (before.status != kTalkRinging && before.status != kTalkTalking) {
            SetTalkerStatus(intercomID, stationID, kTalkRinging);
            return true;
        }
    }
    if (before.status == kTalkRinging) {
        TalkerResponseRPK(intercomID, stationID, kAnswerRinging);
    } else if (before.peerID != static_cast<uint32_t>(stationID)) {
        TalkerResponseRPK(intercomID, stationID, kAnswerHungUp);
    }
    return false;
}

void CTALKER::ReceiveTalkerProcess(const _vxa_cmd_packet_t* packet, const std::string& /*senderIP*/) {
    const auto stationID = static_cast<int>(packet->sourceID);
    const auto intercomID = static_cast<int>(packet->destinationID);
    if (!CheckPacket("response", stationID, intercomID)) { return; }
    switch (ReadPayload<_talk_answer_t>(*packet).code) {
    case kAnswerRinging:
        return LogTalk(kLogInfo, "ring", stationID, intercomID, "");
    case kAnswerAccepted:
        LogTalk(kLogInfo, "accept", stationID, intercomID, ".");
        ProcessRPKAccept(intercomID, stationID);
        return;
    case kAnswerHungUp:
        LogTalk(kLogInfo, "hang up", stationID, intercomID, ".");
        return ProcessRPKHangUp(intercomID, stationID);
    default:
        return;
    }
}

int CTALKER::ProcessRPKAccept(int intercomID, int stationID) {
    if (!HasCallback() || !BeginTalking(intercomID, stationID)) { return -1; }
    m_app.Callbacks().IntercomMessage(stationID, intercomID, kStationAccepted);
    return 0;
}

bool CTALKER::BeginTalking(int intercomID, int stationID) {
    tagTALK_STATUS record;
    {
        const CQBSemLocker lock(&m_callLock);
        if (StatusOf(intercomID) != kTalkRinging) { return false; }
        SetTalkerStatus(intercomID, stationID, kTalkTalking);
        GetTalkerStatus(intercomID, record);
    }
    StartSending({intercomID, stationID, record.call});
    return true;
}

void CTALKER::ProcessRPKHangUp(int intercomID, int stationID) {
    {
        const CQBSemLocker lock(&m_callLock);
        SetTalkerStatus(intercomID, stationID, kTalkIdle);
    }
    m_app.Callbacks().IntercomMessage(stationID, intercomID, kStationHungUp);
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
    if (record.status != kTalkRinging || record.changed != seen.changed || !IsIntercom(intercomID)) { return false; }
    SetTalkerStatus(intercomID, static_cast<int>(record.peerID), kTalkIdle);
    return true;
}
