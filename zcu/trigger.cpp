// The handshake that makes a zone controller play a task: request, acceptance, join report.
#include "app/application.h"
#include "common/answer_wait.h"
#include "common/format.h"
#include "devices/zone_string.h"
#include "protocol/commands.h"
#include "zcu/zcu.h"

/// What stream and AUX tasks do differently.
struct CZCU::TriggerVariant {
    uint32_t headerSource;
    uint32_t source;
    uint32_t sourceDevice;
    std::function<bool()> closesOnTimeout;
    std::string triggerTimeoutText;
    std::string joinTimeoutText;
};

namespace {

constexpr AnswerTiming kTriggerTiming{10, 4999};
constexpr const char* kModule = "ZCU";
constexpr uint16_t kResultAccepted = 1;
constexpr uint16_t kResultAcceptedNoJoin = 255;
constexpr uint16_t kJoined = 1;
constexpr uint16_t kMaxPriority = 255;
constexpr uint16_t kMaxRecovery = 1;
constexpr uint32_t kPlayKind = 3;
constexpr uint32_t kStreamKind = 32;

bool IsRequestValid(const tagZCU_PARAM* param) {
    return param != nullptr && IsZoneControllerID(param->zcuID) && param->zoneMask >= 1 &&
           param->zoneMask <= kEveryZoneMask && param->priority <= kMaxPriority;
}

int RefuseInvalid(TriggerOutcome& outcome) {
    outcome.triggerResult = kTriggerInvalid;
    outcome.joinResult = kTriggerInvalid;
    return 0;
}

/// @return the request without what stream and AUX tasks fill differently
_vxa_play_task_req_t_V2 MakePlayRequest(const tagZCU_PARAM& param) {
    const bool contact = param.dryContactOutput == 1;
    _vxa_play_task_req_t_V2 request{};
    request.sequence = param.sequence;
    request.priority = ConvertPriority(param.priority);
    request.dryContactSwitch = contact ? 1 : 0;
    request.dryContactOn = contact ? 1 : 0;
    request.dryContactZones = static_cast<uint8_t>(contact ? param.zoneMask : 0);
    request.taskID = param.taskID;
    request.kind = kPlayKind;
    request.recovery = static_cast<uint8_t>(param.recovery);
    request.all = 0xFFFF;
    request.zoneMask = param.zoneMask;
    request.streamKind = kStreamKind;
    request.multicastIP = param.multicastIP;
    request.multicastPort = param.multicastPort;
    return request;
}

} // namespace

int CZCU::ZCU_Request_TriggerNetTask(tagZCU_PARAM* param, TriggerOutcome& outcome) {
    outcome = {};
    if (!IsRequestValid(param)) { return RefuseInvalid(outcome); }
    if (param->recovery > kMaxRecovery) { param->recovery = 0; }
    const auto zcuID = static_cast<int>(param->zcuID);
    const auto taskID = static_cast<int>(param->taskID);
    return RequestTask(*param,
                       {.headerSource = param->sourceNodeID,
                        .source = param->taskID,
                        .sourceDevice = param->sourceNodeID,
                        .closesOnTimeout = [] { return false; },
                        .triggerTimeoutText = Format("Trigger ZCU %d timeout, task ID %d", zcuID, taskID),
                        .joinTimeoutText = Format("ZCU %d join multicast timeout, task ID %d", zcuID, taskID)},
                       outcome);
}

int CZCU::ZCU_Request_TriggerLBXTask_V2(tagZCU_PARAM* param, TriggerOutcome& outcome,
                                        const std::function<bool()>& isSuperseded) {
    outcome = {};
    if (!IsRequestValid(param) || param->recovery > kMaxRecovery) { return RefuseInvalid(outcome); }
    return RequestTask(*param,
                       {.headerSource = m_app.Configuration().NodeID(),
                        .source = static_cast<uint32_t>(int32_t{param->auxPort}),
                        .sourceDevice = param->auxDeviceID,
                        .closesOnTimeout = [&isSuperseded] { return !isSuperseded || !isSuperseded(); },
                        .triggerTimeoutText = "Trigger ZCU task timeout.",
                        .joinTimeoutText = "ZCU join multicast timeout."},
                       outcome);
}

int CZCU::RequestTask(const tagZCU_PARAM& param, const TriggerVariant& variant, TriggerOutcome& outcome) {
    _vxa_play_task_req_t_V2 request = MakePlayRequest(param);
    request.source = variant.source;
    request.sourceDevice = variant.sourceDevice;
    const auto destination = static_cast<uint32_t>(param.zcuID);

    ClearOutDateJoinMCastResponse();
    if (!m_app.SendToDevice(param.zcuID, MakePacket(variant.headerSource, destination, kCmdTriggerTask, request))) {
        return 0;
    }
    if (!AwaitAcceptance(param, variant, outcome)) { return 0; }
    if (outcome.acceptedNoJoin || outcome.joinFollows == 0) { return 1; }
    return AwaitJoin(param, variant, outcome) ? 1 : 0;
}

