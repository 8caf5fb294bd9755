#include "sim/zone_controller.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <system_error>

namespace k740::sim {
namespace {

constexpr std::uint8_t kWorking = 1; // device status
constexpr std::uint16_t kAccepted = 1;
constexpr std::uint16_t kAcceptedWithoutReport = 255;
constexpr std::uint16_t kJoined = 1;
constexpr std::uint16_t kJoinFailed = 2;

/// No two answers of a process carry the same token, nor the same in A and B.
std::uint32_t NextToken() {
    static std::atomic<std::uint32_t> last = 0xA1000000;
    return ++last;
}

PlayAnswer MakeAnswer(const PlayRequest& request, const PlayBehaviour& behaviour) {
    PlayAnswer answer;
    answer.sequence = request.sequence;
    answer.taskId = request.taskId;
    answer.tokenA = NextToken();
    answer.tokenB = NextToken();
    answer.joinFollows = behaviour.reply == PlayReply::AcceptWithJoin || behaviour.reply == PlayReply::JoinRefused ||
                         behaviour.reply == PlayReply::JoinNever;
    answer.result = behaviour.reply == PlayReply::Refuse      ? behaviour.refusal
                    : behaviour.reply == PlayReply::Accept255 ? kAcceptedWithoutReport
                                                              : kAccepted;
    return answer;
}

bool PlaysWithoutReport(PlayReply reply) {
    return reply == PlayReply::AcceptWithoutJoin || reply == PlayReply::Accept255;
}

/// Whether the group is none that can be joined, which a device would report; anything else is wrong here.
bool IsFaultOfRequest(const std::system_error& error) {
    constexpr std::array kFaults{EINVAL, ENODEV, ENOBUFS, EADDRNOTAVAIL, EACCES};
    return std::find(kFaults.begin(), kFaults.end(), error.code().value()) != kFaults.end();
}

bool Reports(PlayReply reply) {
    return reply == PlayReply::AcceptWithJoin || reply == PlayReply::JoinRefused;
}

} // namespace

ZoneController::ZoneController(const Surroundings& surroundings, std::uint32_t id, const std::string& address)
    : Device(surroundings, id, address) {}

void ZoneController::SetBehaviour(const PlayBehaviour& behaviour) {
    OnReactor().Run([&] { m_behaviour = behaviour; });
}

void ZoneController::SetKeep(Keep keep) {
    OnReactor().Run([&] { m_keep = keep; });
}

void ZoneController::SendStatus(const StatusReport& report, std::uint16_t port) {
    SendToStation(command::kStatusReport, Payload(report), port);
}

void ZoneController::RepeatStatus(const StatusReport& report, std::chrono::milliseconds period,
                                  std::chrono::milliseconds firstDelay) {
    OnReactor().Run([&] {
        m_report = report;
        ReportEvery(period, firstDelay);
    });
}

void ZoneController::ReportEvery(std::chrono::milliseconds period, std::chrono::milliseconds firstDelay) {
    Repeat(
        period, [this] { SendStatus(m_report); }, firstDelay);
}

void ZoneController::ChangeStatus(const std::function<void(StatusReport&)>& change) {
    OnReactor().Run([&] {
        change(m_report);
        SendStatus(m_report);
    });
}

StatusReport ZoneController::QuietStatus() const {
    StatusReport report;
    report.deviceStatus = kWorking;
    report.deviceIdEcho = Id();
    return report;
}

void ZoneController::Handle(const Packet& packet, const Datagram& datagram) {
    switch (packet.command) {
    case command::kPlay: {
        if (m_behaviour.reply == PlayReply::Silent) { return; }
        After(m_behaviour.answerDelay, [=, this, behaviour = m_behaviour, requester = datagram.sender] {
            AnswerPlay(packet, requester, ReadPlayRequest(packet), behaviour);
        });
        return;
    }
    case command::kCloseAudio:
        return CloseAudio(ReadCloseAudioTask(packet));
    case command::kCloseZones:
        return CloseZones(ReadCloseZonesMask(packet));
    case command::kEnterEmergency:
        m_emergencyPriority = ReadEmergencyPriority(packet);
        return;
    case command::kExitEmergency:
        m_emergencyPriority.reset();
        return;
    default:
        return AnswerQuery(packet, datagram.sender);
    }
}

void ZoneController::AnswerPlay(const Packet& packet, const Endpoint& requester, const PlayRequest& request,
                                const PlayBehaviour& behaviour) {
    if (PlaysWithoutReport(behaviour.reply)) { Join(request); } // before the answer, after which audio may come
    PlayAnswer answer;
    for (int remaining = behaviour.answerTwice ? 2 : 1; remaining > 0; --remaining) {
        answer = MakeAnswer(request, behaviour);
        Answer(packet, requester, command::kPlayAnswer, Payload(answer));
    }
    if (!Reports(behaviour.reply)) { return; }
    After(behaviour.joinDelay, [=, this] {
        JoinAndReport(packet, requester, request, behaviour, {kJoined, answer.tokenA, answer.tokenB});
    });
}

void ZoneController::JoinAndReport(const Packet& packet, const Endpoint& requester, const PlayRequest& request,
                                   const PlayBehaviour& behaviour, JoinReport report) {
    if (behaviour.reply == PlayReply::JoinRefused) {
        report.status = behaviour.joinRefusal;
    } else if (!Join(request)) {
        report.status = kJoinFailed;
    }
    Answer(packet, requester, command::kJoinReport, Payload(report));
}

bool ZoneController::Join(const PlayRequest& request) {
    PlaySession* open = OpenSession(request.taskId);
    if (open != nullptr && open->Heard().endsOfStream.empty() && open->Group().ip == request.group) {
        open->AddZones(request.zoneMask);
        return true;
    }
    if (open != nullptr) { Leave(*open); }
    const Endpoint group{request.group, request.groupPort};
    try {
        m_sessions.push_back(
            std::make_unique<PlaySession>(OnReactor(), Id(), Address(), request, m_keep, SessionListener(group)));
    } catch (const std::system_error& error) {
        if (!IsFaultOfRequest(error)) { throw; }
        return false;
    }
    NoteGroup(Event::Kind::JoinedGroup, group, {{}, {}, Clock::now()});
    return true;
}

void ZoneController::Leave(PlaySession& session) {
    session.Close();
    NoteGroup(Event::Kind::LeftGroup, session.Group(), {{}, {}, Clock::now()});
}

void ZoneController::LosePower() {
    for (const auto& session : m_sessions) {
        if (session->IsOpen()) { Leave(*session); }
    }
}

void ZoneController::CloseAudio(std::uint32_t taskId) {
    if (PlaySession* session = OpenSession(taskId)) { Leave(*session); }
}

void ZoneController::CloseZones(std::uint32_t mask) {
    for (const auto& session : m_sessions) { session->RemoveZones(mask); }
}

void ZoneController::NoteGroup(Event::Kind kind, const Endpoint& group, const Datagram& datagram) {
    Note({datagram.arrival, kind, Id(), group.port, group, datagram.bytes, {}});
}

PlaySession* ZoneController::OpenSession(std::uint32_t taskId) const {
    for (const auto& session : m_sessions) {
        if (session->IsOpen() && session->Heard().request.taskId == taskId) { return session.get(); }
    }
    return nullptr;
}

bool ZoneController::IsListening(std::uint32_t taskId) const {
    bool listening = false;
    OnReactor().Run([&] { listening = OpenSession(taskId) != nullptr; });
    return listening;
}

} // namespace k740::sim
