// A simulated paging station: reports its status, answers task and monitor requests, talks, and calls intercoms.
#pragma once

#include "sim/device.h"
#include "sim/intercom_line.h"
#include "sim/paging_records.h"
#include "sim/records.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace k740::sim {

/// How a paging station meets a task request.
struct TaskBehaviour {
    std::vector<std::uint16_t> results{1}; // one answer each, in this order; empty: silent
    std::chrono::milliseconds delay{0};    // before the first answer
};

/// How a paging station meets a monitor request.
struct MonitorBehaviour {
    std::vector<std::int16_t> results{1}; // one answer each, in this order; empty: silent
    std::chrono::milliseconds delay{0};   // before the first answer
};

enum class CallReply {
    Nothing,
    Ring,   // at once
    Accept, // rings at once and accepts after the delay
    Refuse, // after the delay
};

/// How a paging station meets an intercom's invitation.
struct CallBehaviour {
    CallReply reply = CallReply::Nothing;
    std::chrono::milliseconds delay{0};
};

/// Listens on ports 28001 and 29001, and on 29002 for intercom audio. All public functions are safe in every thread
/// and have taken effect when they return.
class PagingStation : public Device {
public:
    PagingStation(const Surroundings& surroundings, std::uint32_t id, const std::string& address);

    void SetBehaviour(const TaskBehaviour& behaviour);
    void SetMonitorBehaviour(const MonitorBehaviour& behaviour);
    void SetCallBehaviour(const CallBehaviour& behaviour);

    void SendStatus(const PagingStatus& status, std::uint16_t port = kReplyPort);
    /// Sends the status after the first delay and then every period; a period of 0 ends that.
    void RepeatStatus(const PagingStatus& status, std::chrono::milliseconds period = std::chrono::seconds(2),
                      std::chrono::milliseconds firstDelay = {});
    void ReportEvery(std::chrono::milliseconds period, std::chrono::milliseconds firstDelay) override;
    /// Changes the status that is repeated, and sends it at once.
    void ChangeStatus(const std::function<void(PagingStatus&)>& change);

    static constexpr std::size_t kMostRequests = 10'000; ///< of each kind that are kept; then the oldest half goes
    /// The task requests so far, in the order in which they came.
    [[nodiscard]] std::vector<PagingTaskRequest> Requests() const;
    /// The monitor requests so far, in the order in which they came.
    [[nodiscard]] std::vector<MonitorRequest> MonitorRequests() const;

    /// Streams push-to-talk audio to a group; ends an earlier talk.
    AudioSource& Talk(const Endpoint& group, const AudioStream& stream = {}) { return Stream(group, stream); }

    /// Each sends one packet to port 29001 of the station, for one of its intercoms.
    void Handshake(std::uint32_t intercom);
    void Invite(std::uint32_t intercom);
    /// @param code  call::kRinging, kAccepted or kHungUp
    void AnswerCall(std::uint32_t intercom, std::uint8_t code);

    /// What came to port 29002, whether in a call or not.
    [[nodiscard]] IntercomRecording IntercomAudio() const;
    /// Blocks until that many audio datagrams have come to port 29002 in all. Not for the reactor's thread.
    [[nodiscard]] bool WaitForIntercomAudio(std::size_t count, std::chrono::milliseconds timeout) const;
    /// Streams audio to port 29002 of the station; ends an earlier stream there.
    /// @return the source, with which to stop it; as long-lived as the paging station
    AudioSource& SendIntercomAudio(const AudioStream& stream = {});
    /// Ends what SendIntercomAudio began.
    void StopIntercomAudio() { m_intercomLine.Source().Stop(); }
    /// Ends push-to-talk and intercom audio.
    void StopStreams() override;
    /// Writes intercom audio to a file as it is heard, in place of keeping it.
    void RecordIntercomTo(const std::string& path);
    /// @return the file, up to date; empty when nothing was heard
    [[nodiscard]] std::string RecordedIntercom();

protected:
    void Handle(const Packet& packet, const Datagram& datagram) override;
    void LosePower() override;
    void RegainPower() override;

private:
    void AnswerTask(const Packet& packet, const Endpoint& requester);
    void AnswerMonitor(const Packet& packet, const Endpoint& requester);
    void NoteIntercom(bool begins, Clock::time_point last);
    void MeetInvitation(const Packet& packet, const Endpoint& requester);

    // Of the reactor's thread.
    TaskBehaviour m_behaviour;
    MonitorBehaviour m_monitorBehaviour;
    CallBehaviour m_callBehaviour;
    PagingStatus m_status; // that is repeated
    std::vector<PagingTaskRequest> m_requests;
    std::vector<MonitorRequest> m_monitorRequests;
    IntercomLine m_intercomLine;
};

} // namespace k740::sim
