// A simulated zone controller: answers play requests, joins their groups and keeps what its zones hear; answers queries
// about its volumes and about the groups of its zones.
#pragma once

#include "sim/device.h"
#include "sim/play_session.h"
#include "sim/recording.h"
#include "sim/records.h"
#include "sim/volume_control.h"
#include "sim/zone_groups.h"
#include "sim/zone_wavs.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace k740::sim {

enum class PlayReply {
    AcceptWithJoin,    // accepts, joins the group and reports so
    AcceptWithoutJoin, // accepts with join flag 0: joins, no report
    Accept255,         // accepts with result 255: joins, no report
    Refuse,            // result as set, joins nothing
    Silent,            // no answer, joins nothing
    JoinRefused,       // accepts with join flag 1, then reports a join status other than 1
    JoinNever,         // accepts with join flag 1, then neither joins nor reports
};

/// How a controller meets a play request.
struct PlayBehaviour {
    PlayReply reply = PlayReply::AcceptWithJoin;
    std::uint16_t refusal = 2;     // result of Refuse
    std::uint16_t joinRefusal = 2; // status of JoinRefused
    std::chrono::milliseconds answerDelay{0};
    std::chrono::milliseconds joinDelay{0}; // from the answer to the join and its report
    bool answerTwice = false;               // two answers with different tokens; the join report has the second's
};

/// All public functions are safe in every thread and have taken effect when they return.
class ZoneController : public Device {
public:
    ZoneController(const Surroundings& surroundings, std::uint32_t id, const std::string& address);

    void SetBehaviour(const PlayBehaviour& behaviour);
    /// How much is kept of the broadcasts that begin from now on. Samples, unless set.
    void SetKeep(Keep keep);

    /// Version 3, unless set. All channels are at 0 then.
    void SetGeneration(Generation generation);
    /// @param levels  attenuation as on the wire, 4 (version 2) or 10 (version 3); throws std::invalid_argument
    /// otherwise
    void SetVolumes(const std::vector<std::uint8_t>& levels);
    [[nodiscard]] std::vector<std::uint8_t> Volumes() const;

    /// Of the latest request to enter the emergency mode (256 less the host's priority); nothing when it has been left.
    [[nodiscard]] std::optional<std::uint16_t> EmergencyPriority() const;

    /// Sends what a zone (1 to 8) hears of broadcasts on to a group, which becomes the zone's; an empty text ends that.
    /// Of several broadcasts it is the one that was joined last.
    void Circulate(int zone, const std::string& group);

    /// The group on which a zone (1 to 8) circulates what it plays; an empty text or 0.0.0.0 for none.
    /// @param word  what the answer carries beside the address
    void SetZoneGroup(int zone, const std::string& group, std::uint32_t word = kAudioPort);
    void SetZoneGroupLayout(ZoneGroupLayout layout);
    /// Streams audio to the zone's group, as it is at this time; ends what the zone streamed before.
    /// @return the source, with which to stop it; as long-lived as the controller
    /// @throws std::invalid_argument when the zone has no group
    AudioSource& StreamZone(int zone, const AudioStream& stream = {}, std::uint16_t port = kAudioPort);
    /// Ends what its zones and the controller itself stream; what is circulated goes on.
    void StopStreams() override;

    void SendStatus(const StatusReport& report, std::uint16_t port = kReplyPort);
    /// Sends the report after the first delay and then every period; a period of 0 ends that.
    void RepeatStatus(const StatusReport& report, std::chrono::milliseconds period = std::chrono::seconds(2),
                      std::chrono::milliseconds firstDelay = {});
    void ReportEvery(std::chrono::milliseconds period, std::chrono::milliseconds firstDelay) override;
    /// Changes the report that is repeated, and sends it at once.
    void ChangeStatus(const std::function<void(StatusReport&)>& change);
    /// A report without faults that names this controller.
    [[nodiscard]] StatusReport QuietStatus() const;

    /// The broadcasts so far, in the order in which they were joined; the last ones may still be going on.
    [[nodiscard]] std::vector<Recording> Recordings() const;
    /// What a zone (1 to 8) heard in all of them, one after the other; 44.1 kHz mono.
    [[nodiscard]] std::vector<std::int16_t> HeardIn(int zone) const;
    /// Zones that were part of any broadcast, bit 0 is zone 1.
    [[nodiscard]] std::uint32_t ZonesServed() const;
    /// Audio datagrams of all broadcasts.
    [[nodiscard]] std::size_t CountDatagrams() const;
    /// Blocks until that many audio datagrams have come in all. Not for the reactor's thread.
    [[nodiscard]] bool WaitForDatagrams(std::size_t count, std::chrono::milliseconds timeout) const;
    /// Whether it is in the group of a task.
    [[nodiscard]] bool IsListening(std::uint32_t taskId) const;
    /// Writes what zones hear of broadcasts that begin from now on, as they hear it, to files of this prefix.
    void RecordTo(const std::string& prefix);
    /// @return the files so far, up to date, by zone
    [[nodiscard]] std::map<int, std::string> RecordedFiles() const;
    /// Takes the broadcasts out that are over; they are no longer counted.
    std::vector<Recording> TakeFinished();

    /// Writes what a zone heard as a 44.1 kHz mono 16 bit file.
    void WriteWav(int zone, const std::string& path) const;

protected:
    void Handle(const Packet& packet, const Datagram& datagram) override;
    void LosePower() override;

private:
    void AnswerQuery(const Packet& packet, const Endpoint& requester);
    void AnswerPlay(const Packet& packet, const Endpoint& requester, const PlayRequest& request,
                    const PlayBehaviour& behaviour);
    void JoinAndReport(const Packet& packet, const Endpoint& requester, const PlayRequest& request,
                       const PlayBehaviour& behaviour, JoinReport report);
    bool Join(const PlayRequest& request);
    void Leave(PlaySession& session);
    void CloseAudio(std::uint32_t taskId);
    void CloseZones(std::uint32_t mask);
    void NoteGroup(Event::Kind kind, const Endpoint& group, const Datagram& datagram);
    void NoteActivity(const PlaySession& session, bool begins, Clock::time_point last);
    void CirculateAudio(const PlaySession& session, const Datagram& datagram);
    [[nodiscard]] PlaySession::Listener SessionListener(const Endpoint& group);
    [[nodiscard]] PlaySession* OpenSession(std::uint32_t taskId) const;

    // Of the reactor's thread.
    PlayBehaviour m_behaviour;
    Keep m_keep = Keep::Samples;
    VolumeControl m_volumes;
    std::optional<std::uint16_t> m_emergencyPriority;
    StatusReport m_report = QuietStatus(); // that is repeated
    ZoneGroups m_zoneGroups;
    std::map<int, Endpoint> m_circulated; // by zone
    std::unique_ptr<ZoneWavs> m_wavs;
    std::map<int, AudioSource> m_zoneSources;             // by zone
    std::vector<std::unique_ptr<PlaySession>> m_sessions; // in the order of joining, closed ones included
};

} // namespace k740::sim
