// The intercom audio of a paging station: what it hears and says on port 29002.
#pragma once

#include "sim/audio_activity.h"
#include "sim/audio_datagram.h"
#include "sim/audio_source.h"
#include "sim/bytes.h"
#include "sim/reactor.h"
#include "sim/udp_socket.h"
#include "sim/wav_writer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace k740::sim {

/// Intercom audio of all calls so far, one after the other. A plain copy; ask the paging station again for news.
struct IntercomRecording {
    std::size_t datagrams = 0;         // with audio
    std::size_t gaps = 0;              // state blocks that do not follow from the datagram before
    std::size_t foreign = 0;           // datagrams without audio
    std::size_t samplesHeard = 0;      // samples, whether they are kept or not
    std::uint32_t node = 0;            // sender of the latest datagram with audio
    std::uint32_t stream = 0;          // and its stream number
    Endpoint sender;                   // and its address
    std::vector<Datagram> kept;        // the first ones of every kind, at most kMostKept, with their arrival
    std::vector<std::int16_t> samples; // of the first ones with audio, at most kMostKept; 44.1 kHz mono

    static constexpr std::size_t kMostKept = 2000; // datagrams: 92 s of audio
};

/// Listens on the port from construction on. Reactor's thread only, but for the source.
class IntercomLine {
public:
    /// @param device   ID of the paging station
    /// @throws std::system_error when the port is taken
    /// @param onActivity  audio has begun, or has ended with silence
    IntercomLine(Reactor& reactor, std::uint32_t device, const std::string& address, AudioActivity::OnChange onActivity,
                 AudioSource::OnChange onStream);
    ~IntercomLine();
    IntercomLine(const IntercomLine&) = delete;
    IntercomLine& operator=(const IntercomLine&) = delete;

    [[nodiscard]] const IntercomRecording& Heard() const { return m_heard; }
    /// Writes what comes from now on, as it comes, to a file that is made with its first datagram. Nothing but counts
    /// is kept then.
    void RecordTo(const std::string& path) { m_recordPath = path; }
    /// Makes the file complete as it is. @return its path; empty when there is none
    [[nodiscard]] std::string RecordedFile();
    /// A deaf line ignores what comes.
    void SetDeaf(bool deaf) { m_deaf = deaf; }

    /// Sends from the port.
    [[nodiscard]] AudioSource& Source() { return m_source; }

private:
    void ReceiveAll();
    void Take(const Datagram& datagram);
    void Record(const AudioDatagram& audio);

    Reactor& m_reactor;
    const UdpSocket m_socket;
    AudioSource m_source;
    AudioActivity m_activity;
    AudioDecoder m_decoder;
    IntercomRecording m_heard;
    bool m_deaf = false;
    std::string m_recordPath; // empty: none
    std::optional<WavWriter> m_wav;
};

} // namespace k740::sim
