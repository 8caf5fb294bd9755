// What a zone controller keeps and tells of the broadcasts that it hears.
#include "sim/wav_file.h"
#include "sim/zone_controller.h"

#include <utility>

namespace k740::sim {

PlaySession::Listener ZoneController::SessionListener(const Endpoint& group) {
    PlaySession::Listener listener;
    listener.onEnd = [this, group](const Datagram& end) { NoteGroup(Event::Kind::EndOfStream, group, end); };
    listener.onAudio = [this](const PlaySession& session, const Datagram& audio) { CirculateAudio(session, audio); };
    listener.onActivity = [this](const PlaySession& session, bool begins, Clock::time_point last) {
        NoteActivity(session, begins, last);
    };
    if (m_wavs) {
        listener.onSamples = [this](std::uint32_t zones, const auto& samples) { m_wavs->Append(zones, samples); };
    }
    return listener;
}

void ZoneController::NoteActivity(const PlaySession& session, bool begins, Clock::time_point last) {
    const Recording& heard = session.Heard();
    Event event;
    event.time = begins ? last : Clock::now();
    event.kind = begins ? Event::Kind::AudioBegins : Event::Kind::AudioEnds;
    event.device = Id();
    event.port = session.Group().port;
    event.peer = session.Group();
    event.audio = AudioCounts{heard.request.taskId, 0, heard.datagrams, heard.gaps, last};
    Note(std::move(event));
}

std::vector<Recording> ZoneController::Recordings() const {
    std::vector<Recording> recordings;
    OnReactor().Run([&] {
        for (const auto& session : m_sessions) { recordings.push_back(session->Heard()); }
    });
    return recordings;
}

std::vector<std::int16_t> ZoneController::HeardIn(int zone) const {
    std::vector<std::int16_t> heard;
    OnReactor().Run([&] {
        for (const auto& session : m_sessions) {
            const std::vector<std::int16_t> part = session->Heard().HeardIn(zone);
            heard.insert(heard.end(), part.begin(), part.end());
        }
    });
    return heard;
}

std::uint32_t ZoneController::ZonesServed() const {
    std::uint32_t mask = 0;
    for (int zone = 1; zone <= kZones; ++zone) { mask |= HeardIn(zone).empty() ? 0 : 1U << (zone - 1); }
    return mask;
}

std::size_t ZoneController::CountDatagrams() const {
    std::size_t count = 0;
    OnReactor().Run([&] {
        for (const auto& session : m_sessions) { count += session->Heard().datagrams; }
    });
    return count;
}

bool ZoneController::WaitForDatagrams(std::size_t count, std::chrono::milliseconds timeout) const {
    return OnReactor().WaitUntil([&] { return CountDatagrams() >= count; }, timeout);
}

void ZoneController::RecordTo(const std::string& prefix) {
    OnReactor().Run([&] { m_wavs = std::make_unique<ZoneWavs>(prefix); });
}

std::map<int, std::string> ZoneController::RecordedFiles() const {
    std::map<int, std::string> files;
    OnReactor().Run([&] {
        if (!m_wavs) { return; }
        m_wavs->Flush();
        files = m_wavs->Paths();
    });
    return files;
}

std::vector<Recording> ZoneController::TakeFinished() {
    std::vector<Recording> finished;
    OnReactor().Run([&] {
        std::erase_if(m_sessions, [&](const std::unique_ptr<PlaySession>& session) {
            if (session->IsOpen()) { return false; }
            finished.push_back(session->Heard());
            return true;
        });
    });
    return finished;
}

void ZoneController::WriteWav(int zone, const std::string& path) const {
    sim::WriteWav(path, HeardIn(zone));
}

} // namespace k740::sim
