#include "sim/paging_station.h"

#include <utility>

namespace k740::sim {
namespace {

/// Appends, and forgets the older half of what has become too much.
template <typename Request> void AppendBounded(std::vector<Request>& requests, Request request) {
    constexpr std::size_t kHalf = PagingStation::kMostRequests / 2;
    if (requests.size() == 2 * kHalf) { requests.erase(requests.begin(), requests.begin() + kHalf); }
    requests.push_back(std::move(request));
}

} // namespace

PagingStation::PagingStation(const Surroundings& surroundings, std::uint32_t id, const std::string& address)
    : Device(surroundings, id, address, {kReplyPort}),
      m_intercomLine(
          OnReactor(), id, address, [this](bool begins, Clock::time_point last) { NoteIntercom(begins, last); },
          StreamNoter(kIntercomAudioPort)) {}

void PagingStation::NoteIntercom(bool begins, Clock::time_point last) {
    const IntercomRecording& heard = m_intercomLine.Heard();
    Event event;
    event.time = begins ? last : Clock::now();
    event.kind = begins ? Event::Kind::IntercomBegins : Event::Kind::IntercomEnds;
    event.device = Id();
    event.port = kIntercomAudioPort;
    event.peer = heard.sender;
    event.audio = AudioCounts{0, heard.node, heard.datagrams, heard.gaps, last};
    Note(std::move(event));
}

void PagingStation::SetBehaviour(const TaskBehaviour& behaviour) {
    OnReactor().Run([&] { m_behaviour = behaviour; });
}

void PagingStation::SetMonitorBehaviour(const MonitorBehaviour& behaviour) {
    OnReactor().Run([&] { m_monitorBehaviour = behaviour; });
}

void PagingStation::SetCallBehaviour(const CallBehaviour& behaviour) {
    OnReactor().Run([&] { m_callBehaviour = behaviour; });
}

void PagingStation::SendStatus(const PagingStatus& status, std::uint16_t port) {
    SendToStation(command::kPagingStatus, Payload(status), port);
}

void PagingStation::RepeatStatus(const PagingStatus& status, std::chrono::milliseconds period,
                                 std::chrono::milliseconds firstDelay) {
    OnReactor().Run([&] {
        m_status = status;
        ReportEvery(period, firstDelay);
    });
}

void PagingStation::ReportEvery(std::chrono::milliseconds period, std::chrono::milliseconds firstDelay) {
    Repeat(
        period, [this] { SendStatus(m_status); }, firstDelay);
}

void PagingStation::ChangeStatus(const std::function<void(PagingStatus&)>& change) {
    OnReactor().Run([&] {
        change(m_status);
        SendStatus(m_status);
    });
}

std::vector<PagingTaskRequest> PagingStation::Requests() const {
    std::vector<PagingTaskRequest> requests;
    OnReactor().Run([&] { requests = m_requests; });
    return requests;
}

std::vector<MonitorRequest> PagingStation::MonitorRequests() const {
    std::vector<MonitorRequest> requests;
    OnReactor().Run([&] { requests = m_monitorRequests; });
    return requests;
}

void PagingStation::Handshake(std::uint32_t intercom) {
    SendToStation(command::kPagingHeartbeat, intercom, HandshakePayload());
}

void PagingStation::Invite(std::uint32_t intercom) {
    SendToStation(command::kCallInvite, intercom, InvitePayload());
}

void PagingStation::AnswerCall(std::uint32_t intercom, std::uint8_t code) {
    SendToStation(command::kCallAnswer, intercom, CallAnswerPayload(code));
}

IntercomRecording PagingStation::IntercomAudio() const {
    IntercomRecording heard;
    OnReactor().Run([&] { heard = m_intercomLine.Heard(); });
    return heard;
}

bool PagingStation::WaitForIntercomAudio(std::size_t count, std::chrono::milliseconds timeout) const {
    return OnReactor().WaitUntil([&] { return m_intercomLine.Heard().datagrams >= count; }, timeout);
}

AudioSource& PagingStation::SendIntercomAudio(const AudioStream& stream) {
    m_intercomLine.Source().Start({StationAddress(), kIntercomAudioPort}, stream);
    return m_intercomLine.Source();
}

void PagingStation::StopStreams() {
    OnReactor().Run([&] {
        Device::StopStreams();
        StopIntercomAudio();
    });
}

void PagingStation::RecordIntercomTo(const std::string& path) {
    OnReactor().Run([&] { m_intercomLine.RecordTo(path); });
}

std::string PagingStation::RecordedIntercom() {
    std::string path;
    OnReactor().Run([&] { path = m_intercomLine.RecordedFile(); });
    return path;
}

void PagingStation::LosePower() {
    m_intercomLine.SetDeaf(true);
}

void PagingStation::RegainPower() {
    m_intercomLine.SetDeaf(false);
}

void PagingStation::Handle(const Packet& packet, const Datagram& datagram) {
    switch (packet.command) {
    case command::kPagingTask:
        return AnswerTask(packet, datagram.sender);
    case command::kPagingMonitor:
        return AnswerMonitor(packet, datagram.sender);
    case command::kCallInvite:
        return MeetInvitation(packet, datagram.sender);
    default:
        return; // noted in the journal already
    }
}

void PagingStation::AnswerTask(const Packet& packet, const Endpoint& requester) {
    const PagingTaskRequest request = ReadPagingTaskRequest(packet);
    AppendBounded(m_requests, request);
    After(m_behaviour.delay, [=, this, results = m_behaviour.results] {
        for (const std::uint16_t result : results) {
            Answer(packet, requester, command::kPagingTaskAnswer, Payload(PagingTaskAnswer{request.taskId, result}));
        }
    });
}

void PagingStation::AnswerMonitor(const Packet& packet, const Endpoint& requester) {
    AppendBounded(m_monitorRequests, ReadMonitorRequest(packet));
    After(m_monitorBehaviour.delay, [=, this, results = m_monitorBehaviour.results] {
        for (const std::int16_t result : results) {
            Answer(packet, requester, command::kPagingMonitorAnswer, MonitorAnswerPayload(result));
        }
    });
}

void PagingStation::MeetInvitation(const Packet& packet, const Endpoint& requester) {
    const auto answer = [=, this](std::uint8_t code) {
        Answer(packet, requester, command::kCallAnswer, CallAnswerPayload(code));
    };
    const auto [reply, delay] = m_callBehaviour;
    if (reply == CallReply::Ring || reply == CallReply::Accept) { answer(call::kRinging); }
    if (reply == CallReply::Accept) {
        After(delay, [=] { answer(call::kAccepted); });
    }
    if (reply == CallReply::Refuse) {
        After(delay, [=] { answer(call::kHungUp); });
    }
}

} // namespace k740::sim
