// What a zone controller heard of one broadcast.
#pragma once

#include "sim/audio_datagram.h"
#include "sim/bytes.h"
#include "sim/journal.h"
#include "sim/records.h"
#include "sim/wire.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace k740::sim {

/// How much of a broadcast is kept beside the counts.
enum class Keep { Counts, Samples, SamplesAndDatagrams };

/// One broadcast, from the play request to close audio. A plain copy; ask the controller again for news.
struct Recording {
    /// Samples that a zone heard, as positions in `samples`.
    struct Span {
        std::size_t from = 0;
        std::size_t to = 0;
    };

    PlayRequest request;      // the first one for this broadcast
    Clock::time_point joined; // the group
    std::optional<Clock::time_point> left;
    std::uint32_t node = 0; // sender of the latest audio datagram

    std::size_t datagrams = 0;    // with audio, repeats included
    std::size_t repeats = 0;      // equal to the datagram before, byte for byte; silence repeats itself rightly
    std::size_t gaps = 0;         // state blocks that do not follow from the datagram before, repeats apart; the first
                                  // datagram must follow from a coder's starting state
    std::size_t samplesHeard = 0; // samples, whether they are kept or not
    std::size_t afterEnd = 0;     // audio datagrams after the controller's first end of stream
    std::size_t foreign = 0;      // datagrams that are no audio
    std::size_t endsOfOthers = 0; // end-of-stream datagrams for other controllers
    std::vector<Clock::time_point> endsOfStream; // those for this controller
    std::optional<Clock::time_point> firstAudio;
    std::optional<Clock::time_point> lastAudio;
    Clock::duration longestPause{}; // between two audio datagrams

    std::vector<std::int16_t> samples;           // 44.1 kHz mono, unless only counts are kept
    std::vector<Bytes> rawDatagrams;             // of every kind, when datagrams are kept
    std::array<std::vector<Span>, kZones> zones; // [0] is zone 1

    /// The samples that a zone (1 to 8) heard.
    [[nodiscard]] std::vector<std::int16_t> HeardIn(int zone) const;
};

/// Builds a recording from the datagrams of a group.
class Recorder {
public:
    Recorder(std::uint32_t controller, PlayRequest request, Keep keep);

    /// Takes the samples as they are heard, with the zones (bit 0 is zone 1) that hear them.
    using Sink = std::function<void(std::uint32_t zones, const std::vector<std::int16_t>& samples)>;
    void SetSink(Sink sink) { m_sink = std::move(sink); }

    enum class Kind { Audio, EndOfStream, Other };

    /// @return what it was; EndOfStream only for the controller's own
    Kind Take(const Datagram& datagram);

    /// Zones of the mask (bit 0 is zone 1) hear what comes from now on, the others no longer.
    void SetZones(std::uint32_t mask);
    [[nodiscard]] std::uint32_t Zones() const { return m_zones; }

    void Close();

    [[nodiscard]] const Recording& Get() const { return m_recording; }

private:
    Kind TakeEndOfStream(const AudioDatagram& end, Clock::time_point arrival);
    void TakeAudio(const Datagram& datagram, const AudioDatagram& audio);
    void NoteTime(Clock::time_point arrival);
    void NoteContinuity(ByteView bytes, const AudioDatagram& audio);
    void ExtendZones();

    const std::uint32_t m_controller;
    const Keep m_keep;
    Sink m_sink;
    Recording m_recording;
    AudioDecoder m_decoder;
    Bytes m_previous; // the audio datagram before
    std::uint32_t m_zones = 0;
};

} // namespace k740::sim
