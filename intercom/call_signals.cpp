// What paging stations signal to intercoms, and what they are told.
#include "app/application.h"
#include "common/format.h"
#include "intercom/talker.h"
#include "protocol/commands.h"

namespace {

constexpr int kStationInvites = 1; // messages to the host
constexpr int kStationHungUp = 2;
constexpr int kStationAccepted = 3;
constexpr int kNotRinging = -1;

} // namespace

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
    if (!HasCallback()) { return kNoCallback; }
    if (!BeginTalking(intercomID, stationID)) { return kNotRinging; }
    m_app.Callbacks().IntercomMessage(stationID, intercomID, kStationAccepted);
    return 0;
}

void CTALKER::ProcessRPKHangUp(int intercomID, int stationID) {
    {
        const CQBSemLocker lock(&m_callLock);
        SetTalkerStatus(intercomID, stationID, kTalkIdle);
    }
    m_app.Callbacks().IntercomMessage(stationID, intercomID, kStationHungUp);
}