bool CZCU::AwaitAcceptance(const tagZCU_PARAM& param, const TriggerVariant& variant, TriggerOutcome& outcome) {
    const auto answer =
        WaitForAnswer(m_app.Lifetime(), m_triggerAnswers, kTriggerTiming, [&](const tagZCU_TRIGGERTASK& candidate) {
            return candidate.sequence == param.sequence && candidate.taskID == param.taskID &&
                   candidate.zcuID == static_cast<uint32_t>(param.zcuID);
        });
    if (!answer) {
        outcome.triggerResult = kTriggerTimeout;
        ReportTimeout(param, variant, variant.triggerTimeoutText);
        return false;
    }
    outcome.tokenA = answer->tokenA;
    outcome.tokenB = answer->tokenB;
    outcome.joinFollows = answer->joinFollows;
    outcome.acceptedNoJoin = answer->result == kResultAcceptedNoJoin;
    if (answer->result == kResultAccepted || outcome.acceptedNoJoin) { return true; }
    outcome.triggerResult = kTriggerRefused;
    LogZCU(kLogError, Format("Failed to trigger ZCU %d, task ID %d", static_cast<int>(param.zcuID),
                             static_cast<int>(param.taskID)));
    return false;
}

bool CZCU::AwaitJoin(const tagZCU_PARAM& param, const TriggerVariant& variant, TriggerOutcome& outcome) {
    const auto zcuID = static_cast<int>(param.zcuID);
    const auto taskID = static_cast<int>(param.taskID);
    const auto report =
        WaitForAnswer(m_app.Lifetime(), m_joinReports, kTriggerTiming, [&](const tagZCU_JOINMCAST& candidate) {
            return candidate.tokenB == outcome.tokenB && candidate.tokenA == outcome.tokenA &&
                   candidate.zcuID == static_cast<uint32_t>(param.zcuID);
        });
    if (!report) {
        outcome.joinResult = kTriggerTimeout;
        ReportTimeout(param, variant, variant.joinTimeoutText);
        return false;
    }
    if (report->status != kJoined) {
        outcome.joinResult = kTriggerRefused;
        LogZCU(kLogError, Format("Failed to join multicast, ZCU %d, task ID %d", zcuID, taskID));
        return false;
    }
    LogZCU(kLogInfo, Format("Success to trigger task, ZCU %d, task ID %d", zcuID, taskID));
    return true;
}

void CZCU::ReportTimeout(const tagZCU_PARAM& param, const TriggerVariant& variant, const std::string& text) {
    if (variant.closesOnTimeout()) { ZCU_Request_CloseAudio(param.zcuID, param.taskID); }
    LogZCU(kLogError, text);
}

void CZCU::LogZCU(uint8_t level, const std::string& text) {
    m_app.Log().PushLog(kModule, level, text);
}

void CZCU::ZCU_Response_TriggerTask(const _vxa_cmd_packet_t* packet) {
    if (!IsZoneControllerID(packet->sourceID)) { return; }
    const auto answer = ReadPayload<_vxa_play_task_rsp_t>(*packet);
    tagZCU_TRIGGERTASK record{};
    record.joinFollows = answer.joinFollows;
    record.result = answer.result;
    record.sequence = answer.sequence;
    record.tokenA = answer.tokenA;
    record.tokenB = answer.tokenB;
    std::memcpy(record.uninterpreted, answer.uninterpreted, sizeof(record.uninterpreted));
    record.trailing = answer.trailing;
    record.taskID = answer.taskID;
    record.receivedAt = time(nullptr);
    record.zcuID = packet->sourceID;
    m_triggerAnswers.Append(record);
}

void CZCU::ZCU_Response_JoinMultiCast(const _vxa_cmd_packet_t* packet) {
    if (!IsZoneControllerID(packet->sourceID)) { return; }
    const auto report = ReadPayload<_vxa_join_mcast_rsp_t>(*packet);
    tagZCU_JOINMCAST record{};
    record.tokenA = report.tokenA;
    record.tokenB = report.tokenB;
    record.status = report.status;
    std::memcpy(record.uninterpreted10, report.uninterpreted10, sizeof(record.uninterpreted10));
    record.uninterpreted22 = report.uninterpreted22;
    record.uninterpreted18 = report.uninterpreted18;
    record.receivedAt = time(nullptr);
    record.zcuID = packet->sourceID;
    m_joinReports.Append(record);
}

void CZCU::ClearOutDateJoinMCastResponse(time_t now) {
    PurgeStaleAnswers(m_triggerAnswers, now);
    PurgeStaleAnswers(m_joinReports, now);
}
