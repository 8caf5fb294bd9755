#include "sim/recording.h"

#include <algorithm>
#include <utility>

namespace k740::sim {

std::vector<std::int16_t> Recording::HeardIn(int zone) const {
    std::vector<std::int16_t> heard;
    for (const Span& span : zones.at(static_cast<std::size_t>(zone - 1))) {
        heard.insert(heard.end(), samples.begin() + static_cast<std::ptrdiff_t>(span.from),
                     samples.begin() + static_cast<std::ptrdiff_t>(span.to));
    }
    return heard;
}

Recorder::Recorder(std::uint32_t controller, PlayRequest request, Keep keep) : m_controller(controller), m_keep(keep) {
    m_recording.joined = Clock::now();
    m_recording.request = std::move(request);
    SetZones(m_recording.request.zoneMask);
}

void Recorder::SetZones(std::uint32_t mask) {
    const std::size_t now = m_recording.samples.size();
    for (std::size_t i = 0; i < m_recording.zones.size(); ++i) {
        const std::uint32_t bit = 1U << i;
        if ((mask & bit) != 0 && (m_zones & bit) == 0) { m_recording.zones[i].push_back({now, now}); }
    }
    m_zones = mask;
}

void Recorder::Close() {
    m_recording.left = Clock::now();
}

Recorder::Kind Recorder::Take(const Datagram& datagram) {
    if (m_keep == Keep::SamplesAndDatagrams) { m_recording.rawDatagrams.push_back(datagram.bytes); }
    const auto audio = ReadAudioDatagram(datagram.bytes);
    if (!audio) {
        ++m_recording.foreign;
        return Kind::Other;
    }
    if (audio->coding == Coding::EndOfStream) { return TakeEndOfStream(*audio, datagram.arrival); }
    TakeAudio(datagram, *audio);
    return Kind::Audio;
}

Recorder::Kind Recorder::TakeEndOfStream(const AudioDatagram& end, Clock::time_point arrival) {
    if (end.stream != m_controller) {
        ++m_recording.endsOfOthers;
        return Kind::Other;
    }
    m_recording.endsOfStream.push_back(arrival);
    return Kind::EndOfStream;
}

void Recorder::TakeAudio(const Datagram& datagram, const AudioDatagram& audio) {
    NoteTime(datagram.arrival);
    NoteContinuity(datagram.bytes, audio);
    m_recording.node = audio.node;
    ++m_recording.datagrams;
    if (!m_recording.endsOfStream.empty()) { ++m_recording.afterEnd; }
    m_recording.samplesHeard += FormatOf(audio.type)->samples;
    if (m_keep == Keep::Counts && !m_sink) { return m_decoder.Skip(audio); }
    const std::vector<std::int16_t> samples = m_decoder.Decode(audio);
    if (m_sink) { m_sink(m_zones, samples); }
    if (m_keep == Keep::Counts) { return; }
    m_recording.samples.insert(m_recording.samples.end(), samples.begin(), samples.end());
    ExtendZones();
}

void Recorder::NoteTime(Clock::time_point arrival) {
    if (!m_recording.firstAudio) { m_recording.firstAudio = arrival; }
    m_recording.longestPause = std::max(m_recording.longestPause, arrival - m_recording.lastAudio.value_or(arrival));
    m_recording.lastAudio = arrival;
}

void Recorder::NoteContinuity(ByteView bytes, const AudioDatagram& audio) {
    if (std::ranges::equal(bytes, m_previous)) {
        ++m_recording.repeats;
    } else if (!m_decoder.Continues(audio)) {
        ++m_recording.gaps;
    }
    m_previous.assign(bytes.begin(), bytes.end());
}

void Recorder::ExtendZones() {
    for (std::size_t i = 0; i < m_recording.zones.size(); ++i) {
        if ((m_zones & (1U << i)) != 0) { m_recording.zones[i].back().to = m_recording.samples.size(); }
    }
}

} // namespace k740::sim
